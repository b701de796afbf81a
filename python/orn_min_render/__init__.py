# SPDX-License-Identifier: MIT
"""Burns overlays straight into video frames in memory: boxes, lines, shapes, bitmaps and text, in the
frame's own layout, NV12 or luma alone, without converting or copying it.

    from orn_min_render import Frame, draw_detections
    with Frame.nv12(buffer, 1920, 1080) as frame:
        draw_detections(frame, [(40, 80, 110, 230)], labels=["person 0.97"])

Frame is where to draw, Font what to write with, Context has every drawing call, and draw_detections
draws boxes with labels.
"""
from ._colour import ColourLike, rgb_to_yuv, yuv_to_rgb
from ._context import Context
from ._detections import draw_detections
from ._font import Font
from ._frame import Frame

__all__ = ["ColourLike", "Context", "Font", "Frame", "draw_detections", "rgb_to_yuv", "yuv_to_rgb"]
__version__ = "1.0.0"
