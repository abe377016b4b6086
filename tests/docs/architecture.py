"""architecture.py <root>

docs/architecture.md: the picture of the structure has the arrows that the sources' includes have, and the table of the rooms
the rules that tests/include_rules/check enforces. The layout in README.md names every folder, and those of src/.
"""

import glob
import os
import re
import sys

from markdown import Document, Problems

# May be used by all; the picture says so instead of drawing it.
_COMMON = {"log", "platform", "records"}


def actual_arrows(root):
    arrows = set()
    folders = set()
    for path in glob.glob(os.path.join(root, "src", "*", "*.*")):
        folder = os.path.basename(os.path.dirname(path))
        folders.add(folder)
        with open(path, encoding="utf-8") as file:
            for included in re.findall(r'^\s*#\s*include "(\w+)/', file.read(), re.MULTILINE):
                if included not in _COMMON | {folder} and folder not in _COMMON:
                    arrows.add((folder, included))
    return folders, arrows


def check_picture(root, document, problems):
    folders, actual = actual_arrows(root)
    picture = next(block for block in document.blocks if block.info == "mermaid" and "flowchart" in block.lines[0])
    text = "\n".join(picture.lines)
    drawn = {arrow for arrow in re.findall(r"^\s*(\w+) --> (\w+)$", text, re.MULTILINE) if set(arrow) <= folders}
    place = document.place(picture.line)
    for start, end in sorted(actual - drawn):
        problems.add(place, f"{start} includes headers of {end}, and there is no such arrow")
    for start, end in sorted(drawn - actual):
        problems.add(place, f"an arrow from {start} to {end}, and no such include")
    for folder in sorted(folders):
        if f"<b>{folder}</b>" not in text:
            problems.add(place, f"src/{folder} is not in the picture")
    return len(drawn)


def check_rooms(root, document, problems):
    with open(os.path.join(root, "tests", "include_rules", "check"), encoding="utf-8") as file:
        rules = re.findall(r"^    \[([\w/]+)\]='([\w ]*)'$", file.read(), re.MULTILINE)
    # The rules name the rooms of the tool with their path, those of src/ without.
    allowed = {folder if "/" in folder else f"src/{folder}": set(names.split()) - {os.path.basename(folder)}
               for folder, names in rules}
    rooms = next(rows for _, _, rows in document.tables() if rows[0][0] == "folder")
    said = {}
    for folder, _, may_include in rooms[1:]:
        match = re.fullmatch(r"`((?:src|tool)/\w+)/`", folder)
        if match:
            said[match[1]] = set(re.findall(r"`(\w+)`", may_include))
    folders = {os.path.dirname(os.path.relpath(path, root))
               for tree in ("src", "tool") for path in glob.glob(os.path.join(root, tree, "*", "*.h"))}
    for folder in sorted(folders | set(allowed)):
        if said.get(folder) != allowed.get(folder):
            problems.add(document.path, f"{folder} may include {sorted(allowed.get(folder, []))}, "
                                        f"and the table says {sorted(said.get(folder, []))}")
    return len(said)


def check_layout(root, problems):
    readme = Document(root, "README.md")
    line, rows = next((line, rows) for line, section, rows in readme.tables() if section == "Layout")
    named = {folder: row[1] for row in rows for folder in re.findall(r"`(\w+)/`", row[0])}
    folders, _ = actual_arrows(root)
    for folder in sorted(folders ^ set(re.findall(r"`(\w+)`", named.get("src", "")))):
        problems.add(readme.place(line), f"src/{folder} is missing, or is none")
    there = {name for name in os.listdir(root) if os.path.isdir(os.path.join(root, name)) and not name.startswith(".")}
    for folder in sorted((there - {"build"}) ^ set(named)):
        problems.add(readme.place(line), f"{folder}/ is missing, or is none")


def main(root):
    document = Document(root, "docs/architecture.md")
    problems = Problems()
    check_layout(root, problems)
    arrows = check_picture(root, document, problems)
    rooms = check_rooms(root, document, problems)
    return problems.report(f"{arrows} arrows, {rooms} rooms")


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
