#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs a case of the command sarn.

usage: run_case.py --list SYSTEM | run_case.py CASE FOLDER SOURCE_FOLDER PROGRAM...
"""
import pathlib
import signal
import sys

import case
import transcript_cases  # first, as these soon show most mistakes
import cipher_cases, digest_cases, encoding_cases, habit_cases, interrupt_cases, page_cases, secret_cases, signature_cases
import state_cases, terminal_cases


def main(words):
    if words[0] == "--list":
        print(*(name for name in case.CASES if words[1] != "windows" or name not in case.POSIX_ONLY), sep="\n")
        return
    name, folder, source, *program = words
    # A shell that starts this in the background ignores interrupts, and the command would inherit that.
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, signal.SIG_DFL)
    at = case.Place(pathlib.Path(folder), pathlib.Path(source), program)
    case.CASES[name](at)
    print(f"{at.compared} comparisons with other programs")


if __name__ == "__main__":
    main(sys.argv[1:])
