"""The guides of docs/, and what of them can be run.

A comment in front of a fenced block says what the block is:

  <!-- file NAME -->           the content of this file: a program, a printer.ini
  <!-- transcript -->          programs of the guide, over the module and the emulated printer as libraries for Linux
  <!-- network transcript -->  the same, in a network of three emulated printers: 127.0.0.2, .3 and .4
  <!-- tvmgr transcript -->    tvmgr, under Wine
  <!-- printers transcript --> tvmgr, in the network of tests/network/batch_test.py

In a transcript the lines behind "> " are commands, the others what they print, standard error included. "…" stands for any
text, alone in a line for any lines. A command that fails is followed by "> echo %ERRORLEVEL%".
"""

import re
from dataclasses import dataclass
from pathlib import Path

DOCS = Path(__file__).resolve().parents[2] / "docs"
# These are no guides: how the repository is built inside, the index, tvmgr and the format of its --json.
OTHER_PAGES = {"ARCHITECTURE.md", "README.md", "json.md", "tvmgr.md"}
PROGRAM_LANGUAGES = {"c", "cpp", "csharp", "ini", "python"}
MARK = re.compile(r"<!-- (?:file (?P<name>\S+)|(?P<stage>(?:network |printers |tvmgr )?)transcript) -->")


@dataclass
class Block:
    line: int  # of the fence, from 1
    language: str
    text: str
    name: str = ""  # of the file that it is
    stage: str = ""  # of a transcript: "native", "network", "printers" or "tvmgr"


def blocks(text):
    """All fenced blocks of a page."""
    found, lines = [], text.split("\n")
    number = 0
    while number < len(lines):
        fence = re.fullmatch(r"```(\w*)", lines[number])
        if fence:
            end = lines.index("```", number + 1)
            block = Block(number + 1, fence.group(1), "".join(line + "\n" for line in lines[number + 1:end]))
            mark = MARK.fullmatch(lines[number - 1])
            if mark:
                block.name = mark.group("name") or ""
                block.stage = "" if block.name else mark.group("stage").strip() or "native"
            found.append(block)
            number = end
        number += 1
    return found


def guides():
    return [page for page in sorted(DOCS.glob("*.md")) if page.name not in OTHER_PAGES]
