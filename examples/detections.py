#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws detections into one NV12 frame that lies in a bytearray; ctypes alone, nothing to install:
detections.py FONT.cbf WIDTH HEIGHT < in.nv12 > out.nv12 (even sizes)"""
import sys
from ctypes import (CDLL, POINTER, Structure, addressof, c_char, c_char_p, c_int32, c_int64,
                    c_uint8, c_uint64, c_void_p)

DETECTIONS = [("person", 0.97, (40, 80, 110, 230)), ("dog", 0.81, (160, 150, 250, 230))]
RGB = {"person": (255, 150, 0), "dog": (0, 200, 255), "night": (20, 30, 60)}


def record(name, **fields):
    return type(name, (Structure,), {"_fields_": list(fields.items())})


Point = record("Point", x=c_int32, y=c_int32)
Rect = record("Rect", left=c_int32, top=c_int32, right=c_int32, bottom=c_int32)
Colour = record("Colour", y=c_uint8, u=c_uint8, v=c_uint8)
Image = record("Image", caller0=c_uint64, width=c_int32, height=c_int32, stride=c_int64,
               y_plane=c_void_p, caller1=c_uint64, uv_plane=c_void_p)


def bind(name, *arguments, result=None):
    function = library["OrnMinRender" + name]
    function.argtypes, function.restype = arguments, result
    return function


library = CDLL("liborn_min_render.so.1")
image_p, rect_p, point_p = POINTER(Image), POINTER(Rect), POINTER(Point)
load_font = bind("LoadCbfFont", c_char_p, result=c_void_p)
destroy_font = bind("DestroyFont", c_void_p)
rgb_to_yuv = bind("RGB2YUV", POINTER(Colour), c_uint8 * 3)
draw_frame = bind("DrawFrameYUV420SP", c_void_p, image_p, rect_p, Colour, c_int32)
fill_rect = bind("FillRectYUV420SP", c_void_p, image_p, rect_p, Colour)
measure = bind("GetTextRect", c_void_p, c_void_p, c_char_p, point_p, c_int32, rect_p)
draw_text = bind("DrawOutlineTextY8", c_void_p, image_p, c_void_p, c_char_p, point_p, c_int32,
                 c_uint8, c_int32)


def colour(name):
    yuv = Colour()
    rgb_to_yuv(yuv, (c_uint8 * 3)(*RGB[name]))
    return yuv


def draw_detections(frame, width, height, font, detections):
    luma = (c_char * len(frame)).from_buffer(frame)  # the bytearray's own memory, not a copy
    image = Image(width=width, height=height, stride=width, y_plane=addressof(luma),
                  uv_plane=addressof(luma) + width * height)
    night = colour("night")
    for name, score, box in detections:
        draw_frame(None, image, Rect(*box), colour(name), 0)  # these calls need no context
        text, ink = f"{name} {score}".encode(), Rect()
        measure(None, font, text, Point(0, 0), 0, ink)
        corner = Point(box[0], box[1] - (ink.bottom - ink.top) - 12)
        pen = Point(corner.x + 6 - ink.left, corner.y + 6 - ink.top)
        fill_rect(None, image, Rect(corner.x, corner.y, pen.x + ink.right + 6, box[1]), night)
        draw_text(None, image, font, text, pen, pen.x, night.y, 235)


def main():
    if len(sys.argv) != 4 or not (sys.argv[2] + sys.argv[3]).isdecimal():
        print(__doc__, file=sys.stderr)
        sys.exit(2)
    path, width, height = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
    font = load_font(path.encode())
    size = width * height * 3 // 2
    frame = bytearray(sys.stdin.buffer.read(size))
    if not font or len(frame) < size or width % 2 or height % 2:
        sys.exit(f"detections.py: no font at {path}, or no whole frame of even sides")
    draw_detections(frame, width, height, font, DETECTIONS)
    sys.stdout.buffer.write(frame)
    destroy_font(font)


if __name__ == "__main__":
    main()
