// SPDX-License-Identifier: Apache-2.0
// Signatures beside raw calls of libcrypto. The PEM text of the key is read each time.
#include "measure.h"
#include "rows.h"

#include <sarn/signature.h>

#include <ul/file.h>

#include <openssl/evp.h>
#include <openssl/pem.h>

#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <unistd.h>

namespace bench {

namespace {

using Signature = ul::TBuffer<unsigned char>;

ul::String readKey(const std::string& file) {
    return ul::readUTF8TextFile(ul::CWindowsPath((std::string(SARN_BENCH_KEYS "/") + file).c_str()));
}

/// A digest of data, and a key, from which a signature is computed or verified.
class RawSession {
public:
    RawSession(const ul::String& pem, bool isPrivate) {
        const std::string text = pem.toLatin1();
        BIO* const bio = BIO_new_mem_buf(text.data(), static_cast<int>(text.size()));
        m_key = (isPrivate ? PEM_read_bio_PrivateKey : PEM_read_bio_PUBKEY)(bio, nullptr, nullptr, nullptr);
        BIO_free_all(bio);
        EVP_DigestInit(m_context, EVP_sha1());
    }
    RawSession(RawSession&&) = delete;
    ~RawSession() {
        EVP_MD_CTX_free(m_context);
        EVP_PKEY_free(m_key);
    }

    void update(const void* data, std::size_t size) { EVP_DigestUpdate(m_context, data, size); }
    /// Uses pieces of the same size as the library.
    void updateFromFile(const char* path) {
        unsigned char chunk[8192];
        const int file = open(path, O_RDONLY | O_CLOEXEC);
        for (ssize_t count; (count = read(file, chunk, sizeof chunk)) > 0;)
            update(chunk, static_cast<std::size_t>(count));
        close(file);
    }
    void sign() {
        unsigned char signature[1024];
        unsigned size = 0;
        require(EVP_SignFinal(m_context, signature, &size, m_key) == 1);
    }
    bool verify(const Signature& signature) {
        const auto size = static_cast<unsigned>(signature.getUsed());
        return EVP_VerifyFinal(m_context, signature.getData(), size, m_key) == 1;
    }

private:
    EVP_PKEY* m_key = nullptr;
    EVP_MD_CTX* m_context = EVP_MD_CTX_new();
};

struct Keys {
    explicit Keys(const std::string& name)
        : privateKey(readKey(name + "_for_tests_only.pem")), publicKey(readKey(name + "_for_tests_only.pub.pem")) {}

    ul::String privateKey;
    ul::String publicKey;
};

void compareData(const std::string& name, const Keys& keys, const ul::P<sarn::ISignatureAlgo>& algo) {
    const Bytes data(1024, 5);
    const auto sign = [&](Signature& signature) {
        const ul::P<sarn::ISigner> signer = algo->beginSign(keys.privateKey, "");
        signer->update(data.data(), 1024);
        signer->finish(signature);
    };
    const auto verify = [&](const Signature& signature) {
        const ul::P<sarn::IVerifier> verifier = algo->beginVerify(keys.publicKey);
        verifier->update(data.data(), 1024);
        return verifier->finish(signature);
    };
    const Work signRaw = [&] {
        RawSession session(keys.privateKey, true);
        session.update(data.data(), data.size());
        session.sign();
    };
    Signature signature;
    sign(signature);
    const auto verifyRaw = [&] {
        RawSession session(keys.publicKey, false);
        session.update(data.data(), data.size());
        require(session.verify(signature));
    };
    const auto makeSign = [&] { return [&, own = Signature()]() mutable { sign(own); }; };
    if (isSelected(name + " sign"))
        compare(name + " sign", 1024, signRaw, makeSign());
    if (isSelected(name + " verify"))
        compare(name + " verify", 1024, verifyRaw, [&] { require(verify(signature)); });
    compareThreads(
        name + " sign, two threads", [&] { return signRaw; }, makeSign);
}

/// A file of equal bytes, which is removed at the end.
struct File {
    explicit File(int size)
        : native(std::filesystem::temp_directory_path() / ("sarn_bench_" + std::to_string(getpid()))),
          path(native.c_str()) {
        std::ofstream(native, std::ios::binary) << std::string(static_cast<std::size_t>(size), 'x');
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() { std::filesystem::remove(native); }

    std::filesystem::path native;
    ul::CWindowsPath path;
};

void compareFile(const Keys& keys, int size) {
    if (!isSelected("RSA sign a file") && !isSelected("RSA verify a file"))
        return;
    const File file(size);
    Signature signature;
    const Work sign = [&] { sarn::createFileSignature_RSA_SHA1(file.path, keys.privateKey, signature); };
    if (isSelected("RSA sign a file"))
        compare(
            "RSA sign a file", size,
            [&] {
                RawSession session(keys.privateKey, true);
                session.updateFromFile(file.native.c_str());
                session.sign();
            },
            sign);
    sign();
    if (isSelected("RSA verify a file"))
        compare(
            "RSA verify a file", size,
            [&] {
                RawSession session(keys.publicKey, false);
                session.updateFromFile(file.native.c_str());
                require(session.verify(signature));
            },
            [&] { require(sarn::verifyFileSignature_RSA_SHA1(file.path, keys.publicKey, signature)); });
}

} // namespace

void compareSignatures() {
    const Keys rsa("rsa2048");
    compareData("RSA", rsa, sarn::createRSA_SHA1());
    compareData("DSA", Keys("dsa2048"), sarn::createDSS_SHA1());
    compareFile(rsa, 4 << 20);
}

} // namespace bench
