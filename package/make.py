#!/usr/bin/env -S python3 -B
"""Puts the package together: the zip, the zip of its debug symbols, SHA256SUMS.

Usage: make.py BUILD_FOLDER OUTPUT_FOLDER   (a build of the preset mingw)

The same sources give the same bytes, wherever the repository lies.
"""

import hashlib
import pathlib
import re
import shutil
import subprocess
import sys
import time
import zipfile

ROOT = pathlib.Path(__file__).resolve().parents[1]

# From the build folder: file, and folder in the package.
BUILT = (
    ("bin/TaviraManager.dll", "bin"),
    ("bin/tvmgr.exe", "bin"),
    ("src/libTaviraManager.dll.a", "lib"),
    # Not beside the module: there it would be taken for the real port library.
    ("bin/Ferrolink.dll", "emulator"),
    ("bin/lxemu_network.exe", "emulator"),
    ("recorder/Ferrolink.dll", "recorder"),
    ("package/TaviraManagerConfigVersion.cmake", "lib/cmake/TaviraManager"),
    ("package/TaviraManager.pc", "lib/pkgconfig"),
)
# From the repository: Git's pattern for the files, the folder that they are taken from, the folder in the package.
COPIED = (
    ("include/tavira/*", ".", "."),
    ("bindings/*", ".", "."),
    ("examples/*.c", ".", "."),
    ("examples/*.cpp", ".", "."),
    ("emulator/README.md", ".", "."),
    ("recorder/README.md", ".", "."),
    ("recorder/example.txt", ".", "."),
    ("docs/*", ".", "."),
    ("CHANGELOG.md", ".", "."),
    ("package/README.md", "package", "."),
    ("package/examples/*", "package", "."),
    ("package/TaviraManagerConfig.cmake", "package", "lib/cmake/TaviraManager"),
    ("package/LICENSES.md", "package", "."),
)
# How the module is built inside: of no use without its sources.
LEFT_OUT = {"docs/ARCHITECTURE.md"}
# Debian's package of everything that is linked in, and the name that its licence gets.
LICENSES = (
    ("gcc-mingw-w64-base", "gcc-runtime.txt"),
    ("mingw-w64-x86-64-dev", "mingw-w64-and-winpthreads.txt"),
    ("libcli11-dev", "cli11.txt"),
    ("nlohmann-json3-dev", "nlohmann-json.txt"),
    ("libz-mingw-w64-dev", "zlib.txt"),
)
# Texts that those refer to.
COMMON_LICENSES = ("GPL-3",)


def run(*command, **options):
    return subprocess.run([str(word) for word in command], check=True, cwd=ROOT, **options)


def output(*command):
    return run(*command, capture_output=True, text=True).stdout


def copy(source, folder):
    if not source.is_file():
        sys.exit(f"{source} is missing")
    folder.mkdir(parents=True, exist_ok=True)
    shutil.copyfile(source, folder / source.name)


def copy_sources(stage):
    for pattern, base, folder in COPIED:
        names = output("git", "ls-files", "-z", "--cached", "--others", "--exclude-standard", "--", pattern).split("\0")
        # A star of Git's also stands for folders.
        found = [name for name in filter(None, names) if name not in LEFT_OUT and (ROOT / name).is_file()]
        if not found:
            sys.exit(f"the package needs {pattern}")
        for name in found:
            target = stage / folder / pathlib.PurePath(name).relative_to(base)
            copy(ROOT / name, target.parent)


def make_import_library(stage):
    """The import library of Microsoft's kind, from the same list as the exports."""
    run("llvm-dlltool", "-m", "i386:x86-64", "-d", "src/interface/TaviraManager.def", "-l", stage / "lib/TaviraManager.lib")


def make_reference(stage, version):
    options = (ROOT / "package/Doxyfile").read_text(encoding="utf-8")
    options += f'PROJECT_NUMBER = {version}\nOUTPUT_DIRECTORY = "{stage / "docs"}"\n'
    run("doxygen", "-", input=options, text=True)


def copy_licenses(stage):
    folder = stage / "LICENSES"
    folder.mkdir()
    for package, name in LICENSES:
        shutil.copyfile(f"/usr/share/doc/{package}/copyright", folder / name)
    for name in COMMON_LICENSES:
        shutil.copyfile(f"/usr/share/common-licenses/{name}", folder / f"{name}.txt")
    (stage / "LICENSES.md").rename(folder / "README.md")


def archive(folder, target, moment):
    """A zip of the folder with its name in front: sorted, every file of the same time and rights."""
    files = sorted(path for path in folder.rglob("*") if path.is_file())
    with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED) as package:
        for path in files:
            entry = zipfile.ZipInfo(path.relative_to(folder.parent).as_posix(), moment)
            entry.create_system = 3  # Unix, wherever this runs: the rights count
            entry.external_attr = (0o755 if path.suffix in (".exe", ".dll", ".py") else 0o644) << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            package.writestr(entry, path.read_bytes())
    print(f"{target}: {len(files)} files, {target.stat().st_size} bytes")


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    build, target = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    version = re.search(r"^project\(TaviraManager VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text(),
                        re.MULTILINE).group(1)
    stage = target / f"TaviraManager-{version}"
    # The same folders, so that the symbols can be unpacked over the package.
    symbols = target / "symbols" / stage.name
    shutil.rmtree(target, ignore_errors=True)
    for name, folder in BUILT:
        copy(build / name, stage / folder)
        if name.endswith((".dll", ".exe")):
            copy(build / f"{name}.debug", symbols / folder)
    copy_sources(stage)
    make_import_library(stage)
    make_reference(stage, version)
    copy_licenses(stage)
    readme = stage / "README.md"
    readme.write_text(readme.read_text(encoding="utf-8").replace("@VERSION@", version), encoding="utf-8", newline="\n")
    # The time of the last change, in UTC.
    moment = time.gmtime(int(output("git", "log", "-1", "--format=%ct")))[:6]
    with open(target / "SHA256SUMS", "w", encoding="ascii", newline="\n") as sums:
        for folder, name in ((stage, stage.name), (symbols, f"{stage.name}-symbols")):
            package = target / f"{name}.zip"
            archive(folder, package, moment)
            sums.write(f"{hashlib.sha256(package.read_bytes()).hexdigest()}  {package.name}\n")


main()
