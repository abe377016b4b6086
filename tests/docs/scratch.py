"""A place in which the examples of a document run as if in the source tree, without leaving anything there."""

import os
import re
import subprocess
from typing import Dict, Tuple

_FILE = re.compile(r"<!-- file: (\S+) -->")


class Scratch:
    """The current directory, which is empty at first: with the tree's folders, ./run without what it builds, and a command
    gputunectl."""

    def __init__(self, root: str) -> None:
        for name in sorted(os.listdir(root)):
            if not name.startswith(".") and os.path.isdir(os.path.join(root, name)):
                os.symlink(os.path.join(root, name), name)
        with open("run", "w", encoding="utf-8") as file:
            file.write("#!/bin/bash\n"
                       "[ \"$1\" = --simulate ] || set -- --simulate boards/overdriven.json \"$@\"\n"
                       "exec scripts/wine build/bin/gputunectl.exe \"$@\"\n")
        os.chmod("run", 0o755)
        os.mkdir(".commands")
        with open(".commands/gputunectl", "w", encoding="utf-8") as file:
            file.write("#!/bin/bash\nexec scripts/wine build/bin/gputunectl.exe \"$@\"\n")
        os.chmod(".commands/gputunectl", 0o755)
        os.environ["PATH"] = os.path.abspath(".commands") + os.pathsep + os.environ["PATH"]

    @staticmethod
    def run(command: str) -> Tuple[int, str]:
        """A shell command's exit code and all it says, without carriage returns."""
        done = subprocess.run(["bash", "-c", command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, check=False)
        return done.returncode, done.stdout.decode("utf-8", "replace").replace("\r", "")

    @staticmethod
    def write_files(document) -> Dict[str, str]:
        """The blocks that the document marks as files, written under their names."""
        files = {}
        for block in document.blocks:
            marker = _FILE.fullmatch(before(document, block))
            if marker:
                files[marker[1]] = "\n".join(block.lines) + "\n"
                with open(marker[1], "w", encoding="utf-8") as file:
                    file.write(files[marker[1]])
        return files


def before(document, block) -> str:
    """The line before a block's opening fence: a comment that no reader sees, and that tells what the block is."""
    return document.lines[block.line - 3].strip() if block.line > 2 else ""
