#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes digests and states of other implementations. Run it from this folder:

    python3 make_digest_vectors.py digests > digests.vec
    python3 make_digest_vectors.py states  > digest_states.vec
    python3 make_digest_vectors.py examples     the tables of docs/digest-state.md

States come from their documented layout and from hash_models.py, not from the library.
"""
import struct
import sys

import hash_models

HASHES = ("md4", "md5", "sha1", "sha256")
CHECKSUMS = ("adler32", "crc32")
COMBINATIONS = {"md4-sha1": ("md4", "sha1"), "md4-sha1-adler32": ("md4-sha1", "adler32")}


def pattern(size):
    """The input of a vector. The tests use the same."""
    return bytes((i * 31 + i // 256) & 0xFF for i in range(size))


def word(value):
    return struct.pack("<I", value)


class Moment:
    """The history of a digest: input, perhaps finished, read, and reset with new input."""

    def __init__(self, data, finished=False, read=False, again=None):
        self.data, self.finished, self.read, self.again = data, finished, read, again


def describe_hash(name, moment):
    """The state of a hash as rows of bytes, field and value."""
    running = hash_models.Hash(name)
    result = b""
    running.update(moment.data)
    if moment.finished or moment.again is not None:
        result = running.finish()
    if moment.again is not None:
        running = hash_models.Hash(name)
        running.update(moment.again)
    size = len(hash_models.digest(name, b""))
    chaining = b"".join(word(value) for value in running.state)
    context = len(chaining) + 8 + 64 + 4 + (4 if name == "sha256" else 0)
    rows = [
        (word(1), "version", "1"),
        (word(0x1010102F), "OpenSSL version", "0x1010102F"),
        (word(size), "digest size", str(size)),
        (word(context), "context size", str(context)),
        (chaining, "context: chaining values", "words as they lie in memory"),
        (struct.pack("<Q", running.bits), "context: bits so far", str(running.bits)),
        (running.block + bytes(64 - len(running.block)), "context: block", "the bytes not yet processed, then zeros"),
        (word(len(running.block)), "context: fill of the block", str(len(running.block))),
    ]
    if name == "sha256":
        rows.append((word(32), "context: result size", "32"))
    finished = moment.finished and moment.again is None
    return rows + [
        (word(len(result)), "result length", str(len(result))),
        (result, "result", "the digest"),
        (b"\x01", "initialized", "yes"),
        (b"\x01" if finished else b"\x00", "finished", "yes" if finished else "no"),
    ]


def describe_checksum(name, moment):
    value = {"adler32": hash_models.adler32, "crc32": hash_models.crc32}[name](
        moment.data if moment.again is None else moment.again)
    finished = moment.finished and moment.again is None
    return [
        (word(1), "version", "1"),
        (word(value), "checksum", "0x%08X" % value),
        (b"\x01" if finished else b"\x00", "finished", "yes" if finished else "no"),
    ]


def describe(name, moment):
    if name in HASHES:
        return describe_hash(name, moment)
    if name in CHECKSUMS:
        return describe_checksum(name, moment)
    result = hash_models.digest(name, moment.data) if moment.read and name == moment.outermost else b""
    finished = moment.finished and moment.again is None
    rows = [(word(1), "version", "1")]
    for part in COMBINATIONS[name]:
        rows += [(data, part + ": " + field, value) for data, field, value in describe(part, moment)]
    return rows + [
        (word(len(result)), "result length", str(len(result))),
        (result, "result", "the digest"),
        (b"\x01" if finished else b"\x00", "finished", "yes" if finished else "no"),
        (b"\x00", "result ready", "no"),
    ]


def get_state(name, moment):
    moment.outermost = name
    return b"".join(data for data, _, _ in describe(name, moment))


def write_digests():
    print("# Digests of the byte pattern (i * 31 + i / 256) mod 256. Written by make_digest_vectors.py.")
    for name in HASHES + CHECKSUMS:
        print(f"\n[{name}]")
        for size in list(range(301)) + [(1 << 20) + 1]:
            print(f"size = {size}\ndigest = {hash_models.digest(name, pattern(size)).hex()}\n")


def write_states():
    print("# Saved states of digests that were fed the first bytes of the pattern (i * 31 + i / 256) mod 256, then")
    print("# finished, read, and reset and fed again, as far as the fields say. Written by make_digest_vectors.py.")
    for name in HASHES + CHECKSUMS + tuple(COMBINATIONS):
        print(f"\n[{name}]")
        for size, finished, read, again in ((0, 0, 0, -1), (3, 0, 0, -1), (63, 0, 0, -1), (64, 0, 0, -1),
                                            (100, 0, 0, -1), (300, 0, 0, -1), (0, 1, 0, -1), (100, 1, 0, -1),
                                            (100, 1, 1, -1), (100, 1, 1, 3), (100, 1, 0, 3), (100, 0, 0, 3)):
            moment = Moment(pattern(size), bool(finished), bool(read), None if again < 0 else pattern(again))
            print(f"size = {size}\nfinished = {finished}\nread = {read}\nagain = {again}")
            print(f"state = {get_state(name, moment).hex()}\n")


def write_examples():
    for name in HASHES + CHECKSUMS + tuple(COMBINATIONS):
        moment = Moment(b"abc")
        moment.outermost = name
        rows = [row for row in describe(name, moment) if row[0]]
        print(f"### {name}, {sum(len(row[0]) for row in rows)} bytes\n")
        print(f"| {name} | Field | Value |\n|---|---|---|")
        for data, field, value in rows:
            lines = "<br>".join(f"`{data[i:i + 16].hex(' ')}`" for i in range(0, len(data), 16))
            print(f"| {lines} | {field} | {value} |")
        print()


if __name__ == "__main__":
    hash_models.check()
    {"digests": write_digests, "states": write_states, "examples": write_examples}[sys.argv[1]]()
