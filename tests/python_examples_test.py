#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The examples in Python draw, byte for byte, what orn-overlay draws:
python_examples_test.py CBFCONV ORN_OVERLAY LIBRARY SOURCE. Takes PyAV and GStreamer's bindings."""
import os
import pathlib
import subprocess
import sys
import tempfile

CBFCONV, ORN_OVERLAY, LIBRARY, SOURCE = (pathlib.Path(argument).resolve() for argument in sys.argv[1:5])
TTF = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"
FRAMES = 7
PIPELINE = ("filesrc location=in.nv12 ! rawvideoparse format=nv12 width={0} height={1} framerate=25/1 ! "
            "identity name=draw ! filesink location=out.nv12")


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
    return run(ORN_OVERLAY, f"--size={size[0]}x{size[1]}", "--range=limited", "--font=sans.cbf", "script", input=frames)


def decoded(clip):
    return run("ffmpeg", "-v", "error", "-i", clip, "-f", "rawvideo", "-pix_fmt", "nv12", "-")


def check(name, drawn, given, *about):
    if drawn == given or drawn != expected(given, *about):
        sys.exit(f"{name} draws something else")


def main():
    run(CBFCONV, "-s16", "-r0x20-0x7E", "-osans.cbf", TTF)
    for size in (320, 240), (324, 182):
        source = f"testsrc2=size={size[0]}x{size[1]}:rate=25"
        run("ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", source, "-frames:v", str(FRAMES), "-c:v", "libx264", "in.mp4")
        given = decoded("in.mp4")
        example("pyav_boxes.py", "sans.cbf", "in.mp4", "out.nut", "rawvideo")
        check("pyav_boxes.py", decoded("out.nut"), given, size, lambda n: 20 + 4 * n, str)
        pathlib.Path("in.nv12").write_bytes(given)
        example("gstreamer_probe.py", "sans.cbf", PIPELINE.format(*size))
        check("gstreamer_probe.py", pathlib.Path("out.nv12").read_bytes(), given, size, lambda n: 20 + 4 * n,
              lambda n: 20 + 4 * n)
    example("pyav_boxes.py", "sans.cbf", "in.mp4", "out.mp4")
    if len(decoded("out.mp4")) != len(given):
        sys.exit("pyav_boxes.py doesn't write a whole film")
    for name, missing in ("pyav_boxes.py", ("no.cbf", "in.mp4", "x.mp4")), ("gstreamer_probe.py", ("no.cbf", "fakesrc")):
        example(name, status=2)
        example(name, *missing, status=1)
    example("pyav_boxes.py", "sans.cbf", "missing.mp4", "x.mp4", status=1)


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    main()
