#!/usr/bin/python3
"""Draws the icons of the window and the side picture of the update wizard:
- NAME.png (32 pixels) and NAME@2x.png (64 pixels) for each command, in widgets/icons;
- the application's icon, which is the gem of samples/draw.py: in four sizes in widgets/icons, and for Windows as
  app/corvadine.ico;
- the wizard's picture, which is the gem in its night sky, in support/update/pictures.

The command icons have one style. Lines are two units wide on a grid of 32, and round at their ends. They have a gray
that is visible on light and dark backgrounds. The subject of the command has one accent color. Nothing is random, so
the same versions of Pillow and zlib draw the same bytes again.

Needs Python 3 and Pillow (python3-pil). Run it after a change of a drawing and commit the pictures with it.
"""

import math
import sys
from pathlib import Path

from PIL import Image, ImageDraw

ROOT = Path(__file__).resolve().parent.parent
sys.dont_write_bytecode = True  # keeps the folder samples free of __pycache__
sys.path.insert(0, str(ROOT / "samples"))
import draw as samples  # noqa: E402  (found by the line above)

GRID = 32
SUPERSAMPLING = 16  # of the 32-pixel size
SIZES = (("", 32), ("@2x", 64))
APPLICATION_SIZES = (16, 32, 48, 256)
BILLBOARD_SIZE = (164, 314)
WINDOWS_SIZES = (16, 20, 24, 32, 40, 48, 64, 256)  # of lists, task bar and large views at 100 to 200 %

LINE_WIDTH = 2
LINE = (122, 128, 140, 255)
ACCENT = (139, 92, 246, 255)
TINT = (139, 92, 246, 64)  # inside of an outline
ON_ACCENT = (255, 255, 255, 255)
NOTHING = (0, 0, 0, 0)
RING = (236, 220, 255, 150)


class Sheet:
    """One drawing in grid units. Later shapes replace earlier shapes, and the color NOTHING erases them."""

    def __init__(self):
        self.picture = Image.new("RGBA", (GRID * SUPERSAMPLING,) * 2)
        self.pen = ImageDraw.Draw(self.picture)

    def disc(self, x, y, radius, color):
        s = SUPERSAMPLING
        box = ((x - radius) * s, (y - radius) * s, (x + radius) * s - 1, (y + radius) * s - 1)
        self.pen.ellipse(box, fill=color)

    def fill(self, points, color):
        self.pen.polygon([(x * SUPERSAMPLING, y * SUPERSAMPLING) for x, y in points], fill=color)

    def line(self, points, color=LINE, width=LINE_WIDTH, closed=False):
        """Draws a line through the points, with round ends and corners."""
        if closed:
            points = points + points[:1]
        for (x0, y0), (x1, y1) in zip(points, points[1:]):
            length = math.hypot(x1 - x0, y1 - y0) or 1.0  # the two points may be equal where shapes meet
            dx, dy = (y1 - y0) / length * width / 2, (x0 - x1) / length * width / 2
            self.fill([(x0 + dx, y0 + dy), (x1 + dx, y1 + dy), (x1 - dx, y1 - dy), (x0 - dx, y0 - dy)], color)
        for x, y in points:
            self.disc(x, y, width / 2, color)

    def save(self, name):
        for suffix, side in SIZES:
            # resize() works on premultiplied alpha, so the edges keep their color.
            small = self.picture.resize((side, side), Image.Resampling.BOX)
            small.save(ROOT / "widgets" / "icons" / f"{name}{suffix}.png", optimize=True)


def arc(x, y, radius, start, end, steps=48):
    """Returns points on a circle from one angle to another, in degrees clockwise from the right."""
    angles = [math.radians(start + (end - start) * i / steps) for i in range(steps + 1)]
    return [(x + radius * math.cos(a), y + radius * math.sin(a)) for a in angles]


def rounded(left, top, right, bottom, radius):
    """Returns the outline of a rectangle with round corners."""
    return (
        arc(right - radius, top + radius, radius, -90, 0, 12)
        + arc(right - radius, bottom - radius, radius, 0, 90, 12)
        + arc(left + radius, bottom - radius, radius, 90, 180, 12)
        + arc(left + radius, top + radius, radius, 180, 270, 12)
    )


def arrow_head(tip, direction, size):
    """Returns two strokes that meet in `tip`. The tip points to `direction`, in degrees clockwise from the right."""
    x, y = tip
    ends = [math.radians(direction + turn) for turn in (135, -135)]
    return [(x + size * math.cos(ends[0]), y + size * math.sin(ends[0])), tip] + [
        (x + size * math.cos(ends[1]), y + size * math.sin(ends[1]))
    ]


# Parts that several icons share.


def document(sheet):
    sheet.line([(17, 3), (6, 3), (6, 29), (25, 29), (25, 11), (17, 3)])
    sheet.line([(17, 3), (17, 11), (25, 11)])


def picture_frame(sheet):
    outline = rounded(3, 5, 29, 27, 2.5)
    hills = [(3, 23.5), (11, 15), (16.5, 20.5), (20.5, 17), (29, 24.5)]
    sheet.fill(hills + [(29, 25), (27, 27), (5, 27), (3, 25)], TINT)
    sheet.line(hills, ACCENT)
    sheet.line(outline, closed=True)
    sheet.disc(20.5, 11.5, 2.2, ACCENT)


def badge(sheet, strokes):
    """Draws a disc with `strokes` in the lower right corner, and a gap around the disc."""
    sheet.disc(23.5, 23.5, 9, NOTHING)
    sheet.disc(23.5, 23.5, 7.5, ACCENT)
    for points in strokes:
        sheet.line([(23.5 + x, 23.5 + y) for x, y in points], ON_ACCENT)


PLUS = ([(-3.5, 0), (3.5, 0)], [(0, -3.5), (0, 3.5)])
CROSS = ([(-2.7, -2.7), (2.7, 2.7)], [(-2.7, 2.7), (2.7, -2.7)])
CHECK = ([(-3.5, 0.2), (-1, 2.7), (3.5, -2.3)],)


def gem(sheet, x, y, size):
    """Draws a small gem, seen from the side."""
    outline = [(-0.55, -0.75), (0.55, -0.75), (1, -0.15), (0, 1), (-1, -0.15)]
    facets = ([(-1, -0.15), (1, -0.15)], [(-0.42, -0.15), (0, 1), (0.42, -0.15)])

    def at(points):
        return [(x + px * size, y + py * size) for px, py in points]

    sheet.fill(at(outline), TINT)
    for points in facets:
        sheet.line(at(points), ACCENT, 1.2)
    sheet.line(at(outline), ACCENT, closed=True)


# The icons.


def add_project(sheet):
    document(sheet)
    badge(sheet, PLUS)


def save(sheet):
    sheet.fill([(10, 18), (22, 18), (22, 28), (10, 28)], TINT)
    sheet.line([(4, 4), (23, 4), (28, 9), (28, 28), (4, 28)], closed=True)
    sheet.line([(10, 4), (10, 11), (21, 11), (21, 4)])
    sheet.line([(10, 28), (10, 18), (22, 18), (22, 28)], ACCENT)


def cancel(sheet):
    sheet.line([(5, 11), (19, 11)] + arc(19, 18.5, 7.5, -90, 90) + [(10, 26)])
    sheet.line(arrow_head((4.5, 11), 180, 8), ACCENT)
    sheet.line([(5, 11), (13, 11)], ACCENT)


def delete_project(sheet):
    document(sheet)
    badge(sheet, CROSS)


def icon_image(sheet):
    sheet.line(rounded(3, 3, 29, 29, 6.5), closed=True)
    gem(sheet, 16, 15.5, 8.5)


def launch_image(sheet):
    sheet.line(rounded(7, 2, 25, 30, 3.5), closed=True)
    sheet.line([(14, 26), (18, 26)])
    gem(sheet, 16, 13.5, 5.6)


def help_mark(sheet):
    sheet.line(arc(16, 16, 13, 0, 360, 96))
    sheet.line(arc(16, 12.2, 4.3, -190, 55) + [(16, 18.6)], ACCENT, 2.4)
    sheet.disc(16, 23, 1.6, ACCENT)


def pick_color(sheet):
    """Draws a pipette with its tip down, turned so that the tip is at the lower left."""

    def turned(points):
        half = math.sqrt(0.5)
        return [(16 + (x - y) * half, 16 + (x + y) * half) for x, y in points]

    tube = [(-3, -5), (-3, 9), (0, 14), (3, 9), (3, -5)]
    sheet.fill(turned([(-3, 3), (-3, 9), (0, 14), (3, 9), (3, 3)]), ACCENT)
    sheet.line(turned(tube))
    sheet.line(turned([(-5.5, -5), (5.5, -5)]))
    bulb = [(-3, -5), (-3, -12), (3, -12), (3, -5)]
    sheet.fill(turned(bulb), LINE)
    sheet.line(turned(bulb), closed=True)


def delete_all(sheet):
    sheet.fill([(7, 9), (25, 9), (23.5, 29), (8.5, 29)], TINT)
    sheet.line([(4, 8.5), (28, 8.5)])
    sheet.line([(12, 8), (12, 4), (20, 4), (20, 8)])
    sheet.line([(7, 9), (8.5, 29), (23.5, 29), (25, 9)])
    for x in (12.7, 19.3):
        sheet.line([(x, 14), (x, 24)], ACCENT)


def check_update(sheet):
    for turn, color in ((0, LINE), (180, ACCENT)):
        sheet.line(arc(16, 16, 11.5, turn + 200, turn + 335), color)
        tip = arc(16, 16, 11.5, turn + 335, turn + 345, 1)[0]
        sheet.line(arrow_head(tip, turn + 335 + 78, 7), color)


def generate(sheet):
    sheet.line([(8, 8), (8, 3), (29, 3), (29, 24), (24, 24)])
    sheet.line(rounded(3, 8, 24, 29, 2), closed=True)
    triangle = [(10.5, 13.5), (10.5, 23.5), (19, 18.5)]
    sheet.fill(triangle, ACCENT)
    sheet.line(triangle, ACCENT, closed=True)


def update_project(sheet):
    document(sheet)
    for y in (15, 20):
        sheet.line([(10.5, y), (13.5 if y == 20 else 19, y)])
    badge(sheet, CHECK)


def add_image(sheet):
    picture_frame(sheet)
    badge(sheet, PLUS)


def up(sheet):
    sheet.line([(16, 27), (16, 6)], ACCENT, 3)
    sheet.line([(7, 14.5), (16, 5.5), (25, 14.5)], ACCENT, 3)


def close(sheet):
    """Draws lines of about twice the width, because this icon is shown at half its size."""
    sheet.line([(8, 8), (24, 24)], width=3.6)
    sheet.line([(24, 8), (8, 24)], width=3.6)


ICONS = {
    "add-project": add_project,
    "save": save,
    "cancel": cancel,
    "delete-project": delete_project,
    "icon-image": icon_image,
    "launch-image": launch_image,
    "help": help_mark,
    "pick-color": pick_color,
    "delete-all": delete_all,
    "check-update": check_update,
    "generate": generate,
    "update-project": update_project,
    "add-image": add_image,
    "up": up,
    "close": close,
}


def application_icon():
    """Draws the gem without its empty margin. Every size is made from the large drawing."""
    large = samples.gem(1024)
    left, top, right, bottom = large.getbbox()
    side = max(right - left, bottom - top)
    square = Image.new("RGBA", (side, side))
    square.paste(large.crop((left, top, right, bottom)), ((side - right + left) // 2, (side - bottom + top) // 2))

    def drawn(size):
        return square.resize((size, size), Image.Resampling.LANCZOS, reducing_gap=3)

    for size in APPLICATION_SIZES:
        suffix = "" if size == max(APPLICATION_SIZES) else f"-{size}"
        drawn(size).save(ROOT / "widgets" / "icons" / f"corvadine{suffix}.png", optimize=True)
    smaller = [drawn(size) for size in WINDOWS_SIZES[:-1]]
    sizes = [(size, size) for size in WINDOWS_SIZES]
    drawn(WINDOWS_SIZES[-1]).save(ROOT / "app" / "corvadine.ico", sizes=sizes, append_images=smaller)


def billboard():
    """Draws the side picture in two sizes. Arrows go round the gem, as on the icon of the update check."""
    width, height = (side * 2 for side in BILLBOARD_SIZE)
    large = samples.launch((width, height), samples.gem(200))
    rings = Image.new("RGBA", (width * SUPERSAMPLING // 4, height * SUPERSAMPLING // 4))
    sheet = Sheet()
    sheet.picture, sheet.pen = rings, ImageDraw.Draw(rings)
    # These numbers are grid units of a sheet. The ring is centered on the gem.
    scale = 1 / 4
    x, y, radius = width / 2 * scale, height * 0.43 * scale, 138 * scale
    for turn in (0, 180):
        points = arc(x, y, radius, turn + 200, turn + 325)
        sheet.line(points, RING, 2.2)
        sheet.line(arrow_head(points[-1], turn + 325 + 98, 7), RING, 2.2)
    picture = large.convert("RGBA")
    picture.alpha_composite(rings.resize((width, height), Image.Resampling.BOX))
    for suffix, size in (("", BILLBOARD_SIZE), ("@2x", (width, height))):
        small = picture.resize(size, Image.Resampling.BOX) if size != picture.size else picture
        small.save(ROOT / "support" / "update" / "pictures" / f"billboard{suffix}.png", optimize=True)


def main():
    for name, draw_icon in ICONS.items():
        sheet = Sheet()
        draw_icon(sheet)
        sheet.save(name)
    application_icon()
    billboard()


if __name__ == "__main__":
    main()
