#!/usr/bin/env python3
"""Draws the sample installer's background: a larkspur whose sound spreads in rings that die away.

usage: draw-background.py OUTPUT.png
"""
import math
import struct
import sys
import zlib

WIDTH, HEIGHT = 1280, 720  # what the measures below are in
OUTPUT_SCALE = 0.75
CENTRE = (930.0, 330.0)
TOP, BOTTOM = (30, 30, 78), (92, 84, 168)
PETAL, HEART = (148, 134, 232), (246, 240, 255)


def mix(a, b, share):
    return tuple(x + (y - x) * share for x, y in zip(a, b))


def coverage(distance):
    """1 inside an outline, 0 outside, with one pixel of transition; distance in pixels, negative inside."""
    return min(1.0, max(0.0, 0.5 - distance))


def flower(x, y):
    """The share of petal and of heart at a point."""
    dx, dy = x - CENTRE[0], y - CENTRE[1]
    radius, angle = math.hypot(dx, dy), math.atan2(dy, dx)
    if radius > 130:
        return 0.0, 0.0
    petals = 0.0
    for petal in range(5):
        turn = angle - petal * 2 * math.pi / 5 + math.pi / 2
        along, across = radius * math.cos(turn), radius * math.sin(turn)
        outline = ((along - 64) / 52) ** 2 + (across / 31) ** 2
        petals = max(petals, coverage((math.sqrt(outline) - 1) * 31) * (0.62 + 0.38 * max(0.0, along) / 116))
    return petals, coverage(radius - 25)


def colour(x, y):
    base = mix(TOP, BOTTOM, 0.35 * x / WIDTH + 0.65 * y / HEIGHT)
    radius = math.hypot(x - CENTRE[0], y - CENTRE[1])
    ring = 0.5 + 0.5 * math.cos(2 * math.pi * radius / 58)
    if radius > 87:
        base = mix(base, PETAL, 0.55 * ring ** 10 * math.exp(-radius / 330))
    petals, heart = flower(x, y)
    return mix(mix(base, PETAL, petals), HEART, heart)


def chunk(kind, data):
    body = kind + data
    return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))


def main():
    width, height = round(WIDTH * OUTPUT_SCALE), round(HEIGHT * OUTPUT_SCALE)
    rows = bytearray()
    for y in range(height):
        rows.append(1)  # each byte is stored as the difference from its left neighbour
        left = (0, 0, 0)
        for x in range(width):
            pixel = tuple(round(c) for c in colour(x / OUTPUT_SCALE, y / OUTPUT_SCALE))
            rows.extend((p - q) & 255 for p, q in zip(pixel, left))
            left = pixel
    with open(sys.argv[1], "wb") as output:
        output.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
                     + chunk(b"IDAT", zlib.compress(bytes(rows), 9)) + chunk(b"IEND", b""))


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main()
