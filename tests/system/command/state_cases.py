# SPDX-License-Identifier: Apache-2.0
"""Saved states of digests."""
import json
import os
import re

from case import case, expect, make_bytes

DIGESTS = ("md4", "md5", "sha1", "sha256", "adler32", "crc32", "md4-sha1", "md4-sha1-adler32")


def read_examples(at):
    """The states in docs/digest-state.md: for each digest its bytes, and the values of the fields that have one."""
    page = (at.source / "docs/digest-state.md").read_text(encoding="utf-8")
    for name, size, table in re.findall(r"^### ([\w-]+), (\d+) bytes\n(.*?)(?=^###|\Z)", page, re.M | re.S):
        rows = [[cell.strip() for cell in line.split("|")[1:-1]] for line in table.splitlines() if line.startswith("| `")]
        state = bytes.fromhex("".join(re.findall(r"`([^`]*)`", " ".join(row[0] for row in rows))))
        expect(len(state) == int(size), f"{name}: the page has {len(state)} bytes")
        yield name, state, {row[1].replace("context: ", ""): row[2] for row in rows}


@case("State_OfEachDigest_HasTheFieldsOfThePage")
def check_fields(at):
    examples = list(read_examples(at))
    expect([name for name, _, _ in examples] == list(DIGESTS), "the page has other digests")
    for name, state, expected in examples[-1:] if at.is_windows else examples:
        shown = json.loads(at.run("state", "--id", name, "--json", at.write("state", state)))
        for field, value in expected.items():
            if re.fullmatch(r"\d+|0x\w+|yes|no", value):
                value = {"yes": True, "no": False}.get(value) if value in ("yes", "no") else value
                at.same(shown[field] if isinstance(value, bool) else str(shown[field]), value, f"{name}: {field}")
        expect(shown.get("bytes so far", 3) == 3 and shown["digest"] == name, shown)
        text = at.run("state", at.write("text", f"{name} 3 {state.hex()}\n"))
        expect("bytes so far" in text and f" {name}\n" in text, text)


@case("State_WithoutItsName_IsRecognisedOrAskedFor")
def check_recognition(at):
    for name, state, _ in read_examples(at):
        at.write("state", state)
        if name in ("sha1", "sha256", "md4-sha1", "md4-sha1-adler32"):
            expect(f" {name}\n" in at.run("state", "state"), name)
        else:
            pair = "md4 or md5" if name.startswith("md") else "adler32 or crc32"
            at.fail(2, f"state may be a state of {pair}: say which with --id", "state", "state")


@case("State_ThatIsDamaged_IsRefusedWithTheReason")
def check_damaged(at):
    states = {name: state for name, state, _ in read_examples(at)}
    for change, message in (
            (lambda state: state[:-1], "Unexpected end of stream."),
            (lambda state: state + b"\0", "Bytes follow the digest state."),
            (lambda state: state[:4] + b"\0" + state[5:], "OpenSSL version mismatch"),
            (lambda state: state[:12] + b"\x5c" + state[13:], "Bad OpenSSL digest context size in state stream."),
            (lambda state: state[:-1] + b"\2", "Invalid boolean in data stream."),
            (lambda state: state[:-14] + b"\x40" + state[-13:], "Bad OpenSSL digest context in state stream.")):
        damaged = change(states["sha256"])
        at.write("state", damaged)
        at.fail(1, message, "state", "--id", "sha256", "state")
        at.fail(1, "no digest accepts it (md4: ", "state", "state")
        at.fail(1, f"; sha256: {message.rstrip('.')}; ", "state", "state")
        at.write("state", f"sha256 3 {damaged.hex()}\n")
        at.fail(1, message, "digest", "sha256", "--resume", "state", "-")
    for text, message in (("sha256 3", "Unexpected end of stream"), ("rot13 3 00", "there is no digest 'rot13'"),
                          ("sha256 x 00", "its line is not"), ("sha256 3 0", "invalid hexadecimal text"), ("", "no digest"),
                          ("sha256 -3 00", "its line is not"),
                          (f"sha256 4 {states['sha256'].hex()}", "it says 4 bytes, but its hash has 3")):
        at.write("state", text)
        at.fail(1, message, "state", "state")


@case("Resume_OfAFileThatGrew_GivesTheDigestOfTheWhole")
def check_resume(at):
    sizes = (0, 1, 64, 100, 131073, 200001)
    for name in ("sha256", "crc32") if at.is_windows else DIGESTS:
        for step, size in enumerate(sizes):
            at.write("log", make_bytes(size))
            again = ("--resume", "log.state", "--force") if step > 0 else ()
            piped = at.run("digest", name, *again, stdin=make_bytes(size))
            resumed = at.run("digest", name, "--save", "log.state", *again, "log")
            at.same((piped, resumed), (at.run("digest", name, stdin=make_bytes(size)), at.run("digest", name, "log")),
                    f"{name} of {size} bytes")
        os.remove("log.state")


@case("Resume_OfAStateOfTheLibrary_ContinuesIt")
def check_library_state(at):
    states = {name: state for name, state, _ in read_examples(at)}
    for name in ("md5", "sha256", "md4-sha1-adler32"):
        at.write("state", states[name])
        at.same(at.run("digest", name, "--resume", "state", stdin=b"abcdef"), at.run("digest", name, stdin=b"abcdef"), name)
    at.write("state", states["crc32"])
    at.fail(2, "does not say how many bytes", "digest", "crc32", "--resume", "state")


@case("Resume_OfAnotherFileOrDigest_IsRefused")
def check_wrong_resume(at):
    at.run("digest", "sha1", "--save", "state", at.write("log", "123456"))
    at.write("log", "12345")
    at.fail(3, "log is shorter than the 6 bytes of the saved state", "digest", "sha1", "--resume", "state", "log")
    at.fail(3, "standard input is shorter", "digest", "sha1", "--resume", "state", stdin=b"12345")
    at.fail(1, "it is a state of sha1, not of sha256", "digest", "sha256", "--resume", "state", "log")
    at.fail(2, "--save and --resume are for one file", "digest", "sha1", "--resume", "state", "log", "log")
    at.fail(2, "excludes", "digest", "sha1", "--resume", "state", "--check", "log")
