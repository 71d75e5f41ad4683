#!/usr/bin/env python3
"""Writes examples/data/panels.pve, the demo's scene file: three coloured
boxes (24 vertices, 12 triangles each) under one root node, and the brick
texture they share, examples/data/bricks.tga (64 x 64, 24-bit, uncompressed);
and examples/data/glass.png (32 x 32 RGBA), a pane the gallery shows through."""
import os
import struct
import zlib


def text(s):
    return s.encode() + b"\0"


def floats(*values):
    return b"".join(struct.pack("<f", v) for v in values)


def u16(*values):
    return b"".join(struct.pack("<H", v) for v in values)


def material(name, r, g, b):
    return (text(name) + text("bricks.tga") + text("[none]") + floats(r * 0.3, g * 0.3, b * 0.3, 1)
            + floats(r, g, b, 1) + floats(0.3, 0.3, 0.3, 1) + floats(0, 0, 0, 1) + floats(1.0, 20.0))


def box(name, material_name, position, rotation, half):
    vertices, normals, uvs, faces, face_normals = [], [], [], [], []
    sides = [(0, 1, 2, 1), (0, 1, 2, -1), (1, 2, 0, 1), (1, 2, 0, -1), (2, 0, 1, 1), (2, 0, 1, -1)]
    for a, b, c, sign in sides:
        first = len(vertices)
        for u, v in ((-1, -1), (1, -1), (1, 1), (-1, 1)):
            p, n = [0.0] * 3, [0.0] * 3
            p[a], p[b], p[c] = u * half[a] * sign, v * half[b], half[c] * sign
            n[c] = sign
            vertices.append(p)
            normals.append(n)
            uvs.append(((u + 1) / 2, (v + 1) / 2))
        faces += [(first, first + 1, first + 2), (first, first + 2, first + 3)]
        face_normals += [normals[-1], normals[-1]]
    radius = sum(h * h for h in half) ** 0.5
    record = b"\2" + struct.pack("<I", 0) + text(name) + floats(*position) + floats(*rotation) + floats(0, 0, 0)
    record += text(material_name) + floats(radius) + floats(*[-h for h in half]) + floats(*half) + b"\0"
    record += u16(len(vertices), len(uvs), len(faces), 0, 0)
    record += b"".join(floats(*p) for p in vertices) + b"".join(floats(*n) for n in normals)
    record += b"".join(floats(*t) for t in uvs) + b"".join(u16(*f) for f in faces)
    record += b"".join(floats(*n) for n in face_normals)
    return record


def bricks(size=64):
    """Light bricks in rows of 8 pixels, every other row shifted by half a
    brick, with darker mortar lines; stored bottom-up as BGR."""
    header = struct.pack("<BBBHHBHHHHBB", 0, 0, 2, 0, 0, 0, 0, 0, size, size, 24, 0)
    pixels = bytearray()
    for y in range(size):
        for x in range(size):
            shift = 8 if (y // 8) % 2 else 0
            mortar = y % 8 == 0 or (x + shift) % 16 == 0
            grain = ((x * 7 + y * 13) % 5) * 4
            level = 120 if mortar else 235 - grain
            pixels += bytes((level, level, level))
    return header + bytes(pixels)


def glass(size=32):
    """A pale blue pane, half transparent, in an opaque dark frame 3 pixels
    wide: a PNG with an alpha channel."""
    rows = b""
    for y in range(size):
        rows += b"\0"  # no filter
        for x in range(size):
            frame = min(x, y, size - 1 - x, size - 1 - y) < 3
            rows += bytes((40, 40, 60, 255)) if frame else bytes((170, 210, 255, 96))

    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b"")


def main():
    colours = [("red", 0.9, 0.2, 0.2), ("green", 0.2, 0.9, 0.3), ("blue", 0.2, 0.4, 0.9)]
    data = b"PVE file v1.6a\0" + u16(len(colours)) + b"".join(material(*c) for c in colours)
    data += b"\0" + struct.pack("<I", 0) + text("panels") + floats(0, 0, 0, 0, 0, 0) + u16(len(colours))
    for i, (name, _, _, _) in enumerate(colours):
        data += box(name + " panel", name, (2.0 * (i - 1), 0.75, -1.0), (0, -25.0 * (i - 1), 0), (0.75, 0.75, 0.15))
    folder = os.path.join(os.path.dirname(__file__), "..", "examples", "data")
    with open(os.path.join(folder, "panels.pve"), "wb") as out:
        out.write(data)
    with open(os.path.join(folder, "bricks.tga"), "wb") as out:
        out.write(bricks())
    with open(os.path.join(folder, "glass.png"), "wb") as out:
        out.write(glass())


if __name__ == "__main__":
    main()
