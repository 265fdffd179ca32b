// SPDX-License-Identifier: Apache-2.0
#include "command.h"
#include "input.h"
#include "output.h"
#include "report.h"
#include "signing.h"
#include "status.h"

#include <sarn/host.h>

#include <memory>

namespace tool {

namespace {

constexpr char signDetails[] =
    R"(Signs with SHA-1 and an RSA or DSA key in PEM form, as the library does, and writes the signature as Base64 text to
FILE.sig. The passphrase of an encrypted key is asked for, or read from a file or descriptor.)";
constexpr char signExample[] = R"($ sarn sign --key private.pem letter.txt
$ openssl base64 -d -in letter.txt.sig -out signature
$ openssl dgst -sha1 -verify public.pem -signature signature letter.txt
Verified OK)";
constexpr char verifyDetails[] =
    R"(Verifies a signature file over SHA-1 with an RSA or DSA key in PEM form. The exit status is 1 if the signature is
not one of the file.)";
constexpr char verifyExample[] = R"($ openssl dgst -sha1 -sign private.pem letter.txt | openssl base64 > letter.txt.sig
$ sarn verify --key public.pem letter.txt
letter.txt: OK)";

constexpr int pieceSize = 1 << 17;
constexpr int signatureFileLimit = 1 << 16; // that of the library

struct VerifyOptions {
    std::string file;
    std::string key;
    std::string signature;
    bool isJson = false;
};

bool isEncrypted(const ul::String& pem) {
    return pem.toStdWString().find(L"ENCRYPTED") != std::wstring::npos;
}

/// The passphrase of a key; none if the key is not encrypted.
ul::CSecretText readPassphrase(const ul::String& key, const SecretSource& source) {
    if (!isEncrypted(key))
        return ul::CSecretText("");
    const ul::TCryptBuffer<char> line = readSecret(source, "passphrase", false);
    return ul::CSecretText(ul::CBytes(line).asText());
}

ul::P<sarn::ISigner> beginSign(const SigningOptions& options) {
    const ul::CSecretText key = readPem(options.key);
    const ul::CSecretText passphrase = readPassphrase(key, options.passphrase);
    try {
        return sarn::createRSA_SHA1()->beginSign(key, sarn::checkPassPhrase(passphrase));
    } catch (const ul::CError& error) {
        throw Problem(Failed, describeInput(options.key) +
                                  " is not a private key in PEM form, or its passphrase is another one (" +
                                  error.what() + ")");
    }
}

bool isSignature(sarn::IVerifier& verifier, const ul::TBuffer<unsigned char>& signature) {
    try {
        return verifier.finish(signature);
    } catch (const ul::CError&) {
        return false; // the bytes do not have the form of a DSA signature
    }
}

int verify(const VerifyOptions& options) {
    const ul::TBuffer<unsigned char> signature =
        readSignature(options.signature.empty() ? options.file + ".sig" : options.signature);
    const ul::P<sarn::IVerifier> verifier = beginVerify(options.key, readPem(options.key));
    Input input(options.file);
    readPieces(input, pieceSize, [&](ul::CBytes piece) { verifier->update(piece.data(), piece.getIntSize("verify")); });
    const bool isRight = isSignature(*verifier, signature);
    if (options.isJson)
        print(Record().add("name", options.file).add("verified", isRight).toJson() + "\n");
    else
        print(toShownText(options.file) + (isRight ? ": OK\n" : ": FAILED\n"));
    return isRight ? Done : NotVerified;
}

int signFile(const SigningOptions& options) {
    sign(options);
    return Done;
}

} // namespace

ul::P<sarn::IVerifier> beginVerify(const std::string& name, const ul::String& key) {
    try {
        return sarn::createRSA_SHA1()->beginVerify(key);
    } catch (const ul::CError& error) {
        throw Problem(Failed, describeInput(name) + " is not a public key in PEM form (" + error.what() + ")");
    }
}

ul::TBuffer<unsigned char> readSignature(const std::string& name) {
    Input input(name);
    const Bytes content = readAll(input, signatureFileLimit);
    try {
        return sarn::fromBase64(ul::CBytes(content).asText());
    } catch (const ul::CError& error) {
        throw Problem(NotVerified, input.getName() + " is not a signature in Base64 (" + error.what() + ")");
    }
}

void addSigning(CLI::App& command, SigningOptions& options) {
    addText(command, "FILE", "", options.file, "file to sign, or -").required();
    addText(command, "--key", "FILE", options.key, "private key in PEM form").required();
    addSecret(command, "passphrase", options.passphrase);
    addText(command, "--to", "FILE", options.to, "file for the signature, or - (default: FILE.sig)");
    addForce(command, options.mayReplace);
}

void sign(const SigningOptions& options, const Bytes* checked) {
    if (options.file == "-" && options.to.empty())
        throw Problem(Misuse, "standard input has no name: give a file for the signature with --to");
    const ul::P<sarn::ISigner> signer = beginSign(options);
    Output output(options.to.empty() ? options.file + ".sig" : options.to, options.mayReplace);
    if (checked) {
        signer->update(checked->getData(), checked->getUsed());
    } else {
        Input input(options.file);
        readPieces(input, pieceSize, [&](ul::CBytes piece) { signer->update(piece.data(), piece.getIntSize("sign")); });
    }
    ul::TBuffer<unsigned char> signature;
    signer->finish(signature);
    output.write(sarn::base64Encode(signature.getData(), signature.getUsed(), true, true).toLatin1());
    output.commit();
}

void addSign(CommandLine& line) {
    const auto options = std::make_shared<SigningOptions>();
    CLI::App& command = addCommand(line, line.app, "sign", "Signs a file", signDetails, signExample,
                                   [options] { return signFile(*options); });
    addSigning(command, *options);
}

void addVerify(CommandLine& line) {
    const auto options = std::make_shared<VerifyOptions>();
    CLI::App& command = addCommand(line, line.app, "verify", "Verifies the signature of a file", verifyDetails,
                                   verifyExample, [options] { return verify(*options); });
    addText(command, "FILE", "", options->file, "signed file, or -").required();
    addText(command, "SIGNATURE", "", options->signature, "file of the signature (default: FILE.sig)");
    addText(command, "--key", "FILE", options->key, "public key in PEM form").required();
    addJson(command, options->isJson);
}

} // namespace tool
