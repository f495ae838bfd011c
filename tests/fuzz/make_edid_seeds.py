"""Writes the fuzzer's first EDIDs into a folder, one file each.

usage: make_edid_seeds.py FOLDER
"""

import os
import sys

HEADER = bytes([0, 255, 255, 255, 255, 255, 255, 0])
FULL_HD = bytes([0x02, 0x3A, 0x80, 0x18, 0x71, 0x38, 0x2D, 0x40, 0x58, 0x2C, 0x45, 0, 0, 0, 0, 0, 0, 0x1E])
NO_TIMING = bytes([0x00]) + FULL_HD[1:]
NO_PIXELS = bytes([0xFF, 0xFF]) + bytes(16)
ALL_BITS = bytes([0xFF] * 18)


def text(tag, content):
    return bytes([0, 0, 0, tag, 0]) + content.ljust(13)[:13]


def block(*descriptors, version=1, preferred=True):
    edid = bytearray(128)
    edid[0:8] = HEADER
    edid[18] = version
    edid[24] = 2 if preferred else 0
    for number, descriptor in enumerate(descriptors):
        edid[54 + 18 * number:72 + 18 * number] = descriptor
    edid[127] = -sum(edid) % 256
    return bytes(edid)


def spoilt(edid, at):
    return edid[:at] + bytes([edid[at] ^ 1]) + edid[at + 1:]


NAMED = block(FULL_HD, text(0xFC, b"Veld A1\n"))
SEEDS = {
    "empty": b"",
    "one-byte": b"\0",
    "short": NAMED[:127],
    "named": NAMED,
    "one-byte-more": NAMED + b"\0",
    "extension": NAMED + bytes(128),
    "bad-header": spoilt(NAMED, 3),
    "bad-version": block(FULL_HD, version=2),
    "bad-checksum": spoilt(NAMED, 127),
    "zeros": bytes(128),
    "ones": b"\xFF" * 128,
    "no-preferred": block(FULL_HD, preferred=False),
    "no-timing": block(NO_TIMING),
    "no-pixels": block(NO_PIXELS),
    "all-bits": block(ALL_BITS, ALL_BITS, ALL_BITS, ALL_BITS),
    "name-of-13": block(FULL_HD, text(0xFC, b"1234567890123"), text(0xFC, b"short\n")),
    "text-first": block(FULL_HD, text(0xFE, b"text\n"), text(0xFC, b"name\n")),
    "controls": block(FULL_HD, text(0xFC, b"a\tb\r\x01\xFF, \n")),
    "zero-inside": block(FULL_HD, text(0xFC, b"ab\0cd\n")),
    "names-only": block(*[text(0xFC, b"%d\n" % n) for n in range(4)]),
    "last": block(FULL_HD, text(0xFD, b""), text(0xFB, b""), text(0xFC, b"123456789012\n")),
}


def main():
    folder = sys.argv[1]
    os.makedirs(folder, exist_ok=True)
    for name, content in SEEDS.items():
        with open(os.path.join(folder, name), "wb") as file:
            file.write(content)


if __name__ == "__main__":
    main()
