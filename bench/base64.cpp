// SPDX-License-Identifier: Apache-2.0
// Base64 beside libcrypto's filter, if the C library has memory at hand and if it asks the system for pages each time.
#include "base64_filter.h"
#include "measure.h"
#include "rows.h"

#include <sarn/encoding.h>

#include <algorithm>
#include <memory>

#include <malloc.h>

namespace bench {

namespace {

void encodeRaw(const Bytes& data) {
    BIO* const sink = BIO_new(BIO_s_mem());
    BIO* const chain = pushFilter(sink);
    require(BIO_write(chain, data.data(), static_cast<int>(data.size())) > 0 && BIO_flush(chain) > 0);
    BIO_free_all(chain);
}

void decodeRaw(const std::string& text, void* out, int size) {
    BIO* const chain = pushFilter(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
    require(BIO_read(chain, out, size) > 0);
    BIO_free_all(chain);
}

/// Writes as many new pages as the wide text has.
void writePages(int textLength) {
    const std::unique_ptr<wchar_t[]> block(new wchar_t[static_cast<std::size_t>(textLength)]);
    std::fill_n(block.get(), textLength, L'A');
    keep(block.get());
}

void compareEncoding(const std::string& row, int size, bool countsPages) {
    const Bytes data(static_cast<std::size_t>(size), 5);
    const int textLength = (size + 2) / 3 * 4;
    compare(
        row, size,
        [&] {
            encodeRaw(data);
            if (countsPages)
                writePages(textLength);
        },
        [&] { keep(sarn::base64Encode(data.data(), size, true, false).c_str()); });
}

void compareDecoding(int size) {
    const Bytes data(static_cast<std::size_t>(size), 5);
    const ul::String text = sarn::base64Encode(data.data(), size, true, false);
    const std::string narrow = text.toLatin1();
    ul::TBuffer<unsigned char> out(size + 3, 0);
    compare(
        "Base64 decode", size, [&] { decodeRaw(narrow, out.getData(), size); }, [&] { sarn::base64Decode(text, out); });
}

void setPages(bool areAtHand) {
    mallopt(M_MMAP_THRESHOLD, areAtHand ? 1 << 30 : 1 << 17);
    mallopt(M_TRIM_THRESHOLD, areAtHand ? 1 << 30 : 1 << 17);
}

} // namespace

void compareBase64() {
    setPages(true);
    for (const int size : getSizes("Base64 encode"))
        compareEncoding("Base64 encode", size, false);
    for (const int size : getSizes("Base64 decode"))
        compareDecoding(size);
    setPages(false);
    if (isSelected("Base64 encode, new pages"))
        compareEncoding("Base64 encode, new pages", 1 << 20, true);
    setPages(true);
}

} // namespace bench
