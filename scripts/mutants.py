# SPDX-License-Identifier: Apache-2.0
"""The changes that scripts/mutate.py makes to the sources."""
import pathlib
import re
import subprocess

import source_places

ROOT = pathlib.Path(__file__).resolve().parent.parent

# Code in which every mutant must be detected, by the names of its mutants: padding, loading of states, verification,
# trust in configurations, wiping, replacement of files.
CRITICAL = re.compile(
    r"src/(cipher/((openssl|null)_cipher|cipher_run)|digest/(openssl_digest|checksum_digest|digest_combiner|digest_support"
    r"|saved_record)|signature/)|include/sarn/(openssl_digest|digest_context|digest_combiner|saved_record|signed_config)"
    r"|ul/src/files/(posix|windows)/replace_file|ul/include/ul/secret_text|.*(wipe|Wipe|Crypt)")

OPERATORS = {
    " < ": " <= ", " <= ": " < ", " > ": " >= ", " >= ": " > ", " == ": " != ", " != ": " == ", " + ": " - ",
    " - ": " + ", " * ": " + ", " / ": " * ", " % ": " / ", " << ": " >> ", " >> ": " << ", " | ": " & ", " & ": " | ",
    " && ": " || ", " || ": " && ", " += ": " -= ", " -= ": " += ", "(!": "(", " !": " ", "++": "--",
}
# Functions and types, and others that a mistaken author could take for them.
SIBLINGS = {
    "toUTF8": "toLatin1", "toLatin1": "toUTF8", "fromUTF8": "fromLatin1", "TCryptBuffer": "TBuffer",
    "getUsed": "getAllocated", "getAllocated": "getUsed", "CInvalidArgError": "CError", "CBadStateError": "CError",
    "min": "max", "max": "min", "rfind": "find", "front": "back", "back": "front",
    "any_of": "all_of", "all_of": "any_of", "none_of": "any_of", "encodeUTF8": "encodeUTF8Lossy",
}
TOKENS = re.compile(r'"(?:[^"\\]|\\.)*"|\'(?:[^\'\\]|\\.)+\'|//.*|\b(?:true|false)\b|(?<![\w.])\d+(?![\w.])|'
                    r"(?P<flag> \| [A-Z][A-Z0-9_]{3,}\b)|\b(?P<sibling>" + "|".join(SIBLINGS) + r")(?=[(<])|"
                    + "|".join(re.escape(operator) for operator in OPERATORS))
MESSAGE = re.compile(r'"(?:[^"\\]|\\.)* (?:[^"\\]|\\.)*"')
STATEMENT = re.compile(r"^ +[\w*:>.-]+(?:[(.=]| [-+]?= |->|\+\+).*$")
DECLARATION = re.compile(r"^ +(?:const|constexpr|static|using|auto|return|throw|[\w:<>]+[*&]* \w+(?: =|;|\())")
CONDITION = re.compile(r"^( +(?:} else )?if \()([^;]*)(\)(?: \{)?)$")
# Functions of the command that describe it. Their sentences are for people only.
HELP = re.compile(r"(?:add|describe)[A-Z]|describe$")
GUARD = re.compile(r"^ +(?:const )?(?:\w+::)*(?:CMutexLock|lock_guard<.*>|unique_lock<.*>|ErrorQueueMark) \w+.*;$")
END = re.compile(r"; *(?://.*)?$")
ONE_LINE_BODY = re.compile(r"^(.*\).*)\{ (?!return\b)[^{}]*; \}$")


class Mutant:
    def __init__(self, path, number, before, after, is_for_windows):
        self.path, self.number, self.before, self.after = path, number, before, after
        self.is_for_windows = is_for_windows
        self.name = ""

    def is_critical(self):
        return bool(CRITICAL.match(self.name))

    def describe(self, lines):
        before, after = (" ".join(text.split()) for text in (self.before, self.after))
        place = source_places.name_place(lines, self.number)
        return f"{self.path}: {place}: {before} => {after or 'nothing'}"

    def apply(self, text):
        lines = text.split("\n")
        lines[self.number:self.number + self.before.count("\n") + 1] = self.after.split("\n")
        return "\n".join(lines)


def mutate_tokens(line, messages, is_help):
    for match in TOKENS.finditer(line):
        token = match.group()
        if token.startswith("//"):
            return
        changes = []
        if token[0] == '"' and is_help and MESSAGE.match(token):
            continue
        if token[0] == '"':
            changes = [token[:-1] + '~"']
            if token in messages and len(messages) > 1:
                changes.append(messages[(messages.index(token) + 1) % len(messages)])
        elif match["flag"]:
            changes = [" & " + token[3:], ""]
        elif match["sibling"]:
            changes = [SIBLINGS[token]]
        elif token in ("true", "false"):
            changes = ["false" if token == "true" else "true"]
        elif token.isdigit():
            changes = [str(int(token) + 1)]
        elif token[0] != "'":
            changes = [OPERATORS[token]]
        for change in changes:
            yield line[:match.start()] + change + line[match.end():]


def get_indent(line):
    return len(line) - len(line.lstrip())


def read_statement(lines, number):
    """The lines of the statement that starts here, or nothing if it is none that can be left out."""
    if not STATEMENT.match(lines[number]) or DECLARATION.match(lines[number]):
        return []
    end = number
    while not END.search(lines[end]):
        end += 1
        if lines[end - 1].endswith("{") or get_indent(lines[end]) <= get_indent(lines[number]):
            return []
    return [] if lines[end].endswith(("= delete;", "= default;")) else lines[number:end + 1]


def read_block(lines, number):
    """The lines of a statement of any kind and its comment, or nothing if the scope ends here."""
    end = number + 1
    while lines[end - 1].lstrip().startswith("//"):
        end += 1
    while get_indent(lines[end]) > get_indent(lines[number]) or lines[end] == "":
        end += 1
    end += lines[end].strip() == "}" and get_indent(lines[end]) == get_indent(lines[number])
    return [] if lines[number].strip().startswith("}") else lines[number:end]


def mutate_statements(lines, number):
    """Leaves out the statement that starts here, and swaps it with the next one if their order may matter."""
    line = lines[number]
    if ONE_LINE_BODY.match(line):
        yield line, ONE_LINE_BODY.sub(r"\1{}", line)
    if not source_places.find_function(lines, number):
        return
    statement = [line] if GUARD.match(line) else read_statement(lines, number)
    if not statement:
        return
    yield "\n".join(statement), ""
    next_number = number + len(statement)
    if get_indent(lines[next_number]) != get_indent(line):
        return
    following = read_block(lines, next_number) if GUARD.match(line) else read_statement(lines, next_number)
    # Two assignments are too often independent of each other.
    if following and not (" = " in line and " = " in following[0]):
        yield "\n".join(statement + following), "\n".join(following + statement)


def make_mutants(path, lines):
    is_compiled = True
    in_raw_string = False
    is_for_windows = in_windows_folder = "/windows/" in path
    messages = sorted({token[0] for line in lines if not line.lstrip().startswith(("//", "#"))
                       for token in TOKENS.finditer(line) if MESSAGE.fullmatch(token[0])})
    for number, line in enumerate(lines):
        bare = line.strip()
        # Code for newer versions of libcrypto is not part of this build.
        if bare.startswith("#if"):
            is_for_windows = in_windows_folder or bare == "#ifdef _WIN32"
            is_compiled = "OPENSSL_VERSION_NUMBER >= 0x30000000L" not in bare
            has_other_part = "OPENSSL_VERSION_NUMBER" in bare
        elif bare.startswith("#else"):
            is_for_windows = in_windows_folder
            is_compiled = not (has_other_part and is_compiled)
        elif bare.startswith("#endif"):
            is_for_windows, is_compiled = in_windows_folder, True
        was_raw_string, in_raw_string = in_raw_string, (in_raw_string or 'R"(' in line) and ')"' not in line
        if not is_compiled or was_raw_string or in_raw_string:
            continue
        if bare.startswith(("//", "#", "/*", "template", "static_assert", "assert", "using", "extern")):
            continue
        if bare.endswith((") = 0;", " const = 0;")):
            continue
        for after in mutate_tokens(line, messages, bool(HELP.match(source_places.find_function(lines, number)))):
            yield Mutant(path, number, line, after, is_for_windows)
        if CONDITION.match(line):
            yield Mutant(path, number, line, CONDITION.sub(r"\1!(\2)\3", line), is_for_windows)
        for before, after in mutate_statements(lines, number):
            yield Mutant(path, number, before, after, is_for_windows)


def find_mutants(path):
    """The mutants of a file, each with a unique name."""
    lines = (ROOT / path).read_text().split("\n")
    mutants = list(make_mutants(path, lines))
    for mutant, name in zip(mutants, source_places.number_alike([mutant.describe(lines) for mutant in mutants])):
        mutant.name = name
    return mutants


def list_all(prefix=""):
    files = subprocess.run(["git", "ls-files", "--", "src", "include", "ul", "tools"], cwd=ROOT, check=True,
                           capture_output=True, text=True).stdout.split()
    return [mutant for path in files if path.endswith((".cpp", ".h")) and path.startswith(prefix)
             for mutant in find_mutants(path)]
