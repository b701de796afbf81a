#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Twenty labelled boxes on a 1080p NV12 frame: draw_detections beside the same in C, beside the
example in ctypes alone, and beside OpenCV with both conversions, in turn in one run:
detections.py FONT.cbf DETECTIONS.so (bench/detections.c). Prints microseconds and ratios."""
import ctypes
import itertools
import pathlib
import sys
import time

import cv2
import numpy

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT / "python"), str(ROOT / "examples")]
import detections as example
import orn_min_render
from orn_min_render import _colour, _font, _frame, _library

WIDTH, HEIGHT, COUNT, ROUNDS, TIMES = 1920, 1080, 20, 100, 8
XYXY = numpy.array([(24.4 + 370 * (i % 5), 60.2 + 240 * (i // 5), 224 + 370 * (i % 5), 180 + 240 * (i // 5))
                    for i in range(COUNT)], numpy.float32)
LABELS = [("Person 0.97", "Car 0.83", "Bicycle 0.64", "Truck 0.91")[i % 4] for i in range(COUNT)]
IDS = numpy.arange(1, COUNT + 1)


class Detection(ctypes.Structure):
    _fields_ = [("box", _library.Rect), ("label", ctypes.c_char_p), ("rgb", ctypes.c_uint8 * 3)]


def palette_of(i):
    return bytes.fromhex(_colour.PALETTE[i % len(_colour.PALETTE)][1:])


def by_package(buffer, font):
    def draw():
        with orn_min_render.Frame.nv12(buffer, WIDTH, HEIGHT) as frame:
            orn_min_render.draw_detections(frame, XYXY, LABELS, IDS, font=font)
    return draw


def by_package_with_new_labels(buffer, font):
    """As if every label were another one in every frame."""
    numbers = itertools.count()
    frames = iter([[f"{label[:-4]}{next(numbers):04x}" for label in LABELS] for _ in range(ROUNDS * TIMES)])

    def draw():
        with orn_min_render.Frame.nv12(buffer, WIDTH, HEIGHT) as frame:
            orn_min_render.draw_detections(frame, XYXY, next(frames), IDS, font=font)
    return draw


def by_c(buffer, font, library):
    found = (Detection * COUNT)(*[
        Detection(_library.Rect(*map(int, numpy.floor(XYXY[i] + 0.5))), LABELS[i].encode(),
                  (ctypes.c_uint8 * 3)(*palette_of(i))) for i in range(COUNT)])
    frame = orn_min_render.Frame.nv12(buffer, WIDTH, HEIGHT)
    image, handle = _frame.images_of(frame)[0], _font.handle_of(font)
    return lambda: library.DrawDetections(image, handle, found, COUNT, TIMES)


def by_example(buffer, path):
    font = ctypes.c_void_p(example.load_font(path.encode()))
    example.RGB.update({str(i): tuple(palette_of(i)) for i in range(COUNT)})
    found = [(label.split()[0], label.split()[1], tuple(map(int, box))) for label, box in zip(LABELS, XYXY)]
    example.RGB.update({name: tuple(palette_of(0)) for name, _, _ in found})
    return lambda: example.draw_detections(buffer, WIDTH, HEIGHT, font, found)


def by_opencv(buffer):
    """OpenCV converts BGR to planar chroma only, which is interleaved afterwards."""
    frame = numpy.frombuffer(buffer, numpy.uint8).reshape(HEIGHT * 3 // 2, WIDTH)
    face, chroma = cv2.FONT_HERSHEY_SIMPLEX, frame[HEIGHT:].reshape(HEIGHT // 2, WIDTH // 2, 2)

    def draw():
        bgr = cv2.cvtColor(frame, cv2.COLOR_YUV2BGR_NV12)
        for i, (label, box) in enumerate(zip(LABELS, XYXY)):
            left, top, right, bottom = map(int, box)
            colour = tuple(reversed(palette_of(i)))
            cv2.rectangle(bgr, (left, top), (right, bottom), colour, 2)
            (wide, high), _ = cv2.getTextSize(label, face, 0.5, 1)
            cv2.rectangle(bgr, (left, top - high - 12), (left + wide + 12, top), colour, -1)
            cv2.putText(bgr, label, (left + 6, top - 6), face, 0.5, (0, 0, 0), 1)
        planar = cv2.cvtColor(bgr, cv2.COLOR_BGR2YUV_I420)
        frame[:HEIGHT] = planar[:HEIGHT]
        halves = planar[HEIGHT:].reshape(2, HEIGHT // 2, WIDTH // 2)
        cv2.merge([halves[0], halves[1]], chroma)
    return draw


def microseconds(draw, times):
    begin = time.perf_counter()
    for _ in range(times):
        draw()
    return (time.perf_counter() - begin) / times * 1e6


def main():
    font, buffers = orn_min_render.Font(sys.argv[1]), [bytearray(b"\x80") * (WIDTH * HEIGHT * 3 // 2)
                                                       for _ in range(5)]
    cv2.setNumThreads(1)
    jobs = {  # what to do, how often in a round, and how many frames that is
        "the same in C": (by_c(buffers[1], font, ctypes.CDLL(sys.argv[2])), 1, TIMES),
        "draw_detections": (by_package(buffers[0], font), TIMES, 1),
        "draw_detections, all labels new": (by_package_with_new_labels(buffers[2], font), TIMES, 1),
        "examples/detections.py": (by_example(buffers[3], sys.argv[1]), TIMES, 1),
        "OpenCV with both conversions": (by_opencv(buffers[4]), 1, 1)}
    best = dict.fromkeys(jobs, float("inf"))
    for _ in range(ROUNDS):
        for name, (draw, times, frames) in jobs.items():
            best[name] = min(best[name], microseconds(draw, times) / frames)
    if buffers[0] != buffers[1] or buffers[0] == bytearray(b"\x80") * len(buffers[0]):
        sys.exit("draw_detections and C draw different pixels")
    print("| 20 labelled boxes, 1080p NV12 | microseconds | of C's | of OpenCV's |\n|---|--:|--:|--:|")
    for name, time_ in best.items():
        print(f"| {name} | {time_:.1f} | {time_ / best['the same in C']:.2f} | "
              f"1/{best['OpenCV with both conversions'] / time_:.1f} |")


if __name__ == "__main__":
    main()
