#!/usr/bin/python3
"""Writes frames cut from a real photograph as raw 8-bit RGB, frame after frame.

The photograph is scikit-image's astronaut, resized to 2048 x 2048; the frames
pan across it diagonally, as a camera would.

    photo_frames.py OUT.rgb [FRAMES [WIDTH [HEIGHT]]]
"""
import sys

import numpy as np
from skimage import data, transform


def frames(count, width, height):
    photo = transform.resize(data.astronaut(), (2048, 2048), order=1, anti_aliasing=False)
    photo = np.clip(np.rint(photo * 255), 0, 255).astype(np.uint8)
    step_x = (2048 - width) // max(count - 1, 1)
    step_y = (2048 - height) // max(count - 1, 1)
    for k in range(count):
        yield photo[k * step_y:k * step_y + height, k * step_x:k * step_x + width]


def main():
    out = sys.argv[1]
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 100
    width = int(sys.argv[3]) if len(sys.argv) > 3 else 640
    height = int(sys.argv[4]) if len(sys.argv) > 4 else 480
    with open(out, "wb") as f:
        for frame in frames(count, width, height):
            f.write(np.ascontiguousarray(frame).tobytes())


if __name__ == "__main__":
    main()
