# SPDX-License-Identifier: Apache-2.0
"""Backups for the cases: those of the demo, which are copied and damaged, and some that no demo would write."""
import base64
import hashlib
import hmac
import pathlib
import re
import shutil
import subprocess
import zlib

CIPHERS = ("aes256cbc", "aes128cbc", "bfcbc", "cast128cbc", "null")
PASSWORD = "pässword of the tests"
# Files that stay whole, in sizes around those of blocks and pieces, under names that are not easy.
WHOLE = {"empty": 0, "one": 1, "block less one": 15, "block": 16, "folder/below/block and one": 17,
         "folder/piece": 1 << 16, "folder/two pieces": (1 << 20) + 1, "Größe 😀": 70001, "-d": 10, "a=b;c#d": 11,
         '"quoted" %s $HOME': 12, "two  spaces": 13, "[hmac]": 14}


def flip(data, position):
    return data[:position] + bytes([data[position] ^ 1]) + data[position + 1:]


# What becomes of the stored copy of the file of this name.
DAMAGES = {
    "cut by a byte": lambda copy: copy[:-1],
    "cut by a block": lambda copy: copy[:-16],
    "cut to the IV": lambda copy: copy[:16],
    "cut in the IV": lambda copy: copy[:5],
    "cut to nothing": lambda copy: b"",
    "first byte changed": lambda copy: flip(copy, 0),
    "middle byte changed": lambda copy: flip(copy, len(copy) // 2),
    "last byte changed": lambda copy: flip(copy, len(copy) - 1),
    "grown by a byte": lambda copy: copy + b"1",
    "grown by a block": lambda copy: copy + bytes(16),
    "two blocks exchanged": lambda copy: copy[:32] + copy[48:64] + copy[32:48] + copy[64:],
}
# Names of further ones, which more than a copy's own bytes are needed for.
EXCHANGED, OF_ANOTHER_BACKUP, MISSING, FOLDER = "exchanged", "of another backup", "missing", "replaced by a folder"
DAMAGED = [*DAMAGES, EXCHANGED, OF_ANOTHER_BACKUP, MISSING, FOLDER]


def run(*words, **options):
    return subprocess.run(words, check=True, stdout=subprocess.PIPE, **options).stdout


def write_sources(folder):
    for name, size in [*WHOLE.items(), *((name, 1000) for name in DAMAGED)]:
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes((f"{name} of which there is no other copy\n".encode() * (1 + size // 30))[:size])


def write_backups(folder, demo):
    """Runs the demo with each cipher."""
    shutil.rmtree(folder, ignore_errors=True)
    write_sources(folder / "sources")
    for cipher in CIPHERS:
        run(demo, folder / "sources", "--cipher", cipher, "--password", PASSWORD, "--keep", folder / cipher)


class Backup:
    """A backup that a case damages."""

    def __init__(self, folder, private_key):
        self.folder, self.private_key = folder, private_key

    def write(self, name, content):
        (self.folder / name).write_bytes(content if isinstance(content, bytes) else content.encode())

    def change(self, name, change):
        self.write(name, change((self.folder / name).read_bytes()))

    def remove(self, name):
        (self.folder / name).unlink()

    def find_copy(self, name):
        """The name of the stored copy of a file."""
        manifest = (self.folder / "manifest.ini").read_text(encoding="utf-8")
        return re.search(f"^(\\d+)=\\w+ {re.escape(name)}$", manifest, re.M)[1] + ".encrypted"

    def damage_copies(self, other):
        """Damages each stored copy as the name of its file says. `other` is a backup of the same files."""
        for name, change in DAMAGES.items():
            self.change(self.find_copy(name), change)
        self.write(self.find_copy(EXCHANGED), (self.folder / self.find_copy("folder/piece")).read_bytes())
        shutil.copy(other / self.find_copy(OF_ANOTHER_BACKUP), self.folder / self.find_copy(OF_ANOTHER_BACKUP))
        self.remove(self.find_copy(MISSING))
        self.remove(self.find_copy(FOLDER))
        (self.folder / self.find_copy(FOLDER)).mkdir()

    def write_signed(self, name, content):
        """Signs what nobody should, with the key of the demo."""
        self.write(name, content)
        signature = run("openssl", "dgst", "-sha1", "-sign", self.private_key, self.folder / name)
        self.write(name + ".sig", base64.encodebytes(signature))

    def write_new(self, names, password=PASSWORD, cipher="null", salt="1", hmac_salt=2, iterations="1", mac=None):
        """Writes a backup with a file of each name, signed and with the right HMAC: only what it says is wrong."""
        self.write_signed("backup.ini", f"[sources]\ncipher={cipher}\n")
        manifest = f"[backup]\ncipher={cipher}\nsalt={salt}\niterations={iterations}\n[files]\n"
        for number, name in enumerate(names):
            self.write(f"{number}.encrypted", name)
            manifest += f"{number}={compute_digest(name.encode())} {name}\n"
        if mac is None:
            key = hashlib.pbkdf2_hmac("sha1", password.encode(), hmac_salt.to_bytes(8, "little"), 1, 20)
            mac = base64.b64encode(hmac.digest(key, manifest.encode(), "sha1")).decode()
        self.write_signed("manifest.ini", f"{manifest}[hmac]\nsha1={mac}\n")


def compute_digest(data):
    md4 = run("openssl", "dgst", "-provider", "legacy", "-provider", "default", "-md4", "-binary", input=data)
    return (md4 + hashlib.sha1(data).digest() + zlib.adler32(data).to_bytes(4, "little")).hex()


def read_tree(folder):
    """The content of each file below a folder, links not followed, by its name."""
    return {str(path.relative_to(folder)): path.read_bytes() for path in sorted(folder.rglob("*"))
            if path.is_file() and not path.is_symlink()}
