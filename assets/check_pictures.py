#!/usr/bin/env python3
"""Checks a folder of rendered pictures: check_pictures.py FOLDER

The folder must hold exactly the pictures that the library loads. Each must have its size and an
alpha channel. Item pictures must leave room for the frame behind them, must show something, and
must differ from one another. The middle of the strip must be one column wide, since the library
lays it over itself at every column. Prints each problem; exits with 1 if there is one.
"""

import itertools
import pathlib
import struct
import sys
import zlib

ITEMS = """
    NB CRT TV DVI LCD NB-CRT NB-TV NB-DVI HDMI NB-HDMI p800x600 p1024x768 DP NB-DP WiDi NB-WiDi
    AdvancedP1 AdvancedP2 Extend Extend2CRT Extend2DP Extend2HDMI Extend2WiDi
    3Clone_DSub_HDMI 3Clone_DSub_DP 3Clone_HDMI_DP 3Extend_DSub_HDMI 3Extend_DSub_DP 3Extend_HDMI_DP
    AdvancedP1DSUBDPHDMI AdvancedP2DSUBDPHDMI AdvancedP1DPHDMI AdvancedP2DPHDMI
    AdvancedP1DP AdvancedP2DP
""".split()
FRAME = "selected"
MIDDLE = "bg_center"
SIZES = {
    **{name: (80, 80) for name in ITEMS},
    FRAME: (80, 80),
    MIDDLE: (1, 100),
    "bg_left": (10, 100),
    "bg_right": (10, 100),
}

FRAME_LINE = 3  # pixels of every edge that an item picture leaves to the frame
LEAST_SHOWN = 0.2  # part of an item picture that is opaque
LEAST_DIFFERENT = 60  # pixels in which two item pictures differ plainly
PLAIN = 96  # sum of the differences of one pixel's channels


class Broken(Exception):
    """A file that is no PNG of the kind the build renders."""


def paeth(left, up, corner):
    estimate = left + up - corner
    return min((abs(estimate - left), 0, left), (abs(estimate - up), 1, up),
               (abs(estimate - corner), 2, corner))[2]


def unfiltered(data, width, height):
    """The lines of a PNG of four bytes a pixel, with the filter of each undone."""
    stride = 4 * width
    if len(data) != height * (stride + 1):
        raise Broken("the picture data is cut short")
    above = bytearray(stride)
    lines = []
    for row in range(height):
        start = row * (stride + 1)
        kind, line = data[start], bytearray(data[start + 1 : start + 1 + stride])
        for i in range(stride):
            left = line[i - 4] if i >= 4 else 0
            corner = above[i - 4] if i >= 4 else 0
            guess = (0, left, above[i], (left + above[i]) // 2, paeth(left, above[i], corner))
            line[i] = (line[i] + guess[kind]) & 0xFF
        lines.append(line)
        above = line
    return lines


def pixels(file):
    """Rows of (red, green, blue, alpha)."""
    content = file.read_bytes()
    if content[:8] != b"\x89PNG\r\n\x1a\n":
        raise Broken("not a PNG file")
    chunks, offset = {}, 8
    while offset + 12 <= len(content):
        length, kind = struct.unpack_from(">I4s", content, offset)
        body = content[offset + 8 : offset + 8 + length]
        chunks[kind] = chunks.get(kind, b"") + body
        offset += 12 + length
    if b"IHDR" not in chunks or b"IDAT" not in chunks:
        raise Broken("a PNG file without header or data")
    width, height, depth, color, _, _, interlaced = struct.unpack(">IIBBBBB", chunks[b"IHDR"])
    if (depth, color, interlaced) != (8, 6, 0):
        raise Broken("not plain red, green, blue and alpha of 8 bits each")
    lines = unfiltered(zlib.decompress(chunks[b"IDAT"]), width, height)
    return [[tuple(line[i : i + 4]) for i in range(0, 4 * width, 4)] for line in lines]


def size(picture):
    return len(picture[0]), len(picture)


def read_all(folder, problems):
    found = {file.stem for file in folder.glob("*.png")}
    problems += [f"{name}.png: missing" for name in sorted(SIZES.keys() - found)]
    unknown = sorted(found - SIZES.keys())
    problems += [f"{name}.png: the library loads no such picture" for name in unknown]
    pictures = {}
    for name in sorted(found & SIZES.keys()):
        try:
            picture = pixels(folder / f"{name}.png")
        except (Broken, zlib.error, struct.error) as error:
            problems.append(f"{name}.png: {error}")
            continue
        if size(picture) == SIZES[name]:
            pictures[name] = picture
        else:
            problems.append(f"{name}.png: {size(picture)}, expected {SIZES[name]}")
    return pictures


def in_frame_line(x, y):
    last = 79 - FRAME_LINE
    return not (FRAME_LINE <= x <= last and FRAME_LINE <= y <= last)


def check_item(name, picture, problems):
    cells = [(x, y, pixel[3]) for y, row in enumerate(picture) for x, pixel in enumerate(row)]
    if any(alpha and in_frame_line(x, y) for x, y, alpha in cells):
        problems.append(f"{name}.png: covers the frame, {FRAME_LINE} pixels must stay clear")
    if sum(alpha == 255 for _, _, alpha in cells) < LEAST_SHOWN * len(cells):
        problems.append(f"{name}.png: shows next to nothing")


def check_frame(picture, problems):
    middles = [picture[1][40], picture[78][40], picture[40][1], picture[40][78]]
    if any(pixel[3] < 250 for pixel in middles):
        problems.append(f"{FRAME}.png: no line along the four edges")


def check_strip(pictures, problems):
    """All three parts must join: the ends' inner columns look like the middle."""
    middle = [row[0] for row in pictures[MIDDLE]]
    if not all(0 < pixel[3] < 255 for pixel in middle):
        problems.append(f"{MIDDLE}.png: must be half transparent")
    for name, column in (("bg_left", 9), ("bg_right", 0)):
        inner = [row[column] for row in pictures[name]]
        worst = max(abs(a - b) for one, two in zip(inner, middle) for a, b in zip(one, two))
        if worst > 8:
            problems.append(f"{name}.png: its inner column differs from {MIDDLE}.png by {worst}")


def check_distinct(pictures, problems):
    for one, two in itertools.combinations([name for name in ITEMS if name in pictures], 2):
        different = sum(
            sum(abs(a - b) for a, b in zip(first, second)) > PLAIN
            for rows in zip(pictures[one], pictures[two])
            for first, second in zip(*rows)
        )
        if different < LEAST_DIFFERENT:
            problems.append(f"{one}.png and {two}.png differ in {different} pixels only")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    problems = []
    pictures = read_all(pathlib.Path(sys.argv[1]), problems)
    for name in ITEMS:
        if name in pictures:
            check_item(name, pictures[name], problems)
    if FRAME in pictures:
        check_frame(pictures[FRAME], problems)
    if {MIDDLE, "bg_left", "bg_right"} <= pictures.keys():
        check_strip(pictures, problems)
    check_distinct(pictures, problems)
    for problem in problems:
        print(problem)
    print(f"{len(pictures)} of {len(SIZES)} pictures read, {len(problems)} problems")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
