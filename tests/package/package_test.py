#!/usr/bin/env -S python3 -B
"""The package as its user meets it: unpacked into a folder with a blank and an umlaut, hosts made of it there, run under Wine.

Usage: package_test.py BUILD_FOLDER WINE   (BUILD_FOLDER holds mingw/ and package/)
"""

import hashlib
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
GCC_FOLDER = "/usr/lib/gcc/x86_64-w64-mingw32/12-posix"
# Debian's clang does not find the C++ library of mingw-w64 by itself.
CLANG_FLAGS = (f"-nostdinc++ -isystem {GCC_FOLDER}/include/c++ -isystem {GCC_FOLDER}/include/c++/x86_64-w64-mingw32 "
               f"-B{GCC_FOLDER}")
CLANG_LINK = f"-fuse-ld=lld -L{GCC_FOLDER} -pthread -Wl,--allow-multiple-definition"
TEXTS = {".md", ".c", ".cpp", ".h", ".hpp", ".cs", ".py", ".cmake", ".pc", ".txt", ".json"}
# What a user of the package does not have.
REPOSITORY = re.compile(r"\./dev\b|CONTRIBUTING|ARCHITECTURE|SECURITY\.md|\btests/|\bfuzz/|\bsrc/|\bbuild/mingw")
HEADER_VERSION = re.compile(r"^#define TVMGR_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)$", re.MULTILINE)
THREE_RESOLUTIONS = "first resolution: 600\nsecond resolution: 600\nthird resolution: 600\n"
# What compilers of Microsoft's kind have and this machine has not: as much of their headers as intrin.h asks for.
STAND_INS = {"malloc.h": "", "setjmp.h": "typedef long long jmp_buf[32];\n",
             "stdlib.h": "void* malloc(__SIZE_TYPE__);\nvoid free(void*);\n"}
# A host without any compiler's library: Windows' own msvcrt.dll prints.
BARE_HOST = """#include <tavira/TaviraManager.h>
int printf(const char* format, ...);
void exit(int code);
int mainCRTStartup(void) {
  uint32_t status = TVMGR_STATUS_UNKNOWN;
  int32_t result = TVMGR_Initialize();
  if (result == TVMGR_OK) result = TVMGR_UpdatePortComInfo(NULL, L"USB001");
  if (result == TVMGR_OK) result = TVMGR_GetPrinterStatus(&status);
  TVMGR_Terminate();
  printf("result %d, status %u\\n", (int)result, (unsigned)status);
  exit(0);
}
"""

problems = []


def expect(condition, what):
    if not condition:
        problems.append(f"package: {what}")


def run(command, folder, expected=None, status=0, timeout=60, **environment):
    """Runs a command (a list, or a text for bash) and returns what it wrote to stdout; notes what is not as expected."""
    words = ["bash", "-euc", command] if isinstance(command, str) else [str(word) for word in command]
    done = subprocess.run(words, cwd=folder, env={**os.environ, **environment}, stdin=subprocess.DEVNULL, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=timeout)
    out = done.stdout.replace("\r\n", "\n")
    shown = " ".join(words[-1:] if isinstance(command, str) else words)
    expect(done.returncode == status, f"{shown}: ended with {done.returncode}:\n{out}{done.stderr}")
    if expected is not None:
        expect(re.fullmatch(expected, out), f"{shown}: wrote {out!r}, not {expected!r}; {done.stderr}")
    return out


def check_twice(build):
    """The same bytes when it is made again, and sums that are right."""
    package, again = build / "package", build / "package_again"
    run([ROOT / "package/make.py", build / "mingw", again], ROOT)
    sums = (package / "SHA256SUMS").read_text(encoding="ascii")
    expect(sums == (again / "SHA256SUMS").read_text(encoding="ascii"), "made twice, the zips differ")
    run(["sha256sum", "--check", "--strict", "--quiet", "SHA256SUMS"], package)
    shutil.rmtree(again)
    return sums.split()[1]


def check_files(zip_folder, build):
    """Links that lead somewhere, nothing that only the repository has, no path of this machine."""
    dlls = {"bin/TaviraManager.dll": "bin", "emulator/Ferrolink.dll": "bin", "recorder/Ferrolink.dll": "recorder"}
    for name, folder in dlls.items():
        tested = build / "mingw" / folder / pathlib.PurePath(name).name
        expect((zip_folder / name).read_bytes() == tested.read_bytes(), f"{name} is not the one that was tested")
    for path in sorted(zip_folder.rglob("*")):
        if not path.is_file():
            continue
        data, name = path.read_bytes(), path.relative_to(zip_folder).as_posix()
        expect(str(ROOT).encode() not in data, f"{name} names the folder that it was built in")
        if path.suffix in (".dll", ".exe"):
            start = int.from_bytes(data[0x3C:0x40], "little")
            expect(data[start:start + 4] == b"PE\0\0" and not any(data[start + 8:start + 12]), f"{name} has a time in it")
        if path.suffix not in TEXTS or name.startswith("LICENSES/"):
            continue
        text = data.decode("utf-8")
        for match in REPOSITORY.finditer(text):
            expect(False, f"{name} names {match.group()}, which is not in the package")
        if path.suffix == ".md":
            for link in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", text):
                expect((path.parent / link).exists(), f"{name} links to {link}, which is not in the package")


def commands(readme, heading):
    """The indented lines of a README that follow a line with these words."""
    block = readme.split(heading, 1)[1].split("\n\n", 1)[1]
    return [line.strip() for line in block.split("\n\n", 1)[0].splitlines()]


def resource_version(program):
    """Of the fixed part of its version resource, the first three numbers."""
    data = program.read_bytes()
    minor, major, _, patch = struct.unpack_from("<4H", data, data.index(b"\xbd\x04\xef\xfe") + 8)
    return f"{major}.{minor}.{patch}"


def check_versions(zip_folder, version, wine):
    header = (zip_folder / "include/tavira/TaviraManager.h").read_text(encoding="utf-8")
    expect(".".join(HEADER_VERSION.findall(header)) == version, "the header is of another version than the package")
    expect(f"## [{version}]" in (zip_folder / "CHANGELOG.md").read_text(encoding="utf-8"), "no changes for this version")
    expect(resource_version(zip_folder / "bin/TaviraManager.dll") == version, "the DLL's version resource is another one")
    number = re.escape(version)
    run([wine, "bin/tvmgr.exe", "--version"], zip_folder, f"tvmgr {number}\n")
    run([wine, "emulator/lxemu_network.exe", "--version"], zip_folder, f".*{number}\n")
    pkg_config = {"PKG_CONFIG_LIBDIR": str(zip_folder / "lib/pkgconfig")}
    run(["pkg-config", "--modversion", "TaviraManager"], zip_folder, f"{number}\n", **pkg_config)


def build_with_cmake(zip_folder, name, *options):
    folder = zip_folder / name
    run(["cmake", "-G", "Ninja", "-S", "examples", "-B", name, "-D", "CMAKE_SYSTEM_NAME=Windows",
         "-D", "CMAKE_BUILD_TYPE=Release", *options], zip_folder)
    run(["cmake", "--build", name], zip_folder, timeout=300)
    return folder


def check_hosts(folder, wine):
    """The examples, each in the folder that CMake has filled."""
    run([wine, "read_settings.exe"], folder, THREE_RESOLUTIONS)
    run([wine, "write_setting.exe", "7", "3", "USB001"], folder, "setting 7 is 3\n")
    run([wine, "printer_sample.exe", "read", "USB001"], folder, "resolutions: 600, 600, 600\n")
    # Saved by another process before: the memory folder lies beside the DLL, whatever its path.
    run([wine, "printer_sample.exe", "write", "7", "3", "USB001"], folder, "confirmed: the printer shows 3\n")
    run([wine, "load_by_name.exe", "USB001"], folder, "status: 1\n")


def check_microsoft(zip_folder, wine):
    """As near to MSVC as this machine gets: its target, its way to see the header, its linker's double, its import library."""
    folder = zip_folder / "out bare"
    (folder / "headers").mkdir(parents=True)
    for name, text in STAND_INS.items():
        (folder / "headers" / name).write_text(text, encoding="ascii")
    (folder / "bare.c").write_text(BARE_HOST, encoding="ascii")
    run(["clang", "--target=x86_64-pc-windows-msvc", "-std=c11", "-Wall", "-Wextra", "-Werror", "-isystem", "headers",
         "-I../include", "-c", "bare.c", "-o", "bare.obj"], folder)
    run(["lld-link", "/nologo", "/nodefaultlib", "/subsystem:console", "/out:../bin/bare.exe", "bare.obj",
         "../lib/TaviraManager.lib", "/usr/x86_64-w64-mingw32/lib/libmsvcrt.a"], folder)
    run([wine, "bin/bare.exe"], zip_folder, "result 0, status 1\n")


def check_network_printer(zip_folder, wine):
    """The printer on the network, in a process of its own: on loopback, ports that are free, nothing broadcast."""
    command = [wine, "emulator/lxemu_network.exe", "--printer", "127.0.0.1", "--port", "0", "--search-port", "0", "--for", "60"]
    with subprocess.Popen(command, cwd=zip_folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True) as printer:
        lines = []
        while not lines or lines[-1] not in ("ready", ""):
            lines.append(printer.stdout.readline().strip())
        port = re.search(r"commands (\d+)", lines[0])
        expect(port and lines[-1] == "ready", f"lxemu_network.exe wrote {lines}")
        if port:
            address = f"127.0.0.1:{port.group(1)}"
            run([wine, "bin/tvmgr.exe", "get", "CLR,Z", "--address", address], zip_folder, "(?s).*CLR,Z +600\n")
        printer.kill()


def check_recorder(zip_folder, wine):
    folder = zip_folder / "out recorder"
    folder.mkdir()
    for name in ("bin/tvmgr.exe", "bin/TaviraManager.dll", "recorder/Ferrolink.dll", "recorder/example.txt"):
        shutil.copy(zip_folder / name, folder)
    run([wine, "tvmgr.exe", "status", "--port", "USB001"], folder, "idle .*\n", TAVIRA_REPLAY="example.txt")


def imports_module(program):
    listing = run(["x86_64-w64-mingw32-objdump", "-p", program], program.parent)
    return "DLL Name: TaviraManager.dll" in listing


def prove(build, wine):
    """All of it; returns the name of the zip."""
    package = check_twice(build)
    version = re.fullmatch(r"TaviraManager-(.*)\.zip", package).group(1)
    work = build / "package_test" / "Zip für Hosts"
    shutil.rmtree(work.parent, ignore_errors=True)
    work.mkdir(parents=True)
    shutil.copy(build / "package" / package, work)
    zip_folder = work / f"TaviraManager-{version}"

    # The README's own commands, as they stand there.
    subprocess.run(["unzip", "-q", package], cwd=work, check=True)
    readme = (zip_folder / "README.md").read_text(encoding="utf-8")
    lines = commands(readme, "On Linux, for Windows")
    expect(len(lines) == 5 and lines[0] == f"unzip {package}", "the README wants other commands than five")
    check_files(zip_folder, build)
    check_versions(zip_folder, version, wine)
    run("\n".join(lines[1:]), work, THREE_RESOLUTIONS)
    for line in commands(readme, "`tvmgr.exe` wants"):
        run([wine, *line.replace("bin\\tvmgr", "bin/tvmgr.exe").split()], zip_folder)
    run([wine, "bin/tvmgr.exe", "get", "CLM,S"], zip_folder, "(?s).*CLM,S +3\n")

    # C through pkg-config, with the README's line.
    shutil.copy(zip_folder / "examples/read_settings.c", zip_folder / "host.c")
    line = re.search(r'`(eval "gcc .*")`', readme).group(1)
    run(line.replace("gcc ", "x86_64-w64-mingw32-gcc ", 1), zip_folder, "",
        PKG_CONFIG_LIBDIR=str(zip_folder / "lib/pkgconfig"))
    shutil.move(zip_folder / "host.exe", zip_folder / "bin")
    run([wine, "bin/host.exe"], zip_folder, THREE_RESOLUTIONS)

    # C and C++ through find_package: GCC, then clang with lld and the import library of Microsoft's kind.
    lines = commands(readme, "and on Linux (with")
    expect(len(lines) == 1, "the README does not say how CMake builds on Linux")
    run(f"{lines[0]}\ncmake --build out --config Release", zip_folder, timeout=300, CMAKE_GENERATOR="Ninja")
    check_hosts(zip_folder / "out", wine)
    folder = build_with_cmake(
        zip_folder, "out clang", "-D", "CMAKE_C_COMPILER=clang", "-D", "CMAKE_CXX_COMPILER=clang++",
        "-D", "CMAKE_C_COMPILER_TARGET=x86_64-w64-mingw32", "-D", "CMAKE_CXX_COMPILER_TARGET=x86_64-w64-mingw32",
        "-D", f"CMAKE_C_FLAGS=-B{GCC_FOLDER}", "-D", f"CMAKE_CXX_FLAGS={CLANG_FLAGS}",
        "-D", f"CMAKE_EXE_LINKER_FLAGS={CLANG_LINK}")
    expect("TaviraManager.lib" in (folder / "build.ninja").read_text(), "clang does not take TaviraManager.lib")
    check_hosts(folder, wine)
    expect(imports_module(folder / "read_settings.exe") and not imports_module(folder / "load_by_name.exe"),
           "a host imports the module although it loads it by name, or the other way round")

    check_microsoft(zip_folder, wine)
    check_network_printer(zip_folder, wine)
    check_recorder(zip_folder, wine)
    return package


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    try:
        package = prove(pathlib.Path(sys.argv[1]).resolve(), sys.argv[2])
    except (OSError, subprocess.SubprocessError) as error:
        # What a step that failed should have left is not there for the next one.
        problems.append(f"package: {error}")
    for problem in problems:
        print(problem)
    if not problems:
        print(f"package: {package} serves C and C++ hosts of GCC, clang and lld-link, and one by name")
    sys.exit(1 if problems else 0)


main()
