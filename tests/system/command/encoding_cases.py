# SPDX-License-Identifier: Apache-2.0
"""Base64 and HMAC."""
import base64
import hmac
import json
import os
import re
import resource

from case import SIZES, case, expect, make_bytes


@case("Base64_OfEachSize_IsThatOfTheCommandBase64")
def check_base64(at):
    for size in SIZES[-1:] if at.is_windows else (*SIZES, 48 * 4096 - 1, 48 * 4096, 48 * 4096 + 1):
        content = make_bytes(size)
        ours = at.run("base64", stdin=content, binary=True)
        at.same(ours, at.ask("base64", "-w64", stdin=content), f"{size} bytes in lines")
        one_line = at.run("base64", "--one-line", stdin=content, binary=True)
        at.same(one_line, at.ask("base64", "-w0", stdin=content), f"{size} bytes in one line")
        unpadded = at.run("base64", "--one-line", "--no-padding", stdin=content, binary=True)
        expect(unpadded == one_line.rstrip(b"="), f"{size} bytes without padding")
        at.same(at.ask("base64", "-d", stdin=ours), content, f"{size} bytes, decoded by base64")
        for text in (ours, one_line, unpadded, at.ask("base64", "-w76", stdin=content)):
            at.same(at.run("base64", "--decode", stdin=text, binary=True), content, f"{size} bytes, decoded")


@case("Base64_WithFiles_ReadsAndWritesThem")
def check_files(at):
    at.write("plain", make_bytes(1000))
    at.run("base64", "plain", "text")
    expect(base64.b64decode(at.read("text")) == make_bytes(1000), "not the text of the file")
    at.run("base64", "-d", "text", "again")
    expect(at.read("again") == make_bytes(1000), "not the file")
    at.fail(3, "text is not Base64 text, or was cut", "base64", "-d", at.write("text", "aGVsbG8=" * 9 + "aGVs bG8"), "new")


@case("Hmac_OfEachHash_IsThatOfOpenssl")
def check_hmac(at):
    for key in (b"", b"k", bytes(range(64)), bytes(range(65))):
        at.write("key", key)
        for size in SIZES:
            name = at.write("message", make_bytes(size))
            for hash_ in ("md5", "sha1"):
                theirs = hmac.digest(key, make_bytes(size), hash_).hex()
                at.same(at.run("hmac", hash_, "--key", "key", name), f"{theirs}  message\n", f"{hash_} of {size} bytes")
    at.write("key", "Jefe")
    theirs = at.openssl("dgst", "-sha1", "-hmac", "Jefe", "message").split()[-1].decode()
    records = json.loads(at.run("hmac", "sha1", "--key", "key", "--json", "message"))
    at.same(records, [{"name": "message", "hmac": theirs}], "of openssl")


@case("Hmac_OfThePublishedVectors_IsTheirs")
def check_vectors(at):
    text = (at.source / "tests/data/hmac_rfc2202.vec").read_text()
    cases = [(*fields, hash_) for hash_, section in re.findall(r"^\[(\w+)\]\n([^[]*)", text, re.M)
             for fields in re.findall(r"^key = (\w*)\ndata = (\w*)\nhmac = (\w+)", section, re.M)]
    expect(cases, "there are no vectors")
    for key, data, result, hash_ in cases[:2] if at.is_windows else cases:
        at.write("key", bytes.fromhex(key))
        at.same(at.run("hmac", hash_, "--key", "key", stdin=bytes.fromhex(data)), f"{result}  -\n", f"{hash_} {data}")


@case("Files_BeyondTheLimit_AreRefusedAtOnce")
def check_limits(at):
    at.write("key", "key")
    with open("large", "wb") as file:
        file.truncate(1 << 31)
    at.fail(3, "large is larger than 2147418111 bytes, which is the limit here", "hmac", "sha1", "--key", "key", "large")
    for words in (("base64", "-d"), ("digest", "sha1", "--check"), ("config", "sign", "--key", "key")):
        at.fail(3, "large is larger than 2147418111 bytes", *words, "large")
    with open("large", "r+b") as file:
        # Only what is left counts.
        file.seek(-3, os.SEEK_END)
        theirs = hmac.digest(b"key", bytes(3), "sha1").hex()
        at.same(at.run("hmac", "sha1", "--key", "key", stdin_file=file), f"{theirs}  -\n", "the last three bytes")
        file.truncate((1 << 31) - 1)
    at.fail(3, "large is larger than 65536 bytes", "state", "large")
    most = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
    expect(most < 1 << 19, f"it has used {most} KiB, so it has read a part of the file")
