"""What must hold of the built Ostrel.dll. Each check is a function of the file that gives a list of complaints."""

import struct

from pe_file import (CHARACTERISTIC_DLL, DIRECTORY_DELAY_IMPORT, MACHINE_AMD64, OPTIONAL_MAGIC_PE32_PLUS)

EXPORTS = {
    # lifecycle
    "Ostrel_Init", "Ostrel_DeInit", "Ostrel_InitExtendMode", "Ostrel_DeInitExtendMode",
    # pop-up
    "Ostrel_Run", "Ostrel_RunEx", "Ostrel_Stop", "Ostrel_Cancel", "Ostrel_SaveCurrentMode",
    "Ostrel_RegisterNotification", "Ostrel_SetLassoBoxStatus",
    # queries and commands
    "Ostrel_GetConnectedDisplays", "Ostrel_GetActiveDisplays", "Ostrel_GetCurrentDisplayMode",
    "Ostrel_SetNewDisplayMode", "Ostrel_EnableExtendMode", "Ostrel_IsExtendModeEnabled",
    "Ostrel_ChangeToNBOnlySingleDisplayMode", "Ostrel_HasDualOutputCapability",
    "Ostrel_HasExternalMonitorConnected", "Ostrel_GetVgaVendor", "Ostrel_PermitToChangeMode",
    "Ostrel_DetectDisplayConnectedFeatureIsValid",
    "Ostrel_FlushRememberedSettings",
}

# Part of every Windows since 7, whatever else is installed.
SYSTEM_LIBRARIES = {
    "advapi32.dll", "cfgmgr32.dll", "comctl32.dll", "gdi32.dll", "gdiplus.dll", "kernel32.dll", "msvcrt.dll",
    "ole32.dll", "oleaut32.dll", "setupapi.dll", "shell32.dll", "shlwapi.dll", "user32.dll", "version.dll",
    "winmm.dll",
}

RT_DIALOG = 5
RT_VERSION = 16
DIALOG_ID = 101
LANGUAGE = 1033
DIALOG = b"".join([
    struct.pack("<HH", 1, 0xFFFF),          # version, signature
    struct.pack("<I", 0),                   # help id
    struct.pack("<I", 0x88),                # topmost, tool window
    struct.pack("<I", 0x80000840),          # popup, centred, font set
    struct.pack("<H", 0),                   # controls
    struct.pack("<hhhh", 0, 0, 392, 78),    # position, size
    struct.pack("<HHH", 0, 0, 0),           # no menu, default class, empty title
    struct.pack("<HHBB", 8, 0, 0, 1),       # point size, weight, italic, charset
    "MS Sans Serif\0".encode("utf-16le"),
])

SIZE_LIMIT = 2 * 1000 * 1000

# Where the compiler, its run-time and Debian's packages were built or installed.
BUILD_MACHINE_PATHS = ("/usr/", "/build/", "/home/", "/tmp/", "/root/")


def is_64_bit_library(pe):
    complaints = []
    if pe.machine != MACHINE_AMD64:
        complaints.append(f"machine {pe.machine:#x}")
    if pe.magic != OPTIONAL_MAGIC_PE32_PLUS:
        complaints.append(f"optional header {pe.magic:#x} is not PE32+")
    if not pe.characteristics & CHARACTERISTIC_DLL:
        complaints.append("not a DLL")
    return complaints


def exports_exactly_the_documented_names(pe):
    names, functions = pe.exports()
    complaints = [f"missing: {name}" for name in sorted(EXPORTS - set(names))]
    complaints += [f"not wanted: {name}" for name in sorted(set(names) - EXPORTS)]
    if len(EXPORTS) != 24 or len(names) != 24 or functions != 24:
        complaints.append(f"{len(names)} names for {functions} functions")
    return complaints


def imports_only_from_windows(pe):
    libraries = pe.imported_libraries()
    complaints = [f"imports {name}" for name in libraries if name.lower() not in SYSTEM_LIBRARIES]
    if not libraries:
        complaints.append("imports nothing")
    if pe.directory(DIRECTORY_DELAY_IMPORT)[0]:
        complaints.append("has delayed imports")
    return complaints


def dialog_resource_is_exact(pe):
    dialogs = {key: value for key, value in pe.resources().items() if key[0] == RT_DIALOG}
    if set(dialogs) != {(RT_DIALOG, DIALOG_ID, LANGUAGE)}:
        return [f"dialogs {sorted(dialogs)}"]
    found = dialogs[(RT_DIALOG, DIALOG_ID, LANGUAGE)]
    # The compiler may pad the end to four bytes.
    if found[:len(DIALOG)] != DIALOG or found[len(DIALOG):].strip(b"\0") or len(found) - len(DIALOG) > 3:
        return [f"is     {found.hex()}", f"wanted {DIALOG.hex()}"]
    return []


def version_resource_is_there(pe):
    versions = [value for key, value in pe.resources().items() if key[0] == RT_VERSION]
    if len(versions) != 1:
        return [f"{len(versions)} version resources"]
    complaints = []
    if struct.pack("<I", 0xFEEF04BD) not in versions[0]:
        complaints.append("no fixed version information")
    for name in ("FileVersion", "ProductName", "FileDescription"):
        if name.encode("utf-16le") not in versions[0]:
            complaints.append(f"no {name}")
    return complaints


def is_stripped(pe):
    complaints = [f"section {section.name}" for section in pe.sections if section.name.startswith((".debug", "/"))]
    if pe.symbol_count:
        complaints.append(f"{pe.symbol_count} symbols")
    return complaints


def is_below_2_mb(pe):
    return [f"{len(pe.data)} bytes"] if len(pe.data) >= SIZE_LIMIT else []


def names_no_folder_of_the_build_machine(pe, source_folder):
    complaints = []
    for encoding in ("ascii", "utf-16le"):
        nul = "\0".encode(encoding)
        for path in (source_folder,) + BUILD_MACHINE_PATHS:
            at = pe.data.find(path.encode(encoding))
            while at >= 0:
                whole = pe.data[at:pe.data.find(nul, at)]
                complaints.append(whole[:160].decode(encoding, "replace"))
                at = pe.data.find(path.encode(encoding), at + 1)
    return complaints


def all_checks(source_folder):
    """(name, check) pairs."""
    checks = [is_64_bit_library, exports_exactly_the_documented_names, imports_only_from_windows,
              dialog_resource_is_exact, version_resource_is_there, is_stripped, is_below_2_mb]
    named = [(check.__name__, check) for check in checks]
    named.append((names_no_folder_of_the_build_machine.__name__,
                  lambda pe: names_no_folder_of_the_build_machine(pe, source_folder)))
    return named
