// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/key_files.h"
#include "support/temp_folder.h"
#include "support/vectors.h"

#include "sarn/encoding.h"
#include "sarn/signature.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace sarn_test {

namespace {

using Buffer = ul::TBuffer<unsigned char>;

std::string makeContent(int size) {
    const Bytes bytes = makePattern(size);
    return std::string(bytes.begin(), bytes.end());
}

Bytes signFile(const ul::CWindowsPath& path, const char* key = "rsa2048") {
    Buffer signature;
    sarn::createFileSignature_RSA_SHA1(path, readKey(key), signature);
    return toBytes(signature);
}

bool verifyFile(const ul::CWindowsPath& path, const Bytes& signature, const char* key = "rsa2048") {
    Buffer buffer;
    fill(buffer, signature);
    return sarn::verifyFileSignature_RSA_SHA1(path, readPublicKey(key), buffer);
}

} // namespace

TEST(FileSignature, OfFilesOfEverySize_IsThatOfTheOpensslCommandLine) {
    const TempFolder folder;
    for (const Vector& vector : readVectors("signatures.vec", {"size", "signature"})) {
        const ul::CWindowsPath path = folder.write("f", makeContent(vector.getInt("size")));
        EXPECT_TRUE(verifyFile(path, vector.getBytes("signature"), vector.getSection().c_str())) << vector.describe();
        if (vector.getSection().find("rsa") == 0) {
            EXPECT_EQ(signFile(path, vector.getSection().c_str()), vector.getBytes("signature")) << vector.describe();
        }
    }
}

TEST(FileSignature, OfAnEmptyFile_IsThatOfTheEmptyMessage) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "");
    const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(readKey("rsa2048"), "");
    Buffer expected;
    signer->finish(expected);
    EXPECT_EQ(signFile(path), toBytes(expected));
    EXPECT_TRUE(verifyFile(path, toBytes(expected)));
}

TEST(FileSignature, OfAMultipleOfTheChunk_IsThatOfAnyOtherChunking) {
    const TempFolder folder;
    for (const int size : {8192, 16384}) {
        const Bytes data = makePattern(size);
        const ul::P<sarn::ISigner> signer = sarn::createRSA_SHA1()->beginSign(readKey("rsa2048"), "");
        for (int at = 0; at < size; at += 128)
            signer->update(data.data() + at, 128);
        Buffer expected;
        signer->finish(expected);
        EXPECT_EQ(signFile(folder.write("f", makeContent(size))), toBytes(expected));
    }
}

TEST(FileSignature, FileChangedByOneByte_DoesNotVerify) {
    const TempFolder folder;
    std::string content = makeContent(20000);
    const Bytes signature = signFile(folder.write("f", content));
    for (const std::size_t at : {std::size_t{0}, std::size_t{8191}, std::size_t{8192}, std::size_t{19999}}) {
        content[at] = static_cast<char>(content[at] ^ 1);
        EXPECT_FALSE(verifyFile(folder.write("f", content), signature)) << at;
        content[at] = static_cast<char>(content[at] ^ 1);
    }
    EXPECT_FALSE(verifyFile(folder.write("f", content + "x"), signature));
    EXPECT_FALSE(verifyFile(folder.write("f", content.substr(1)), signature));
    EXPECT_TRUE(verifyFile(folder.write("f", content), signature));
}

TEST(FileSignature, StoredSignature_IsReadBackAndVerifies) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", makeContent(100));
    const Bytes signature = signFile(path);
    Buffer buffer;
    fill(buffer, signature);
    sarn::storeSignatureBase64(folder.getPath("f.sig"), buffer);
    const std::string text = folder.read("f.sig");
    EXPECT_EQ(text.size(), 344U + 6) << "256 bytes in lines of 64 characters";
    EXPECT_EQ(text.find('\n'), 64U);
    EXPECT_EQ(text.back(), '\n');
    Buffer loaded;
    sarn::loadSignatureBase64(folder.getPath("f.sig"), loaded);
    EXPECT_EQ(toBytes(loaded), signature);
    EXPECT_TRUE(sarn::verifyFileSignature_RSA_SHA1(path, readPublicKey("rsa2048"), folder.getPath("f.sig")));
    EXPECT_FALSE(sarn::verifyFileSignature_RSA_SHA1(folder.write("g", "other"), readPublicKey("rsa2048"),
                                                    folder.getPath("f.sig")));
}

TEST(FileSignature, SignatureFileInAnyShape_IsRead) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", makeContent(100));
    const Bytes signature = signFile(path);
    const std::string lines = sarn::base64Encode(signature.data(), 256, true, true).toLatin1();
    std::string crlf;
    for (const char character : lines)
        crlf += character == '\n' ? std::string("\r\n") : std::string(1, character);
    const std::string oneLine = sarn::base64Encode(signature.data(), 256, true, false).toLatin1();
    const std::string unpadded = sarn::base64Encode(signature.data(), 256, false, false).toLatin1();
    const std::string spaced = "\t" + std::string(lines).insert(10, " ");
    for (const std::string& text : {lines, crlf, spaced, oneLine, oneLine + "\n", unpadded, "\xEF\xBB\xBF" + lines}) {
        folder.write("f.sig", text);
        EXPECT_TRUE(sarn::verifyFileSignature_RSA_SHA1(path, readPublicKey("rsa2048"), folder.getPath("f.sig")))
            << text;
    }
    std::string carriageReturns = lines;
    std::replace(carriageReturns.begin(), carriageReturns.end(), '\n', '\r');
    for (const std::string& text : {carriageReturns, std::string(oneLine).insert(10, " "), unpadded + "\n"}) {
        folder.write("f.sig", text);
        Buffer loaded;
        expectInvalidArg("base64Decode", "invalid base64 data",
                         [&] { sarn::loadSignatureBase64(folder.getPath("f.sig"), loaded); });
    }
}

TEST(FileSignature, MissingFiles_AreFileErrorsInTheirOrder) {
    const TempFolder folder;
    const auto verify = [&folder] {
        sarn::verifyFileSignature_RSA_SHA1(folder.getPath("f"), readPublicKey("rsa2048"), folder.getPath("f.sig"));
    };
    const auto getMissing = [&] {
        ul::String path;
        catchError<ul::CFileError>(verify)->getProps().tryGet("path", path);
        return path;
    };
    EXPECT_EQ(getMissing(), folder.getPath("f.sig").getString()) << "the signature is read first";
    folder.write("f.sig", "QUJD");
    EXPECT_EQ(getMissing(), folder.getPath("f").getString());
    EXPECT_THROW(signFile(folder.getPath("f")), ul::CFileError);
}

TEST(FileSignature, SignatureFileThatIsNoBase64_IsRefused) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "x");
    const auto verify = [&] {
        sarn::verifyFileSignature_RSA_SHA1(path, readPublicKey("rsa2048"), folder.getPath("f.sig"));
    };
    folder.write("f.sig", "this is no signature");
    expectInvalidArg("base64Decode", "invalid base64 data", verify);
    folder.write("f.sig", "QUJ\xFF");
    EXPECT_THROW(verify(), ul::CError);
}

TEST(FileSignature, EmptySignatureFile_DoesNotVerify) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "x");
    folder.write("f.sig", "");
    EXPECT_FALSE(sarn::verifyFileSignature_RSA_SHA1(path, readPublicKey("rsa2048"), folder.getPath("f.sig")));
}

TEST(FileSignature, BadKeys_AreRefusedAheadOfTheFile) {
    const TempFolder folder;
    Buffer signature;
    const ul::CWindowsPath missing = folder.getPath("f");
    expectError("OpenSSL key corrupted.",
                [&] { sarn::createFileSignature_RSA_SHA1(missing, readKey("rsa2048_encrypted_pkcs8"), signature); });
    expectError("OpenSSL key corrupted.", [&] { sarn::verifyFileSignature_RSA_SHA1(missing, "no key", signature); });
}

} // namespace sarn_test
