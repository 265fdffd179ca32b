#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Changes the sources in one place at a time and checks whether the tests detect it.

usage: scripts/mutate.py COUNT WORK_FOLDER [--seed SEED] [--critical] [--only PREFIX] [--jobs JOBS]
                         [--again SURVIVORS] [--quick] [--list]
       scripts/mutate.py --check    only checks that each entry of tests/data/kept_mutants.txt names one mutant

Tries COUNT mutants, chosen at random, and with --critical also all of critical code. Prints the seed. Writes results.txt
and survivors.txt to WORK_FOLDER. Fails if fewer than 97 % of the random ones are detected, or not all of critical code.
"""
import argparse
import os
import pathlib
import random
import re
import resource
import shutil
import subprocess
import sys
import threading
import time

import mutants
import source_places
from mutants import ROOT

KEPT = ROOT / "tests/data/kept_mutants.txt"
GOAL = 0.97
# Limits against endless loops and against waiting: seconds, and multiples of the time that a program takes unchanged.
LIMIT, FACTOR = 60, 8
ADDRESS_SPACE = 8 << 30

# Tests that detect nothing that shorter ones of the same kind do not, and slow ones, which run last.
LEFT_OUT = "*16777216*:*OfAGigabyte*"
EVERY = f"*-{LEFT_OUT}"
SLOW = f"{LEFT_OUT}:CThreadStuff.*:*LargeSignedConfig*:*Whole*:*DeathTest*"
UL, SARN, HOST = "tests/ul_tests", "tests/sarn_tests", "tests/host_tests"
INJECTION, MODULES, COMMAND = "tests/sarn_injection_tests", "tests/sarn_module_tests", "tools/sarn"
# The programs whose tests detect most mutants of a family, and these tests.
FAMILIES = {
    "ul/include/ul/(bytes|format_error|hex|list|random_bytes|secret_text|text)|include/sarn/(cipher_stream|config_values"
    "|digest_file|host|one_call|sign_file|stream_)": [(HOST, "*")],
    "ul/": [(UL, f"*-{SLOW}")],
    "src/cipher/|include/.*cipher": [(SARN, f"*Cipher*-{SLOW}")],
    "src/digest/|include/.*(digest|checksum|saved)": [(SARN, f"*igest*:Check*:Combin*-{SLOW}")],
    "src/keys/|include/.*(key|base64|hmac)": [(SARN, f"*Base64*:*Key*:*HMAC*-{SLOW}")],
    "src/signature/|include/.*sign": [(SARN, f"*Sign*:*Config*-{SLOW}")],
    "src/frame/|include/": [(SARN, f"*Init*:*ObjectModel*:*Instance*:Overlaps*:*Queue*:*Regist*-{SLOW}")],
}
# Presets that judge what only Windows compiles, and survivors, with their tests. A mutant of a lock is a data race.
WINDOWS = {"windows": [(UL, f"*-{SLOW}"), (COMMAND, None)]}
WINDOWS_COMMAND = {"windows": [(COMMAND, None)]}
SANITIZED = {
    "tsan": [(UL, "*Thread*:*Mutex*:*Slot*:*Log*:*Random*:*Pointer*"), (MODULES, "*"),
             ("tests/sarn_soak", ["threads", "20000"]), ("tests/sarn_soak", ["first-use", "3"])],
    "asan": [(UL, f"*-{SLOW}"), (HOST, "*"), (SARN, f"*-{SLOW}"), ("fuzz/sarn_fuzz_replay", None)],
}


def get_target(program):
    return "sarn_command" if program == COMMAND else program.split("/")[1]


def list_targets(tests):
    return sorted({get_target(program) for program, _ in tests})


def get_presets(path, is_quick):
    """The presets that judge a mutant of a file after the preset release, with their tests."""
    if "/windows/" in path:
        return WINDOWS_COMMAND if path.startswith("tools/") else WINDOWS
    return {} if is_quick or path.startswith("tools/") else SANITIZED


def limit_resources(seconds, space):
    resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    if space:
        resource.setrlimit(resource.RLIMIT_AS, (space, space))


class Workshop:
    """A build of a copy of the project, in which one mutant at a time is tried. Warnings are errors."""

    def __init__(self, folder, preset):
        self.folder, self.build, self.preset = folder, folder / "build" / preset, preset
        self.limits = {}
        self.execute(["cmake", "--preset", preset], folder, check=True)

    @staticmethod
    def execute(command, folder, **options):
        return subprocess.run(command, cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              stdin=subprocess.DEVNULL, text=True, errors="replace", **options)

    def compile(self, *targets):
        return self.execute(["ninja", "-j", "1", *targets], self.build).returncode == 0

    def start(self, program):
        """The words that start a program."""
        if self.preset == "windows":
            return [self.folder / "scripts/run-in-wine", self.build / "bin" / (program.split("/")[1] + ".exe")]
        return [self.build / program]

    def list_commands(self, program, tests):
        """Pairs of a name and a command that runs tests of a program."""
        start = self.start(program)
        if program == COMMAND:
            script = [sys.executable, self.folder / "tests/system/command/run_case.py"]
            system = "windows" if self.preset == "windows" else "linux"
            names = self.execute([*script, "--list", system], self.folder, check=True).stdout.split()
            return [(name, [*script, name, self.build / "case", self.folder, *start])
                    for name in names if tests is None or name in tests.split(":")]
        if tests is None:
            return [(inputs.stem, [*start, inputs.stem, inputs])
                    for inputs in sorted(self.folder.glob("fuzz/corpus/*.vec"))]
        if isinstance(tests, list):
            return [(program, [*start, *tests])]
        return [(f"{program} {tests}", [*start, f"--gtest_filter={tests}", "--gtest_fail_fast"])]

    def find_failure(self, program, tests):
        """The test that fails, or nothing. All tests of a program run in one process, which ends at the first failure."""
        for name, command in self.list_commands(program, tests):
            start = time.time()
            limit = self.limits.get(name, LIMIT * 30)
            space = ADDRESS_SPACE if self.preset == "release" else 0
            try:
                done = self.execute(command, self.build, timeout=limit,
                                    preexec_fn=lambda: limit_resources(int(limit), space))
                failed, output = done.returncode != 0, done.stdout
            except subprocess.TimeoutExpired as error:
                failed, output = True, (error.stdout or b"").decode(errors="replace")
            if failed:
                # The test that failed, or else the last one that started. Tests after a failure start, but are skipped.
                names = re.findall(r"^\[  FAILED  \] ([^\s,]+)", output, re.M)[:1] or \
                    re.findall(r"^\[ RUN      \] (\S+)", output, re.M)[-1:]
                return names[0] if names else name
            self.limits.setdefault(name, LIMIT + FACTOR * (time.time() - start))
        return None


class Worker:
    """Tries mutants in a copy of the project."""

    def __init__(self, folder, is_quick):
        self.folder, self.is_quick = folder, is_quick
        files = subprocess.run(["git", "ls-files"], cwd=ROOT, check=True, capture_output=True, text=True).stdout
        for name in files.splitlines():
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            source, target = ROOT / name, folder / name
            if not target.exists() or source.read_bytes() != target.read_bytes():
                shutil.copy(source, target)
        if (ROOT / ".deps").exists() and not (folder / ".deps").exists():
            (folder / ".deps").symlink_to(ROOT / ".deps")
        self.plain = Workshop(folder, "release")
        self.workshops = {}
        # The tests that detected the last mutants of each file: they most probably detect the next one.
        self.detectors = {}

    def list_stages(self, path):
        """Targets to build, and a program with its tests to run, in order, until one detects the mutant."""
        library = ["sarn_command"] if path.startswith("tools/") else ["ul", "sarn"]
        is_public = path.startswith(("include/", "ul/include/"))
        family = next((tests for pattern, tests in FAMILIES.items() if re.match(pattern, path)), [])
        stages = [(library, program, ":".join(tests)) for program, tests in self.detectors.get(path, {}).items()]
        # Tests compile what is inline in public headers; before that they judge the libraries alone.
        stages += [(library, program, tests) for program, tests in family if not is_public or program != HOST]
        stages += [([get_target(program)], program, tests) for program, tests in family if is_public]
        programs = [COMMAND] if path.startswith("tools/") else [SARN, HOST, MODULES]
        if not self.is_quick:
            programs += [INJECTION, COMMAND]
        if path.startswith("ul/"):
            programs.insert(0, UL)
        for program in programs:
            targets = library + [get_target(program)] * (is_public or path.endswith(".h"))
            stages.append((targets, program, None if program == COMMAND else EVERY))
        return stages

    def find_detector(self, path):
        """The test that detects the change of a file; "" if it does not compile, None if no test does."""
        for targets, program, tests in [] if "/windows/" in path else self.list_stages(path):
            if not self.plain.compile(*targets):
                return ""
            detector = self.plain.find_failure(program, tests)
            if detector:
                recent = self.detectors.setdefault(path, {}).setdefault(program, [])
                if detector in recent:
                    recent.remove(detector)
                self.detectors[path][program] = [detector, *recent[:7]]
                return detector
        for name, tests in get_presets(path, self.is_quick).items():
            workshop = self.workshops[name]
            if not workshop.compile(*list_targets(tests)):
                return ""
            for program, names in tests:
                detector = workshop.find_failure(program, names)
                if detector:
                    return f"{name}: {detector}"
        return None

    def judge(self, mutant):
        target = self.folder / mutant.path
        original = target.read_text()
        target.write_text(mutant.apply(original))
        try:
            return self.find_detector(mutant.path)
        finally:
            target.write_text(original)

    def prepare(self, presets):
        """Compiles everything, and checks that the tests pass without a mutant."""
        every = [UL, SARN, HOST, MODULES, COMMAND] + [INJECTION] * (not self.is_quick)
        self.require_success(self.plain, [(program, None if program == COMMAND else EVERY) for program in every])
        for name, tests in presets.items():
            self.workshops[name] = Workshop(self.folder, name)
            self.require_success(self.workshops[name], tests)

    @staticmethod
    def require_success(workshop, tests):
        if not workshop.compile(*list_targets(tests)):
            raise RuntimeError(f"the preset {workshop.preset} does not compile without a mutant")
        for program, names in tests:
            detector = workshop.find_failure(program, names)
            if detector:
                raise RuntimeError(f"without a mutant {detector} fails in the preset {workshop.preset}")


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
    parser.add_argument("--seed", type=int, default=random.randrange(1 << 32))
    parser.add_argument("--critical", action="store_true", help="also every mutant of critical code")
    parser.add_argument("--only", default="", help="only files whose path starts so")
    parser.add_argument("--jobs", type=int, default=min(2, len(os.sched_getaffinity(0))))
    parser.add_argument("--quick", action="store_true", help="survivors are only those of the fastest programs")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--again", type=pathlib.Path, help="only those that this file lists")
    return parser.parse_args()


def choose(options, kept):
    every = [mutant for mutant in mutants.list_all(options.only) if mutant.name not in kept]
    if options.again:
        again = set(options.again.read_text().splitlines())
        return [mutant for mutant in every if mutant.name in again]
    chosen = random.Random(options.seed).sample(every, min(options.count, len(every)))
    if options.critical:
        known = {mutant.name for mutant in chosen}
        chosen += [mutant for mutant in every if mutant.is_critical() and mutant.name not in known]
    return chosen


def try_all(options, chosen):
    """Pairs of a mutant and the test that detected it or None, without the mutants that do not compile."""
    # By files: the next mutant of a file is compiled instead of the original.
    results, todo, lock = [], sorted(chosen, key=lambda mutant: mutant.path, reverse=True), threading.Lock()
    presets = {}
    for path in {mutant.path for mutant in chosen}:
        presets.update({name: presets.get(name, []) + [test for test in tests if test not in presets.get(name, [])]
                        for name, tests in get_presets(path, options.quick).items()})

    def work(number):
        worker = Worker(options.folder / f"worker{number}", options.quick)
        worker.prepare(presets)
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
    print(f"    seed {options.seed}, {len(chosen)} mutants", flush=True)
    start = time.time()
    results = try_all(options, chosen)
    survivors = [mutant for mutant, detector in results if detector is None]
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
