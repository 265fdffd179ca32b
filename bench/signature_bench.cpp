// SPDX-License-Identifier: Apache-2.0
// Signing and verifying data and a large file, compared with raw calls of libcrypto. The PEM text of the key is parsed
// each time.
#include "comparison.h"
#include "families.h"
#include "peers/peer.h"

#include <sarn/signature.h>

#include <ul/file.h>

#include <openssl/evp.h>
#include <openssl/pem.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace bench {

namespace {

using ContextPtr = std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)>;
using KeyPtr = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Buffer = ul::TBuffer<unsigned char>;

struct Keys {
    /// \param form part of the private key's file name: the traditional form, or "_pkcs8", which every library reads
    explicit Keys(const std::string& name, const std::string& form = "")
        : privateKey(read(name + form + "_for_tests_only.pem")), publicKey(read(name + "_for_tests_only.pub.pem")) {}

    static ul::String read(const std::string& file) {
        return ul::readUTF8TextFile(ul::CWindowsPath((std::string(SARN_BENCH_KEYS "/") + file).c_str()));
    }

    ul::String privateKey;
    ul::String publicKey;
};

using PEMReader = EVP_PKEY* (*)(BIO*, EVP_PKEY**, pem_password_cb*, void*);

KeyPtr readKeyRaw(const ul::String& text, PEMReader reader) {
    const std::string pem = text.toLatin1();
    BIO* const bio = BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size()));
    KeyPtr key(reader(bio, nullptr, nullptr, nullptr), EVP_PKEY_free);
    BIO_free_all(bio);
    return key;
}

ContextPtr startRaw() {
    ContextPtr context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    EVP_DigestInit(context.get(), EVP_sha1());
    return context;
}

ContextPtr digestRaw(const Bytes& data) {
    ContextPtr context = startRaw();
    EVP_DigestUpdate(context.get(), data.data(), data.size());
    return context;
}

/// Uses pieces of the same size as the library.
ContextPtr digestFileRaw(const std::filesystem::path& path) {
    ContextPtr context = startRaw();
    unsigned char chunk[8192];
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    for (ssize_t count; (count = ::read(file, chunk, sizeof chunk)) > 0;)
        EVP_DigestUpdate(context.get(), chunk, static_cast<std::size_t>(count));
    ::close(file);
    return context;
}

void signRaw(const ContextPtr& context, const Keys& keys) {
    const KeyPtr key = readKeyRaw(keys.privateKey, PEM_read_bio_PrivateKey);
    unsigned char signature[1024];
    unsigned size = 0;
    if (EVP_SignFinal(context.get(), signature, &size, key.get()) != 1)
        std::abort();
}

void verifyRaw(const ContextPtr& context, const Keys& keys, const Buffer& signature) {
    const KeyPtr key = readKeyRaw(keys.publicKey, PEM_read_bio_PUBKEY);
    if (EVP_VerifyFinal(context.get(), signature.getData(), static_cast<unsigned>(signature.getUsed()), key.get()) != 1)
        std::abort();
}

Buffer sign(const ul::P<sarn::ISignatureAlgo>& algo, const Keys& keys, const Bytes& data) {
    const ul::P<sarn::ISigner> signer = algo->beginSign(keys.privateKey, "");
    signer->update(data.data(), static_cast<int>(data.size()));
    Buffer signature;
    signer->finish(signature);
    return signature;
}

void verify(const ul::P<sarn::ISignatureAlgo>& algo, const Keys& keys, const Bytes& data, const Buffer& signature) {
    const ul::P<sarn::IVerifier> verifier = algo->beginVerify(keys.publicKey);
    verifier->update(data.data(), static_cast<int>(data.size()));
    if (!verifier->finish(signature))
        std::abort();
}

void compareData(const std::string& algorithm, const std::string& keyName, const ul::P<sarn::ISignatureAlgo>& algo) {
    const auto keys = std::make_shared<Keys>(keyName, algorithm == "rsa" ? "_pkcs8" : "");
    const auto data = std::make_shared<Bytes>(1024, static_cast<unsigned char>(5));
    const auto signature = std::make_shared<Buffer>(sign(algo, *keys, *data));
    const SignatureTask task = {algorithm, keys->privateKey.toLatin1(), keys->publicKey.toLatin1(), *data};
    compare(
        keyName + "-sha1-sign/1024", 1024, [=] { signRaw(digestRaw(*data), *keys); }, [=] { sign(algo, *keys, *data); },
        atMostTimes(1.01));
    addPeers(keyName + "-sha1-sign/1024", {},
             [&](const Peer& peer, const Result& result) { return result->resize(1024), peer.sign(task, result); });
    compare(
        keyName + "-sha1-verify/1024", 1024, [=] { verifyRaw(digestRaw(*data), *keys, *signature); },
        [=] { verify(algo, *keys, *data, *signature); }, atMostTimes(1.01));
    const Bytes signatureBytes(signature->getData(), signature->getData() + signature->getUsed());
    addPeers(keyName + "-sha1-verify/1024", {1},
             [&](const Peer& peer, const Result& result) { return peer.verify(task, signatureBytes, result); });
}

/// A file of equal bytes, which is removed at the end.
struct LargeFile {
    explicit LargeFile(int size)
        : native(std::filesystem::temp_directory_path() / "sarn_bench_file"), path(native.c_str()) {
        std::ofstream file(native, std::ios::binary);
        const std::string piece(1 << 20, 'x');
        for (int written = 0; written < size; written += 1 << 20)
            file << piece;
    }
    LargeFile(const LargeFile&) = delete;
    LargeFile& operator=(const LargeFile&) = delete;
    ~LargeFile() { std::filesystem::remove(native); }

    std::filesystem::path native;
    ul::CWindowsPath path;
};

void compareFile(int size) {
    const auto file = std::make_shared<LargeFile>(size);
    const auto keys = std::make_shared<Keys>("rsa2048");
    const auto signature = std::make_shared<Buffer>();
    sarn::createFileSignature_RSA_SHA1(file->path, keys->privateKey, *signature);
    compare(
        "rsa2048-sha1-sign-file/" + std::to_string(size), size, [=] { signRaw(digestFileRaw(file->native), *keys); },
        [=] {
            Buffer own;
            sarn::createFileSignature_RSA_SHA1(file->path, keys->privateKey, own);
        },
        atMostTimes(1.01));
    compare(
        "rsa2048-sha1-verify-file/" + std::to_string(size), size,
        [=] { verifyRaw(digestFileRaw(file->native), *keys, *signature); },
        [=] {
            if (!sarn::verifyFileSignature_RSA_SHA1(file->path, keys->publicKey, *signature))
                std::abort();
        },
        atMostTimes(1.01));
}

} // namespace

void registerSignatures() {
    compareData("rsa", "rsa2048", sarn::createRSA_SHA1());
    compareData("dsa", "dsa2048", sarn::createDSS_SHA1());
    compareFile(isQuick() ? 64 << 20 : 1 << 30);
}

} // namespace bench
