#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes signatures.vec: signatures with SHA-1 by the openssl program and the keys of keys/.

Run it from this folder: python3 make_signature_vectors.py > signatures.vec
"""
import subprocess

KEYS = ("rsa1024", "rsa2048", "rsa3072", "rsa4096", "dsa1024", "dsa2048")


def pattern(size):
    """The signed bytes. The tests use the same."""
    return bytes((i * 31 + i // 256) & 0xFF for i in range(size))


print("# Signatures over the byte pattern (i * 31 + i / 256) mod 256 by `openssl dgst -sha1 -sign`.")
print("# Written by make_signature_vectors.py.")
for key in KEYS:
    print(f"\n[{key}]")
    for size in (0, 1, 8191, 8192, 8193, 16384, 100000):
        command = ["openssl", "dgst", "-sha1", "-sign", f"keys/{key}_for_tests_only.pem"]
        signature = subprocess.run(command, input=pattern(size), capture_output=True, check=True).stdout
        print(f"size = {size}\nsignature = {signature.hex()}\n")
