# SPDX-License-Identifier: Apache-2.0
"""The builds and tests by which scripts/mutate.py judges a mutant."""
import re
import resource
import shutil
import subprocess
import sys
import time

from mutants import ROOT

# Limits against endless loops and against waiting: seconds, and multiples of the time that a program takes unchanged.
LIMIT, FACTOR = 60, 8
ADDRESS_SPACE = 8 << 30

# Tests that detect nothing that shorter ones of the same kind do not, and slow ones, which run last.
LEFT_OUT = "*16777216*:*OfAGigabyte*"
EVERY = f"*-{LEFT_OUT}"
# Without the injections of every failure, which take minutes.
QUICK_INJECTION = f"{EVERY}:All/Injections.*:*SecretUses*"
SLOW = f"{LEFT_OUT}:CThreadStuff.*:*LargeSignedConfig*:*Whole*:*DeathTest*"
UL, SARN, HOST = "tests/ul_tests", "tests/sarn_tests", "tests/host_tests"
INJECTION, MODULES, COMMAND = "tests/sarn_injection_tests", "tests/sarn_module_tests", "tools/sarn"
# Ends the name of a copy of a program from before all mutants.
ORIGINAL = ".original"
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
WINDOWS = {"windows": [(UL, f"*-{SLOW}"), (HOST, "*Path*:*Native*"), (COMMAND, None)]}
# Has code for wide characters of 16 bits, which is compiled everywhere but used there only.
USED_ON_WINDOWS = "ul/src/text/utf8_text.cpp"
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


def get_presets(mutant, is_quick):
    """The presets that judge a mutant after the preset release, with their tests."""
    is_tool = mutant.path.startswith("tools/")
    if mutant.is_for_windows or mutant.path == USED_ON_WINDOWS:
        return WINDOWS_COMMAND if is_tool else WINDOWS
    return {} if is_quick or is_tool else SANITIZED


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
        if program.removesuffix(ORIGINAL) == COMMAND:
            script = [sys.executable, self.folder / "tests/system/command/run_case.py"]
            system = "windows" if self.preset == "windows" else "linux"
            names = self.execute([*script, "--list", system], self.folder, check=True).stdout.split()
            return [(name, [*script, name, self.build / "case", self.folder, *start])
                    for name in names if tests is None or name in tests.split(":")]
        if tests is None:
            # The parser of the command's arguments is not part of the builds with sanitizers.
            return [(inputs.stem, [*start, inputs.stem, inputs])
                    for inputs in sorted(self.folder.glob("fuzz/corpus/*.vec")) if inputs.stem != "arguments"]
        if isinstance(tests, list):
            return [(program, [*start, *tests])]
        return [(program.removesuffix(ORIGINAL), [*start, f"--gtest_filter={tests}", "--gtest_fail_fast"])]

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
        # By file and program, the tests that detected the last mutants: they most probably detect the next one.
        self.detectors = {}

    def list_every(self, program):
        """All tests of a program that judge a mutant."""
        if program == INJECTION and self.is_quick:
            return QUICK_INJECTION
        return None if program == COMMAND else EVERY

    def list_stages(self, path):
        """Targets to build, and a program with its tests to run, in order, until one detects the mutant.

        Inline code of a header is compiled into programs, which then contain its last mutant. So they judge only mutants
        that they are built for; copies of the programs from before all mutants judge the libraries.
        """
        family = next((tests for pattern, tests in FAMILIES.items() if re.match(pattern, path)), [])
        programs = [UL] * path.startswith("ul/") + [SARN, HOST, MODULES, INJECTION] + [COMMAND] * (not self.is_quick)
        is_header = path.endswith(".h")
        if path.startswith("tools/"):
            stages = [(("sarn_command",), COMMAND, None)]
        else:
            stages = [(("ul", "sarn"), program + ORIGINAL, tests)
                      for program, tests in family + [(program, self.list_every(program)) for program in programs]
                      if program != HOST or not is_header]
        if is_header and not path.startswith("tools/"):
            compiled = [((get_target(program),), program, EVERY) for program in (HOST, UL, SARN) if program in programs]
            first = sum(program != HOST for program, _ in family)
            stages = stages[:first] + compiled[:1] + stages[first:] + compiled[1:]
        recent = [(targets, program, ":".join(self.detectors[path, program]))
                  for targets, program in dict.fromkeys(stage[:2] for stage in stages) if (path, program) in self.detectors]
        return recent + stages

    def find_detector(self, mutant):
        """The test that detects a mutant; "" if it does not compile, None if no test does."""
        path = mutant.path
        for targets, program, tests in [] if mutant.is_for_windows else self.list_stages(path):
            if not self.plain.compile(*targets):
                return ""
            detector = self.plain.find_failure(program, tests)
            if detector:
                recent = self.detectors.get((path, program), [])
                self.detectors[path, program] = [detector, *(test for test in recent if test != detector)][:8]
                return detector
        for name, tests in get_presets(mutant, self.is_quick).items():
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
            return self.find_detector(mutant)
        finally:
            target.write_text(original)

    def prepare(self, mutants):
        """Compiles all that judges these mutants, and checks that the tests pass without a mutant."""
        if not all(mutant.is_for_windows for mutant in mutants):
            every = [UL, SARN, HOST, MODULES, INJECTION, COMMAND]
            self.require_success(self.plain, [(program, self.list_every(program)) for program in every])
            for program in every:
                original = self.plain.build / (program + ORIGINAL)
                original.unlink(missing_ok=True)  # one of a run that was stopped may still run
                shutil.copy(self.plain.build / program, original)
        presets = {}
        for mutant in mutants:
            for name, tests in get_presets(mutant, self.is_quick).items():
                presets.setdefault(name, []).extend(test for test in tests if test not in presets[name])
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
