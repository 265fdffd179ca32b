// SPDX-License-Identifier: Apache-2.0
#include "errors/raise.h"
#include "files/file_handle.h"
#include "files/posix/interrupted_call.h"
#include "files/posix/native_path.h"

#include <cerrno>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ul {

namespace {

/// A new file in the folder of the one that it is to replace. The destructor removes it unless it has done so.
///
/// All calls use names relative to the opened folder: the new name may be longer than the old one where a full path
/// would be too long, and the folder may be replaced in between without effect.
class Replacement {
public:
    explicit Replacement(const CWindowsPath& target);
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement() {
        if (!m_temporaryName.empty())
            ::unlinkat(getFolder(), m_temporaryName.c_str(), 0);
    }

    void write(const std::string& bytes);

private:
    int getFolder() const noexcept { return static_cast<int>(m_folder.get()); }
    int getFile() const noexcept { return static_cast<int>(m_file.get()); }
    [[noreturn]] void raise(int code) const { raiseFileError("write file", m_file.getPath(), code); }

    void openFolder(const std::string& native);
    bool tryGetOld(struct stat& old) const;
    void checkReplaceable(const struct stat& old) const;
    void create();
    void takeRights(const struct stat& old);

    std::string m_name;
    // Empty unless the new file is there.
    std::string m_temporaryName;
    FileHandle m_folder;
    FileHandle m_file;
};

Replacement::Replacement(const CWindowsPath& target) : m_folder(target), m_file(target) {
    const std::string native = toNativePath("write file", target);
    const std::size_t nameStart = native.rfind('/') + 1;
    m_name = native.substr(nameStart);
    if (m_name.empty())
        raise(EISDIR);
    openFolder(native.substr(0, nameStart));
}

void Replacement::openFolder(const std::string& native) {
    const auto open = [&](int access) {
        return retryInterrupted([&] { return ::open(native.c_str(), access | O_DIRECTORY | O_CLOEXEC); });
    };
    int folder = open(O_RDONLY);
    // An unreadable folder can still take new files; only flushing it is impossible.
    if (folder < 0 && errno == EACCES)
        folder = open(O_PATH);
    if (folder < 0)
        raise(errno);
    m_folder.adopt(folder);
}

/// The status of the file that has the name now; false if there is none.
bool Replacement::tryGetOld(struct stat& old) const {
    if (::fstatat(getFolder(), m_name.c_str(), &old, AT_SYMLINK_NOFOLLOW) == 0)
        return true;
    if (errno != ENOENT)
        raise(errno);
    return false;
}

void Replacement::checkReplaceable(const struct stat& old) const {
    if (S_ISDIR(old.st_mode))
        raise(EISDIR);
    if (!S_ISREG(old.st_mode))
        raiseFileError("write file", m_file.getPath(), notRegular);
    // Renaming checks only the folder's permissions.
    if (::faccessat(getFolder(), m_name.c_str(), W_OK, AT_EACCESS) != 0)
        raise(errno);
}

void Replacement::create() {
    struct stat old;
    // A link is replaced wherever it leads, and its permissions do not count.
    const bool isOld = tryGetOld(old) && !S_ISLNK(old.st_mode);
    if (isOld)
        checkReplaceable(old);
    const mode_t mode = isOld ? old.st_mode & 0666 : 0666;
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    std::string name = makeTemporaryName().toLatin1();
    const int file = retryInterrupted([&] { return ::openat(getFolder(), name.c_str(), flags, mode); });
    if (file < 0)
        raise(errno);
    m_file.adopt(file);
    m_temporaryName = std::move(name);
    if (isOld)
        takeRights(old);
}

/// Copies the old file's permission bits to the new one, unless they would apply to another owner or group: with all
/// bits that another owner set, that owner could do to the caller's file what he could do to his own.
void Replacement::takeRights(const struct stat& old) {
    struct stat status;
    if (::fstat(getFile(), &status) != 0)
        raise(errno);
    const bool isSameOwner = status.st_uid == old.st_uid && status.st_gid == old.st_gid;
    if (isSameOwner && ::fchmod(getFile(), old.st_mode & 0777) != 0)
        raise(errno);
}

void Replacement::write(const std::string& bytes) {
    create();
    m_file.write(bytes.data(), bytes.size());
    m_file.sync();
    m_file.close();
    if (::renameat(getFolder(), m_temporaryName.c_str(), getFolder(), m_name.c_str()) != 0)
        raise(errno);
    m_temporaryName.clear();
    // The new name is on the disk once its folder is flushed. If that fails the file still exists, so it is not an
    // error.
    retryInterrupted([&] { return ::fsync(getFolder()); });
}

} // namespace

void replaceFile(const CWindowsPath& target, const std::string& bytes) {
    Replacement(target).write(bytes);
}

} // namespace ul
