#!/usr/bin/python3
"""Enlarges composited frames for the eye: each pixel becomes a square of
SCALE pixels, and transparent parts show a checkerboard.
    enlarge_frames.py SOURCE_DIR TARGET_DIR SCALE"""
import pathlib
import sys

from PIL import Image

source, target = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
scale = int(sys.argv[3])
target.mkdir(parents=True, exist_ok=True)
for frame in sorted(source.glob("frame-*.png")):
    picture = Image.open(frame).convert("RGBA")
    size = (picture.width * scale, picture.height * scale)
    board = Image.new("RGB", size, (204, 204, 204))
    for y in range(0, size[1], scale):
        for x in range(0, size[0], scale):
            if (x // scale + y // scale) % 2:
                board.paste((255, 255, 255), (x, y, x + scale, y + scale))
    board.paste(picture.resize(size, Image.NEAREST), mask=picture.resize(size, Image.NEAREST))
    board.save(target / frame.name)
