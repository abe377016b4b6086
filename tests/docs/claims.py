"""claims.py <root>

README.md's table of what is complete says in every row that it has never run on a real card, and the page for who has one
says so before anything else.
"""

import sys

from markdown import Document, Problems


def main(root):
    problems = Problems()
    readme = Document(root, "README.md")
    line, _, rows = next(readme.tables())
    for number, row in enumerate(rows[1:], line + 2):
        if not row[-1].startswith("never run"):
            problems.add(readme.place(number), f"{row[0]}: nothing is said of real cards")
    page = Document(root, "docs/using-gputunectl-on-windows.md")
    first = page.headings[1][0]
    if "never run on a real card" not in "\n".join(page.lines[:first]):
        problems.add(page.path, "does not begin with what was never tried")
    return problems.report(f"{len(rows) - 1} rows")


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
