# SPDX-License-Identifier: Apache-2.0
"""The common part of the cases of the command."""
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys

# The checks by their names, and the names of those that Windows or Wine cannot run. tests/data/lane_exceptions.txt has
# the reasons.
CASES, POSIX_ONLY = {}, []
LETTER = b"Dear Ada,\nthis letter has no other copy.\n"
PASSWORD = "pässwörd öf thé tésts"
CIPHERS = {"aes256cbc": ("aes-256-cbc", 32, 16), "aes128cbc": ("aes-128-cbc", 16, 16), "bfcbc": ("bf-cbc", 16, 8),
           "cast128cbc": ("cast5-cbc", 16, 8)}
# Around the sizes of blocks and of the pieces in which the command reads.
SIZES = (0, 1, 15, 16, 17, 55, 56, 63, 64, 65, (1 << 17) - 1, 1 << 17, (1 << 17) + 1, (1 << 18) + 16, 1000003)


def case(name, is_posix=False):
    """Makes a case of a function."""
    def add(function):
        CASES[name] = function
        if is_posix:
            POSIX_ONLY.append(name)
        return function
    return add


def make_bytes(size):
    return (b"There is no other copy of these bytes.\n" * (1 + size // 39))[:size]


def expect(condition, problem):
    if not condition:
        raise AssertionError(problem)


def get_checker(at):
    """The module that runs the commands of pages."""
    sys.path.insert(0, str(at.source / "tests/system/recovery"))
    import check_commands  # pylint: disable=import-outside-toplevel
    return check_commands


class Place:
    """A folder in which a case runs the command."""

    def __init__(self, folder, source, program):
        self.folder, self.source, self.program = folder, source, [str(word) for word in program]
        self.shell_words = shlex.join(self.program)
        self.is_windows = self.program[-1].endswith(".exe")
        self.compared = 0
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        os.chdir(folder)
        self.keys = source / "tests/data/keys"
        # File names in arguments are UTF-8, in Wine too.
        self.environment = {**os.environ, "LC_ALL": "C.UTF-8"}

    def run(self, *words, status=0, stdin=b"", **options):
        """Runs the command, and returns its output and its messages as text or, with binary=True, its bytes."""
        binary = options.pop("binary", False)
        done = subprocess.run([*self.program, *words], input=None if "stdin_file" in options else stdin, check=False,
                              stdin=options.pop("stdin_file", None), stdout=options.pop("stdout", subprocess.PIPE),
                              stderr=subprocess.PIPE, env=self.environment, start_new_session=True, **options)
        messages = done.stderr.decode(errors="replace").replace("\r", "")
        expect(done.returncode == status, f"{words}: status {done.returncode} instead of {status}: {messages}"
                                          f"{done.stdout}")
        if binary or done.stdout is None:
            return done.stdout if binary else messages
        return done.stdout.decode("utf-8", "surrogateescape") + messages

    def fail(self, status, message, *words, **options):
        """Runs the command, which must fail with this status, write nothing, and show a text that ends with a word."""
        before = self.list()
        output = self.run(*words, status=status, **options)
        end = r"(?=[\s.:,;)]|$)" if message[-1].isalnum() else ""
        expect(re.search(re.escape(message) + end, output), f"{words}: there is no '{message}' in: {output}")
        expect(self.list() == before, f"{words}: it has left {set(self.list()) ^ set(before)}")

    def ask(self, *words, stdin=b"", status=0):
        """The output of another program."""
        done = subprocess.run(words, input=stdin, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False,
                              env=self.environment)
        expect(done.returncode == status, f"{words}: {done.returncode}: {done.stderr}")
        return done.stdout

    def openssl(self, *words, **options):
        """The output of openssl, with MD4 and the old ciphers."""
        is_old = self.ask("openssl", "version").startswith(b"OpenSSL 1.")
        legacy = () if is_old else ("-provider", "legacy", "-provider", "default")
        return self.ask("openssl", words[0], *legacy, *words[1:], **options)

    def same(self, ours, theirs, what):
        """Compares something with that of another program."""
        self.compared += 1
        expect(ours == theirs, f"{what}: ours is {ours!r:.200}, that of the other program {theirs!r:.200}")

    def prepare_examples(self):
        """Makes the files of the examples, and puts the command in the path."""
        bin_ = self.folder.parent / (self.folder.name + "-bin")
        shutil.rmtree(bin_, ignore_errors=True)
        bin_.mkdir()
        (bin_ / "sarn").write_text(f'#!/bin/sh\nexec {self.shell_words} "$@"\n')
        (bin_ / "sarn").chmod(0o755)
        os.environ["PATH"] = f"{bin_}:{os.environ['PATH']}"
        for name, target in (("private.pem", "rsa2048_for_tests_only.pem"), ("public.pem", "rsa2048_for_tests_only.pub.pem")):
            shutil.copy(self.keys / target, name)
        for name, content in (("letter.txt", LETTER), ("log.txt", b"123456"), ("password.txt", b"correct horse\n"),
                              ("backup.ini", b"[sources]\npath=/home/ada\ncipher=aes256cbc\n")):
            self.write(name, content)
        self.run("sign", "--key", "private.pem", "backup.ini")

    def write(self, name, content):
        pathlib.Path(name).write_bytes(content if isinstance(content, bytes) else content.encode())
        return name

    @staticmethod
    def read(name):
        return pathlib.Path(name).read_bytes()

    def list(self):
        return sorted(os.listdir(os.fsencode(self.folder)))
