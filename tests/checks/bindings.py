#!/usr/bin/env -S python3 -B
"""Checks that the layers over the C interface are complete and say the same: functions, constants, words, version."""

import ast
import re

from repository import ROOT, finish

HEADER = "include/tavira/TaviraManager.h"
DEFINITION = "src/interface/TaviraManager.def"
CPP, CSHARP, PYTHON = "include/tavira", "bindings/csharp/Tavira.cs", "bindings/python/tavira.py"
# Each enumeration's name in the header, its prefix there, and its name in the other languages.
ENUMS = (("TvmgrResult", "TVMGR_", "Result"), ("TvmgrSetting", "TVMGR_SETTING_", "Setting"),
         ("TvmgrFileList", "TVMGR_LIST_", "FileList"), ("TvmgrOperation", "TVMGR_OP_", "Operation"),
         ("TvmgrRequest", "TVMGR_REQUEST_", "Request"), ("TvmgrStatus", "TVMGR_STATUS_", "Status"),
         ("TvmgrSearchKind", "TVMGR_SEARCH_", "SearchKind"))
OLDEST_PYTHON = (3, 8)


def read(path):
    return (ROOT / path).read_text(encoding="utf-8")


def constants(text, start, prefix, end):
    """Name without underscores and letter case, and value, of an enumeration's members."""
    body = re.search(rf"{start}(.*?){end}", text, re.DOTALL)
    members = re.findall(rf"(?:^|,)\s*{prefix}(\w+)\s*=\s*(-?\w+)", body.group(1), re.MULTILINE) if body else []
    return {name.replace("_", "").lower(): int(value, 0) for name, value in members}


def words(text, pattern):
    return {name.replace("_", "").lower(): meaning for name, meaning in re.findall(pattern, text)}


def main():
    problems = []
    exports = re.findall(r"^  (TVMGR_\w+)$", read(DEFINITION), re.MULTILINE)
    header = re.sub(r"/\*.*?\*/", "", read(HEADER), flags=re.DOTALL)
    cpp, csharp, python = read(f"{CPP}/manager.hpp"), read(CSHARP), read(PYTHON)
    if not exports:
        problems.append(f"{DEFINITION}:1: no exports found")
    for name in exports:
        if not re.search(rf"\b{name}\(", cpp):
            problems.append(f"{CPP}/manager.hpp:1: does not call {name}")
        if not re.search(rf"static extern \w+ {name}\(", csharp) or not re.search(rf"NativeMethods\.{name}\b", csharp):
            problems.append(f"{CSHARP}:1: does not declare or call {name}")
        if not re.search(rf'^    "{name}": ', python, re.MULTILINE) or len(re.findall(rf"\b{name}\b", python)) < 2:
            problems.append(f"{PYTHON}:1: does not declare or call {name}")

    for c_name, prefix, name in ENUMS:
        expected = constants(header, rf"enum {c_name} {{", prefix, "}")
        for path, found in ((CSHARP, constants(csharp, rf"public enum {name}\b", "", "}")),
                            (PYTHON, constants(python, rf"^class {name}\(|\nclass {name}\(", "", "\n\n\n"))):
            if not expected or found != expected:
                wrong = sorted(set(expected.items()) ^ set(found.items()))
                problems.append(f"{path}:1: {name} differs from {c_name}: {wrong}")

    spoken = words(read(f"{CPP}/error.hpp"), r'case TVMGR_(\w+):\s*return "([^"]+)"')
    codes = constants(header, "enum TvmgrResult {", "TVMGR_", "}")
    for path, found in ((f"{CPP}/error.hpp", spoken),
                        (CSHARP, words(csharp, r'case Result\.(\w+):\s*return "([^"]+)"')),
                        (PYTHON, words(python, r'Result\.(\w+): "([^"]+)"'))):
        if set(found) != set(codes) or found != spoken:
            problems.append(f"{path}:1: words of the result codes are missing or differ: "
                            f"{sorted(set(found.items()) ^ set(spoken.items()))}")

    version = ".".join(re.findall(r"^#define TVMGR_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)$", header, re.MULTILINE))
    for path, pattern in (("CMakeLists.txt", r"project\(TaviraManager VERSION ([\d.]+)"),
                          (CSHARP, r'const string Version = "([^"]*)"'), (PYTHON, r'^__version__ = "([^"]*)"')):
        found = re.search(pattern, read(path), re.MULTILINE)
        if not found or found.group(1) != version:
            problems.append(f"{path}:1: not of version {version}, which the public header declares")

    for path in sorted((ROOT / "bindings/python").glob("*.py")):
        try:
            ast.parse(path.read_text(encoding="utf-8"), feature_version=OLDEST_PYTHON)
        except SyntaxError as error:
            problems.append(f"{path.relative_to(ROOT)}:{error.lineno}: not for Python {OLDEST_PYTHON}: {error.msg}")
    finish("bindings", problems, f"{len(exports)} functions in three languages, version {version}")


main()
