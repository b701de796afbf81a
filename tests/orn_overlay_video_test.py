#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""orn-overlay on videos, with ffmpeg: orn_overlay_video_test.py CBFCONV ORN_OVERLAY"""
import concurrent.futures
import json
import os
import pathlib
import resource
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

cbfconv, overlay = (str(pathlib.Path(argument).resolve()) for argument in sys.argv[1:3])
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"
DRAWN_ROWS = 40  # what the scripts here draw lies above
failures = []


def check(condition, message):
    if not condition:
        failures.append(message)


def run(*command, data=None, **options):
    return subprocess.run([str(part) for part in command], input=data, capture_output=True,
                          check=False, timeout=50, **options)


def ffmpeg(*arguments):
    done = run("ffmpeg", "-v", "error", "-nostdin", "-y", *arguments)
    assert done.returncode == 0, f"{arguments}: {done.stderr}"
    return done.stdout


def draw(*arguments, status=0, message="", **options):
    done = run(overlay, "--font", "sans.cbf", *arguments, **options)
    said = done.stderr.decode(errors="replace")
    check(done.returncode == status, f"exit {done.returncode} instead of {status}: {arguments}: {said}")
    check(message in said if message else not said, f"no '{message}' in: {arguments}: {said}")
    return done.stdout


def source(size="320x240", rate=25, seconds=1):
    return ["-f", "lavfi", "-i", f"testsrc2=size={size}:rate={rate}:duration={seconds}"]


TONE = ["-f", "lavfi", "-i", "sine=duration=1"]
TITLES = ["-i", "titles.srt", "-i", "chapters.txt", "-map", "0:v", "-map", "1:a", "-map", "2:s",
          "-map_chapters", "3", "-map_metadata", "3"]
X264 = ["-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p"]
# The arguments that make a clip, and what is told of it.
CLIPS = {
    "stream.ts": [[*source(), *TONE, *X264, "-c:a", "mp2"], ""],
    "upright.mp4": [[*source(), *X264], ""],
    "rotated.mp4": [["-i", "upright.mp4", "-c", "copy", "-metadata:s:v", "rotate=90"], ""],
    "variable.mp4": [[*source(), "-vf", "select='mod(n*n,7)'", "-vsync", "vfr", *X264], ""],
    "ten_bits.mkv": [[*source(), "-c:v", "ffv1", "-pix_fmt", "yuv422p10le"], "10 bits a sample"],
    "odd.mkv": [[*source("322x244"), *TONE, "-vf", "crop=321:243:0:0:exact=1", "-c:v", "ffv1",
                 "-pix_fmt", "yuv420p"], ""],
    "sound.mkv": [[*source(), *TONE, *TITLES, *X264, "-bf", "2"], ""],
    "programme.mpg": [[*source(), *TONE, "-c:v", "mpeg2video", "-c:a", "mp2"], ""],
    "large.mp4": [[*source("3840x2160", 25, 0.2), *X264], ""],
    "short.mp4": [[*source("320x240", 25, 0.04), *X264], ""],
}


def probe(clip, entries, *options):
    return json.loads(run("ffprobe", "-v", "error", "-show_entries", entries, *options, "-of",
                          "json", clip).stdout or "{}")


# None where the clip tells no time.
def times(clip):
    frames = probe(clip, "frame=best_effort_timestamp_time", "-select_streams", "v:0")
    return [float(time) if time else None for time in
            (frame.get("best_effort_timestamp_time") for frame in frames.get("frames", []))]


def pixels(clip):
    return ffmpeg("-i", clip, "-map", "0:v:0", "-vsync", "passthrough", "-f", "rawvideo",
                  "-pix_fmt", "nv12", "-")


def clock(seconds):
    tenths = int(seconds * 10 + 1e-6)
    return f"00:00:{tenths // 10:02d}.{tenths % 10}"


def packets(clip, kind):
    return ffmpeg("-i", clip, "-map", f"0:{kind}", "-c", "copy", "-f", "hash", "-")


# The lossless film against what the pipe of raw frames makes of the same ones, with the times that
# were in the clip.
def check_clip(clip, note):
    film = f"{clip}.film.mkv"
    pathlib.Path(f"{clip}.txt").write_text("* label 8 8 white #c02020 \"{frame} {time}\"\n")
    draw("-i", clip, "-o", film, "--encoder", "ffv1", f"{clip}.txt", message=note)
    before, after = times(clip), times(film)
    check(len(before) == len(after) and all(b is None or abs(a - b) < 0.0011
                                            for a, b in zip(after, before)),
          f"{clip}: frames are shown at {after} instead of {before}")
    before = [a if b is None else b for a, b in zip(after, before)]
    stream = probe(film, "stream=width,height", "-select_streams", "v:0")["streams"][0]
    width, height = stream["width"], stream["height"]
    pathlib.Path(f"{clip}.raw.txt").write_text("".join(
        f"{n} label 8 8 white #c02020 \"{n} {clock(t - before[0])}\"\n" for n, t in enumerate(before)))
    unchanged = pixels(clip)
    matrix = "bt709" if height >= 720 else "bt601"
    expected = draw("--size", f"{width}x{height}", "--range", "limited", "--matrix", matrix,
                    f"{clip}.raw.txt", data=unchanged)
    drawn = pixels(film)
    check(drawn == expected, f"{clip}: other frames than those of the raw pipe")
    luma, stride = width * height, (width + 1) // 2 * 2
    size = luma + stride * ((height + 1) // 2)
    check(all(drawn[at + DRAWN_ROWS * width:at + luma] == unchanged[at + DRAWN_ROWS * width:at + luma]
              and drawn[at + luma + DRAWN_ROWS // 2 * stride:at + size]
              == unchanged[at + luma + DRAWN_ROWS // 2 * stride:at + size]
              for at in range(0, len(drawn), size)), f"{clip}: changes outside the overlays")
    for kind, others in ("a", "odd.mkv sound.mkv stream.ts programme.mpg"), ("s", "sound.mkv"):
        if clip in others:
            check(packets(clip, kind) == packets(film, kind), f"{clip}: other packets of {kind}")
    if clip == "sound.mkv":
        told = "chapter=start_time,end_time:chapter_tags=title:format_tags=title"
        check(probe(clip, told) == probe(film, told), f"{clip}: other chapters or title")


def check_other_ways(script):
    piped = draw("-i", "-", "-o", "-", script,
                 data=ffmpeg("-i", "upright.mp4", "-f", "yuv4mpegpipe", "-"))
    pathlib.Path("piped.y4m").write_bytes(piped)
    draw("-i", "upright.mp4", "-o", "film.yuv", script)
    check(pixels("piped.y4m") == pathlib.Path("film.yuv").read_bytes(), "Y4M is another film")
    draw("-i", "variable.mp4", "-o", "film.mp4", "--encoder-options", "preset=ultrafast", script)
    check(times("film.mp4") == times("variable.mp4"), "H.264: other times")
    draw("-i", "upright.mp4", "-o", "film.avi", "--encoder", "mpeg2video", script)
    check(len(times("film.avi")) == 25, "MPEG-2: another number of frames")
    for moment in "12", "0.48s", "0:0.5":
        draw("-i", "upright.mp4", "--frame", moment, "-o", f"{moment}.png", script)
    check(len({pathlib.Path(f"{m}.png").read_bytes() for m in ("12", "0.48s", "0:0.5")}) == 1,
          "--frame shows another frame by its time")
    shown = ffmpeg("-i", "12.png", "-f", "rawvideo", "-pix_fmt", "rgb24", "-")
    frame = ffmpeg("-i", "piped.y4m", "-vf", "select=eq(n\\,12)", "-vframes", "1", "-f", "rawvideo",
                   "-pix_fmt", "rgb24", "-")
    check(sum(abs(a - b) for a, b in zip(shown, frame)) < 3 * len(frame), "--frame: another picture")
    draw("-i", "upright.mp4", "--sheet", "4x3", "-o", "sheet.png", script)
    check(probe("sheet.png", "stream=width,height")["streams"][0] == {"width": 1280, "height": 720},
          "--sheet has another size")


def check_refused(script):
    pathlib.Path("text.mp4").write_text("no video\n")
    ffmpeg(*TONE, "audio.m4a")
    whole = pathlib.Path("large.mp4").read_bytes()
    pathlib.Path("headless.mp4").write_bytes(whole[:len(whole) // 2])
    ffmpeg("-i", "sound.mkv", "-map", "0:v", "-c", "copy", "-movflags", "faststart", "cut.mp4")
    for name in "cut.mp4", "sound.mkv":
        whole = pathlib.Path(name).read_bytes()
        pathlib.Path(f"cut-{name}").write_bytes(whole[:len(whole) // 3])
    table = """
1|-i audio.m4a -o x.mp4|audio.m4a: has no video
1|-i text.mp4 -o x.mp4|text.mp4: can't be opened as a video
1|-i headless.mp4 -o x.mp4|headless.mp4: can't be opened
1|-i cut-cut.mp4 -o x.mp4|cut-cut.mp4: at 00:00:00.
2|-i upright.mp4 -o upright.mp4|upright.mp4: is read, and would be overwritten
2|-i upright.mp4 -o x.film|should end as a video's does
2|-i upright.mp4 -o x.png|--frame or --sheet
2|-i upright.mp4|-o
2|-i upright.mp4 -o x.mp4 --stride 320|raw frames
2|-i upright.mp4 -o x.mp4 --encoder blob|'blob'
2|-i upright.mp4 -o x.webm --encoder ffv1|can't hold
2|-i upright.mp4 -o x.mp4 --encoder-options blob=1|'blob'
1|-i odd.mkv -o x.mkv|libx264 takes no odd size such as 321 x 243
1|-i upright.mp4 -o nowhere/x.mp4|nowhere/x.mp4: No such file
1|-i upright.mp4 --frame 25 -o x.png|upright.mp4: ends with frame 24
2|-i upright.mp4 --frame soon -o x.png|'soon'
"""
    for row in table.strip().splitlines():
        status, arguments, message = row.split("|")
        draw(*arguments.split(), script, status=int(status), message=message)
    draw("-i", "cut-cut.mp4", "-o", "kept.mp4", "--keep-partial", script, status=1, message="at 00:")
    check(0 < len(times("kept.mp4")) < 25, "--keep-partial: not a shorter film")

    def no_room():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (100000, 100000))

    draw("-i", "large.mp4", "-o", "x.mkv", script, status=1, message="x.mkv: File too large",
         preexec_fn=no_room)


def check_interrupts(script):
    clip = pathlib.Path("stream.ts").read_bytes()
    for keeps in [], ["--keep-partial"]:
        film = f"interrupted{len(keeps)}.mkv"
        with subprocess.Popen([overlay, "--font", "sans.cbf", "-i", "-", "-o", film, *keeps, script],
                              stdin=subprocess.PIPE, stderr=subprocess.DEVNULL) as process:
            process.stdin.write(clip)
            process.stdin.flush()
            time.sleep(1.5)
            process.send_signal(signal.SIGINT)
            process.wait(50)
        check(process.returncode == (0 if keeps else -signal.SIGINT), f"SIGINT: {process.returncode}")
        check(bool(keeps) == pathlib.Path(film).exists(), f"SIGINT: {film}")
    check(len(times(film)) > 10, "SIGINT: the film that is kept lacks frames")


def check_network(script):
    clip = pathlib.Path("stream.ts").read_bytes()
    with socket.create_server(("127.0.0.1", 0)) as server:
        def serve():
            connection = server.accept()[0]
            connection.sendall(clip)
            time.sleep(25)
        threading.Thread(target=serve, daemon=True).start()
        draw("-i", f"tcp://127.0.0.1:{server.getsockname()[1]}", "-o", "x.mkv", script, status=1,
             message="nothing has come for 10 seconds")


def main():
    signal.signal(signal.SIGINT, signal.default_int_handler)  # a shell's background jobs ignore it
    run(cbfconv, "-s", 16, "-o", "sans.cbf", FONT)
    pathlib.Path("titles.srt").write_text("1\n00:00:00,100 --> 00:00:00,900\nHello\n")
    pathlib.Path("chapters.txt").write_text(
        ";FFMETADATA1\ntitle=A test\n[CHAPTER]\nTIMEBASE=1/10\nSTART=0\nEND=5\ntitle=First\n")
    script = "overlays.txt"
    pathlib.Path(script).write_text("* label 8 8 white #c02020 \"{frame} {time}\"\n")
    for clip, (arguments, _) in CLIPS.items():
        ffmpeg(*arguments, clip)
    with concurrent.futures.ThreadPoolExecutor(3) as pool:
        jobs = [pool.submit(check_network, script)]
        jobs += [pool.submit(check_clip, clip, note) for clip, (_, note) in CLIPS.items()]
        jobs += [pool.submit(job, script) for job in (check_other_ways, check_refused, check_interrupts)]
        for job in jobs:
            job.result()
    check(not list(pathlib.Path().glob("*.tmp*")), "temporary files are left")
    check(not list(pathlib.Path().glob("x.*")), "a film is left that was not made")


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    main()
    os.chdir("/")
sys.exit("\n".join(failures) or 0)
