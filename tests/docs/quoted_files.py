"""quoted_files.py <root>

A block of tests/README.md that is marked with the path of a file shows the whole file.
"""

import os
import re
import sys

from markdown import Document, Problems
from scratch import before


def main(root):
    problems = Problems()
    document = Document(root, "tests/README.md")
    count = 0
    for block in document.blocks:
        marker = re.fullmatch(r"<!-- file: (\S+) -->", before(document, block))
        if marker:
            count += 1
            with open(os.path.join(root, marker[1]), encoding="utf-8") as file:
                if file.read() != "\n".join(block.lines) + "\n":
                    problems.add(document.place(block.line), f"is not {marker[1]}")
    if count == 0:
        problems.add(document.path, "shows no file")
    return problems.report(f"{count} files")


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
