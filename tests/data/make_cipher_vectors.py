#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes ciphers.vec: ciphertexts of other implementations.

AES, Blowfish and CAST-128 come from the openssl program, and libgcrypt must agree. IDEA comes from libgcrypt
alone. Run it from this folder: python3 make_cipher_vectors.py > ciphers.vec
"""
import ctypes
import hashlib
import subprocess

# identifier, name for openssl, number in libgcrypt, key bytes, block bytes
CIPHERS = [
    ("aes256cbc", "aes-256-cbc", 9, 32, 16),
    ("aes128cbc", "aes-128-cbc", 7, 16, 16),
    ("bfcbc", "bf-cbc", 4, 16, 8),
    ("cast128cbc", "cast5-cbc", 3, 16, 8),
    ("ideacbc", None, 1, 16, 8),
]
GCRY_CIPHER_MODE_CBC = 3


def pattern(size):
    """The plaintext of a vector. The tests use the same."""
    return bytes((i * 31 + i // 256) & 0xFF for i in range(size))


def pad(data, block, padding):
    if padding == "zero":
        return data + bytes(-len(data) % block)
    count = block - len(data) % block
    return data + bytes([count]) * count


def encrypt_with_openssl(name, key, iv, data):
    command = ["openssl", "enc", "-" + name, "-e", "-nopad", "-K", key.hex(), "-iv", iv.hex(),
               "-provider", "default", "-provider", "legacy"]
    return subprocess.run(command, input=data, stdout=subprocess.PIPE, check=True).stdout


def encrypt_with_libgcrypt(number, key, iv, data):
    lib = ctypes.CDLL("libgcrypt.so.20")
    lib.gcry_check_version(None)
    handle = ctypes.c_void_p()
    out = ctypes.create_string_buffer(len(data))
    assert lib.gcry_cipher_open(ctypes.byref(handle), number, GCRY_CIPHER_MODE_CBC, 0) == 0
    assert lib.gcry_cipher_setkey(handle, key, ctypes.c_size_t(len(key))) == 0
    assert lib.gcry_cipher_setiv(handle, iv, ctypes.c_size_t(len(iv))) == 0
    assert lib.gcry_cipher_encrypt(handle, out, ctypes.c_size_t(len(data)), data, ctypes.c_size_t(len(data))) == 0
    lib.gcry_cipher_close(handle)
    return out.raw


def main():
    print("# Ciphertexts of the byte pattern (i * 31 + i / 256) mod 256. Written by make_cipher_vectors.py:")
    print("# aes, bf and cast5 by the openssl command line and by libgcrypt, idea by libgcrypt.")
    print("# Short ciphertexts stand in full, long ones as their SHA-256.")
    for identifier, name, number, key_size, block in CIPHERS:
        print(f"\n[{identifier}]")
        for padding in ("pkcs7", "zero"):
            for size in (0, 1, block - 1, block, block + 1, 4096, 1 << 20):
                seed = hashlib.sha256(f"{identifier} {padding} {size}".encode()).digest()
                key = seed[:key_size]
                iv = hashlib.sha256(seed).digest()[:block]
                data = pad(pattern(size), block, padding)
                cipher_text = encrypt_with_libgcrypt(number, key, iv, data) if data else b""
                if name and data:
                    assert cipher_text == encrypt_with_openssl(name, key, iv, data)
                print(f"padding = {padding}\nsize = {size}\nkey = {key.hex()}\niv = {iv.hex()}")
                if size <= block + 1:
                    print(f"ciphertext = {cipher_text.hex()}\n")
                else:
                    print(f"ciphertext-sha256 = {hashlib.sha256(cipher_text).hexdigest()}\n")


main()
