"""rules_self_test.py <gputune.dll>

The rules see an image that breaks them: each case breaks a copy of the library in memory in one way.
"""

import struct
import sys

import image as pe
from rules import ALLOWED_CALLBACKS, allowed_imports, problems_of


class Broken(bytearray):
    """A copy to write into."""

    def clear(self, form, offset, bits):
        struct.pack_into(form, self, offset, struct.unpack_from(form, self, offset)[0] & ~bits)

    def set(self, form, offset, bits):
        struct.pack_into(form, self, offset, struct.unpack_from(form, self, offset)[0] | bits)


def cases(image):
    """What to do to the copy, and what is said of it."""
    characteristics = image.file_header + 18
    dll_characteristics = image.optional_header + 70
    directories = image.directories
    flags = {section.name: image.section_table + 40 * index + 36 for index, section in enumerate(image.sections)}
    relocations = image.offset_of(image.directory(pe.RELOCATIONS)[0])

    of_the_width = [
        (lambda data: data.clear("<H", dll_characteristics, pe.NO_SEH), "offers its code as exception handlers"),
    ] if image.bits == 32 else [
        (lambda data: data.clear("<H", dll_characteristics, pe.HIGH_ENTROPY), "is not loaded at any address of 64 bits"),
        # Without the callbacks, whose addresses would be elsewhere then.
        (lambda data: (struct.pack_into("<Q", data, image.optional_header + 24, 0x10000000),
                       struct.pack_into("<II", data, directories + 8 * pe.TLS, 0, 0)), "asks for an address below 4 GiB"),
        (lambda data: struct.pack_into("<II", data, directories + 8 * pe.UNWINDING, 0, 0),
         "says of no function how it is left"),
    ]
    return of_the_width + [
        (lambda data: data.clear("<H", dll_characteristics, pe.DYNAMIC_BASE), "is not loaded at random addresses"),
        (lambda data: data.set("<H", characteristics, pe.RELOCATIONS_STRIPPED),
         "cannot be moved: its relocations were taken out"),
        (lambda data: struct.pack_into("<II", data, directories + 8 * pe.RELOCATIONS, 0, 0),
         "cannot be moved: 0 relocations"),
        # A directory that is there, with a block of nothing but padding.
        (lambda data: (struct.pack_into("<IIQ", data, relocations, 0x1000, 16, 0),
                       struct.pack_into("<I", data, directories + 8 * pe.RELOCATIONS + 4, 16)),
         "cannot be moved: 0 relocations"),
        (lambda data: data.clear("<H", dll_characteristics, pe.NX_COMPATIBLE),
         "lets data, the stack's included, be executed"),
        (lambda data: data.set("<I", flags[".text"], pe.SECTION_WRITABLE), "may write its own code: .text"),
        (lambda data: data.set("<I", flags[".data"], pe.SECTION_EXECUTABLE), "may write its own code: .data"),
        (lambda data: data.set("<I", flags[".rdata"], pe.SECTION_EXECUTABLE), "has code in .text, .rdata"),
        (lambda data: struct.pack_into("<II", data, directories + 8 * pe.DELAY_IMPORTS, 0x1000, 64),
         "has delayed imports"),
        (lambda data: data.__setitem__(slice(0, len(data)), data.replace(b"OLEAUT32.dll\0", b"planted1.dll\0")),
         "imports planted1.dll"),
    ]


def main(path):
    with open(path, "rb") as file:
        data = file.read()
    image = pe.Image(data)
    callback = image.tls_callbacks()[0]
    names = {address: set(ALLOWED_CALLBACKS[image.bits]) for address in image.tls_callbacks()}
    bits = image.bits
    allowed = allowed_imports(bits)["gputune.dll"]

    failures = [f"as it is, it {problem}" for problem in problems_of(image, bits, allowed, names)]
    expectations = []
    for change, expected in cases(image):
        copy = Broken(data)
        change(copy)
        expectations.append((problems_of(pe.Image(bytes(copy)), bits, allowed, names), expected))
    expectations.append((problems_of(image, bits, allowed, {**names, callback: {"_surprise"}}),
                         "has the loader call _surprise for every thread"))
    for found, expected in expectations:
        if expected not in found:
            failures.append(f'instead of "{expected}": {found}')
    print("\n".join(failures) or f"{len(expectations)} broken images are seen")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
