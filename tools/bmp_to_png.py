#!/usr/bin/env python3
"""Converts a BMP file of 24 bits a pixel, as toolbelt.exe writes it, to a small PNG: bmp_to_png.py IN.bmp OUT.png"""
import struct
import sys
import zlib

with open(sys.argv[1], "rb") as file:
    bmp = file.read()
if bmp[:2] != b"BM":
    sys.exit(sys.argv[1] + ": no BMP file")
(start,) = struct.unpack_from("<I", bmp, 10)
width, height, _, bits, compression = struct.unpack_from("<iiHHI", bmp, 18)
if bits != 24 or compression != 0 or width <= 0 or height <= 0:
    sys.exit(sys.argv[1] + ": not 24 bits a pixel, from the bottom up")
stride = (3 * width + 3) // 4 * 4
if len(bmp) < start + stride * height:
    sys.exit(sys.argv[1] + ": cut off")

# Pixels in reading order, then numbered: a dialog has few colours, and a palette makes a small file.
rows = [bmp[start + stride * y:start + stride * y + 3 * width] for y in reversed(range(height))]
pixels = [[row[x + 2:x - 1:-1] if x else row[2::-1] for x in range(0, 3 * width, 3)] for row in rows]
colours = sorted({pixel for row in pixels for pixel in row})
if len(colours) < 4:
    sys.exit(sys.argv[1] + ": no picture of anything: %d colours" % len(colours))
if len(colours) <= 256:
    number = {colour: i for i, colour in enumerate(colours)}
    kind, palette = 3, b"".join(colours)
    data = b"".join(b"\0" + bytes(number[pixel] for pixel in row) for row in pixels)
else:
    kind, palette = 2, b""
    data = b"".join(b"\0" + b"".join(row) for row in pixels)


def chunk(name, body):
    return struct.pack(">I", len(body)) + name + body + struct.pack(">I", zlib.crc32(name + body))


with open(sys.argv[2], "wb") as file:
    file.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, kind, 0, 0, 0)))
    file.write((chunk(b"PLTE", palette) if palette else b"") + chunk(b"IDAT", zlib.compress(data, 9)) + chunk(b"IEND", b""))
