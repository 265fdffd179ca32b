#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs a checker on whole input, which it must accept, or on damaged input, which it must refuse.

usage: refusals.py --list                   prints the names of the cases
       refusals.py NAME FOLDER KEY=VALUE... runs one of them in FOLDER, with values for its commands
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys

import command_cases
import lane_cases
import package_cases
import page_cases
import tree_cases
from case import CASES


class Workplace:
    """A folder in which the input of a checker is made and damaged."""

    def __init__(self, folder, values):
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        self.folder, self.values = folder, {**values, "work": str(folder)}
        # The checkers that are scripts start this interpreter too.
        self.path = f"{pathlib.Path(sys.executable).parent}:{os.environ['PATH']}"

    def run(self, command):
        return subprocess.run([word.format(**self.values) for word in command], cwd=self.folder, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL,
                              env={**os.environ, "LC_ALL": "C", "PATH": self.path})

    def make(self, *command):
        """Runs a command that must succeed."""
        done = self.run(command)
        if done.returncode != 0:
            raise SystemExit(f"{' '.join(command)} failed:\n{done.stdout}")
        return done.stdout

    def copy(self, *names, to="."):
        """Copies files and folders of the project, with their paths, or into the folder `to`."""
        for name in names:
            source = pathlib.Path(self.values["source"]) / name
            target = self.folder / (name if to == "." else f"{to}/{source.name}")
            target.parent.mkdir(parents=True, exist_ok=True)
            if source.is_dir():
                shutil.copytree(source, target, dirs_exist_ok=True)
            else:
                shutil.copy(source, target)

    def write(self, name, text, mode=0o644):
        (self.folder / name).parent.mkdir(parents=True, exist_ok=True)
        (self.folder / name).write_text(text)
        (self.folder / name).chmod(mode)

    def append(self, name, text):
        self.write(name, self.read(name) + text, (self.folder / name).stat().st_mode)

    def read(self, name):
        return (self.folder / name).read_text()

    def replace(self, name, pattern, replacement):
        """Replaces the first match, which must exist."""
        text, count = re.subn(pattern, replacement, self.read(name), count=1, flags=re.M)
        if count != 1:
            raise SystemExit(f"{name} holds nothing like {pattern}: this case no longer damages anything")
        self.write(name, text, (self.folder / name).stat().st_mode)

    def remove(self, name):
        (self.folder / name).unlink()


def run_case(case, workplace):
    case.prepare(workplace)
    if not case.damage:
        whole = workplace.run(case.command)
        return f"it refuses what is whole:\n{whole.stdout}" if whole.returncode != 0 else ""
    case.damage(workplace)
    damaged = workplace.run(case.command)
    if damaged.returncode == 0:
        return f"it accepts what is damaged:\n{damaged.stdout}"
    # cmake wraps its messages.
    if not re.search(case.message, re.sub(r"\s+", " ", damaged.stdout)):
        return f"it refuses what is damaged, but not with '{case.message}':\n{damaged.stdout}"
    return ""


def main(arguments):
    if arguments == ["--list"]:
        print(*(case.name for case in CASES), sep="\n")
        return 0
    name, folder, *values = arguments
    case = next(case for case in CASES if case.name == name)
    problem = run_case(case, Workplace(pathlib.Path(folder).resolve(), dict(value.split("=", 1) for value in values)))
    if problem:
        print(f"{name}: {problem}")
    return 1 if problem else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
