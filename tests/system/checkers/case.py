# SPDX-License-Identifier: Apache-2.0
"""Cases for a checker: something whole, and ways to damage it."""
import collections

# The command runs in the folder that `prepare` fills and `damage` changes; its words name values in braces. `message` is
# a pattern of what the checker must say of the damage.
Case = collections.namedtuple("Case", "name command prepare damage message")

CASES = []


def add(checker, command, prepare, damages):
    """Adds a case for each (what is damaged, how, message)."""
    for what, damage, message in damages:
        CASES.append(Case(f"{checker}.{what}", command, prepare, damage, message))
