#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compares the tables of docs/ciphers.md and docs/digests.md with the sources of the registries, and the sizes of ciphers
with those that the tests expect. Each row must be in both.

usage: check_registries.py ROOT
"""
import pathlib
import re
import sys


def read_page(path):
    """The rows of the table of identifiers: identifier and class without their backticks, then the other cells."""
    rows = [[cell.strip(" `") for cell in line.strip("|").split("|")]
            for line in path.read_text().splitlines() if re.match(r"\| `[\w-]+` \| `C(?:Cipher|DigestType)_", line)]
    return {row[0]: row[1:] for row in rows}


def read_identifiers(folder):
    """The identifier of each class that returns a literal one."""
    sources = "".join(path.read_text() for path in sorted(folder.glob("*.cpp")))
    return dict(re.findall(r'(\w+)::getID\(\) \{\s*return "([^"]+)";', sources))


def read_ciphers(root):
    """Class and "yes" or "no" for "registered" of each identifier."""
    table = (root / "src/cipher/cipher_table.cpp").read_text()
    rows = re.findall(r'^ *\{"([^"]+)", "[^"]+", \w+, \w+, (true|false), create<(\w+)>\}', table, re.M)
    ciphers = {name: (type_, "yes" if is_offered == "true" else "no") for name, is_offered, type_ in rows}
    identifiers = read_identifiers(root / "src/cipher")
    manager = (root / "src/cipher/cipher_manager.cpp").read_text()
    for type_ in re.findall(r"addCipher\(ul::make<(\w+)>", manager):
        ciphers[identifiers[type_]] = (type_, "yes")
    return ciphers


def read_digests(root):
    """Class of each identifier."""
    identifiers = read_identifiers(root / "src/digest")
    header = (root / "include/sarn/digest.h").read_text()
    for type_, first, second in re.findall(r"class SARN_EXPORT (\w+) : public TDigestTypeCombiner<(\w+), (\w+)>", header):
        identifiers[type_] = f"{identifiers[first]}-{identifiers[second]}"
    manager = (root / "src/digest/digest_manager.cpp").read_text()
    return {identifiers[type_]: (type_,) for type_ in re.findall(r"create<(\w+)>,", manager)}


def compare(page, documented, sources):
    """Yields the differences between two dictionaries of rows."""
    for name in sorted({*documented, *sources}):
        if documented.get(name) != sources.get(name):
            yield f"{page}: {name} is {documented.get(name, 'missing')}, in the sources {sources.get(name, 'missing')}"


def main(root):
    ciphers, digests = read_page(root / "docs/ciphers.md"), read_page(root / "docs/digests.md")
    tested = re.findall(r'\{"(\w+)", (\d+), (\d+), (\d+)\}', (root / "tests/support/cipher_test_data.h").read_text())
    sizes = {name: (key, iv, block) for name, key, iv, block in tested}
    problems = [
        *compare("docs/ciphers.md", {name: (row[0], row[-1]) for name, row in ciphers.items()}, read_ciphers(root)),
        *compare("docs/ciphers.md", {name: tuple(ciphers[name][2:5]) for name in sizes if name in ciphers}, sizes),
        *compare("docs/digests.md", {name: (row[0],) for name, row in digests.items()}, read_digests(root))]
    print(*problems, f"{len(ciphers)} ciphers, {len(digests)} digests, {len(sizes)} sizes of ciphers", sep="\n")
    return 0 if ciphers and digests and sizes and not problems else 1


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
