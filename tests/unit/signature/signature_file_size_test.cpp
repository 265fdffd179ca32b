// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/key_files.h"
#include "support/temp_folder.h"

#include "sarn/signature.h"

#include <gtest/gtest.h>

namespace sarn_test {

namespace {

/// The text of 48393 bytes, in at least 65533 characters.
std::string makeText(std::size_t size) {
    std::string text;
    for (int line = 0; line < 1008; ++line)
        text += std::string(64, 'A') + "\n";
    text += std::string(12, 'A');
    return text + std::string(size - text.size(), '\n');
}

} // namespace

TEST(SignatureFile, UpTo64KiB_IsRead) {
    const TempFolder folder;
    ul::TBuffer<unsigned char> signature;
    sarn::loadSignatureBase64(folder.write("f.sig", makeText(65536)), signature);
    EXPECT_EQ(signature.getUsed(), 48393);
}

TEST(SignatureFile, LargerThan64KiB_IsRefusedBeforeItIsRead) {
    const TempFolder folder;
    const ul::CWindowsPath file = folder.write("f", "text");
    const ul::CWindowsPath signatureFile = folder.write("f.sig", makeText(65537));
    const std::string message =
        "Cannot read file '" + signatureFile.getString().toUTF8() + "': it is larger than 65536 bytes.";
    ul::TBuffer<unsigned char> signature;
    expectErrorOf<ul::CFileError>(message.c_str(), [&] { sarn::loadSignatureBase64(signatureFile, signature); });
    // However large it is, which takes no longer.
    std::filesystem::resize_file(folder.getNative("f.sig"), std::uintmax_t{1} << 30);
    expectErrorOf<ul::CFileError>(
        message.c_str(), [&] { sarn::verifyFileSignature_RSA_SHA1(file, readPublicKey("rsa1024"), signatureFile); });
}

} // namespace sarn_test
