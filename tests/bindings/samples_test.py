#!/usr/bin/env -S python3 -B
"""Runs a sample program of one of the languages; all of them take the same arguments and print the same.

Usage: samples_test.py MEMORY_FOLDER COMMAND [ARGUMENT...]     through in_namespace.sh: it searches
"""

import os
import pathlib
import shutil
import subprocess
import sys

folder, command = pathlib.Path(sys.argv[1]).resolve(), sys.argv[2:]
shutil.rmtree(folder, ignore_errors=True)
(folder / "E").mkdir(parents=True)
(folder / "E/LOGO.PNG").write_bytes(b"picture")
os.environ.update(LXEMU_MEMORY=str(folder), LC_ALL="C.UTF-8")
backup = folder / "B\u00fcro.bak"
SILENT = "[faults]\nsilent = 1\n"
REFUSES = "[printer]\nrefused = CMP,F\n"
PRINTERS = {"127.0.0.2: LX-R4100, 127.0.0.2", "127.0.0.3: LX-R4100, Dock 3", "127.0.0.4: LX-R4100, 127.0.0.4", "printers: 3"}
problems = 0


def check(arguments, code, out, ini=""):
    """`out`: the lines, or a set of lines in any order; of what went to standard error when the code is 1 and out is a str."""
    global problems
    (folder / "printer.ini").write_text(ini)
    run = subprocess.run([*command, *map(str, arguments)], capture_output=True, text=True, timeout=120)
    lines = run.stdout.splitlines()
    seen = run.stderr.strip() if isinstance(out, str) else set(lines) if isinstance(out, set) else lines
    if run.returncode != code or seen != out:
        problems += 1
        print(f"{arguments}: {run.returncode}, {seen!r}; expected {code}, {out!r}\n{run.stderr}")


assert os.environ.get("TAVIRA_TEST_NETWORK") == "1", "run this through in_namespace.sh"
check(["read"], 0, ["resolutions: 600, 600, 600", "graphic: LOGO.PNG"])
check(["read", "USB001"], 0, ["resolutions: 600, (not answered), 600", "graphic: LOGO.PNG"], "[printer]\nunanswered = CLR,P\n")
check(["read", "127.0.0.3"], 0, ["resolutions: 300, 600, 600"])
check(["read"], 1, "the printer does not answer", SILENT)
check(["write", "12", "front"], 0, ["confirmed: the printer shows front"])
check(["write", "12", "back"], 1, ["not confirmed: sent back, the printer shows front"], REFUSES)
check(["backup", backup], 0, ["backed up"])
if b"CMP,F,front" not in backup.read_bytes():
    problems += 1
    print(f"{backup}: without the setting")
check(["backup", folder / "none/x.bak"], 1,
      "TVMGR_Backup: -63, the file on this computer cannot be created, opened or written")
check(["search"], 0, PRINTERS)
for wrong in ([], ["write", "12"], ["write", "CLM,S", "4"], ["write", "7x", "4"], ["search", "x"], ["explode"]):
    check(wrong, 2, [])
print(f"{command[-1]}: {problems} problem(s)")
sys.exit(1 if problems else 0)
