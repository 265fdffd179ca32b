// SPDX-License-Identifier: Apache-2.0
// The code of two shared libraries that do not know each other.
#include "system/modules/module.h"

#include "sarn/encoding.h"
#include "sarn/password_key_cache.h"
#include "sarn/signed_config.h"

#include "ul/random.h"

#include <cstring>

namespace sarn_test {

namespace {

GlobalObjects getGlobalObjects() {
    return {sarn::COpenSSLInit::get().get(),
            sarn::COpenSSLInit::CCleaner::get().get(),
            sarn::COpenSSLInit::CThreadStuff::get().get(),
            sarn::CCipherManager::get().get(),
            sarn::CDigestManager::get().get(),
            ul::CMTRand::getGlobal().get(),
            ul::CMTRand::getGlobalInstanceMutex().get()};
}

void raise(ErrorKind kind) {
    switch (kind) {
    case ErrorKind::error:
        sarn::CCipherManager::get()->getCipher("unknown");
        break;
    case ErrorKind::invalidArgument: {
        ul::TBuffer<unsigned char> out;
        sarn::CCipherManager::get()->getCipher("aes128cbc")->encrypt({}, "", 0, out, false, nullptr);
        break;
    }
    case ErrorKind::badState:
        throw ul::CBadStateError("state");
    case ErrorKind::badPath:
        throw ul::CBadPathError("path");
    case ErrorKind::file:
        throw ul::CFileError("open", "path", "reason", 2);
    case ErrorKind::versionMismatch:
        throw sarn::COpenSSLVersionMismatchError("object", 1, 2);
    case ErrorKind::configSignature:
        throw sarn::CSignedConfigSignatureError(ul::CWindowsPath("C:\\a.ini"));
    case ErrorKind::none:
        break;
    }
}

ErrorKind classify(void (*action)(ErrorKind), ErrorKind argument) {
    try {
        action(argument);
    } catch (const sarn::CSignedConfigSignatureError&) {
        return ErrorKind::configSignature;
    } catch (const sarn::COpenSSLVersionMismatchError&) {
        return ErrorKind::versionMismatch;
    } catch (const ul::CFileError&) {
        return ErrorKind::file;
    } catch (const ul::CBadPathError&) {
        return ErrorKind::badPath;
    } catch (const ul::CBadStateError&) {
        return ErrorKind::badState;
    } catch (const ul::CInvalidArgError&) {
        return ErrorKind::invalidArgument;
    } catch (const ul::CError&) {
        return ErrorKind::error;
    }
    return ErrorKind::none;
}

ul::P<sarn::IDigest> createDigest(const char* id) {
    return sarn::CDigestManager::get()->getType(id)->createDigest();
}

int finishAndRelease(ul::P<sarn::IDigest> digest) {
    digest->update("abc", 3);
    digest->finish();
    ul::TBuffer<unsigned char> result;
    result.setUsed(digest->getDigestSize());
    digest->storeDigestData(result.getData());
    return result.getData()[0];
}

void encrypt(const ul::TCryptBuffer<unsigned char>& key, const ul::String& text, ul::TBuffer<unsigned char>& out) {
    const std::string bytes = text.toUTF8();
    sarn::CCipherManager::get()
        ->getCipher("aes256cbc")
        ->encrypt(key, bytes.data(), static_cast<int>(bytes.size()), out, true, nullptr);
}

class ModuleCipher : public sarn::CCipher_Null {
public:
    explicit ModuleCipher(const char* id) : m_id(id) {}
    ul::String getID() override { return m_id; }

private:
    ul::String m_id;
};

void registerCipher(const char* id) {
    sarn::CCipherManager::get()->addCipher(ul::make<ModuleCipher>(id).get());
}

bool restores(sarn::ICipher& cipher) {
    ul::TCryptBuffer<unsigned char> key;
    key.setUsed(cipher.getKeySize());
    std::memset(key.getData(), 7, static_cast<std::size_t>(key.getUsed()));
    ul::TBuffer<unsigned char> encrypted;
    ul::TBuffer<unsigned char> decrypted;
    cipher.encrypt(key, "only copy", 9, encrypted, false, nullptr);
    cipher.decrypt(key, encrypted.getData(), encrypted.getUsed(), decrypted, false, nullptr);
    return decrypted.getUsed() == 9 && std::memcmp(decrypted.getData(), "only copy", 9) == 0;
}

bool useEveryFamily() {
    for (const char* const id : {"aes256cbc", "aes128cbc", "bfcbc", "cast128cbc"}) {
        if (!restores(*sarn::CCipherManager::get()->getCipher(id)))
            return false;
    }
    ul::TCryptBuffer<char> password;
    password.init("password", 8);
    sarn::CPasswordKeyCache cache(password);
    const bool isKeyKept = cache.getKey(32, 1, 2).get() == cache.getKey(32, 1, 2).get();
    ul::TBuffer<unsigned char> hmac;
    sarn::calcHMAC_MD5(hmac, "data", 4, "key", 3);
    return isKeyKept && hmac.getUsed() == 16 && sarn::base64Encode("abc", 3, true, false) == "YWJj" &&
           finishAndRelease(createDigest("md4-sha1-adler32")) == 0xA4;
}

} // namespace

} // namespace sarn_test

const sarn_test::Module* getModule() {
    using namespace sarn_test;
    static const Module module = {getGlobalObjects, raise,   classify,       createDigest,
                                  finishAndRelease, encrypt, registerCipher, useEveryFamily};
    return &module;
}
