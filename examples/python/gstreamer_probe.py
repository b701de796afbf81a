#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws a box with a label into the frames that flow through a GStreamer pipeline, in a pad probe:
gstreamer_probe.py FONT PIPELINE

PIPELINE is as for gst-launch-1.0, with an element of the name "draw" that NV12 flows out of:
    gstreamer_probe.py sans "videotestsrc ! video/x-raw,format=NV12 ! identity name=draw ! autovideosink"
"""
import contextlib
import ctypes
import sys

import gi

gi.require_versions({"Gst": "1.0", "GstVideo": "1.0"})
from gi.repository import GLib, Gst, GstVideo

from orn_min_render import Font, Frame, draw_detections


class MapInfo(ctypes.Structure):
    _fields_ = [("memory", ctypes.c_void_p), ("flags", ctypes.c_int), ("data", ctypes.c_void_p),
                ("size", ctypes.c_size_t), ("maxsize", ctypes.c_size_t),
                ("reserved", ctypes.c_void_p * 8)]


gstreamer = ctypes.CDLL("libgstreamer-1.0.so.0")
gstreamer.gst_buffer_peek_memory.restype = ctypes.c_void_p


@contextlib.contextmanager
def mapped(buffer):
    """The bytes of a buffer, to read and write. Buffer.map refuses to write here: Python's own reference
    makes a shared buffer of it. Its memory may be mapped all the same, as long as no other buffer has
    it. Behind a tee, other branches would see what is drawn: let an element copy before."""
    if buffer.n_memory() != 1:
        raise BufferError("the planes lie in several blocks of memory")
    memory = ctypes.c_void_p(gstreamer.gst_buffer_peek_memory(ctypes.c_void_p(hash(buffer)), 0))
    info = MapInfo()
    if not gstreamer.gst_memory_map(memory, ctypes.byref(info), Gst.MapFlags.READ | Gst.MapFlags.WRITE):
        raise BufferError("another buffer has this memory, too")
    try:
        yield memoryview((ctypes.c_uint8 * info.size).from_address(info.data)).cast("B")
    finally:
        gstreamer.gst_memory_unmap(memory, ctypes.byref(info))


def layout_of(pad, buffer):
    """Width, height, and offset and stride of both planes."""
    caps = pad.get_current_caps()
    info = GstVideo.buffer_get_video_meta(buffer) or GstVideo.VideoInfo.new_from_caps(caps)
    return info.width, info.height, info.offset[:2], info.stride[:2]


def on_buffer(pad, probe, font):
    buffer = probe.get_buffer()
    width, height, (y, uv), strides = layout_of(pad, buffer)
    left = 20 + buffer.pts // (10 * Gst.MSECOND)  # in place of a detector: a box that wanders
    with mapped(buffer) as data, Frame.planes(data[y:], data[uv:], width, height, *strides,
                                              range="limited") as frame:
        draw_detections(frame, [(left, 60, left + 80, 160)], [f"person {left}"], [7], font=font)
    return Gst.PadProbeReturn.OK


def main():
    if len(sys.argv) != 3:
        print(__doc__, file=sys.stderr)
        sys.exit(2)
    Gst.init(None)
    try:
        font, pipeline = Font(sys.argv[1]), Gst.parse_launch(sys.argv[2])
    except (OSError, ValueError, GLib.Error) as error:
        sys.exit(f"gstreamer_probe.py: {error}")
    pad = pipeline.get_by_name("draw").get_static_pad("src")
    pad.add_probe(Gst.PadProbeType.BUFFER, on_buffer, font)
    pipeline.set_state(Gst.State.PLAYING)
    message = pipeline.get_bus().timed_pop_filtered(
        Gst.CLOCK_TIME_NONE, Gst.MessageType.EOS | Gst.MessageType.ERROR)
    pipeline.set_state(Gst.State.NULL)
    if message.type == Gst.MessageType.ERROR:
        sys.exit(f"gstreamer_probe.py: {message.parse_error()[0].message}")


if __name__ == "__main__":
    main()
