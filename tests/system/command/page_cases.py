# SPDX-License-Identifier: Apache-2.0
"""The help, the page, the manual, the completion, and the lists of algorithms."""
import json
import pathlib
import re
import sys

from case import case, expect, get_checker

COMMANDS = ("digest", "state", "encrypt", "decrypt", "key", "sign", "verify", "config check", "config list", "config get",
            "config sign", "hmac", "base64", "algorithms")


@case("Help_OfEachCommand_HasAnExampleThatWorks", is_posix=True)
def check_help(at):
    at.prepare_examples()
    for command in COMMANDS:
        text = at.run(*command.split(), "--help")
        expect(re.search(rf"^Usage: sarn {command} ", text, re.M), text)
        example = re.search(r"^Example:\n((?:  .*\n)+)", text, re.M)
        expect(example, f"{command} has no example")
        lines = re.sub(r"^  ", "", example[1], flags=re.M)
        expect(lines.startswith("$ ") and "sarn " + command in lines, lines)
        problems = list(get_checker(at).check_console(lines))
        expect(not problems, "\n".join(problems))
        for name in ("backup.key", "letter.encrypted", "letter.txt.sig", "log.state"):
            pathlib.Path(name).unlink(missing_ok=True)
    listed = set(re.findall(r"^  (\w+)  ", at.run("--help").partition("\nCommands:\n")[2], re.M))
    expect(listed == {command.split()[0] for command in COMMANDS}, listed)


@case("Help_OfEachCommand_FitsATerminal")
def check_width(at):
    for command in ("", *COMMANDS):
        for line in at.run(*command.split(), "--help").splitlines():
            expect(len(line) <= 120, f"{len(line)} characters: {line}")


@case("Page_ShowsWhatItsCommandsPrint")
def check_page(at):
    at.prepare_examples()
    count, problems = get_checker(at).check((at.source / "docs/command.md").read_text(encoding="utf-8"))
    expect(not problems and count > 5, "\n".join(problems) or "there are no blocks")


@case("Page_NamesEachCommand")
def check_table(at):
    page = (at.source / "docs/command.md").read_text(encoding="utf-8")
    listed = re.findall(r"^\| `sarn ([\w ]+)`", page, re.M)
    expect(sorted(listed) == sorted(COMMANDS), listed)


def get_options(at, command):
    return re.findall(r"(--[\w-]+)", at.run(*command.split(), "--help").partition("Options:")[2].partition("\n\n")[0])


@case("Manual_HasEachCommandAndItsOptions")
def check_manual(at):
    manual = at.run("--print-manual")
    orders = set(re.findall(r"^[.'].*?(?= |$)", manual, re.M))
    expect(orders == {".TH", ".SH", ".B", ".I", ".PP", ".SS", ".TP", ".EX", ".EE"}, orders)
    manual = manual.replace("\\-", "-").replace("\\fB", "").replace("\\fR", "")
    sections = dict(re.findall(r"^\.SS sarn ([\w ]+)\n(.*?)(?=^\.SS|\Z)", manual, re.M | re.S))
    expect(sorted(sections) == sorted(COMMANDS), sorted(sections))
    for command, section in sections.items():
        for option in get_options(at, command):
            expect(re.search(rf"^\.TP\n(?:-\w,)?{option} ", section, re.M), f"{command}: {option} is missing")
        expect("\n.EX\n  $ " in section, f"{command} has no example")


def complete(at, *words):
    """The words that bash offers for the last one."""
    at.write("completion", at.run("--print-completion"))
    at.write("ask", 'source ./completion\nCOMP_WORDS=("$@")\nCOMP_CWORD=$(($# - 1))\n_sarn\necho "${COMPREPLY[*]}"\n')
    return at.ask("bash", "ask", "sarn", *words).decode().split()


@case("Completion_OffersCommandsOptionsAndIdentifiers")
def check_completion(at):
    expect(set(complete(at, "")) == {command.split()[0] for command in COMMANDS}, complete(at, ""))
    expect(complete(at, "config", "") == ["check", "list", "get", "sign"], "not the commands of config")
    expect("sha256" in complete(at, "digest", "sh"), "not the digests")
    expect(complete(at, "hmac", "") == ["md5", "sha1"], "not the hashes")
    expect(complete(at, "encrypt", "--cipher", "a") == ["aes256cbc", "aes128cbc"], "not the ciphers")
    expect(complete(at, "verify", "fi") == [] and complete(at, "digest", "sha1", "f") == [], "words instead of files")
    for command in COMMANDS:
        offered = complete(at, *command.split(), "--")
        expect(set(offered) == set(get_options(at, command)), f"{command}: {offered}")


@case("Algorithms_AreThoseOfTheRegistries")
def check_algorithms(at):
    listed = json.loads(at.run("algorithms", "--json"))
    ciphers = {row["id"]: (row["key size"], row["IV size"], row["block size"]) for row in listed if row["kind"] == "cipher"}
    digests = {row["id"]: row["size"] for row in listed if row["kind"] == "digest"}
    versions = {row["id"]: row["version"] for row in listed if row["kind"] == "version"}
    sys.path.insert(0, str(at.source / "tests/system/docs"))
    import check_registries  # pylint: disable=import-outside-toplevel
    rows = check_registries.read_page(at.source / "docs/ciphers.md")
    documented = {name: tuple(map(int, row[2:5])) for name, row in rows.items() if row[-1] == "yes"}
    expect(ciphers == documented, f"{ciphers} but the page has {documented}")
    rows = check_registries.read_page(at.source / "docs/digests.md")
    expect(sorted(digests) == sorted(rows), f"{digests} but the page has {rows}")
    expect(all(str(size) == rows[name][-1].split(",")[0] for name, size in digests.items()), f"{digests} but the page has {rows}")
    expect(versions["libcrypto"].startswith("OpenSSL ") and versions["sarn"].count(".") == 2, versions)
    text = at.run("algorithms")
    expect(all(f" {row['id']} " in text for row in listed), text)
