"""The Markdown documents of a tree, as far as the tests look at them: headings, fenced blocks, links and tables."""

import os
import re
from dataclasses import dataclass
from typing import Iterator, List, Tuple

# Folders that hold no documents of ours: what is built, and what is hidden.
_FOREIGN = re.compile(r"^(\..*|build.*|node_modules)$")

_FENCE = re.compile(r"^(?P<indent> {0,3})(?P<fence>`{3,}|~{3,})\s*(?P<info>.*)$")
_HEADING = re.compile(r"^(#{1,6})\s+(.*?)\s*#*\s*$")
_SPAN = re.compile(r"(`+)(.+?)\1")
_LINK = re.compile(r"!?\[(?P<text>(?:[^\[\]]|\[[^\]]*\])*)\]\((?P<target>[^()\s]*(?:\([^()\s]*\))?)(?:\s+\"[^\"]*\")?\)")


@dataclass
class Block:
    """A fenced or indented block of code."""

    line: int  # of its first line of text, from 1
    info: str  # what stands behind the opening fence; "indented" for the other kind
    lines: List[str]
    section: str  # the heading it stands under


class Document:
    def __init__(self, root: str, path: str) -> None:
        self.root = root
        self.path = path  # relative to the root, with "/"
        with open(os.path.join(root, path), encoding="utf-8") as file:
            self.lines = file.read().split("\n")
        self.blocks: List[Block] = []
        self.prose: List[Tuple[int, str]] = []  # numbered lines outside of blocks
        self.headings: List[Tuple[int, int, str]] = []  # line, level, text
        self._read()

    def place(self, line: int) -> str:
        return f"{self.path}:{line}"

    def _read(self) -> None:
        closing = None
        indented = None
        section = ""
        blank = True
        for number, line in enumerate(self.lines, 1):
            if closing is not None:
                if closing.fullmatch(line):
                    closing = None
                else:
                    self.blocks[-1].lines.append(line)
                continue
            fence = _FENCE.match(line)
            if fence:
                closing = re.compile(r" {0,3}" + re.escape(fence["fence"]) + r"+\s*")
                self.blocks.append(Block(number + 1, fence["info"], [], section))
                blank, indented = False, None
                continue
            if line.startswith("    ") and line.strip() and (blank or indented is not None):
                if indented is None and not self._is_list_going_on(number):
                    indented = Block(number, "indented", [], section)
                    self.blocks.append(indented)
                if indented is not None:
                    indented.lines.append(line[4:])
                    blank = False
                    continue
            elif line.strip():
                indented = None
            blank = not line.strip()
            heading = _HEADING.match(line)
            if heading:
                section = heading[2]
                self.headings.append((number, len(heading[1]), heading[2]))
            self.prose.append((number, line))

    def _is_list_going_on(self, number: int) -> bool:
        for line in reversed(self.lines[:number - 1]):
            if re.match(r"\s*([-*]|\d+\.) ", line):
                return True
            if line.strip() and not line.startswith(" "):
                return False
        return False

    def anchors(self) -> List[str]:
        """What #... may name, as GitHub makes it of the headings."""
        seen = {}
        anchors = []
        for _, _, text in self.headings:
            text = _LINK.sub(lambda link: link["text"], text)
            anchor = re.sub(r"[^\w\- ]", "", text.lower().replace("`", "")).replace(" ", "-")
            count = seen.get(anchor, 0)
            seen[anchor] = count + 1
            anchors.append(f"{anchor}-{count}" if count else anchor)
        return anchors

    def links(self) -> Iterator[Tuple[int, str]]:
        for number, line in self.prose:
            # A code span is no place for a link, but may be a link's text.
            bare = _SPAN.sub(lambda span: "`" + "x" * len(span[2]) + "`", line)
            for link in _LINK.finditer(bare):
                yield number, link["target"]

    def spans(self) -> Iterator[Tuple[int, str]]:
        for number, line in self.prose:
            for span in _SPAN.finditer(line):
                yield number, span[2].strip()

    def tables(self) -> Iterator[Tuple[int, str, List[List[str]]]]:
        """The line, the section and the rows of each table, the heading first and without the line of dashes."""
        rows: List[List[str]] = []
        first = 0
        section = ""
        for number, line in self.prose + [(len(self.lines) + 1, "")]:
            heading = _HEADING.match(line)
            if line.startswith("|"):
                first = first or number
                rows.append(_cells(line))
                continue
            if rows:
                yield first, section, [rows[0]] + rows[2:]
                rows, first = [], 0
            if heading:
                section = heading[2]


def _cells(line: str) -> List[str]:
    return [cell.strip().replace("\\|", "|") for cell in re.split(r"(?<!\\)\|", line.strip().strip("|"))]


def documents(root: str) -> List[Document]:
    found = []
    for folder, folders, files in os.walk(root):
        folders[:] = sorted(name for name in folders if not _FOREIGN.match(name))
        for name in sorted(files):
            if name.endswith(".md"):
                found.append(Document(root, os.path.relpath(os.path.join(folder, name), root).replace(os.sep, "/")))
    return found


class Problems:
    """What is wrong, with its place. Its number is the test's result."""

    def __init__(self) -> None:
        self.found: List[str] = []

    def add(self, place: str, text: str) -> None:
        self.found.append(f"{place}: {text}")

    def report(self, checked: str) -> int:
        for problem in self.found:
            print(problem)
        print(f"{checked}, {len(self.found)} problems")
        return 1 if self.found else 0
