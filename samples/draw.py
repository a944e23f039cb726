#!/usr/bin/python3
"""Draws the two source images of the demo project: Demo/icon.png and Demo/launch.png.

The mark is a violet gem: a solid model of a round brilliant cut, seen from a little above, each facet shaded by the way
it faces. Its thin edges, narrow facets and soft shadow over transparency show what a resampling filter does. Nothing is
random, so the same Pillow and zlib draw the same bytes again.

Needs Python 3 and Pillow (python3-pil). Run it after a change of the drawing and commit the pictures with it.
"""

import math
from pathlib import Path

from PIL import Image, ImageDraw, ImageFilter

SUPERSAMPLING = 4  # drawn this many times larger, then averaged down: the antialiasing

# The cut, as fractions of the girdle's radius.
SYMMETRY = 8
TABLE_RADIUS = 0.56
STAR_RADIUS = 0.80
CROWN_HEIGHT = 0.42
LOWER_RADIUS = 0.34
PAVILION_DEPTH = 1.12
GIRDLE = 0.03  # half its thickness

TURN = math.radians(11)  # seen exactly from the front a gem looks flat
ELEVATION = math.radians(25)  # of the viewer above the girdle
RIGHT = (1.0, 0.0, 0.0)
UP = (0.0, math.sin(ELEVATION), math.cos(ELEVATION))
TO_VIEWER = (0.0, -math.cos(ELEVATION), math.sin(ELEVATION))

# A facet's color by its brightness.
FACET_RAMP = [
    (0.00, (30, 8, 74)),
    (0.25, (74, 22, 152)),
    (0.50, (122, 48, 220)),
    (0.70, (170, 98, 250)),
    (0.86, (224, 178, 255)),
    (1.00, (255, 248, 255)),
]
# The launch image's background by height.
NIGHT_RAMP = [
    (0.00, (18, 9, 44)),
    (0.45, (58, 22, 112)),
    (0.75, (128, 44, 142)),
    (1.00, (226, 104, 128)),
]


def dot(a, b):
    return sum(p * q for p, q in zip(a, b))


def unit(vector):
    length = math.sqrt(dot(vector, vector))
    return tuple(p / length for p in vector)


def ramp(colors, value):
    """The color of a ramp at `value`, which is clamped to 0..1."""
    value = min(max(value, 0.0), 1.0)
    for (low, first), (high, second) in zip(colors, colors[1:]):
        if value <= high:
            share = (value - low) / (high - low)
            return tuple(round(a + (b - a) * share) for a, b in zip(first, second))
    return colors[-1][1]


def polar(radius, step, z):
    """A point of the model; `step` counts eighths of a turn, z points up."""
    angle = step * 2 * math.pi / SYMMETRY + TURN
    return (radius * math.cos(angle), radius * math.sin(angle), z)


def normal(points):
    """The outward unit normal of a facet, told by the gem's centre."""
    a, b, c = points[:3]
    u = tuple(q - p for p, q in zip(a, b))
    v = tuple(q - p for p, q in zip(a, c))
    n = unit((u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]))
    return n if dot(n, a) > 0 else tuple(-p for p in n)


def gem_facets():
    """The facets as lists of points; the girdle's radius is 1."""
    apothem = math.cos(math.pi / SYMMETRY)
    table_z = GIRDLE + CROWN_HEIGHT
    # A kite's four corners lie in one plane only at these heights.
    star_z = GIRDLE + CROWN_HEIGHT * (1 - STAR_RADIUS * apothem) / (1 - TABLE_RADIUS)
    lower_z = -GIRDLE - PAVILION_DEPTH * (1 - LOWER_RADIUS * apothem)
    culet = (0.0, 0.0, -GIRDLE - PAVILION_DEPTH)

    def table(step):
        return polar(TABLE_RADIUS, step, table_z)

    def star(step):
        return polar(STAR_RADIUS, step, star_z)

    def lower(step):
        return polar(LOWER_RADIUS, step, lower_z)

    facets = [[table(k) for k in range(SYMMETRY)]]
    for k in range(SYMMETRY):
        facets.append([table(k), table(k + 1), star(k + 0.5)])
        facets.append([table(k), star(k + 0.5), polar(1, k, GIRDLE), star(k - 0.5)])
        facets.append([culet, lower(k + 0.5), polar(1, k, -GIRDLE), lower(k - 0.5)])
        for end in (k - 0.5, k + 0.5):
            facets.append([star(end), polar(1, k, GIRDLE), polar(1, end, GIRDLE)])
            facets.append([lower(end), polar(1, k, -GIRDLE), polar(1, end, -GIRDLE)])
            facets.append([polar(1, k, GIRDLE), polar(1, end, GIRDLE), polar(1, end, -GIRDLE), polar(1, k, -GIRDLE)])
    return facets


def brightness(n, index):
    """How bright a facet with the normal `n` looks; `index` sets neighbours apart, as refraction does."""
    key = max(0.0, dot(n, unit((-0.62, -0.42, 0.66))))
    fill = max(0.0, dot(n, unit((0.85, -0.35, 0.10))))
    glint = max(0.0, dot(n, unit((-0.22, -0.62, 0.75)))) ** 30
    return 0.13 + 0.46 * key + 0.26 * fill + 0.40 * glint + 0.13 * math.sin(index * 2.4)


def gradient(size, start, end, first, last):
    """A picture of `size` that runs from the color `first` at the point `start` to `last` at `end`."""
    strip = Image.new("RGB", (256, 1))
    strip.putdata([tuple(round(a + (b - a) * i / 255) for a, b in zip(first, last)) for i in range(256)])
    dx, dy = end[0] - start[0], end[1] - start[1]
    scale = 255 / (dx * dx + dy * dy)
    offset = 0.5 - (start[0] * dx + start[1] * dy) * scale
    affine = (dx * scale, dy * scale, offset, 0, 0, 0.5)
    return strip.transform(size, Image.Transform.AFFINE, affine, Image.Resampling.NEAREST)


def paint_facet(picture, points, value, opacity):
    """Fills a polygon with a gradient around the brightness `value`, lightest towards the upper left."""
    left, top = (math.floor(min(p[i] for p in points)) for i in (0, 1))
    right, bottom = (math.ceil(max(p[i] for p in points)) for i in (0, 1))
    size = (right - left + 1, bottom - top + 1)
    local = [(x - left, y - top) for x, y in points]
    along = [x * 0.6 + y * 0.8 for x, y in local]
    start = (min(along) * 0.6, min(along) * 0.8)
    end = (max(along) * 0.6, max(along) * 0.8)
    fill = gradient(size, start, end, ramp(FACET_RAMP, value + 0.13), ramp(FACET_RAMP, value - 0.13))
    mask = Image.new("L", size)
    ImageDraw.Draw(mask).polygon(local, fill=round(255 * opacity))
    fill.putalpha(mask)
    picture.alpha_composite(fill, (left, top))


def stroke(picture, outlines, width, color):
    """Draws closed lines with round corners over the picture."""
    layer = Image.new("RGBA", picture.size, color[:3] + (0,))
    pen = ImageDraw.Draw(layer)
    for points in outlines:
        pen.line(points + points[:2], fill=color, width=width, joint="curve")
    picture.alpha_composite(layer)


def sparkle(picture, centre, radius):
    """A four-pointed star with a soft glow."""
    glow = Image.new("L", picture.size)
    x, y = centre
    ImageDraw.Draw(glow).ellipse((x - radius * 0.3, y - radius * 0.3, x + radius * 0.3, y + radius * 0.3), fill=150)
    glow = glow.filter(ImageFilter.GaussianBlur(radius * 0.16))
    star = []
    for i in range(8):
        reach = radius if i % 2 == 0 else radius * 0.10
        star.append((x + reach * math.cos(i * math.pi / 4), y + reach * math.sin(i * math.pi / 4)))
    ImageDraw.Draw(glow).polygon(star, fill=255)
    light = Image.new("RGBA", picture.size, (255, 250, 255, 0))
    light.putalpha(glow)
    picture.alpha_composite(light)


def gem(side):
    """The gem with its shadow on transparency, `side` pixels wide and high."""
    big = side * SUPERSAMPLING
    scale = big * 0.475
    centre = (big * 0.5, big * 0.432)

    def on_screen(point):
        return (centre[0] + scale * dot(point, RIGHT), centre[1] - scale * dot(point, UP))

    shown = [(normal(f), [on_screen(p) for p in f]) for f in gem_facets()]
    front = [(n, points, i) for i, (n, points) in enumerate(shown) if dot(n, TO_VIEWER) > 0]
    back = [(n, points, i) for i, (n, points) in enumerate(shown) if dot(n, TO_VIEWER) <= 0]

    picture = Image.new("RGBA", (big, big))
    for n, points, i in back:
        # Seen from inside: the light comes through the front.
        paint_facet(picture, points, brightness(tuple(-p for p in n), i) + 0.22 * math.cos(i * 1.7), 1.0)
    stroke(picture, [points for _, points, _ in back], side // 160, (236, 214, 255, 120))
    for n, points, i in front:
        paint_facet(picture, points, brightness(n, i), 0.45 if n[2] > 0.99 else 0.78)
    stroke(picture, [points for _, points, _ in front], side // 130, (255, 246, 255, 150))
    sparkle(picture, on_screen(polar(TABLE_RADIUS, 4.6, GIRDLE + CROWN_HEIGHT)), big * 0.11)
    sparkle(picture, on_screen(polar(1, 7.1, 0)), big * 0.06)

    # The shadow is soft anyway, so it is drawn in the final size.
    shadow = Image.new("L", (side, side))
    ImageDraw.Draw(shadow).ellipse((side * 0.27, side * 0.885, side * 0.73, side * 0.945), fill=150)
    result = Image.new("RGBA", (side, side), (24, 6, 60, 0))
    result.putalpha(shadow.filter(ImageFilter.GaussianBlur(side * 0.022)))
    # resize() works on premultiplied alpha, so the edges keep their color.
    result.alpha_composite(picture.resize((side, side), Image.Resampling.BOX))
    return result


def background(size):
    """A night sky that warms towards the ground, with a few large translucent facets."""
    width, height = size
    column = Image.new("RGB", (1, height))
    column.putdata([ramp(NIGHT_RAMP, y / (height - 1)) for y in range(height)])
    picture = column.resize(size).convert("RGBA")
    shards = [
        ([(0, 0.62), (0.58, 0.80), (0, 1)], 14),
        ([(0, 1), (0.58, 0.80), (0.46, 1)], 24),
        ([(0.58, 0.80), (1, 0.66), (1, 0.90)], 16),
        ([(0.58, 0.80), (1, 0.90), (1, 1), (0.46, 1)], 8),
        ([(0, 0), (0.36, 0), (0, 0.17)], 10),
        ([(0.36, 0), (1, 0), (1, 0.09), (0.62, 0.13)], 6),
        ([(1, 0.09), (0.62, 0.13), (1, 0.30)], 11),
    ]
    for points, alpha in shards:
        mask = Image.new("L", (width * 2, height * 2))
        ImageDraw.Draw(mask).polygon([(x * width * 2, y * height * 2) for x, y in points], fill=alpha)
        shard = Image.new("RGBA", size, (255, 236, 255, 0))
        shard.putalpha(mask.resize(size, Image.Resampling.BOX))
        picture.alpha_composite(shard)
    return picture


def launch(size, mark):
    """The launch image: `mark` in a glow over the background, opaque."""
    picture = background(size)
    x, y = size[0] // 2, round(size[1] * 0.43)
    glow = Image.radial_gradient("L").point(lambda v: round(150 * max(0.0, 1 - v / 181) ** 2))
    reach = round(size[0] * 1.25) // 2
    light = Image.new("RGBA", (2 * reach, 2 * reach), (196, 120, 255, 0))
    light.putalpha(glow.resize(light.size, Image.Resampling.BICUBIC))
    layer = Image.new("RGBA", size)
    layer.paste(light, (x - reach, y - reach))
    picture.alpha_composite(layer)
    picture.alpha_composite(mark, (x - mark.width // 2, y - mark.height // 2))
    return picture.convert("RGB")


def main():
    folder = Path(__file__).resolve().parent / "Demo"
    gem(1024).save(folder / "icon.png", optimize=True)
    launch((1242, 2688), gem(760)).save(folder / "launch.png", optimize=True)


if __name__ == "__main__":
    main()
