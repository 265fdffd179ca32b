# SPDX-License-Identifier: Apache-2.0
"""Lanes that leave tests out."""
from case import add

NAMES = [f"Suite.Test{number}" for number in range(120)]


def write_names(at, file, names):
    at.write(file, "".join(f"  Test #{number}: {name}\n" for number, name in enumerate(names)))


def make_lane(at):
    write_names(at, "release", NAMES + ["Page.One", "Page.Two"])
    write_names(at, "lane", NAMES + ["Suite.OfTheLaneOnly"])
    at.write("exceptions", "# lanes: tests # reason\narm64 s390x: Page[.].* # pages are the same everywhere\n"
                           "windows: Suite[.].* # there are no suites\n")


add("CompareLanes", ["{source}/scripts/compare-lanes", "arm64", "lane", "release", "exceptions"], make_lane, [
    ("TestThatIsLeftOutWithoutAReason", lambda at: at.replace("lane", "Test #7: .*", "Test #7: Suite.Other"),
     "arm64 leaves out Suite.Test7 without a reason"),
    ("RowOfAnotherLane", lambda at: at.replace("exceptions", "^arm64 ", ""), "leaves out Page.One without a reason"),
    ("RowThatMatchesNothing", lambda at: at.append("exceptions", "arm64: None.* # not needed\n"),
     r"arm64 leaves out no test like None"),
    ("RowWithoutAReason", lambda at: at.replace("exceptions", " # pages.*", ""), "not lanes, a pattern and a reason"),
    ("LaneThatWasNotListed", lambda at: at.write("release", ""), "release names 0 tests only"),
])
