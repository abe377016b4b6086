"""images.py <directory of the programs> <directory of their debug information> <32 or 64>

Every image that is shipped has the protections that the system offers, and asks for no library but the system's own.
"""

import os
import subprocess
import sys

from image import Image
from rules import allowed_imports, problems_of

_NM = {32: "i686-w64-mingw32-nm", 64: "x86_64-w64-mingw32-nm"}


def shipped(directory):
    """The images' paths below the directory, with slashes. Those of the 64-bit build below it are another build's."""
    found = []
    for folder, folders, files in os.walk(directory):
        if "x64" in folders:
            folders.remove("x64")
        for file in files:
            if file.lower().endswith((".dll", ".exe")):
                found.append(os.path.relpath(os.path.join(folder, file), directory).replace(os.sep, "/"))
    return sorted(found)


def symbols_of(image, data, directory):
    """The symbols by their addresses, out of the file that the image names as its debug information."""
    section = next(section for section in image.sections if section.name == ".gnu_debuglink")
    file = data[section.offset:data.index(b"\0", section.offset)].decode()
    listing = subprocess.run([_NM[image.bits], "--format=posix", "--defined-only", os.path.join(directory, file)], check=True, capture_output=True,
                             text=True).stdout
    names = {}
    for line in listing.splitlines():
        name, _, address = line.split()[:3]
        names.setdefault(int(address, 16), set()).add(name)
    return names


def main(directory, debug_directory, bits):
    bits = int(bits)
    allowed = allowed_imports(bits)
    paths = shipped(directory)
    failures = [f"{path} is not there" for path in sorted(set(allowed) - set(paths))]
    for path in paths:
        if path not in allowed:
            failures.append(f"{path}: nothing says what it may import")
            continue
        with open(os.path.join(directory, path), "rb") as file:
            data = file.read()
        image = Image(data)
        names = symbols_of(image, data, debug_directory)
        failures += [f"{path} {problem}" for problem in problems_of(image, bits, allowed[path], names)]
    print("\n".join(failures) or f"{len(paths)} images are hardened")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
