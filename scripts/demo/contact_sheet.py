#!/usr/bin/env python3
"""Lays the quantized photographs out on one sheet: one row per method, one
column per colour count and dithering, each captioned with the colours the
result really holds, the original above them.

    contact_sheet.py DIR COUNTS SHEET.png
COUNTS holds lines "METHOD COLOURS DITHER DISTINCT"; DIR holds
astronaut.png and METHOD-COLOURS-DITHER.png for each line."""
import sys

from PIL import Image, ImageDraw

CELL = 256
CAPTION = 30
directory, counts_file, sheet_file = sys.argv[1:4]
results = [line.split() for line in open(counts_file) if line.strip()]
methods = list(dict.fromkeys(r[0] for r in results))
columns = list(dict.fromkeys((r[1], r[2]) for r in results))

width = CELL * len(columns)
height = (CELL + CAPTION) * (len(methods) + 1)
sheet = Image.new("RGB", (width, height), "white")
draw = ImageDraw.Draw(sheet)


def place(image_file, column, row, caption):
    image = Image.open(image_file).convert("RGB").resize((CELL, CELL), Image.Resampling.NEAREST)
    x, y = column * CELL, row * (CELL + CAPTION)
    sheet.paste(image, (x, y + CAPTION))
    draw.text((x + 4, y + 2), caption, fill="black")


place(f"{directory}/astronaut.png", 0, 0, "original")
for method, colors, dither, distinct in results:
    column = columns.index((colors, dither))
    row = methods.index(method) + 1
    caption = f"{method}, {colors} colours, {dither}\nholds {distinct} colours"
    place(f"{directory}/{method}-{colors}-{dither}.png", column, row, caption)
sheet.save(sheet_file)
