#!/usr/bin/env -S python3 -B
"""Checks who includes whom: the directions between the folders, and where the headers of an operating system may stand."""

import posixpath
import re

from repository import ROOT, SOURCES, files, finish

# Which rooms of src/ each room may include, besides itself. A room within a room ("discovery/usb") has a line of its own.
DISCOVERY = {"discovery", "discovery/search", "discovery/network", "discovery/usb"}
LAYERS = {
    "platform": set(),
    "command": set(),
    "link": {"platform"},
    "storage": {"command", "link", "platform"},
    "settings": {"storage", "command", "link", "platform"},
    "discovery": {"command", "link", "platform"},
    "discovery/network": {"platform"},
    "discovery/usb": {"discovery", "platform"},
    "discovery/search": {"discovery", "discovery/network", "discovery/usb", "command", "platform"},
    "backup": {"settings", "storage", "command", "link", "platform"},
    "manager": {"settings", "storage", "backup", *DISCOVERY, "command", "link", "platform"},
    "interface": {"manager", "platform"},
}

# The areas that stand on their own: what else of the repository each may include.
AREAS = {
    "src": {"include"},
    "include": set(),
    "emulator": set(),
    "recorder": set(),
    "tools": {"include"},
    "examples": {"include"},
}

# Pure code: bytes in, bytes out. No clock, no thread, no file, no stream.
IMPURE = {"chrono", "thread", "mutex", "condition_variable", "atomic", "future", "filesystem", "fstream",
          "iostream", "cstdio", "ctime", "stdio.h", "time.h", "random"}

WINDOWS_HEADERS = re.compile(
    r"(windows|winsock2?|ws2\w+|win\w+|iphlpapi|setupapi|cfgmgr32|devguid|initguid|usbiodef|usb\w*|shellapi|shlobj|"
    r"objbase|ole2|combaseapi|tlhelp32|psapi|io|direct|process|conio|tchar|strsafe|sddl|accctrl|aclapi)\.h",
    re.IGNORECASE)
WINDOWS_PLACES = ("src/platform/win32/", "src/interface/", "emulator/", "recorder/win32/", "tools/", "examples/",
                  "bench/module/", "tests/system/", "tests/network/", "tests/cli/", "tests/emulator/", "tests/recorder/")
# Within the emulator only the shells of the programs know the system, its model does not.
EMULATOR_SHELL = re.compile(r"emulator/(.*/)?\w*(ferrolink|dll|win32|network|socket|server|main)\w*(/|\.)")
POSIX_HEADERS = re.compile(r"(unistd|dlfcn|fcntl|poll|pthread|sys/\w+|netinet/\w+|arpa/\w+|net/\w+|netdb)\.h")

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def resolve(source, name, known):
    """The repository file that an include means, or None for a header of the system."""
    area = source.parts[0]
    folders = [str(parent) for parent in source.parents if parent.parts]  # its own folder first, then upwards
    folders += [area, f"{area}/include", "include", "src", "emulator", "tools", "tests", "."]
    for folder in folders:
        candidate = posixpath.normpath(posixpath.join(folder, name))
        if candidate in known:
            return candidate
    return None


def room(path):
    """The room of a file of src/: its folder, "platform" with both of its implementations."""
    folder = posixpath.dirname(str(path)).removeprefix("src/")
    return "platform" if folder.startswith("platform/") else folder


def forbidden(source, target):
    """Why source must not include target, or None."""
    area, target_area = source.parts[0], target.split("/")[0]
    if area not in AREAS:
        return None
    if target_area != area:
        allowed = target_area in AREAS[area]
        return None if allowed else f"{area}/ includes nothing of {target_area}/"
    if str(source).startswith("recorder/transcript/") and not target.startswith("recorder/transcript/"):
        return "the transcript stands alone"
    if area != "src" or len(source.parts) < 3:
        return None
    layer, target_layer = room(source), room(target)
    if layer not in LAYERS:
        return f"unknown folder src/{layer}/: give it a place in the layers"
    if target_layer == layer or target_layer in LAYERS[layer]:
        return None
    return f"{layer} does not include {target_layer}"


def misplaced_system_header(source, name):
    """Why source must not include the system header, or None."""
    path = str(source)
    if WINDOWS_HEADERS.fullmatch(name):
        if not path.startswith(WINDOWS_PLACES):
            return "a Windows header outside the platform"
        if path.startswith("emulator/") and not EMULATOR_SHELL.match(path):
            return "a Windows header in the printer's model"
    if POSIX_HEADERS.fullmatch(name) and path.startswith("src/") and not path.startswith("src/platform/posix/"):
        return "a POSIX header outside the platform"
    if name in IMPURE and path.startswith("src/command/"):
        return "the command folder is pure"
    if name in IMPURE - {"mutex"} and path.startswith("recorder/transcript/"):
        return "the transcript's folder is pure"
    return None


def main():
    sources = files(*SOURCES)
    known = {str(path) for path in sources}
    problems, count = [], 0
    if not any(path.parts[0] == "src" for path in sources):
        problems.append("src: no source files found")
    for source in sources:
        text = (ROOT / source).read_text(encoding="utf-8", errors="replace")
        for match in INCLUDE.finditer(text):
            count += 1
            quote, name = match.groups()
            target = resolve(source, name, known)
            if target is None:
                why = misplaced_system_header(source, name)
                if quote == '"' and not why and source.parts[0] in ("src", "emulator", "include", "recorder"):
                    why = "no such file"
            else:
                why = forbidden(source, target)
            if why:
                line = text.count("\n", 0, match.start(2)) + 1
                problems.append(f"{source}:{line}: {name}: {why}")
    finish("layers", problems, f"{len(sources)} files, {count} includes")


main()
