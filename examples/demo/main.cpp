// SPDX-License-Identifier: Apache-2.0
// A small backup program: encrypts files, restores them and compares.
#include "encrypted_copy.h"
#include "report.h"
#include "resumed_digest.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr char usage[] = "usage: sarn_demo [FILE|FOLDER] [--password TEXT] [--cipher ID] [--keep FOLDER]\n"
                         "         encrypts each file, restores it and compares\n"
                         "       sarn_demo restore COPY [--password TEXT] [--cipher ID]\n"
                         "         restores one encrypted copy beside it\n"
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
            options.folder = words[++i];
        else if (words[i].rfind("--", 0) != 0 && !hasPath) {
            options.path = words[i];
            hasPath = true;
        } else
            return false;
    }
    return true;
}

/// The password itself, repeated or cut to the size of a key.
void makeKey(const std::string& password, demo::Key& key, int size) {
    key.setUsed(size);
    for (int i = 0; i < size; ++i)
        key.getData()[i] =
            password.empty() ? 0 : static_cast<unsigned char>(password[static_cast<std::size_t>(i) % password.size()]);
}

/// The files to back up: build results and hidden folders are left out of a folder.
std::vector<fs::path> listFiles(const fs::path& path) {
    if (!fs::is_directory(path))
        return {path};
    std::vector<fs::path> files;
    for (auto entry = fs::recursive_directory_iterator(path); entry != fs::recursive_directory_iterator(); ++entry) {
        const std::string name = entry->path().filename().string();
        if (entry->is_directory() && (name.front() == '.' || name == "build"))
            entry.disable_recursion_pending();
        else if (entry->is_regular_file())
            files.push_back(entry->path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// A folder for encrypted copies; one that the demo made up itself goes with it.
class CopyFolder {
public:
    explicit CopyFolder(const fs::path& wanted) : m_isOwn(wanted.empty()) {
        m_path = m_isOwn ? fs::temp_directory_path() / ("sarn_demo_" + getRandomName()) : wanted;
        fs::create_directories(m_path);
    }
    CopyFolder(const CopyFolder&) = delete;
    CopyFolder& operator=(const CopyFolder&) = delete;
    ~CopyFolder() {
        std::error_code ignored;
        if (m_isOwn)
            fs::remove_all(m_path, ignored);
    }
    const fs::path& getPath() const { return m_path; }

private:
    static std::string getRandomName() {
        unsigned char bytes[4];
        ul::CMTRand::getGlobal()->randData(bytes, sizeof bytes);
        return std::to_string(bytes[0] | bytes[1] << 8 | bytes[2] << 16) + std::to_string(bytes[3]);
    }

    bool m_isOwn;
    fs::path m_path;
};

int restoreOne(const Options& options) {
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher(options.cipher.c_str());
    demo::Key key;
    makeKey(options.password, key, cipher->getKeySize());
    const fs::path restored = options.path.string() + ".restored";
    demo::decryptFile(*cipher, key, options.path, restored, [](std::int64_t) {});
    std::cout << "Restored to " << restored.string() << ".\n";
    return 0;
}

/// Shows that a digest may be resumed by another process, and what the system's own tools make of the file.
bool showResumedDigest(const Options& options, const fs::path& file, const std::string& expected,
                       const fs::path& folder) {
    const std::string resumed = demo::digestInTwoRuns(options.program, file, folder);
    const std::string system = demo::askSystemForSHA1(file, folder);
    std::cout << "Digest of " << file.filename().string() << ", " << demo::digestID << ":\n"
              << "  in one pass                   " << expected << "\n"
              << "  half, process ended, resumed  " << resumed << "\n"
              << "  SHA-1 by the system's tool    " << std::string(32, ' ')
              << (system.empty() ? "(there is none)" : system) << "\n\n";
    return resumed == expected && (system.empty() || system == demo::getSHA1(expected));
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

int backUp(const Options& options) {
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher(options.cipher.c_str());
    demo::Key key;
    makeKey(options.password, key, cipher->getKeySize());
    const std::vector<fs::path> files = listFiles(options.path);
    std::int64_t total = 0;
    for (const fs::path& file : files)
        total += static_cast<std::int64_t>(fs::file_size(file));
    std::cout << "Backing up " << options.path.string() << " with " << options.cipher << ": " << files.size()
              << " files, " << demo::withSeparators(total) << " bytes.\n";

    const CopyFolder folder(options.folder);
    demo::ProgressLine progress(2 * total);
    demo::Throughput encryption;
    demo::Throughput decryption;
    std::int64_t copied = 0;
    std::vector<fs::path> different;
    fs::path largest;
    std::string digestOfLargest;
    std::uintmax_t largestSize = 0;
    for (std::size_t i = 0; i < files.size(); ++i) {
        const std::string name = files[i].filename().string();
        const fs::path copy = folder.getPath() / (std::to_string(i) + ".encrypted");
        const fs::path restored = folder.getPath() / (std::to_string(i) + ".restored");
        const auto track = [&](demo::Throughput& throughput) {
            return [&](std::int64_t size) {
                throughput.addBytes(size);
                progress.add(size, name);
            };
        };
        const ul::P<sarn::IDigest> digest = sarn::CDigestManager::get()->getType(demo::digestID)->createDigest();
        encryption.measure(
            [&] { copied += demo::encryptFile(*cipher, key, *digest, files[i], copy, track(encryption)); });
        if (const std::uintmax_t size = fs::file_size(files[i]); size >= largestSize) {
            largest = files[i];
            largestSize = size;
            digestOfLargest = demo::toHex(*digest);
        }
        decryption.measure([&] { demo::decryptFile(*cipher, key, copy, restored, track(decryption)); });
        if (!demo::isSameContent(files[i], restored))
            different.push_back(files[i]);
        fs::remove(restored);
    }
    progress.finish();

    std::cout << "\n  files               " << files.size() << "\n  bytes in            "
              << demo::withSeparators(encryption.getBytes()) << "\n  bytes out           "
              << demo::withSeparators(copied) << "\n  digest and encrypt  " << encryption.describe()
              << "\n  read and decrypt    " << decryption.describe() << "\n\n";
    if (!largest.empty() && !showResumedDigest(options, largest, digestOfLargest, folder.getPath())) {
        std::cout << "the digests DIFFER\n";
        return 1;
    }
    for (const fs::path& file : different)
        std::cout << "DIFFERENT: " << file.string() << "\n";
    if (!options.folder.empty())
        std::cout << "The encrypted copies are in " << folder.getPath().string() << ".\n";
    std::cout << (different.empty() ? "restored files are identical\n" : "restored files DIFFER\n");
    return different.empty() ? 0 : 1;
}

} // namespace

int main(int count, char** words) {
    try {
        Options options;
        options.program = words[0];
        if ((count == 4 || count == 5) && std::string(words[1]) == "digest")
            return digestFile(std::vector<std::string>(words + 2, words + count));
        if (!parse(std::vector<std::string>(words + 1, words + count), options)) {
            std::cerr << usage;
            return 2;
        }
        return options.restoreOnly ? restoreOne(options) : backUp(options);
    } catch (const ul::CError& error) {
        demo::showError(error);
    } catch (const std::exception& error) {
        std::cerr << "Error: " << error.what() << "\n";
    }
    return 1;
}
