#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""orn-overlay while tracks, control lines and scripts arrive: orn_overlay_live_test.py ORN_OVERLAY
[SECONDS]. Frames flow at full speed, and each of them has to show what was said of it."""
import contextlib
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import threading
import time

overlay = str(pathlib.Path(sys.argv[1]).resolve())
seconds = float(sys.argv[2]) if len(sys.argv) > 2 else 3
WIDTH, HEIGHT = 64, 48
SIZE = WIDTH * HEIGHT
BLANK = bytes(SIZE)
RAW = ["--size", f"{WIDTH}x{HEIGHT}", "--format", "Y8"]
failures = []


def check(condition, message):
    if not condition:
        failures.append(message)


def start(*arguments, **options):
    return subprocess.Popen([overlay, *(str(part) for part in arguments)], stdin=subprocess.PIPE,
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options)


def draw(frames, *arguments, status=0, message=""):
    done = subprocess.run([overlay, *RAW, *(str(part) for part in arguments)], input=BLANK * frames,
                          capture_output=True, check=False, timeout=60)
    said = done.stderr.decode(errors="replace")
    check(done.returncode == status, f"exit {done.returncode}, not {status}: {arguments}: {said}")
    check(message in said if message else not said, f"no '{message}': {arguments}: {said}")
    return done.stdout


@contextlib.contextmanager
def writer(path, write):
    """A program that writes into a FIFO."""
    os.mkfifo(path)

    def run():
        with contextlib.suppress(BrokenPipeError), open(path, "w", encoding="latin1") as pipe:
            write(pipe)
    thread = threading.Thread(target=run, daemon=True)
    thread.start()
    yield path
    thread.join(30)
    check(not thread.is_alive(), f"{path} is not read to its end")
    os.remove(path)


def ink(frame, row):
    """How many pixels from the left a row is drawn on, or where it begins."""
    line = frame[row * WIDTH:(row + 1) * WIDTH]
    return line.rstrip(b"\0")


# ---- every format, as a file and through a pipe ----
FORMATS = {
    "mot": "1,3,8,4,16,8,0.5,1,1\n3,3,12,4,16,8,0.9,0,1\n",
    "csv": "x_min,y_min,x_max,y_max,class_id,confidence,tracker_id,frame_index\n"
           "8,4,24,12,1,0.5,3,1\n12,4,28,12,0,0.9,3,3\n",
    "jsonl": '{"frame": 1, "boxes": [{"id": 3, "class": 1, "conf": 0.5, "box": [8, 4, 24, 12]}]}\n'
             '{"frame": 3, "boxes": [{"id": 3, "class": "car", "conf": 0.9, "box": [12, 4, 28, 12]}]}\n',
    "yolo": f"1 1 {16 / 64} {8 / 48} {16 / 64} {8 / 48} 0.5 3\n"
            f"3 0 {20 / 64} {8 / 48} {16 / 64} {8 / 48} 0.9 3\n",
    "coco": '[{"image_id": 1, "category_id": 1, "bbox": [8, 4, 16, 8], "score": 0.5, "track_id": 3},'
            '{"image_id": 3, "category_id": 0, "bbox": [12, 4, 16, 8], "score": 0.9, "track_id": 3}]',
}


def test_formats():
    names = pathlib.Path("names.txt")
    names.write_text("car\nbus\n", encoding="ascii")
    script = pathlib.Path("formats.txt")
    script.write_text("tracks class=bus conf<0.6 id=3 fill box.left box.top box.right box.bottom red\n"
                      "tracks class!=bus conf>=0.6 fill box.left 30 box.right 32 class\n", "ascii")
    expected = pathlib.Path("expected.txt")
    expected.write_text("0 fill 8 4 24 12 red\n2 fill 12 30 28 32 #35c4ff\n", "ascii")
    wanted = draw(4, expected)
    for name, text in FORMATS.items():
        file = pathlib.Path(f"tracks.{name}")
        file.write_text(text, "ascii")
        for option in ([], ["--tracks-format", name]):
            check(draw(4, "--tracks", file, "--classes", names, *option, script) == wanted,
                  f"{name} {option}: not what was said")
        if name == "coco":
            continue
        with writer("pipe", lambda pipe, text=text: pipe.write(text)) as pipe:
            check(draw(4, "--tracks", pipe, "--classes", names, script) == wanted, f"{name} by pipe")
    folder = pathlib.Path("labels")
    folder.mkdir()
    for row in FORMATS["yolo"].splitlines():
        (folder / f"clip_{row.split()[0]}.txt").write_text(row.split(" ", 1)[1] + "\n", "ascii")
    (folder / "classes.txt").write_text("no boxes", "ascii")
    check(draw(4, "--tracks", folder, "--classes", names, script) == wanted, "a folder of YOLO's")


def test_what_is_left_out():
    pathlib.Path("box.txt").write_text(
        "tracks fill box.left box.top box.right box.bottom white\n", "ascii")
    rows = "1,1,8,4,16,8\nnonsense,,,,,\n4,1,8,4,16,8\n2,1,0,0,60,40\n"
    with writer("pipe", lambda pipe: pipe.write(rows)) as pipe:
        drawn = draw(4, "--tracks", pipe, "box.txt", status=1, message="pipe:2: bad frame 'nonsense'")
    check([bool(drawn[i * SIZE:(i + 1) * SIZE].strip(b"\0")) for i in range(4)] ==
          [True, False, False, True], "a wrong row or a late one takes others with it")
    draw(1, "--tracks", "tracks.mot", "--latest", "box.txt", status=2, message="through a pipe")


# ---- a detector that sees a frame before it says what is in it ----
def test_detector_needs_the_frame():
    """It gets each frame after orn-overlay, and says which columns to draw: its own bytes."""
    count, delay = 200, 3
    os.mkfifo("boxes")
    process = start(*RAW, "--tracks", "boxes", "--tracks-delay", delay, "box.txt")
    frames = []

    def read():
        while len(frame := process.stdout.read(SIZE)) == SIZE:
            frames.append(frame)
    reader = threading.Thread(target=read, daemon=True)
    reader.start()
    with open("boxes", "w", encoding="ascii") as boxes:
        for number in range(count):
            process.stdin.write(BLANK)
            process.stdin.flush()
            boxes.write(json.dumps({"frame": number + 1, "boxes": [
                {"box": [0, 0, 1 + number % 50, 2]}]}) + "\n")
            boxes.flush()
        process.stdin.close()
    reader.join(30)
    process.wait(30)
    os.remove("boxes")
    check([len(ink(frame, 0)) for frame in frames] == [1 + n % 50 for n in range(count)],
          f"a detector's frames: {len(frames)}, {process.stderr.read()}")


def test_latest():
    os.mkfifo("boxes")
    process = start(*RAW, "--tracks", "boxes", "--latest", "box.txt")
    shown = []

    def frame():
        process.stdin.write(BLANK)
        process.stdin.flush()
        shown.append(len(ink(process.stdout.read(SIZE), 0)))
    frame()  # nothing was said yet, and nothing is waited for
    for numbers in ((7, 9), (900, 30)), ((1, 12),):  # the detector is started again
        with open("boxes", "w", encoding="ascii") as boxes:
            for number, width in numbers:
                boxes.write(f"{number},1,0,0,{width},2\n")
                boxes.flush()
                deadline = time.monotonic() + 10
                while shown[-1] != width and time.monotonic() < deadline:
                    frame()
                frame()
    process.stdin.close()
    process.wait(30)
    os.remove("boxes")
    check(shown[0] == 0 and [w for i, w in enumerate(shown[1:]) if w != shown[i]] == [9, 30, 12],
          f"--latest: {shown[:9]} ... {shown[-9:]}")


def test_tracks_beside_a_clip():
    """A clip leaves standard input to the tracks, whole or arriving."""
    if subprocess.run([overlay, "-i", "x", "-o", "y.mkv", "/dev/null"], capture_output=True,
                      check=False).stderr.find(b"VIDEO=OFF") >= 0:
        return
    subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"color=black:s={WIDTH}x{HEIGHT}",
                    "-frames:v", "9", "-pix_fmt", "yuv420p", "clip.y4m"], check=True)
    film = [overlay, "-i", "clip.y4m", "-o", "-", "--tracks", "-", "--tracks-delay", "2", "box.txt"]
    whole = subprocess.run(film, stdin=open("tracks.mot", "rb"), capture_output=True, check=True).stdout
    piped = subprocess.run(film, input=FORMATS["jsonl"].encode(), capture_output=True, check=True).stdout
    check(whole == piped and len(whole) > 9 * SIZE, "tracks on standard input")


# ---- control lines and scripts ----
def test_control():
    lines = ["set a * fill 0 0 9 2 white", "set b * fill 0 4 9 6 white", "clear b",
             "set a * fill 0 0 5 2 white", "set a * blob", "clear c", "jump", "set", "set a",
             "clear a b", "x" * 70000, "set " + "n" * 65 + " * fill 0 0 9 2 red",
             "set f font \"x.cbf\"", "set d * fill box.left 0 1 1 red"]
    pathlib.Path("lines").write_text("\r\n".join(lines), "ascii")
    done = subprocess.run([overlay, *RAW, "--control", "lines"], input=BLANK, capture_output=True,
                          check=False, timeout=20)
    said = done.stderr.decode()
    check(done.returncode == 0 and (len(ink(done.stdout, 0)), len(ink(done.stdout, 4))) == (5, 0),
          f"control lines: {said}")
    for line, reason in ((5, "unknown command 'blob'"), (6, "there is no 'c'"), (7, "unknown command"),
                         (8, "expected a name"), (9, "expected a line"), (10, "unexpected 'b'"),
                         (11, "more than 65536 bytes"), (12, "more than 64 bytes"),
                         (13, "stands in a script only"), (14, "begin with 'tracks'")):
        check(any(text.startswith(f"orn-overlay: lines:{line}:") and reason in text
                  for text in said.splitlines()), f"line {line}: no '{reason}': {said}")


def replace(path, text):
    pathlib.Path(f"{path}.new").write_text(text, "ascii")
    os.replace(f"{path}.new", path)


def resident(process):
    with contextlib.suppress(OSError):  # it may have ended
        for line in pathlib.Path(f"/proc/{process.pid}/status").read_text("ascii").splitlines():
            if line.startswith("VmRSS:"):
                return int(line.split()[1])
    return 0


def test_everything_at_once():
    """Tracks, control lines, files of text and scripts, right and wrong, while frames flow."""
    os.mkfifo("tracks")
    os.mkfifo("control")
    replace("script.txt", "* fill 0 10 1 12 white\ntracks fill 0 0 box.right 2 white\n")
    process = start(*RAW, "--tracks", "tracks", "--control", "control", "--watch", "script.txt")
    end = time.monotonic() + seconds
    sent, frames, sizes, done = [0], [0], [], threading.Event()

    def send_frames():
        with contextlib.suppress(BrokenPipeError):
            while time.monotonic() < end:
                process.stdin.write(BLANK * 16)
                sent[0] += 16
        done.set()
        process.stdin.close()

    def send_tracks():
        with contextlib.suppress(BrokenPipeError), open("tracks", "w", encoding="ascii") as pipe:
            number = 0
            while not done.is_set() or number < sent[0]:
                number += 1
                pipe.write(f'{{"frame": {number}, "boxes": [{{"id": {number % 9}, '
                           f'"box": [0, 0, {1 + number % 60}, 2]}}]}}\n')

    def send_lines():
        with open("control", "w", encoding="ascii") as pipe:
            value = 0
            while not done.is_set():
                value += 1
                pipe.write(f"set bar * fill 0 20 {1 + value % 60} 22 white\nset bar * wrong\n"
                           f"set other{value % 50} * fill 0 30 1 32 white\nclear other{value % 50}\n")
                pipe.flush()
                time.sleep(0.01)

    def send_scripts():
        version = 1
        while not frames[0] and not done.is_set():
            time.sleep(0.01)
        while not done.is_set():
            version = version % 60 + 1
            replace("script.txt", f"* fill 0 10 {version} 12 white\n"
                                  "tracks fill 0 0 box.right 2 white\n")
            time.sleep(0.02)
            replace("script.txt", "* fill 0 10 63 12 white\n* nonsense\n")
            time.sleep(0.02)
            if version % 10 == 0:
                process.send_signal(signal.SIGHUP)
            sizes.append(resident(process))

    said = []
    threads = [threading.Thread(target=task, daemon=True) for task in
               (send_frames, send_tracks, send_lines, send_scripts,
                lambda: said.extend(process.stderr.read().splitlines()))]
    for thread in threads:
        thread.start()
    bars, versions = set(), set()
    while len(frame := process.stdout.read(SIZE)) == SIZE:
        frames[0] += 1
        check(len(ink(frame, 0)) == 1 + frames[0] % 60, f"frame {frames[0]} has another's box")
        bars.add(len(ink(frame, 20)))
        versions.add(len(ink(frame, 10)))
        if failures:
            process.kill()
    for thread in threads:
        thread.join(30)
    status = process.wait(30)
    check(status == 0 and frames[0] == sent[0], f"exit {status}, {frames[0]} of {sent[0]}: {said[:3]}")
    check(63 not in versions and len(versions) > min(seconds, 50), f"{len(versions)} scripts, or a wrong one")
    check(len(bars) > min(seconds, 50), f"{len(bars)} control lines were seen")
    check(any(b"unknown command 'wrong'" in line for line in said) and
          any(b"script before is kept" in line for line in said), f"told: {said[:5]}")
    early = max(sizes[:len(sizes) // 2], default=0)
    late = max(sizes[len(sizes) // 2:], default=0)
    # Which takes some seconds to fill what it keeps, and longer with a sanitizer.
    check(seconds < 10 or late <= early + 1024, f"memory grows from {early} to {late} KB")
    print(f"{frames[0]} frames in {seconds:.0f} s, {len(versions)} scripts and {len(bars)} control "
          f"lines seen, {early} KB, then {late} KB")


with tempfile.TemporaryDirectory() as work:
    os.chdir(work)
    for test in (test_formats, test_what_is_left_out, test_detector_needs_the_frame, test_latest,
                 test_tracks_beside_a_clip, test_control, test_everything_at_once):
        test()
for failure in failures[:20]:
    print("FAILED:", failure, file=sys.stderr)
sys.exit(bool(failures))
