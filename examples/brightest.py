#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Stands for a detector: brightest.py WIDTH HEIGHT reads NV12 frames from standard input, and writes
a line of JSON for each, with a box around the brightest of its 8 x 8 fields, on standard output."""
import json
import sys

width, height = int(sys.argv[1]), int(sys.argv[2])
columns, rows = width // 8, height // 8
number = 1
while len(frame := sys.stdin.buffer.read(width * height * 3 // 2)) == width * height * 3 // 2:
    fields = {(x, y): sum(frame[(y * rows + rows // 2) * width + x * columns:][:columns])
              for x in range(8) for y in range(8)}
    x, y = max(fields, key=fields.get)
    box = [x * columns, y * rows, (x + 1) * columns, (y + 1) * rows]
    print(json.dumps({"frame": number, "boxes": [{"id": 1, "class": "bright", "box": box}]}),
          flush=True)
    number += 1
