"""changelog.py <root>

CHANGELOG.md keeps to the form of Keep a Changelog: an unreleased part first, then dated versions in descending order, each
with the six kinds of change and no others. The newest is the project's version, and so is every version that another file
names.
"""

import glob
import os
import re
import sys

from markdown import Document, Problems

_UNRELEASED = "[Unreleased]"
_VERSION = re.compile(r"\[(\d+)\.(\d+)\.(\d+)\] - \d{4}-\d{2}-\d{2}")
_KINDS = {"Added", "Changed", "Deprecated", "Removed", "Fixed", "Security"}
# Where a file names the version, or its first two numbers.
_NAMED = {
    "docs/*.md": r"\bgputune-(\d+\.\d+\.\d+)-|find_package\(gputune (\d+\.\d+)|gputune\.dll, version: (\d+\.\d+\.\d+)\.0",
    "tests/package/host/CMakeLists.txt": r"find_package\(gputune (\d+\.\d+)",
    "bindings/javascript/package.json": r'"version": "(\d+\.\d+\.\d+)"',
    "bindings/python/gputune.py": r'__version__ = "(\d+\.\d+\.\d+)"',
    "recipes/vcpkg/gputune/vcpkg.json": r'"version": "(\d+\.\d+\.\d+)"',
}


def read(root, path):
    with open(os.path.join(root, path), encoding="utf-8") as file:
        return file.read()


def check_versions(root, newest, problems):
    version = re.search(r"^    VERSION (\d+\.\d+\.\d+)$", read(root, "CMakeLists.txt"), re.MULTILINE)[1]
    if newest and newest != version:
        problems.add("CHANGELOG.md", f"the newest version is {newest}, the project's {version}")
    count = 0
    for pattern, expression in _NAMED.items():
        for path in sorted(glob.glob(pattern, root_dir=root)):
            for match in re.finditer(expression, read(root, path)):
                named = next(filter(None, match.groups()))
                count += 1
                if named not in (version, version.rpartition(".")[0]):
                    problems.add(path, f"{named} is named, and the project's version is {version}")
    if count < len(_NAMED):
        problems.add("tests/docs/changelog.py", f"only {count} versions were found in other files")


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
    newest = next(filter(None, versions), None)
    check_versions(root, newest and ".".join(map(str, newest)), problems)
    return problems.report(f"{len(versions)} versions")


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
