# SPDX-License-Identifier: Apache-2.0
"""Encryption, and keys."""
import hashlib
import json
import os
import stat

from case import CIPHERS, LETTER, PASSWORD, SIZES, case, expect, make_bytes

SALT, ITERATIONS = "00ff8f1ac3", 1234


def derive(size):
    return hashlib.pbkdf2_hmac("sha1", PASSWORD.encode(), bytes.fromhex(SALT), ITERATIONS, size)


def openssl(at, cipher, key, iv, content, *words):
    name = CIPHERS[cipher][0]
    return at.openssl("enc", f"-{name}", "-K", key.hex(), "-iv", iv.hex(), *words, stdin=content)


@case("Encrypt_WithEachCipher_IsReadByOpensslAndReadsItsMessages")
def check_ciphers(at):
    for cipher, (_, key_size, iv_size) in CIPHERS.items():
        key, iv = bytes(range(key_size)), bytes(range(100, 100 + iv_size))
        at.write("key", key)
        for size in SIZES[-1:] if at.is_windows else SIZES:
            content = make_bytes(size)
            at.write("file", content)
            at.run("encrypt", "--cipher", cipher, "--key", "key", "--force", "file", "message")
            message = at.read("message")
            plain = openssl(at, cipher, key, message[:iv_size], message[iv_size:], "-d")
            at.same(content, plain, f"{cipher} of {size} bytes, decrypted by openssl")
            theirs = openssl(at, cipher, key, iv, content)
            at.write("message", iv + theirs)
            at.run("decrypt", "--cipher", cipher, "--key", "key", "--force", "message", "plain")
            at.same(at.read("plain"), content, f"{cipher} of {size} bytes, encrypted by openssl")
            ours = at.run("encrypt", "--cipher", cipher, "--key", "key", "--iv", iv.hex(), "file", "-", binary=True)
            at.same(ours, theirs, f"{cipher} of {size} bytes, with a given IV")
            plain = at.run("decrypt", "--cipher", cipher, "--key", "key", "--iv", iv.hex(), "-", "-", stdin=ours, binary=True)
            expect(plain == content, "not what was encrypted with a given IV")


@case("Encrypt_WithAPassword_IsReadByOpensslAndDecrypted")
def check_password(at):
    at.write("password", PASSWORD + "\nnot this line\n")
    options = ("--salt", SALT, "--iterations", str(ITERATIONS), "--password-file", "password")
    at.write("file", LETTER)
    at.run("encrypt", *options, "file", "message")
    message = at.read("message")
    plain = openssl(at, "aes256cbc", derive(32), message[:16], message[16:], "-d")
    at.same(LETTER, plain, "decrypted by openssl")
    at.run("decrypt", *options, "message", "plain")
    expect(at.read("plain") == LETTER, "the file has changed")


@case("Encrypt_OfTheSameFile_DrawsAnotherIV")
def check_random_iv(at):
    at.write("key", bytes(32))
    messages = {at.run("encrypt", "--key", "key", "-", "-", stdin=LETTER, binary=True)[:16] for _ in range(8)}
    expect(len(messages) == 8, "an IV was drawn twice")


@case("Encrypt_WithTheNullCipher_CopiesTheFile")
def check_null(at):
    for size in SIZES:
        content = make_bytes(size)
        copy = at.run("encrypt", "--cipher", "null", "-", "-", stdin=content, binary=True)
        expect(copy == content, f"not a copy of {size} bytes")
        expect(at.run("decrypt", "--cipher", "null", "-", "-", stdin=copy, binary=True) == content, "not a copy")


@case("Password_FromEachSource_GivesTheSameKey")
def check_sources(at):
    options = ("key", "--show", "--json", "--salt", SALT, "--iterations", str(ITERATIONS))
    expected = derive(32).hex()
    for content in (PASSWORD, PASSWORD + "\n", PASSWORD + "\r\nmore", "\ufeff" + PASSWORD + "\n"):
        at.write("password", content)
        at.same(json.loads(at.run(*options, "--password-file", "password"))["key"], expected, repr(content))
        at.same(json.loads(at.run(*options, "--password-file", "-", stdin=content.encode()))["key"], expected, "from -")
        at.same(json.loads(at.run(*options, "--password-fd", "0", stdin=content.encode()))["key"], expected, "from 0")
    if not at.is_windows:
        with open("password", "rb") as file:
            output = at.run(*options, "--password-fd", str(file.fileno()), pass_fds=[file.fileno()])
        at.same(json.loads(output)["key"], expected, "from another descriptor")


@case("Password_WithoutATerminalOrSource_IsMisuse")
def check_no_source(at):
    at.write("file", LETTER)
    at.fail(2, "there is no terminal to ask for a secret", "encrypt", "--salt", SALT, "file", "message")
    at.fail(2, "there is no key: give --key, or the --salt", "encrypt", "file", "message")
    at.fail(2, "excludes", "encrypt", "--salt", SALT, "--key", "file", "file", "message")
    at.fail(2, "give --key or a password, not both", "encrypt", "--key", "file", "--password-fd", "0", "file", "message")
    at.fail(2, "excludes", "key", "--random", "--password-fd", "0", "new")
    at.fail(3, "Cannot open file 'gone'", "encrypt", "--salt", SALT, "--password-file", "gone", "file", "message")
    at.fail(2, "--salt needs an even number of hexadecimal digits", "decrypt", "--salt", "0x1", "file", "plain")


@case("Key_FromAPassword_IsThatOfPBKDF2AndPrintedOnlyIfAsked")
def check_key(at):
    at.write("password", PASSWORD)
    options = ("key", "--salt", SALT, "--iterations", str(ITERATIONS), "--password-file", "password")
    for words, size in (((), 32), (("--cipher", "bfcbc"), 16), (("--size", "77"), 77)):
        output = at.run(*options, *words, "--force", "key")
        at.same(at.read("key"), derive(size), f"key of {size} bytes")
        expect(output == f"salt        {SALT}\niterations  {ITERATIONS}\nsize        {size}\n", output)
        expect(at.run(*options, *words, "-", binary=True) == derive(size), "not the key on standard output")
    expect(f"key         {derive(32).hex()}\n" in at.run(*options, "--show"), "not shown")
    at.fail(2, "give a file for the key, or --show to print it", *options)
    at.fail(2, "null has no key", *options, "--cipher", "null", "key2")


@case("Key_InAFile_IsReadableByItsOwnerOnly", is_posix=True)
def check_permissions(at):
    for before in (None, 0o666, 0o400):
        if before is not None:
            os.chmod(at.write("key", "old"), before)
        at.run("key", "--random", "--force", "key")
        mode = stat.S_IMODE(os.stat("key").st_mode)
        expect(mode == 0o600, f"a key over a file of {before} has the permissions {mode:o}")


@case("Key_ThatIsDrawn_IsAnotherEachTime")
def check_random(at):
    keys = {at.run("key", "--random", "--size", "24", "-", binary=True) for _ in range(4)}
    expect(len(keys) == 4 and all(len(key) == 24 for key in keys), keys)
    output = at.run("key", "--random", "key")
    expect(output == "" and len(at.read("key")) == 32, output)
    salts = {json.loads(at.run("key", "--show", "--json", "--password-fd", "0"))["salt"] for _ in range(2)}
    expect(len(salts) == 2, "a salt was drawn twice")


@case("Key_OfAnotherSize_IsRefused")
def check_key_size(at):
    at.write("file", LETTER)
    for size in (0, 31, 33):
        at.write("key", bytes(size))
        at.fail(2, f"key has {size} bytes, but a key for aes256cbc has 32", "encrypt", "--key", "key", "file", "message")
    at.write("key", bytes(32))
    with open("key", "rb") as file:
        file.seek(1)
        at.fail(2, "standard input has 31 bytes, but a key", "encrypt", "--key", "-", "file", "message", stdin_file=file)
    at.fail(2, "--iv needs 16 bytes for aes256cbc", "encrypt", "--key", "key", "--iv", "00" * 15, "file", "message")


@case("Decrypt_OfACutMessageOrWithAWrongKey_WritesNoFile")
def check_damaged(at):
    at.write("key", bytes(32))
    at.write("message", openssl(at, "aes256cbc", bytes(32), bytes(16), LETTER))
    options = ("decrypt", "--key", "key", "--iv", bytes(16).hex())
    message = at.read("message")
    at.run(*options, "message", "plain")
    for damaged in (message[:-1], message[:15], b"", message[:-1] + bytes([message[-1] ^ 1])):
        at.fail(3, "cannot be decrypted: another key, password or cipher, or the message was cut or changed", *options,
                at.write("damaged", damaged), "new")
    at.write("key", bytes(31) + b"\1")
    at.fail(3, "message cannot be decrypted", *options, "message", "new")


@case("Encrypt_OfMoreThan2GiB_IsReadByOpenssl")
def check_large(at):
    with open("zeros", "wb") as file:
        file.truncate((1 << 31) + 5)
    at.write("key", bytes(32))
    at.write("pipeline", f"""set -e -o pipefail
{at.shell_words} encrypt --key key --iv {bytes(16).hex()} zeros - |
    openssl enc -d -aes-256-cbc -K {bytes(32).hex()} -iv {bytes(16).hex()} | cmp - zeros
{at.shell_words} encrypt --key key zeros - | {at.shell_words} decrypt --key key - - | cmp - zeros
""")
    at.ask("bash", "pipeline")
    at.compared += 1
