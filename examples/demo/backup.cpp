// SPDX-License-Identifier: Apache-2.0
#include "backup.h"

#include "encrypted_copy.h"
#include "resumed_digest.h"

namespace demo {

namespace fs = std::filesystem;

namespace {

constexpr char iterations[] = "100000";

std::int64_t getTotalSize(const std::vector<fs::path>& files) {
    std::int64_t total = 0;
    for (const fs::path& file : files)
        total += static_cast<std::int64_t>(fs::file_size(file));
    return total;
}

} // namespace

void writeConfiguration(const WorkFolder& folder, const fs::path& source, const std::string& cipher) {
    const ul::String text = "; what to back up, and how\n[sources]\npath = " + toPath(source).getString() +
                            "\ncipher = " + ul::String(cipher.c_str()) + "\niterations = " + iterations + "\n";
    const ul::CWindowsPath path = toPath(folder.getConfiguration());
    ul::writeUTF8TextFile(path, text);
    ul::TBuffer<unsigned char> signature;
    sarn::createFileSignature_RSA_SHA1(path, readDemoKey("demo_only.pem"), signature);
    sarn::storeSignatureBase64(toPath(withSuffix(folder.getConfiguration(), ".sig")), signature);
}

ul::P<sarn::CPasswordKeyCache> makeKeyCache(const std::string& password) {
    ul::TCryptBuffer<char> buffer;
    buffer.init(password.data(), static_cast<int>(password.size()));
    return ul::make<sarn::CPasswordKeyCache>(buffer);
}

Keys getKeys(sarn::CPasswordKeyCache& cache, const Manifest& manifest) {
    const int keySize = sarn::CCipherManager::get()->getCipher(manifest.cipher)->getKeySize();
    return {cache.getKey(keySize, manifest.salt, manifest.iterations),
            cache.getKey(20, manifest.salt + 1, manifest.iterations)};
}

Totals storeFiles(const WorkFolder& folder, const std::vector<fs::path>& files, const Key& key, Manifest& manifest) {
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher(manifest.cipher);
    const ul::P<sarn::IDigestType> digestType = sarn::CDigestManager::get()->getType(digestID);
    ProgressLine progress(getTotalSize(files));
    Totals totals;
    for (std::size_t i = 0; i < files.size(); ++i) {
        const std::string name = files[i].u8string();
        const ul::P<sarn::IDigest> digest = digestType->createDigest();
        totals.throughput.measure([&] {
            totals.bytesOut += encryptFile(*cipher, key, *digest, files[i], folder.getCopy(i), [&](std::int64_t size) {
                totals.throughput.addBytes(size);
                totals.bytesIn += size;
                progress.add(size, name);
            });
        });
        manifest.files.push_back({name, toHex(*digest)});
    }
    progress.finish();
    return totals;
}

void restoreFile(sarn::ICipher& cipher, const Key& key, const fs::path& copy, const fs::path& restored,
                 const std::string& expectedDigest, const Progress& progress) {
    const ul::P<sarn::IDigest> digest = sarn::CDigestManager::get()->getType(digestID)->createDigest();
    decryptFile(cipher, key, *digest, copy, restored, progress);
    if (toHex(*digest) != expectedDigest)
        throw ul::CError("The restored file has another digest than the manifest says.", "", -1,
                         ul::CProps().add("path", toPath(restored).getString()), nullptr);
}

Totals restoreFiles(const WorkFolder& folder, const std::vector<fs::path>& originals, const Key& key,
                    const Manifest& manifest, std::vector<std::string>& different) {
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher(manifest.cipher);
    ProgressLine progress(getTotalSize(originals));
    Totals totals;
    for (std::size_t i = 0; i < manifest.files.size(); ++i) {
        const ManifestFile& file = manifest.files[i];
        totals.throughput.measure([&] {
            restoreFile(*cipher, key, folder.getCopy(i), folder.getRestored(i), file.digest, [&](std::int64_t size) {
                totals.throughput.addBytes(size);
                progress.add(size, file.name);
            });
        });
        if (!isSameContent(originals[i], folder.getRestored(i)))
            different.push_back(file.name);
        fs::remove(folder.getRestored(i));
    }
    progress.finish();
    return totals;
}

} // namespace demo
