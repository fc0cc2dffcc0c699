#!/usr/bin/env -S python3 -B
"""tvmgr on twenty printers at a time, four of them off, silent, busy and refusing; then the guide about it.

Usage: batch_test.py LXEMU_NETWORK BIN_FOLDER WORK_FOLDER WINE   (in a network namespace: network_test.sh starts it)
"""

import json
import os
import pathlib
import shutil
import socket
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAM, BIN, WORK = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
WINE = sys.argv[4:]
PRINTERS = [f"127.0.0.{number}" for number in range(2, 22)]
SILENT, BUSY, REFUSING, OFF = "127.0.0.5", "127.0.0.9", "127.0.0.13", "127.0.0.21"
PROFILE = '// the shop\n{"format": "tvmgr-profile", "version": 1, "settings": {"CLM,S": "3"}}\n'
INIS = {
    SILENT: "[faults]\nsilent = 1\n",
    BUSY: "[printer]\nstate = PR\n[faults]\nlatency_ms = 400\n",
    REFUSING: "[printer]\nrefused = CLM,S\nunanswered = CLR,P\n",
}


def start_printers():
    shutil.rmtree(WORK, ignore_errors=True)
    for address, ini in INIS.items():
        (WORK / "memory" / address).mkdir(parents=True)
        (WORK / "memory" / address / "printer.ini").write_text(ini)
    options = [f"--printer={address}" + (":Dock 3" if address == "127.0.0.3" else "") for address in PRINTERS if address != OFF]
    with open(WORK / "printers.txt", "wb") as output:
        printers = subprocess.Popen([PROGRAM, *options, "--memory", WORK / "memory", "--for", "300"], stdout=output, stderr=output)
    for _ in range(200):
        if "ready\n" in (WORK / "printers.txt").read_text():
            return printers
        if printers.poll() is not None:
            break
        time.sleep(0.05)
    printers.kill()
    printers.wait()
    raise SystemExit("the printers are not ready within 10 s: " + (WORK / "printers.txt").read_text())


def switched_off():
    """Nobody answers at that address, as where the network ends: a queue of connections that is full."""
    listener = socket.socket()
    listener.bind((OFF, 9100))
    listener.listen(0)
    waiting = []
    for _ in range(4):
        waiting.append(socket.socket())
        waiting[-1].setblocking(False)
        waiting[-1].connect_ex((OFF, 9100))
    return listener, waiting


def run(arguments, verdicts):
    """Runs it on all printers; checks exit code and verdicts, and that it takes at most twice the slowest one's own time."""
    command = [*WINE, BIN / "tvmgr.exe", "--json", "--quiet", *arguments, "--printers", ",".join(PRINTERS), "--jobs", "8"]
    with open(WORK / "out.json", "wb") as out:
        start = time.monotonic()
        code = subprocess.run(command, cwd=WORK, stdin=subprocess.DEVNULL, stdout=out, timeout=200).returncode
        took = time.monotonic() - start
    document = json.loads((WORK / "out.json").read_text(encoding="utf-8"))
    rows = {row["printer"]["value"]: row for row in document["printers"]}
    slowest = max(rows.values(), key=lambda row: row["ms"])
    print(f"{arguments[0]}: {took:.1f} s for {len(rows)} printers; slowest {slowest['printer']['value']}, {slowest['ms'] / 1000:.1f} s; "
          f"all after one another {sum(row['ms'] for row in rows.values()) / 1000:.1f} s")
    assert list(rows) == PRINTERS, list(rows)
    for address, row in rows.items():
        assert row["verdict"] == verdicts.get(address, "done"), row
        assert row["exit_code"] == row["document"]["exit_code"], row
    assert (code, document["exit_code"], document["done_count"]) == (6, 6, len(PRINTERS) - len(verdicts)), document["error"]
    assert all(f"{address} ({verdict})" in document["error"]["text"] for address, verdict in verdicts.items()), document["error"]
    assert took <= 2 * slowest["ms"] / 1000, took
    return rows


def main():
    printers = start_printers()
    try:
        off = switched_off()
        gone = {SILENT: "unreachable", OFF: "unreachable"}
        (WORK / "shop.json").write_text(PROFILE)
        run(["apply", "shop.json", "--yes"], {**gone, REFUSING: "failed"})
        for address in PRINTERS:
            written = address not in (OFF, SILENT, REFUSING)
            settings = WORK / "memory" / address / "settings.txt"
            assert written == (settings.exists() and "CLM,S=3" in settings.read_text().split()), address
        run(["backup", "-o", "{printer}.bak"], {**gone, REFUSING: "not proved"})
        backups = {path.stem for path in WORK.glob("*.bak")}
        assert backups == set(PRINTERS) - {SILENT, OFF, REFUSING}, backups
        assert (WORK / f"{REFUSING}.bak.partial").exists()
        subprocess.run([ROOT / "tests/docs/guide_test.py", "printers", BIN, WORK / "guide", ROOT / "docs/several_printers.md", *WINE],
                       check=True)
        del off
    finally:
        printers.terminate()
        printers.wait()


main()
