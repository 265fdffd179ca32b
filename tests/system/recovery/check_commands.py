#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs what a page shows, in its order, and compares the output with the one that the page shows.

usage: check_commands.py PAGE FOLDER FILE...

The commands run in FOLDER, on copies of the files. In a block "console" a line that starts with "$ " is a command, and
the lines after it are its output, with the status in brackets if it fails; a block "pycon" is a session of Python,
which keeps its names from block to block. There must not be a block of another kind, which nothing would check.
"""
import doctest
import os
import pathlib
import re
import shutil
import subprocess
import sys

BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.M | re.S)


def check_console(text):
    """Runs the commands of a block and yields what is wrong."""
    for example in re.split(r"^\$ ", text, flags=re.M)[1:]:
        command, expected = re.match(r"((?:[^\n]*\\\n)*[^\n]*\n)(.*)", example, re.S).groups()
        done = subprocess.run(["sh", "-c", command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, check=False, start_new_session=True)
        output = done.stdout.decode(errors="replace") + f"[{done.returncode}]\n" * (done.returncode != 0)
        if output.rstrip("\n") != expected.rstrip("\n"):
            yield f"{command}expected:\n{expected}got:\n{output}"


def check_session(text, names, line):
    """Runs the statements of a block with these names, to which it adds its own, and yields what is wrong."""
    test = doctest.DocTestParser().get_doctest(text, names, "page", "page", line)
    problems = []
    doctest.DocTestRunner(verbose=False).run(test, out=problems.append, clear_globs=False)
    names.update(test.globs)
    yield from problems


def check(page):
    """Returns the number of blocks, and what is wrong with them."""
    names, problems, blocks = {}, [], list(BLOCK.finditer(page))
    for block in blocks:
        kind, text = block.groups()
        line = page.count("\n", 0, block.start()) + 1
        if kind == "console":
            problems += (f"in line {line}: {problem}" for problem in check_console(text))
        elif kind == "pycon":
            problems += check_session(text, names, line)
        else:
            problems.append(f"in line {line}: a block of the kind '{kind}'")
    return len(blocks), problems


def main(page, folder, *files):
    text = pathlib.Path(page).read_text(encoding="utf-8")
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    for file in files:
        shutil.copy(file, folder)
    os.chdir(folder)
    count, problems = check(text)
    print(*problems, f"{page}: {count} blocks, {len(problems)} problems", sep="\n")
    return 1 if problems or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
