"""tool_help.py <root>

docs/gputunectl.md and the tool's own help name the same commands and options. Its section about JSON and that of
docs/serve.md name every key of the schema.
"""

import json
import os
import re
import sys

from markdown import Document, Problems
from scratch import Scratch


def help_of(scratch, *words):
    code, text = scratch.run("scripts/wine build/bin/gputunectl.exe " + " ".join(words) + " --help")
    if code != 0:
        sys.exit(f"{' '.join(words)} --help ends with {code}\n{text}")
    return text


def subcommands(text):
    return re.findall(r"^  (\w+) {2,}", text.partition("Subcommands:")[2], re.MULTILINE)


def options(text):
    """The names of each option: short, long or both."""
    # An explanation stands in a column of its own, and may name other options.
    columns = re.findall(r"^  (?=-)((?:\S| (?! ))+)", text, re.MULTILINE)
    names = [re.findall(r"--?[\w-]+", column.partition(" ")[0]) for column in columns]
    return [option for option in names if "--help" not in option]


def mentioned(text):
    return set(re.findall(r"(?<![\w-])--?[a-z][\w-]*", text)) - {"--help"}


def agree(said, known):
    """Whether each option is said by one of its names, and none that is not known."""
    return all(said & set(names) for names in known) and said <= {name for names in known for name in names}


def keys(schema):
    """The names of all properties anywhere in it."""
    if isinstance(schema, list):
        return set().union(*map(keys, schema))
    if not isinstance(schema, dict):
        return set()
    own = schema.get("properties", {})
    return set(own) | set().union(*map(keys, schema.values()))


def check_keys(document, shapes, problems):
    """The document's section about JSON against the shapes that it explains."""
    start, level = next((line, level) for line, level, text in document.headings if text == "JSON")
    end = next(line for line, other, _ in document.headings if line > start and other <= level)
    said = set(re.findall(r"[a-z0-9_]+", "\n".join(document.lines[start:end])))
    for key in sorted(keys(shapes) - said):
        problems.add(document.place(start), f"{key} is not explained")


def main(root):
    document = Document(root, "docs/gputunectl.md")
    problems = Problems()
    with open(os.path.join(root, "schema", "gputunectl.schema.json"), encoding="utf-8") as file:
        shapes = json.load(file)["$defs"]
    # Those of what is served have their paths as names.
    served = {name: shapes.pop(name) for name in list(shapes) if name.startswith("/")}
    check_keys(document, list(shapes.values()), problems)
    check_keys(Document(root, "docs/serve.md"), list(served.values()), problems)
    scratch = Scratch(root)
    tables = {rows[0][0]: (line, rows[1:]) for line, _, rows in document.tables()}

    said = {}
    line, rows = tables["command"]
    for number, row in enumerate(rows, line + 2):
        words = row[0].strip("`").split()
        command = tuple(word for word in words[:2] if word.isalpha() and word.islower())
        said[command] = (document.place(number), mentioned(row[0]))

    overall = help_of(scratch)
    known = set()
    for name in subcommands(overall):
        deeper = subcommands(help_of(scratch, name)) if (name,) not in said else []
        known |= {(name, word) for word in deeper} or {(name,)}
    for command in sorted(known ^ set(said)):
        problems.add(document.path, f"{' '.join(command)} is missing, or is no command")

    for command, (place, names) in said.items():
        # A row without options is not looked into: it would cost a start of the tool, and nearly none has any.
        if names and command in known:
            actual = options(help_of(scratch, *command))
            if not agree(names, actual):
                problems.add(place, f"the options of {' '.join(command)} are {actual}")
    line, rows = tables["option"]
    if not agree(mentioned(" ".join(row[0] for row in rows)), options(overall)):
        problems.add(document.place(line), f"the options are {options(overall)}")
    return problems.report(f"{len(said)} commands")


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
