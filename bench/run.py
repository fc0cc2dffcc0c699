#!/usr/bin/env -S python3 -B
"""Runs the benchmark programs on one core and prints one table; see README.md.

Usage: run.py --native BIN_FOLDER [--windows BIN_FOLDER --wine WINE] [--json FILE] [REGEX]
"""

import argparse
import json
import os
import pathlib
import re
import statistics
import subprocess
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
TOLERANCE = 1.10  # a goal that is missed by less counts as near: no failure, and not met
STARTS = 15
MEBIBYTE = 1 << 20


def run(command, **options):
    return subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL, text=True, **options)


class Bench:
    """Collects rows: dictionaries as the programs print them, one line of JSON each."""

    def __init__(self, pattern):
        self.rows = []
        self.failed = []
        self.pattern = pattern

    def program(self, name, command):
        """Runs a program that prints rows."""
        print(f"== {name}", file=sys.stderr, flush=True)
        done = run(command, stdout=subprocess.PIPE, timeout=900)
        for line in done.stdout.splitlines():
            self.row(json.loads(line))
        if done.returncode != 0:
            self.failed.append(f"{name}: exit code {done.returncode}")

    def row(self, row):
        if re.search(self.pattern, f"{row['id']} {row['work']}"):
            self.rows.append(row)

    def at_most(self, identifier, work, ours, unit, goal, peer_name="", peer=0.0, figure=None):
        self.row({"id": identifier, "work": work, "ours": ours, "peer_name": peer_name, "peer": peer, "unit": unit,
                  "figure": ours if figure is None else figure, "goal": goal, "at_least": False})


def verdict(row):
    if row["goal"] is None:
        return ""
    figure, goal = row["figure"], row["goal"]
    if row["at_least"]:
        return "met" if figure >= goal else "near" if figure * TOLERANCE >= goal else "MISSED"
    return "met" if figure <= goal else "near" if figure <= goal * TOLERANCE else "MISSED"


def quantity(value, unit):
    if unit == "ns":
        for limit, scale, name in ((1e3, 1, "ns"), (1e6, 1e3, "µs"), (1e9, 1e6, "ms")):
            if value < limit:
                return f"{value / scale:.3g} {name}"
        return f"{value / 1e9:.3g} s"
    return f"{value:.4g} {unit}".rstrip()


def print_table(rows):
    lines = [("goal of", "work", "ours", "peer", "", "ratio", "goal", "")]
    for row in rows:
        has_peer = row["peer_name"] != ""
        lines.append((row["id"], row["work"], quantity(row["ours"], row["unit"]), row["peer_name"],
                      quantity(row["peer"], row["unit"]) if has_peer else "",
                      f"{row['figure']:.3g}" if has_peer else "",
                      "" if row["goal"] is None else f"{'≥' if row['at_least'] else '≤'} {row['goal']:g}",
                      verdict(row)))
    widths = [max(len(line[column]) for line in lines) for column in range(len(lines[0]))]
    for line in lines:
        print("  ".join(text.ljust(width) for text, width in zip(line, widths)).rstrip())


def measure_starts(bench, wine, binaries):
    """How long the tool takes from its start to its first output, in turns with a program that does nothing."""
    def start(program, *arguments):
        begin = time.monotonic()
        with subprocess.Popen([wine, binaries / program, *arguments], stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) as process:
            process.stdout.read(1)
            took = time.monotonic() - begin
            process.stdout.read()
        if process.returncode != 0:
            bench.failed.append(f"{program}: exit code {process.returncode}")
        return took * 1e9
    ours, peers = [], []
    for _ in range(STARTS):
        ours.append(start("tvmgr.exe", "codes"))
        peers.append(start("bench_hello.exe"))
    ratio = statistics.median(our / peer for our, peer in zip(ours, peers))
    bench.at_most("P15", "tvmgr codes, from start to first output, Wine", statistics.median(ours), "ns", 1.5, "hello world",
                  statistics.median(peers), ratio)
    size = (binaries / "TaviraManager.dll").stat().st_size / MEBIBYTE
    bench.at_most("P15", "size of TaviraManager.dll", size, "MiB", 1.0)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--native", type=pathlib.Path, required=True)
    parser.add_argument("--windows", type=pathlib.Path)
    parser.add_argument("--wine")
    parser.add_argument("--json", type=pathlib.Path)
    parser.add_argument("pattern", nargs="?", default="", metavar="REGEX", help="rows whose id and work match")
    arguments = parser.parse_args()
    os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})  # of all that is started from here, too
    bench = Bench(arguments.pattern)
    native = arguments.native

    def wanted(*ids):
        """Whether a program with rows of these ids can have one that matches."""
        return not re.match(r"P\d", arguments.pattern) or any(re.match(arguments.pattern, each) for each in ids)

    if wanted("P1", "P2", "P3", "P4", "P5", "P6", "P12"):
        bench.program("parsers", [native / "bench_parsers"])
    if wanted("P4", "P7", "P8", "P9", "P10", "P12", "P13", "P14"):
        bench.program("module", [native / "bench_module"])
    if wanted("P11"):
        if run(["unshare", "-n", "true"], stderr=subprocess.DEVNULL).returncode == 0:
            for printers, goal in ((3, 3.1), (100, 3.5)):
                bench.program(f"search among {printers} printers",
                              [HERE / "network/search_bench.sh", native, printers, goal])
        else:
            print("no right to make a network namespace: the search is not measured", file=sys.stderr)
    if arguments.windows and wanted("P7", "P8", "P9", "P12", "P13"):
        bench.program("module under Wine", [arguments.wine, arguments.windows / "bench_module.exe"])
    if arguments.windows and wanted("P15"):
        print("== start under Wine", file=sys.stderr, flush=True)
        measure_starts(bench, arguments.wine, arguments.windows)
    bench.rows.sort(key=lambda row: int(row["id"][1:]))
    print_table(bench.rows)
    if arguments.json:
        arguments.json.write_text(json.dumps([dict(row, verdict=verdict(row)) for row in bench.rows], indent=1))
    for failure in bench.failed:
        print(f"FAILED: {failure}", file=sys.stderr)
    missed = [row for row in bench.rows if verdict(row) == "MISSED"]
    if missed:
        print(f"{len(missed)} of {len(bench.rows)} goals are missed by more than 10 %.", file=sys.stderr)
    sys.exit(1 if missed or bench.failed else 0)


main()
