#!/usr/bin/env python3
"""Draws the pop-up's pictures: writes OstrelRes/*.svg from the tables at the end of this file,
with the shapes of drawing.py.

Run it by hand after a change and keep the SVG files it writes: they are the sources that the
build renders. One description for all pictures keeps the language they speak the same:

  device      a notebook is a screen over a keyboard; every other display is a screen over the
              face of its plug, drawn large: VGA's blue trapezoid with 15 pins, DVI's white
              oblong with the flat pin, HDMI's red tapered shell, DisplayPort's green shell with
              one cut corner, the yellow round socket of video under a set with an antenna, and
              the arcs of a radio for the wireless display. A plain foot is a flat panel of no
              special plug.
  alone       one device in the picture.
  cloned      every screen shows the same sun and hill; an equals sign stands beside them.
  extended    screens stand in one row, one landscape runs through them, and so does an arrow.
  adapters    with two graphics adapters a chip lies under the displays that each one drives.
  presenting  a notebook and a projector; the picture fills the canvas or only a part of it.

Dark bodies have a light rim, so that they show on any desktop. Item pictures keep MARGIN pixels
free on every side: the frame of the highlighted item is drawn behind them and shows there.
"""

import pathlib

from drawing import (
    BODY,
    CRT,
    DP,
    DVI,
    GAP,
    HDMI,
    KEYS,
    LCD,
    LEFT,
    PAPER,
    RIGHT,
    RIM,
    SIZE,
    TV,
    WIDI,
    Picture,
    arrow,
    chips,
    circle,
    display,
    element,
    equals,
    landscape,
    notebook,
    panorama,
    path,
    plug_box,
    rimmed,
    rounded,
)


def notebook_alone():
    picture = Picture("notebook panel alone")
    window = notebook(picture, 13, 14, 54, 37, 14, 7)
    picture.clipped(window, landscape(*window))
    return picture


def display_alone(kind):
    picture = Picture(f"{kind.name} alone")
    boxes = {CRT: (13, 7, 54, 40), TV: (11, 6, 58, 44), LCD: (8, 13, 64, 41), HDMI: (7, 9, 66, 36)}
    box = boxes.get(kind, (9, 8, 62, 38))
    most = 18.0 if kind is TV else 20.0
    below = plug_box(kind, 40, 73 - most, 46, most)
    if kind.aspect:
        below = (below[0], 73.5 - below[3], below[2], below[3])
    if kind is WIDI:
        below = (22, 49, 36, 24)
    window = display(picture, kind, box, below)
    picture.clipped(window, landscape(*window))
    return picture


def cloned(kind):
    picture = Picture(f"notebook panel and {kind.name}, cloned")
    box = (31, 6.5, 43, 31)
    if kind is TV:
        box = (31, 5.5, 43, 35)
    below = plug_box(kind, 60.5, 47, 27, 18)
    if kind is WIDI:
        below = (45, 42.5, 28, 22)
    window = display(picture, kind, box, below)
    picture.clipped(window, landscape(*window))
    picture.note("notebook")
    window = notebook(picture, 8, 38, 33, 23, 9, 2.5)
    picture.clipped(window, landscape(*window))
    equals(picture, 17, 22, 15)
    return picture


def row_of_screens(picture, kinds, top, height, plug_height, base):
    """A notebook and displays side by side, from left to right, with one landscape in them.

    Returns the left and right edges of the columns.
    """
    count = 1 + len(kinds)
    w = (RIGHT - LEFT - GAP * (count - 1)) / count
    columns = [(LEFT + i * (w + GAP), LEFT + i * (w + GAP) + w) for i in range(count)]
    lean = 2.0 if count < 4 else 1.0
    picture.note("notebook")
    windows = [notebook(picture, LEFT + lean, top, w - 2 * lean, height, base, lean)]
    for kind, (x, end) in zip(kinds, columns[1:]):
        below = plug_box(kind, (x + end) / 2, top + height + 5, w - 1, plug_height)
        windows.append(display(picture, kind, (x, top, w, height), below))
    for window in windows:
        picture.clipped(window, panorama(LEFT, top, RIGHT - LEFT, height, windows[0]))
    thick = 4.5 if count == 2 else 3.6
    arrow(picture, LEFT + 0.62 * w, RIGHT - 0.3 * w, top + 0.5 * height, thick)
    return columns


def extended(kinds, title):
    picture = Picture(title)
    if len(kinds) == 1:
        row_of_screens(picture, kinds, 10, 37, 17, 12)
    else:
        row_of_screens(picture, kinds, 12, 37, 13, 10)
    return picture


def across_adapters(kinds, first_count, title):
    """One desktop over two adapters; the first drives the notebook and the kinds before
    `first_count`, the second the others."""
    picture = Picture(title)
    columns = row_of_screens(picture, kinds, 8, 31, 11, 9)
    chips(picture, columns[:first_count], columns[first_count:])
    return picture


def clone_beside(partner, others, title):
    """The notebook and `partner` cloned on the first adapter, `others` to their right."""
    picture = Picture(title)
    w = (31.0, 23.0)[len(others) - 1]
    rest = (RIGHT - LEFT - w - GAP * len(others)) / len(others)
    columns = [(LEFT, LEFT + w)]
    for _ in others:
        x = columns[-1][1] + GAP
        columns.append((x, x + rest))
    below = plug_box(partner, LEFT + 0.29 * w, 26.3, 0.55 * w, 7.5)
    windows = [display(picture, partner, (LEFT, 5.5, w, 18), below)]
    picture.note("notebook")
    windows.append(notebook(picture, LEFT + 2, 36.5, w - 4, 15.5, 6, 2))
    for kind, (x, end) in zip(others, columns[1:]):
        below = plug_box(kind, (x + end) / 2, 45, rest - 1, 12)
        windows.append(display(picture, kind, (x, 9, rest, 31), below))
    for window in windows:
        _, y, _, h = window
        picture.clipped(window, panorama(LEFT, y, RIGHT - LEFT, h, windows[0]))
    equals(picture, LEFT + 0.83 * w, 30, max(8.5, 0.3 * w))
    arrow(picture, LEFT + 0.62 * w, RIGHT - 0.3 * rest, 17.5, 3.6)
    chips(picture, columns[:1], columns[1:])
    return picture


def triple_cloned(kinds):
    picture = Picture(f"notebook panel, {kinds[0].name} and {kinds[1].name}, cloned")
    for kind, x in zip(kinds, (6, 42)):
        below = plug_box(kind, x + 16, 34, 24, 11)
        window = display(picture, kind, (x, 6.5, 32, 23), below)
        picture.clipped(window, landscape(*window))
    picture.note("notebook")
    window = notebook(picture, 25, 47.5, 30, 18, 7, 2)
    picture.clipped(window, landscape(*window))
    equals(picture, 13, 60, 11)
    equals(picture, 67, 60, 11)
    return picture


def presentation(fill, title):
    """Notebook and projector; `fill` is the part of the canvas' width that the picture takes."""
    picture = Picture(title)
    x, y, w, h = 10, 9, 60, 37
    pw, ph = 56 * fill, 32 * fill
    px, py = x + (w - pw) / 2, y + 3.5 + (32 - ph) / 2
    picture.note("beam")
    beam = path([(54, 58), (px, y + h), (px + pw, y + h)])
    picture.add(rimmed(lambda **paint: element("path", d=beam, **paint), "#ffe98a", rim=BODY))
    picture.note("canvas")
    picture.add(rimmed(lambda **paint: rounded(x, y, w, h, 1, **paint), BODY))
    picture.add(element("rect", x=x + 1.5, y=y + 1.5, width=w - 3, height=h - 3, fill=PAPER))
    picture.add(rimmed(lambda **paint: rounded(x - 4, y - 3, w + 8, 4, 2, **paint), BODY))
    picture.clipped((px, py, pw, ph), landscape(px, py, pw, ph))
    picture.note("projector")
    for box in ((43, 70, 4, 3, 0), (63, 70, 4, 3, 0), (38, 57, 35, 13.5, 3)):
        picture.add(rimmed(lambda **paint: rounded(*box, **paint), BODY))
    picture.add(circle(54, 63.5, 5.2, fill=RIM), circle(54, 63.5, 3.4, fill="#ffd63f"))
    for slot in (62.5, 65.5, 68.5):
        picture.add(element("rect", x=slot, y=60.5, width=1.4, height=6.5, fill=KEYS))
    picture.note("notebook")
    window = notebook(picture, 9, 50, 21, 15, 7, 2)
    picture.clipped(window, landscape(*window))
    return picture


# The strip and the frame.

STRIP = "#141a24"
STRIP_OPACITY = 0.78
END = 10


def strip_end(title, mirrored):
    """A rounded end of the strip, END wide."""
    picture = Picture(title, END, 100)
    shape = "M10 0 A10 10 0 0 0 0 10 V90 A10 10 0 0 0 10 100 Z"
    edge = "M10 0.5 A9.5 9.5 0 0 0 0.5 10 V90 A9.5 9.5 0 0 0 10 99.5"
    picture.add('<g transform="matrix(-1 0 0 1 10 0)">' if mirrored else "<g>")
    picture.add(element("path", d=shape, fill=STRIP, fill_opacity=STRIP_OPACITY))
    picture.add(
        element("path", d=edge, fill="none", stroke="#ffffff", stroke_opacity=0.45, stroke_width=1)
    )
    picture.add("</g>")
    return picture


def strip_middle():
    """One pixel column: it is laid side by side with itself, and must not overlap."""
    picture = Picture("middle of the strip, one pixel column", 1, 100)
    picture.add(
        element("rect", width=1, height=100, fill=STRIP, fill_opacity=STRIP_OPACITY),
    )
    for y in (0, 99):
        picture.add(
            element("rect", y=y, width=1, height=1, fill="#ffffff", fill_opacity=0.45)
        )
    return picture


def frame():
    picture = Picture("frame of the highlighted item; shows in the margin of the item's picture")
    picture.add(
        rounded(
            1.5,
            1.5,
            SIZE - 3,
            SIZE - 3,
            7,
            fill="#ffffff",
            fill_opacity=0.3,
            stroke="#ffb400",
            stroke_width=3,
        )
    )
    return picture


# The pictures and their names.


def write(folder, name, picture):
    (folder / f"{name}.svg").write_text(picture.text(), encoding="ascii", newline="\n")


def clones_and_singles():
    kinds = {"CRT": CRT, "TV": TV, "DVI": DVI, "LCD": LCD, "HDMI": HDMI, "DP": DP, "WiDi": WIDI}
    yield "NB", notebook_alone()
    for name, kind in kinds.items():
        yield name, display_alone(kind)
        if kind is not LCD:
            yield f"NB-{name}", cloned(kind)


def extensions():
    for name, kind in {"": LCD, "2CRT": CRT, "2DP": DP, "2HDMI": HDMI, "2WiDi": WIDI}.items():
        yield f"Extend{name}", extended([kind], f"notebook panel extended to {kind.name}")


def triples():
    pairs = {"DSub_HDMI": (CRT, HDMI), "DSub_DP": (CRT, DP), "HDMI_DP": (HDMI, DP)}
    for name, kinds in pairs.items():
        both = f"{kinds[0].name} and {kinds[1].name}"
        yield f"3Clone_{name}", triple_cloned(kinds)
        yield f"3Extend_{name}", extended(kinds, f"notebook panel extended to {both}")


def advanced():
    # Name, displays after the notebook from left to right, how many columns the first adapter has.
    arrangements = (
        ("", (CRT, HDMI), 2),
        ("DP", (CRT, DP), 2),
        ("DPHDMI", (DP, HDMI), 1),
        ("DSUBDPHDMI", (CRT, DP, HDMI), 2),
    )
    for name, kinds, first_count in arrangements:
        listed = ", ".join(kind.name for kind in kinds)
        yield f"AdvancedP1{name}", across_adapters(
            kinds, first_count, f"two adapters: notebook panel, {listed}, all extended"
        )
        rest = " and ".join(kind.name for kind in kinds[1:])
        yield f"AdvancedP2{name}", clone_beside(
            kinds[0],
            kinds[1:],
            f"two adapters: notebook panel and {kinds[0].name} cloned, extended to {rest}",
        )


def presentations():
    yield "p800x600", presentation(0.56, "presentation, the smaller picture")
    yield "p1024x768", presentation(1.0, "presentation, the larger picture")


def strip():
    yield "bg_left", strip_end("left end of the strip", mirrored=False)
    yield "bg_right", strip_end("right end of the strip", mirrored=True)
    yield "bg_center", strip_middle()
    yield "selected", frame()


def main():
    folder = pathlib.Path(__file__).resolve().parent / "OstrelRes"
    folder.mkdir(exist_ok=True)
    for family in (clones_and_singles, extensions, triples, advanced, presentations, strip):
        for name, picture in family():
            write(folder, name, picture)


if __name__ == "__main__":
    main()
