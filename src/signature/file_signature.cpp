// SPDX-License-Identifier: Apache-2.0
#include "sarn/base64.h"
#include "sarn/signature.h"

#include "ul/file.h"

namespace sarn {

namespace {

constexpr int chunkSize = 8192;
// Far more than any signature needs: a hundred times the text for an RSA key of 4096 bits.
constexpr int largestSignatureFile = 65536;

/// Passes the content of a file to a signing or verifying session.
template <class Session>
void feedFile(const ul::CWindowsPath& path, Session& session) {
    ul::CWindowsFileInStream stream(path);
    ul::TBuffer<unsigned char> chunk(chunkSize, -1);
    while (!stream.isEndOfStream())
        session.update(chunk.getData(), stream.readLax(chunk.getData(), chunkSize));
}

} // namespace

void createFileSignature_RSA_SHA1(const ul::TPathImpl<ul::CWindowsPathTraits>& path, const ul::String& privateKey,
                                  ul::TBuffer<unsigned char>& signature) {
    const ul::P<ISignatureAlgo> algo = createRSA_SHA1();
    const ul::P<ISigner> signer = algo->beginSign(privateKey, ul::getEmptyString());
    feedFile(path, *signer);
    signer->finish(signature);
}

bool verifyFileSignature_RSA_SHA1(const ul::TPathImpl<ul::CWindowsPathTraits>& path, const ul::String& publicKey,
                                  const ul::TBuffer<unsigned char>& signature) {
    const ul::P<ISignatureAlgo> algo = createRSA_SHA1();
    const ul::P<IVerifier> verifier = algo->beginVerify(publicKey);
    feedFile(path, *verifier);
    return verifier->finish(signature);
}

bool verifyFileSignature_RSA_SHA1(const ul::TPathImpl<ul::CWindowsPathTraits>& path, const ul::String& publicKey,
                                  const ul::TPathImpl<ul::CWindowsPathTraits>& signaturePath) {
    ul::TBuffer<unsigned char> signature;
    loadSignatureBase64(signaturePath, signature);
    return verifyFileSignature_RSA_SHA1(path, publicKey, signature);
}

void loadSignatureBase64(const ul::TPathImpl<ul::CWindowsPathTraits>& signaturePath,
                         ul::TBuffer<unsigned char>& signature) {
    base64Decode(ul::readUTF8TextFile(signaturePath, largestSignatureFile), signature);
}

void storeSignatureBase64(const ul::TPathImpl<ul::CWindowsPathTraits>& signaturePath,
                          const ul::TBuffer<unsigned char>& signature) {
    ul::writeUTF8TextFile(signaturePath, base64Encode(signature.getData(), signature.getUsed(), true, true));
}

} // namespace sarn
