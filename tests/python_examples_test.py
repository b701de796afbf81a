#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The same overlays through every door, byte for byte: the examples in Python draw what orn-overlay draws,
and what ornoverlay draws where GST_PLUGIN_PATH names its folder:
python_examples_test.py CBFCONV ORN_OVERLAY LIBRARY SOURCE. Takes PyAV and GStreamer's bindings."""
import os
import pathlib
import subprocess
import sys
import tempfile

import gi

gi.require_version("Gst", "1.0")
from gi.repository import Gst

CBFCONV, ORN_OVERLAY, LIBRARY, SOURCE = (pathlib.Path(argument).resolve() for argument in sys.argv[1:5])
TTF = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"
FRAMES = 7
PIPELINE = ("filesrc location=in.nv12 ! rawvideoparse format=nv12 width={0} height={1} framerate=25/1 ! "
            "{2} ! filesink location=out.nv12")


def run(*command, status=0, **options):
    done = subprocess.run([str(word) for word in command], capture_output=True, check=False, **options)
    if done.returncode != status:
        sys.exit(f"exit {done.returncode}, not {status}: {command}: {done.stderr.decode()}")
    return done.stdout


def example(name, *arguments, status=0):
    return run("/usr/bin/python3", SOURCE / "examples/python" / name, *arguments, status=status, env=dict(
        os.environ, PYTHONPATH=str(SOURCE / "python"), LD_LIBRARY_PATH=str(LIBRARY)))


def expected(frames, size, left, label):
    """What each frame shows: a box that wanders, in the seventh colour, and its label above it."""
    lines = [f"{n} box {left(n)} 60 {left(n) + 79} 159 #2fe0c0\n"
             f'{n} label {left(n)} 60 black #2fe0c0 bottom "person {label(n)}"\n' for n in range(FRAMES)]
    pathlib.Path("script").write_text("".join(lines), encoding="ascii")
    return run(ORN_OVERLAY, f"--size={size[0]}x{size[1]}", "--range=limited", "--font=sans.cbf", "script",
               input=frames)


def by_element(size):
    """The script that orn-overlay drew last."""
    if "GST_PLUGIN_PATH" not in os.environ:
        return
    drawn = pathlib.Path("out.nv12").read_bytes()
    pathlib.Path("out.nv12").unlink()
    element = "ornoverlay script-location=script font-location=sans.cbf"
    pipeline = Gst.parse_launch(PIPELINE.format(*size, element))
    pipeline.set_state(Gst.State.PLAYING)
    pipeline.get_bus().timed_pop_filtered(60 * Gst.SECOND, Gst.MessageType.EOS | Gst.MessageType.ERROR)
    pipeline.set_state(Gst.State.NULL)
    if pathlib.Path("out.nv12").read_bytes() != drawn:
        sys.exit("ornoverlay draws something else")


def decoded(clip):
    return run("ffmpeg", "-v", "error", "-i", clip, "-f", "rawvideo", "-pix_fmt", "nv12", "-")


def check(name, drawn, given, *about):
    if drawn == given or drawn != expected(given, *about):
        sys.exit(f"{name} draws something else")


def main():
    Gst.init(None)
    run(CBFCONV, "-s16", "-r0x20-0x7E", "-osans.cbf", TTF)
    for size in (320, 240), (324, 182):
        source = f"testsrc2=size={size[0]}x{size[1]}:rate=25"
        run("ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", source, "-frames:v", FRAMES, "-c:v", "libx264",
            "in.mp4")
        given = decoded("in.mp4")
        example("pyav_boxes.py", "sans.cbf", "in.mp4", "out.nut", "rawvideo")
        check("pyav_boxes.py", decoded("out.nut"), given, size, lambda n: 20 + 4 * n, str)
        pathlib.Path("in.nv12").write_bytes(given)
        example("gstreamer_probe.py", "sans.cbf", PIPELINE.format(*size, "identity name=draw"))
        check("gstreamer_probe.py", pathlib.Path("out.nv12").read_bytes(), given, size, lambda n: 20 + 4 * n,
              lambda n: 20 + 4 * n)
        by_element(size)
    example("pyav_boxes.py", "sans.cbf", "in.mp4", "out.mp4")
    if len(decoded("out.mp4")) != len(given):
        sys.exit("pyav_boxes.py doesn't write a whole film")


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    main()
