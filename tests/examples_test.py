# SPDX-License-Identifier: MIT
"""Each example draws, byte for byte, what orn-overlay draws from a script of the same:
examples_test.py TOOLS EXAMPLES LIBRARY SOURCE (folders of programs and of the library)"""
import os
import pathlib
import subprocess
import sys

tools, examples, library, source = (pathlib.Path(path).resolve() for path in sys.argv[1:])
TEXT = "Every word of this paragraph stands inside its background."
FRAME = bytes(40 + (x * x + 7 * y) % 90 for y in range(360) for x in range(320))
INSET = b"".join(FRAME[320 * y:][:96] for y in (*range(72), *range(240, 276)))
GREY = bytes([128]) * (320 * 200)
LABEL = """* measure {0} {1} "{2}"
* fill text.left-6 text.top-6 text.right+6 text.bottom+6 #141e3c
* outlined {0} #ececec #141e3c {1} "{2}"
"""
# A program, its arguments, what it reads, and the frame and the script that make the same.
CASES = [
    (examples / "labelled_box", "sans.cbf 320 240", FRAME, FRAME,
     "* box 60 70 260 200 #ff9600\n" + LABEL.format("66 60", "", "Zoë 0.97")),
    (source / "examples/detections.py", "sans.cbf 320 240", FRAME, FRAME,
     "* box 40 80 110 230 #ff9600\n* box 160 150 250 230 #00c8ff\n" +
     LABEL.format("46 74", "left bottom", "person 0.97") +
     LABEL.format("166 144", "left bottom", "dog 0.81")),
    (examples / "picture_in_picture", "320 240 frame.nv12 96 72 inset.nv12", b"", FRAME,
     "* roundfill 202 10 310 94 10 10 white\n* picture 208 16 96 72 \"inset.nv12\"\n"
     "* roundbox 202 10 310 94 10 10 #ff9600\n"),
    (examples / "fitted_paragraph", f"sans.cbf 200 {TEXT}", b"", GREY,
     f'* label 16 12 #ececec #292929 "{TEXT}"\n'.replace(" parag", "\\n- parag")
     .replace(" inside", "\\n- inside"))]


def run(program, arguments, given=b"", status=0):
    done = subprocess.run([program, *arguments], input=given, capture_output=True, check=False,
                          env=dict(os.environ, LD_LIBRARY_PATH=str(library)))
    if done.returncode != status:
        sys.exit(f"exit {done.returncode}, not {status}: {program}: {done.stderr.decode()}")
    return done.stdout


run(tools / "cbfconv", ["-s16", "-r0x20-0xFF", "-osans.cbf",
                        "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"])
pathlib.Path("frame.nv12").write_bytes(FRAME)
pathlib.Path("inset.nv12").write_bytes(INSET)
for example, words, read, frame, script in CASES:
    pathlib.Path("script.txt").write_text(script, encoding="utf-8")
    layout = "--format=y8 --size=320x200" if frame is GREY else "--size=320x240"
    expected = run(tools / "orn-overlay", [*layout.split(), "--font=sans.cbf", "script.txt"], frame)
    drawn = run(example, words.split(" ", 2 if frame is GREY else -1), read)
    if drawn.removeprefix(b"P5\n320 200\n255\n") != expected or expected == frame:
        sys.exit(f"{example} draws something else than{script}")
    run(example, [], status=2)
    run(example, words.replace("s", "not").split(" ", 2 if frame is GREY else -1), status=1)
