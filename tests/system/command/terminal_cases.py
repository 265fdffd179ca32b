# SPDX-License-Identifier: Apache-2.0
"""The command at a terminal: secrets that are typed, and the progress bar."""
import os
import pty
import re
import select
import signal
import subprocess
import termios
import time

from case import LETTER, PASSWORD, case, expect


class Terminal:
    """A command at a terminal of its own."""

    def __init__(self, at, *words, **streams):
        self.master, slave = pty.openpty()
        self.shown, self.name = b"", os.ttyname(slave)
        streams = {"stdin": slave, "stdout": slave, "stderr": slave, **streams}

        def take_over():
            os.setsid()
            os.close(os.open(self.name, os.O_RDWR))  # becomes the controlling terminal
        self.process = subprocess.Popen([*at.program, *words], preexec_fn=take_over, env=at.environment,
                                        pass_fds=[slave], **streams)
        os.close(slave)

    def read(self, seconds=30.0):
        """Reads what is shown, and returns whether there was anything."""
        if not select.select([self.master], [], [], seconds)[0]:
            return False
        try:
            more = os.read(self.master, 65536)
        except OSError:  # the last program has closed it
            more = b""
        self.shown += more
        return more != b""

    def expect(self, text):
        while text.encode() not in self.shown:
            expect(self.read(), f"'{text}' is not in {self.shown}")
        self.shown = self.shown.partition(text.encode())[2]

    def has_echo(self):
        return bool(termios.tcgetattr(self.master)[3] & termios.ECHO)

    def type(self, text):
        expect(not self.has_echo(), "it shows what is typed")
        os.write(self.master, text.encode())

    def end(self):
        """Returns the status and the rest of the output."""
        while self.read():
            pass
        return self.process.wait(), self.shown.decode().replace("\r\n", "\n")


@case("TypedPassword_IsTakenTwiceWithoutEcho")
def check_password(at):
    at.write("letter", LETTER)
    terminal = Terminal(at, "encrypt", "--salt", "00ff", "letter", "message")
    terminal.expect("The password: ")
    terminal.type(PASSWORD + "\n")
    terminal.expect("The password again: ")
    terminal.type(PASSWORD + "\n")
    expect(terminal.end() == (0, "\n"), terminal.shown)
    plain = at.run("decrypt", "--salt", "00ff", "--password-fd", "0", "message", "-", stdin=PASSWORD.encode())
    expect(plain == LETTER.decode(), plain)
    terminal = Terminal(at, "decrypt", "--salt", "00ff", "message", "-")
    terminal.expect("The password: ")
    terminal.type(PASSWORD + "\n")
    expect(terminal.end() == (0, "\n" + LETTER.decode()), terminal.shown)


@case("TypedPasswords_ThatDiffer_AreRefused")
def check_difference(at):
    terminal = Terminal(at, "key", "--salt", "00", "key")
    terminal.expect("The password: ")
    terminal.type("one\n")
    terminal.expect("The password again: ")
    terminal.type("two\n")
    status, shown = terminal.end()
    expect(status == 2 and "the two are different" in shown and at.list() == [], shown)


@case("TypedPassphrase_SignsWithAnEncryptedKey")
def check_passphrase(at):
    key = str(at.keys / "rsa2048_encrypted_pkcs8_for_tests_only.pem")
    terminal = Terminal(at, "sign", "--key", key, at.write("letter", LETTER))
    terminal.expect("The passphrase: ")
    terminal.type("for tests only\n")
    expect(terminal.end() == (0, "\n") and b"letter.sig" in at.list(), terminal.shown)


@case("Prompt_ThatIsInterrupted_RestoresTheTerminal")
def check_interrupted_prompt(at):
    for _ in range(20):  # also an interrupt between the prompt and the wait for input
        terminal = Terminal(at, "key", "--salt", "00", "key")
        terminal.expect("The password: ")
        expect(not terminal.has_echo(), "it shows what is typed")
        keeper = os.open(terminal.name, os.O_RDWR | os.O_NOCTTY)
        terminal.process.send_signal(signal.SIGINT)
        expect(terminal.process.wait(timeout=30) == -signal.SIGINT, "not interrupted")
        expect(terminal.has_echo() and at.list() == [], "the terminal has no echo, or there is a file")
        os.close(keeper)


@case("Process_ThatWasStopped_ContinuesToRead")
def check_stopped(at):
    terminal = Terminal(at, "key", "--salt", "00", "key")
    terminal.expect("The password: ")
    for number in (signal.SIGSTOP, signal.SIGCONT):
        time.sleep(0.1)
        terminal.process.send_signal(number)
    terminal.type("a password\n")
    terminal.expect("The password again: ")
    terminal.type("a password\n")
    expect(terminal.end()[0] == 0 and at.list() == [b"key"], terminal.shown)


@case("Progress_OfWorkOverASecond_IsShownAtATerminalOnly")
def check_progress(at):
    for is_slow in (False, True):
        reader, writer = os.pipe()
        terminal = Terminal(at, "base64", "-", "new", "--force", stdin=reader)
        os.close(reader)
        for _ in range(8 if is_slow else 1):
            os.write(writer, bytes(1 << 16))
            time.sleep(0.4 if is_slow else 0)
        os.write(writer, bytes(1 << 18))
        os.close(writer)
        status, shown = terminal.end()
        drawn = re.search(r"\r\x1b\[K\d MiB  standard input(.|\n)*\r\x1b\[K$", shown)
        expect(status == 0 and bool(drawn) == is_slow, ascii(shown))


@case("Progress_InAPipe_IsNotShown")
def check_no_progress(at):
    with subprocess.Popen([*at.program, "digest", "sha1"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE) as process:
        for _ in range(4):
            process.stdin.write(bytes(1 << 18))
            process.stdin.flush()
            time.sleep(0.4)
        _, messages = process.communicate()
    expect(messages == b"", messages)
