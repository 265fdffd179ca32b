#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Reports lines that no test ran, sides of branches that no test took, and conditions that never decided alone.

usage: coverage.py COVERAGE.json...
       coverage.py --shares COVERAGE.json...    only prints how much is covered
       coverage.py --check                      only checks that each entry of tests/data/uncovered.txt names one line

Each file is about one binary, because llvm-cov mixes them up: a function that a binary contains, but does not use, may
hide the counts of the others. tests/data/uncovered.txt lists exceptions. Fails if one is missing there, and if an entry
names a place that was covered or does not exist.
"""
import json
import pathlib
import re
import sys

import source_places

ROOT = pathlib.Path(__file__).resolve().parent.parent
LISTED = ROOT / "tests/data/uncovered.txt"
# What an entry adds to the name of its line if the line ran.
PART = re.compile(r': "(?:(?!: ").)*" (?:is never (?:true|false)|never decides)$')


def list_lines(file):
    """Numbers of the lines, from 1, with code, and of those of which a part never ran."""
    code, never = set(), set()
    # Segments: line, column, count, whether there is a count, whether a region starts, whether it is a gap.
    for segment, following in zip(file["segments"], file["segments"][1:]):
        if segment[3] and not segment[5]:
            lines = range(segment[0], following[0] + (following[1] > 1))
            code.update(lines)
            if segment[2] == 0:
                never.update(lines)
    return code, never


def add_up(regions, get_counts):
    """Sums the counts of each region. A template has the same regions in each of its instances."""
    totals = {}
    for region in regions:
        counts = [int(count) for count in get_counts(region)]
        totals[tuple(region[:4])] = [a + b for a, b in zip(totals.get(tuple(region[:4]), [0] * len(counts)), counts)]
    return totals


def is_of_macro(region):
    """Whether the code is in a macro, which is an assertion here: it never fails."""
    return region[:2] == region[2:]


def list_one_way(branches):
    """Region and side of each branch that was only taken one way."""
    return {region: "true" if counts[0] == 0 else "false" for region, counts in branches.items()
            if sum(counts) > 0 and 0 in counts and not is_of_macro(region)}


def is_within(region, other):
    return other[:2] <= region[:2] and region[2:] <= other[2:]


def list_undecided(decisions, branches):
    """The conditions that never decided alone, except for those that were only seen one way."""
    for decision, counts in decisions.items():
        if is_of_macro(decision):
            continue
        within = [region for region in branches if is_within(region, decision) and region != decision]
        # A condition may contain a choice of its own, for example in an argument of a call.
        conditions = sorted(region for region in within
                            if not any(is_within(region, other) for other in within if other != region))
        if len(conditions) != len(counts):
            raise SystemExit(f"line {decision[0]}: {len(counts)} conditions, but {len(conditions)} branches")
        yield from (region for region, count in zip(conditions, counts) if not count and all(branches[region]))


def name_lines(name, text):
    """A unique name for each line of a file."""
    return list(source_places.number_alike(
        [f"{name}: {source_places.name_place(text, number)}: {line.strip()}" for number, line in enumerate(text)]))


def check(listed):
    files = sorted({entry.split(": ")[0] for entry in listed})
    lines = [line for name in files if (ROOT / name).exists()
             for line in name_lines(name, (ROOT / name).read_text().splitlines())]
    stale = list(source_places.find_stale([PART.sub("", entry) for entry in listed], lines))
    for line in stale:
        print(f"{LISTED.name}: {line}")
    return 1 if stale else 0


def list_uncovered(name, reports, counted):
    """The places of a file that the tests do not cover, by the reports of all binaries. Adds the numbers of its covered
    parts and of all parts to `counted`, by their kind."""
    text = (ROOT / name).read_text().splitlines()
    places = name_lines(name, text)
    lines = [list_lines(report) for report in reports]
    code, ran = (set().union(*sets) for sets in zip(*((code, code - never) for code, never in lines)))
    branches = add_up((branch for report in reports for branch in report["branches"]), lambda branch: branch[4:6])
    decisions = add_up((record for report in reports for record in report["mcdc_records"]), lambda record: record[-1])
    for kind, parts in (("lines", [number in ran for number in code]), ("sides of branches", sum(branches.values(), [])),
                        ("conditions", sum(decisions.values(), []))):
        covered, count = counted.get(kind, (0, 0))
        counted[kind] = covered + sum(map(bool, parts)), count + len(parts)

    def name_part(region, fault):
        line, column, last_line, last_column = region
        code = text[line - 1][column - 1:last_column - 1 if line == last_line else None]
        return f'{places[line - 1]}: "{code}" {fault}'

    yield from (places[number - 1] for number in sorted(code - ran)
                if text[number - 1].strip() not in ("", "}", "{"))
    yield from (name_part(region, f"is never {side}") for region, side in list_one_way(branches).items())
    yield from (name_part(region, "never decides") for region in list_undecided(decisions, branches))


def read(paths):
    """The numbers of covered parts and of all parts, by their kind, and the places that are not covered."""
    counted, uncovered, reports = {}, [], {}
    for path in paths:
        for file in json.loads(pathlib.Path(path).read_text())["data"][0]["files"]:
            reports.setdefault(str(pathlib.Path(file["filename"]).relative_to(ROOT)), []).append(file)
    for name, about_file in sorted(reports.items()):
        uncovered += list_uncovered(name, about_file, counted)
    if not counted:
        raise SystemExit("the reports contain no code")
    return counted, uncovered


def print_shares(paths):
    counted, _ = read(paths)
    print(", ".join(f"{covered / count:.1%} of {kind}" for kind, (covered, count) in counted.items()))
    return 0


def report(paths, listed):
    counted, uncovered = read(paths)
    missed = [place for place in uncovered if place not in listed]
    stale = list(source_places.find_stale(listed, uncovered))
    for prefix, places in (("not covered", missed), ("listed, but covered or gone", stale)):
        for place in places:
            print(f"    {prefix}: {place}")
    parts = ", ".join(f"{count} {kind}" for kind, (_, count) in counted.items())
    print(f"{parts}; {len(uncovered) - len(missed)} not covered for listed reasons, {len(missed)} for none (goal: 0)")
    return 0 if not missed and not stale else 1


def main(*arguments):
    if arguments[:1] == ("--shares",):
        return print_shares(arguments[1:])
    listed = source_places.read_entries(LISTED)
    return check(listed) if arguments == ("--check",) else report(arguments, listed)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
