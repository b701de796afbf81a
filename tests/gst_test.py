#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Frames through ornoverlay come out as from orn-overlay, byte for byte, in every layout; what lies
between their rows stays: gst_test.py CBFCONV ORN_OVERLAY png|raw. Takes GStreamer's Python bindings."""
import os
import random
import subprocess
import sys
import tempfile

import gi

gi.require_versions({"Gst": "1.0", "GstVideo": "1.0"})
from gi.repository import Gst, GstVideo  # pylint: disable=wrong-import-position

CBFCONV, ORN_OVERLAY = (os.path.abspath(argument) for argument in sys.argv[1:3])
FRAMES, RATE = 6, 25
SCRIPT = """* label 3 40% white #203040 "{time} {frame}"
1-2 copy 5 5 40 30 9 2
* text 1 bottom-3 white bottom "plain"
2- picture 7 3 6 5 "picture.raw"
* bitmap 11 5 40 40 #ff8000 half "bitmap.pbm"
* ellipse 3 1 30 30 red
1-4 mosaic 3 3 60% 70% 5
3 mask 5 5 21 19 red
tracks trail 3 id thick 7%
tracks label box.left box.top black id "{class} {id} {conf}"
"""
if sys.argv[3] == "png":  # which a build without FFmpeg's libraries can't read
    BADGE = os.path.abspath(os.path.dirname(__file__) + "/../docs/gallery/badge.png")
    SCRIPT = f'{SCRIPT}* picture 21 4 auto 17 "{BADGE}"\n'
COLOURS = {"bt601": ["limited", "bt601"], "bt709": ["limited", "bt709"], "1:4:0:0": ["full", "bt601"]}
BOXES = [[(7, 2 + 4 * n, 9, 12, 20, 0.25 + n / 10), (3, 30, 20 - 3 * n, 9, 9, 1)] for n in range(FRAMES)]
randomness = random.Random(1)


def planes_of(layout, frame, width, height):
    """Rows of each plane of a frame of NV12."""
    length, columns = width * height, (width + 1) // 2 * 2
    luma = [frame[i:i + width] for i in range(0, length, width)]
    pairs = [frame[i:i + columns] for i in range(length, len(frame), columns)]
    first, second = [row[::2] for row in pairs], [row[1::2] for row in pairs]
    swapped = [bytes(b for uv in zip(row[1::2], row[::2]) for b in uv) for row in pairs]
    return {"GRAY8": [luma], "NV12": [luma, pairs], "NV21": [luma, swapped],
            "I420": [luma, first, second], "YV12": [luma, second, first]}[layout]


def laid_out(planes, padding):
    """The bytes of each plane, and their strides."""
    strides = [len(rows[0]) + more for rows, more in zip(planes, padding)]
    return [b"".join(row.ljust(stride, b"\x5a") for row in rows)
            for rows, stride in zip(planes, strides)], strides


def make_buffer(layout, size, number, planes, strides, in_blocks):
    buffer = Gst.Buffer.new()
    for block in planes if in_blocks else [b"".join(planes)]:
        buffer.append_memory(Gst.Buffer.new_wrapped(block).get_all_memory())
    offsets = [sum(map(len, planes[:i])) for i in range(len(planes))]
    GstVideo.buffer_add_video_meta_full(
        buffer, 0, GstVideo.VideoFormat.from_string(layout), *size, len(planes),
        offsets + [0] * (4 - len(planes)), strides + [0] * (4 - len(planes)))
    for track, x, y, width, height, confidence in BOXES[number]:
        region = GstVideo.buffer_add_video_region_of_interest_meta(buffer, "car", x, y, width, height)
        for text in f"detection,confidence={confidence:f}", f"object_id,id={track}":
            region.add_param(Gst.Structure.new_from_string(text))
    buffer.pts = number * Gst.SECOND // RATE
    return buffer


def through_element(layout, size, colours, buffers):
    pipeline = Gst.parse_launch(
        "appsrc name=in format=time ! ornoverlay script-location=script font-location=sans.cbf ! "
        "appsink name=out sync=false")
    pipeline.get_by_name("in").props.caps = Gst.Caps.from_string(
        f"video/x-raw,format={layout},width={size[0]},height={size[1]},framerate={RATE}/1,"
        f"colorimetry={colours}")
    pipeline.set_state(Gst.State.PLAYING)
    for buffer in buffers:
        pipeline.get_by_name("in").emit("push-buffer", buffer)
    pipeline.get_by_name("in").emit("end-of-stream")
    results = []
    while sample := pipeline.get_by_name("out").emit("pull-sample"):
        results.append(sample.get_buffer().extract_dup(0, sample.get_buffer().get_size()))
    pipeline.set_state(Gst.State.NULL)
    return results


def check(layout, size, colours, padding, in_blocks):
    gray = layout == "GRAY8"
    width, height = size
    length = width * height + (0 if gray else (width + 1) // 2 * 2 * ((height + 1) // 2))
    given = [randomness.randbytes(length) for _ in range(FRAMES)]
    range_, matrix = COLOURS[colours]
    drawn = subprocess.run(
        [ORN_OVERLAY, "--size", f"{width}x{height}", "--format", "Y8" if gray else "nv12", "--range",
         range_, "--matrix", matrix, "--fps", str(RATE), "--font", "sans.cbf", "--tracks", "tracks",
         "classless"], input=b"".join(given), stdout=subprocess.PIPE, check=True).stdout
    buffers, expected = [], []
    for n, frame in enumerate(given):
        planes, strides = laid_out(planes_of(layout, frame, *size), padding)
        buffers.append(make_buffer(layout, size, n, planes, strides, in_blocks))
        result = drawn[n * length:(n + 1) * length]
        expected.append(b"".join(laid_out(planes_of(layout, result, *size), padding)[0]))
    if given == expected or through_element(layout, size, colours, buffers) != expected:
        sys.exit(f"other bytes: {layout} {size} {colours} {padding} {in_blocks}")


def main():
    subprocess.run([CBFCONV, "-s", "9", "-o", "sans.cbf",
                    "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"], check=True)
    rows = [f"{n + 1},{track},{x},{y},{width},{height},{confidence:f}\n" for n in range(FRAMES)
            for track, x, y, width, height, confidence in BOXES[n]]
    files = {"script": SCRIPT, "classless": SCRIPT.replace("{class}", "car"),
             "bitmap.pbm": "P1 3 2 1 0 1 0 1 1", "tracks": "".join(rows)}
    for name, content in files.items():
        with open(name, "w", encoding="ascii") as file:
            file.write(content)
    with open("picture.raw", "wb") as file:
        file.write(randomness.randbytes(2 * (6 * 5 + 6 * 3) * 5))  # whole frames with and without chroma
    Gst.init(None)
    for layout in "GRAY8", "NV12", "NV21", "I420", "YV12":
        for size, colours, padding, in_blocks in (
                ((64, 48), "bt601", (0, 0, 0), False), ((67, 45), "bt709", (1, 0, 0), False),
                ((67, 45), "1:4:0:0", (5, 2, 9), True), ((66, 47), "bt709", (0, 7, 3), True),
                ((1, 1), "bt601", (3, 1, 0), False)):
            check(layout, size, colours, padding, in_blocks)


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    main()
