"""python_table.py <bindings/python>: what gputune.py declares, in the form of header_table.py."""

import ctypes
import sys

sys.path.insert(0, sys.argv[1])
import gputune  # noqa: E402

# Names of this system's types may differ: a c_int32 is a c_int.
TYPES = {
    None: "void", ctypes.c_bool: "bool", ctypes.c_char: "char", ctypes.c_double: "double", ctypes.c_float: "float",
    ctypes.c_int32: "int32_t", ctypes.c_uint8: "uint8_t", ctypes.c_uint32: "uint32_t", ctypes.c_uint64: "uint64_t",
}


def is_record(type_):
    return isinstance(type_, type) and issubclass(type_, ctypes.Structure)


def name(type_):
    if is_record(type_):
        return type_.__name__.lstrip("_")
    if hasattr(type_, "_length_"):
        return f"{name(type_._type_)}[{type_._length_}]"
    if hasattr(type_, "contents"):
        return name(type_._type_) + "*"
    return TYPES[type_]


def argument(type_):
    return name(type_).replace("int32_t", "int") if type_ is ctypes.c_int32 else name(type_)


for record in filter(is_record, vars(gputune).values()):
    print("record", name(record), ctypes.sizeof(record))
    for field, type_ in record._fields_:
        print(f"field {name(record)}.{field}", getattr(record, field).offset, name(type_))
for enumeration in (gputune.LogMode, gputune.Vendor, gputune.ApiType, gputune.HwmKey):
    for member in enumeration:
        print(f"enum {enumeration.__name__}.{member.name.replace('_', '')}", member.value)
for function, (result, *arguments) in gputune._FUNCTIONS.items():
    print(f"function {argument(result)} {function}({', '.join(map(argument, arguments))})")
