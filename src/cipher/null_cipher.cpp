// SPDX-License-Identifier: Apache-2.0
#include "sarn/cipher.h"

namespace sarn {

namespace {

void copy(const void* data, int size, ul::TBuffer<unsigned char>& out, bool append) {
    if (append)
        out.insert(out.getUsed(), data, size);
    else
        out.init(static_cast<const unsigned char*>(data), size);
}

} // namespace

CCipher_Null::CCipher_Null() = default;
CCipher_Null::CCipher_Null(const CCipher_Null&) = default;
CCipher_Null::CCipher_Null(CCipher_Null&&) noexcept = default;
CCipher_Null& CCipher_Null::operator=(const CCipher_Null&) = default;
// A default one would move the virtual base, which has nothing to move and warns of it.
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

void CCipher_Null::encrypt(const ul::TCryptBuffer<unsigned char>&, const void* data, int size,
                           ul::TBuffer<unsigned char>& out, bool append, const unsigned char*) {
    copy(data, size, out, append);
}

void CCipher_Null::decrypt(const ul::TCryptBuffer<unsigned char>&, const void* data, int size,
                           ul::TBuffer<unsigned char>& out, bool append, const unsigned char*) {
    copy(data, size, out, append);
}

void CCipher_Null::encryptWithoutPadding(const ul::TCryptBuffer<unsigned char>&, const void* data, int size,
                                         ul::TBuffer<unsigned char>& out, bool append, const unsigned char*) {
    copy(data, size, out, append);
}

void CCipher_Null::decryptWithoutPadding(const ul::TCryptBuffer<unsigned char>&, const void* data, int size,
                                         ul::TBuffer<unsigned char>& out, bool append, const unsigned char*) {
    copy(data, size, out, append);
}

} // namespace sarn
