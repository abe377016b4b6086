"""board_files.py <root>

docs/board-files.md names the capabilities, settings and sensors of Overdrive8 boards that the library goes by, and no
others, and for each capability the settings for which a board file has to give ranges.
"""

import os
import re
import sys

from markdown import Document, Problems


def read(root, path):
    with open(os.path.join(root, path), encoding="utf-8") as file:
        return file.read()


def enumerators(text, name):
    """The values of an enumeration, without those that are only bounds."""
    body = re.search(rf"enum {name} : int \{{(.*?)\}};", text, re.S)[1]
    return {int(value, 0) for constant, value in re.findall(r"(\w+) = (\w+)", body) if "Listed" not in constant}


def numbers(cell):
    return {int(number) for number in re.findall(r"\b\d+\b", re.sub(r"\(.*?\)", "", cell))}


def main(root):
    document = Document(root, "docs/board-files.md")
    problems = Problems()
    ids = read(root, "src/amd/od8_settings.h")
    needed = {
        int(bit, 16): set(range(int(first), int(last) + 1))
        for bit, first, last in re.findall(r"\{(0x\w+), (\d+), (\d+)\}", read(root, "sim/board/read_overdrive8.cpp"))}
    tables = {rows[0][0]: (document.place(line), rows[1:]) for line, _, rows in document.tables()}

    place, rows = tables["bit of `capabilities`"]
    told = {int(row[0], 16): numbers(row[2]) for row in rows}
    if told != needed:
        problems.add(place, f"the board reader needs {needed}, told are {told}")
    if set(told) != enumerators(ids, "Od8Flag"):
        problems.add(place, "the library goes by other capabilities")
    settings = set().union(*told.values()) | {37}
    if settings != enumerators(ids, "Od8Setting") | set(range(19, 29)) or "Setting 37 is" not in "\n".join(document.lines):
        problems.add(place, "the library uses other settings")
    place, rows = tables["id of a sensor"]
    if {int(row[0]) for row in rows} != enumerators(ids, "PmLogSensor"):
        problems.add(place, "the library reads other sensors")
    return problems.report(f"{len(told)} capabilities")


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
