// SPDX-License-Identifier: Apache-2.0
#include "sarn/null_cipher.h"

#include "cipher/arguments.h"

namespace sarn {

namespace {

void copy(const char* where, const Key& key, const void* data, int size, Buffer& out, bool append) {
    const int start = getStart(out, append);
    checkArguments(where, key, size, out, start, size);
    if (append)
        out.insert(start, data, size);
    else
        out.init(static_cast<const unsigned char*>(data), size);
}

} // namespace

CCipher_Null::CCipher_Null() = default;
CCipher_Null::CCipher_Null(const CCipher_Null&) = default;
CCipher_Null::CCipher_Null(CCipher_Null&&) noexcept = default;
CCipher_Null& CCipher_Null::operator=(const CCipher_Null&) = default;
// Not defaulted: that would move the virtual base, which has nothing to move, and the compiler warns about it.
CCipher_Null& CCipher_Null::operator=(CCipher_Null&&) noexcept {
    return *this;
}
CCipher_Null::~CCipher_Null() = default;

ul::String CCipher_Null::getID() {
    return "null";
}

int CCipher_Null::getKeySize() const {
    return 0;
}

int CCipher_Null::getIVSize() const {
    return 0;
}

int CCipher_Null::getBlockSize() const {
    return 1;
}

void CCipher_Null::encrypt(const Key& key, const void* data, int size, Buffer& out, bool append, const unsigned char*) {
    copy("CCipher_Null::encrypt", key, data, size, out, append);
}

void CCipher_Null::decrypt(const Key& key, const void* data, int size, Buffer& out, bool append, const unsigned char*) {
    copy("CCipher_Null::decrypt", key, data, size, out, append);
}

void CCipher_Null::encryptWithoutPadding(const Key& key, const void* data, int size, Buffer& out, bool append,
                                         const unsigned char*) {
    copy("CCipher_Null::encryptWithoutPadding", key, data, size, out, append);
}

void CCipher_Null::decryptWithoutPadding(const Key& key, const void* data, int size, Buffer& out, bool append,
                                         const unsigned char*) {
    copy("CCipher_Null::decryptWithoutPadding", key, data, size, out, append);
}

} // namespace sarn
