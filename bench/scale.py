#!/usr/bin/python3
"""Scales a picture so that its longer side has a given number of pixels. Usage: scale.py FROM SIDE TO"""

import sys

from PIL import Image

source, side, target = sys.argv[1], int(sys.argv[2]), sys.argv[3]
with Image.open(source) as image:
    factor = side / max(image.size)
    size = tuple(max(round(length * factor), 1) for length in image.size)
    image.convert("RGBA").resize(size, Image.Resampling.LANCZOS).save(target, compress_level=6)
