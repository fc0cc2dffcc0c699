"""The files of the repository, shared by the checks."""

import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
SOURCES = ("*.c", "*.cpp", "*.h", "*.hpp", "*.rc")


def files(*patterns):
    """Paths relative to ROOT of the files that are tracked, or new and not ignored."""
    listing = subprocess.run(
        ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard", "--", *patterns],
        cwd=ROOT, check=True, capture_output=True, text=True).stdout
    names = sorted(set(filter(None, listing.split("\0"))))
    return [pathlib.PurePosixPath(name) for name in names if (ROOT / name).is_file()]


def finish(check, problems, summary):
    """Prints the problems, or the summary of what was looked at, and ends the process."""
    for problem in problems:
        print(problem)
    print(f"{check}: {f'{len(problems)} problem(s)' if problems else summary}")
    sys.exit(1 if problems else 0)
