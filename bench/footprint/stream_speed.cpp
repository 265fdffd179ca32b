// SPDX-License-Identifier: Apache-2.0
// usage: sarn_stream_speed [long GIBIBYTES]
// Compares the speed of cipher streams with that of one call over the same bytes, or prints the memory of a long
// stream.
#include <sarn/host.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr std::size_t pieceSize = 65536;

struct Times {
    double call = 1e9;
    double stream = 1e9;
};

/// The processor time of `action` in seconds.
template <class Action>
double measure(Action action) {
    const std::clock_t start = std::clock();
    action();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

/// The shortest times of many interleaved runs, because disturbances only make a run longer.
template <class Call, class Stream>
Times compare(Call call, Stream stream) {
    Times times;
    const std::clock_t start = std::clock();
    for (int run = 0; run < 5 || (std::clock() - start < 3 * CLOCKS_PER_SEC && run < 200); ++run) {
        times.call = std::min(times.call, measure(call));
        times.stream = std::min(times.stream, measure(stream));
    }
    return times;
}

/// Sends `bytes` through a stream, in pieces that start at `offset` within a block.
template <class Stream>
void run(const char* id, const ul::TCryptBuffer<unsigned char>& key, ul::CBytes bytes, std::size_t offset) {
    Stream stream(id, key);
    stream.update({bytes.data(), offset});
    for (std::size_t done = offset; done < bytes.size(); done += pieceSize)
        stream.update({bytes.data() + done, std::min(pieceSize, bytes.size() - done)});
    stream.finish();
}

void report(const char* what, Times times, std::size_t size) {
    std::printf("  %-34s %8.1f MB/s, %6.1f %% of one call's speed\n", what,
                static_cast<double>(size) / times.stream / 1e6, 100 * times.call / times.stream);
}

void compareCipher(const char* id, std::size_t size) {
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher(id);
    const auto key = ul::makeRandomBytes(cipher->getKeySize());
    const std::vector<unsigned char> plain(size, 42);
    ul::TBuffer<unsigned char> encrypted;
    ul::TBuffer<unsigned char> decrypted;
    const int callSize = ul::CBytes(plain).getIntSize("compareCipher");
    const auto encrypt = [&] { cipher->encrypt(key, plain.data(), callSize, encrypted, false, nullptr); };
    const auto decrypt = [&] {
        cipher->decrypt(key, encrypted.getData(), encrypted.getUsed(), decrypted, false, nullptr);
    };
    std::printf("%s, %zu KiB in pieces of 64 KiB\n", id, size / 1024);
    for (const std::size_t offset : {std::size_t{0}, std::size_t{5}}) {
        const Times encryption = compare(encrypt, [&] { run<sarn::CStreamEncryptor>(id, key, plain, offset); });
        report(offset ? "encrypted, pieces across blocks" : "encrypted", encryption, size);
        const Times decryption = compare(decrypt, [&] { run<sarn::CStreamDecryptor>(id, key, encrypted, offset); });
        report(offset ? "decrypted, pieces across blocks" : "decrypted", decryption, size);
    }
}

/// The peak memory of this process in KiB, as Linux reports it.
long getPeakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (word == "VmHWM:" && status >> word)
            return std::stol(word);
    return 0;
}

/// Encrypts and decrypts `gigabytes` GiB and compares the digests.
void runLong(long gigabytes) {
    const auto key = ul::makeRandomBytes(32);
    sarn::CStreamEncryptor encryptor("aes256cbc", key);
    sarn::CStreamDecryptor decryptor("aes256cbc", key);
    const ul::P<sarn::IDigest> before = sarn::createDigest("sha1");
    const ul::P<sarn::IDigest> after = sarn::createDigest("sha1");
    std::vector<unsigned char> piece(pieceSize);
    for (long i = 0; i < gigabytes << 14; ++i) {
        std::fill(piece.begin(), piece.end(), static_cast<unsigned char>(i * 31 >> 3));
        sarn::feed(*before, piece);
        sarn::feed(*after, decryptor.update(encryptor.update(piece)));
        if (i == 1000 || (i & 0x3FFF) == 0x3FFF)
            std::printf("%6ld MiB done, at most %ld KiB of memory\n", (i + 1) >> 4, getPeakMemory());
    }
    sarn::feed(*after, decryptor.update(encryptor.finish()));
    sarn::feed(*after, decryptor.finish());
    const bool isSame = ul::CBytes(sarn::finish(*before)) == sarn::finish(*after);
    std::printf("%s\n", isSame ? "the decrypted bytes are the original ones" : "the decrypted bytes are WRONG");
}

} // namespace

int main(int count, char** words) try {
    if (count == 3 && words[1] == std::string("long"))
        runLong(std::atol(words[2]));
    else
        for (const char* const id : {"aes256cbc", "aes128cbc", "bfcbc", "cast128cbc", "null"})
            compareCipher(id, 16 << 20);
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", ul::formatError(error).c_str());
    return 1;
}
