#!/usr/bin/env -S python3 -B
"""Runs clang-tidy over src/: each file with the flags of the first of the given builds that compiles it.

Usage: tidy.py BUILD_FOLDER...
"""

import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys

from repository import ROOT, files, finish

MINGW = "x86_64-w64-mingw32-g++-posix"
# GCC's warning options are not all known to clang.
COMMON = ["--quiet", "--extra-arg=-Wno-unknown-warning-option"]


def mingw_headers():
    """Options that give clang the C++ headers of the cross compiler, which it does not find by itself."""
    run = subprocess.run([MINGW, "-E", "-x", "c++", "-v", os.devnull], check=True, capture_output=True, text=True)
    folders = re.findall(r"^ (\S+/include/c\+\+\S*)$", run.stderr, re.MULTILINE)
    return ["--extra-arg=-nostdinc++"] + [f"--extra-arg=-isystem{folder}" for folder in folders]


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    build_of, is_cross = {}, {}
    for build in sys.argv[1:]:
        for entry in json.loads((pathlib.Path(build) / "compile_commands.json").read_text(encoding="utf-8")):
            build_of.setdefault(os.path.join(entry["directory"], entry["file"]), build)
            is_cross[build] = is_cross.get(build) or "mingw32" in entry["command"]
    cross_options = mingw_headers() if any(is_cross.values()) else []

    def tidy(source):
        path = str(ROOT / source)
        if path not in build_of:
            return f"{source}:1: not built"
        build = build_of[path]
        options = COMMON + (cross_options if is_cross[build] else [])
        run = subprocess.run(["clang-tidy", "-p", build, *options, path], capture_output=True, text=True)
        return (run.stdout.strip() or run.stderr.strip()) if run.returncode else None

    sources = files("src/*.cpp")
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        problems = [problem for problem in pool.map(tidy, sources) if problem]
    if not sources:
        problems.append("src: no source files found")
    finish("clang-tidy", problems, f"{len(sources)} files")


main()
