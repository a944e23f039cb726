#!/usr/bin/python3
"""Draws the sample's icon as each of the twelve filters makes it, side by side.
The pictures are filters.png, and filters@2x.png for screens of twice the resolution.

usage: draw-filters.py CORVADINE_CLI

The program itself renders the icons, so the picture shows its real results. Needs Python 3, Pillow (python3-pil) and
DejaVu fonts (fonts-dejavu-core). Run it after a change of the resampling and commit the pictures with it.
"""

import subprocess
import sys
import tempfile
from pathlib import Path

from PIL import Image, ImageDraw, ImageFont

HERE = Path(__file__).resolve().parent
SAMPLE = HERE.parent / "samples" / "Demo"
FILTERS = (  # in the order of the window's list: the name on the command line and the caption
    ("none", "None"), ("bell", "Bell (Quality)"), ("bicubic", "Bicubic (Quality)"),
    ("bilinear", "Bilinear (Quality)"), ("bspline", "B-Spline (Quality)"), ("fastlinear", "Fast Linear (Speed)"),
    ("hermite", "Hermite (Quality)"), ("lanczos3", "Lanczos 3 (Quality)"), ("linear", "Linear (Speed)"),
    ("mitchell", "Mitchell (Quality)"), ("nearest", "Nearest (Quality)"), ("triangle", "Triangle (Speed)"))
IMAGE = "Android_LauncherIcon48.png"
COLUMNS = 4
SIDE = 48
ENLARGEMENT = 3
CAPTION = 26
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"


def rendered(cli, folder, name):
    """Returns the sample's icon, made by one filter."""
    data = folder / name
    data.mkdir()
    project = data / "Demo.dproj"
    project.write_bytes((SAMPLE / "Demo.dproj").read_bytes())
    run = [cli, "--data", data]
    subprocess.run([*run, "add", project, "--icon", SAMPLE / "icon.png", "--platforms", "android", "--format", "true",
                    "--filter", name, "--output", data / "out"], check=True, stdout=subprocess.DEVNULL)
    subprocess.run([*run, "generate", project], check=True, stdout=subprocess.DEVNULL)
    return Image.open(data / "out" / IMAGE).convert("RGBA")


def sheet(icons, scale):
    """Returns a picture of all icons with their captions, in rows."""
    cell, caption_height = SIDE * ENLARGEMENT * scale, CAPTION * scale
    rows = -(-len(icons) // COLUMNS)
    picture = Image.new("RGB", (COLUMNS * cell, rows * (cell + caption_height)), "white")
    pen = ImageDraw.Draw(picture)
    font = ImageFont.truetype(FONT, 12 * scale)
    for i, (icon, caption) in enumerate(icons):
        x, y = i % COLUMNS * cell, i // COLUMNS * (cell + caption_height)
        large = icon.resize((cell, cell), Image.Resampling.NEAREST)
        picture.paste(large, (x, y), large)
        pen.text((x + cell / 2, y + cell + caption_height / 2), caption, "#1b1b1f", font, "mm")
    return picture.quantize(128, dither=Image.Dither.NONE)


def main(cli):
    with tempfile.TemporaryDirectory() as folder:
        icons = [(rendered(cli, Path(folder), name), caption) for name, caption in FILTERS]
    for suffix, scale in (("", 1), ("@2x", 2)):
        sheet(icons, scale).save(HERE / f"filters{suffix}.png", optimize=True)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        raise SystemExit(__doc__)
    main(sys.argv[1])
