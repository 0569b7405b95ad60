#!/usr/bin/env python3
"""Draws the program's icon, a key on a blue tile: make_icon.py cli/toolbelt.ico"""
import struct
import sys

SIZES = (16, 24, 32, 48)
SAMPLES = 6  # a side of the grid of samples in a pixel


def tile(x, y):
    """Whether the point of the unit square lies on the tile: a square with rounded corners."""
    edge, radius = 0.03, 0.2
    dx = max(edge + radius - x, x - (1 - edge - radius), 0)
    dy = max(edge + radius - y, y - (1 - edge - radius), 0)
    return dx * dx + dy * dy <= radius * radius


def key(x, y):
    """The same for the key, which lies from the upper left to the lower right."""
    u, v = (x + y - 1) / 2 ** 0.5, (y - x) / 2 ** 0.5
    ring = 0.095 ** 2 <= (u + 0.22) ** 2 + v * v <= 0.2 ** 2
    shaft = -0.06 <= u <= 0.42 and abs(v) <= 0.052
    teeth = 0 <= -v <= 0.19 and (0.20 <= u <= 0.29 or 0.34 <= u <= 0.42)
    return ring or shaft or teeth


def pixel(column, row, size):
    """Blue, green, red, alpha."""
    on_tile = on_key = 0
    for i in range(SAMPLES * SAMPLES):
        x = (column + (i % SAMPLES + 0.5) / SAMPLES) / size
        y = (row + (i // SAMPLES + 0.5) / SAMPLES) / size
        if tile(x, y):
            on_tile += 1
            on_key += key(x, y)
    if not on_tile:
        return bytes(4)
    light = row / size
    tile_colour = (200 - 44 * light, 122 - 46 * light, 44 - 24 * light)
    share = on_key / on_tile
    colour = [round(c + (255 - c) * share) for c in tile_colour]
    return bytes(colour + [round(255 * on_tile / SAMPLES ** 2)])


def image(size):
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, 0, 0, 0, 0, 0)
    rows = [[pixel(column, row, size) for column in range(size)] for row in reversed(range(size))]
    mask = b""
    for row in rows:
        bits = "".join("0" if p[3] >= 128 else "1" for p in row).ljust((size + 31) // 32 * 32, "0")
        mask += int(bits, 2).to_bytes(len(bits) // 8, "big")
    return header + b"".join(b"".join(row) for row in rows) + mask


images = [image(size) for size in SIZES]
offset = 6 + 16 * len(images)
with open(sys.argv[1], "wb") as file:
    file.write(struct.pack("<HHH", 0, 1, len(images)))
    for size, data in zip(SIZES, images):
        file.write(struct.pack("<BBBBHHII", size, size, 0, 0, 1, 32, len(data), offset))
        offset += len(data)
    file.write(b"".join(images))
