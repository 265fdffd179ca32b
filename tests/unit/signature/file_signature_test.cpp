// SPDX-License-Identifier: Apache-2.0
#include "support/signing.h"

namespace sarn_test {

namespace {

/// A folder for a file "f" and its signature file "f.sig".
struct FileSignature : testing::Test {
    static Bytes sign(const ul::CWindowsPath& path, const std::string& key = "rsa2048") {
        Buffer signature;
        sarn::createFileSignature_RSA_SHA1(path, readKey(key), signature);
        return toBytes(signature);
    }
    static bool verify(const ul::CWindowsPath& path, const Bytes& signature, const std::string& key = "rsa2048") {
        Buffer buffer = makeBuffer(signature);
        return sarn::verifyFileSignature_RSA_SHA1(path, readPublicKey(key), buffer);
    }
    bool verify() const {
        return sarn::verifyFileSignature_RSA_SHA1(folder.getPath("f"), readPublicKey("rsa2048"),
                                                  folder.getPath("f.sig"));
    }
    Bytes load() const {
        Buffer signature;
        sarn::loadSignatureBase64(folder.getPath("f.sig"), signature);
        return toBytes(signature);
    }

    const TempFolder folder;
};

} // namespace

TEST_F(FileSignature, OfFilesOfEverySize_IsTheOneOfTheOpensslProgram) {
    for (const Vector& vector : readVectors("signatures.vec", {"size", "signature"})) {
        const ul::CWindowsPath path = folder.write("f", makeText(vector.getInt("size")));
        EXPECT_TRUE(verify(path, vector.getBytes("signature"), vector.getSection())) << vector.describe();
        if (vector.getSection().find("rsa") == 0) {
            EXPECT_EQ(toHex(sign(path, vector.getSection())), vector.getText("signature")) << vector.describe();
        }
    }
}

TEST_F(FileSignature, FileChangedByOneByte_DoesNotVerify) {
    const std::string content = makeText(20000);
    const Bytes signature = sign(folder.write("f", content));
    for (const std::size_t at : {0U, 8191U, 8192U, 19999U}) {
        std::string changed = content;
        changed[at] = static_cast<char>(changed[at] ^ 1);
        EXPECT_FALSE(verify(folder.write("f", changed), signature)) << at;
    }
    EXPECT_FALSE(verify(folder.write("f", content + "x"), signature));
    EXPECT_FALSE(verify(folder.write("f", content.substr(1)), signature));
    EXPECT_TRUE(verify(folder.write("f", content), signature));
}

TEST_F(FileSignature, StoredSignature_IsReadBackAndVerifies) {
    const ul::CWindowsPath path = folder.write("f", makeText(100));
    writeSignatureFile(path);
    const std::string text = folder.read("f.sig");
    EXPECT_EQ(text.size(), 344U + 6) << "256 bytes in lines of 64 characters";
    EXPECT_EQ(text.find('\n'), 64U);
    EXPECT_EQ(text.back(), '\n');
    EXPECT_EQ(load(), sign(path));
    EXPECT_TRUE(verify());
    folder.write("f", "other");
    EXPECT_FALSE(verify());
}

TEST_F(FileSignature, StoredSignature_IsWhatItsBufferUses) {
    Buffer signature(300, 256);
    std::fill_n(signature.getData(), 300, static_cast<unsigned char>(7));
    sarn::storeSignatureBase64(folder.getPath("f.sig"), signature);
    EXPECT_EQ(load(), Bytes(256, 7));
}

TEST_F(FileSignature, SignatureFileInAnyShape_IsRead) {
    const Bytes signature = sign(folder.write("f", makeText(100)));
    const auto encode = [&signature](bool keepPadding, bool lineBreaks) {
        return sarn::base64Encode(signature.data(), 256, keepPadding, lineBreaks).toLatin1();
    };
    const std::string lines = encode(true, true);
    const std::string oneLine = encode(true, false);
    const std::string unpadded = encode(false, false);
    const std::string spaced = "\t" + std::string(lines).insert(10, " ");
    std::string carriageReturns = lines;
    std::replace(carriageReturns.begin(), carriageReturns.end(), '\n', '\r');
    std::string crlf;
    for (const char character : lines)
        crlf += character == '\n' ? std::string("\r\n") : std::string(1, character);
    for (const std::string& text : {lines, crlf, spaced, oneLine, oneLine + "\n", unpadded, "\xEF\xBB\xBF" + lines}) {
        folder.write("f.sig", text);
        EXPECT_TRUE(verify()) << text;
    }
    for (const std::string& text : {carriageReturns, std::string(oneLine).insert(10, " "), unpadded + "\n"}) {
        folder.write("f.sig", text);
        expectInvalidArg("base64Decode", "invalid base64 data", [&] { load(); });
    }
}

TEST_F(FileSignature, MissingFiles_AreFileErrorsInTheirOrder) {
    const auto getMissing = [this] { return getProp(*catchError<ul::CFileError>([this] { verify(); }), "path"); };
    EXPECT_EQ(getMissing(), folder.getPath("f.sig").getString().toUTF8()) << "the signature is read first";
    folder.write("f.sig", "QUJD");
    EXPECT_EQ(getMissing(), folder.getPath("f").getString().toUTF8());
    EXPECT_THROW(sign(folder.getPath("f")), ul::CFileError);
}

TEST_F(FileSignature, SignatureFileThatIsNotBase64_IsRefused_AndAnEmptyOneDoesNotVerify) {
    folder.write("f", "x");
    folder.write("f.sig", "not a signature");
    expectInvalidArg("base64Decode", "invalid base64 data", [this] { verify(); });
    folder.write("f.sig", "QUJ\xFF");
    EXPECT_THROW(verify(), ul::CError);
    folder.write("f.sig", "");
    EXPECT_FALSE(verify());
}

TEST_F(FileSignature, BadKeys_AreRefusedBeforeTheFileIsOpened) {
    Buffer signature;
    const ul::CWindowsPath missing = folder.getPath("f");
    expectError("OpenSSL key corrupted.", [&] { sign(missing, "rsa2048_encrypted_pkcs8"); });
    expectError("OpenSSL key corrupted.", [&] { sarn::verifyFileSignature_RSA_SHA1(missing, "no key", signature); });
}

TEST_F(FileSignature, SignatureFileOfUpTo64KiB_IsRead) {
    std::string text;
    for (int line = 0; line < 1008; ++line)
        text += std::string(64, 'A') + "\n";
    folder.write("f.sig", text + std::string(65536 - text.size(), '\n'));
    EXPECT_EQ(load().size(), 1008U * 48);
}

} // namespace sarn_test
