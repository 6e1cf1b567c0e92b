"""Finds the blocks of code and the commands in the pages for users."""

import dataclasses
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]
# The blocks of this page are signatures, written from docstrings.
WRITTEN_BY_A_PROGRAM = {"docs/python-reference.md"}


@dataclasses.dataclass
class Block:
    """A block of a page: fenced, with its language, or indented, which makes it a shell's."""

    page: str
    line: int  # of its first line of code, from 1
    language: str
    text: str
    said_before: str  # the last line of text before it

    @property
    def where(self):
        return f"{self.page}:{self.line}"

    @property
    def file(self):
        """The file that the page says this is: `main.cpp`:"""
        named = re.findall(r"`([\w./-]+\.\w+)`", self.said_before)
        return named[-1] if named else None


def pages():
    found = [ROOT / "README.md", ROOT / "CONTRIBUTING.md", *sorted((ROOT / "docs").glob("*.md"))]
    return [page.relative_to(ROOT).as_posix() for page in found]


def blocks_of(page):
    """Blocks in the order of the page."""
    lines = (ROOT / page).read_text().splitlines()
    found, said, index = [], "", 0
    while index < len(lines):
        fence = re.match(r"```(\w*)", lines[index])
        if fence:
            end = lines.index("```", index + 1)
            text = lines[index + 1 : end]
            found.append(Block(page, index + 2, fence[1] or "text", "\n".join(text) + "\n", said))
            index = end
        elif lines[index].startswith("    ") and (index == 0 or not lines[index - 1].strip()):
            end = index
            while end < len(lines) and lines[end].startswith("    "):
                end += 1
            text = [line[4:] for line in lines[index:end]]
            found.append(Block(page, index + 1, "shell", "\n".join(text) + "\n", said))
            index = end - 1
        elif lines[index].strip():
            said = lines[index]
        index += 1
    return found


def all_blocks():
    return [block for page in pages() if page not in WRITTEN_BY_A_PROGRAM for block in blocks_of(page)]


def broken_links():
    """Links of the pages that lead to no file, or to no heading of a page."""
    broken = []
    for page in pages() + ["CHANGELOG.md"]:
        text = re.sub(r"^```.*?^```", "", (ROOT / page).read_text(), flags=re.S | re.M)
        for link in re.findall(r"\]\(([^)\s]+)\)", text):
            name, _, heading = link.partition("#")
            target = (ROOT / page).parent / name if name else ROOT / page
            if "://" not in link and not (target.exists() and heading in headings_of(target, heading)):
                broken.append(f"{page}: a link that leads somewhere expected, {link} given")
    return broken


def headings_of(target, heading):
    """The headings as links name them; for a link without one, that."""
    if not heading:
        return {""}
    titles = re.findall(r"^#+ (.*)$", target.read_text(), re.M)
    return {re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-") for title in titles}


def header_blocks():
    """The examples in the comments of the headers that users include: indented by four more."""
    found = []
    for folder in ("platform", "sensor", "robot", "session", "outlets", "ros2"):
        for path in sorted((ROOT / folder).rglob("*.h")):
            if "internal" not in path.parts:
                found += examples_of(path.relative_to(ROOT).as_posix())
    return found


def examples_of(header):
    lines = (ROOT / header).read_text().splitlines()
    found, index = [], 0
    while index < len(lines):
        end = index
        while lines[end].startswith(" *     ") or end > index and lines[end] == " *":
            end += 1
        if end > index:
            text = f'#include "{header}"\n' + "\n".join(line[7:] for line in lines[index:end])
            found.append(Block(header, index, "cpp", text + "\n", ""))
        index = max(end, index + 1)
    return found


def commands_of(block):
    """The commands of a shell's block: lines joined where they go on, without remarks."""
    joined = block.text.replace("\\\n", " ")
    lines = (re.sub(r"(^|\s)#.*", "", line).strip() for line in joined.splitlines())
    return [" ".join(line.split()) for line in lines if line]
