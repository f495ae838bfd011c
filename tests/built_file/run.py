"""Checks the built library, then proves every check by a copy of the file that is wrong in one place.

usage: run.py RESULT Ostrel.dll SOURCE_FOLDER

RESULT receives "PASSED FAILED".
"""

import struct
import sys

from checks import DIALOG, SIZE_LIMIT, all_checks
from pe_file import PeFile


def replace(data, old, new):
    if old not in data or len(old) != len(new):
        raise ValueError(f"cannot put {new!r} for {old!r}")
    return data.replace(old, new)


def header_of(data):
    return struct.unpack_from("<I", data, 0x3C)[0]


def put(data, offset, new):
    return data[:offset] + new + data[offset + len(new):]


def library_name(data):
    """The name of an import, spelt as the file has it."""
    return next(name for name in PeFile(data).imported_libraries() if name.lower() == "user32.dll").encode("ascii")


# (check, what is wrong, data -> data)
def mutations(source_folder):
    dialog_size = struct.pack("<hh", 392, 78)
    inside = (source_folder + "/src/x.cpp\0").encode("ascii")
    return [
        ("is_64_bit_library", "another machine", lambda d: put(d, header_of(d) + 4, struct.pack("<H", 0x14C))),
        ("is_64_bit_library", "not a DLL",
         lambda d: put(d, header_of(d) + 22, struct.pack("<H", PeFile(d).characteristics & ~0x2000))),
        ("exports_exactly_the_documented_names", "a misspelt export",
         lambda d: replace(d, b"Ostrel_RunEx\0", b"Ostrel_RunXe\0")),
        ("exports_exactly_the_documented_names", "a decorated export",
         lambda d: replace(d, b"Ostrel_GetVgaVendor\0", b"Ostrel_GetVgaVend@8\0")),
        ("imports_only_from_windows", "an import from a compiler's run-time",
         lambda d: replace(d, library_name(d), b"libgcc.dll")),
        ("dialog_resource_is_exact", "another size",
         lambda d: replace(d, DIALOG, DIALOG.replace(dialog_size, struct.pack("<hh", 392, 79)))),
        ("dialog_resource_is_exact", "another font",
         lambda d: replace(d, DIALOG, DIALOG.replace("Serif".encode("utf-16le"), "Grotk".encode("utf-16le")))),
        ("version_resource_is_there", "no version number",
         lambda d: replace(d, struct.pack("<I", 0xFEEF04BD), bytes(4))),
        ("version_resource_is_there", "no product name",
         lambda d: replace(d, "ProductName".encode("utf-16le"), "ProdactName".encode("utf-16le"))),
        ("is_stripped", "symbols", lambda d: put(d, header_of(d) + 16, struct.pack("<I", 7))),
        ("is_below_2_mb", "2 MB", lambda d: d + bytes(SIZE_LIMIT - len(d))),
        ("names_no_folder_of_the_build_machine", "a source file's path", lambda d: d + inside),
        ("names_no_folder_of_the_build_machine", "a wide source file's path",
         lambda d: d + inside.decode("ascii").encode("utf-16le")),
        ("names_no_folder_of_the_build_machine", "a header's path", lambda d: d + b"/usr/include/boost/x.hpp\0"),
    ]


def main():
    result_file, library, source_folder = sys.argv[1:]
    counts = {True: 0, False: 0}

    def tell(good, text, complaints=()):
        counts[good] += 1
        print(("ok      " if good else "FAILED  ") + text)
        for complaint in complaints:
            print("          " + complaint)

    try:
        with open(library, "rb") as file:
            data = file.read()
        pe = PeFile(data)
        checks = dict(all_checks(source_folder))
        for name, check in checks.items():
            complaints = check(pe)
            tell(not complaints, name.replace("_", " "), complaints)
        for name, wrong, mutate in mutations(source_folder):
            # A check that fails on the file as it is proves nothing by failing on a worse one.
            sound = not checks[name](pe)
            caught = sound and bool(checks[name](PeFile(mutate(data))))
            tell(caught, f"{name.replace('_', ' ')}: {wrong} is noticed")
        print(f"NOTE Ostrel.dll has {len(data)} bytes, imports from {', '.join(sorted(pe.imported_libraries()))}")
    except (OSError, ValueError, StopIteration) as error:
        tell(False, f"{library}: {error}")
    with open(result_file, "w", encoding="ascii") as file:
        file.write(f"{counts[True]} {counts[False]}\n")
    return 0 if not counts[False] else 1


if __name__ == "__main__":
    sys.exit(main())
