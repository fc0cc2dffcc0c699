#!/usr/bin/env -S python3 -B
"""What tvmgr completes in a shell: the script for bash is run by bash, the one for PowerShell only read.

Usage: completions_test.py TVMGR WORK_FOLDER WINE...
"""

import pathlib
import re
import subprocess
import sys

TVMGR, WORK, WINE = sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3:]
# A line as it is typed, with its words as bash takes them apart, and what has to be among the offers, or nothing but them.
CASES = [
    (["tvmgr", "re"], {"restore"}, True),
    (["tvmgr", "--port", "USB001", "sta"], {"status"}, True),
    (["tvmgr", "--port", "=", "USB001", "sta"], {"status"}, True),
    (["tvmgr", "--port", "get", "sta"], {"status"}, True),
    (["tvmgr", "backup", ""], {"check", "diff", "coverage"}, False),
    (["tvmgr", "backup", "coverage", "--so"], {"--sort"}, True),
    (["tvmgr", "get", "CLR"], {"CLR_Z", "CLR_P", "CLR_R"}, True),
    (["tvmgr", "--json", "set", "--keep-resolution", "CLR_Z"], {"CLR_Z="}, True),
    (["tvmgr", "set", "CLR_Z", "="], set(), True),
    (["tvmgr", "set", "CLR_Z", "=", "CLR"], set(), True),
    (["tvmgr", "--port", "=", "'My Port'", "backup", "c"], {"check", "coverage"}, True),
    (["tvmgr", "put", "x.png", "--kind", "f"], {"format", "font"}, True),
    (["tvmgr", "put", "x.png", "--kind", "="], {"graphic", "format", "font", "background"}, True),
    (["tvmgr", "search", ""], {"usb", "network", "all"}, False),
    (["tvmgr", "op", "wipe-f"], {"wipe-fonts", "wipe-formats"}, True),
    (["tvmgr", "status", "--wa"], {"--watch"}, True),
    (["tvmgr", "status", "--js"], {"--json"}, True),
    (["tvmgr", "get", "--wa"], set(), True),
    (["tvmgr", "completions", "b"], {"bash"}, True),
]
problems = []


def script(shell):
    path = WORK / shell
    with path.open("wb") as output:  # no pipe: what Wine starts may keep it open
        subprocess.run([*WINE, TVMGR, "completions", shell], stdout=output, stdin=subprocess.DEVNULL, check=True, timeout=60)
    return path


def offers(path, words):
    line = "".join(f" {word!r}" for word in words)
    done = subprocess.run(["bash", "--norc", "-uc", f'source {path}; COMP_WORDS=({line}); COMP_CWORD={len(words) - 1}; '
                           'COMPREPLY=(); _tvmgr; printf "%s\\n" "${COMPREPLY[@]}"; complete -p tvmgr tvmgr.exe >/dev/null'],
                          capture_output=True, text=True, timeout=30)
    if done.returncode != 0 or "compopt" not in done.stderr and done.stderr:
        problems.append(f"{words}: bash ends with {done.returncode}: {done.stderr}")
    return set(done.stdout.split())


def main():
    WORK.mkdir(parents=True, exist_ok=True)
    bash, powershell = script("bash"), script("powershell")
    for words, wanted, is_all in CASES:
        found = offers(bash, words)
        if not wanted <= found or is_all and found != wanted:
            problems.append(f"{words}: offers {sorted(found)}, not {sorted(wanted)}")
    text = powershell.read_text(encoding="utf-8")
    told = set(re.findall(r"'([^']*)'", text))
    missing = set(re.findall(r"(?<![\w-])--?[a-z][\w-]*", bash.read_text(encoding="utf-8").split("case", 1)[1])) - told
    missing -= {"-n", "-W", "-F", "-o"}  # bash's own
    if missing or "Register-ArgumentCompleter -Native" not in text or any(text.count(a) != text.count(b) for a, b in ("()", "{}")):
        problems.append(f"PowerShell: {sorted(missing)} are missing, or its brackets do not fit")
    for problem in problems:
        print(problem)
    print(f"completions: {len(CASES)} lines, {len(problems)} problems")
    return 1 if problems else 0


sys.exit(main())
