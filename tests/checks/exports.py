#!/usr/bin/env -S python3 -B
"""Checks the DLLs of the Windows build: exports, imports, hardening flags, machine and version resource.

Usage: exports.py BIN_FOLDER
"""

import pathlib
import re
import struct
import subprocess
import sys

from repository import ROOT, finish

HEADER = "include/tavira/TaviraManager.h"
EXPORT_COUNT = 39  # fixed by the binary interface
PORT_LIBRARY_EXPORTS = {"Initialize", "Terminate", "SendData", "ReceiveData", "ClearReceiveData", "GetPortComIndex"}
# What every Windows has. Ferrolink.dll and SETUPAPI.DLL are loaded at run time, the compiler's libraries linked in.
SYSTEM_DLLS = {"kernel32.dll", "msvcrt.dll", "advapi32.dll", "user32.dll", "ws2_32.dll", "winspool.drv"}
FLAGS = ("HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT")
RT_VERSION = 16
FIXED_VERSION = struct.pack("<I", 0xFEEF04BD)  # the mark of the version resource's fixed part


def declared_exports():
    """The functions that the public header declares."""
    text = (ROOT / HEADER).read_text(encoding="utf-8")
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.DOTALL)
    return set(re.findall(r"^(?:int32_t|bool)\s+(TVMGR_\w+)\s*\(", text, re.MULTILINE))


def declared_version():
    """The version that the public header declares, as MAJOR.MINOR.PATCH."""
    text = (ROOT / HEADER).read_text(encoding="utf-8")
    return ".".join(re.findall(r"^#define TVMGR_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)$", text, re.MULTILINE))


def resource_versions(dll):
    """The file's and the product's version of the version resource."""
    data = dll.read_bytes()
    mark = data.find(FIXED_VERSION)
    if mark < 0 or len(data) < mark + 24:
        return []
    words = struct.unpack_from("<8H", data, mark + 8)
    return [f"{words[i + 1]}.{words[i]}.{words[i + 3]}" for i in (0, 4)]


def dump(dll):
    return subprocess.run(["x86_64-w64-mingw32-objdump", "-p", dll], check=True, capture_output=True,
                          text=True).stdout


def exported(listing):
    """The names of the export table; objdump writes "[ordinal] +base[ordinal] hint name" for each."""
    table = re.search(r"^\[Ordinal/Name Pointer\] Table.*?\n(.*?)(?:\n\n|\Z)", listing, re.MULTILINE | re.DOTALL)
    return re.findall(r"^\s*\[\s*\d+\].*?(\S+)$", table.group(1), re.MULTILINE) if table else []


def check(dll, expected, needs_version):
    """The problems of one DLL."""
    if not dll.is_file():
        return [f"{dll}: not built"]
    listing, problems = dump(dll), []
    names = exported(listing)
    problems += [f"{dll}: does not export {name}" for name in sorted(expected - set(names))]
    problems += [f"{dll}: exports {name}, which is not part of its interface" for name in sorted(set(names) - expected)]
    if len(names) != len(set(names)):
        problems.append(f"{dll}: exports a name twice")
    module = re.search(r"^Name\s+[0-9a-f]+\s+(\S+)$", listing, re.MULTILINE)
    if not module or module.group(1) != dll.name:
        problems.append(f"{dll}: calls itself {module.group(1) if module else 'nothing'}")
    imports = re.findall(r"^\s*DLL Name: (\S+)$", listing, re.MULTILINE)
    if not imports:
        problems.append(f"{dll}: no imports found")
    problems += [f"{dll}: imports {name}, which a bare system may lack" for name in imports
                 if name.lower() not in SYSTEM_DLLS]
    if "file format pei-x86-64" not in listing:
        problems.append(f"{dll}: not an x86-64 module")
    characteristics = re.search(r"^DllCharacteristics\s.*\n((?:\s+\w+\n)*)", listing, re.MULTILINE)
    flags = characteristics.group(1).split() if characteristics else []
    problems += [f"{dll}: without {flag}" for flag in FLAGS if flag not in flags]
    # Three blanks: the first level of the resource directory, which holds the types.
    if needs_version and not re.search(rf"^[0-9a-f]+ {{3}}Entry: ID: 0x0*{RT_VERSION:x},", listing, re.MULTILINE):
        problems.append(f"{dll}: without a version resource")
    return problems


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    bin_folder = pathlib.Path(sys.argv[1])
    declared, problems = declared_exports(), []
    if len(declared) != EXPORT_COUNT:
        problems.append(f"{HEADER}:1: declares {len(declared)} functions, not {EXPORT_COUNT}")
    problems += check(bin_folder / "TaviraManager.dll", declared, needs_version=True)
    if resource_versions(bin_folder / "TaviraManager.dll") != [declared_version()] * 2:
        problems.append(f"{HEADER}:1: not of the version of the version resource")
    problems += check(bin_folder / "Ferrolink.dll", PORT_LIBRARY_EXPORTS, needs_version=False)
    recorder = bin_folder.parent / "recorder" / "Ferrolink.dll"
    problems += check(recorder, PORT_LIBRARY_EXPORTS, needs_version=True)
    finish("exports", problems, f"{len(declared)} exports of TaviraManager.dll, {len(PORT_LIBRARY_EXPORTS)} of each Ferrolink.dll")


main()
