# SPDX-License-Identifier: Apache-2.0
"""Signatures, and signed configurations."""
import base64
import configparser
import json
import os
import random

from case import LETTER, case, expect, make_bytes

PAIRS = ("rsa1024", "rsa2048", "rsa3072", "dsa1024", "dsa2048")
PASSPHRASE = "for tests only"
INI = b"first=1\n[sources]\npath = Z:\\home\\ada\nname=Gr\xc3\xb6\xc3\x9fe\n"


def get_pair(at, name):
    return str(at.keys / f"{name}_for_tests_only.pem"), str(at.keys / f"{name}_for_tests_only.pub.pem")


def verify_by_openssl(at, public, name):
    at.write("signature", base64.b64decode(at.read(name + ".sig")))
    output = at.openssl("dgst", "-sha1", "-verify", public, "-signature", "signature", name)
    at.same(output, b"Verified OK\n", f"signature of {name} under {public}")


def sign_by_openssl(at, private, name):
    signature = at.openssl("dgst", "-sha1", "-sign", private, name)
    at.write(name + ".sig", base64.encodebytes(signature))


@case("Sign_WithEachKey_IsVerifiedByOpensslAndVerifiesItsSignatures")
def check_pairs(at):
    for pair in ("rsa2048", "dsa2048") if at.is_windows else PAIRS:
        private, public = get_pair(at, pair)
        for size in (0, 41, 300001):
            name = at.write(f"{pair}-{size}", make_bytes(size))
            at.run("sign", "--key", private, name)
            verify_by_openssl(at, public, name)
            expect(at.run("verify", "--key", public, name) == f"{name}: OK\n", "not verified")
            sign_by_openssl(at, private, name)
            at.same(at.run("verify", "--key", public, name), f"{name}: OK\n", f"signature of openssl by {pair}")


@case("Sign_WithRSA_IsVerifiedByPkeyutl")
def check_pkeyutl(at):
    private, public = get_pair(at, "rsa2048")
    at.run("sign", "--key", private, at.write("letter", LETTER))
    at.write("signature", base64.b64decode(at.read("letter.sig")))
    at.write("digest", at.openssl("dgst", "-sha1", "-binary", "letter"))
    output = at.ask("openssl", "pkeyutl", "-verify", "-pubin", "-inkey", public, "-sigfile", "signature", "-in", "digest",
                    "-pkeyopt", "digest:sha1")
    at.same(output, b"Signature Verified Successfully\n", "pkeyutl")
    at.write("letter.sig", base64.encodebytes(at.ask("openssl", "pkeyutl", "-sign", "-inkey", private, "-in", "digest",
                                                     "-pkeyopt", "digest:sha1")))
    at.same(at.run("verify", "--key", public, "letter"), "letter: OK\n", "pkeyutl's signature")


@case("Sign_OfStandardInput_WritesToTheNamedFile")
def check_streams(at):
    private, public = get_pair(at, "rsa2048")
    at.write("letter", LETTER)
    at.write("letter.sig", at.run("sign", "--key", private, "--to", "-", "-", stdin=LETTER, binary=True))
    verify_by_openssl(at, public, "letter")
    expect(at.run("verify", "--key", public, "-", "letter.sig", stdin=LETTER) == "-: OK\n", "not verified")
    at.fail(2, "standard input has no name", "sign", "--key", private, "-", stdin=LETTER)


@case("Sign_WithAnEncryptedKey_TakesThePassphraseFromAFileOrDescriptor")
def check_passphrase(at):
    public = get_pair(at, "rsa2048")[1]
    at.write("passphrase", PASSPHRASE + "\n")
    at.write("letter", LETTER)
    for kind in ("pkcs8", "traditional"):
        private = str(at.keys / f"rsa2048_encrypted_{kind}_for_tests_only.pem")
        at.run("sign", "--key", private, "--passphrase-file", "passphrase", "--force", "letter")
        expect(len(base64.b64decode(at.read("letter.sig"))) == 256, "not a signature")
        at.run("sign", "--key", private, "--passphrase-fd", "0", "--force", "letter", stdin=PASSPHRASE.encode())
        os.remove("letter.sig")
        at.fail(3, "or its passphrase is another one", "sign", "--key", private, "--passphrase-fd", "0", "letter")
        at.fail(2, "there is no terminal to ask for a secret", "sign", "--key", private, "letter")
    at.fail(3, "is not a private key in PEM form", "sign", "--key", public, "letter")
    at.fail(3, "letter is not a private key in PEM form", "sign", "--key", "letter", "letter")


@case("Sign_WithALatin1Passphrase_TakesItInUTF8")
def check_latin1(at):
    private = str(at.keys / "rsa1024_encrypted_latin1_for_tests_only.pem")
    at.run("sign", "--key", private, "--passphrase-fd", "0", at.write("letter", LETTER), stdin="üß".encode())
    at.fail(3, "outside Latin-1", "sign", "--key", private, "--passphrase-fd", "0", "--force", "letter", stdin="€".encode())


@case("Verify_OfAChangedFileOrSignature_HasStatus1")
def check_changed(at):
    for pair in ("rsa2048",) if at.is_windows else ("rsa2048", "dsa2048"):
        private, public = get_pair(at, pair)
        at.write("letter", LETTER)
        sign_by_openssl(at, private, "letter")
        signature = at.read("letter.sig")
        changed = base64.encodebytes(base64.b64decode(signature)[:-1] + b"\0")
        for damaged in (changed, b"", b"not Base64\n", base64.encodebytes(b"not a signature")):
            at.write("letter.sig", damaged)
            at.run("verify", "--key", public, "letter", status=1)
        at.write("letter.sig", signature)
        at.write("letter", LETTER + b"\n")
        expect(at.run("verify", "--key", public, "letter", status=1) == "letter: FAILED\n", "it does not say so")
        output = json.loads(at.run("verify", "--json", "--key", public, "letter", status=1))
        expect(output == {"name": "letter", "verified": False}, output)


@case("Config_ThatIsSigned_IsCheckedListedAndAsked")
def check_config(at):
    private, public = get_pair(at, "rsa2048")
    name = "Größe 1.ini"
    for options, content in (((), INI), (("--base64",), base64.encodebytes(INI))):
        at.write(name, content)
        at.run("config", "sign", "--key", private, *options, "--force", name)
        verify_by_openssl(at, public, name)
        options = ("--key", public, *options, name)
        expect(at.run("config", "check", *options) == f"{name}: OK, 3 values\n", "not checked")
        record = json.loads(at.run("config", "check", "--json", *options))
        expect(record == {"name": name, "verified": True, "values": 3}, record)
        expect(at.run("config", "list", *options) == "//first=1\n/sources/path=Z:\\home\\ada\n/sources/name=Größe\n",
               "not listed")
        expect(at.run("config", "list", *options, "/sources/n") == "/sources/name=Größe\n", "not listed")
        expect(at.run("config", "get", *options, "sources/name") == "Größe\n", "not found")
        at.fail(3, "has no value for sources/gone", "config", "get", *options, "sources/gone")
        listed = json.loads(at.run("config", "list", "--json", *options))
        expect(listed == {"//first": "1", "/sources/path": "Z:\\home\\ada", "/sources/name": "Größe"}, listed)


def make_config(numbers):
    """Text that both readers accept. Python's continues a value on an indented line, keeps quotes and spaces in headers,
    and takes other characters for spaces."""
    def make(characters, most):
        return "".join(numbers.choice(characters) for _ in range(numbers.randint(1, most)))
    spaces, letters = " \t", "abcXYZ019éß日😀._-%$'\\:;#"
    lines = ["[first]"]
    for _ in range(numbers.randint(0, 60)):
        name = make("abcd", 1) + make(letters + " [", 3)
        lines.append(numbers.choice((
            f"{name}{make(spaces, 2)}={make(spaces, 2)}{make(letters + ' =[]/', 9)}", f"{name}={make(letters, 3)}", f"{name}=",
            f"[{name.rstrip()}]", f"# {make(letters, 9)}", f";{name}=1", "")))
    return numbers.choice(("\n", "\r\n", "\r")).join(lines).encode()


@case("Config_OfGeneratedText_HasTheValuesOfPythonsReader")
def check_generated(at):
    private, public = get_pair(at, "rsa2048")
    numbers = random.Random(22)
    for number in range(60):
        text = make_config(numbers)
        name = at.write(f"{number}.ini", text)
        reader = configparser.RawConfigParser(delimiters="=", strict=False, empty_lines_in_values=False, default_section="")
        reader.optionxform = str
        reader.read(name, encoding="utf-8")
        theirs = [[f"/{section}/{key}", value] for section in reader.sections() for key, value in reader[section].items()]
        encoded = ("--base64",) if number % 2 else ()
        at.write(name, base64.encodebytes(text) if encoded else text)
        at.run("config", "sign", "--key", private, *encoded, name)
        listed = at.run("config", "list", "--json", "--key", public, *encoded, name)
        at.same(json.loads(listed, object_pairs_hook=lambda pairs: [list(pair) for pair in pairs]), theirs, text)


@case("Config_ThatWasChanged_HasStatus1")
def check_changed_config(at):
    private, public = get_pair(at, "dsa2048")
    at.write("a.ini", INI)
    sign_by_openssl(at, private, "a.ini")
    at.same(at.run("config", "get", "--key", public, "a.ini", "/sources/name"), "Größe\n", "signed by openssl")
    at.write("a.ini", INI + b"\n")
    for words in (("check",), ("list",), ("get",)):
        more = ("/sources/name",) if words == ("get",) else ()
        at.fail(1, "Invalid signature for config file.", "config", *words, "--key", public, "a.ini", *more)
