// SPDX-License-Identifier: Apache-2.0
// usage: sarn_long_stream GIBIBYTES
// Encrypts and decrypts a stream in pieces, compares the digests and prints the peak of memory.
#include <sarn/host.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <sys/resource.h>

int main(int count, char** words) {
    const long gibibytes = count == 2 ? std::atol(words[1]) : 1;
    const auto key = ul::makeRandomBytes(32);
    sarn::CStreamEncryptor encryptor("aes256cbc", key);
    sarn::CStreamDecryptor decryptor("aes256cbc", key);
    const ul::P<sarn::IDigest> before = sarn::createDigest("sha1");
    const ul::P<sarn::IDigest> after = sarn::createDigest("sha1");
    std::vector<unsigned char> piece(65536);
    for (long i = 0; i < gibibytes << 14; ++i) {
        std::fill(piece.begin(), piece.end(), static_cast<unsigned char>(i * 31 >> 3));
        sarn::feed(*before, piece);
        sarn::feed(*after, decryptor.update(encryptor.update(piece)));
    }
    sarn::feed(*after, decryptor.update(encryptor.finish()));
    sarn::feed(*after, decryptor.finish());
    const bool isSame = ul::CBytes(sarn::finish(*before)) == sarn::finish(*after);
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%ld GiB, %s, at most %ld KiB of memory\n", gibibytes, isSame ? "unchanged" : "CHANGED",
                usage.ru_maxrss);
    return isSame ? 0 : 1;
}
