// SPDX-License-Identifier: Apache-2.0
// Cipher streams beside one call over the same bytes.
#include "ciphers.h"
#include "rows.h"

#include <sarn/host.h>

#include <algorithm>

namespace bench {

namespace {

/// Sends bytes through a stream in pieces that start at `offset` within a block.
template <class Stream>
void run(const char* id, const Key& key, ul::CBytes bytes, std::size_t pieceSize, std::size_t offset) {
    Stream stream(id, key);
    stream.update({bytes.data(), offset});
    for (std::size_t done = offset; done < bytes.size(); done += pieceSize)
        stream.update({bytes.data() + done, std::min(pieceSize, bytes.size() - done)});
    stream.finish();
}

void compareCipher(const char* id, std::size_t pieceSize, std::size_t offset, const std::string& pieces) {
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher(id);
    const Key key(cipher->getKeySize(), -1);
    const std::string encryptRow = id + (" stream encrypt, " + pieces);
    const std::string decryptRow = id + (" stream decrypt, " + pieces);
    // Far enough apart to tell what a piece costs from what a stream costs.
    const int least = std::max(4 * static_cast<int>(pieceSize), 1 << 19);
    for (const int size : {least, 8 * least}) {
        if (!isSelected(encryptRow) && !isSelected(decryptRow))
            continue;
        const Bytes plain(static_cast<std::size_t>(size), 42);
        Buffer encrypted;
        Buffer decrypted;
        const auto encrypt = [&] { cipher->encrypt(key, plain.data(), size, encrypted, false, nullptr); };
        encrypt();
        if (isSelected(encryptRow))
            compare(encryptRow, size, encrypt, [&] { run<sarn::CStreamEncryptor>(id, key, plain, pieceSize, offset); });
        if (isSelected(decryptRow))
            compare(
                decryptRow, size,
                [&] { cipher->decrypt(key, encrypted.getData(), encrypted.getUsed(), decrypted, false, nullptr); },
                [&] { run<sarn::CStreamDecryptor>(id, key, encrypted, pieceSize, offset); });
    }
}

} // namespace

void compareStreams() {
    for (const char* const id : {"aes256cbc", "aes128cbc", "bfcbc", "cast128cbc", "null"}) {
        compareCipher(id, 1 << 20, 0, "1 MiB");
        compareCipher(id, 1 << 20, 5, "1 MiB across blocks");
    }
    compareCipher("aes256cbc", 65536, 0, "64 KiB");
    compareCipher("aes256cbc", 4096, 0, "4 KiB");
    compareCipher("aes256cbc", 512, 0, "512 B");
}

} // namespace bench
