# SPDX-License-Identifier: Apache-2.0
"""The command at a terminal: secrets that are typed, and the progress bar."""
import contextlib
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
        self.shown, self.last, self.name, self.is_windows = b"", b"", os.ttyname(slave), at.is_windows
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
        if self.is_windows:  # its console moves over spaces, and sends other orders
            self.shown = re.sub(rb"\x1b\[[?\d]*[A-Za-z]|\r", b"", self.shown.replace(b"\x1b[1C", b" "))
        return more != b""

    def expect(self, text):
        """Waits for a text. Moves all that is shown up to its end to `last`."""
        while text.encode() not in self.shown:
            expect(self.read(), f"'{text}' is not in {self.shown}")
        end = self.shown.index(text.encode()) + len(text.encode())
        self.last, self.shown = self.shown[:end], self.shown[end:]

    def has_echo(self):
        return bool(termios.tcgetattr(self.master)[3] & termios.ECHO)

    def type(self, text):
        for _ in range(1000 * self.is_windows):  # the console reads all keys itself, soon after it has written
            if not self.has_echo():
                break
            time.sleep(0.01)
        expect(not self.has_echo(), "it shows what is typed")
        os.write(self.master, (text.replace("\n", "\r") if self.is_windows else text).encode())

    def answer(self, prompt, text):
        self.expect(prompt)
        self.type(text)

    def end(self):
        """Returns the status and the rest of the output."""
        while self.read():
            pass
        return self.process.wait(), self.shown.decode().replace("\r\n", "\n")


@case("TypedPassword_IsTakenTwiceWithoutEcho")
def check_password(at):
    at.write("letter", LETTER)
    terminal = Terminal(at, "encrypt", "--salt", "00ff", "letter", "message")
    terminal.answer("The password: ", PASSWORD + "\n")
    terminal.answer("The password again: ", PASSWORD + "\n")
    expect(terminal.end() == (0, "\n"), terminal.shown)
    plain = at.run("decrypt", "--salt", "00ff", "--password-fd", "0", "message", "-", stdin=PASSWORD.encode())
    expect(plain == LETTER.decode(), plain)
    terminal = Terminal(at, "decrypt", "--salt", "00ff", "message", "-")
    terminal.answer("The password: ", PASSWORD + "\n")
    expect(terminal.end() == (0, "\n" + LETTER.decode()), terminal.shown)


@case("TypedPassword_OfManyLetters_IsTakenWhole")
def check_long_password(at):
    at.write("letter", LETTER)
    # In two bytes each, so that no letter is in two of the terminal's pieces, which Wine would decode one by one.
    password = 600 * "ä"
    at.run("encrypt", "--salt", "00ff", "--password-fd", "0", "letter", "message", stdin=password.encode())
    terminal = Terminal(at, "decrypt", "--salt", "00ff", "message", "-")
    terminal.answer("The password: ", password + "\n")
    expect(terminal.end() == (0, "\n" + LETTER.decode()), terminal.shown)


@case("TypedPasswords_ThatDiffer_AreRefused")
def check_difference(at):
    terminal = Terminal(at, "key", "--salt", "00", "key")
    terminal.answer("The password: ", "one\n")
    terminal.answer("The password again: ", "two\n")
    status, shown = terminal.end()
    expect(status == 2 and shown.endswith("\nsarn key: the two are different\n") and at.list() == [], shown)


@case("TypedPassphrase_SignsWithAnEncryptedKey")
def check_passphrase(at):
    key = str(at.keys / "rsa2048_encrypted_pkcs8_for_tests_only.pem")
    terminal = Terminal(at, "sign", "--key", key, at.write("letter", LETTER))
    terminal.answer("The passphrase: ", "for tests only\n")
    expect(terminal.end() == (0, "\n") and b"letter.sig" in at.list(), terminal.shown)


@case("Progress_OfAFileOfUnknownSize_IsTheAmount", is_posix=True)
def check_unknown_size(at):
    endless = "/proc/self/pagemap"  # says that it is empty
    if not os.path.exists(endless):
        return  # some systems in a sandbox have no such file
    terminal = Terminal(at, "digest", "crc32", endless)
    terminal.expect(" MiB  " + endless)
    terminal.process.send_signal(signal.SIGINT)
    expect(terminal.end()[0] == -signal.SIGINT, terminal.shown)


@case("Prompt_ThatIsInterrupted_RestoresTheTerminal", is_posix=True)
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


@case("CtrlC_AtAPrompt_EndsTheProcessAndLeavesNoFile")
def check_control_c(at):
    terminal = Terminal(at, "key", "--salt", "00", "key")
    terminal.answer("The password: ", "a password\x03\n")  # Wine waits for the end of the line
    status, shown = terminal.end()
    # Of STATUS_CONTROL_C_EXIT only the last byte passes Wine.
    expect(status == (0x3A if at.is_windows else -signal.SIGINT) and at.list() == [], (status, shown, at.list()))


@case("Process_ThatWasStopped_ContinuesToRead", is_posix=True)
def check_stopped(at):
    terminal = Terminal(at, "key", "--salt", "00", "key")
    terminal.expect("The password: ")
    for number in (signal.SIGSTOP, signal.SIGCONT):
        time.sleep(0.1)
        terminal.process.send_signal(number)
    terminal.type("a password\n")
    terminal.answer("The password again: ", "a password\n")
    expect(terminal.end()[0] == 0 and at.list() == [b"key"], terminal.shown)


@case("Progress_OfWorkOverASecond_IsShownAtATerminalOnly", is_posix=True)
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


def stop_while_it_reads(process, name):
    """Stops a process after it has read a part of a file, and returns how many bytes."""
    for _ in range(3000):
        for number in os.listdir(f"/proc/{process.pid}/fd"):
            with contextlib.suppress(OSError):
                if os.readlink(f"/proc/{process.pid}/fd/{number}").endswith(name):
                    process.send_signal(signal.SIGSTOP)
                    with open(f"/proc/{process.pid}/fdinfo/{number}", encoding="ascii") as file:
                        position = int(file.readline().split()[1])
                    if position > 0:
                        return position
                    process.send_signal(signal.SIGCONT)
        time.sleep(0.001)
    raise AssertionError("it did not read for some seconds")


@case("Progress_OfAFile_IsABarOfItsPart", is_posix=True)
def check_bar(at):
    size = 1 << 31
    for name in ("a name of more than thirty-six characters", "this name has just 36 characters ...", "a short name"):
        with open(name, "wb") as file:
            file.truncate(size)
        terminal = Terminal(at, "digest", "sha1", name)
        position = stop_while_it_reads(terminal.process, name)
        time.sleep(1.2)
        terminal.process.send_signal(signal.SIGCONT)
        part, most = position * 100 // size, position * 100 // size + 2  # the first piece after a second shows it
        while part < 5:
            terminal.expect("\r\x1b[K[")
            terminal.expect(name[-9:])
            bar = re.match(r"(#*\.*)\] (\d+) %  (.*)$", terminal.last.decode())
            expect(part <= int(bar[2]) <= most, f"{bar[2]} % after {part} %")
            part, most = int(bar[2]), 100
            expect(len(bar[1]) == 30 and part * 30 // 100 <= bar[1].count("#") <= (part + 1) * 30 // 100, bar[0])
            expect(bar[3] == (name if len(name) <= 36 else "..." + name[-33:]), bar[0])
        terminal.process.send_signal(signal.SIGINT)
        terminal.end()


@case("Input_FromATerminal_DoesNotBecomeTheControllingTerminal", is_posix=True)
def check_controlling(at):
    master, slave = pty.openpty()
    with subprocess.Popen([*at.program, "digest", "sha1", os.ttyname(slave)], start_new_session=True,
                          stdout=subprocess.PIPE, env=at.environment) as process:
        time.sleep(0.3)
        os.write(master, b"abc\x03\x04\x04")  # Ctrl-C of a controlling terminal would end it
        output, _ = process.communicate()
    expect(process.returncode == 0 and b"  " + os.ttyname(slave).encode() in output, (process.returncode, output))


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
