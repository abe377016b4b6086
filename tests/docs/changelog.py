"""changelog.py <root>

CHANGELOG.md keeps to the form of Keep a Changelog: an unreleased part first, then dated versions in descending order, each
with the six kinds of change and no others.
"""

import re
import sys

from markdown import Document, Problems

_UNRELEASED = "[Unreleased]"
_VERSION = re.compile(r"\[(\d+)\.(\d+)\.(\d+)\] - \d{4}-\d{2}-\d{2}")
_KINDS = {"Added", "Changed", "Deprecated", "Removed", "Fixed", "Security"}


def main(root):
    changelog = Document(root, "CHANGELOG.md")
    problems = Problems()
    versions = []
    kinds = set()
    for line, level, text in changelog.headings:
        place = changelog.place(line)
        if level == 2:
            kinds = set()
            version = _VERSION.fullmatch(text)
            number = tuple(map(int, version.groups())) if version else None
            if not version and (text != _UNRELEASED or versions):
                problems.add(place, f'"{text}" is neither {_UNRELEASED}, first, nor of the form [1.2.3] - 2025-01-31')
            if number and versions and versions[-1] and number >= versions[-1]:
                problems.add(place, "versions stand newest first")
            versions.append(number)
        elif level == 3:
            if text not in _KINDS or text in kinds:
                problems.add(place, f'"{text}" is none of the kinds {", ".join(sorted(_KINDS))}, or is there twice')
            kinds.add(text)
    if not versions or versions[0] is not None:
        problems.add("CHANGELOG.md", f"{_UNRELEASED} is missing")
    return problems.report(f"{len(versions)} versions")


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
