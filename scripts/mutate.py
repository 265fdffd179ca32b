#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Changes the libraries' sources in one place at a time and checks whether the tests detect it.

usage: scripts/mutate.py COUNT WORK_FOLDER LIBCRYPTO_ROOT [--only PREFIX] [--rest] [--again SURVIVORS] [--list]
       scripts/mutate.py --check    only checks that each entry of tests/data/kept_mutants.txt names one mutant

Tries COUNT mutants, spread evenly over the sources, and all mutants of critical code: padding, the loading of states,
verification and the trust in configurations. Writes the survivors to WORK_FOLDER/survivors.txt. Fails if fewer than 95
% are detected, or if a mutant of critical code is not.
"""
import argparse
import os
import pathlib
import re
import resource
import shutil
import subprocess
import sys
import threading

import source_places

ROOT = pathlib.Path(__file__).resolve().parent.parent
KEPT = ROOT / "tests/data/kept_mutants.txt"
GOAL = 0.95
# Limits per test program, in seconds: CPU time against endless loops, wall-clock time against waiting. The tests of the
# base library are the fastest and wait most often, so their limit is lower.
CPU_LIMIT = 40
TIME_LIMIT = 200
UL_TIME_LIMIT = 30
ADDRESS_SPACE = 8 << 30

# Code in which every mutant must be detected.
CRITICAL = re.compile(r"src/(cipher/(openssl|null)_cipher|digest/(openssl_digest|checksum_digest|digest_combiner|"
                      r"digest_support|saved_record)|signature/)|include/sarn/(openssl_digest|digest_combiner)")

OPERATORS = {
    " < ": [" <= "], " <= ": [" < "], " > ": [" >= "], " >= ": [" > "], " == ": [" != "], " != ": [" == "],
    " + ": [" - "], " - ": [" + "], " * ": [" + "], " / ": [" * "], " % ": [" / "], " << ": [" >> "],
    " >> ": [" << "], " | ": [" & "], " & ": [" | "], " && ": [" || "], " || ": [" && "], " += ": [" -= "],
    " -= ": [" += "], "(!": ["("], " !": [" "], "++": ["--"],
}
TOKENS = re.compile(r'"(?:[^"\\]|\\.)*"|\'(?:[^\'\\]|\\.)+\'|//.*|\b(?:true|false)\b|(?<![\w.])\d+(?![\w.])|'
                    + "|".join(re.escape(operator) for operator in OPERATORS))
STATEMENT = re.compile(r"^ +[\w*:>.-]+(?:[(.=]| [-+]?= |->|\+\+).*;$")
DECLARATION = re.compile(r"^ +(?:const|constexpr|static|using|auto|return|throw|[\w:<>]+[*&]* \w+(?: =|;|\())")

CONDITION = re.compile(r"^( +(?:} else )?if \()([^;]*)(\)(?: \{)?)$")

# Tests that are slow and detect little more than others: they run last.
SLOW = ("*Published*16777216*:*OfAGigabyte*:*DoNotWaitForEachOther*:CThreadStuff.*:"
        "*LargeSignedConfig*:*Whole*:*DeathTest*")
# The tests that most often detect mutants of a family first.
FAMILIES = {"src/cipher/|include/.*cipher": "*Cipher*", "src/digest/|include/.*(digest|checksum)": "*igest*:Check*:Combin*",
            "src/keys/|include/.*(key|encoding|base64|hmac)": "*Base64*:*Key*:*HMAC*",
            "src/signature/|include/.*sign": "*Sign*:*Config*",
            "src/frame/|include/.*(init|model)": "*Init*:*ThreadStuff*:*ObjectModel*"}


def list_stages(path):
    """Targets to build and programs to run, in order, until one detects the mutant."""
    ul = (["ul", "sarn"], ["tests/ul_tests", "--gtest_filter=-*DeathTest*"])
    stages = [ul] if path.startswith("ul/") else []
    family = [] if stages else [names for pattern, names in FAMILIES.items() if re.match(pattern, path)]
    if family:
        stages.append((["sarn"], ["tests/sarn_tests", f"--gtest_filter={family[0]}-{SLOW}"]))
    if re.match("src/frame/.*[.]h", path):
        # This program includes some of these headers.
        stages.append((["sarn_tests"], ["tests/sarn_tests", "--gtest_filter=*Instance*:Overlaps*"]))
    return stages + [
        (["ul", "sarn"], ["tests/sarn_tests", f"--gtest_filter=-{SLOW}"]),
        ([], ["tests/sarn_injection_tests", f"--gtest_filter=-{SLOW}"]),
        ([], ["tests/sarn_module_tests"]),
        ([], ["tests/ul_tests"]),
        ([], ["tests/sarn_tests", f"--gtest_filter={SLOW}"]),
        ([], ["tests/sarn_injection_tests", "--gtest_filter=*DeathTest*"]),
    ]


class Mutant:
    def __init__(self, path, number, before, after):
        self.path, self.number, self.before, self.after = path, number, before, after
        self.name = ""

    def is_critical(self):
        return bool(CRITICAL.match(self.path))

    def describe(self, lines):
        before, after = (" ".join(text.split()) for text in (self.before, self.after))
        place = source_places.name_place(lines, self.number)
        return f"{self.path}: {place}: {before} => {after or 'nothing'}"


def mutate_tokens(line):
    for match in TOKENS.finditer(line):
        token = match.group()
        if token.startswith("//"):
            return
        if token[0] in "\"'":
            changes = [token[:-1] + "~" + token[-1]] if token[0] == '"' else []
        elif token in ("true", "false"):
            changes = ["false" if token == "true" else "true"]
        elif token.isdigit():
            changes = [str(int(token) + 1)]
        else:
            changes = OPERATORS[token]
        for change in changes:
            yield line[:match.start()] + change + line[match.end():]


def is_statement(line):
    return bool(STATEMENT.match(line)) and not DECLARATION.match(line) and not line.endswith(("= delete;", "= default;"))


def is_call(line):
    """A statement whose order matters; assignments are too often independent of each other."""
    return is_statement(line) and " = " not in line


def find_mutants(path):
    """The mutants of a file, each with a unique name."""
    lines = (ROOT / path).read_text().split("\n")
    mutants = list(make_mutants(path, lines))
    for mutant, name in zip(mutants, source_places.number_alike([mutant.describe(lines) for mutant in mutants])):
        mutant.name = name
    return mutants


def make_mutants(path, lines):
    is_compiled = True
    for number, line in enumerate(lines):
        bare = line.strip()
        # Code for newer versions of libcrypto is not part of this build.
        if bare.startswith("#if"):
            is_compiled = "OPENSSL_VERSION_NUMBER >= 0x30000000L" not in bare
        elif bare.startswith(("#else", "#endif")):
            is_compiled = True
        if not is_compiled:
            continue
        if bare.startswith(("//", "#", "/*", "template", "static_assert", "assert", "using", "extern")):
            continue
        if bare.endswith((") = 0;", " const = 0;")):
            continue
        for after in mutate_tokens(line):
            yield Mutant(path, number, line, after)
        if CONDITION.match(line):
            yield Mutant(path, number, line, CONDITION.sub(r"\1!(\2)\3", line))
        if is_statement(line) and source_places.find_function(lines, number):
            yield Mutant(path, number, line, "")
            following = lines[number + 1]
            indent = len(line) - len(line.lstrip())
            if is_call(line) and is_call(following) and len(following) - len(following.lstrip()) == indent:
                yield Mutant(path, number, line + "\n" + following, following + "\n" + line)


def list_all(prefix=""):
    files = subprocess.run(["git", "ls-files", "--", "src", "include", "ul"], cwd=ROOT, check=True, capture_output=True,
                           text=True).stdout.split()
    return [mutant for path in files if path.endswith((".cpp", ".h")) and "/windows/" not in path
            and path.startswith(prefix) for mutant in find_mutants(path)]


def list_mutants(count, prefix, rest):
    """All mutants of critical code, and others, evenly spread, up to COUNT."""
    every = list_all(prefix)
    critical = [mutant for mutant in every if mutant.is_critical()]
    others = [mutant for mutant in every if not mutant.is_critical()]
    if rest:
        critical = []
    wanted = min(max(count - len(critical), 0), len(others))
    return critical + [others[i * len(others) // wanted] for i in range(wanted)]


def limit_memory():
    resource.setrlimit(resource.RLIMIT_AS, (ADDRESS_SPACE, ADDRESS_SPACE))
    resource.setrlimit(resource.RLIMIT_CPU, (CPU_LIMIT, CPU_LIMIT))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


class Workshop:
    """A copy of the project in which one mutant at a time is built."""

    def __init__(self, folder, libcrypto):
        self.folder, self.build = folder, folder / "build"
        files = subprocess.run(["git", "ls-files"], cwd=ROOT, check=True, capture_output=True, text=True).stdout
        for name in files.splitlines():
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            source, target = ROOT / name, folder / name
            if not target.exists() or source.read_bytes() != target.read_bytes():
                shutil.copy(source, target)
        self.run(["cmake", "-S", folder, "-B", self.build, "-G", "Ninja", "-DCMAKE_CXX_FLAGS=-O1",
                  f"-DOPENSSL_ROOT_DIR={libcrypto}", "-DSARN_BUILD_EXAMPLES=OFF"], None, check=True)
        targets = ["ul_tests", "sarn_tests", "sarn_module_tests", "sarn_injection_tests"]
        self.run(["cmake", "--build", self.build, "-j", "1", "--target", *targets], None, check=True)

    def run(self, command, limit, **options):
        return subprocess.run(command, cwd=self.build if self.build.exists() else self.folder, timeout=limit,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL, **options)

    def try_tests(self, path):
        """Whether the tests pass: True, False, or None if it does not compile."""
        for targets, command in list_stages(path):
            if targets and self.run(["ninja", *targets], None).returncode != 0:
                return None
            try:
                # All tests run in one process, which ends at the first failure.
                limit = UL_TIME_LIMIT if command[0].endswith("ul_tests") else TIME_LIMIT
                if self.run([self.build / command[0], *command[1:], "--gtest_fail_fast"], limit,
                            preexec_fn=limit_memory).returncode != 0:
                    return False
            except subprocess.TimeoutExpired:
                return False
        return True

    def judge(self, mutant):
        target = self.folder / mutant.path
        original = target.read_text()
        lines = original.split("\n")
        span = mutant.before.count("\n") + 1
        lines[mutant.number:mutant.number + span] = mutant.after.split("\n")
        target.write_text("\n".join(lines))
        try:
            return self.try_tests(mutant.path)
        finally:
            target.write_text(original)


def read_kept():
    """Mutants that are equivalent to the original. Raises SystemExit if an entry does not name one."""
    kept = source_places.read_entries(KEPT)
    stale = list(source_places.find_stale(kept, {mutant.name for mutant in list_all()}))
    if stale:
        raise SystemExit("\n".join(f"{KEPT.name}: {line}" for line in stale))
    return set(kept)


def main():
    kept = read_kept()
    if sys.argv[1:] == ["--check"]:
        print(f"{len(kept)} kept mutants, each with one place")
        return 0
    parser = argparse.ArgumentParser()
    parser.add_argument("count", type=int)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("libcrypto")
    parser.add_argument("--only", default="")
    parser.add_argument("--rest", action="store_true", help="none of the code that must not be wrong anywhere")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--again", type=pathlib.Path, help="only those that this file lists")
    options = parser.parse_args()
    mutants = list_mutants(options.count, options.only, options.rest)
    if options.list:
        print(*(mutant.name for mutant in mutants), sep="\n")
        return 0
    mutants = [mutant for mutant in mutants if mutant.name not in kept]
    if options.again:
        again = set(options.again.read_text().splitlines())
        mutants = [mutant for mutant in mutants if mutant.name in again]
    results, todo, lock = [], list(reversed(mutants)), threading.Lock()

    def work(number):
        workshop = Workshop(options.folder / f"worker{number}", options.libcrypto)
        if not workshop.try_tests("ul/"):
            raise RuntimeError("the tests do not pass without a mutant")
        while True:
            with lock:
                if not todo:
                    return
                mutant = todo.pop()
            survived = workshop.judge(mutant)
            with lock:
                if survived is not None:
                    results.append((mutant, survived))
                if survived:
                    print(f"    survived: {mutant.name}", flush=True)
                elif len(results) % 50 == 0:
                    print(f"    {len(results)} of {len(mutants)} tried", flush=True)

    workers = [threading.Thread(target=work, args=(i,)) for i in range(len(os.sched_getaffinity(0)))]
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()
    if todo or not results:
        return 1
    survivors = [mutant for mutant, survived in results if survived]
    (options.folder / "survivors.txt").write_text("".join(mutant.name + "\n" for mutant in survivors))
    critical = [mutant for mutant, _ in results if mutant.is_critical()]
    missed = sum(mutant.is_critical() for mutant in survivors)
    killed = len(results) - len(survivors)
    print(f"{killed} of {len(results)} mutants detected ({100 * killed / len(results):.1f} %, goal 95); of those in padding, "
          f"state loading, verification and configuration trust {len(critical) - missed} of {len(critical)}")
    return 0 if killed >= GOAL * len(results) and missed == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
