#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compares docs/errors.md with the messages in the sources: each must stand in the other.

usage: check_errors.py ROOT
"""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
page = (root / "docs/errors.md").read_text()
# A value in a message is <name> there and a text between two literals here; the beginning decides.
documented = {re.split("'?<", message)[0] for message in re.findall(r'^\|[^|]*\| "([^|"]*)" \|', page, re.M)}

RAISING = re.compile(r"(?:raiseError|raiseInvalidArg|raiseDigestError|mark\.raise|checkTotal|loadChecksumState|CBadStateError|"
                     r"raiseInvalidLine|update<[^>]*>|CError|raiseAt)\(([^;{}]*?)[;{]|constexpr char \w+\[\] = (\"[^;]*);")
MESSAGE = re.compile(r'"((?:[A-Z]|invalid|input|key|IV|data|text|cipher|type)[^"\\]* [^"\\]*?\'?)"')
raised = set()
texts = ""
for source in sorted([*root.glob("src/**/*.cpp"), *root.glob("ul/src/**/*.cpp"), *root.glob("src/**/*.h"),
                      *root.glob("include/**/*.h")]):
    text = source.read_text()
    texts += text
    for arguments, constant in RAISING.findall(text):
        raised.update(MESSAGE.findall(arguments or constant))
# "Cannot read file" and so on: one row stands for all.
raised = {message.rstrip(" '") for message in raised}
documented = {message.rstrip(" '") for message in documented}

unknown = sorted(message for message in documented if f'"{message}' not in texts)
missing = sorted(message for message in raised if not any(message.startswith(known) for known in documented))
for message in unknown:
    print(f"docs/errors.md lists an error that nothing raises: {message}")
for message in missing:
    print(f"docs/errors.md does not list: {message}")
print(f"{len(documented)} messages documented, {len(raised)} found in the sources")
sys.exit(1 if unknown or missing or not raised else 0)
