// SPDX-License-Identifier: Apache-2.0
#include "whole_file.h"

#include "file_handle.h"
#include "raise.h"
#include "system_random.h"
#include "ul/file.h"

#include <array>
#include <climits>
#include <cstring>

namespace ul {

namespace {

constexpr int chunkSize = 65536;

/// A file beside the one that it is to replace; removed again if it never does.
class Replacement {
public:
    explicit Replacement(const CWindowsPath& target)
        : m_target(target), m_path(getPathBeside(target)), m_file(FileHandle::createLike(m_path, target)) {}
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement() {
        if (!m_isDone)
            m_file->discard();
    }

    void write(const std::string& bytes) {
        m_file->write(bytes.data(), bytes.size());
        m_file->sync();
        m_file->close();
        replaceFile(m_path, m_target);
        m_isDone = true;
    }

private:
    static CWindowsPath getPathBeside(const CWindowsPath& path) {
        const std::wstring& text = path.getString();
        std::array<unsigned char, 8> random;
        fillFromSystemGenerator(random.data(), random.size());
        String name = text.substr(0, text.rfind(CWindowsPathTraits::getSep()) + 1);
        name += "~";
        for (const unsigned char byte : random)
            name += toHexString(byte);
        return CWindowsPath(name + ".tmp");
    }

    CWindowsPath m_target;
    CWindowsPath m_path;
    std::unique_ptr<FileHandle> m_file;
    bool m_isDone = false;
};

} // namespace

void readWholeFile(const CWindowsPath& path, TBuffer<unsigned char>& content) {
    CWindowsFileInStream stream(path);
    content.setUsed(0);
    while (!stream.isEndOfStream()) {
        if (stream.getLength() > INT_MAX - chunkSize || content.getUsed() > INT_MAX - chunkSize)
            throw CFileError("read file", path.getString(), "it is too large to be held in memory", -1);
        content.ensureAllocated(content.getUsed() + chunkSize);
        content.addUsed(stream.readLax(content.getData() + content.getUsed(), chunkSize));
    }
}

String decodeUTF8File(const TBuffer<unsigned char>& content) {
    const char* data = reinterpret_cast<const char*>(content.getData());
    std::size_t size = static_cast<std::size_t>(content.getUsed());
    if (size >= 3 && std::memcmp(data, "\xEF\xBB\xBF", 3) == 0) {
        data += 3;
        size -= 3;
    }
    return String::fromUTF8(data, size);
}

String readUTF8TextFile(const TPathImpl<CWindowsPathTraits>& path) {
    TBuffer<unsigned char> content;
    readWholeFile(path, content);
    return nameFileInErrors(path, [&] { return decodeUTF8File(content); });
}

void writeUTF8TextFile(const TPathImpl<CWindowsPathTraits>& path, const String& text) {
    const std::string bytes = text.toUTF8();
    Replacement(path).write(bytes);
}

} // namespace ul
