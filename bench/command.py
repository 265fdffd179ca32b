#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compares the command sarn with openssl and sha256sum: the time for 1 GiB in memory, and the start.

usage: command.py SARN FOLDER

Runs them in turn and takes the fastest run of each. Exits with status 1 if a goal is missed.
"""
import os
import pathlib
import subprocess
import sys
import time

SIZE, RUNS, STARTS = 1 << 30, 5, 40
MOST_TIME, MOST_START = 1.05, 0.015  # ratio, seconds


def run(words):
    """Elapsed seconds, and seconds of the processor."""
    with open(os.devnull, "wb") as nothing:
        start = time.perf_counter()
        process = subprocess.Popen(words, stdout=nothing)
        _, status, usage = os.wait4(process.pid, 0)
        elapsed = time.perf_counter() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise SystemExit(f"{words} failed")
    return elapsed, usage.ru_utime + usage.ru_stime


def main(sarn, folder):
    file = pathlib.Path(folder, "1GiB")
    with open(file, "wb") as zeros:
        for _ in range(SIZE >> 20):
            zeros.write(bytes(1 << 20))
    commands = {"sarn digest sha256": [sarn, "digest", "sha256"], "openssl dgst -sha256": ["openssl", "dgst", "-sha256"],
                "sha256sum": ["sha256sum"]}
    try:
        results = {name: [] for name in commands}
        for _ in range(RUNS):
            for name, words in commands.items():
                results[name].append(run([*words, file]))
        starts = {name: min(run([*words, os.devnull])[0] for _ in range(STARTS))
                  for name, words in commands.items()}
    finally:
        file.unlink()
    print(f"{'':24}{'1 GiB':>10}{'processor':>12}{'start':>10}")
    best = {name: [min(column) for column in zip(*runs)] for name, runs in results.items()}
    for name, (elapsed, used) in best.items():
        print(f"{name:24}{elapsed:>8.2f} s{used:>10.2f} s{starts[name] * 1e3:>7.1f} ms")
    (_, ours), (_, theirs) = best["sarn digest sha256"], best["openssl dgst -sha256"]
    start = starts["sarn digest sha256"]
    met = [ours <= MOST_TIME * theirs, start <= MOST_START]
    print(f"{ours / theirs:.2f} of openssl's processor time, start {start * 1e3:.1f} ms; goals met: {sum(met)} of {len(met)}")
    return 0 if all(met) else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
