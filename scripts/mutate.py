#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Changes the sources in one place at a time and checks whether the tests detect it.

usage: scripts/mutate.py COUNT WORK_FOLDER [--seed SEED] [--critical] [--only PREFIX] [--jobs JOBS]
                         [--again SURVIVORS] [--quick] [--continue] [--list]
       scripts/mutate.py --check    only checks that each entry of tests/data/kept_mutants.txt names one mutant

Tries COUNT mutants, chosen at random, and with --critical also all of critical code. Prints the seed. Writes results.txt
and survivors.txt to WORK_FOLDER, and a file with the seed while there is something to continue. Fails if fewer than 97 %
of the random ones are detected, or not all of critical code.
"""
import argparse
import os
import pathlib
import random
import sys
import threading
import time

import mutants
import source_places
from mutant_judges import Worker
from mutants import ROOT

KEPT = ROOT / "tests/data/kept_mutants.txt"
# In the work folder, until all are tried.
SEED = "seed"
GOAL = 0.97
BATCH = 300


def read_kept():
    """Mutants that are equivalent to the original. Raises SystemExit if an entry does not name one."""
    kept = source_places.read_entries(KEPT)
    stale = list(source_places.find_stale(kept, {mutant.name for mutant in mutants.list_all()}))
    if stale:
        raise SystemExit("\n".join(f"{KEPT.name}: {line}" for line in stale))
    return set(kept)


def read_options():
    parser = argparse.ArgumentParser()
    parser.add_argument("count", type=int)
    parser.add_argument("folder", type=lambda path: pathlib.Path(path).resolve())
    parser.add_argument("--seed", type=int)
    parser.add_argument("--critical", action="store_true", help="also every mutant of critical code")
    parser.add_argument("--only", default="", help="only files whose path starts so")
    parser.add_argument("--jobs", type=int, default=min(2, len(os.sched_getaffinity(0))))
    parser.add_argument("--quick", action="store_true", help="survivors are only those of the fastest programs")
    parser.add_argument("--continue", action="store_true", dest="is_continued",
                        help="take the seed and the results of a run that was stopped, and try its survivors again")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--again", type=pathlib.Path, help="only those that this file lists")
    options = parser.parse_args()
    if options.seed is None:
        seed = options.folder / SEED
        options.seed = int(seed.read_text()) if options.is_continued else random.randrange(1 << 32)
    return options


def choose(options, kept):
    every = [mutant for mutant in mutants.list_all(options.only) if mutant.name not in kept]
    if options.again:
        again = set(options.again.read_text().splitlines())
        return [mutant for mutant in every if mutant.name in again]
    # Each has a number of its own, so that a change to the sources or to the kept ones leaves the others chosen.
    chosen = sorted(every, key=lambda mutant: random.Random(f"{options.seed} {mutant.name}").random())[:options.count]
    if options.critical:
        known = {mutant.name for mutant in chosen}
        chosen += [mutant for mutant in every if mutant.is_critical() and mutant.name not in known]
    return chosen


def read_results(options):
    """By the name of each mutant that was detected: the test that did, or "" if it does not compile."""
    log = options.folder / "results.txt"
    if not options.is_continued:
        log.unlink(missing_ok=True)
        return {}
    lines = [line.split("\t", 2) for line in log.read_text().splitlines()]
    return {name: detector for _, detector, name in lines if detector != "None"}


def try_all(options, chosen):
    """Pairs of a mutant and the test that detected it or None, without the mutants that do not compile."""
    tried = read_results(options)
    results = [(mutant, tried[mutant.name]) for mutant in chosen if tried.get(mutant.name, "") != ""]
    # In random batches, each by files: the next mutant of a file is compiled instead of the original.
    batches = {mutant.name: number // BATCH for number, mutant in enumerate(chosen)}
    todo = sorted((mutant for mutant in chosen if mutant.name not in tried),
                  key=lambda mutant: (batches[mutant.name], mutant.path), reverse=True)
    every, lock = list(todo), threading.Lock()

    def work(number):
        worker = Worker(options.folder / f"worker{number}", options.quick)
        worker.prepare(every)
        while True:
            with lock:
                if not todo:
                    return
                mutant = todo.pop()
            start = time.time()
            detector = worker.judge(mutant)
            with lock, open(options.folder / "results.txt", "a") as log:
                print(f"{time.time() - start:.1f} s", detector, mutant.name, sep="\t", file=log, flush=True)
                if detector != "":
                    results.append((mutant, detector))
                if detector is None:
                    print(f"    survived: {mutant.name}", flush=True)
                elif len(results) % 50 == 0:
                    print(f"    {len(results)} tried, {len(todo)} to do", flush=True)

    workers = [threading.Thread(target=work, args=(i,)) for i in range(options.jobs)]
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()
    return [] if todo else results


def main():
    kept = read_kept()
    if sys.argv[1:] == ["--check"]:
        print(f"{len(kept)} kept mutants, each with one place")
        return 0
    options = read_options()
    chosen = choose(options, kept)
    if options.list:
        print(*(mutant.name for mutant in chosen), sep="\n")
        return 0
    options.folder.mkdir(parents=True, exist_ok=True)
    (options.folder / SEED).write_text(str(options.seed))
    print(f"    seed {options.seed}, {len(chosen)} mutants", flush=True)
    start = time.time()
    results = try_all(options, chosen)
    survivors = [mutant for mutant, detector in results if detector is None]
    if results:
        (options.folder / SEED).unlink()
    (options.folder / "survivors.txt").write_text("".join(mutant.name + "\n" for mutant in survivors))
    sample = {mutant.name for mutant in chosen[:options.count]}
    tried = sum(mutant.name in sample for mutant, _ in results)
    killed = tried - sum(mutant.name in sample for mutant in survivors)
    critical = sum(mutant.is_critical() for mutant, _ in results)
    missed = sum(mutant.is_critical() for mutant in survivors)
    print(f"{killed} of {tried} random mutants detected (seed {options.seed}; {100 * killed / max(tried, 1):.1f} %, goal 97); "
          f"{critical - missed} of {critical} in padding, state loading, verification, configuration trust, wiping and file "
          f"replacement (goal: all); {(time.time() - start) * options.jobs / max(len(results), 1):.1f} s each")
    return 0 if results and killed >= GOAL * tried and missed == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
