# SPDX-License-Identifier: Apache-2.0
"""Digests, and lists of them."""
import os
import re
import zlib

from case import SIZES, case, expect, make_bytes

HASHES = ("md4", "md5", "sha1", "sha256")
ODD_NAMES = (b"two  spaces", b" ", b"[a,b]", b"{}", b"%%", b"++", b"config", b"a=b", b'"quoted"', b"it's", b"-x",
             b"line\nfeed", b"carriage\rreturn", b"back\\slash", b"\\n", b"$HOME", b"*", b"tab\t", b"\x01",
             b"not UTF-8 \xff", "Größe 😀".encode(), b"dot.", b"ends with \\")


@case("Digest_OfEachHash_IsThatOfOpenssl")
def check_hashes(at):
    for size in SIZES[-3:] if at.is_windows else SIZES:
        name = at.write(f"file{size}", make_bytes(size))
        for identifier in ("md4", "sha256") if at.is_windows else HASHES:
            theirs = at.openssl("dgst", f"-{identifier}", "-r", name).split()[0].decode()
            at.same(at.run("digest", identifier, name), f"{theirs}  {name}\n", f"{identifier} of {size} bytes")


@case("Digest_OfEachChecksum_IsThatOfGzipAndZlib")
def check_checksums(at):
    for size in SIZES:
        name = at.write(f"file{size}", make_bytes(size))
        at.write(name + ".gz", at.ask("gzip", "-c", name))
        crc32 = at.ask("gzip", "-lv", name + ".gz").decode().splitlines()[1].split()[1]
        at.same(at.run("digest", "crc32", name).split()[0], bytes.fromhex(crc32)[::-1].hex(), f"CRC-32 of {size} bytes")
        adler32 = zlib.adler32(make_bytes(size)).to_bytes(4, "little").hex()
        at.same(at.run("digest", "adler32", name).split()[0], adler32, f"Adler-32 of {size} bytes")


@case("Digest_OfACombination_IsThatOfItsParts")
def check_combinations(at):
    at.write("file", make_bytes(1000003))
    parts = {name: at.run("digest", name, "file").split()[0] for name in ("md4", "sha1", "adler32")}
    at.same(at.run("digest", "md4-sha1", "file").split()[0], parts["md4"] + parts["sha1"], "md4-sha1")
    at.same(at.run("digest", "md4-sha1-adler32", "file").split()[0], "".join(parts.values()), "md4-sha1-adler32")


@case("Digest_OfOddNames_IsListedAndCheckedAsBySha256sum", is_posix=True)
def check_odd_names(at):
    for name in ODD_NAMES:
        at.write(os.fsdecode(name), name)
        at.same(at.run("digest", "sha256", "--", name, binary=True), at.ask("sha256sum", "--", name), name)
    theirs = at.ask("sha256sum", "--", *ODD_NAMES)
    at.same(at.run("digest", "sha256", "--", *ODD_NAMES, binary=True), theirs, "all of them")
    at.write("LIST", theirs)
    checked = at.run("digest", "sha256", "--check", "LIST", binary=True)
    expect(at.run("digest", "sha256", "--check", "-", binary=True, stdin=theirs) == checked, "not so from standard input")
    # Its names have other escapes than its lists.
    at.same(sorted(line for line in checked.split(b"\n") if b"\\" not in line),
            sorted(line for line in at.ask("sha256sum", "--check", "LIST").split(b"\n") if not re.search(rb"[\\\r]", line)),
            "checked")
    expect(checked.count(b": OK\n") == len(ODD_NAMES), checked)
    at.ask("sha256sum", "--check", "--strict", "-", stdin=at.run("digest", "sha256", "--", *ODD_NAMES, binary=True))
    at.write("LIST", at.ask("sha256sum", "--binary", "--", *ODD_NAMES).replace(b"\n", b"\r\n"))
    at.run("digest", "sha256", "--check", "LIST")


@case("Digest_OfStandardInput_IsThatOfSha256sum")
def check_standard_input(at):
    content = make_bytes(300001) + bytes(range(256))  # with line feeds and Ctrl-Z, which Windows may change
    at.same(at.run("digest", "sha256", stdin=content, binary=True), at.ask("sha256sum", stdin=content), "of nothing")
    at.same(at.run("digest", "sha256", "-", stdin=content, binary=True), at.ask("sha256sum", stdin=content), "of -")


@case("Digest_OfUTF8Names_ReadsTheFileOfThisName")
def check_names(at):
    for name in ("Größe 😀", "two  spaces"):
        content = at.read(at.write(name, name))
        at.same(at.run("digest", "sha256", name, binary=True), at.ask("sha256sum", name), name)
        at.write("LIST", at.ask("sha256sum", name))
        expect(f"{name}: OK\n" == at.run("digest", "sha256", "--check", "LIST"), f"{content} is not the listed file")


@case("Check_OfADifferentFile_SaysWhichAndHasStatus1")
def check_different(at):
    at.write("LIST", at.ask("sha256sum", at.write("good", "a"), at.write("bad", "b")))
    at.write("bad", "c")
    output = at.run("digest", "sha256", "--check", "LIST", status=1)
    expect(output.startswith("good: OK\nbad: FAILED\n"), output)
    expect("\nsarn digest: 1 of 2 files are not as LIST says" in output, output)
    json = at.run("digest", "sha256", "--check", "LIST", "--json", status=1)
    expect('[{"name": "good", "verified": true},\n {"name": "bad", "verified": false}]\n' in json, json)


@case("Check_OfLinesThatAreNotDigests_HasStatus1")
def check_malformed(at):
    line = at.ask("sha256sum", at.write("good", "a"))
    for damage in (b"\n", b"# comment\n", line.replace(b" ", b"", 1), b"x" + line[1:], line[2:], b"\\" + line[:64] + b"\n"):
        at.write("LIST", line + damage)
        output = at.run("digest", "sha256", "--check", "LIST", status=1)
        expect("good: OK" in output and "has 1 lines that are not of a digest of sha256" in output, output)
    for content in (b"", b"\n", at.ask("sha1sum", "good")):
        at.fail(1, "has no line of a digest of sha256", "digest", "sha256", "--check", "-", stdin=content)


@case("Digest_AsJson_HasNamesAndDigests", is_posix=True)
def check_json(at):
    name = 'quote " backslash \\ feed \n Größe'
    digest = re.escape(at.ask("sha256sum", at.write("other", "a")).split()[0].decode())
    at.write(name, "a")
    output = at.ask("python3", "-c", "import json, sys; print(ascii(json.load(sys.stdin)))",
                    stdin=at.run("digest", "sha256", "--json", name, binary=True))
    expect(re.fullmatch(rf"\[{{'name': {re.escape(ascii(name))}, 'digest': '{digest}'}}\]\n", output.decode()), output)
