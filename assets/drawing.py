"""What the pictures are made of: shapes with a rim, screens' contents, faces of plugs, bodies of
devices, and signs. make_pictures.py puts them together."""

SIZE = 80
MARGIN = 4

BODY = "#1d2736"
RIM = "#f6f8fb"
KEYS = "#8796ab"
SKY = "#58b4f2"
SUN = "#ffd63f"
HILL = "#3b9440"
PAPER = "#f7f7f2"

# Columns of displays that stand side by side.
LEFT = MARGIN + 1.5
RIGHT = SIZE - LEFT
GAP = 3.0


def num(value):
    """A coordinate, at most two digits after the point."""
    return f"{value:.2f}".rstrip("0").rstrip(".")


def path(points, closed=True):
    return "M" + " L".join(f"{num(x)} {num(y)}" for x, y in points) + (" Z" if closed else "")


def rounded(x, y, w, h, radius, **attributes):
    return element("rect", x=x, y=y, width=w, height=h, rx=radius, **attributes)


def element(tag, **attributes):
    parts = [tag]
    for name, value in attributes.items():
        text = num(value) if isinstance(value, (int, float)) else value
        parts.append(f'{name.replace("_", "-")}="{text}"')
    return f"<{' '.join(parts)}/>"


def circle(x, y, radius, **attributes):
    return element("circle", cx=x, cy=y, r=radius, **attributes)


def rimmed(draw, fill, rim=RIM, width=3.0):
    """A shape with a rim of `width` / 2 around it; `draw` makes it from paint attributes."""
    return [
        draw(fill=rim, stroke=rim, stroke_width=width, stroke_linejoin="round"),
        draw(fill=fill),
    ]


class Picture:
    """Lines of one SVG file, with clip paths numbered as they are used."""

    def __init__(self, title, width=SIZE, height=SIZE):
        self.title = title
        self.width = width
        self.height = height
        self.lines = []
        self.clips = 0

    def add(self, *lines):
        for line in lines:
            if isinstance(line, str):
                self.lines.append(line)
            else:
                self.add(*line)

    def note(self, text):
        self.lines.append(f"<!-- {text} -->")

    def clipped(self, window, content):
        self.clips += 1
        name = f"screen{self.clips}"
        x, y, w, h = window
        self.add(
            f'<clipPath id="{name}">{rounded(x, y, w, h, 1)}</clipPath>',
            f'<g clip-path="url(#{name})">',
            [f"  {line}" for line in content],
            "</g>",
        )

    def text(self):
        head = (
            f"<!-- {self.title} -->\n"
            f'<svg xmlns="http://www.w3.org/2000/svg" width="{self.width}" '
            f'height="{self.height}" viewBox="0 0 {self.width} {self.height}">\n'
        )
        return head + "".join(f"  {line}\n" for line in self.lines) + "</svg>\n"


# What screens show.


def landscape(x, y, w, h):
    """The sun and the hill, whole on one screen."""
    hill = (
        f"M{num(x)} {num(y + h)} V{num(y + 0.86 * h)} "
        f"Q{num(x + 0.3 * w)} {num(y + 0.66 * h)} {num(x + 0.42 * w)} {num(y + 0.6 * h)} "
        f"Q{num(x + 0.72 * w)} {num(y + 0.2 * h)} {num(x + w)} {num(y + 0.62 * h)} "
        f"V{num(y + h)} Z"
    )
    return [
        element("rect", x=x, y=y, width=w, height=h, fill=SKY),
        circle(x + 0.27 * w, y + 0.36 * h, 0.2 * min(h, 0.8 * w), fill=SUN),
        element("path", d=hill, fill=HILL),
    ]


def panorama(x, y, w, h, first):
    """One landscape that runs through a row of screens: the sun in the `first` screen's window,
    the ridge in the middle."""
    sun = min(0.17 * h, 0.38 * first[2])
    ridge = (
        f"M{num(x)} {num(y + h)} V{num(y + 0.9 * h)} "
        f"C{num(x + 0.25 * w)} {num(y + 0.86 * h)} {num(x + 0.3 * w)} {num(y + 0.56 * h)} "
        f"{num(x + 0.52 * w)} {num(y + 0.6 * h)} "
        f"S{num(x + 0.82 * w)} {num(y + 0.86 * h)} {num(x + w)} {num(y + 0.7 * h)} "
        f"V{num(y + h)} Z"
    )
    return [
        element("rect", x=x, y=y, width=w, height=h, fill=SKY),
        circle(first[0] + sun + 0.7, y + 0.27 * h, sun, fill=SUN),
        element("path", d=ridge, fill=HILL),
    ]


# Faces of plugs, each in the box x, y, w, h.


def vga(x, y, w, h):
    slant = 0.13 * w
    shell = path([(x, y), (x + w, y), (x + w - slant, y + h), (x + slant, y + h)])

    def draw(**paint):
        return element("path", d=shell, **paint)

    lines = rimmed(draw, "#2459d6")
    radius = max(0.6, 0.075 * h)
    step = 0.145 * w
    for row, shift in enumerate((0.0, -0.06, 0.0)):
        for column in range(5):
            lines.append(
                circle(
                    x + w / 2 + (column - 2) * step + shift * w * (row == 1),
                    y + h * (0.24 + 0.26 * row),
                    radius,
                    fill=RIM,
                )
            )
    return lines


def dvi(x, y, w, h):
    def draw(**paint):
        return rounded(x, y, w, h, 0.18 * h, **paint)

    lines = rimmed(draw, "#f4f4ee", rim=BODY)
    columns = 6 if w < 34 else 8
    step = 0.62 * w / columns
    side = max(1.3, 0.13 * h)
    for row in range(3):
        for column in range(columns):
            lines.append(
                element(
                    "rect",
                    x=x + 0.36 * w + (column + 0.5) * step - side / 2,
                    y=y + h * (0.24 + 0.26 * row) - side / 2,
                    width=side,
                    height=side,
                    fill=BODY,
                )
            )
    blade_height = max(2.0, 0.16 * h)
    lines.append(
        element(
            "rect",
            x=x + 0.07 * w,
            y=y + h / 2 - blade_height / 2,
            width=0.23 * w,
            height=blade_height,
            fill=BODY,
        )
    )
    return lines


def hdmi(x, y, w, h):
    shell = (
        f"M{num(x)} {num(y)} H{num(x + w)} V{num(y + 0.52 * h)} "
        f"L{num(x + 0.84 * w)} {num(y + 0.74 * h)} V{num(y + h)} "
        f"H{num(x + 0.16 * w)} V{num(y + 0.74 * h)} L{num(x)} {num(y + 0.52 * h)} Z"
    )

    def draw(**paint):
        return element("path", d=shell, **paint)

    tongue = element(
        "rect", x=x + 0.17 * w, y=y + 0.3 * h, width=0.66 * w, height=0.22 * h, fill=RIM
    )
    return rimmed(draw, "#d32f4f") + [tongue]


def displayport(x, y, w, h):
    cut = 0.5 * h
    shell = path([(x, y), (x + w, y), (x + w, y + h), (x + cut, y + h), (x, y + h - cut)])

    def draw(**paint):
        return element("path", d=shell, **paint)

    tongue = element(
        "rect", x=x + 0.2 * w, y=y + 0.34 * h, width=0.64 * w, height=0.24 * h, fill=RIM
    )
    return rimmed(draw, "#1f9a4c") + [tongue]


def rca(x, y, w, h):
    """The round socket of composite video."""
    radius = min(w, h) / 2
    cx, cy = x + w / 2, y + h / 2
    lines = rimmed(lambda **paint: circle(cx, cy, radius, **paint), "#f2b705")
    lines.append(circle(cx, cy, 0.62 * radius, fill=BODY))
    lines.append(circle(cx, cy, 0.32 * radius, fill=RIM))
    return lines


def radio(x, y, w, h):
    """A dot and three arcs above it."""
    cx, cy = x + w / 2, y + h - 0.12 * h
    arcs = []
    for reach in (0.4, 0.68, 0.96):
        radius = reach * min(h * 0.9, w / 1.5)
        dx, dy = 0.77 * radius, 0.64 * radius
        arcs.append(
            f"M{num(cx - dx)} {num(cy - dy)} "
            f"A{num(radius)} {num(radius)} 0 0 1 {num(cx + dx)} {num(cy - dy)}"
        )
    d = " ".join(arcs)
    line = max(1.8, 0.11 * h)
    dot = 0.13 * h
    lines = []
    for color, extra in ((BODY, 3.0), ("#5fe0ff", 0.0)):
        lines.append(
            element(
                "path",
                d=d,
                fill="none",
                stroke=color,
                stroke_width=line + extra,
                stroke_linecap="round",
            )
        )
        lines.append(circle(cx, cy, dot + extra / 2, fill=color))
    return lines


def no_plug(x, y, w, h):
    return []


# Bodies. Each takes the box of the casing and returns the window in which the screen shows.


def casing(picture, x, y, w, h, bezel=2.5, radius=2.0):
    picture.add(rimmed(lambda **paint: rounded(x, y, w, h, radius, **paint), BODY))
    return x + bezel, y + bezel, w - 2 * bezel, h - 2 * bezel


def keyboard(picture, x, y, w, h, lean):
    """The lower half of a notebook, wider at the front by `lean` on both sides."""
    d = path([(x, y), (x + w, y), (x + w + lean, y + h), (x - lean, y + h)])
    picture.add(rimmed(lambda **paint: element("path", d=d, **paint), BODY))
    rows = 2 if h >= 8 else 1
    for row in range(rows):
        ky = y + h * (0.22 + 0.3 * row)
        inset = 2.0 - lean * (0.22 + 0.3 * row)
        picture.add(
            element("rect", x=x + inset, y=ky, width=w - 2 * inset, height=0.16 * h, fill=KEYS)
        )
    picture.add(
        element("rect", x=x + 0.36 * w, y=y + 0.76 * h, width=0.28 * w, height=0.14 * h, fill=KEYS)
    )


def notebook(picture, x, y, w, h, base, lean):
    window = casing(picture, x, y, w, h)
    keyboard(picture, x, y + h + 0.5, w, base, lean)
    return window


def neck(picture, cx, y, h, width):
    def draw(**paint):
        return element("rect", x=cx - width / 2, y=y, width=width, height=h, **paint)

    picture.add(rimmed(draw, BODY))


def foot(picture, cx, y, w, h):
    """The stand of a flat panel."""
    d = path(
        [
            (cx - 0.12 * w, y),
            (cx + 0.12 * w, y),
            (cx + 0.12 * w, y + 0.55 * h),
            (cx + 0.5 * w, y + 0.62 * h),
            (cx + 0.5 * w, y + h),
            (cx - 0.5 * w, y + h),
            (cx - 0.5 * w, y + 0.62 * h),
            (cx - 0.12 * w, y + 0.55 * h),
        ]
    )
    picture.add(rimmed(lambda **paint: element("path", d=d, **paint), BODY))


def antenna(picture, cx, y, w, h):
    d = path([(cx - 0.5 * w, y), (cx, y + h), (cx + 0.5 * w, y)], closed=False)
    for color, width in ((RIM, 4.6), (BODY, 2.2)):
        picture.add(
            element(
                "path",
                d=d,
                fill="none",
                stroke=color,
                stroke_width=width,
                stroke_linecap="round",
                stroke_linejoin="round",
            )
        )


class Kind:
    """One kind of external display: its plug's face and the looks of its body."""

    def __init__(self, name, plug, aspect, cable=True, bezel=2.5, radius=2.0):
        self.name = name
        self.plug = plug
        self.aspect = aspect  # height of the plug's face by its width
        self.cable = cable
        self.bezel = bezel
        self.radius = radius


CRT = Kind("VGA display", vga, 0.5, bezel=4.0, radius=5.0)
TV = Kind("television", rca, 1.0, bezel=3.0, radius=4.0)
DVI = Kind("DVI display", dvi, 0.42)
LCD = Kind("flat panel", no_plug, 0.0, cable=False)
HDMI = Kind("HDMI display", hdmi, 0.46)
DP = Kind("DisplayPort display", displayport, 0.46)
WIDI = Kind("wireless display", radio, 0.62, cable=False)


def display(picture, kind, box, plug_box):
    """An external display: casing in `box`, the plug's face in `plug_box` below it."""
    picture.note(kind.name)
    x, y, w, h = box
    px, py, pw, ph = plug_box
    cx = px + pw / 2
    if kind is TV:
        ears = min(0.34 * h, 10)
        antenna(picture, x + w / 2, y, 0.62 * w, ears)
        y, h = y + ears, h - ears
    if kind.cable:
        neck(picture, cx, y + h - 1, py - y - h + 2, max(3.0, 0.14 * pw))
    if kind is LCD:
        foot(picture, cx, y + h, 0.6 * w, min(11.0, 0.3 * h))
    small = w < 36
    bezel = min(kind.bezel, 3.0 if kind is CRT else 2.5) if small else kind.bezel
    window = casing(picture, x, y, w, h, bezel, kind.radius if not small else 0.7 * kind.radius)
    if kind is TV:
        panel = 0.2 * w
        wx, wy, ww, wh = window
        window = (wx, wy, ww - panel, wh)
        knob = 0.065 * w
        for place in (0.27, 0.6):
            picture.add(circle(x + w - bezel - 0.4 * panel, y + place * h, knob, fill=RIM))
    picture.add(kind.plug(px, py, pw, ph))
    return window


def plug_box(kind, cx, y, width, most):
    """The plug's face centred on cx below y, at most `width` by `most`."""
    w = min(width, most / kind.aspect) if kind.aspect else width
    return cx - w / 2, y, w, w * kind.aspect


# Signs.


def equals(picture, cx, cy, w):
    picture.note("the same picture")
    bar, gap = 0.28 * w, 0.24 * w

    def draw(y):
        return lambda **paint: rounded(cx - w / 2, y, w, bar, 1, **paint)

    bars = [draw(cy - gap / 2 - bar), draw(cy + gap / 2)]
    picture.add([line for one in bars for line in rimmed(one, RIM, rim=BODY)[:1]])
    picture.add([one(fill=RIM) for one in bars])


def arrow(picture, x1, x2, cy, thick):
    picture.note("and on to the next screen")
    head, half = 2.1 * thick, 1.75 * thick
    d = path(
        [
            (x1, cy - thick / 2),
            (x2 - head, cy - thick / 2),
            (x2 - head, cy - half),
            (x2, cy),
            (x2 - head, cy + half),
            (x2 - head, cy + thick / 2),
            (x1, cy + thick / 2),
        ]
    )
    picture.add(rimmed(lambda **paint: element("path", d=d, **paint), "#ffffff", rim=BODY))


def chip(picture, x, y, w, h, color):
    step = w / max(2, int(w // 7))
    pins = [x + (i + 0.5) * step - 1.2 for i in range(max(2, int(w // 7)))]

    def pin(left):
        return lambda **paint: element(
            "rect", x=left, y=y - 2.2, width=2.4, height=h + 4.4, **paint
        )

    shapes = [pin(left) for left in pins]
    shapes.append(lambda **paint: rounded(x, y, w, h, 1.5, **paint))
    outlines = [rimmed(shape, color, rim=BODY, width=2.4) for shape in shapes]
    picture.add([outline for outline, _ in outlines], [body for _, body in outlines])


def chips(picture, first, second):
    """A graphics adapter under the columns of the displays that it drives, for each of two."""
    picture.note("two graphics adapters")
    for columns, color in ((first, "#b79bff"), (second, "#ffa02e")):
        left, right = columns[0][0], columns[-1][1]
        chip(picture, left + 0.5, 63.5, right - left - 1, 6, color)
