#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compares docs/errors.md with the messages in the sources: both must contain the same.

usage: check_errors.py ROOT

A message is a text of several words that starts with a capital letter, or that is an argument of a function raise...(),
of the constructor of an error, or of addItem(), which refuses null with it.
"""
import pathlib
import re
import sys

TOKEN = re.compile(r'//[^\n]*|/\*.*?\*/|^[ ]*#[^\n]*|(?:L|u8)?"((?:[^"\\\n]|\\.)*)"|\'(?:[^\'\\]|\\.)+\'|([;{}])|.', re.M | re.S)
RAISING = re.compile(r"\b(?:raise\w*|addItem|C\w*Error)\(")
# These include their arguments in another message.
COMPOSING = re.compile(r"\b(?:CFileError|COpenSSLVersionMismatchError|raiseFileError|raiseLastError|raiseInvalidLine)\(")
LOGGING = re.compile(r"\b(?:logError|writeLine|static_assert)\(|\bline \+=|\bString line =")


def list_statements(text):
    """Each statement: its code without texts, and its texts."""
    code, texts = "", []
    for match in TOKEN.finditer(text):
        if match[2]:
            yield code, texts
            code, texts = "", []
        elif match[1] is not None:
            texts.append(match[1])
        elif not match[0].startswith(("//", "/*")) and not match[0].lstrip(" ").startswith("#"):
            code += match[0]
    yield code, texts


def list_messages(text):
    for code, texts in list_statements(text):
        if LOGGING.search(code):
            continue
        is_raised = RAISING.search(code) and not COMPOSING.search(code)
        yield from (text for text in texts if re.match(r"\w[\w:]* " if is_raised else r"[A-Z][\w:]* ", text))


def main(root):
    page = (root / "docs/errors.md").read_text()
    documented = set(re.findall(r'^\|[^|]*\| "([^|"]*)" \|', page, re.M))
    sources = [path for folder in ("src", "include", "ul") for path in root.glob(f"{folder}/**/*")
               if path.suffix in (".cpp", ".h")]
    raised = {message for path in sources for message in list_messages(path.read_text())}

    def stands_for(row, message):
        """A value is <name> on the page and a text between two literals in the sources."""
        beginning, *value = row.split("<", 1)
        return message.startswith(beginning) if value else message == row

    unknown = sorted(row for row in documented if not any(stands_for(row, message) for message in raised))
    missing = sorted(message for message in raised if not any(stands_for(row, message) for row in documented))
    for message in unknown:
        print(f"docs/errors.md lists an error that nothing raises: {message}")
    for message in missing:
        print(f"docs/errors.md does not list: {message}")
    print(f"{len(documented)} messages documented, {len(raised)} found in the sources")
    return 1 if unknown or missing or not raised else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
