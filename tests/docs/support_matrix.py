"""support_matrix.py <host> <root>

docs/support-matrix.md says of each operation and reading what the backends do: a host that calls everything on a simulated
board of each has the same to tell, when the driver does as it is told, and when it refuses everything.
"""

import json
import os
import re
import shutil
import sys

from markdown import Document, Problems
from scratch import Scratch

# The backends as the page calls them: the board that has all that the backend knows, the list of its adapters, and the
# result with which its driver refuses.
_BACKENDS = {
    "OverdriveN": ("overdriven", "adapters", "-1"),
    "Overdrive8": ("overdrive8", "adapters", "-1"),
    "Intel": ("intel", "devices", "0x40000007"),
    "NVIDIA": ("nvidia", "gpus", "-1"),
}
_NONE = "none"


class Host:
    """What the host says of one backend, or of none."""

    def __init__(self, scratch, root, backend, refused=()):
        arguments = ["build/bin/gputune.dll"]
        if backend != _NONE:
            board, adapters, result = _BACKENDS[backend]
            with open(os.path.join(root, "boards", board + ".json"), encoding="utf-8") as file:
                machine = json.load(file)
            another = dict(machine[adapters][0])
            if "index" in another:
                another["index"] += 1
            machine[adapters].append(another)
            with open("board.json", "w", encoding="utf-8") as file:
                json.dump(machine, file)
            arguments += ["build/bin/sim/gputune_sim.dll", "board.json"] + ([result, *sorted(refused)] if refused else [])
        code, said = scratch.run("scripts/wine ./host.exe " + " ".join(arguments))
        lines = [line.split("\t") for line in said.splitlines()]
        if code != 0 or len(lines) < 20 or any(len(line) != 3 for line in lines):
            sys.exit(f"{backend}: the host ends with {code}\n{said}")
        self.readings = {name for kind, _, name in lines if kind == "reading"}
        self.answers = {operation: answer for operation, answer, _ in lines if operation != "reading"}
        self.functions = {operation: names.split() for operation, _, names in lines if operation != "reading"}

    def called(self):
        return {name for names in self.functions.values() for name in names}

    def does(self, operation):
        """Whether the operation does something there: a setting reaches the driver, a record has contents."""
        answer, functions = self.answers[operation], self.functions[operation]
        if operation == "FetchHwmValues":
            return bool(functions)
        if operation == "GetActiveAdapterIndex":
            return self.does("SetActiveAdapterIndex")
        if operation == "SetActiveAdapterIndex" or not operation.startswith("Set"):
            return answer not in ("false", "all zero", "not valid", "-1")
        return answer == "true" and any(re.search(r"Set(?!ting)", name) for name in functions)

    def summary(self, operation):
        if operation != "GetVendorInfo" and self.does(operation):
            return "yes"
        return f"`{self.answers[operation] or 'nothing'}`"


def refusing(scratch, root, backend, works):
    """The same with a driver that refuses everything, the functions included that are only tried then."""
    refused = works.called()
    while True:
        host = Host(scratch, root, backend, refused)
        if host.called() <= refused:
            return host
        refused |= host.called()


def refusals(works, refuses):
    """What is answered then by those that do something and ask the driver for it."""
    return {operation: f"`{answer}`" for operation, answer in refuses.answers.items()
            if operation == "GetHwmValue" or answer and works.does(operation) and works.functions[operation]
            and operation != "InitVGAHelper"}


def compare(document, section, columns, problems):
    """The section's table has a column of this name and contents for each backend; its first column names the rows. Notes
    in brackets are not compared."""
    line, rows = {section: (line, rows) for line, section, rows in document.tables()}.get(section, (1, [[]]))
    names = list(columns)
    if rows[0][-len(names):] != names:
        problems.add(document.place(line), f"{section}: the columns are {rows[0]}")
        return
    missing = {name for column in columns.values() for name in column}
    for number, row in enumerate(rows[1:], line + 2):
        subject = row[0].replace("`", "")
        missing.discard(subject)
        for backend, cell in zip(names, row[-len(names):]):
            right = columns[backend].get(subject, "")
            if re.sub(r" \(.*\)", "", cell) != right:
                problems.add(document.place(number), f"{subject}, {backend}: \"{right}\", not \"{cell}\"")
    for subject in sorted(missing):
        problems.add(document.place(line), f"{subject} is missing")


def compare_functions(document, backend, works, problems):
    """The driver's functions of each operation, in the table of the backend's own section."""
    tables = {section: (line, rows) for line, section, rows in document.tables()}
    line, rows = tables.get(backend, (1, []))
    missing = {operation for operation, names in works.functions.items() if names}
    for number, row in enumerate(rows[1:], line + 2):
        listed = re.findall(r"`(\w+)`", row[1])
        for operation in re.findall(r"`([^`]+)`", row[0]):
            missing.discard(operation)
            # The one export, through which all others are found.
            right = [name for name in works.functions.get(operation, []) if name != "nvapi_QueryInterface"]
            if listed != right:
                problems.add(document.place(number), f"{operation} calls {' '.join(right)}")
    for operation in sorted(missing):
        problems.add(document.place(line), f"{backend}: {operation} is missing")


def compare_names(document, root, problems):
    """The readings are those of the header, in its order."""
    with open(os.path.join(root, "include", "gputune.h"), encoding="utf-8") as file:
        names = re.findall(r'GPUTUNE_HWM_\w+ = \d+, +/\* "([^"]+)"', file.read())
    for line, section, rows in document.tables():
        if section == "Readings" and [row[0].strip("`") for row in rows[1:]] != names:
            problems.add(document.place(line), f"the readings are {names}")


def main(host, root):
    document = Document(root, "docs/support-matrix.md")
    problems = Problems()
    scratch = Scratch(root)
    # Beside the profile file that it is to read.
    shutil.copy(host, "host.exe")
    works = {backend: Host(scratch, root, backend) for backend in (*_BACKENDS, _NONE)}
    refuses = {backend: refusing(scratch, root, backend, works[backend]) for backend in _BACKENDS}

    compare(document, "Operations",
            {backend: {operation: host.summary(operation) for operation in host.answers}
             for backend, host in works.items()}, problems)
    compare(document, "Readings",
            {backend: {name: "yes" for name in works[backend].readings} for backend in _BACKENDS}, problems)
    compare_names(document, root, problems)
    compare(document, "When the driver refuses",
            {backend: refusals(works[backend], refuses[backend]) for backend in _BACKENDS}, problems)
    for backend in _BACKENDS:
        compare_functions(document, backend, works[backend], problems)

    operations = works["NVIDIA"].answers
    with open(os.path.join(root, "src", "api", "flat_functions.inc"), encoding="utf-8") as file:
        exports = re.findall(r"^FLAT_FUNCTION\([^,]+, (\w+)", file.read(), re.MULTILINE)
    for export in sorted(set(exports) - set(operations)):
        problems.add("tests/docs/support_matrix.c", f"{export} is not called")
    return problems.report(f"{len(operations)} operations, {len(_BACKENDS)} backends")


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
