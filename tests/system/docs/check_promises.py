#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks that each promise of SECURITY.md names a test or a file that shows it, and that all of these exist.

usage: check_promises.py ROOT [PAGE]
"""
import pathlib
import re
import sys

LEAST = 20


def read_rows(page):
    """The cells of each row of the tables whose last column is "shown by"."""
    is_shown = False
    for line in page.splitlines():
        if not line.startswith("|"):
            is_shown = False
        elif line.endswith("| shown by |"):
            is_shown = True
        elif is_shown and not line.startswith("|---"):
            yield [cell.strip() for cell in line.strip("|").split("|")]


def find_problems(root, rows):
    sources = "".join(path.read_text(encoding="utf-8") for path in sorted(root.glob("tests/**/*_test.cpp")))
    tests = {".".join(names) for names in re.findall(r"^(?:TYPED_)?TEST(?:_[FP])?\((\w+),\s*(\w+)\)", sources, re.M)}
    for row in rows:
        names = re.findall(r"`([^`]+)`", row[-1])
        if not names:
            yield f"no test shows: {row[-2]}"
        for name in names:
            if not (root / name).is_file() if "/" in name else name not in tests:
                yield f"there is no {name}"


def main(root, page="SECURITY.md"):
    root = pathlib.Path(root)
    rows = list(read_rows((root / page).read_text(encoding="utf-8")))
    problems = list(find_problems(root, rows))
    if len(rows) < LEAST:
        problems.append(f"fewer than {LEAST} promises")
    print(*problems, f"{len(rows)} promises, {len(problems)} problems", sep="\n")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
