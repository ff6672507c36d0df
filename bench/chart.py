"""The picture of bench/run: time of a solve against the number of nodes, one panel per family."""

import math

FAMILIES = ("district", "grid", "line")
COLOURS = {"tavell": "#0b6e99", "epanet-js": "#b8500f", "EPANET": "#6b6b6b"}
NAMES = {"tavell": "tavell", "epanet-js": "epanet-js", "EPANET": "EPANET, native"}

PANEL = 250  # [px], width of a panel's axes
HEIGHT = 340  # [px] of the axes
LEFT, TOP, GAP, RIGHT, BOTTOM = 62, 46, 118, 112, 52  # [px]; the gaps hold the labels of the lines
LABEL_STEP = 15  # [px], height of a label
RELUCTANCE = 3  # to take the next of the places for a label, in points that the one before it covers
LETTER = 7  # [px], mean width of a letter
DASHES = {"EPANET": "5 3"}  # of times that were not taken in this run


def draw(medians):
    """An SVG text. medians as of bench/run, by (program, family, nodes, stage)."""
    lines = {
        (program, family): sorted(
            (nodes, median.milliseconds)
            for (name, of, nodes, stage), median in medians.items()
            if (name, of, stage) == (program, family, "solve")
        )
        for program in COLOURS
        for family in FAMILIES
    }
    points = [point for line in lines.values() for point in line]
    scale = Scale(points)
    width = LEFT + len(FAMILIES) * PANEL + (len(FAMILIES) - 1) * GAP + RIGHT
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {TOP + HEIGHT + BOTTOM}" '
        'font-family="DejaVu Sans, Verdana, sans-serif" font-size="12" fill="#333">',
        "<title>Time of a solve against the number of nodes</title>",
        '<rect width="100%" height="100%" fill="#fff"/>',
    ]
    for i, family in enumerate(FAMILIES):
        left = LEFT + i * (PANEL + GAP)
        parts += draw_axes(scale, left, family, with_title=i == 0)
        parts += draw_lines(scale, left, {program: lines[program, family] for program in COLOURS})
    return "\n".join([*parts, "</svg>", ""])


class Scale:
    """From nodes and milliseconds to px, over whole decades."""

    def __init__(self, points):
        def decades(values):
            return math.floor(math.log10(min(values))), math.ceil(math.log10(max(values)))

        self.x_decades = decades([nodes for nodes, _ in points])
        self.y_decades = decades([time for _, time in points])

    def x(self, nodes):
        first, last = self.x_decades
        return PANEL * (math.log10(nodes) - first) / max(1, last - first)

    def y(self, milliseconds):
        first, last = self.y_decades
        return TOP + HEIGHT * (last - math.log10(milliseconds)) / max(1, last - first)


def text(x, y, words, anchor="start", **attributes):
    more = "".join(f' {name.replace("_", "-")}="{value}"' for name, value in attributes.items())
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}"{more}>{words}</text>'


def label(x, y, words, colour):
    """With a white rim, since it may lie on another line."""
    return text(x, y, words, fill=colour, stroke="#fff", stroke_width=4, paint_order="stroke")


def rule(x1, y1, x2, y2):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="#e2e2e2"/>'


def time_label(exponent):
    """A power of ten of milliseconds in the unit that reads best."""
    names = {-2: "10 µs", -1: "0.1 ms", 0: "1 ms", 1: "10 ms", 2: "0.1 s", 3: "1 s", 4: "10 s", 5: "100 s", 6: "1000 s"}
    return names.get(exponent, f"1e{exponent} ms")


def draw_axes(scale, left, family, with_title):
    parts = [text(left, TOP - 18, family, font_size=15, font_weight="bold")]
    if with_title:
        parts.append(text(left + PANEL, TOP - 18, "time of a solve", "end"))
    for exponent in range(scale.y_decades[0], scale.y_decades[1] + 1):
        y = scale.y(10.0**exponent)
        parts.append(rule(left, y, left + PANEL, y))
        parts.append(text(left - 8, y + 4, time_label(exponent), "end") if with_title else "")
    for exponent in range(scale.x_decades[0], scale.x_decades[1] + 1):
        x = left + scale.x(10.0**exponent)
        parts.append(rule(x, TOP, x, TOP + HEIGHT))
        parts.append(text(x, TOP + HEIGHT + 18, f"1e{exponent}", "middle"))
    parts.append(text(left + PANEL / 2, TOP + HEIGHT + 40, "nodes", "middle"))
    return [part for part in parts if part]


def draw_lines(scale, left, lines):
    """The lines of one panel; the first program's on top, the labels above all."""
    parts = []
    places = {
        program: [(left + scale.x(nodes), scale.y(time)) for nodes, time in line] for program, line in lines.items() if line
    }
    for program, points in reversed(places.items()):
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        width = 2.5 if program == "tavell" else 1.6
        dashes = f' stroke-dasharray="{DASHES[program]}"' if program in DASHES else ""
        parts.append(
            f'<polyline points="{path}" fill="none" stroke="{COLOURS[program]}" stroke-width="{width}"{dashes}/>'
        )
        parts += [f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{COLOURS[program]}"/>' for x, y in points]
    return parts + label_lines(places)


def label_lines(places):
    """A label at the last point of every line: of the places around it the one that covers least of lines and labels."""
    parts = []
    ink = [point for points in places.values() for point in walk(points)]
    for program, points in sorted(places.items(), key=lambda item: item[1][-1][1]):
        x, y = points[-1]
        width = LETTER * len(NAMES[program])
        lefts = [x + 8, x - width - 6, x + 8, x + 8, x - width - 6, x + 8]
        heights = [0, -12, LABEL_STEP, -LABEL_STEP, 12, 2 * LABEL_STEP]
        around = [(left, y + height) for left, height in zip(lefts, heights)]
        costs = [count_covered(ink, *corner, width) + RELUCTANCE * i for i, corner in enumerate(around)]
        place = around[costs.index(min(costs))]
        ink += walk([place, (place[0] + width, place[1])])
        parts.append(label(place[0], place[1] + 4, NAMES[program], COLOURS[program]))
    return parts


def walk(points):
    """Points along a line, a few px apart."""
    result = list(points)
    for (x1, y1), (x2, y2) in zip(points, points[1:]):
        steps = max(1, int(math.hypot(x2 - x1, y2 - y1) / 4))
        result += [(x1 + (x2 - x1) * i / steps, y1 + (y2 - y1) * i / steps) for i in range(steps)]
    return result


def count_covered(ink, x, y, width):
    """Points in the box of a label that begins at x and is centred on y."""
    half = LABEL_STEP / 2 + 1
    return sum(x - 2 <= px <= x + width and y - half <= py <= y + half for px, py in ink)
