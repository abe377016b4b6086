"""A Windows image of either width: what its headers say of how it may be loaded and run."""

import struct

I386 = 0x014C
AMD64 = 0x8664
PE32 = 0x010B
PE32_PLUS = 0x020B

# Of the file header.
RELOCATIONS_STRIPPED = 0x0001

# Of the optional header.
HIGH_ENTROPY = 0x0020
DYNAMIC_BASE = 0x0040
NX_COMPATIBLE = 0x0100
NO_SEH = 0x0400

# Of a section.
SECTION_CODE = 0x00000020
SECTION_EXECUTABLE = 0x20000000
SECTION_WRITABLE = 0x80000000

# Data directories.
IMPORTS = 1
RESOURCES = 2
UNWINDING = 3
RELOCATIONS = 5
TLS = 9
BOUND_IMPORTS = 11
DELAY_IMPORTS = 13


class Section:
    def __init__(self, name, address, size, offset, flags):
        self.name = name
        self.address = address
        self.size = size
        self.offset = offset
        self.flags = flags


class Image:
    def __init__(self, data):
        self._data = data
        header = self._read("<I", 0x3C)[0]
        if data[header:header + 4] != b"PE\0\0":
            raise ValueError("no Windows image")
        self.file_header = header + 4
        self.optional_header = header + 24
        self.machine, count = self._read("<HH", self.file_header)
        symbols, symbol_count, optional_size, self.characteristics = self._read("<IIHH", self.file_header + 8)
        self._long_names = symbols + 18 * symbol_count
        self.magic = self._read("<H", self.optional_header)[0]
        self.bits = 64 if self.magic == PE32_PLUS else 32
        # The form of an address, and where the data directories begin.
        self._word = "Q" if self.bits == 64 else "I"
        self.directories = self.optional_header + (112 if self.bits == 64 else 96)
        self.base = self._read("<" + self._word, self.optional_header + (24 if self.bits == 64 else 28))[0]
        self.dll_characteristics = self._read("<H", self.optional_header + 70)[0]
        self.section_table = self.optional_header + optional_size
        self.sections = [self._section(self.section_table + 40 * index) for index in range(count)]

    def directory(self, index):
        """Address and size."""
        return self._read("<II", self.directories + 8 * index)

    def imports(self):
        """The names of the libraries, in lower case."""
        names = []
        address, _ = self.directory(IMPORTS)
        while address:
            name = self._read("<5I", self.offset_of(address))[3]
            if name == 0:
                break
            names.append(self._text(self.offset_of(name)).lower())
            address += 20
        return names

    def tls_callbacks(self):
        """Their addresses, as the image was linked."""
        address, _ = self.directory(TLS)
        if not address:
            return []
        callbacks = []
        table = self._read("<4" + self._word, self.offset_of(address))[3]
        while table:
            callback = self._read("<" + self._word, self.offset_of(table - self.base))[0]
            if callback == 0:
                break
            callbacks.append(callback)
            table += struct.calcsize("<" + self._word)
        return callbacks

    def resources(self, kind):
        """The contents of all resources of a type, in every language."""
        root = self.offset_of(self.directory(RESOURCES)[0]) if self.directory(RESOURCES)[1] else None

        def entries(table):
            named, numbered = self._read("<HH", table + 12)
            for index in range(named + numbered):
                identifier, position = self._read("<II", table + 16 + 8 * index)
                yield identifier, root + (position & 0x7FFFFFFF), position & 0x80000000

        def leaves(table):
            for _, position, is_table in entries(table):
                yield from leaves(position) if is_table else [position]

        found = []
        for identifier, position, _ in entries(root) if root else []:
            if identifier == kind:
                for leaf in leaves(position):
                    address, size = self._read("<II", leaf)
                    start = self.offset_of(address)
                    found.append(self._data[start:start + size])
        return found

    def relocation_count(self):
        """Of the places that the loader moves with the image."""
        address, size = self.directory(RELOCATIONS)
        offset = self.offset_of(address) if size else 0
        end = offset + size
        count = 0
        while offset + 8 <= end:
            _, block = self._read("<II", offset)
            if block < 8:
                raise ValueError("the relocations are broken")
            # Type 0 pads.
            count += sum(entry >> 12 != 0 for entry in self._read(f"<{(block - 8) // 2}H", offset + 8))
            offset += block
        return count

    def offset_of(self, address):
        for section in self.sections:
            if section.address <= address < section.address + section.size:
                return section.offset + address - section.address
        raise ValueError(f"{address:#x} is in no section")

    def _section(self, offset):
        name, _, address, size, position = self._read("<8s4I", offset)
        name = name.rstrip(b"\0").decode()
        if name.startswith("/"):
            name = self._text(self._long_names + int(name[1:]))
        return Section(name, address, size, position, self._read("<I", offset + 36)[0])

    def _read(self, form, offset):
        return struct.unpack_from(form, self._data, offset)

    def _text(self, offset):
        return self._data[offset:self._data.index(b"\0", offset)].decode()
