#!/usr/bin/env -S python3 -B
"""Runs what a guide shows, and compares what comes out; see guide.py for the form.

Usage: guide_test.py native|network BIN_FOLDER WORK_FOLDER GUIDE        (network: through in_namespace.sh)
       guide_test.py tvmgr|printers BIN_FOLDER WORK_FOLDER GUIDE WINE      (printers: through batch_test.py)
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

import guide

ROOT = pathlib.Path(__file__).resolve().parents[2]
STAGE, BIN, WORK, GUIDE = sys.argv[1], *(pathlib.Path(argument).resolve() for argument in sys.argv[2:5])
WINE = sys.argv[5:]
LONGEST_S = 100
CPP = ["c++", "-std=c++17", "-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Werror"]
CSHARP = ["mcs", "-nologo", "-langversion:7", "-warn:4", "-warnaserror", "-r:System.Core.dll"]


def built(name):
    """The command that starts a program of the guide."""
    cpp, csharp = WORK / f"{name}.cpp", WORK / f"{name}.cs"
    program = WORK / "built" / name
    program.parent.mkdir(exist_ok=True)
    if cpp.exists():
        if not program.exists():
            subprocess.run([*CPP, f"-I{ROOT}/include", cpp, f"-L{BIN}", "-lTaviraManager", f"-Wl,-rpath,{BIN}", "-pthread",
                            "-o", program], check=True)
        return [program]
    if csharp.exists():
        program = program.with_suffix(".exe")
        if not program.exists():
            subprocess.run([*CSHARP, f"-out:{program}", ROOT / "bindings/csharp/Tavira.cs", csharp], check=True)
        return ["mono", program]
    raise SystemExit(f"{GUIDE.name}: there is no program {name}")


class Shell:
    """As much of a Windows console as the guides need."""

    def __init__(self):
        self.code = 0
        self.environment = dict(os.environ, LXEMU_MEMORY="printer", TVMGR_CONFIG="choice.json", LC_ALL="C.UTF-8",
                                LD_LIBRARY_PATH=str(BIN), TAVIRA_LIBRARY=str(BIN / "libTaviraManager.so"),
                                PYTHONPATH=str(ROOT / "bindings/python"), PYTHONDONTWRITEBYTECODE="1", PYTHONIOENCODING="utf-8")
        for variable in ("LXEMU_LOG", "TVMGR_PORT", "TVMGR_DEVICE", "TVMGR_ADDRESS"):
            self.environment.pop(variable, None)

    def path(self, text):
        return WORK / text.replace("\\", "/")

    def run(self, line):
        """What the command prints."""
        words = [quoted or bare for quoted, bare in re.findall(r'"([^"]*)"|(\S+)', line)]
        if words[0] == "set":
            name, _, value = line.removeprefix("set ").partition("=")
            self.environment[name] = value
            return ""
        if line == "echo %ERRORLEVEL%":
            code, self.code = self.code, 0
            return f"{code}\n"
        if self.code:
            raise SystemExit(f'{GUIDE.name}: in front of "{line}": exit code {self.code}, and the guide does not say so')
        if words[0] == "type":
            return self.path(words[1]).read_text(encoding="utf-8")
        if words[0] == "mkdir":
            self.path(words[1]).mkdir()
            return ""
        if words[0] == "copy":
            shutil.copy(self.path(words[1]), self.path(words[2]))
            return ""
        if STAGE in ("tvmgr", "printers"):
            program = BIN / "tvmgr.exe" if words[0] == "tvmgr" else self.path(words[0] + ".exe")
            command = [*WINE, program, *words[1:]]
        elif words[0] == "python":
            command = [sys.executable, *words[1:]]
        else:
            command = [*built(words[0]), *words[1:]]
        # No pipe: Wine's desktop process, when this starts it, would keep that open.
        with tempfile.TemporaryFile() as output:
            self.code = subprocess.run(command, cwd=WORK, env=self.environment, stdin=subprocess.DEVNULL, stdout=output,
                                       stderr=subprocess.STDOUT, timeout=LONGEST_S).returncode
            output.seek(0)
            printed = output.read().decode("utf-8").replace("\r", "")
        # The tool's progress, which a slow machine shows and a fast one does not.
        return re.sub(r"^.* \.\.\. .*\(.*at most .*\)\n", "", printed, flags=re.MULTILINE)


def pattern(expected):
    """A regular expression of the lines that a guide shows."""
    lines = (r"(?:.*\n)*" if line == "…" else ".*".join(map(re.escape, line.split("…"))) + r"\n" for line in expected)
    return re.compile("".join(lines))


def play(shell, block):
    """Runs the commands of a transcript; answers how many printed something else."""
    wrong = 0
    steps = re.split(r"^> (.*)\n", block.text, flags=re.MULTILINE)[1:]
    for command, expected in zip(steps[::2], steps[1::2]):
        printed = shell.run(command)
        if not pattern(expected.rstrip("\n").split("\n") if expected.strip() else []).fullmatch(printed):
            wrong += 1
            print(f"{GUIDE}:{block.line}: {command}\n--- the guide shows\n{expected}--- it prints\n{printed}---")
    if shell.code:
        raise SystemExit(f"{GUIDE}:{block.line}: the last command ends with {shell.code}, and the guide does not say so")
    return wrong


def main():
    shutil.rmtree(WORK, ignore_errors=True)
    WORK.mkdir(parents=True)
    # The folders of the package, as far as guides name them.
    for folder, files in {"bin": ("TaviraManager.dll", "tvmgr.exe"), "emulator": ("Ferrolink.dll",)}.items():
        (WORK / folder).mkdir()
        for name in files:
            if (BIN / name).exists():
                shutil.copy(BIN / name, WORK / folder)
    shutil.copytree(ROOT / "recorder", WORK / "recorder", ignore=lambda *_: {"transcript", "win32", "CMakeLists.txt"})
    if (BIN / "../recorder/Ferrolink.dll").exists():
        shutil.copy(BIN / "../recorder/Ferrolink.dll", WORK / "recorder")
    shell, wrong, played = Shell(), 0, 0
    for block in guide.blocks(GUIDE.read_text(encoding="utf-8")):
        if block.name:
            file = shell.path(block.name)
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(block.text, encoding="utf-8")
        elif block.stage == STAGE:
            wrong += play(shell, block)
            played += 1
    if not played:
        raise SystemExit(f"{GUIDE}: has no {STAGE} transcript")
    return wrong


sys.exit(1 if main() else 0)
