# SPDX-License-Identifier: Apache-2.0
"""What tools/recover.py must refuse, besides damaged copies."""
import collections
import re
import shutil

from backup import flip

# `damage` changes a backup in the folder of the case, and perhaps the folder that it is restored to. Then come the exit
# status, a pattern of the message, and the files that are restored, or were there before: each contains its name.
Case = collections.namedtuple("Case", "name damage status message restored")

CASES = []


def add(name, damage, status, message, restored=()):
    CASES.append(Case(name, damage, status, message, restored))


# Damage to the files that are signed, and to their signatures.
for title, file, other in (("Configuration", "backup.ini", "manifest.ini"), ("Manifest", "manifest.ini", "backup.ini")):
    wrong = f"recover.py: {file} does not match its signature"
    add(f"{title}WhoseByteWasChanged",
        lambda at, f=file: at.backup.change(f, lambda data: flip(data, len(data) // 2)), 1, wrong)
    add(f"{title}ThatWasCut", lambda at, f=file: at.backup.change(f, lambda data: data[:-1]), 1, wrong)
    add(f"{title}ThatWasEmptied", lambda at, f=file: at.backup.write(f, ""), 1, wrong)
    add(f"{title}ThatIsMissing", lambda at, f=file: at.backup.remove(f), 1, f"recover.py: {file} is missing")
    add(f"{title}WithoutASignature", lambda at, f=file: at.backup.remove(f + ".sig"), 1, f"{file}.sig is missing")
    add(f"{title}WhoseSignatureWasChanged",
        lambda at, f=file: at.backup.change(f + ".sig", lambda data: data.replace(data[40:44], b"AAAA")), 1, wrong)
    add(f"{title}WhoseSignatureWasCut",
        lambda at, f=file: at.backup.change(f + ".sig", lambda data: data[:65]), 1, wrong)
    add(f"{title}WhoseSignatureIsNotBase64", lambda at, f=file: at.backup.write(f + ".sig", "no signature\n"), 1, wrong)
    add(f"{title}WithTheOthersSignature", lambda at, f=file, other=other:
        shutil.copy(at.backup.folder / (other + ".sig"), at.backup.folder / (f + ".sig")), 1, wrong)


def exchange(names):
    def damage(at):
        for name in names:
            shutil.copy(at.other / name, at.backup.folder)
    return damage


add("ConfigurationOfAnotherBackup", exchange(["backup.ini", "backup.ini.sig"]), 1, "backup.ini names another one")
add("ManifestOfAnotherBackup", exchange(["manifest.ini", "manifest.ini.sig"]), 1, "backup.ini names another one")
add("CopiesOfAnotherBackup",
    lambda at: [shutil.copy(path, at.backup.folder) for path in at.other.glob("*.encrypted")], 1,
    r"'folder/piece': \d+\.encrypted was cut")

# Keys and passwords.
add("AnotherPassword", lambda at: at.password.write_text("another password\n"), 1, "the password is wrong")
add("EmptyPassword", lambda at: at.password.write_text(""), 1, "the password is wrong")
add("AnotherPublicKey", lambda at: shutil.copy(at.another_key, at.public_key), 1, "backup.ini does not match its")
add("PublicKeyThatIsNone", lambda at: at.public_key.write_text("no key"), 3, "public key")
add("PublicKeyThatIsMissing", lambda at: at.public_key.unlink(), 3, "public key")

# Values that the owner of the key signed. The files are such that nothing but the value is wrong.
add("HMACThatIsWrong", lambda at: at.backup.write_new(["a"], mac="A" * 27 + "="), 1, "the password is wrong")
add("HMACThatIsMissing", lambda at:
    at.backup.write_signed("manifest.ini", "[backup]\ncipher=aes256cbc\nsalt=1\niterations=1\n"), 1,
    "the password is wrong")
add("CipherThatIsUnknown", lambda at: at.backup.write_new(["a"], cipher="rot13"), 1, "the cipher 'rot13' is unknown")
for title, value in (("Missing", ""), ("Zero", "0"), ("Negative", "-1"), ("NoNumber", "many"), ("Huge", str(2**64))):
    add(f"IterationsThatAreWrong/{title}", lambda at, v=value: at.backup.write_new(["a"], iterations=v), 1,
        "has a wrong value")
add("SaltThatIsWrong", lambda at: at.backup.write_new(["a"], salt="pepper"), 1, "has a wrong value")
add("ManifestWithoutValues", lambda at: at.backup.write_signed("manifest.ini", "[files]\n"), 1, "has a wrong value")
add("ManifestThatIsNotUTF8", lambda at: at.backup.write_signed("manifest.ini", b"[backup]\ncipher=\xff\n"), 1,
    "has a wrong value")

# Names that lead elsewhere. The last file is restored in any case.
HOSTILE = ["../outside/a", "a/../../outside/a", "a/../b", "/tmp/sarn-recovery", "//a", ".", "..", "./", "/", "", "a\0b"]
add("NamesThatLeadOut", lambda at: at.backup.write_new([*HOSTILE, "last"]), 1,
    "\n".join(re.escape(f"{name!r}: the name leads out of the folder") for name in HOSTILE), ["last"])
add("LinkToAFolder",
    lambda at: (at.backup.write_new(["link/a", "last"]), (at.target / "link").symlink_to(at.outside)), 1,
    "'link/a': the name leads through a link", ["last"])
add("LinkToAFile",
    lambda at: (at.backup.write_new(["link", "last"]), (at.target / "link").symlink_to(at.outside / "a")), 3,
    "'link': it exists already", ["last"])
add("NameOfAnExistingFile", lambda at: (at.backup.write_new(["a", "last"]), (at.target / "a").write_text("a")), 3,
    "'a': it exists already", ["a", "last"])
add("NameOfAnExistingFolder", lambda at: (at.backup.write_new(["a", "last"]), (at.target / "a").mkdir()), 3,
    "'a': it exists already", ["last"])
add("NameOfTwoFiles", lambda at: at.backup.write_new(["a", "a", "last"]), 3, "'a': it exists already", ["a", "last"])
add("NameBelowAFile", lambda at: at.backup.write_new(["a", "a/b", "last"]), 3, "'a/b': ", ["a", "last"])
add("NameThatIsTooLong", lambda at: at.backup.write_new(["a" * 300, "last"]), 3, "'aaa.*: .*too long", ["last"])

# Failures for which the backup has no fault.
add("FolderWithoutABackup", lambda at: shutil.rmtree(at.backup.folder), 1, "backup.ini is missing")
add("TargetThatIsAFile", lambda at: (at.target.rmdir(), at.target.write_text("")), 3, "recover.py: .*File exists")
add("MachineWithoutOpenssl", lambda at: (at.programs / "openssl").unlink(), 3, "recover.py: .*'openssl'")
for title, option, message in (("LegacyProvider", "legacy", "unable to load provider legacy"),
                               ("SHA1InSignatures", "-verify", "Error setting context: invalid digest")):
    add(f"OpensslWithout{title}", lambda at, o=option, m=message: at.replace_openssl(o, m), 3, message)
add("PasswordFileThatIsMissing", lambda at: at.password.unlink(), 3, "recover.py: .*password")
