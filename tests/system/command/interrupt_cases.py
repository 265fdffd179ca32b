# SPDX-License-Identifier: Apache-2.0
"""What interrupts do to the command."""
import os
import pathlib
import re
import signal
import time

from case import LETTER, PASSWORD, case, expect, make_bytes
from habit_cases import start, wait_for


@case("Interrupt_RemovesTheUnfinishedFileAndEndsTheProcess", is_posix=True)
def check_interrupt(at):
    at.write("key", bytes(32))
    before = at.list()
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        with start(at, "encrypt", "--key", "key", "-", "message") as process:
            process.stdin.write(make_bytes(1 << 20))
            process.stdin.flush()
            wait_for(lambda: any(os.path.getsize(name) > 1000 for name in at.list()))
            process.send_signal(number)
            process.wait()
        expect(process.returncode == -number, f"status {process.returncode} after {number}")
        expect(at.list() == before, f"it has left {at.list()}")


@case("Interrupt_WhileAFIFOIsOpened_EndsTheProcess", is_posix=True)
def check_interrupted_opening(at):
    os.mkfifo("fifo")
    with start(at, "digest", "sha1", "fifo") as process:
        status = pathlib.Path(f"/proc/{process.pid}/status")
        # It waits, and handles the signal.
        wait_for(lambda: re.search(r"^State:\tS.*^SigCgt:\t\w+[2367abef]$", status.read_text(encoding="utf-8"), re.M | re.S))
        process.send_signal(signal.SIGINT)
        _, messages = process.communicate()
    expect(process.returncode == -signal.SIGINT and messages == b"", messages)


@case("Interrupt_ASecondTime_EndsTheProcessAtOnce", is_posix=True)
def check_second_interrupt(at):
    at.write("password", PASSWORD)
    words = ("key", "--salt", "00", "--iterations", "2000000000", "--password-file", "password", "key")
    with start(at, *words) as process:
        stat_file = pathlib.Path(f"/proc/{process.pid}/stat")
        # A second of work is within the derivation, which no interrupt stops.
        wait_for(lambda: int(stat_file.read_text(encoding="utf-8").split()[13]) >= os.sysconf("SC_CLK_TCK"))
        process.send_signal(signal.SIGINT)
        time.sleep(0.2)
        expect(process.poll() is None, "the first interrupt has ended it")
        process.send_signal(signal.SIGINT)
        process.wait(timeout=30)
    expect(process.returncode == -signal.SIGINT and b"key" not in at.list(), (process.returncode, at.list()))


@case("Interrupt_ThatTheShellIgnores_IsIgnored", is_posix=True)
def check_ignored(at):
    def ignore():
        signal.signal(signal.SIGHUP, signal.SIG_IGN)
    with start(at, "base64", "-", "new", preexec_fn=ignore) as process:
        process.stdin.write(LETTER)
        process.stdin.flush()
        wait_for(lambda: len(at.list()) == 1)
        process.send_signal(signal.SIGHUP)
        process.communicate()
    expect(process.returncode == 0 and at.list() == [b"new"], process.returncode)
