// SPDX-License-Identifier: Apache-2.0
#include "input.h"

#include "progress.h"
#include "report.h"
#include "status.h"
#include "system.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace tool {

std::string describeInput(const std::string& name) {
    return name == "-" ? "standard input" : name;
}

Input::Input(const std::string& name)
    : m_name(describeInput(name)), m_isOwn(name != "-"), m_descriptor(m_isOwn ? openToRead(getPath(name)) : 0) {
    throwIfInterrupted();
    if (m_descriptor == -1)
        throw makeFileError("open file", m_name);
}

Input::Input(int descriptor)
    : m_name("descriptor " + std::to_string(descriptor)), m_isOwn(false), m_descriptor(descriptor) {}

Input::~Input() {
    if (m_isOwn)
        closeFile(m_descriptor);
}

std::int64_t Input::getLeft() const {
    return getRegularRest(m_descriptor);
}

int Input::read(void* data, int size) {
    int done = 0;
    while (done < size) {
        const int count = readSome(m_descriptor, static_cast<char*>(data) + done, size - done);
        throwIfInterrupted();
        if (count == -1)
            throw makeFileError("read file", m_name);
        if (count == 0)
            break;
        done += count;
    }
    return done;
}

void Input::skip(std::int64_t size) {
    const std::int64_t present = m_isOwn ? getLeft() : -1;
    if (present >= size && seek(m_descriptor, size))
        return;
    ul::TBuffer<unsigned char> piece(1 << 16, -1);
    for (std::int64_t left = size; left > 0;) {
        const int count = read(piece.getData(), static_cast<int>(std::min<std::int64_t>(left, piece.getUsed())));
        if (count == 0)
            throw Problem(Failed, m_name + " is shorter than the " + std::to_string(size) +
                                      " bytes of the saved state: it is another file, or was cut");
        left -= count;
    }
}

void readPieces(Input& input, int pieceSize, const std::function<void(ul::CBytes)>& use) {
    Progress progress(input.getName(), input.getLeft());
    ul::TCryptBuffer<unsigned char> piece(pieceSize, -1);
    while (const int size = input.read(piece.getData(), pieceSize)) {
        use({piece.getData(), size});
        throwIfInterrupted();
        progress.add(size);
    }
}

ul::TCryptBuffer<unsigned char> readAll(Input& input, int limit) {
    ul::TCryptBuffer<unsigned char> content;
    const auto requireLimit = [&](std::int64_t size) {
        if (size > limit)
            throw Problem(Failed, input.getName() + " is larger than " + std::to_string(limit) +
                                      " bytes, which is the limit here");
    };
    const std::int64_t left = input.getLeft();
    requireLimit(left);
    content.ensureAllocated(static_cast<int>(left));
    readPieces(input, 1 << 16, [&](ul::CBytes piece) {
        requireLimit(static_cast<std::int64_t>(content.getUsed()) + static_cast<std::int64_t>(piece.size()));
        content.insert(content.getUsed(), piece.data(), static_cast<int>(piece.size()));
    });
    return content;
}

ul::CFileError makeFileError(const char* operation, const std::string& name) {
    const int code = errno;
    return {operation, toText(name), ul::String(std::generic_category().message(code).c_str()), code};
}

} // namespace tool
