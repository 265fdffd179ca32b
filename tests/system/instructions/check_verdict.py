# SPDX-License-Identifier: Apache-2.0
"""Checks that bench/verdict.py finds a known cost in the times of a very busy machine: check_verdict.py PROJECT_FOLDER"""
import random
import sys

sys.path.insert(0, sys.argv[1] + "/bench")
import verdict  # noqa: E402 # from the folder that the argument names


def measure(fixed, slope, rounds):
    """The times of a wrapper that adds `fixed` ns and multiplies by `slope`."""
    noise, result = random.Random(1), verdict.Rounds()
    for number in range(rounds):
        layout = noise.gauss(0, 1.5)  # of memory, in ns: each process has another
        for size in (16, 256, 4096, 65536):
            raw = 150 + size
            for _ in range(101):
                phase = noise.choice((1, 1, 1.7, 2.4))  # others use the same processor
                times = [raw * phase, (fixed + layout + slope * raw) * phase, verdict.YARDSTICK * phase]
                # A third of the batches is interrupted.
                times = [time * noise.choice((1, 1, 1.05 + noise.expovariate(2))) * noise.gauss(1, 0.01) for time in times]
                result.add(f"aes256cbc encrypt;{size};{times[0]};{times[1]};{times[2]}", number)
        result.finish_round()
    return verdict.judge(result, "aes256cbc encrypt")


def expect(fixed, slope, verdicts, rounds=24):
    results = measure(fixed, slope, rounds)
    if [result.verdict for result in results] != verdicts:
        sys.exit(f"{fixed} ns and {slope}: expected {verdicts}, got {[result.describe(4) for result in results]}")


# The goals are 25 ns and 1.005.
expect(20, 1, ["met", "met"])
expect(30, 1, ["MISSED", "met"])
expect(20, 1.01, ["met", "MISSED"])
expect(25, 1.005, ["UNDECIDED", "UNDECIDED"])
# Ten rounds are too few for any interval of 99.9 %.
expect(10, 1, ["UNDECIDED", "UNDECIDED"], rounds=10)
