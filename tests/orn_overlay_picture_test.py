#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""PNG and JPEG pictures in frames: orn_overlay_picture_test.py ORN_OVERLAY. Takes ffmpeg."""
import os
import pathlib
import struct
import subprocess
import sys
import tempfile
import zlib

overlay = pathlib.Path(sys.argv[1]).resolve()
WIDTH, HEIGHT = 23, 13
failures = []
folder = tempfile.TemporaryDirectory()
os.chdir(folder.name)


def chunk(kind, content):
    return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))


def png(name, rows, size=None):
    width, height = size or (len(rows[0]), len(rows))
    data = b"".join(b"\0" + b"".join(map(bytes, row)) for row in rows)
    pathlib.Path(name).write_bytes(
        b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">2I5B", width, height, 8, 6, 0, 0, 0)) +
        chunk(b"IDAT", zlib.compress(data)) + chunk(b"IEND", b""))


def draw(script, *options, status=0, message="", height=HEIGHT):
    pathlib.Path("script").write_text(script)
    frame = bytes([50]) * (2 * WIDTH * (height + 1))
    chroma = (WIDTH + 1) * ((height + 1) // 2) if "y8" not in options else 0
    done = subprocess.run([overlay, "--size", f"{WIDTH}x{height}", *options, "script"], check=False,
                          input=frame[:WIDTH * height + chroma], capture_output=True, timeout=50)
    said = done.stderr.decode()
    if done.returncode != status or message not in said or (said and not message):
        failures.append(f"{script}: exit {done.returncode}, not {status} with '{message}': {said}")
    return done.stdout


def same(script, other, *options, height=HEIGHT):
    one, two = draw(script, *options, height=height), draw(other, *options, height=height)
    if one != two or set(one) == {50}:
        failures.append(f"not the same, or nothing: {script}: {other}: {one.hex()} {two.hex()}")


# Transparent pixels are of a colour that is nowhere to be seen.
RED, BLUE, NONE = (200, 30, 10, 255), (10, 20, 220, 128), (0, 255, 0, 127)
png("parts.png", [[RED, RED, NONE, NONE], [RED, RED, NONE, BLUE], [BLUE, NONE, NONE, NONE]])
PURPLE, ORANGE = (255, 30, 120), (255, 120, 0)
png("dot.PNG", [[RED]])
for options in ["--format", "y8"], ["--range", "limited"], ["--matrix", "bt709"]:
    same("* picture right-15 bottom-1 auto 9 \"dot.PNG\"", "* fill 8 12 17 13 #c81e0a", *options)
    same("* picture -2 -6 8 8 \"dot.PNG\"", "* fill 0 0 6 2 #c81e0a", *options)
    # Half of what is scaled is transparent, to the pixel; its colours stay.
    for size, end, colour in ("16 auto", 10, PURPLE), ("8 4", 6, PURPLE), ("8 8", 6, ORANGE), ("16 4", 10, ORANGE):
        png("half.png", [[(*colour, 200)] * 8 + [NONE[:3] + (0,)] * 8] * 8)
        drawn = draw(f"* picture 2 2 {size} \"half.png\"", *options)
        fill = draw("* fill 2 2 6 6 #{:02x}{:02x}{:02x}".format(*colour), *options)
        for x in range(2, end):
            if abs(drawn[3 * WIDTH + x] - fill[3 * WIDTH + 3]) > 2:
                failures.append(f"{options}: {size}: column {x} is {drawn[3 * WIDTH + x]}")
        if drawn[3 * WIDTH + end:4 * WIDTH] != bytes([50]) * (WIDTH - end):
            failures.append(f"{options}: {size}: what is transparent is drawn")
for size, height, pixels in [
        ("25% auto", 12, "3 auto"), ("25% auto", 40, "10 auto"), ("auto 50%", 12, "auto 6"),
        ("50% 10%+1", 40, "20 5"), ("0.001% 9", 13, "1 9"), ("1000% 1000%", 12, "120 120")]:
    same(f"* picture 2 2 {size} \"parts.png\"", f"* picture 2 2 {pixels} \"parts.png\"", height=height)

subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "color=#4080c0:size=64x48", "-frames:v",
                "1", "-q:v", "1", "even.jpg"], check=True)
drawn, even = draw("* picture 2 2 8 auto \"even.jpg\""), draw("* fill 2 2 10 8 #4080c0")
if max(abs(a - b) for a, b in zip(drawn, even)) > 3:
    failures.append(f"JPEG: {drawn.hex()} {even.hex()}")

photo, logo = pathlib.Path("even.jpg").read_bytes(), pathlib.Path("parts.png").read_bytes()
pathlib.Path("cut.jpg").write_bytes(photo[:-100])
pathlib.Path("cut.png").write_bytes(logo[:-30])
pathlib.Path("wrong.png").write_bytes(logo[:-20] + bytes([logo[-20] ^ 1]) + logo[-19:])
pathlib.Path("text.png").write_text("P6 1 1")
png("huge.png", [[RED]], (60000, 60000))
png("wide.png", [[RED] * 3000])
same("* picture 2 2 9 auto \"wide.png\"", "* picture 2 2 9 1 \"wide.png\"")
for arguments, reason in [
        ("9 9 \"cut.jpg\"", "cut.jpg: is damaged"), ("9 9 \"cut.png\"", "cut.png: is damaged"),
        ("9 9 \"wrong.png\"", "wrong.png: is damaged"), ("9 9 \"huge.png\"", "more than 8192 x 4320"),
        ("9 9 \"text.png\"", "text.png: is neither a PNG nor a JPEG"),
        ("auto 100 \"wide.png\"", "wide.png: would be drawn with more than"),
        ("65535 65535 \"dot.PNG\"", "would be drawn with more than 8192 x 4320"),
        ("auto 9 \"frames.raw\"", "raw frames need both sizes"),
        ("9 10% \"frames.raw\"", "raw frames need both sizes in pixels")]:
    draw(f"* fill 0 0 1 1 red\n* picture 0 0 {arguments}", "--check", status=1, message="script:2: ")
    draw(f"* picture 0 0 {arguments}", "--check", status=1, message=reason)
draw("* picture 1999999999 -2147483648 9 auto \"dot.PNG\"\n* picture 9 2147483647 9 9 \"dot.PNG\"")
os.chdir("/")
sys.exit("\n".join(failures) or 0)
