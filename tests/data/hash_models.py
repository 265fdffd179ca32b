# SPDX-License-Identifier: Apache-2.0
"""The hashes and checksums of the standards, with their running states.

Independent of the library and of libcrypto. Each hash is checked against published values and, where Python has it,
against hashlib when this file is run.
"""
import hashlib
import struct
import zlib

MASK = 0xFFFFFFFF


def rotate(value, count):
    value &= MASK
    return (value << count | value >> (32 - count)) & MASK


def compress_md4(state, block):
    """RFC 1320, 3.4."""
    x = struct.unpack("<16I", block)
    a, b, c, d = state
    rounds = (
        (lambda b, c, d: b & c | ~b & d, 0, list(range(16)), (3, 7, 11, 19)),
        (lambda b, c, d: b & c | b & d | c & d, 0x5A827999, [i % 4 * 4 + i // 4 for i in range(16)], (3, 5, 9, 13)),
        (lambda b, c, d: b ^ c ^ d, 0x6ED9EBA1, [0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15], (3, 9, 11, 15)),
    )
    for function, constant, order, shifts in rounds:
        for i in range(16):
            a = rotate(a + (function(b, c, d) & MASK) + x[order[i]] + constant, shifts[i % 4])
            a, b, c, d = d, a, b, c
    return [(old + new) & MASK for old, new in zip(state, (a, b, c, d))]


def compress_md5(state, block):
    """RFC 1321, 3.4."""
    import math
    x = struct.unpack("<16I", block)
    a, b, c, d = state
    shifts = ((7, 12, 17, 22), (5, 9, 14, 20), (4, 11, 16, 23), (6, 10, 15, 21))
    for i in range(64):
        if i < 16:
            f, k = b & c | ~b & d, i
        elif i < 32:
            f, k = b & d | c & ~d, (5 * i + 1) % 16
        elif i < 48:
            f, k = b ^ c ^ d, (3 * i + 5) % 16
        else:
            f, k = c ^ (b | ~d & MASK), 7 * i % 16
        constant = int(abs(math.sin(i + 1)) * 4294967296)
        a = (b + rotate(a + (f & MASK) + x[k] + constant, shifts[i // 16][i % 4])) & MASK
        a, b, c, d = d, a, b, c
    return [(old + new) & MASK for old, new in zip(state, (a, b, c, d))]


def compress_sha1(state, block):
    """FIPS 180-4, 6.1.2."""
    w = list(struct.unpack(">16I", block))
    for i in range(16, 80):
        w.append(rotate(w[i - 3] ^ w[i - 8] ^ w[i - 14] ^ w[i - 16], 1))
    a, b, c, d, e = state
    for i in range(80):
        if i < 20:
            f, k = b & c | ~b & d, 0x5A827999
        elif i < 40:
            f, k = b ^ c ^ d, 0x6ED9EBA1
        elif i < 60:
            f, k = b & c | b & d | c & d, 0x8F1BBCDC
        else:
            f, k = b ^ c ^ d, 0xCA62C1D6
        a, b, c, d, e = (rotate(a, 5) + (f & MASK) + e + k + w[i]) & MASK, a, rotate(b, 30), c, d
    return [(old + new) & MASK for old, new in zip(state, (a, b, c, d, e))]


def fractional_roots(count, exponent):
    """The first 32 bits of the fractional parts of roots of the first primes."""
    primes = [n for n in range(2, 400) if all(n % p for p in range(2, n))][:count]
    result = []
    for prime in primes:
        # The root in fixed point, by integers: floor(prime ** (1 / exponent) * 2 ** 32).
        low, high = 0, 1 << 40
        while high - low > 1:
            middle = (low + high) // 2
            if middle ** exponent <= prime << 32 * exponent:
                low = middle
            else:
                high = middle
        result.append(low & MASK)
    return result


SHA256_CONSTANTS = fractional_roots(64, 3)


def compress_sha256(state, block):
    """FIPS 180-4, 6.2.2."""
    def right(value, count):
        return rotate(value, 32 - count)
    w = list(struct.unpack(">16I", block))
    for i in range(16, 64):
        s0 = right(w[i - 15], 7) ^ right(w[i - 15], 18) ^ w[i - 15] >> 3
        s1 = right(w[i - 2], 17) ^ right(w[i - 2], 19) ^ w[i - 2] >> 10
        w.append((w[i - 16] + s0 + w[i - 7] + s1) & MASK)
    a, b, c, d, e, f, g, h = state
    for i in range(64):
        t1 = h + (right(e, 6) ^ right(e, 11) ^ right(e, 25)) + (e & f ^ ~e & g) + SHA256_CONSTANTS[i] + w[i]
        t2 = (right(a, 2) ^ right(a, 13) ^ right(a, 22)) + (a & b ^ a & c ^ b & c)
        h, g, f, e, d, c, b, a = g, f, e, (d + t1) & MASK, c, b, a, (t1 + t2) & MASK
    return [(old + new) & MASK for old, new in zip(state, (a, b, c, d, e, f, g, h))]


class Hash:
    """A running hash: chaining values, number of bits, bytes of the incomplete block."""

    KINDS = {
        "md4": (compress_md4, "<", [0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476]),
        "md5": (compress_md5, "<", [0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476]),
        "sha1": (compress_sha1, ">", [0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0]),
        "sha256": (compress_sha256, ">", fractional_roots(8, 2)),
    }

    def __init__(self, name):
        self.name = name
        self.compress, self.order, self.state = self.KINDS[name]
        self.bits = 0
        self.block = b""

    def update(self, data):
        self.bits += 8 * len(data)
        data = self.block + data
        whole = len(data) // 64 * 64
        for i in range(0, whole, 64):
            self.state = self.compress(self.state, data[i:i + 64])
        self.block = data[whole:]

    def finish(self):
        """Pads and returns the digest. The number of bits stays that of the input, and the block is empty."""
        bits = self.bits
        length = struct.pack(self.order + "Q", bits)
        padding = b"\x80" + bytes((55 - len(self.block)) % 64)
        self.update(padding + length)
        self.bits = bits
        return struct.pack(self.order + "%dI" % len(self.state), *self.state)


def adler32(data):
    """RFC 1950, 8.2."""
    a, b = 1, 0
    for byte in data:
        a = (a + byte) % 65521
        b = (b + a) % 65521
    return b << 16 | a


CRC_TABLE = []
for n in range(256):
    for _ in range(8):
        n = n >> 1 ^ 0xEDB88320 if n & 1 else n >> 1
    CRC_TABLE.append(n)


def crc32(data):
    """RFC 1952, 8."""
    crc = MASK
    for byte in data:
        crc = crc >> 8 ^ CRC_TABLE[(crc ^ byte) & 0xFF]
    return crc ^ MASK


def digest(name, data):
    """The finished digest of `data`; for names joined by "-" the digests are concatenated."""
    if "-" in name:
        return b"".join(digest(part, data) for part in name.split("-"))
    if name in ("adler32", "crc32"):
        return struct.pack("<I", {"adler32": adler32, "crc32": crc32}[name](data))
    running = Hash(name)
    running.update(data)
    return running.finish()


def check():
    """Compares the models with published values and other implementations."""
    assert digest("md4", b"").hex() == "31d6cfe0d16ae931b73c59d7e0c089c0"
    assert digest("md4", b"message digest").hex() == "d9130a8164549fe818874806e1c7014b"
    assert digest("md4", b"1234567890" * 8).hex() == "e33b4ddc9c38f2199c3e7b164fcc0536"
    for length in list(range(300)) + [4096]:
        data = bytes((7 * i + i // 251) % 256 for i in range(length))
        for name in ("md5", "sha1", "sha256"):
            assert digest(name, data) == hashlib.new(name, data).digest(), (name, length)
        assert adler32(data) == zlib.adler32(data) and crc32(data) == zlib.crc32(data), length


if __name__ == "__main__":
    check()
    print("The models agree with the published values, hashlib and zlib.")
