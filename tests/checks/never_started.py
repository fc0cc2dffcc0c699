#!/usr/bin/env python3
"""Passes when every failed test of a ctest log printed nothing at all: its program was never started.

Every test program of ours prints a line before anything else, so silence means that Wine did not get as far. A test that
has printed something, or was stopped for its time, counts as failed.
"""
import re
import sys


def main() -> int:
    with open(sys.argv[1], encoding="utf-8", errors="replace") as file:
        log = file.read()
    tests = re.findall(
        r"^\d+/\d+ Test: ([^\n]*)\n.*?^Output:\n-+\n(.*?)<end of output>\n(.*?)^-{20,}\n(Test \w+)\.", log, re.M | re.S
    )
    failed = [(name, output) for name, output, _, verdict in tests if verdict != "Test Passed"]
    for name, output in failed:
        print(f"{name}: {'never started' if not output.strip() else 'failed'}")
    return 0 if failed and all(not output.strip() for _, output in failed) else 1


sys.exit(main())
