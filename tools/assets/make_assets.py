#!/usr/bin/env python3
"""Draws the demo's image files: PNG icons with alpha, a BMP and an
animated GIF. Standard library only; run it to regenerate the files beside
it (the demo makes its JPEG background itself, through the library).

    python3 tools/assets/make_assets.py
"""
import math
import pathlib
import struct
import zlib

HERE = pathlib.Path(__file__).resolve().parent


# ---------------------------------------------------------------- drawing

def coverage(distance):
    """Antialiased edge: 1 inside, 0 outside, a one-pixel ramp between."""
    return max(0.0, min(1.0, 0.5 - distance))


def icon(size, shape, rgb):
    """Straight (not premultiplied) RGBA rows of one icon."""
    rows = []
    c = (size - 1) / 2
    for y in range(size):
        row = []
        for x in range(size):
            dx, dy = x - c, y - c
            r = math.hypot(dx, dy)
            if shape == "disc":
                a = coverage(r - size * 0.45)
            elif shape == "ring":
                a = coverage(abs(r - size * 0.36) - size * 0.09)
            elif shape == "star":
                angle = math.atan2(dy, dx)
                edge = size * (0.28 + 0.17 * math.cos(5 * angle))
                a = coverage(r - edge)
            else:  # rounded square with a soft shadow
                q = max(abs(dx), abs(dy))
                a = coverage(q - size * 0.40)
                a = max(a, 0.35 * coverage(math.hypot(dx - 2, dy - 3) - size * 0.46))
            shade = 0.75 + 0.25 * (1 - y / size)
            row.append(tuple(int(v * shade) for v in rgb) + (int(round(a * 255)),))
        rows.append(row)
    return rows


# ---------------------------------------------------------------- PNG

def png(path, rows):
    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    height, width = len(rows), len(rows[0])
    raw = b"".join(b"\0" + bytes(v for px in row for v in px) for row in rows)
    data = (b"\x89PNG\r\n\x1a\n"
            + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(raw, 9))
            + chunk(b"IEND", b""))
    path.write_bytes(data)


# ---------------------------------------------------------------- BMP

def bmp(path, rows):
    """24-bit bottom-up BMP with padded rows."""
    height, width = len(rows), len(rows[0])
    stride = (width * 3 + 3) & ~3
    pixels = b""
    for row in reversed(rows):
        line = b"".join(bytes((b, g, r)) for r, g, b in row)
        pixels += line + b"\0" * (stride - len(line))
    header = struct.pack("<2sIHHI", b"BM", 54 + len(pixels), 0, 0, 54)
    info = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(pixels), 2835, 2835, 0, 0)
    path.write_bytes(header + info + pixels)


# ---------------------------------------------------------------- GIF

def lzw(indexes, min_code_size):
    """GIF's variable-width LZW, packed into sub-blocks."""
    clear, end = 1 << min_code_size, (1 << min_code_size) + 1
    codes, bits, nbits = [], 0, 0
    out = bytearray()

    def emit(code, width):
        nonlocal bits, nbits
        bits |= code << nbits
        nbits += width
        while nbits >= 8:
            out.append(bits & 0xFF)
            bits >>= 8
            nbits -= 8

    table = {(i,): i for i in range(clear)}
    width, next_code = min_code_size + 1, end + 1
    emit(clear, width)
    current = ()
    for index in indexes:
        grown = current + (index,)
        if grown in table:
            current = grown
            continue
        emit(table[current], width)
        if next_code < 4096:
            table[grown] = next_code
            next_code += 1
            if next_code > (1 << width) and width < 12:
                width += 1
        else:
            emit(clear, width)
            table = {(i,): i for i in range(clear)}
            width, next_code = min_code_size + 1, end + 1
        current = (index,)
    if current:
        emit(table[current], width)
    emit(end, width)
    if nbits:
        out.append(bits & 0xFF)
    blocks = bytearray([min_code_size])
    for at in range(0, len(out), 255):
        piece = out[at:at + 255]
        blocks += bytes([len(piece)]) + piece
    return bytes(blocks + b"\0")


def gif(path, size, palette, frames, delay_cs):
    """frames: (x, y, w, h, indexes, disposal); index 0 is transparent."""
    table = b"".join(bytes(c) for c in palette) + b"\0" * 3 * (256 - len(palette))
    data = bytearray(b"GIF89a" + struct.pack("<HHBBB", size, size, 0xF7, 0, 0) + table)
    data += b"\x21\xFF\x0BNETSCAPE2.0\x03\x01\x00\x00\x00"  # loop forever
    for x, y, w, h, indexes, disposal in frames:
        data += struct.pack("<BBBBHBB", 0x21, 0xF9, 4, (disposal << 2) | 1, delay_cs, 0, 0)
        data += struct.pack("<BHHHHB", 0x2C, x, y, w, h, 0)
        data += lzw(indexes, 8)
    data += b"\x3B"
    path.write_bytes(bytes(data))


def spinner():
    """Eight frames of a dot running round a ring; each frame redraws the
    ring area and is disposed to the background, so transparency shows."""
    size = 48
    palette = [(0, 0, 0)] + [(40 + 26 * i, 120 + 16 * i, 255 - 20 * i) for i in range(9)]
    frames = []
    c = (size - 1) / 2
    for f in range(8):
        angle = f * math.pi / 4
        hx, hy = c + 16 * math.cos(angle), c + 16 * math.sin(angle)
        indexes = []
        for y in range(size):
            for x in range(size):
                ring = abs(math.hypot(x - c, y - c) - 16) < 2.5
                head = math.hypot(x - hx, y - hy) < 6
                indexes.append(9 if head else (1 + f % 8) if ring else 0)
        frames.append((0, 0, size, size, indexes, 2))
    return size, palette, frames


def main():
    png(HERE / "icon-disc.png", icon(48, "disc", (230, 80, 60)))
    png(HERE / "icon-ring.png", icon(48, "ring", (60, 170, 230)))
    png(HERE / "icon-star.png", icon(48, "star", (250, 200, 40)))
    png(HERE / "icon-tile.png", icon(48, "tile", (90, 200, 120)))
    photo = [[(int(128 + 127 * math.sin(x / 9.0)), int(128 + 127 * math.sin(y / 7.0)),
               int(128 + 127 * math.cos((x + y) / 13.0))) for x in range(120)]
             for y in range(80)]
    bmp(HERE / "badge.bmp", photo)
    size, palette, frames = spinner()
    gif(HERE / "spinner.gif", size, palette, frames, 8)


if __name__ == "__main__":
    main()
