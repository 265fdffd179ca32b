# SPDX-License-Identifier: Apache-2.0
"""Lists of places in the sources, such as tests/data/kept_mutants.txt.

An entry is "file: function or class: text  # reason", or "file: function: text [2 of 3]  # reason" if the function
contains the text several times. It names exactly one place: an entry that matches none or several is an error, so that
no reason outlives its line or applies to another one.
"""
import collections
import re

CONTROL = re.compile(r"^\s*(?:} )?(?:if|else|for|while|do|switch|case|catch|try|return|throw)\b")
SCOPE = re.compile(r"^\s*(?:namespace|class|struct|union|enum|template|extern)\b")
CLASS = re.compile(r"^\s*(?:class|struct) (?:[A-Z]+_EXPORT )?(\w+)\b(?!;)")
SKIPPED = re.compile(r"^\s*(?:$|//|#|\w+:$)")
NAME = re.compile(r"((?:[\w~]+(?:<[^()]*>)?::)*(?:operator\s*[^\s\w(]+|operator\(\)|~?\w+))\(")


def list_openers(lines, number):
    """A line, counted from 0, and the lines above it that enclose it by indentation, outermost first."""
    chain = [number]
    indent = len(lines[number]) - len(lines[number].lstrip())
    for above in range(number - 1, -1, -1):
        line = lines[above]
        if indent == 0:
            break
        if SKIPPED.match(line) or len(line) - len(line.lstrip()) >= indent:
            continue
        indent = len(line) - len(line.lstrip())
        chain.append(above)
    return reversed(chain)


def find_function(lines, number):
    """The name of the function that contains a line, or nothing."""
    for place in list_openers(lines, number):
        line = lines[place]
        # A complete line opens nothing.
        is_complete = place == number and line.rstrip().endswith(";")
        if SCOPE.match(line) or CONTROL.match(line) or is_complete or line.startswith("}"):
            continue
        name = NAME.search(line)
        if name:
            return name[1]
    return ""


def name_place(lines, number):
    """The name of the function, or else of the class, that contains a line; or "-"."""
    classes = [match[1] for place in list_openers(lines, number) if (match := CLASS.match(lines[place]))]
    function = find_function(lines, number)
    return "::".join(name for name in (classes[-1] if classes else "", function) if name) or "-"


def number_alike(descriptions):
    """The descriptions; repeated ones get a suffix such as " [2 of 3]"."""
    counts = collections.Counter(descriptions)
    seen = collections.Counter()
    for description in descriptions:
        seen[description] += 1
        yield f"{description} [{seen[description]} of {counts[description]}]" if counts[description] > 1 else description


def read_entries(path):
    """The entries of a list. Raises SystemExit if one has no reason or is repeated."""
    entries = []
    for number, line in enumerate(path.read_text().splitlines(), 1):
        if not line or line.startswith("#"):
            continue
        entry, separator, reason = line.partition("  # ")
        if not separator or not reason.strip():
            raise SystemExit(f"{path.name}:{number}: an entry without a reason: {line}")
        if entry in entries:
            raise SystemExit(f"{path.name}:{number}: listed twice: {entry}")
        entries.append(entry)
    return entries


def find_stale(entries, places):
    """Describes each entry that does not name exactly one of the places."""
    unnumbered = collections.Counter(re.sub(r" \[\d+ of \d+\]$", "", place) for place in places)
    for entry in entries:
        if entry not in places:
            count = unnumbered[entry]
            yield f"matches {f'{count} places, say which of them' if count else 'no place'}: {entry}"
