# SPDX-License-Identifier: Apache-2.0
"""Cases for a checker: whole input, and ways to damage it."""
import collections

# The command runs in the folder that `prepare` fills. Its words contain names of values in braces. A checker accepts
# whole input; after `damage` it prints the pattern `message` and fails.
Case = collections.namedtuple("Case", "name command prepare damage message")

CASES = []


def add(checker, command, prepare, damages):
    """Adds the case of whole input, and one for each (name, damage, message)."""
    CASES.append(Case(f"CheckerAccepts.{checker}", command, prepare, None, None))
    for what, damage, message in damages:
        CASES.append(Case(f"CheckerRefuses.{checker}.{what}", command, prepare, damage, message))
