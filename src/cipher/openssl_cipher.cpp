// SPDX-License-Identifier: Apache-2.0
#include "sarn/openssl_cipher.h"

#include "cipher/arguments.h"
#include "cipher/cipher_run.h"
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

/// The input of one call. Its pointer is always readable, even if the caller passed null for empty input.
struct Input {
    Input(const void* inputData, int inputSize)
        : data(inputSize == 0 ? reinterpret_cast<const unsigned char*>("")
                              : static_cast<const unsigned char*>(inputData)),
          size(inputSize) {}

    const unsigned char* data;
    int size;
};

/// An IV outside the output buffer, whose block may move or be overwritten.
using IVCopy = std::array<unsigned char, EVP_MAX_IV_LENGTH>;

IVCopy copyIV(const unsigned char* iv, int ivSize) {
    IVCopy copy;
    std::memcpy(copy.data(), iv, static_cast<std::size_t>(ivSize));
    return copy;
}

/// Refuses arguments that no cipher can process.
/// \param start      where the operation begins to write in `out`
/// \param position   where the first byte computed from the input goes
/// \param outputSize number of bytes that it may write from `start` on
void checkRoom(const char* where, const Key& key, Input input, const Buffer& out, int start, int position,
               long long outputSize) {
    checkArguments(where, key, input.size, out, start, outputSize);
    if (!overlaps(input.data, input.size, out))
        return;
    const bool mustGrow = start + outputSize > out.getAllocated();
    const bool isBefore = input.data + input.size <= out.getData() + start;
    const bool isInPlace = input.data == out.getData() + position;
    if (mustGrow || !(isBefore || isInPlace))
        raiseInvalidArg(where, "input overlaps output");
}

void checkDescription(const EVP_CIPHER* cipher) {
    static constexpr char where[] = "COpenSSLCipher::COpenSSLCipher";
    if (!cipher)
        raiseInvalidArg(where, "cipher cannot be NULL");
    // An authenticating mode would lose its tag, without which the data cannot be decrypted.
    if (EVP_CIPHER_mode(cipher) != EVP_CIPH_CBC_MODE || (EVP_CIPHER_flags(cipher) & EVP_CIPH_FLAG_AEAD_CIPHER) != 0)
        raiseInvalidArg(where, "cipher is not in CBC mode");
    if (EVP_CIPHER_iv_length(cipher) > EVP_MAX_IV_LENGTH)
        raiseInvalidArg(where, "IV is too long");
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
    checkDescription(cipher);
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

// Only the identifier is moved. A moved-from cipher keeps its sizes, so it needs its zero block too.
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
    static constexpr char where[] = "COpenSSLCipher::encrypt";
    checkKey(key, where);
    // The padded pair creates its context before it checks the other arguments, unlike the operations without padding.
    Encryption run;
    const Input input(data, size);
    int start = getStart(out, append);
    const int ownIVSize = iv ? 0 : m_ivSize;
    const long long outputSize = static_cast<long long>(size) + m_blockSize + ownIVSize;
    checkRoom(where, key, input, out, start, start + ownIVSize, outputSize);

    // Copied before the block moves: the IV may be inside it.
    IVCopy ivCopy;
    if (iv)
        ivCopy = copyIV(iv, m_ivSize);
    out.ensureAllocated(start + static_cast<int>(outputSize));
    if (!iv) {
        fillWithRandomBytes(out.getData() + start, m_ivSize);
        ivCopy = copyIV(out.getData() + start, m_ivSize);
        start += m_ivSize;
    }
    run.begin(m_cipher, key, ivCopy.data(), true);
    const int written = input.size > 0 ? run.update(out.getData() + start, input.data, input.size) : 0;
    out.setUsed(start + written);
    out.addUsed(run.finish(out.getData() + out.getUsed()));
}

void COpenSSLCipher::decrypt(const Key& key, const void* data, int size, Buffer& out, bool append,
                             const unsigned char* iv) {
    static constexpr char where[] = "COpenSSLCipher::decrypt";
    checkKey(key, where);
    // Before the other arguments are checked, as in encrypt().
    Decryption run;
    Input input(data, size);
    if (!iv) {
        if (size < m_ivSize)
            raiseInvalidArg(where, "invalid input data size");
        iv = input.data;
        input = Input(input.data + m_ivSize, size - m_ivSize);
    }
    const int start = getStart(out, append);
    // Room for one block more than the input, except for the largest sizes: libcrypto never writes more than it reads.
    const long long left = std::max(INT_MAX - start, input.size);
    const long long outputSize = std::min(static_cast<long long>(input.size) + m_blockSize, left);
    checkRoom(where, key, input, out, start, start, outputSize);

    run.begin(m_cipher, key, iv, true);
    out.ensureAllocated(start + static_cast<int>(outputSize));
    out.setUsed(start + run.update(out.getData() + start, input.data, input.size));
    out.addUsed(run.finish(out.getData() + out.getUsed()));
}

void COpenSSLCipher::encryptWithoutPadding(const Key& key, const void* data, int size, Buffer& out, bool append,
                                           const unsigned char* iv) {
    static constexpr char where[] = "COpenSSLCipher::encryptWithoutPadding";
    checkKey(key, where);
    if (!iv)
        raiseInvalidArg(where, "IV cannot be NULL");
    const int start = getStart(out, append);
    const Input input(data, size);
    const long long filled = static_cast<long long>(size) - 1 + m_blockSize;
    const long long paddedSize = filled - filled % m_blockSize;
    checkRoom(where, key, input, out, start, start, paddedSize);
    if (size == 0) {
        out.setUsed(start);
        return;
    }
    const int expected = static_cast<int>(paddedSize);

    Encryption run;
    const IVCopy ivCopy = copyIV(iv, m_ivSize);
    out.setUsed(start + expected);
    run.begin(m_cipher, key, ivCopy.data(), false);
    unsigned char* const result = out.getData() + start;
    int total = run.update(result, input.data, input.size);
    if (expected > input.size)
        total += run.update(result + total, m_zeroBlock.getData(), expected - input.size);
    total += run.finish(result + total);
    checkTotal("OpenSSL encrypt error: output size does not match expected value", total, expected);
}

void COpenSSLCipher::decryptWithoutPadding(const Key& key, const void* data, int size, Buffer& out, bool append,
                                           const unsigned char* iv) {
    static constexpr char where[] = "COpenSSLCipher::decryptWithoutPadding";
    checkKey(key, where);
    if (!iv)
        raiseInvalidArg(where, "IV cannot be NULL");
    if (size % m_blockSize != 0)
        raiseInvalidArg(where, "data size must be a multiple of the block size");
    const int start = getStart(out, append);
    const Input input(data, size);
    checkRoom(where, key, input, out, start, start, input.size);
    if (size == 0) {
        out.setUsed(start);
        return;
    }

    Decryption run;
    run.begin(m_cipher, key, iv, false);
    out.setUsed(start + input.size);
    unsigned char* const result = out.getData() + start;
    int total = run.update(result, input.data, input.size);
    total += run.finish(result + total);
    checkTotal("OpenSSL decrypt error: decrypted size does not match expected value", total, input.size);
}

void COpenSSLCipher::checkKey(const Key& key, const char* where) const {
    if (key.getUsed() != m_keySize)
        raiseInvalidArg(where, "invalid key size");
}

} // namespace sarn
