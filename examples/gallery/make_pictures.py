#!/usr/bin/env python3
"""Draws the gallery's pictures (self-made, no outside sources):

  landscape.png  256 x 192: sky gradient, sun, hills, trees, grass texture,
                 a face with red eyes (for the red-eye remover) and a
                 round selection in the alpha channel's corners
  layer.png      128 x 96: coloured discs on transparency, the second
                 picture of the compositing and block-transfer exports
  overlay.png    256 x 192: the same discs at twice the size, for the
                 exports whose two pictures have one size

Run it from anywhere; it writes beside itself. Plain Python (zlib, struct).
"""
import math
import os
import random
import struct
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))


def write_png(path, width, height, rows):
    """rows: lists of (r, g, b, a) tuples."""
    raw = b"".join(b"\0" + bytes(c for px in row for c in px) for row in rows)

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data) & 0xffffffff)
    png = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0))
    png += chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b"")
    with open(path, "wb") as f:
        f.write(png)


def clamp(v):
    return max(0, min(255, int(round(v))))


def mix(a, b, t):
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def landscape(w=256, h=192):
    rnd = random.Random(7)
    noise = [[rnd.random() for _ in range(w)] for _ in range(h)]
    sun = (196, 44, 22)
    face = (70, 128, 26)
    rows = []
    for y in range(h):
        row = []
        for x in range(w):
            # Sky: deep blue at the top to a warm haze at the horizon.
            c = mix((40, 90, 190), (250, 200, 150), y / (h * 0.6))
            d = math.hypot(x - sun[0], y - sun[1])
            if d < sun[2]:
                c = mix((255, 250, 200), (255, 190, 60), d / sun[2])
            elif d < sun[2] * 2.2:
                c = mix(c, (255, 220, 120), 0.5 * (1 - (d - sun[2]) / (sun[2] * 1.2)))
            far = h * 0.55 + 14 * math.sin(x / 23.0) + 8 * math.sin(x / 9.0 + 1)
            near = h * 0.68 + 18 * math.sin(x / 41.0 + 2) + 5 * math.sin(x / 7.0)
            if y > far:
                c = mix((90, 110, 140), (70, 100, 90), min(1, (y - far) / 30))
            if y > near:
                # Grass with fine texture for the blurs and edge filters.
                t = noise[y][x]
                c = (40 + 50 * t + (y - near) * 0.4, 120 + 70 * t, 40 + 20 * t)
                if (x + y * 3) % 11 == 0:
                    c = (c[0] * 0.6, c[1] * 0.7, c[2] * 0.6)
            # Trees: trunks and round crowns.
            for tx, ty, r in ((28, 120, 16), (222, 128, 13), (200, 136, 9)):
                if abs(x - tx) < 3 and ty < y < ty + r * 2.2:
                    c = (90, 60, 30)
                if math.hypot(x - tx, y - ty) < r:
                    t = noise[y][x]
                    c = (20 + 30 * t, 90 + 60 * t, 30 + 20 * t)
            # A face with red eyes.
            fx, fy, fr = face
            dd = math.hypot((x - fx) / 0.85, y - fy)
            if dd < fr:
                c = (232, 190, 160)
                for ex in (fx - 9, fx + 9):
                    e = math.hypot(x - ex, y - (fy - 5))
                    if e < 5:
                        c = (250, 245, 240)
                    if e < 3.2:
                        c = (215, 20, 25)
                    if e < 1.2:
                        c = (30, 10, 10)
                if abs(y - (fy + 10)) < 1.5 and abs(x - fx) < 8:
                    c = (170, 60, 60)
            # Mask: full, fading to half in the corners (a soft selection).
            corner = math.hypot(max(0, abs(x - w / 2) - w * 0.35), max(0, abs(y - h / 2) - h * 0.3))
            a = 255 - min(127, corner * 6)
            row.append((clamp(c[0]), clamp(c[1]), clamp(c[2]), clamp(a)))
        rows.append(row)
    return w, h, rows


def layer(w=128, h=96):
    rows = []
    k = w / 128
    discs = tuple((x * k, y * k, r * k, col) for x, y, r, col in
                  ((40, 40, 30, (230, 40, 40)), (80, 45, 30, (40, 200, 60)), (60, 65, 28, (50, 80, 230))))
    for y in range(h):
        row = []
        for x in range(w):
            c, a = (0, 0, 0), 0
            for cx, cy, r, col in discs:
                d = math.hypot(x - cx, y - cy)
                if d < r:
                    c = col
                    a = clamp(255 * min(1, (r - d) / 6))
            row.append((c[0], c[1], c[2], a))
        rows.append(row)
    return w, h, rows


if __name__ == "__main__":
    write_png(os.path.join(HERE, "landscape.png"), *landscape())
    write_png(os.path.join(HERE, "layer.png"), *layer())
    write_png(os.path.join(HERE, "overlay.png"), *layer(256, 192))
