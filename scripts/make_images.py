#!/usr/bin/env python3
"""Draws the small GIFs the components' pages link to into site/www/images/.

The images are committed; run this again only to change them. No libraries: a minimal GIF89a
writer (uncompressed LZW: a clear code before the code table would grow) and a few drawing helpers.
"""
import os
import struct

OUT = os.path.join(os.path.dirname(__file__), "..", "site", "www", "images")

# Palette index 0 is transparent.
PALETTE = [(255, 255, 255), (31, 59, 99), (95, 127, 168), (227, 236, 242), (179, 54, 27),
           (36, 121, 43), (240, 190, 60), (120, 120, 120)]
T, DARK, MID, LIGHT, RED, GREEN, GOLD, GREY = range(8)


def gif(path, pixels):
    h, w = len(pixels), len(pixels[0])
    min_code = 3  # 8 colours
    clear, eoi = 1 << min_code, (1 << min_code) + 1
    width = min_code + 1
    codes, run = [clear], 0
    for row in pixels:
        for p in row:
            codes.append(p)
            run += 1
            if run == (1 << min_code) - 2:  # keep the table from growing past `width` bits
                codes.append(clear)
                run = 0
    codes.append(eoi)
    bits, nbits, data = 0, 0, bytearray()
    for c in codes:
        bits |= c << nbits
        nbits += width
        while nbits >= 8:
            data.append(bits & 255)
            bits >>= 8
            nbits -= 8
    if nbits:
        data.append(bits & 255)
    out = bytearray(b"GIF89a" + struct.pack("<HHBBB", w, h, 0xF0 | (min_code - 1), 0, 0))
    for r, g, b in PALETTE:
        out += bytes((r, g, b))
    out += b"\x21\xf9\x04\x01\x00\x00\x00\x00"  # transparency: index 0
    out += b"\x2c" + struct.pack("<HHHHB", 0, 0, w, h, 0) + bytes((min_code,))
    for i in range(0, len(data), 255):
        chunk = data[i:i + 255]
        out += bytes((len(chunk),)) + chunk
    out += b"\x00\x3b"
    with open(path, "wb") as f:
        f.write(out)


def canvas(w, h, fill=T):
    return [[fill] * w for _ in range(h)]


def line(c, x0, y0, x1, y1, colour, thick=1):
    steps = max(abs(x1 - x0), abs(y1 - y0), 1)
    for i in range(steps + 1):
        x = round(x0 + (x1 - x0) * i / steps)
        y = round(y0 + (y1 - y0) * i / steps)
        for dx in range(thick):
            for dy in range(thick):
                if 0 <= y + dy < len(c) and 0 <= x + dx < len(c[0]):
                    c[y + dy][x + dx] = colour


def rect(c, x0, y0, x1, y1, colour):
    for y in range(y0, y1 + 1):
        for x in range(x0, x1 + 1):
            c[y][x] = colour


def edit():
    c = canvas(16, 16)
    line(c, 3, 12, 11, 4, GOLD, 2)  # pencil
    line(c, 11, 3, 13, 5, RED, 2)
    c[13][2] = c[13][3] = c[12][2] = DARK
    line(c, 2, 14, 13, 14, MID)
    return c


def delete():
    c = canvas(16, 16)
    line(c, 3, 3, 12, 12, RED, 2)
    line(c, 12, 3, 3, 12, RED, 2)
    return c


def corner(flip_x, flip_y):
    c = canvas(37, 12, T)
    for y in range(12):
        for x in range(37):
            dx = (36 - x) if flip_x else x
            dy = (11 - y) if flip_y else y
            inside = (dx - 11) ** 2 + (dy - 11) ** 2 <= 121 or dx >= 11 and dy >= 0 or dy >= 11
            edge = 100 <= (dx - 11) ** 2 + (dy - 11) ** 2 <= 121 and dx < 11 and dy < 11
            if inside:
                c[y][x] = MID if edge or dy == 0 and dx >= 11 else LIGHT
    return c


def dropdown():
    c = canvas(27, 25)
    rect(c, 2, 3, 24, 21, LIGHT)
    line(c, 2, 3, 24, 3, MID)
    line(c, 2, 21, 24, 21, MID)
    line(c, 2, 3, 2, 21, MID)
    line(c, 24, 3, 24, 21, MID)
    for i in range(5):
        line(c, 9 + i, 10 + i, 17 - i, 10 + i, DARK)
    return c


def arrow(direction, double):
    c = canvas(16, 16)
    offsets = [0, 5] if double else [2]
    for off in offsets:
        for i in range(6):
            if direction < 0:
                line(c, 4 + off + i, 8 - i, 4 + off + i, 8 + i, DARK)
            else:
                line(c, 11 - off - i, 8 - i, 11 - off - i, 8 + i, DARK)
    return c


def niuban():
    c = canvas(22, 22)
    for y in range(22):
        for x in range(22):
            if x >= 21 - y:
                c[y][x] = MID
    line(c, 0, 21, 21, 0, DARK)
    return c


def main():
    os.makedirs(OUT, exist_ok=True)
    images = {
        "edit.gif": edit(), "delete.gif": delete(),
        "home1.gif": corner(False, False), "home2.gif": corner(True, False),
        "home3.gif": corner(False, True), "home4.gif": corner(True, True),
        "dropdown.gif": dropdown(),
        "jian1.gif": arrow(-1, False), "jian2.gif": arrow(1, False),
        "jian3.gif": arrow(-1, True), "jian4.gif": arrow(1, True),
        "niuban.gif": niuban(),
    }
    for name, pixels in images.items():
        gif(os.path.join(OUT, name), pixels)
        print("wrote", name)


if __name__ == "__main__":
    main()
