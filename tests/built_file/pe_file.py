"""Reads what the checks need from a 64-bit Windows executable file. Raises ValueError where the file is none."""

import struct
from collections import namedtuple

Section = namedtuple("Section", "name virtual_address virtual_size offset size")

DIRECTORY_EXPORT = 0
DIRECTORY_IMPORT = 1
DIRECTORY_RESOURCE = 2
DIRECTORY_DELAY_IMPORT = 13

MACHINE_AMD64 = 0x8664
OPTIONAL_MAGIC_PE32_PLUS = 0x20B
CHARACTERISTIC_DLL = 0x2000


class PeFile:
    def __init__(self, data):
        self.data = data
        if data[:2] != b"MZ":
            raise ValueError("no MZ header")
        header = self._unpack("<I", 0x3C)[0]
        if data[header:header + 4] != b"PE\0\0":
            raise ValueError("no PE header")
        (self.machine, section_count, _, _, self.symbol_count, optional_size,
         self.characteristics) = self._unpack("<HHIIIHH", header + 4)
        optional = header + 24
        self.magic = self._unpack("<H", optional)[0]
        self.dll_characteristics = self._unpack("<H", optional + 70)[0]
        count = self._unpack("<I", optional + 108)[0]
        self.directories = [self._unpack("<II", optional + 112 + 8 * i) for i in range(count)]
        self.sections = [self._section(optional + optional_size + 40 * i) for i in range(section_count)]

    def _unpack(self, form, offset):
        if offset + struct.calcsize(form) > len(self.data):
            raise ValueError(f"the file ends before {offset:#x}")
        return struct.unpack_from(form, self.data, offset)

    def _section(self, offset):
        name, virtual_size, virtual_address, size, start = self._unpack("<8sIIII", offset)
        return Section(name.rstrip(b"\0").decode("ascii"), virtual_address, virtual_size, start, size)

    def offset_of(self, address):
        """File offset of a relative virtual address."""
        for section in self.sections:
            if section.virtual_address <= address < section.virtual_address + section.size:
                return address - section.virtual_address + section.offset
        raise ValueError(f"address {address:#x} lies in no section")

    def text_at(self, address):
        start = self.offset_of(address)
        return self.data[start:self.data.index(b"\0", start)].decode("ascii")

    def directory(self, number):
        """(address, size), or (0, 0) when there is none."""
        return self.directories[number] if number < len(self.directories) else (0, 0)

    def exports(self):
        """(names in table order, how many functions the table has)."""
        address, _ = self.directory(DIRECTORY_EXPORT)
        if not address:
            return [], 0
        functions, names, _, name_table = self._unpack("<IIII", self.offset_of(address) + 20)
        table = self.offset_of(name_table)
        return [self.text_at(self._unpack("<I", table + 4 * i)[0]) for i in range(names)], functions

    def imported_libraries(self):
        address, _ = self.directory(DIRECTORY_IMPORT)
        libraries = []
        offset = self.offset_of(address) if address else None
        while offset is not None:
            entry = self._unpack("<IIIII", offset)
            if not any(entry):
                break
            libraries.append(self.text_at(entry[3]))
            offset += 20
        return libraries

    def resources(self):
        """{(type, name, language): bytes}; types and names are numbers, or text where they are named."""
        address, _ = self.directory(DIRECTORY_RESOURCE)
        if not address:
            return {}
        root = self.offset_of(address)
        found = {}
        for kind, kinds in self._resource_entries(root, 0):
            for name, names in self._resource_entries(root, kinds):
                for language, leaf in self._resource_entries(root, names):
                    start, size = self._unpack("<II", root + leaf)
                    begin = self.offset_of(start)
                    found[(kind, name, language)] = self.data[begin:begin + size]
        return found

    def _resource_entries(self, root, folder):
        folder &= 0x7FFFFFFF
        named, numbered = self._unpack("<HH", root + folder + 12)
        for i in range(named + numbered):
            name, target = self._unpack("<II", root + folder + 16 + 8 * i)
            if name & 0x80000000:
                begin = root + (name & 0x7FFFFFFF)
                length = self._unpack("<H", begin)[0]
                name = self.data[begin + 2:begin + 2 + 2 * length].decode("utf-16le")
            yield name, target
