// SPDX-License-Identifier: Apache-2.0
#include "output.h"

#include "input.h"
#include "status.h"
#include "system.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <system_error>

namespace tool {

namespace fs = std::filesystem;

Output::Output(const std::string& name, bool mayReplace, Readers readers)
    : m_name(name == "-" ? "standard output" : name),
      m_isStandard(name == "-"),
      m_mayReplace(mayReplace),
      m_descriptor(m_isStandard ? 1 : -1) {
    if (m_isStandard)
        return;
    m_path = getPath(name);
    const unsigned permissions = checkName(readers);
    m_temporary = m_path.parent_path() / ("~" + ul::toHex(ul::makeRandomBytes(8)) + ".tmp");
    m_descriptor = createFile(m_temporary, permissions);
    if (m_descriptor == -1)
        throw makeFileError("create file", m_name);
}

Output::~Output() {
    if (m_isStandard || m_temporary.empty())
        return;
    if (m_descriptor != -1)
        closeFile(m_descriptor);
    std::error_code ignored;
    fs::remove(m_temporary, ignored);
}

unsigned Output::checkName(Readers readers) const {
    constexpr unsigned forOwner = 0600, forAll = 0666;
    std::error_code ignored; // if it cannot be examined, it cannot be created either, and that error is reported
    const fs::file_status present = fs::symlink_status(m_path, ignored);
    unsigned permissions = readers == Readers::OwnerOnly ? forOwner : forAll;
    if (!fs::exists(present))
        return permissions;
    if (present.type() != fs::file_type::regular && present.type() != fs::file_type::symlink)
        throw Problem(Misuse, m_name + " is not a regular file: give another name, or - for standard output");
    if (!m_mayReplace)
        throw Problem(Misuse, m_name + " exists already: give another name, or --force to replace it");
    if (present.type() == fs::file_type::regular)
        permissions &= static_cast<unsigned>(present.permissions());
    return permissions | forOwner;
}

void Output::write(ul::CBytes bytes) {
    writeTo(m_descriptor, bytes, m_name);
}

void Output::commit() {
    if (m_isStandard)
        return;
    const int flushed = flush(m_descriptor);
    throwIfInterrupted();
    if (flushed == -1)
        throw makeFileError("write file", m_name);
    if (closeFile(std::exchange(m_descriptor, -1)) == -1)
        throw makeFileError("write file", m_name);
    std::error_code error;
    if (m_mayReplace)
        fs::rename(m_temporary, m_path, error);
    else
        error = renameToFree(m_temporary, m_path);
    if (error)
        throw ul::CFileError("create file", ul::text(m_name), ul::String(error.message().c_str()), error.value());
    m_temporary.clear();
}

void writeTo(int descriptor, ul::CBytes bytes, const std::string& name) {
    for (const unsigned char* at = bytes.begin(); at != bytes.end();) {
        const auto left = std::min<std::ptrdiff_t>(bytes.end() - at, INT_MAX);
        const int count = writeSome(descriptor, at, static_cast<int>(left));
        throwIfInterrupted();
        if (count <= 0)
            throw makeFileError("write file", name);
        at += count;
    }
}

} // namespace tool
