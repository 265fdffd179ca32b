// SPDX-License-Identifier: Apache-2.0
// The two checksums with zlib's interface, as RFC 1950 and RFC 1952 define them. The first call of each adds a line to
// the file that SARN_TEST_ZLIB_LOG names.
#include <cstdio>
#include <cstdlib>

namespace {

void note(const char* call) {
    if (const char* const path = std::getenv("SARN_TEST_ZLIB_LOG")) {
        if (std::FILE* const file = std::fopen(path, "a")) {
            std::fputs(call, file);
            std::fclose(file);
        }
    }
}

} // namespace

extern "C" {

unsigned long adler32(unsigned long adler, const unsigned char* data, unsigned size);
unsigned long crc32(unsigned long crc, const unsigned char* data, unsigned size);

unsigned long adler32(unsigned long adler, const unsigned char* data, unsigned size) {
    static const bool isNoted = (note("adler32\n"), true);
    static_cast<void>(isNoted);
    if (!data)
        return 1;
    unsigned long a = adler & 0xFFFF;
    unsigned long b = adler >> 16;
    for (unsigned i = 0; i < size; ++i) {
        a = (a + data[i]) % 65521;
        b = (b + a) % 65521;
    }
    return b << 16 | a;
}

unsigned long crc32(unsigned long crc, const unsigned char* data, unsigned size) {
    static const bool isNoted = (note("crc32\n"), true);
    static_cast<void>(isNoted);
    if (!data)
        return 0;
    crc ^= 0xFFFFFFFF;
    for (unsigned i = 0; i < size; ++i) {
        crc ^= data[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? crc >> 1 ^ 0xEDB88320 : crc >> 1;
    }
    return crc ^ 0xFFFFFFFF;
}

} // extern "C"
