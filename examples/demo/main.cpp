// SPDX-License-Identifier: Apache-2.0
// A small backup program. It backs files up, restores them, and shows the error after one byte of the backup was
// changed.
#include "backup.h"
#include "resumed_digest.h"
#include "tampering.h"

#include <cmath>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr char usage[] = "usage: sarn_demo [FILE|FOLDER] [--password TEXT] [--cipher ID] [--keep FOLDER]\n"
                         "         backs up each file, restores it, compares, and tampers with the backup\n"
                         "       sarn_demo restore COPY [--password TEXT]\n"
                         "         restores one encrypted copy of a backup that was kept\n"
                         "       sarn_demo digest FILE STATE [SIZE]\n"
                         "         digests the first SIZE bytes and saves the running state, or resumes from it\n";

struct Options {
    std::string program;
    bool restoreOnly = false;
    fs::path path = SARN_DEMO_SOURCES;
    std::string password = "correct horse battery staple";
    std::string cipher = "aes256cbc";
    fs::path folder;
};

bool parse(std::vector<std::string> words, Options& options) {
    if (!words.empty() && words.front() == "restore") {
        options.restoreOnly = true;
        words.erase(words.begin());
        if (words.empty())
            return false;
    }
    bool hasPath = false;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const bool hasValue = i + 1 < words.size();
        if (words[i] == "--password" && hasValue)
            options.password = words[++i];
        else if (words[i] == "--cipher" && hasValue)
            options.cipher = words[++i];
        else if (words[i] == "--keep" && hasValue)
            options.folder = fs::weakly_canonical(words[++i]);
        else if (words[i].rfind("--", 0) != 0 && !hasPath) {
            options.path =
                fs::weakly_canonical(words[i]); // the library and the system read ".." after a link differently
            hasPath = true;
        } else
            return false;
    }
    return true;
}

int digestFile(const std::vector<std::string>& words) {
    if (words.size() == 3) {
        demo::digestBeginning(words[0], std::stoll(words[2]), words[1]);
        std::cout << "saved\n";
    } else {
        std::cout << demo::resumeDigest(words[0], words[1]) << "\n";
    }
    return 0;
}

ul::P<sarn::CPasswordKeyCache> makeKeyCache(const std::string& password) {
    return ul::make<sarn::CPasswordKeyCache>(ul::CSecretText(password).toUTF8());
}

int restoreOne(const Options& options) {
    const demo::WorkFolder folder(fs::absolute(options.path).parent_path());
    const demo::Manifest manifest = demo::readManifest(folder.getManifest());
    const demo::Keys keys = demo::getKeys(*makeKeyCache(options.password), manifest);
    const auto index = static_cast<std::size_t>(std::stoul(options.path.stem().string()));
    const fs::path restored = demo::withSuffix(options.path, ".restored");
    demo::restoreFile(manifest.cipher, *keys.encryption, options.path, restored, manifest.files.at(index).digest,
                      [](std::int64_t) {});
    std::cout << "Restored to " << demo::toUTF8(restored) << ".\n";
    return 0;
}

void showStep(const char* name, const std::string& text) {
    std::string label = name;
    label.resize(15, ' ');
    std::cout << "  " << label << text << "\n";
}

/// Digests the largest file again, in two processes and with a tool of the system.
bool resumeDigestOfLargest(const Options& options, const demo::Manifest& manifest, const std::vector<fs::path>& files,
                           const fs::path& folder) {
    std::size_t largest = 0;
    for (std::size_t i = 1; i < files.size(); ++i)
        largest = fs::file_size(files[i]) > fs::file_size(files[largest]) ? i : largest;
    const std::string& expected = manifest.files[largest].digest;
    const std::string resumed = demo::digestInTwoRuns(options.program, files[largest], folder);
    const std::string system = demo::askSystemForSHA1(files[largest], folder);
    const bool isSame = resumed == expected && (system.empty() || system == demo::getSHA1(expected));
    showStep("resumed digest", demo::toUTF8(files[largest].filename()) + ": half, process ended, other half: " +
                                   (isSame ? "the same as in one piece" : "DIFFERENT"));
    showStep("", expected);
    showStep("", system.empty() ? "(no tool here to ask for a SHA-1)" : "SHA-1 by sha1sum or openssl: " + system);
    return isSame;
}

/// Changes one byte in each kind of file in turn and shows the errors.
bool tamper(const demo::WorkFolder& folder, const demo::Manifest& manifest, const demo::Key& key) {
    const std::string configuration = demo::changeOneByte(folder.getConfiguration(), [&] {
        sarn::CSignedConfig(ul::path(folder.getConfiguration()), demo::readPublicKey(), false);
    });
    const std::string list =
        demo::changeOneByte(folder.getManifest(), [&] { demo::readManifest(folder.getManifest()); });
    const std::string copy = demo::changeOneByte(folder.getCopy(0), [&] {
        demo::restoreFile(manifest.cipher, key, folder.getCopy(0), folder.getRestored(0), manifest.files[0].digest,
                          [](std::int64_t) {});
    });
    const auto show = [](const char* what, const std::string& noticed) {
        showStep(what, noticed.empty() ? "NOT NOTICED" : noticed);
    };
    std::cout << "\nWhat is noticed when one byte is changed in the\n";
    show("configuration", configuration);
    show("manifest", list);
    show("stored file", copy);
    return !configuration.empty() && !list.empty() && !copy.empty();
}

std::string describeTime(double seconds) {
    const bool isLong = seconds >= 0.001;
    return std::to_string(std::lround(seconds * (isLong ? 1e3 : 1e9))) + (isLong ? " ms" : " ns");
}

int backUp(const Options& options) {
    const demo::WorkFolder folder(options.folder);
    demo::writeConfiguration(folder, options.path, ul::text(options.cipher));
    const sarn::CSignedConfig config(ul::path(folder.getConfiguration()), demo::readPublicKey(), false);
    const std::vector<fs::path> files = demo::listFiles(options.path);
    demo::Manifest manifest;
    manifest.cipher = sarn::valueOr(config, "/sources/cipher", "aes256cbc");
    manifest.iterations = sarn::valueOr(config, "/sources/iterations", 100000);
    ul::randomize(manifest.salt);
    std::cout << "Backing up " << demo::toUTF8(options.path) << ": " << files.size() << " files.\n\n";
    showStep("configuration", "signed, and verified before it was read: " + manifest.cipher.toUTF8() + ", " +
                                  std::to_string(manifest.iterations) + " iterations");

    const ul::P<sarn::CPasswordKeyCache> cache = makeKeyCache(options.password);
    demo::Keys keys;
    const double derivation = demo::measureSeconds([&] { keys = demo::getKeys(*cache, manifest); });
    const double lookUp = demo::measureSeconds([&] { keys = demo::getKeys(*cache, manifest); });
    showStep("keys", "two derived from the password in " + describeTime(derivation) + ", found again in " +
                         describeTime(lookUp));

    const demo::Totals stored = demo::storeFiles(folder, options.path, files, *keys.encryption, manifest);
    showStep("files", "digested and encrypted in one pass, " + stored.throughput.describe());
    const bool isResumed = resumeDigestOfLargest(options, manifest, files, folder.getPath());
    manifest.write(folder.getManifest(), *keys.manifest);

    const demo::Manifest loaded = demo::readManifest(folder.getManifest());
    const bool hasRightHMAC = demo::hasRightHMAC(folder.getManifest(), *keys.manifest);
    showStep("manifest", hasRightHMAC ? "signed, verified; its HMAC is right: no file is missing or exchanged"
                                      : "its HMAC is WRONG");
    std::vector<std::string> different;
    const demo::Totals restored = demo::restoreFiles(folder, files, *keys.encryption, loaded, different);
    showStep("restored", "and compared byte by byte, " + restored.throughput.describe());
    const bool isNoticed = tamper(folder, loaded, *keys.encryption);

    std::cout << "\n  files " << files.size() << ", bytes in " << demo::withSeparators(stored.throughput.getBytes())
              << ", bytes out " << demo::withSeparators(stored.bytesOut) << "\n";
    for (const std::string& name : different)
        std::cout << "DIFFERENT: " << name << "\n";
    if (!options.folder.empty())
        std::cout << "The backup is in " << demo::toUTF8(folder.getPath()) << ".\n";
    std::cout << (different.empty() ? "restored files are identical\n" : "restored files DIFFER\n");
    return different.empty() && isResumed && hasRightHMAC && isNoticed ? 0 : 1;
}

} // namespace

int main(int count, char** words) {
    try {
        Options options;
        options.program = words[0];
        const std::vector<std::string> arguments(words + 1, words + count);
        if ((count == 4 || count == 5) && arguments[0] == "digest")
            return digestFile(std::vector<std::string>(arguments.begin() + 1, arguments.end()));
        if (!parse(arguments, options)) {
            std::cerr << usage;
            return 2;
        }
        return options.restoreOnly ? restoreOne(options) : backUp(options);
    } catch (const std::exception& error) {
        std::cerr << "Error: " << ul::formatError(error) << "\n";
    }
    return 1;
}
