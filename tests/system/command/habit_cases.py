# SPDX-License-Identifier: Apache-2.0
"""Habits of all commands: exit status, files that exist, full disks, closed pipes, interrupts, memory."""
import ctypes
import errno
import os
import platform
import re
import resource
import select
import stat
import struct
import subprocess
import time

from case import LETTER, case, expect, make_bytes


@case("Misuse_HasStatus2AndNamesTheHelp")
def check_misuse(at):
    for words, message in (
            ((), "sarn: a command is missing. Try: sarn --help"),
            (("rot13",), "sarn: there is no command 'rot13'. Try: sarn --help"),
            (("config",), "sarn config: a command is missing. Try: sarn config --help"),
            (("digest",), "sarn digest: ID is required. Try: sarn digest --help"),
            (("digest", "sha9", "file"), "sarn digest: ID: sha9 not in {md4,md5,"),
            (("digest", "sha1", "--rot13"), "not expected: --rot13. Try: sarn digest --help"),
            (("encrypt", "a"), "sarn encrypt: TO is required"),
            (("key", "--iterations", "0", "--show"), "--iterations: Value 0 not in range"),
            (("config", "check"), "sarn config check: FILE is required"),
            (("config", "get", "--key", "a", "b"), "sarn config get: KEY is required. Try: sarn config get --help"),
            (("encrypt", "--cipher", "rot13", "a", "b"), "--cipher: rot13 not in {aes256cbc,"),
            (("hmac", "sha1", "file"), "sarn hmac: --key is required"),
            (("digest", "sha1", "--check"), "--check")):
        at.fail(2, message, *words)
    expect(at.run("--version").startswith("sarn 1."), "no version")


@case("Help_SaysWhatTheCommandIsFor_AndTheRulesOfAllCommands")
def check_help(at):
    output = " ".join(at.run("--help").split())
    expect("The services of the library sarn for operators: digests, encryption, signatures and" in output, output)
    expect(output.endswith("Exit status: 0 done, 1 not verified, 2 wrong use, 3 failed."), output)


@case("Failure_NamesFileAndReasonOnOneCleanLine", is_posix=True)
def check_messages(at):
    output = at.run("digest", "sha1", "gone\x1b[31m\nTry: rm", status=3)
    expect(output == "sarn digest: Cannot open file 'gone?[31m?Try: rm': No such file or directory.\n", ascii(output))
    output = at.run("digest", "sha1", "gone\u009b31m\u0085\u2028", status=3)
    expect(output == "sarn digest: Cannot open file 'gone?31m??': No such file or directory.\n", ascii(output))
    at.fail(3, "Cannot read file '.': Is a directory.", "digest", "sha1", ".")


@case("ExistingFile_IsReplacedOnlyByForce")
def check_force(at):
    at.write("key", bytes(32))
    for words in (("encrypt", "--key", "key", "key", "old"), ("base64", "key", "old"), ("key", "--random", "old"),
                  ("digest", "sha1", "--save", "old", "key"),
                  ("sign", "--to", "old", "--key", str(at.keys / "rsa2048_for_tests_only.pem"), "key")):
        at.write("old", "old")
        at.fail(2, "old exists already: give another name, or --force to replace it", *words)
        expect(at.read("old") == b"old", f"{words}: it has changed")
        at.run(*words, "--force")
        expect(at.read("old") != b"old", f"{words}: it has not changed")
    at.fail(3, "Cannot create file", "base64", "key", "no/folder")


@case("ExistingFile_IsNotReplacedByAnotherThatAppearedMeanwhile")
def check_race(at):
    with start(at, "base64", "-", "new") as process:
        process.stdin.write(LETTER)
        process.stdin.flush()
        wait_for(lambda: len(at.list()) == 1)
        at.write("new", "of somebody else")
        _, messages = process.communicate()
    expect(process.returncode == 3 and b"Cannot create file 'new': File exists." in messages, messages)
    expect(at.list() == [b"new"] and at.read("new") == b"of somebody else", at.list())


@case("ReplacedFile_GivesNoRightsAway", is_posix=True)
def check_rights(at):
    at.write("letter", LETTER)
    os.umask(0o022)
    for before, after in ((0o600, 0o600), (0o640, 0o640), (0o777, 0o644), (0o4755, 0o644)):
        os.chmod(at.write("new", "old"), before)
        at.run("base64", "--force", "letter", "new")
        mode = stat.S_IMODE(os.stat("new").st_mode)
        expect(mode == after, f"{before:o} became {mode:o}")
    os.symlink("letter", "link")
    at.run("base64", "--force", "letter", "link")
    expect(not os.path.islink("link") and at.read("letter") == LETTER, "the link was followed")
    os.mkfifo("fifo")
    for name in ("fifo", ".", "/dev/null"):
        at.fail(2, f"{name} is not a regular file", "base64", "--force", "letter", name)


@case("FullDisk_IsReportedAndLeavesNoFile", is_posix=True)
def check_full_disk(at):
    at.write("file", make_bytes(1 << 20))
    at.write("key", bytes(32))
    at.write("LIST", at.ask("sha1sum", "file", "key"))
    key = ("--key", "key")
    for words in (("digest", "sha1", "file", "key"), ("digest", "sha1", "--check", "LIST"), ("encrypt", *key, "file", "-"), ("base64", "file"), ("algorithms",),
                  ("key", "--random", "-"), ("--help",), ("digest", "--help"), ("hmac", "sha1", *key, "file")):
        with open("/dev/full", "wb") as full:
            output = at.run(*words, status=3, stdout=full)
        expect(re.fullmatch(r"sarn( \w+)?: Cannot write file 'standard output': No space left on device\.\n", output), output)

    def limit():
        resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 19, 1 << 19))
    at.fail(3, "Cannot write file 'new': File too large.", "encrypt", *key, "file", "new", preexec_fn=limit)
    at.fail(3, "Cannot write file 'new': File too large.", "base64", "file", "new", preexec_fn=limit)


def make_fail(call, descriptor):
    """A function that makes a system call fail from now on for a descriptor and larger ones, by a filter of the process."""
    class Program(ctypes.Structure):
        _fields_ = [("count", ctypes.c_ushort), ("filter", ctypes.c_char_p)]
    load, equals, at_least, end, fail_with, allow = 0x20, 0x15, 0x35, 0x06, 0x00050000, 0x7fff0000
    number_at, argument_at = 0, 16
    steps = ((load, 0, 0, number_at), (equals, 0, 3, call), (load, 0, 0, argument_at), (at_least, 0, 1, descriptor),
             (end, 0, 0, fail_with | errno.EIO), (end, 0, 0, allow))
    program = Program(len(steps), b"".join(struct.pack("HBBI", *step) for step in steps))

    def fail():
        libc = ctypes.CDLL(None)
        no_new_privileges, set_filter, from_program = 38, 22, 2
        libc.prctl(no_new_privileges, 1, 0, 0, 0)
        libc.prctl(set_filter, from_program, ctypes.byref(program))
    return fail


@case("FailingDisk_IsReportedAndLeavesNoFile", is_posix=True)
def check_failing_disk(at):
    if platform.machine() != "x86_64" or len(at.program) > 1:
        return  # the numbers of the calls are others, or an emulator makes them
    of_32_bits = at.read(at.program[0])[4] == 1
    close, fsync = (6, 118) if of_32_bits else (3, 74)
    of_files = 5  # the first after the standard streams and the pipe of interrupts
    at.write("file", LETTER)
    for call in (close, fsync):
        at.fail(3, "sarn base64: Cannot write file 'new': Input/output error.", "base64", "file", "new",
                preexec_fn=make_fail(call, of_files))


@case("ClosedPipe_IsReportedAndLeavesNoFile", is_posix=True)
def check_closed_pipe(at):
    at.write("file", make_bytes(1 << 20))
    for words in (("base64", "file"), ("digest", "sha1", "file"), ("algorithms", "--json")):
        reader, writer = os.pipe()
        os.close(reader)
        output = at.run(*words, status=3, stdout=writer)
        os.close(writer)
        expect("Cannot write file 'standard output': Broken pipe." in output, output)
    output = at.ask("bash", "-c", f"set -o pipefail; {at.shell_words} base64 file | head -c 10", status=3)
    expect(len(output) == 10, output)


@case("ClosedStreams_DoNotBecomeFiles", is_posix=True)
def check_closed_streams(at):
    at.write("file", LETTER)
    program = at.shell_words
    for close, status in (("<&-", 0), (">&-", 0), ("2>&-", 0), ("<&- >&- 2>&-", 0)):
        at.ask("bash", "-c", f"{program} base64 --force file new {close}", status=status)
        expect(at.read("new") == at.ask("base64", "-w64", "file"), f"{close}: it has other bytes")
    at.ask("bash", "-c", f"{program} digest sha1 <&-", status=3)
    at.ask("bash", "-c", f"{program} hmac sha1 --key file - <&-", status=3)
    at.ask("bash", "-c", f"{program} digest sha1 file >&-", status=3)
    at.ask("bash", "-c", f"{program} digest sha1 gone 2>&- >&-", status=3)


def start(at, *words, **options):
    return subprocess.Popen([*at.program, *words], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                            env=at.environment, **options)


def wait_for(condition):
    for _ in range(3000):
        if condition():
            return
        time.sleep(0.01)
    raise AssertionError("nothing happened for half a minute")


@case("Input_ThatPauses_IsProcessedAsFarAsItGoes", is_posix=True)
def check_pause(at):
    with start(at, "base64") as process:
        process.stdin.write(make_bytes(48 * 4096))
        process.stdin.flush()
        left = 65 * 4096
        while left > 0:
            expect(select.select([process.stdout], [], [], 30)[0], f"{left} characters are missing while the input is open")
            left -= len(os.read(process.stdout.fileno(), left))
        process.communicate()


@case("Memory_ThatIsExhausted_IsReported")
def check_exhausted(at):
    if b"__asan_init" in at.read(at.program[-1]) or b"__tsan_init" in at.read(at.program[-1]):
        return  # it reserves more address space than any limit allows

    def limit():  # not less, because an emulator takes more than a GiB
        resource.setrlimit(resource.RLIMIT_AS, (1 << 31, 1 << 31))
    with open("large", "wb") as file:
        file.truncate((1 << 31) - 65537)  # as large as the command takes it
    output = at.run("base64", "--decode", "large", status=3, preexec_fn=limit)
    expect(output == "sarn base64: The memory is exhausted.\n", output)


@case("Memory_DoesNotGrowWithTheFile")
def check_memory(at):
    at.write("key", bytes(32))
    # The address sanitizer keeps freed blocks.
    environment = {**at.environment, "ASAN_OPTIONS": "quarantine_size_mb=1"}
    used = {}
    for size in (1 << 20, 1 << 28):
        with open("zeros", "wb") as file:
            file.truncate(size)
        for words in (("digest", "crc32", "zeros"), ("encrypt", "--key", "key", "zeros", "-"), ("base64", "zeros")):
            with open("/dev/null", "wb") as nothing:
                process = subprocess.Popen([*at.program, *words], stdout=nothing, env=environment)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            expect(process.returncode == 0, words)
            used.setdefault(words, []).append(usage.ru_maxrss)
    for words, (small, large) in used.items():
        expect(large - small < 16384, f"{words}: {small} KiB for 1 MiB, {large} KiB for 256 MiB")
