#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Adds up the failures that the injection tests produced, from their results.

usage: scripts/count_injections.py RESULTS.xml
"""
import pathlib
import re
import sys

text = pathlib.Path(sys.argv[1]).read_text()
found = re.findall(r'name="Each(Allocation|Call)[^"]*"[^>]*>\s*<properties>\s*<property name="injections" '
                   r'value="(\d+)"', text)
allocations = [int(count) for kind, count in found if kind == "Allocation"]
calls = [int(count) for kind, count in found if kind == "Call"]
print(f"{sum(allocations)} failed allocations and {sum(calls)} failed calls of dependencies in {len(allocations)} "
      "scenarios: no crash, no false success (goals: 10000 and 1500 in 60)")
sys.exit(0 if sum(allocations) >= 10000 and sum(calls) >= 1500 and len(allocations) >= 60 else 1)
