// SPDX-License-Identifier: Apache-2.0
// Signing and verifying a file of 64 MiB beside libcrypto's own calls on reads of the same size.
#include "comparison.h"
#include "families.h"

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

constexpr int fileSize = 64 << 20;

/// The file that is signed, with the keys and a right signature.
struct Fixture {
    Fixture() : native(std::filesystem::temp_directory_path() / "sarn_bench_64MiB"), path(native.string().c_str()) {
        std::ofstream(native, std::ios::binary) << std::string(fileSize, 'x');
        const std::string keys = SARN_BENCH_KEYS;
        privateKey = ul::readUTF8TextFile(ul::CWindowsPath((keys + "/rsa2048_for_tests_only.pem").c_str()));
        publicKey = ul::readUTF8TextFile(ul::CWindowsPath((keys + "/rsa2048_for_tests_only.pub.pem").c_str()));
        sarn::createFileSignature_RSA_SHA1(path, privateKey, signature);
    }
    Fixture(const Fixture&) = delete;
    Fixture& operator=(const Fixture&) = delete;
    ~Fixture() { std::filesystem::remove(native); }

    std::filesystem::path native;
    ul::CWindowsPath path;
    ul::String privateKey;
    ul::String publicKey;
    ul::TBuffer<unsigned char> signature;
};

/// A context that has digested the file.
EVP_MD_CTX* digestRaw(const Fixture& f) {
    EVP_MD_CTX* const context = EVP_MD_CTX_new();
    EVP_DigestInit(context, EVP_sha1());
    unsigned char chunk[8192];
    const int file = ::open(f.native.c_str(), O_RDONLY | O_CLOEXEC);
    for (ssize_t count; (count = ::read(file, chunk, sizeof chunk)) > 0;)
        EVP_DigestUpdate(context, chunk, static_cast<std::size_t>(count));
    ::close(file);
    return context;
}

void signRaw(const Fixture& f) {
    const std::string pem = f.privateKey.toLatin1();
    BIO* const bio = BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size()));
    EVP_PKEY* const key = PEM_read_bio_PrivateKey(bio, nullptr, nullptr, nullptr);
    BIO_free_all(bio);
    EVP_MD_CTX* const context = digestRaw(f);
    unsigned char signature[256];
    unsigned size = 0;
    if (EVP_SignFinal(context, signature, &size, key) != 1)
        std::abort();
    EVP_MD_CTX_free(context);
    EVP_PKEY_free(key);
}

void verifyRaw(const Fixture& f) {
    const std::string pem = f.publicKey.toLatin1();
    BIO* const bio = BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size()));
    EVP_PKEY* const key = PEM_read_bio_PUBKEY(bio, nullptr, nullptr, nullptr);
    BIO_free_all(bio);
    EVP_MD_CTX* const context = digestRaw(f);
    if (EVP_VerifyFinal(context, f.signature.getData(), static_cast<unsigned>(f.signature.getUsed()), key) != 1)
        std::abort();
    EVP_MD_CTX_free(context);
    EVP_PKEY_free(key);
}

} // namespace

void registerSignatures() {
    const auto f = std::make_shared<Fixture>();
    compare(
        "rsa-sha1-sign-file/67108864", fileSize, [=] { signRaw(*f); },
        [=] {
            ul::TBuffer<unsigned char> signature;
            sarn::createFileSignature_RSA_SHA1(f->path, f->privateKey, signature);
        });
    compare(
        "rsa-sha1-verify-file/67108864", fileSize, [=] { verifyRaw(*f); },
        [=] {
            if (!sarn::verifyFileSignature_RSA_SHA1(f->path, f->publicKey, f->signature))
                std::abort();
        });
}

} // namespace bench
