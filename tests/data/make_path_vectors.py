#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes paths.vec: texts that need no working directory, and their normal forms by Python's ntpath.

Run it from this folder: python3 make_path_vectors.py > paths.vec
"""
import ntpath
import random

COMPONENTS = ["a", "b", "AB", "a b", ".a", "..b", "a.b", ".", "..", "a.", "b ", "...", " ", "NUL", "com1.txt", "a:s", "é", "😀"]
ROOTS = ["C:\\", "c:/", "Z:\\", "\\\\server\\share\\", "//server/share/", "\\\\server\\share", "\\\\?\\C:\\",
         "\\\\?\\UNC\\server\\share\\"]
SEPARATORS = ["\\", "/", "\\\\", "//", "\\/"]

random.seed(6)
print("# Paths as ntpath.normpath of Python 3.11 writes them. Written by make_path_vectors.py.")
print("\n[ntpath]")
seen = set()
while len(seen) < 800:
    text = random.choice(ROOTS)
    if not text.endswith(("\\", "/")):
        text += random.choice(SEPARATORS)
    for _ in range(random.randrange(6)):
        text += random.choice(COMPONENTS) + random.choice(SEPARATORS)
    if random.randrange(3):
        text = text.rstrip("\\/") + "\\" + random.choice(COMPONENTS)
    if text in seen:
        continue
    seen.add(text)
    print(f"text = {text.encode().hex()}\nnormalized = {ntpath.normpath(text).encode().hex()}\n")
