#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws a box with a label into every frame of a clip, with PyAV: pyav_boxes.py FONT IN OUT [CODEC]

Frames are drawn into where FFmpeg keeps them, as NV12. Those that are decoded as something else are
brought into NV12 first, which the encoder takes as it is."""
import sys

import av

from orn_min_render import Font, Frame, draw_detections


def detect(number):
    """In place of a detector: one box that wanders to the right."""
    left = 20.25 + 4 * number
    return [(left, 60, left + 80, 160)], [f"person {number}"], [7]


def draw(picture, number, font):
    luma, chroma = picture.planes
    xyxy, labels, ids = detect(number)
    with Frame.planes(luma, chroma, picture.width, picture.height, luma.line_size, chroma.line_size,
                      range="limited") as frame:
        draw_detections(frame, xyxy, labels, ids, font=font)


def convert(font, source, target, codec):
    with av.open(source) as given, av.open(target, "w") as made:
        stream = given.streams.video[0]
        output = made.add_stream(codec, stream.average_rate)
        output.width, output.height, output.pix_fmt = stream.width, stream.height, "nv12"
        for number, decoded in enumerate(given.decode(stream)):
            picture = decoded.reformat(format="nv12")
            draw(picture, number, font)
            made.mux(output.encode(picture))
        made.mux(output.encode())


def main():
    if len(sys.argv) not in (4, 5):
        print(__doc__, file=sys.stderr)
        sys.exit(2)
    try:
        convert(Font(sys.argv[1]), sys.argv[2], sys.argv[3], (sys.argv[4:] or ["libx264"])[0])
    except (OSError, ValueError, av.AVError) as error:
        sys.exit(f"pyav_boxes.py: {error}")


if __name__ == "__main__":
    main()
