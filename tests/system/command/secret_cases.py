# SPDX-License-Identifier: Apache-2.0
"""Secrets in the memory of the command after they were used."""
import contextlib
import fcntl
import hashlib
import os
import re
import termios

from case import LETTER, PASSWORD, case, expect, make_bytes
from habit_cases import start, wait_for
from terminal_cases import Terminal

PASSPHRASE = "for tests only"


def read_memory(process):
    """The memory of a process that it may write to."""
    with open(f"/proc/{process.pid}/maps", encoding="utf-8") as maps, open(f"/proc/{process.pid}/mem", "rb", 0) as memory:
        for start, end in re.findall(r"^(\w+)-(\w+) rw", maps.read(), re.M):
            with contextlib.suppress(OSError, OverflowError):
                # A sanitizer reserves much more than it uses.
                if int(end, 16) - int(start, 16) < 1 << 28:
                    memory.seek(int(start, 16))
                    yield memory.read(int(end, 16) - int(start, 16))


def count(process, secret):
    return sum(piece.count(secret) for piece in read_memory(process))


def encode_wide(text):
    """The text as characters of both sizes that systems have."""
    return text.encode("utf-16-le"), text.encode("utf-32-le")


def check(at, words, typed, absent, present):
    """Runs the command until it reads standard input, and searches its memory."""
    reader, writer = os.pipe()
    terminal = Terminal(at, *words, stdin=reader)
    os.close(reader)
    for prompt in typed:
        terminal.answer(prompt, (PASSPHRASE if "passphrase" in prompt else PASSWORD) + "\n")
    # More than fits into the pipe, so that it has read some when all is written.
    os.write(writer, make_bytes(1 << 19))
    expect(count(terminal.process, present) > 0, f"{words}: the search does not find what is in use")
    if typed and not at.is_windows:
        files = f"/proc/{terminal.process.pid}/fd"
        expect("/dev/tty" not in [os.readlink(f"{files}/{name}") for name in os.listdir(files)], "the terminal is open")
    for secret in [*absent, *(wide for text in absent for wide in encode_wide(text.decode()))]:
        expect(count(terminal.process, secret) == 0, f"{words}: {secret!r} is in memory")
    terminal.process.kill()
    os.close(writer)
    terminal.end()


@case("Password_OfAnySource_IsNotInMemoryWhileTheInputIsRead")
def check_passwords(at):
    def derive(password):
        return hashlib.pbkdf2_hmac("sha1", password.encode(), bytes.fromhex("00ff"), 1, 32)
    words = ("encrypt", "--salt", "00ff", "--iterations", "1", "-", "message")
    # A long one is not where the next blocks of memory are.
    for password in (PASSWORD, 10000 * PASSWORD):
        at.write("password", password + "\n")
        check(at, (*words, "--password-file", "password"), (), [PASSWORD.encode()], derive(password))
    if not at.is_windows:  # where Wine makes no console of a terminal if the input is a pipe
        check(at, words, ("The password: ", "The password again: "), [PASSWORD.encode()], derive(PASSWORD))


@case("TypedPassword_IsInMemoryOnceWhileItIsAskedForAgain")
def check_typed_password(at):
    at.write("letter", LETTER)
    terminal = Terminal(at, "encrypt", "--salt", "00ff", "letter", "message")
    terminal.answer("The password: ", PASSWORD + "\n")
    terminal.expect("The password again: ")
    counts = [count(terminal.process, text) for text in (PASSWORD.encode(), *encode_wide(PASSWORD))]
    terminal.process.kill()
    terminal.end()
    expect(counts == [1, 0, 0], f"its copies as bytes and as wide characters: {counts}")


@case("PassphraseAndKey_AreNotInMemoryWhileTheInputIsRead", is_posix=True)
def check_passphrases(at):
    at.write("passphrase", PASSPHRASE)
    key = str(at.keys / "rsa2048_encrypted_pkcs8_for_tests_only.pem")
    pem = at.read(key).splitlines()[5]
    content = make_bytes(100)
    for source, prompts in ((("--passphrase-file", "passphrase"), ()), ((), ("The passphrase: ",))):
        check(at, ("sign", "--key", key, *source, "--to", "signature", "-"), prompts, [PASSPHRASE.encode(), pem], content)


@case("HmacKey_IsInMemoryOnceWhileTheInputIsRead", is_posix=True)
def check_hmac_key(at):
    key = at.read(at.write("key", os.urandom(3000)))
    with start(at, "hmac", "sha1", "--key", "key") as process:
        process.stdin.write(LETTER)
        process.stdin.flush()
        wait_for(lambda: fcntl.ioctl(process.stdin, termios.FIONREAD, bytes(4)) == bytes(4))  # it has read the letter
        expect(count(process, key[1500:1532]) == 1, "the key is in memory more than once")
        process.kill()
