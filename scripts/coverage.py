#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Reports lines that no test ran, except listed ones, and sides of branches that no test took.

usage: coverage.py COVERAGE.json
       coverage.py --check    only checks that each entry of tests/data/uncovered.txt names one line

Fails below 100 % of lines or 95 % of branches, and if an entry names a line that was run or does not exist.
"""
import json
import pathlib
import sys

import source_places

ROOT = pathlib.Path(__file__).resolve().parent.parent
LISTED = ROOT / "tests/data/uncovered.txt"
GOAL = 95


def list_lines(file):
    """Numbers of the lines, from 1, with code that never ran."""
    never = set()
    # Segments: line, column, count, whether there is a count, whether a region starts, whether it is a gap.
    for segment, following in zip(file["segments"], file["segments"][1:]):
        if segment[3] and segment[2] == 0 and not segment[5]:
            never.update(range(segment[0], following[0] + (following[1] > 1)))
    return never


def list_branches(file):
    """Line and both counts of each branch. All instances of a template are added up."""
    sides = {}
    for branch in file["branches"]:
        counts = sides.setdefault(tuple(branch[:4]), [0, 0])
        counts[0] += branch[4]
        counts[1] += branch[5]
    return [(line, counts) for (line, *_), counts in sides.items()]


def name_lines(name, text):
    """A unique name for each line of a file."""
    return list(source_places.number_alike(
        [f"{name}: {source_places.name_place(text, number)}: {line.strip()}" for number, line in enumerate(text)]))


def check(listed):
    files = sorted({entry.split(": ")[0] for entry in listed})
    lines = [line for name in files if (ROOT / name).exists()
             for line in name_lines(name, (ROOT / name).read_text().splitlines())]
    stale = list(source_places.find_stale(listed, lines))
    for line in stale:
        print(f"{LISTED.name}: {line}")
    return 1 if stale else 0


def report(data, listed):
    total, never, branches, one_way = 0, [], [], []
    for file in json.loads(data.read_text())["data"][0]["files"]:
        name = str(pathlib.Path(file["filename"]).relative_to(ROOT))
        text = (ROOT / name).read_text().splitlines()
        total += file["summary"]["lines"]["count"]
        places = name_lines(name, text)
        never += [places[number - 1] for number in sorted(list_lines(file))
                  if text[number - 1].strip() not in ("", "}", "{")]
        for line, counts in list_branches(file):
            branches += [count > 0 for count in counts]
            if not all(counts):
                one_way.append(f"{name}:{line}: {text[line - 1].strip()}")
    missed = [place for place in never if place not in listed]
    stale = list(source_places.find_stale(listed, never))
    share = 100 * sum(branches) / len(branches)
    for prefix, places in (("never run", missed), ("one way only", one_way), ("listed, but run or gone", stale)):
        for place in places:
            print(f"    {prefix}: {place}")
    print(f"{total} lines of the library, {len(missed)} of them never run and not listed; {share:.1f} % of {len(branches)} "
          f"branches (goals: 0, {GOAL} %)")
    return 0 if not missed and not stale and share >= GOAL else 1


def main(argument):
    listed = source_places.read_entries(LISTED)
    return check(listed) if argument == "--check" else report(pathlib.Path(argument), listed)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
