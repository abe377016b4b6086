"""examples.py <document> <root>

The commands that a document shows run, and say what the document says they do. Runs in an empty directory.

    ```console    "$ command", and behind it all that the command says; of a document's commands, each goes on from where
                  the one before left its files
    ```log        goes on with what the command before says
    gputunectl    in indented lines: the command is accepted
    ```c, ```cpp, ```python   a program with a main compiles, and so does any Python

Comments before a block, which no reader sees:

    <!-- file: hello.c -->          the block is this file
    <!-- the readings move -->      numbers are not compared
    <!-- fails -->                  the last command's exit code is not 0
"""

import re
import sys
from dataclasses import dataclass, field
from typing import List

from markdown import Document, Problems
from scratch import Scratch, before

_NUMBER = re.compile(r"-?\d+(\.\d+)?")
_PLACEHOLDER = re.compile(r"\[|\b[A-Z]{2,}\b|\.\.\.|…")


@dataclass
class Command:
    line: int
    text: str
    fails: bool = False
    moves: bool = False
    expected: List[str] = field(default_factory=list)


def shown_commands(document):
    commands = []
    for block in document.blocks:
        mark = before(document, block)
        if block.info == "console":
            for number, line in enumerate(block.lines, block.line):
                if line.startswith("$ "):
                    commands.append(Command(number, line[2:], moves="the readings move" in mark))
                else:
                    commands[-1].expected.append(line)
            commands[-1].fails = "fails" in mark
        elif block.info == "log":
            commands[-1].expected += block.lines
    return commands


def mentioned_commands(document):
    """Of those in indented lines, what can run: nothing with placeholders."""
    for block in document.blocks:
        if block.info == "indented":
            for number, line in enumerate(block.lines, block.line):
                if line.startswith("gputunectl ") and not _PLACEHOLDER.search(line):
                    yield number, line


def runnable(line):
    """As typed on Windows, with a board, and with an end."""
    arguments = line.split(" ", 1)[1].replace("\\", "/")
    if "--simulate" not in arguments:
        arguments = "--simulate boards/overdriven.json " + arguments
    if re.search(r"\bmonitor\b", arguments) and "--count" not in arguments:
        arguments += " --count 1"
    command = "scripts/wine build/bin/gputunectl.exe " + arguments
    if re.search(r"\bserve\b", arguments):
        # On a port that is free, until it has said that it serves.
        command = re.sub(r" --listen \S+", "", command) + " --listen 127.0.0.1:0"
        return (f"coproc exec {command}; pid=$COPROC_PID; read -r line <&${{COPROC[0]}}; kill -INT $pid; wait $pid")
    # A hold ends when nobody reads what it says.
    end = " | head -n 5" if re.search(r"\bhold\b", arguments) else ""
    return f"set -o pipefail; {command}{end}"


def normal(lines, moves):
    while lines and not lines[-1].strip():
        lines = lines[:-1]
    lines = [line.rstrip() for line in lines]
    return [re.sub(r"\s+", " ", _NUMBER.sub("#", line)) for line in lines] if moves else lines


def check_shown(scratch, document, problems):
    commands = shown_commands(document)
    for command in commands:
        code, output = scratch.run(command.text)
        place = document.place(command.line)
        if (code != 0) != command.fails:
            problems.add(place, f"the exit code is {code}, and the output:\n{output}")
        elif normal(output.split("\n"), command.moves) != normal(command.expected, command.moves):
            problems.add(place, f"the output is\n{output}")
    return len(commands)


def check_mentioned(scratch, document, problems):
    count = 0
    for number, line in mentioned_commands(document):
        count += 1
        code, output = scratch.run(runnable(line))
        if code != 0:
            problems.add(document.place(number), f"the exit code is {code}, and the output:\n{output}")
    return count


def check_programs(scratch, document, problems):
    compilers = {"c": ("i686-w64-mingw32-gcc -std=c99", ".c"), "cpp": ("i686-w64-mingw32-g++ -std=c++17", ".cpp")}
    count = 0
    for block in document.blocks:
        text = "\n".join(block.lines) + "\n"
        if block.info == "python":
            count += 1
            try:
                compile(text, document.path, "exec")
            except SyntaxError as error:
                problems.add(document.place(block.line), f"does not compile: {error}")
        elif block.info in compilers and "int main(" in text:
            count += 1
            compiler, suffix = compilers[block.info]
            with open("program" + suffix, "w", encoding="utf-8") as file:
                file.write(text)
            code, output = scratch.run(f"{compiler} -fsyntax-only -Wall -Wextra -Wpedantic -Werror -I include "
                                       f"-I sim/include program{suffix}")
            if code != 0:
                problems.add(document.place(block.line), f"does not compile:\n{output}")
    return count


def main(path, root):
    document = Document(root, path)
    scratch = Scratch(root)
    scratch.write_files(document)
    problems = Problems()
    count = sum(check(scratch, document, problems) for check in (check_programs, check_shown, check_mentioned))
    if count == 0:
        problems.add(path, "has no examples")
    return problems.report(f"{count} examples")


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
