#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the bill of materials of a build and checks that it is complete and true.

usage: check_sbom.py MAKE_SBOM BUILD_FOLDER FILE
"""
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys

make_sbom, build, file = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
subprocess.run([make_sbom, build, file], check=True, env={**os.environ, "SOURCE_DATE_EPOCH": "1700000000"})
document = json.loads(file.read_text())

assert document["spdxVersion"] == "SPDX-2.3" and document["dataLicense"] == "CC0-1.0"
assert document["creationInfo"]["created"] == "2023-11-14T22:13:20Z", "the date is the one that was given"
identifiers = [item["SPDXID"] for item in [document, *document["packages"], *document["files"]]]
assert len(set(identifiers)) == len(identifiers)
for identifier in identifiers:
    assert re.fullmatch(r"SPDXRef-[A-Za-z0-9.-]+", identifier), identifier
for relation in document["relationships"]:
    assert {relation["spdxElementId"], relation["relatedSpdxElement"]} <= set(identifiers), relation

versions = {package["name"]: package["versionInfo"] for package in document["packages"]}
assert set(versions) == {"sarn", "libcrypto", "zlib", "utf8cpp", "CLI11", "compiler"} and all(versions.values()), versions
for entry in document["files"]:
    name = pathlib.Path(entry["fileName"]).name
    path = next(path for folder in ("ul", "src", "tools", "bin") if (path := build / folder / name).exists())
    for checksum in entry["checksums"]:
        digest = hashlib.new(checksum["algorithm"].lower(), path.read_bytes()).hexdigest()
        assert digest == checksum["checksumValue"], path
assert len(document["files"]) == 3
loaded = document["creationInfo"]["comment"]
assert re.search(r"libcrypto", loaded) and re.search(r"libz\.so|zlib1\.dll", loaded), loaded
