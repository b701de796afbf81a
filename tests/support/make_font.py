#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes small TrueType fonts of boxes: make_font.py FILE FACE[,FACE]... An em has 1000 units. Each
FACE is a name and the width of its letters A and B; several make a collection: make_font.py two.ttc
Thin:100,Thick:500. With "Thin:100-500" the face is variable: its axis wght goes from 100 to 900, and
its instances Light and Heavy stand at both ends."""
import struct
import sys

HEIGHT = 600


def simple_glyph(width):
    corners = [(0, 0), (0, HEIGHT), (width, HEIGHT), (width, 0)]
    xs = [b[0] - a[0] for a, b in zip([(0, 0)] + corners, corners)]
    ys = [b[1] - a[1] for a, b in zip([(0, 0)] + corners, corners)]
    return struct.pack(">5h2H4B8h", 1, 0, 0, width, HEIGHT, 3, 0, *[1] * 4, *xs, *ys)


def named(records):
    text = "".join(name for _, name in records)
    table, at = struct.pack(">3H", 0, len(records), 6 + 12 * len(records)), 0
    for number, name in records:
        table += struct.pack(">6H", 3, 1, 0x409, number, 2 * len(name), at)
        at += 2 * len(name)
    return table + text.encode("utf-16-be")


def variations(most, least):
    """The tables of an axis: what its end adds to the x of the two right corners of A and B."""
    fvar = struct.pack(">8H", 1, 0, 16, 2, 1, 20, 2, 8)
    fvar += struct.pack(">4s3i2H", b"wght", 100 << 16, 100 << 16, 900 << 16, 0, 258)
    for name, weight in ((256, 100), (257, 900)):
        fvar += struct.pack(">2Hi", name, 0, weight << 16)
    # All eight points, four of them the phantoms: x are words, y are zeros.
    deltas = struct.pack(">2B8hB", 0, 0x47, 0, 0, *[most - least] * 2, 0, 0, 0, 0, 0x87)
    one = struct.pack(">4Hh", 1, 10, len(deltas), 0xA000, 1 << 14) + deltas
    one += b"\0" * (len(one) % 2)
    offsets = [0, 0, len(one) // 2, len(one)]
    gvar = struct.pack(">4HI2HI4H", 1, 0, 1, 0, 28, 3, 0, 28, *offsets)
    return {b"fvar": fvar, b"gvar": gvar + one + one}


def tables(face):
    name, width = face.split(":")
    least, _, most = width.partition("-")
    glyph = simple_glyph(int(least))
    glyph += b"\0" * (-len(glyph) % 4)
    found = {
        b"cmap": struct.pack(">4HI2H6I", 0, 1, 3, 10, 12, 12, 0, 28, 0, 1, 0x41, 0x42, 1),
        b"glyf": glyph * 2,
        b"head": struct.pack(">4IHHQQ4hHHhhh", 1 << 16, 0, 0, 0x5F0F3CF5, 0, 1000, 0, 0, 0, 0, 999,
                             999, 0, 8, 2, 0, 0),
        b"hhea": struct.pack(">IhhhHhhh6hhhH", 1 << 16, 800, -200, 0, 700, 0, 0, 600, *[0] * 8, 3),
        b"hmtx": struct.pack(">6H", 600, 0, 700, 0, 700, 0),
        b"loca": struct.pack(">4H", 0, 0, len(glyph) // 2, len(glyph)),
        b"maxp": struct.pack(">I14H", 1 << 16, 3, 4, 1, *[0] * 11),
        b"name": named([(1, "Box"), (2, name), (6, "Box-" + name), (256, "Light"), (257, "Heavy"),
                        (258, "Weight")])}
    if most:
        found.update(variations(int(most), int(least)))
    return found


def write_face(found, at):
    head = struct.pack(">I4H", 1 << 16, len(found), 0, 0, 0)
    at += len(head) + 16 * len(found)
    body = b""
    for tag, table in sorted(found.items()):
        head += struct.pack(">4s3I", tag, 0, at + len(body), len(table))
        body += table + b"\0" * (-len(table) % 4)
    return head + body


def main(path, faces):
    if len(faces) == 1:
        font = write_face(tables(faces[0]), 0)
    else:
        at, parts, offsets = 12 + 4 * len(faces), [], []
        for face in faces:
            offsets.append(at)
            parts.append(write_face(tables(face), at))
            at += len(parts[-1])
        font = struct.pack(f">4s2I{len(faces)}I", b"ttcf", 1 << 16, len(faces), *offsets)
        font += b"".join(parts)
    with open(path, "wb") as file:
        file.write(font)


main(sys.argv[1], sys.argv[2].split(","))
