# SPDX-License-Identifier: Apache-2.0
"""Lanes that leave tests out, and commands that run other commands."""
from case import add

NAMES = [f"Suite.Test{number}" for number in range(120)]


def write_names(at, file, names):
    at.write(file, "".join(f"  Test #{number}: {name}\n" for number, name in enumerate(names)))


def make_lane(at):
    write_names(at, "release", NAMES + ["Page.One", "Page.Two"])
    write_names(at, "lane", NAMES + ["Suite.OfTheLaneOnly"])
    at.write("exceptions", "# lanes: tests # reason\narm* s390x: Page[.].* # pages are the same everywhere\n"
                           "windows: Suite[.].* # there are no suites\n")


add("CompareLanes", ["{source}/scripts/compare-lanes", "arm64", "lane", "release", "exceptions"], make_lane, [
    ("TestThatIsLeftOutWithoutAReason", lambda at: at.replace("lane", "Test #7: .*", "Test #7: Suite.Other"),
     "arm64 leaves out Suite.Test7 without a reason"),
    ("RowOfAnotherLane", lambda at: at.replace("exceptions", "^arm. ", ""), "leaves out Page.One without a reason"),
    ("RowThatMatchesNothing", lambda at: at.append("exceptions", "arm64: None.* # not needed\n"),
     r"arm64 leaves out no test like None"),
    ("RowWithoutAReason", lambda at: at.replace("exceptions", " # pages.*", ""), "not lanes, a pattern and a reason"),
    ("LaneThatWasNotListed", lambda at: at.write("release", ""), "release names 0 tests only"),
])

# The steps are scripts here.
STEP = "#!/bin/sh\n#: A step\necho './dev {name}: passed: 7 things'\n"
COMMIT = ("git", "-c", "user.name=a", "-c", "user.email=a", "commit", "--quiet", "--all", "--message", "a")
WRITTEN = "grep -qx '| `./dev soak` | 7 things | ....-..-.. | [0-9a-f]* |' docs/trust.md && " \
          "grep -v 'dev soak' docs/trust.md | cmp - build/others"


def make_steps(at):
    at.copy("dev", "scripts/lib.sh", "scripts/commands/release", "scripts/commands/check", "docs/trust.md")
    for name in ("soak", "test", "lint"):
        at.write(f"scripts/commands/{name}", STEP.format(name=name), 0o755)
    at.write("build/others", "".join(line for line in at.read("docs/trust.md").splitlines(True) if "dev soak" not in line))
    at.write(".gitignore", "build/\n")
    at.make("git", "init", "--quiet")
    at.make("git", "add", "--all")
    at.make(*COMMIT)


def end_step(ending):
    """Changes the end of a step and commits that: without a commit no figure is written."""
    return lambda at: (at.append("scripts/commands/soak", ending), at.make("git", "add", "--all"), at.make(*COMMIT))


add("Release", ["sh", "-c", f"./dev release soak || exit 1; {WRITTEN}"], make_steps, [
    ("StepThatFails", end_step("exit 1\n"), r"\| ./dev soak \| FAILED \|.*release: FAILED"),
    ("StepThatIsSkipped", end_step("exit 3\n"), r"\| ./dev soak \| NOT RUN \|.*release: NOT RUN"),
    ("FigureThatIsMissing", end_step("echo './dev soak: passed'\n"), "FAILED .* the last line has no figure"),
    ("RowThatIsGone", lambda at: at.replace("docs/trust.md", "^\\| `./dev mutate` .*\n", ""), "one row for ./dev mutate"),
    ("FigureOfNoCommit", lambda at: at.append("dev", "\n"), "keeps the old figure of ./dev soak"),
])
add("Check", ["scripts/commands/check"], make_steps, [
    ("StepThatFails", lambda at: at.append("scripts/commands/lint", "exit 1\n"),
     r"check: FAILED \(exit status 1\): ./dev lint"),
    ("StepThatIsSkipped", lambda at: at.append("scripts/commands/test", "exit 3\n"), "check: NOT RUN: ./dev test release"),
])
