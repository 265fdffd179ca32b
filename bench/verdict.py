#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Measures what the library adds to the raw calls that it makes, and compares that with the goals.

usage: bench/verdict.py PROGRAM FOLDER full|quick [ROW_PATTERN]
       bench/verdict.py --from PAIRS_CSV [ROW_PATTERN]     reads the results of an earlier run

For each row it fits the line "our time = fixed cost + slope * raw time" through all sizes. A busy machine changes the
times, so nothing is derived from a single one:
- Raw and our calls run in turn, in batches of some 150 us, and only the median of the ratios of neighbours counts.
- A yardstick, which takes YARDSTICK ns on the machine for which the goals were set, runs beside every pair. Fixed costs
  are given in nanoseconds of that machine: a slower or busier one changes both alike.
- A round is a new process, with its own layout of memory; several run at a time. Each round gives one fit; the result
  is the median of the rounds, and its 95 % interval follows from their order. No distribution of the noise is assumed.
A goal is met or missed if even an interval of 99.9 % is on one side of it, because some hundred goals are looked at,
each several times. Undecided rows are measured further up to a limit, and are missed then. Writes pairs.csv and table.md
to FOLDER.
"""
import collections
import concurrent.futures
import math
import os
import pathlib
import re
import statistics
import subprocess
import sys
import time

YARDSTICK = 167
# Rounds between two looks at the results, and seconds at most.
SCOPES = {"full": (24, 480), "quick": (24, 40), "threads": (12, 60)}

# Name, pattern of its rows, largest fixed cost in ns, largest slope.
GOALS = (
    # It sets up a key for 17 us, of which 25 ns are less than can be measured.
    ("Blowfish, given IV", r"bfcbc (en|de)crypt(WithoutPadding)?", None, 1.005),
    ("other ciphers, given IV", r"\w+cbc (en|de)crypt(WithoutPadding)?", 25, 1.005),
    ("ciphers, random IV, 16 bytes", r"\w+ random IV", None, 0.35),
    ("digests, update", r"(md\d|sha\d+) update", 3, 1.003),
    ("digests, create, update, finish", r"(md\d|sha\d+) create.*", 60, 1.003),
    ("combination of two, update", r"md4-sha1 update", 20, 1.01),
    ("combination of three, update", r"md4-sha1-adler32 update", 30, 1.01),
    ("checksums, create, update, finish", r"(adler|crc)32 create.*", 15, 1.003),
    ("HMAC", "HMAC", 20, 1.003),
    ("PBKDF2", "PBKDF2", 40, 1.003),
    ("Base64 to wide text", "Base64 encode", 150, 1.15),
    ("Base64 to wide text on new pages (raw: and writing as many)", "Base64 encode, new pages", None, 1.15),
    ("Base64 from wide text", "Base64 decode", 250, 1.25),
    ("signatures, with the key read each time", "[RD]SA (sign|verify)", None, 1.01),
    ("signatures of files", "RSA (sign|verify) a file", None, 1.01),
    ("look-ups by identifier", "look-up of .*", 25, None),
    ("cached key", "cached key", 25, None),
    ("two threads (raw: two threads)", ".*, two threads", None, 1 / 0.98),
    ("streams in pieces of 1 MiB (raw: one call)", ".* stream .*, 1 MiB.*", None, 1.02),
    ("streams in smaller pieces (raw: one call)", ".* stream .*", None, None),
)


def find_goal(row):
    return next(goal for goal in GOALS if re.fullmatch(goal[1], row))


class Rounds:
    """The medians of the pairs of each row, point and round."""

    def __init__(self):
        self.pairs = collections.defaultdict(list)  # by row, point, round
        self.points = collections.defaultdict(dict)  # by row: by point: by round: raw time, ratio

    def add(self, line, number):
        """Adds a pair of a round and returns the name of its row."""
        row, point, *times = line.strip().split(";")
        self.pairs[row, float(point), number].append([float(text) for text in times])
        return row

    def finish_round(self):
        for (row, point, number), pairs in self.pairs.items():
            speed = YARDSTICK / statistics.median(pair[2] for pair in pairs)
            raw = statistics.median(pair[0] for pair in pairs) * speed
            ratio = statistics.median(pair[1] / pair[0] for pair in pairs)
            self.points[row].setdefault(point, {})[number] = (raw, ratio)
        self.pairs.clear()

    def fit(self, row):
        """The fixed costs and slopes of a row, one of each per round."""
        points = list(self.points[row].values())
        numbers = set.intersection(*(set(point) for point in points))
        if list(self.points[row]) == [0]:
            return [raw * (ratio - 1) for raw, ratio in points[0].values()], []
        if len(points) == 1:
            return [], [ratio for _, ratio in points[0].values()]
        # Points count by the inverse of their variance: long calls are interrupted more often.
        weights = []
        for point in points:
            ratios = [point[number][1] for number in numbers]
            spread = statistics.median(abs(ratio - statistics.median(ratios)) for ratio in ratios)
            weights.append(1 / max(spread, 2e-4) ** 2)
        fits = [fit_line([(*point[number], weight) for point, weight in zip(points, weights)]) for number in numbers]
        return [fixed for fixed, _ in fits], [slope for _, slope in fits]


def fit_line(points):
    """The line through (raw time, ratio) that has the smallest weighted relative errors."""
    # ratio = fixed / raw + slope: a line in 1 / raw.
    total = sum(weight for *_, weight in points)
    mean_x = sum(weight / raw for raw, _, weight in points) / total
    mean_y = sum(weight * ratio for _, ratio, weight in points) / total
    fixed = (sum(weight * (1 / raw - mean_x) * (ratio - mean_y) for raw, ratio, weight in points) /
             sum(weight * (1 / raw - mean_x) ** 2 for raw, _, weight in points))
    return fixed, mean_y - fixed * mean_x


def find_interval(values, confidence=0.95):
    """The interval of the median, between two of the sorted values."""
    values, count, skipped, tail = sorted(values), len(values), 0, 0.0
    while True:
        tail += math.comb(count, skipped) / 2 ** count
        if tail > (1 - confidence) / 2:
            break
        skipped += 1
    if skipped == 0:
        return -math.inf, math.inf
    return values[skipped - 1], values[-skipped]


class Result:
    """One number of a row, its interval and its goal."""

    def __init__(self, values, goal):
        self.median = statistics.median(values)
        self.low, self.high = find_interval(values)
        self.goal = goal
        low, high = find_interval(values, 0.999)
        self.verdict = "" if goal is None else "met" if high <= goal else "MISSED" if low > goal else "UNDECIDED"

    def describe(self, digits):
        limit = "" if self.goal is None else f" <= {self.goal:.{digits}f}"
        return f"{self.median:.{digits}f} [{self.low:.{digits}f}, {self.high:.{digits}f}]{limit} {self.verdict}"


def judge(rounds, row):
    """The fixed cost and the slope of a row; None where it has none."""
    _, _, *goals = find_goal(row)
    return [Result(values, goal) if values else None for values, goal in zip(rounds.fit(row), goals)]


def measure(rounds, log, program, scope, pattern):
    """Runs rounds, as many at a time as there are processors, until every goal is decided or the time is over."""
    step, seconds = SCOPES[scope]
    jobs = 1 if scope == "threads" else os.cpu_count()
    start, last, number = time.monotonic(), 0, 0
    while time.monotonic() - start + last < seconds:
        began, measured = time.monotonic(), set()
        command = [program, scope, pattern]
        with concurrent.futures.ThreadPoolExecutor() as pool:
            outputs = list(pool.map(lambda _: subprocess.check_output(command, text=True), range(jobs)))
        for output in outputs:
            for line in output.splitlines():
                measured.add(rounds.add(line, number))
                log.write(f"{line};{number}\n")
            number += 1
            print(".", end="", file=sys.stderr, flush=True)
        rounds.finish_round()
        last = time.monotonic() - began
        # Few looks: each is another chance to be wrong.
        if number % step < jobs:
            undecided = [row for row in measured if any(result and result.verdict == "UNDECIDED"
                                                        for result in judge(rounds, row))]
            if not undecided:
                break
            pattern = "^(" + "|".join(undecided) + ")$"


def read(path, pattern):
    rounds = Rounds()
    for line in path.read_text().splitlines()[1:]:
        line, number = line.rsplit(";", 1)
        if re.search(pattern, line.split(";")[0]):
            rounds.add(line, int(number))
    rounds.finish_round()
    return rounds


def report(rounds):
    """Prints each row. Returns the lines of the page's table and the verdicts."""
    groups = collections.defaultdict(list)
    print(f"{'operation':44} {'raw ns':>9}  {'fixed cost in ns':38}  slope")
    for row, points in rounds.points.items():
        fixed, slope = judge(rounds, row)
        groups[find_goal(row)].append((fixed, slope))
        raw = statistics.median(value[0] for value in points[min(points)].values())
        print(f"{row:44} {raw:9.1f}  {fixed.describe(1) if fixed else '':38}  {slope.describe(4) if slope else ''}")
    table = ["| operation | rows | fixed cost | goal | slope | goal | goals met |", "|---|---|---|---|---|---|---|"]
    for (name, _, *goals), results in groups.items():
        cells = []
        for index, digits in enumerate((0, 3)):
            is_shown = index == 1 or goals[0] is not None
            medians = [result[index].median for result in results if result[index] and is_shown]
            low, high = (f"{end(medians):.{digits}f}" for end in (min, max)) if medians else ("", "")
            unit, sign = (" ns", "+") if index == 0 and medians else ("", "")
            cells += [(low if low == high else f"{low} to {high}") + unit,
                      "" if goals[index] is None else f"{sign}{goals[index]:.{digits}f}{unit}"]
        met = [result.verdict == "met" for both in results for result in both if result and result.verdict]
        table.append(f"| {name} | {len(results)} | {' | '.join(cells)} | {sum(met)} of {len(met)} |")
    return table, [result.verdict for both in groups.values() for pair in both for result in pair
                   if result and result.verdict]


def main(words):
    if words[:1] == ["--from"] and len(words) in (2, 3):
        rounds = read(pathlib.Path(words[1]), words[2] if len(words) == 3 else "")
        folder = None
    elif len(words) in (3, 4) and words[2] in ("full", "quick"):
        folder, rounds = pathlib.Path(words[1]), Rounds()
        with open(folder / "pairs.csv", "w") as log:
            log.write("row;point;raw;ours;yardstick;round\n")
            for scope in ("full", "threads") if words[2] == "full" else ("quick",):
                measure(rounds, log, words[0], scope, words[3] if len(words) == 4 else "")
        print(file=sys.stderr)
    else:
        sys.exit(__doc__)
    table, verdicts = report(rounds)
    if folder:
        (folder / "table.md").write_text("\n".join(table) + "\n")
    print(f"goals met: {verdicts.count('met')} of {len(verdicts)}; missed: {verdicts.count('MISSED')}; "
          f"undecided, which counts as missed: {verdicts.count('UNDECIDED')}")


if __name__ == "__main__":
    main(sys.argv[1:])
