#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Restores a backup without the library: with Python's standard library and the openssl command.

usage: recover.py BACKUP PUBLIC_KEY TARGET [PASSWORD_FILE]

BACKUP is a folder that "./dev demo --keep BACKUP" wrote. The owner of PUBLIC_KEY must have signed its configuration and
its manifest, which carries an HMAC under the password: the first line of PASSWORD_FILE, or typed in. Each file is
decrypted in the folder TARGET, and gets its name there if its digest is right. Nothing is overwritten. A message says
why a file cannot be restored; the others are. Other users of the machine can see the key while openssl decrypts, since
it is an argument: recover on a machine that is yours alone.

Exit status: 0 all files are restored, 1 something is not as it was backed up, 2 wrong arguments, 3 any other failure.
"""
import base64
import functools
import getpass
import hashlib
import hmac
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import zlib

# The name of each cipher in openssl, and the sizes of its key and IV in bytes. The null cipher takes any key.
CIPHERS = {
    "aes256cbc": ("aes-256-cbc", 32, 16),
    "aes128cbc": ("aes-128-cbc", 16, 16),
    "bfcbc": ("bf-cbc", 16, 8),
    "cast128cbc": ("cast5-cbc", 16, 8),
    "null": ("none", None, 0),
}


class NotVerified(Exception):
    """Something is not as it was backed up."""


def run_openssl(*words, sign="(?!)", meaning="", **options):
    """Returns the output. A failure whose message matches `sign` (by default none does) is the backup's fault."""
    done = subprocess.run(["openssl", *words], capture_output=True, check=False, **options)
    if done.returncode != 0:
        message = (done.stdout + done.stderr).decode(errors="replace").strip()
        raise NotVerified(meaning) if re.search(sign, message, re.I) else OSError(f"openssl {words[0]}: {message}")
    return done.stdout


@functools.lru_cache
def get_legacy_options():
    """Since version 3, openssl has MD4, Blowfish and CAST-128 in a provider that must be asked for."""
    is_old = run_openssl("version").startswith(b"OpenSSL 1.")
    return () if is_old else ("-provider", "legacy", "-provider", "default")


def require(path):
    if not path.is_file():
        raise NotVerified(f"{path.name} is missing")
    return path


def read_signed(path, public_key):
    """Reads a file and verifies the bytes that were read, so that nobody can exchange the file in between."""
    content = require(path).read_bytes()
    base64_file = require(path.with_name(path.name + ".sig"))
    with tempfile.TemporaryDirectory() as scratch:
        signature = pathlib.Path(scratch, "signature")
        run_openssl("base64", "-d", "-in", base64_file, "-out", signature)
        run_openssl("dgst", "-sha1", "-verify", public_key, "-signature", signature, input=content,
                    sign="verif|reading signature", meaning=f"{path.name} does not match its signature")
    return content


def read_values(content):
    """The values of INI text by section and name."""
    values, section = {}, ""
    for line in re.split(r"\r\n|\r|\n", content.decode("utf-8-sig")):
        line = line.strip(" \t")
        if line.startswith("[") and line.endswith("]"):
            section = line[1:-1]
        elif line and line[0] not in ";#":
            name, _, value = line.partition("=")
            values[section, name.rstrip(" \t")] = value.lstrip(" \t")
    return values


def read_password(path):
    """The password in UTF-8, without the byte order mark and the line end of its file."""
    if path is None:
        return getpass.getpass("Password: ").encode()
    return re.split(rb"[\r\n]", path.read_bytes())[0].removeprefix(b"\xef\xbb\xbf")


def check_hmac(content, key):
    """The last section of a manifest is the HMAC of everything before it."""
    before, _, after = content.rpartition(b"[hmac]\n")
    expected = b"sha1=" + base64.b64encode(hmac.digest(key, before, "sha1")) + b"\n"
    if not hmac.compare_digest(after, expected):
        raise NotVerified("the password is wrong, or manifest.ini was written with another one")


def open_backup(backup, public_key, password_file):
    """The cipher, its key, and (digest, name) of each stored file, after everything but these files was verified."""
    signed_configuration = read_signed(backup / "backup.ini", public_key)
    content = read_signed(backup / "manifest.ini", public_key)
    try:
        configuration, values = read_values(signed_configuration), read_values(content)
        cipher, salt, iterations = (values["backup", name] for name in ("cipher", "salt", "iterations"))
        files = [value.partition(" ")[::2] for (section, _), value in values.items() if section == "files"]
        if cipher != configuration["sources", "cipher"] or cipher not in CIPHERS:
            raise NotVerified(f"the cipher '{cipher}' is unknown, or backup.ini names another one")
        password = read_password(password_file)
        derive = functools.partial(hashlib.pbkdf2_hmac, "sha1", password, iterations=int(iterations))
        key_salt, hmac_salt = ((number % 2**64).to_bytes(8, "little") for number in (int(salt), int(salt) + 1))
        check_hmac(content, derive(salt=hmac_salt, dklen=20))
        return cipher, derive(salt=key_salt, dklen=CIPHERS[cipher][1]), files
    except (KeyError, ValueError, OverflowError) as error:
        raise NotVerified(f"backup.ini or manifest.ini is signed but has a wrong value: {error}") from None


def decrypt(copy, cipher, key, part):
    """Decrypts a stored file, which starts with its IV, to a new file."""
    name, _, iv_size = CIPHERS[cipher]
    with copy.open("rb", buffering=0) as stored:  # so that openssl continues after the IV
        iv = stored.read(iv_size).hex()
        run_openssl("enc", "-d", "-" + name, "-K", key.hex(), "-iv", iv, *get_legacy_options(), "-out", part,
                    stdin=stored, sign="bad decrypt", meaning=f"{copy.name} was cut or changed")


def digest(path):
    """MD4, SHA-1 and Adler-32 one after the other, in hexadecimal digits."""
    sha1, adler32 = hashlib.sha1(), 1
    with path.open("rb") as file:
        while piece := file.read(1 << 20):
            sha1.update(piece)
            adler32 = zlib.adler32(piece, adler32)
    md4 = run_openssl("dgst", "-md4", "-binary", *get_legacy_options(), path)
    return (md4 + sha1.digest() + adler32.to_bytes(4, "little")).hex()


def find_place(target, name):
    """Where a file goes: below the target, whatever its name is and wherever links there lead."""
    path = pathlib.PurePath(name)
    if not path.parts or path.anchor or ".." in path.parts or "\0" in name:
        raise NotVerified("the name leads out of the folder")
    place = target / path
    if os.path.realpath(place.parent) != str(place.parent):
        raise NotVerified("the name leads through a link")
    if os.path.lexists(place):
        raise FileExistsError("it exists already")
    return place


def restore(copy, cipher, key, expected, target, name):
    place = find_place(target, name)
    with tempfile.TemporaryDirectory(prefix="recover-", dir=target) as scratch:
        part = pathlib.Path(scratch, "part")
        decrypt(require(copy), cipher, key, part)
        if digest(part) != expected:
            raise NotVerified(f"{copy.name} was cut, changed or exchanged")
        place.parent.mkdir(parents=True, exist_ok=True)
        part.rename(place)


def report(problem, subject="recover.py"):
    """Prints a problem, and returns the exit status for it."""
    print(f"{subject}: {str(problem) or 'interrupted'}", file=sys.stderr)
    return 1 if isinstance(problem, NotVerified) else 3


def recover(backup, public_key, target, password_file=None):
    """Restores what is as it was backed up. Returns the exit status."""
    cipher, key, files = open_backup(backup, public_key, password_file)
    target.mkdir(parents=True, exist_ok=True)
    target = target.resolve()
    status, restored = 0, 0
    for number, (expected, name) in enumerate(files):
        try:
            restore(backup / f"{number}.encrypted", cipher, key, expected, target, name)
            restored += 1
        except (NotVerified, OSError) as problem:
            status = max(status, report(problem, repr(name)))
    print(f"{restored} of {len(files)} files are restored, each with the digest of its original.")
    return status


def main(words):
    if len(words) not in (3, 4):
        print(__doc__.split("\n\n")[1], file=sys.stderr)
        return 2
    try:
        return recover(*(pathlib.Path(word).absolute() for word in words))
    except (NotVerified, OSError, KeyboardInterrupt) as problem:
        return report(problem)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
