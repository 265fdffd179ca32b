# SPDX-License-Identifier: Apache-2.0
"""Cases for a checker: intact input, and ways to damage it."""
import collections

# The command runs in the folder that `prepare` fills and `damage` changes. Its words contain names of values in braces.
# `message` is a pattern that the checker must print.
Case = collections.namedtuple("Case", "name command prepare damage message")

CASES = []


def add(checker, command, prepare, damages):
    """Adds a case for each (name, damage, message)."""
    for what, damage, message in damages:
        CASES.append(Case(f"{checker}.{what}", command, prepare, damage, message))
