// SPDX-License-Identifier: Apache-2.0
#include "backup.h"

#include "encrypted_copy.h"

namespace demo {

namespace fs = std::filesystem;

namespace {

std::int64_t getTotalSize(const std::vector<fs::path>& files) {
    std::int64_t total = 0;
    for (const fs::path& file : files)
        total += static_cast<std::int64_t>(fs::file_size(file));
    return total;
}

} // namespace

void writeConfiguration(const WorkFolder& folder, const fs::path& source, const ul::String& cipher) {
    writeSigned(folder.getConfiguration(),
                "; what to back up, and how\n[sources]\npath = " + ul::path(source).getString() +
                    "\ncipher = " + cipher + "\niterations = 100000\n");
}

Keys getKeys(sarn::CPasswordKeyCache& cache, const Manifest& manifest) {
    const int keySize = sarn::CCipherManager::get()->getCipher(manifest.cipher)->getKeySize();
    return {cache.getKey(keySize, manifest.salt, manifest.iterations),
            cache.getKey(20, manifest.salt + 1, manifest.iterations)};
}

Totals storeFiles(const WorkFolder& folder, const fs::path& source, const std::vector<fs::path>& files, const Key& key,
                  Manifest& manifest) {
    const fs::path base = fs::is_directory(source) ? source : source.parent_path();
    ProgressLine progress(getTotalSize(files));
    Totals totals;
    for (std::size_t i = 0; i < files.size(); ++i) {
        const std::string name = toUTF8(files[i].lexically_relative(base));
        totals.throughput.measure([&] {
            const auto addSize = [&](std::int64_t size) {
                totals.throughput.addBytes(size);
                progress.add(size, name);
            };
            manifest.files.push_back({name, encryptFile(manifest.cipher, key, files[i], folder.getCopy(i), addSize)});
        });
        totals.bytesOut += static_cast<std::int64_t>(fs::file_size(folder.getCopy(i)));
    }
    progress.finish();
    return totals;
}

void restoreFile(const ul::String& cipher, const Key& key, const fs::path& copy, const fs::path& restored,
                 const std::string& expectedDigest, const Progress& progress) {
    const fs::path part = withSuffix(restored, ".part"); // a file under its final name is a verified one
    if (decryptFile(cipher, key, copy, part, progress) != expectedDigest)
        throw ul::CError("The restored file has another digest than the manifest says.", "", -1,
                         ul::CProps().add("path", ul::path(restored).getString()), nullptr);
    fs::rename(part, restored);
}

Totals restoreFiles(const WorkFolder& folder, const std::vector<fs::path>& originals, const Key& key,
                    const Manifest& manifest, std::vector<std::string>& different) {
    ProgressLine progress(getTotalSize(originals));
    Totals totals;
    for (std::size_t i = 0; i < manifest.files.size(); ++i) {
        const ManifestFile& file = manifest.files[i];
        totals.throughput.measure([&] {
            const auto addSize = [&](std::int64_t size) {
                totals.throughput.addBytes(size);
                progress.add(size, file.name);
            };
            restoreFile(manifest.cipher, key, folder.getCopy(i), folder.getRestored(i), file.digest, addSize);
        });
        if (!isSameContent(originals[i], folder.getRestored(i)))
            different.push_back(file.name);
        fs::remove(folder.getRestored(i));
    }
    progress.finish();
    return totals;
}

} // namespace demo
