// SPDX-License-Identifier: Apache-2.0
// The low-level digests are deprecated in newer versions of libcrypto.
#define OPENSSL_SUPPRESS_DEPRECATED
#include "failures/imported_calls.h"

#include "failures/import_table.h"
#include "failures/replacement.h"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/dsa.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/md4.h>
#include <openssl/md5.h>
#include <openssl/pem.h>
#include <openssl/sha.h>
#if OPENSSL_VERSION_NUMBER >= 0x30000000L
#include <openssl/provider.h>
#endif

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <set>
#include <stdexcept>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sarn_test {

namespace {

Injection* activeInjection = nullptr;

bool isRecording = false;
std::vector<std::string> steps;

void record(const std::string& step) {
    if (isRecording)
        steps.push_back(step);
}

BeforeOpening* activeHook = nullptr;

int openFile(const char* path, int flags) {
    BeforeOpening::note(path);
    return ::open(path, flags);
}

int openFileAt(int folder, const char* name, int flags, mode_t mode) {
    constexpr int wanted = O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    record((flags & wanted) == wanted ? "create as the only one" : "create carelessly");
    return ::openat(folder, name, flags, mode);
}

int setFileFlags(int file, int command, int flags) {
    return ::fcntl(file, command, flags);
}

int renameFile(int fromFolder, const char* from, int toFolder, const char* to) {
    record("rename");
    return ::renameat(fromFolder, from, toFolder, to);
}

const ImportedCall* flushOfFile = nullptr;
const ImportedCall* flushOfFolder = nullptr;

/// Whether a file was flushed must be known; by the time a folder is, the file is in its place.
int flush(int file) {
    struct stat status {};
    const bool isFolder = ::fstat(file, &status) == 0 && S_ISDIR(status.st_mode);
    record(isFolder ? "flush folder" : "flush file");
    if (!Injection::mustFail(isFolder ? *flushOfFolder : *flushOfFile))
        return ::fsync(file);
    errno = EIO;
    return -1;
}

void* newMemory(std::size_t size) {
    return ::operator new(size);
}

void* newArray(std::size_t size) {
    return ::operator new[](size);
}

void* newMemoryOrNull(std::size_t size, const std::nothrow_t& tag) noexcept {
    return ::operator new(size, tag);
}

bool pieces = false;
int piecesCount = 0;

ino_t pretendingFile = 0;
off_t pretendedSize = 0;

std::optional<unsigned> pretendedOwner;

int getStatusAt(int folder, const char* name, struct stat* status, int flags) {
    const int result = ::fstatat(folder, name, status, flags);
    if (result == 0 && pretendedOwner)
        status->st_uid = *pretendedOwner;
    return result;
}

int getStatus(int file, struct stat* status) {
    const int result = ::fstat(file, status);
    if (result == 0 && status->st_ino == pretendingFile)
        status->st_size = pretendedSize;
    return result;
}

/// Every other call is interrupted; the others do no more than seven bytes.
template <class Call>
ssize_t takePiece(std::size_t size, Call call) {
    if (!pieces)
        return call(size);
    if (++piecesCount % 2 == 1) {
        errno = EINTR;
        return -1;
    }
    return call(std::min<std::size_t>(size, 7));
}

ssize_t readPiece(int file, void* data, std::size_t size) {
    return takePiece(size, [&](std::size_t piece) { return ::read(file, data, piece); });
}

ssize_t writePiece(int file, const void* data, std::size_t size) {
    return takePiece(size, [&](std::size_t piece) { return ::write(file, data, piece); });
}

constexpr bool isIgnored = true;

std::vector<ImportedCall> makeLibcryptoCalls() {
    constexpr CallKind kind = CallKind::Libcrypto;
    return {
        describe<&::BIO_ctrl>("BIO_ctrl", kind, 0), describe<&::BIO_new>("BIO_new", kind, nullptr),
            describe<&::BIO_new_mem_buf>("BIO_new_mem_buf", kind, nullptr), describe<&::BIO_read>("BIO_read", kind, -1),
            describe<&::BIO_write>("BIO_write", kind, -1),
            // An empty queue takes no mark either.
            describe<&::ERR_set_mark>("ERR_set_mark", kind, 0, isIgnored),
            describe<&::ERR_pop_to_mark>("ERR_pop_to_mark", kind, 0, isIgnored),
            describe<&::EVP_CIPHER_CTX_new>("EVP_CIPHER_CTX_new", kind, nullptr),
            // A new context is as good as a reset one.
            describe<&::EVP_CIPHER_CTX_reset>("EVP_CIPHER_CTX_reset", kind, 0, isIgnored),
            describe<&::EVP_CIPHER_CTX_set_padding>("EVP_CIPHER_CTX_set_padding", kind, 0),
            describe<&::EVP_EncryptInit>("EVP_EncryptInit", kind, 0),
            describe<&::EVP_EncryptUpdate>("EVP_EncryptUpdate", kind, 0),
            describe<&::EVP_EncryptFinal>("EVP_EncryptFinal", kind, 0),
            describe<&::EVP_DecryptInit>("EVP_DecryptInit", kind, 0),
            describe<&::EVP_DecryptUpdate>("EVP_DecryptUpdate", kind, 0),
            describe<&::EVP_DecryptFinal>("EVP_DecryptFinal", kind, 0),
            describe<&::EVP_MD_CTX_new>("EVP_MD_CTX_new", kind, nullptr),
            // Only ahead of its end, or on the way to an error.
            describe<&::EVP_MD_CTX_reset>("EVP_MD_CTX_reset", kind, 0, isIgnored),
            describe<&::EVP_DigestInit>("EVP_DigestInit", kind, 0),
            describe<&::EVP_DigestUpdate>("EVP_DigestUpdate", kind, 0),
            describe<&::EVP_SignFinal>("EVP_SignFinal", kind, 0),
            describe<&::EVP_VerifyFinal>("EVP_VerifyFinal", kind, -1), describe<&::HMAC>("HMAC", kind, nullptr),
            describe<&::PKCS5_PBKDF2_HMAC_SHA1>("PKCS5_PBKDF2_HMAC_SHA1", kind, 0),
            describe<&::PEM_read_bio_PrivateKey>("PEM_read_bio_PrivateKey", kind, nullptr),
            describe<&::PEM_read_bio_PUBKEY>("PEM_read_bio_PUBKEY", kind, nullptr),
            describe<&::MD4_Init>("MD4_Init", kind, 0), describe<&::MD4_Update>("MD4_Update", kind, 0),
            describe<&::MD4_Final>("MD4_Final", kind, 0), describe<&::MD5_Init>("MD5_Init", kind, 0),
            describe<&::MD5_Update>("MD5_Update", kind, 0), describe<&::MD5_Final>("MD5_Final", kind, 0),
            describe<&::SHA1_Init>("SHA1_Init", kind, 0), describe<&::SHA1_Update>("SHA1_Update", kind, 0),
            describe<&::SHA1_Final>("SHA1_Final", kind, 0), describe<&::SHA256_Init>("SHA256_Init", kind, 0),
            describe<&::SHA256_Update>("SHA256_Update", kind, 0), describe<&::SHA256_Final>("SHA256_Final", kind, 0),
#if OPENSSL_VERSION_NUMBER >= 0x30000000L
            // The cipher of the host's providers stands in.
            describe<&::OSSL_LIB_CTX_new>("OSSL_LIB_CTX_new", kind, nullptr, isIgnored),
            describe<&::OSSL_PROVIDER_load>("OSSL_PROVIDER_load", kind, nullptr, isIgnored),
            describe<&::OSSL_PROVIDER_available>("OSSL_PROVIDER_available", kind, 0, isIgnored),
            describe<&::EVP_CIPHER_fetch>("EVP_CIPHER_fetch", kind, nullptr, isIgnored),
#else
            // The kind of the key is then not known to be DSA.
            describe<&::EVP_PKEY_base_id>("EVP_PKEY_base_id", kind, 0, isIgnored),
            describe<&::BN_mod_exp_mont>("BN_mod_exp_mont", kind, 0),
            describe<&::DSA_meth_dup>("DSA_meth_dup", kind, nullptr),
#endif
    };
}

std::vector<ImportedCall> makeFileCalls() {
    constexpr CallKind kind = CallKind::File;
    return {
        describe<&openFile>("open", kind, -1, !isIgnored, EMFILE),
        describe<&readPiece>("read", kind, -1, !isIgnored, EIO),
        describe<&writePiece>("write", kind, -1, !isIgnored, ENOSPC),
        describe<&getStatus>("fstat", kind, -1, !isIgnored, EIO),
        describe<&getStatusAt>("fstatat", kind, -1, !isIgnored, EACCES),
        describe<&::faccessat>("faccessat", kind, -1, !isIgnored, EROFS),
        describe<&openFileAt>("openat", kind, -1, !isIgnored, ENFILE),
        describe<&setFileFlags>("fcntl", kind, -1, !isIgnored, EPERM),
        describeOwn("fsync", kind, !isIgnored, EIO, flush, flushOfFile),
        describeOwn("fsync of a folder", kind, isIgnored, EIO, flush, flushOfFolder),
        describe<&::fchmod>("fchmod", kind, -1, !isIgnored, EPERM),
        describe<&renameFile>("renameat", kind, -1, !isIgnored, EXDEV),
        describe<&::getcwd>("getcwd", kind, nullptr, !isIgnored, ENOENT),
        describe<&::getrandom>("getrandom", kind, -1, !isIgnored, EIO),
        // What was written has been synced by then. The system takes the descriptor back whatever it says.
        describeDone<&::close>("close", kind, -1, isIgnored, EIO),
        // There is nothing that one could do about it.
        describe<&::unlinkat>("unlinkat", kind, -1, isIgnored, EACCES),
        // Without such a page no random bytes are drawn ahead.
        describe<&::mmap>("mmap", kind, MAP_FAILED, isIgnored, ENOMEM),
        describe<&::madvise>("madvise", kind, -1, isIgnored, EINVAL),
        describe<&::munmap>("munmap", kind, -1, isIgnored, EINVAL),
    };
}

std::vector<ImportedCall> makeAllocations() {
    constexpr CallKind kind = CallKind::Allocation;
    return {
        describe<&::malloc>("malloc", kind, nullptr),
        describe<&::calloc>("calloc", kind, nullptr),
        describe<&::realloc>("realloc", kind, nullptr),
        describeThrowing<&newMemory>("_Znwm", kind),
        describeThrowing<&newArray>("_Znam", kind),
        describe<&newMemoryOrNull>("_ZnwmRKSt9nothrow_t", kind, nullptr),
    };
}

std::vector<ImportedCall> makeImportedCalls() {
    std::vector<ImportedCall> calls = makeLibcryptoCalls();
    for (const auto& more : {makeFileCalls(), makeAllocations()})
        calls.insert(calls.end(), more.begin(), more.end());
    return calls;
}

void replace(const std::string& name, void** address, bool onlyAllocations) {
    for (const ImportedCall& call : getImportedCalls()) {
        if (call.name == name && (!onlyAllocations || call.kind == CallKind::Allocation))
            *address = call.replacement;
    }
}

std::vector<std::string> replaceAll() {
    for (const ImportedCall& call : getImportedCalls())
        *call.slot = &call;
    std::vector<std::string> names;
    for (const char* const library : {"libul.", "libsarn."}) {
        visitImports(library, [&](const char* name, void** address) {
            names.emplace_back(name);
            replace(name, address, false);
        });
    }
    const auto replaceAllocation = [](const char* name, void** address) { replace(name, address, true); };
    for (const char* const library : {"libcrypto.", "libz."})
        visitImports(library, replaceAllocation);
    visitImports("libstdc++.", [](const char* name, void** address) {
        // Its operator new is replaced where it is called, and the text of an error needs malloc().
        if (name == std::string("_Znwm") || name == std::string("getcwd"))
            replace(name, address, false);
    });
    return names;
}

} // namespace

const std::vector<ImportedCall>& getImportedCalls() {
    static const std::vector<ImportedCall> calls = makeImportedCalls();
    return calls;
}

const std::vector<std::string>& installReplacements() {
    static const std::vector<std::string> names = replaceAll();
    return names;
}

Injection::Injection(bool ofAllocations, int index, Duration duration)
    : m_ofAllocations(ofAllocations), m_index(index), m_duration(duration) {
    activeInjection = this;
}

Injection::~Injection() {
    activeInjection = nullptr;
}

bool Injection::mustFail(const ImportedCall& call) {
    Injection* const injection = activeInjection;
    if (!injection || injection->m_ofAllocations != (call.kind == CallKind::Allocation))
        return false;
    const int index = injection->m_count++;
    const bool fails =
        injection->m_duration == Duration::Once ? index == injection->m_index : index >= injection->m_index;
    if (fails) {
        if (call.kind != CallKind::Allocation)
            injection->m_failed.insert(call.name);
        injection->m_first = injection->m_first ? injection->m_first : &call;
        injection->m_mustBeNoticed = injection->m_mustBeNoticed || !call.isIgnored;
    }
    return fails;
}

bool Injection::hasFailed(const std::string& name) {
    return activeInjection && activeInjection->m_failed.count(name) > 0;
}

SmallPieces::SmallPieces() {
    piecesCount = 0;
    pieces = true;
}

SmallPieces::~SmallPieces() {
    pieces = false;
}

int SmallPieces::getCallCount() const {
    return piecesCount;
}

FileSteps::FileSteps() {
    steps.clear();
    isRecording = true;
}

FileSteps::~FileSteps() {
    isRecording = false;
}

std::vector<std::string> FileSteps::get() const {
    return steps;
}

PretendedOwner::PretendedOwner(unsigned owner) {
    pretendedOwner = owner;
}

PretendedOwner::~PretendedOwner() {
    pretendedOwner.reset();
}

BeforeOpening::BeforeOpening(std::string file, int index, std::function<void()> action)
    : m_file(std::move(file)), m_index(index), m_action(std::move(action)) {
    activeHook = this;
}

BeforeOpening::~BeforeOpening() {
    activeHook = nullptr;
}

void BeforeOpening::note(const char* file) {
    if (activeHook && activeHook->m_file == file && activeHook->m_count++ == activeHook->m_index)
        activeHook->m_action();
}

PretendedSize::PretendedSize(const std::string& file, long long size) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0)
        throw std::runtime_error("no such file: " + file);
    pretendingFile = status.st_ino;
    pretendedSize = size;
}

PretendedSize::~PretendedSize() {
    pretendingFile = 0;
}

} // namespace sarn_test
