"""header_table.py <gputune.h>

Writes to the standard output a C program that prints what the header declares, one item a line, as a compiler for the
library's system sees it:

    record HwmValue 272                       name and size
    field HwmValue.Name 8 char[256]           name, offset, type
    enum HwmKey.GPUCORECLOCK 0                type and name without prefixes and underscores, value
    function bool SetPowerLimit(int, int)

Every binding has a test that prints the same of what it declares.
"""

import os.path
import re
import sys

NAME = r"[A-Za-z_]\w*"


def strip_comments(text):
    return re.sub(r"/\*.*?\*/", " ", text, flags=re.S)


def records(text):
    """(name, [(field, type)]) of each record."""
    for body, name in re.findall(rf"typedef struct {NAME} \{{(.*?)\}} ({NAME});", text, flags=re.S):
        fields = []
        for declaration in body.split(";")[:-1]:
            type_, field, length = re.fullmatch(rf"\s*({NAME})\s+({NAME})(\[\d+\])?\s*", declaration).groups()
            fields.append((field, type_ + (length or "")))
        yield name, fields


def enumerations(text):
    """(type, prefix of its constants, [constant])."""
    for type_, body in re.findall(rf"enum Gputune({NAME}) \{{(.*?)\}};", text, flags=re.S):
        constants = [constant.split("=")[0].strip() for constant in body.split(",")]
        prefix = os.path.commonprefix(constants)
        yield type_, prefix[: prefix.rindex("_") + 1], constants


def functions(text):
    """(result, name, [type of argument])."""
    prototype = rf"GPUTUNE_API ({NAME}) GPUTUNE_CALL ({NAME})\((.*?)\);"
    for result, name, arguments in re.findall(prototype, text, flags=re.S):
        types = [] if arguments.strip() == "void" else [
            re.fullmatch(rf"\s*({NAME})(?: const)?(\*)? {NAME}\s*", argument).expand(r"\1\2")
            for argument in arguments.split(",")]
        yield result, name, types


def main(header):
    with open(header, encoding="utf-8") as file:
        text = strip_comments(file.read())
    lines = []

    def line(form, value=None):
        lines.append(f'    printf("{form}\\n"{f", (int)({value})" if value else ""});')

    understood = {"typedef struct": 0, "enum Gputune": 0, "GPUTUNE_CALL ": 0}
    for name, fields in records(text):
        understood["typedef struct"] += 1
        line(f"record {name} %d", f"sizeof({name})")
        for field, type_ in fields:
            line(f"field {name}.{field} %d {type_}", f"offsetof({name}, {field})")
    for type_, prefix, constants in enumerations(text):
        understood["enum Gputune"] += 1
        for constant in constants:
            # Their number, and no key.
            if constant != "GPUTUNE_HWM_KEY_COUNT":
                line(f"enum {type_}.{constant[len(prefix):].replace('_', '')} %d", constant)
    for result, name, types in functions(text):
        understood["GPUTUNE_CALL "] += 1
        line(f"function {result} {name}({', '.join(types)})")
    for what, count in understood.items():
        declared = len(re.findall(rf"^(?!#).*{what}", text, flags=re.M))
        if count != declared or count == 0:
            sys.exit(f"{header}: {declared} times '{what}', {count} understood")
    print("#include <stddef.h>\n#include <stdio.h>\n#include \"gputune.h\"\n\nint main(void) {")
    print("\n".join(lines))
    print("    return 0;\n}")


main(sys.argv[1])
