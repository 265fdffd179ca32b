// SPDX-License-Identifier: Apache-2.0
#include "sarn/cipher.h"

#include "frame/error_queue_mark.h"
#include "frame/openssl_owners.h"
#include "frame/overlap.h"
#include "frame/raise.h"

#include "sarn/openssl_init.h"

#include "ul/random.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <utility>

namespace sarn {

namespace {

using Key = ul::TCryptBuffer<unsigned char>;
using Buffer = ul::TBuffer<unsigned char>;

constexpr char encryptInitFailed[] = "OpenSSL encrypt init error.";
constexpr char encryptFailed[] = "OpenSSL encrypt error.";
constexpr char decryptFailed[] = "OpenSSL decrypt error.";

/// The input of one call. Empty input points to something readable, whatever the caller passed.
struct Input {
    Input(const void* inputData, int inputSize)
        : data(inputSize == 0 ? reinterpret_cast<const unsigned char*>("")
                              : static_cast<const unsigned char*>(inputData)),
          size(inputSize) {}

    const unsigned char* data;
    int size;
};

/// An initialisation vector out of reach of the output buffer, whose block may move or be overwritten.
using IVCopy = std::array<unsigned char, EVP_MAX_IV_LENGTH>;

IVCopy copyIV(const unsigned char* iv, int ivSize) {
    IVCopy copy;
    std::memcpy(copy.data(), iv, static_cast<std::size_t>(ivSize));
    return copy;
}

int getStart(const Buffer& out, bool append) {
    return append ? out.getUsed() : 0;
}

/// Refuses input that cannot be processed whatever the cipher.
/// \param start      where the operation begins to write in `out`
/// \param position   where the first byte made from the input goes
/// \param outputSize how many bytes it may write from `start` on
void checkRoom(const char* where, const Key& key, const Input& input, const Buffer& out, int start, int position,
               long long outputSize) {
    if (input.size < 0)
        raiseInvalidArg(where, "invalid input data size");
    if (start + outputSize > INT_MAX)
        raiseInvalidArg(where, "input data is too large");
    if (&key == &out)
        raiseInvalidArg(where, "key overlaps output");
    if (!overlaps(input.data, input.size, out))
        return;
    const auto* const begin = static_cast<const unsigned char*>(static_cast<const void*>(input.data));
    const bool mustGrow = start + outputSize > out.getAllocated();
    const bool isBefore = begin + input.size <= out.getData() + start;
    const bool isInPlace = begin == out.getData() + position;
    if (mustGrow || !(isBefore || isInPlace))
        raiseInvalidArg(where, "input overlaps output");
}

CipherContextPtr createContext() {
    CipherContextPtr context(EVP_CIPHER_CTX_new());
    if (context)
        EVP_CIPHER_CTX_reset(context.get());
    return context;
}

void fillWithRandomBytes(unsigned char* data, int size) {
    const ul::CMutexLock lock(ul::CMTRand::getGlobalInstanceMutex().get());
    ul::CMTRand::getGlobal()->randData(data, size);
}

void checkTotal(const char* message, int written, int expected) {
    if (written != expected)
        raiseError(message,
                   ul::CProps().add("outSize", ul::toString(written)).add("expectedOutSize", ul::toString(expected)));
}

} // namespace

COpenSSLCipher::COpenSSLCipher(const EVP_CIPHER* cipher, const ul::String& id) {
    COpenSSLInit::ensureInitialized();
    m_cipher = cipher;
    m_id = id;
    m_keySize = EVP_CIPHER_key_length(cipher);
    m_ivSize = EVP_CIPHER_iv_length(cipher);
    m_blockSize = EVP_CIPHER_block_size(cipher);
    m_zeroBlock.setUsed(m_blockSize);
    std::fill_n(m_zeroBlock.getData(), m_blockSize, static_cast<unsigned char>(0));
}

COpenSSLCipher::COpenSSLCipher(const COpenSSLCipher&) = default;
COpenSSLCipher& COpenSSLCipher::operator=(const COpenSSLCipher&) = default;

// Only the identifier is moved: what is moved from keeps its sizes, and with them the need of its zero block.
COpenSSLCipher::COpenSSLCipher(COpenSSLCipher&& other) : COpenSSLCipher(std::as_const(other)) {
    m_id = std::move(other.m_id);
}

COpenSSLCipher& COpenSSLCipher::operator=(COpenSSLCipher&& other) {
    *this = std::as_const(other);
    m_id = std::move(other.m_id);
    return *this;
}

COpenSSLCipher::~COpenSSLCipher() = default;

ul::String COpenSSLCipher::getID() {
    return m_id;
}

int COpenSSLCipher::getKeySize() const {
    return m_keySize;
}

int COpenSSLCipher::getIVSize() const {
    return m_ivSize;
}

int COpenSSLCipher::getBlockSize() const {
    return m_blockSize;
}

void COpenSSLCipher::encrypt(const Key& key, const void* data, int size, Buffer& out, bool append,
                             const unsigned char* iv) {
    constexpr char where[] = "COpenSSLCipher::encrypt";
    checkKey(key, where);
    ErrorQueueMark mark;
    const CipherContextPtr context = createContext();
    const Input input(data, size);
    int start = getStart(out, append);
    const int ownIVSize = iv ? 0 : m_ivSize;
    const long long outputSize = static_cast<long long>(size) + m_blockSize + ownIVSize;
    checkRoom(where, key, input, out, start, start + ownIVSize, outputSize);

    IVCopy ivCopy;
    if (iv) {
        ivCopy = copyIV(iv, m_ivSize);
        out.ensureAllocated(start + static_cast<int>(outputSize));
    } else {
        out.ensureAllocated(start + static_cast<int>(outputSize));
        fillWithRandomBytes(out.getData() + start, m_ivSize);
        ivCopy = copyIV(out.getData() + start, m_ivSize);
        start += m_ivSize;
    }
    if (!context || !EVP_EncryptInit(context.get(), m_cipher, key.getData(), ivCopy.data()))
        mark.raise(encryptInitFailed);

    int written = 0;
    if (input.size > 0 && !EVP_EncryptUpdate(context.get(), out.getData() + start, &written, input.data, input.size))
        mark.raise(encryptFailed);
    out.setUsed(start + written);
    if (!EVP_EncryptFinal(context.get(), out.getData() + out.getUsed(), &written))
        mark.raise(encryptFailed);
    out.addUsed(written);
}

void COpenSSLCipher::decrypt(const Key& key, const void* data, int size, Buffer& out, bool append,
                             const unsigned char* iv) {
    constexpr char where[] = "COpenSSLCipher::decrypt";
    checkKey(key, where);
    ErrorQueueMark mark;
    const CipherContextPtr context = createContext();
    Input input(data, size);
    if (!iv) {
        if (size < m_ivSize)
            raiseInvalidArg(where, "invalid input data size");
        iv = input.data;
        input = Input(input.data + m_ivSize, size - m_ivSize);
    }
    const int start = getStart(out, append);
    const long long outputSize = static_cast<long long>(m_blockSize) + input.size;
    checkRoom(where, key, input, out, start, start, outputSize);

    if (!context || !EVP_DecryptInit(context.get(), m_cipher, key.getData(), iv))
        mark.raise(encryptInitFailed);
    out.ensureAllocated(start + static_cast<int>(outputSize));

    int written = 0;
    if (!EVP_DecryptUpdate(context.get(), out.getData() + start, &written, input.data, input.size))
        mark.raise(decryptFailed);
    out.setUsed(start + written);
    if (!EVP_DecryptFinal(context.get(), out.getData() + out.getUsed(), &written))
        mark.raise(decryptFailed);
    out.addUsed(written);
}

void COpenSSLCipher::encryptWithoutPadding(const Key& key, const void* data, int size, Buffer& out, bool append,
                                           const unsigned char* iv) {
    constexpr char where[] = "COpenSSLCipher::encryptWithoutPadding";
    checkKey(key, where);
    if (!iv)
        raiseInvalidArg(where, "IV cannot be NULL");
    const int start = getStart(out, append);
    if (size == 0) {
        out.setUsed(start);
        return;
    }
    const Input input(data, size);
    const long long filled = static_cast<long long>(size) - 1 + m_blockSize;
    const long long paddedSize = filled - filled % m_blockSize;
    checkRoom(where, key, input, out, start, start, paddedSize);
    const int expected = static_cast<int>(paddedSize);

    ErrorQueueMark mark;
    const CipherContextPtr context = createContext();
    const IVCopy ivCopy = copyIV(iv, m_ivSize);
    out.setUsed(start + expected);
    if (!context || !EVP_EncryptInit(context.get(), m_cipher, key.getData(), ivCopy.data()) ||
        !EVP_CIPHER_CTX_set_padding(context.get(), 0))
        mark.raise(encryptInitFailed);

    unsigned char* const result = out.getData() + start;
    int total = 0;
    int written = 0;
    if (!EVP_EncryptUpdate(context.get(), result, &total, input.data, input.size))
        mark.raise(encryptFailed);
    if (expected > input.size) {
        if (!EVP_EncryptUpdate(context.get(), result + total, &written, m_zeroBlock.getData(), expected - input.size))
            mark.raise(encryptFailed);
        total += written;
    }
    if (!EVP_EncryptFinal(context.get(), result + total, &written))
        mark.raise(encryptFailed);
    checkTotal("OpenSSL encrypt error: output size does not match expected value", total + written, expected);
}

void COpenSSLCipher::decryptWithoutPadding(const Key& key, const void* data, int size, Buffer& out, bool append,
                                           const unsigned char* iv) {
    constexpr char where[] = "COpenSSLCipher::decryptWithoutPadding";
    checkKey(key, where);
    if (!iv)
        raiseInvalidArg(where, "IV cannot be NULL");
    if (size % m_blockSize != 0)
        raiseInvalidArg(where, "data size must be a multiple of the block size");
    const int start = getStart(out, append);
    if (size == 0) {
        out.setUsed(start);
        return;
    }
    const Input input(data, size);
    checkRoom(where, key, input, out, start, start, input.size);

    ErrorQueueMark mark;
    const CipherContextPtr context = createContext();
    if (!context || !EVP_DecryptInit(context.get(), m_cipher, key.getData(), iv) ||
        !EVP_CIPHER_CTX_set_padding(context.get(), 0))
        mark.raise(encryptInitFailed);

    out.setUsed(start + input.size);
    unsigned char* const result = out.getData() + start;
    int total = 0;
    int written = 0;
    if (!EVP_DecryptUpdate(context.get(), result, &total, input.data, input.size))
        mark.raise(decryptFailed);
    if (!EVP_DecryptFinal(context.get(), result + total, &written))
        mark.raise(decryptFailed);
    checkTotal("OpenSSL decrypt error: decrypted size does not match expected value", total + written, input.size);
}

void COpenSSLCipher::checkKey(const Key& key, const char* where) const {
    if (key.getUsed() != m_keySize)
        raiseInvalidArg(where, "invalid key size");
}

} // namespace sarn
