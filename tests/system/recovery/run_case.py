#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Restores backups with tools/recover.py where there is nothing but Python and openssl: whole ones and damaged ones.

usage: run_case.py --list                          prints the names of the cases
       run_case.py write FOLDER DEMO               writes a backup with each cipher
       run_case.py NAME FOLDER BACKUPS SOURCE_DIR  runs a case in FOLDER, on copies of these backups
"""
import hashlib
import importlib
import pathlib
import random
import re
import shutil
import subprocess
import sys
import types

from backup import CIPHERS, DAMAGED, PASSWORD, WHOLE, Backup, read_tree, write_backups
from cases import CASES

# Runs a program, and then prints the libraries that its process has loaded.
RUNNER = """
import runpy, sys
sys.argv = sys.argv[1:]
try:
    runpy.run_path(sys.argv[0], run_name="__main__")
finally:
    print(*{line.split()[-1] for line in open("/proc/self/maps") if ".so" in line}, sep="\\n", file=open("maps", "w"))
"""


def expect(condition, problem):
    if not condition:
        raise SystemExit(problem)


class Place:
    """A folder with a backup and all that is needed to restore it."""

    def __init__(self, folder, backups, source, cipher):
        shutil.rmtree(folder, ignore_errors=True)
        keys = source / "examples/demo/keys"
        self.folder, self.recover = folder, source / "tools/recover.py"
        self.other = backups / ("bfcbc" if cipher != "bfcbc" else "aes256cbc")
        self.another_key = source / "tests/data/keys/rsa2048_for_tests_only.pub.pem"
        self.backup = Backup(folder / "backup", keys / "demo_only.pem")
        shutil.copytree(backups / cipher, self.backup.folder)
        self.target, self.outside, self.programs = (folder / name for name in ("target", "outside", "programs"))
        for made in (self.target, self.outside, self.programs):
            made.mkdir()
        (self.programs / "python3").symlink_to(sys.executable)
        (self.programs / "openssl").symlink_to(shutil.which("openssl"))
        self.password, self.public_key = folder / "password", folder / "public.pem"
        self.password.write_text(PASSWORD + "\n", encoding="utf-8")
        shutil.copy(keys / "demo_only.pub.pem", self.public_key)

    def replace_openssl(self, option, message):
        """Puts a command in its place that fails if it is given the option."""
        command = self.programs / "openssl"
        original = command.resolve()
        command.unlink()
        command.write_text(f'#!/bin/sh\ncase "$*" in *{option}*) echo "{message}" >&2; exit 1 ;; esac\n'
                           f'exec {original} "$@"\n')
        command.chmod(0o755)

    def run(self, *words, stdin=""):
        """Runs recover.py; the libraries in its process are not ours."""
        done = subprocess.run([str(self.programs / "python3"), "-c", RUNNER, self.recover, *words], cwd=self.folder,
                              env={"PATH": str(self.programs)}, input=stdin, text=True, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, check=False, start_new_session=True)  # without a terminal
        libraries = (self.folder / "maps").read_text()
        expect("libc.so" in libraries, "the list of libraries is not one")
        expect(not re.search("libsarn|libul", libraries), f"it has loaded our libraries:\n{libraries}")
        return done

    def restore(self):
        return self.run("backup", "public.pem", "target", "password")

    def check_restored(self, expected):
        restored = read_tree(self.target)
        expect(restored == expected, f"restored are {sorted(restored)}, not {sorted(expected)}, or with other bytes")
        expect(not list(self.target.glob("recover-*")), "it has left a temporary folder")
        expect(not read_tree(self.outside), "it has written outside of the folder")


def check_whole(at, sources):
    done = at.restore()
    expect(done.returncode == 0, done.stdout)
    at.check_restored(sources)
    expect(f"{len(sources)} of {len(sources)} files are restored" in done.stdout, done.stdout)


def check_damaged_copies(at, sources):
    at.backup.damage_copies(at.other)
    copies = {name: at.backup.find_copy(name) for name in DAMAGED}
    done = at.restore()
    expect(done.returncode == 1, f"its exit status is {done.returncode}:\n{done.stdout}")
    at.check_restored({name: sources[name] for name in WHOLE})
    for name, copy in copies.items():
        expect(f"'{name}': {copy} " in done.stdout, f"it says nothing of '{name}':\n{done.stdout}")
    expect(f"{len(WHOLE)} of {len(sources)} files are restored" in done.stdout, done.stdout)


def check_case(at, case):
    case.damage(at)
    done = at.restore()
    expect(done.returncode == case.status and re.search(case.message, done.stdout),
           f"status {done.returncode} instead of {case.status}, or without '{case.message}':\n{done.stdout}")
    if at.target.is_dir():
        at.check_restored({name: name.encode() for name in case.restored})


def check_typed_password(at, sources):
    done = at.run("backup", "public.pem", "target", stdin=PASSWORD + "\n")
    expect(done.returncode == 0 and "Password: " in done.stdout, done.stdout)
    at.check_restored(sources)


def check_password_of_an_editor(at, _):
    at.backup.write_new(["a"])
    at.password.write_bytes(b"\xef\xbb\xbf" + PASSWORD.encode() + b"\r\nThis line is not the password.\r\n")
    done = at.restore()
    expect(done.returncode == 0, done.stdout)
    at.check_restored({"a": b"a"})


def check_largest_salt(at, _):
    at.backup.write_new(["a"], salt=str(2**64 - 1), hmac_salt=0)
    done = at.restore()
    expect(done.returncode == 0, done.stdout)
    at.check_restored({"a": b"a"})


def check_arguments(at, _):
    for words in ([], ["backup"], ["backup", "public.pem"], ["backup", "public.pem", "target", "password", "more"]):
        done = at.run(*words)
        expect(done.returncode == 2 and "usage: recover.py BACKUP" in done.stdout, f"{words}: {done.stdout}")
    at.check_restored({})


def check_openssl(at, _):
    linked = subprocess.run(["ldd", at.programs / "openssl"], env={"PATH": "/usr/bin:/bin"}, check=True, text=True,
                            stdout=subprocess.PIPE).stdout
    expect("libcrypto" in linked and not re.search("libsarn|libul", linked), linked)


WORDS = [b"\n", b"\r", b"=", b"[", b"]", b"[files]\n", b"[backup]\n", b"[hmac]\n", b"0=", b"-1", b"../", b"/..", b"/", b"..", b".",
         b"\0", b" ", b"\xff", b"\xef\xbb\xbf", b"99999999999999999999", b"1_0", "١".encode(), b"cipher=null\n", b"a" * 5000]


def change(text, numbers):
    """Replaces some parts of a text by words of the format, by a bit more or less, or by other parts."""
    for _ in range(numbers.randint(1, 4)):
        start = numbers.randrange(len(text) + 1)
        if numbers.random() < 0.5:  # the end of a line
            start = text.find(b"\n", start) % (len(text) + 1)
        end = numbers.choice((start, start + 1, numbers.randint(start, len(text))))
        part = numbers.choice((numbers.choice(WORDS), text[end:end + 20], bytes([numbers.randrange(256)]), b""))
        text = text[:start] + part + text[end:]
    return text


def derive_no_key(_, password, salt, iterations, dklen=20):
    """Takes no time, and refuses the numbers that the real function refuses."""
    if not 0 < iterations < 2**31:
        raise (ValueError if iterations < 2**63 else OverflowError)("iterations")
    return bytes(dklen or 20)


def load_recover(path, texts):
    """The module, with any text verified."""
    sys.path.insert(0, str(pathlib.Path(path).parent))
    recover = importlib.import_module("recover")
    recover.read_signed = lambda path, _: texts[path.name]
    recover.check_hmac = lambda *_: None
    recover.hashlib = types.SimpleNamespace(pbkdf2_hmac=derive_no_key, sha1=hashlib.sha1)
    return recover


def check_changed_texts(at, _):
    at.backup.write_new(["a", "folder/b", "c"])
    originals = {name: (at.backup.folder / name).read_bytes() for name in ("backup.ini", "manifest.ini")}
    texts = dict(originals)
    recover = load_recover(at.recover, texts)
    numbers, opened, refused = random.Random(22), 0, 0
    for _ in range(20000):
        texts.update((name, change(text, numbers) if numbers.random() < 0.7 else text) for name, text in originals.items())
        try:
            cipher, _, files = recover.open_backup(at.backup.folder, at.public_key, at.password)
        except recover.NotVerified:
            refused += 1
            continue
        opened += 1
        expect(cipher in recover.CIPHERS, f"the cipher {cipher} from {texts}")
        for _, name in files:
            try:
                place = recover.find_place(at.target, name)
            except (recover.NotVerified, OSError):
                continue
            expect(place != at.target and at.target in place.parents and ".." not in place.parts, f"{name!r}: {place}")
    expect(opened > 2000 and refused > 2000, f"{opened} opened, {refused} refused: the changes are of one kind only")
    at.check_restored({})


CHECKS = {f"{name}/{cipher}": (check, cipher) for cipher in CIPHERS for name, check in (
    ("WholeBackup_IsRestored", check_whole), ("DamagedCopies_AreRefusedAndTheOthersRestored", check_damaged_copies))}
CHECKS["TypedPassword_IsTaken"] = (check_typed_password, "null")
CHECKS["PasswordFileOfAnEditor_IsRead"] = (check_password_of_an_editor, "null")
CHECKS["LargestSalt_IsFollowedByZero"] = (check_largest_salt, "null")
CHECKS["WrongArguments_AreRefused"] = (check_arguments, "null")
CHECKS["TextsChangedAtRandom_AreRefusedOrLeadBelowTheTarget"] = (check_changed_texts, "null")
CHECKS["OpensslCommand_IsNotOurs"] = (check_openssl, "null")


def main(words):
    if words == ["--list"]:
        print(*CHECKS, *(f"IsRefused/{case.name}" for case in CASES), sep="\n")
        return
    name, folder, *rest = words
    folder = pathlib.Path(folder).resolve()
    if name == "write":
        write_backups(folder, rest[0])
        return
    backups, source = (pathlib.Path(word) for word in rest)
    check, cipher = CHECKS.get(name, (None, "aes256cbc"))
    at = Place(folder, backups, source, cipher)
    if check:
        check(at, read_tree(backups / "sources"))
    else:
        check_case(at, next(case for case in CASES if name == f"IsRefused/{case.name}"))


if __name__ == "__main__":
    main(sys.argv[1:])
