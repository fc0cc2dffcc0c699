#!/usr/bin/env -S python3 -B
"""Checks that every source file is compiled, and that every test program is run by ctest.

Usage: tests_built.py BUILD_FOLDER...   (configured builds; a file must be part of at least one of them)
"""

import json
import pathlib
import re
import shlex
import subprocess
import sys

from repository import ROOT, files, finish

AREAS = ("src", "emulator", "recorder", "tools", "examples", "tests", "fuzz", "bench")
# What it needs is only installed by ./dev bench.
BENCH_ALONE = {"bench/parsers/peers.cpp"}
TEST_CODE = re.compile(r"^\s*(TEST|TEST_F|TEST_P|TYPED_TEST)\s*\(|\bLLVMFuzzerTestOneInput\s*\(", re.MULTILINE)
TARGET = re.compile(r"CMakeFiles/([^/]+)\.dir/")


def together(source):
    """The files that are compiled as one, where `source` is what CMake made of several; else that one."""
    if source.parent.name != "Unity":
        return [source]
    return [pathlib.Path(name) for name in re.findall(r'^#include "([^"]+)"', source.read_text(encoding="utf-8"), re.MULTILINE)]


def compiled(build):
    """(source file, target) of every compilation of a build."""
    database = build / "compile_commands.json"
    for entry in json.loads(database.read_text(encoding="utf-8")):
        source = pathlib.Path(entry["directory"], entry["file"]).resolve()
        target = TARGET.search(entry.get("output") or entry["command"])
        for part in together(source):
            if part.is_relative_to(ROOT):
                yield part.relative_to(ROOT).as_posix(), target.group(1) if target else ""


def programs(build):
    """The names of the build's executables, as its linker commands give them."""
    ninja = subprocess.run(["ninja", "-C", build, "-t", "targets", "all"], check=True, capture_output=True, text=True)
    found = set()
    for line in ninja.stdout.splitlines():
        output, _, rule = line.rpartition(": ")
        if "EXECUTABLE_LINKER" in rule:
            found.add(pathlib.PurePosixPath(output).name.removesuffix(".exe"))
    return found


def run_by_ctest(build):
    """The names of the programs that ctest starts."""
    listing = subprocess.run(["ctest", "--test-dir", build, "--show-only=json-v1"], check=True, capture_output=True,
                             text=True)
    names = set()
    for test in json.loads(listing.stdout)["tests"]:
        for word in test.get("command", []):
            names.add(pathlib.PurePath(word).name.removesuffix(".exe"))
    return names


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    builds = [pathlib.Path(argument).resolve() for argument in sys.argv[1:]]
    sources = [str(path) for path in files(*(f"{area}/*.{ext}" for area in AREAS for ext in ("c", "cpp")))]
    problems, built, test_programs = [], set(), 0
    if not sources:
        problems.append("no source files found")
    has_tests = {path for path in sources
                 if path.startswith(("tests/", "fuzz/")) and TEST_CODE.search((ROOT / path).read_text(encoding="utf-8"))}
    for build in builds:
        targets = {}
        for source, target in compiled(build):
            built.add(source)
            targets.setdefault(target, set()).add(source)
        executables, run = programs(build), run_by_ctest(build)
        for target, target_sources in sorted(targets.items()):
            tests = sorted(target_sources & has_tests)
            if target in executables and tests:
                test_programs += 1
                if target not in run:
                    problems.append(f"{tests[0]}:1: built into {target} but ctest of {build.name} does not run it")
    problems += [f"{source}:1: not built" for source in sources if source not in built | BENCH_ALONE]
    finish("tests_built", problems, f"{len(sources)} sources built, {test_programs} test programs run")


main()
