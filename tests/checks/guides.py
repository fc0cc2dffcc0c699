#!/usr/bin/env -S python3 -B
"""Checks the pages of docs/: links lead somewhere that the package has, too; every program in a guide is one that runs."""

import re
import sys
from pathlib import Path

from repository import ROOT, files, finish

sys.path.insert(0, str(ROOT / "tests/docs"))
import guide  # noqa: E402

# What of the repository lies at the same place in the package.
PACKAGED = re.compile(r"README\.md$|CHANGELOG\.md$|docs/|include/|bindings/|examples($|/)|(emulator|recorder)/README\.md$")
LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")
LONGEST_PAGE = 160


def anchors(text):
    """Those of a page's headings, as the usual viewers make them."""
    headings = re.findall(r"^#+ (.*)$", re.sub(r"^```.*?^```", "", text, flags=re.MULTILINE | re.DOTALL), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def link_problems(page, text):
    for target in LINK.findall(re.sub(r"^```.*?^```", "", text, flags=re.MULTILINE | re.DOTALL)):
        name, _, anchor = target.partition("#")
        if target.startswith(("https://", "http://")):
            continue
        path = (page.parent / name).resolve() if name else page
        if not path.exists():
            yield f"leads to {target}, which does not exist"
        elif not PACKAGED.match(path.relative_to(ROOT).as_posix()):
            yield f"leads to {target}, which the package does not hold"
        elif anchor and anchor not in anchors(path.read_text(encoding="utf-8")):
            yield f"leads to {target}: there is no such heading"


def main():
    problems, programs, transcripts = [], 0, 0
    index = (guide.DOCS / "README.md").read_text(encoding="utf-8")
    pages = [ROOT / page for page in files("docs/*.md", "bindings/*.md", "README.md")]
    for page in pages:
        text = page.read_text(encoding="utf-8")
        problems += [f"{page.relative_to(ROOT)}:1: {problem}" for problem in link_problems(page, text)]
    for page in guide.guides():
        text, name = page.read_text(encoding="utf-8"), page.relative_to(ROOT)
        blocks = guide.blocks(text)
        problems += [f"{name}:{block.line}: {block.language} that no test runs" for block in blocks
                     if block.language in guide.PROGRAM_LANGUAGES | {"console"} and not block.name and not block.stage]
        programs += sum(Path(block.name).suffix not in ("", ".ini", ".GRF") for block in blocks)
        transcripts += sum(bool(block.stage) for block in blocks)
        if not any(block.stage for block in blocks):
            problems.append(f"{name}:1: a guide without a transcript")
        if f"({page.name})" not in index:
            problems.append(f"{name}:1: docs/README.md does not name it")
        if text.count("\n") > LONGEST_PAGE:
            problems.append(f"{name}:1: more than {LONGEST_PAGE} lines")
    finish("guides", problems, f"{len(guide.guides())} guides with {programs} programs and {transcripts} transcripts, {len(pages)} pages")


main()
