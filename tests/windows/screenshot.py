#!/usr/bin/python3
"""Turns the frame buffer file of Xvfb's option -fbdir into a picture: screenshot.py Xvfb_screen0 PICTURE.png
Fails if the picture has so few colors that the window must be empty.

The file has the format of xwd: https://gitlab.freedesktop.org/xorg/proto/xorgproto/-/blob/master/include/X11/XWDFile.h
"""

import struct
import sys
from pathlib import Path

from PIL import Image

FEWEST_COLORS = 500


def main():
    data = Path(sys.argv[1]).read_bytes()
    header = struct.unpack(">25I", data[:100])
    header_size, width, height, bytes_per_line, colors = (header[i] for i in (0, 4, 5, 12, 19))
    pixels = data[header_size + colors * 12 :][: bytes_per_line * height]  # 12 bytes a color map entry
    picture = Image.frombuffer("RGB", (width, height), pixels, "raw", "BGRX", bytes_per_line, 1)
    picture.save(sys.argv[2], optimize=True)
    if picture.getcolors(FEWEST_COLORS):
        sys.exit(f"screenshot.py: fewer than {FEWEST_COLORS} colors in {sys.argv[2]}")


if __name__ == "__main__":
    main()
