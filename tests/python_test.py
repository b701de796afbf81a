#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The Python package draws what orn-overlay draws, byte for byte, and refuses what it can't draw into:
python_test.py CBFCONV ORN_OVERLAY LIBRARY SOURCE. Takes NumPy, PyAV, GStreamer's bindings and mypy."""
import contextlib
import ctypes
import gc
import itertools
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import threading
import unittest

import av
import numpy

CBFCONV, ORN_OVERLAY, LIBRARY, SOURCE = (pathlib.Path(argument).resolve() for argument in sys.argv[1:5])
PACKAGE = SOURCE / "python"
TTF = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"
sys.path.insert(0, str(PACKAGE))
import orn_min_render
from orn_min_render import Context, Font, Frame, draw_detections

INF, NAN = float("inf"), float("nan")
FAR = 2**31 - 1
draw = Context()


def noise(length):
    return bytearray(itertools.islice(itertools.cycle(bytes(range(30, 220, 7)) + b"\x80\x17"), length))


def length_of(width, height, chroma):
    return width * height + (width + 1) // 2 * 2 * ((height + 1) // 2) * chroma


def overlay(script, data, width, height, *options):
    with open("script", "w", encoding="utf-8") as file:
        file.write(script)
    return subprocess.run([ORN_OVERLAY, f"--size={width}x{height}", "--font=sans-12.cbf", *options, "script"],
                          input=data, capture_output=True, check=True).stdout


class SameBytes(unittest.TestCase):
    """As orn-overlay, and so as the C library and the GStreamer element."""
    SIZE = 96, 72
    POINTS = [(5, 50), (40, 64), (70, 20), (2**30, -9)]
    # A line of a script, and the calls that draw the same.
    LINES = [
        ("hline 4 80 7 cyan dashed", lambda f: draw.draw_hline(f, 4, 80, 7, "cyan", dashed=True)),
        ("hline -9 2147483647 70 red", lambda f: draw.draw_hline(f, x0=-9, x1=FAR, y=70, colour="red")),
        ("vline 9 3 60 #ABCdef dashed", lambda f: draw.draw_vline(f, 9, 3, 60, (0xab, 0xcd, 0xef), dashed=True)),
        ("line -5 3 90 200 pink", lambda f: draw.draw_line(f, (-5, 3), (90, 200), "pink")),
        ("box 3 3 60 40 orange dashed", lambda f: draw.draw_frame(f, (3, 3, 60, 40), "orange", dashed=True)),
        ("fill 61 50 20 71 purple", lambda f: draw.fill_rect(f, numpy.array([61, 50, 20, 71]), "purple")),
        ("polygon green 5,50 40,64 70,20 1073741824,-9",
         lambda f: draw.fill_polygon(f, SameBytes.POINTS, "green")),
        ("ellipse 1 1 50 30 white", lambda f: draw.draw_ellipse(f, (1, 1, 50, 30), "white")),
        ("disc 33 30 94 71 brown", lambda f: draw.fill_ellipse(f, (33, 30, 94, 71), "brown")),
        ("roundbox 4 4 43 33 8 6 blue", lambda f: draw.draw_round_rect(f, (4, 4, 43, 33), (8, 6), "blue")),
        ("roundfill 4 4 43 33 8 6 gray", lambda f: draw.fill_round_rect(f, (4, 4, 43, 33), (8, 6), "gray")),
        ('bitmap 30 8 75 40 red "b.pbm"', lambda f: draw.draw_bitmap(
            f, (30, 8, 75, 40), 3, 2, [5 << 29, 3 << 29], "red")),
        ('bitmap 30 8 75 40 red half "b.pbm"', lambda f: draw.draw_bitmap(
            f, (30, 8, 75, 40), 3, 2, numpy.array([5 << 29, 3 << 29], "u4").tobytes(), "red",
            semi_transparent=True)),
        ('text 5 30 yellow "Zoë"', lambda f: draw.draw_text(f, "Zoë", (5, 30), "yellow", font=font())),
        ('outlined 5 30 white black down "Zo\\në"', lambda f: draw.draw_outline_text(
            f, "Zo\në", (5, 30), "white", font=font("down"))),
        ("copy 2 2 34 22 50 40", lambda f: copied(f, (2, 2, 34, 22), (50, 40))),
        ("box 3 5 90 60 #ffb000\n* label 3 5 black #ffb000 bottom \"dog 1\"\n",
         lambda f: draw_detections(f, [(3, 4.6, 90.5, 61.4)], ["dog 1"], font=font())),
        ("box -30 40 39 140 red\n* box 79 65 98 99 blue\n* label -30 40 black red bottom \"7\"\n"
         "* label 79 65 white blue bottom \"8\"",
         lambda f: draw_detections(f, numpy.array([[-30, 40, 40, 141], [79, 65, 99, 100]], "f4"), ids=[7, 8],
                                   colours=["red", (0, 0, 255)], font=font()))]

    def test_every_call(self):
        width, height = self.SIZE
        pathlib.Path("b.pbm").write_text("P1 3 2 1 0 1 0 1 1", encoding="ascii")
        for layout, space in itertools.product(("nv12", "y8"), (("full", "bt601"), ("limited", "bt709"))):
            make = Frame.nv12 if layout == "nv12" else Frame.gray
            given = noise(length_of(width, height, layout == "nv12"))
            for line, call in self.LINES:
                # There orn-overlay draws as with chroma, and the library doesn't.
                if layout == "y8" and "dashed" in line:
                    continue
                with self.subTest(line=line, layout=layout, space=space):
                    drawn = bytearray(given)
                    with make(drawn, width, height, range=space[0], matrix=space[1]) as frame:
                        call(frame)
                    self.assertEqual(drawn, overlay("* " + line, given, width, height, "--format", layout,
                                                    "--range", space[0], "--matrix", space[1]))
                    self.assertNotEqual(drawn, given)

    def test_colours_are_orn_overlays(self):
        """By name, and of ids."""
        names, count = orn_min_render._colour.NAMES, 30
        boxes = [(3 * n, 2, 3 * n + 3, 20) for n in range(count)]
        with open("boxes.csv", "w", encoding="ascii") as file:
            file.writelines(f"1,{n + 1},{3 * n},2,3,18,1\n" for n in range(count))
        script = "".join(f"* fill {n} 30 {n + 1} 40 {name}\n" for n, name in enumerate(names))
        given = noise(length_of(96, 72, True))
        drawn = bytearray(given)
        with Frame.nv12(drawn, 96, 72) as frame:
            for n, name in enumerate(names):
                draw.fill_rect(frame, (n, 30, n + 1, 40), name)
            draw_detections(frame, boxes, [""] * count, range(1, count + 1))
        script += "tracks box box.left box.top box.right-1 box.bottom-1 id\n"
        self.assertEqual(drawn, overlay(script, given, 96, 72, "--tracks=boxes.csv"))

    def test_text_is_measured_and_fitted(self):
        text = "one two three four"
        left, top, right, bottom = draw.text_rect(text, font=font(), pen=(50, 20))
        buffer = bytearray(300 * 40)
        pen = draw.draw_text(Frame.gray(buffer, 300, 40), text, (50, 20), 255, font=font())
        rows, columns = numpy.nonzero(numpy.frombuffer(buffer, "u1").reshape(40, 300))
        self.assertEqual((rows.min(), rows.max() + 1, columns.max() + 1), (top, bottom, right))
        self.assertTrue(left == 50 and pen[1] == 20 and right - 2 < pen[0] < right + 5)
        self.assertEqual(draw.fix_text_width(text, 60, font=font()), "one two \n- three \n- four")
        self.assertEqual(draw.fix_text_width("", 60, font=font()), "")

    def test_building_blocks(self):
        buffer, wanted = bytearray(96 * 108), bytearray(96 * 108)
        luma, chroma = (numpy.frombuffer(wanted, "u1")[:96 * 72].reshape(72, 96),
                        numpy.frombuffer(wanted, "u1")[96 * 72:].reshape(36, 48, 2))
        red = orn_min_render.rgb_to_yuv((255, 0, 0))
        self.assertLess(max(abs(a - b) for a, b in zip(orn_min_render.yuv_to_rgb(red), (255, 0, 0))), 3)
        luma[3, 5], chroma[35, 47], luma[7, 2:9], chroma[2, 3:5] = 9, red[1:], 8, red[1:]
        luma[20:30, 10:30], chroma[20:26, 15:31], luma[50:52, 40:43] = 7, red[1:], [[6, 0, 6], [0, 6, 0]]
        with Frame.nv12(buffer, 96, 72) as frame:
            draw.set_luma(frame, 5, 3, 9)
            draw.set_chroma(frame, 47, 35, "red")
            draw.draw_luma_spans(frame, [(2, 9, 7), (4, 4, 0)], 8)
            draw.draw_chroma_spans(frame, [(3, 5, 2)], "red")
            draw.fill_luma(frame, (10, 20, 30, 30), 7)
            draw.fill_chroma(frame, (31, 41, 61, 51), "red")
            draw.text_bitmap(frame, (3, 2, 0, 2), [5, 2], (40, 52), 6)
        self.assertEqual(buffer, wanted)


def copied(frame, rect, position):
    """From another frame of the same pixels."""
    data = noise(length_of(96, 72, frame.has_chroma))
    with (Frame.nv12 if frame.has_chroma else Frame.gray)(data, 96, 72) as source:
        draw.blit(frame, rect, source, position)


def font(direction="normal"):
    return Font("sans-12.cbf", direction=direction)


class Buffers(unittest.TestCase):
    def test_layouts_of_memory(self):
        """Each draws the same pixels, and nothing between the rows."""
        wanted = noise(66 * 41)
        with Frame.nv12(wanted, 65, 27) as frame:
            self.paint(frame)
        luma, chroma = (numpy.frombuffer(wanted, "u1").reshape(-1, 66)[part] for part in
                        (slice(27), slice(27, None)))
        for name, planes in self.layouts().items():
            with self.subTest(name):
                with Frame.planes(*planes[:2], 65, 27, *planes[2:]) as frame:
                    self.paint(frame)
                rows = [numpy.lib.stride_tricks.as_strided(
                    numpy.frombuffer(plane, "u1") if isinstance(plane, bytearray) else plane,
                    (count, width), (stride, 1)) for plane, count, width, stride in
                    zip(planes, (27, 14), (65, 66), planes[2:] or (plane.strides[0] for plane in planes))]
                self.assertTrue((rows[0] == luma[:, :65]).all() and (rows[1] == chroma).all())
        self.assertEqual(self.outside(), self.gaps)

    def layouts(self):
        data = noise(66 * 41)
        y, uv = (numpy.frombuffer(data, "u1").reshape(-1, 66)[part] for part in (slice(27), slice(27, None)))
        self.wide = numpy.full((41, 90), 0x5a, "u1")
        self.wide[:27, 7:72], self.wide[27:, 7:73] = y[:, :65], uv
        self.gaps = self.outside()
        uneven = bytearray(70 * 27), bytearray(80 * 14)
        for plane, rows, stride in (uneven[0], y[:, :65], 70), (uneven[1], uv, 80):
            numpy.frombuffer(plane, "u1").reshape(-1, stride)[:, :rows.shape[1]] = rows
        return {"one array, rows apart": (self.wide[:27, 7:], self.wide[27:, 7:]),
                "three dimensions": (y.copy(), uv.copy().reshape(14, 33, 2)),
                "other strides": (*uneven, 70, 80)}

    def outside(self):
        return self.wide[:, :7].tobytes() + self.wide[:27, 72:].tobytes() + self.wide[27:, 73:].tobytes()

    def paint(self, frame):
        draw.fill_rect(frame, (-5, -5, 99, 9), "red")
        draw.draw_line(frame, (0, 0), (64, 26), "#40ff80")
        draw_detections(frame, [(7, 12, 60, 26)], ["x"], font=font())

    def test_memory_of_ctypes_and_pyav(self):
        """The planes of PyAV tell their stride themselves."""
        plane = av.VideoFrame(65, 27, "gray").planes[0]
        for memory, stride in (((ctypes.c_uint8 * 65 * 27)(), 65), (ctypes.create_string_buffer(65 * 27), 65),
                               (plane, plane.line_size)):
            rows = numpy.frombuffer(memory, "u1").reshape(-1, stride)
            rows[:], wanted = 0, numpy.zeros_like(rows)
            wanted[20:27, 60:65] = 200
            draw.fill_rect(Frame.gray(memory, 65, 27), (60, 20, 65, 27), 200)
            self.assertTrue((rows == wanted).all(), type(memory))

    def test_refused(self):
        full, flat = numpy.zeros((36, 32), "u1"), bytearray(32 * 36)
        released = memoryview(bytearray(32 * 36))
        released.release()
        read_only = full.copy()
        read_only.flags.writeable = False
        for error, buffer, *arguments in (
                (BufferError, bytes(flat), 32, 24), (BufferError, read_only, 32, 24),
                (BufferError, "text".encode(), 1, 1), (TypeError, "text", 32, 24), (TypeError, None, 32, 24),
                (TypeError, full.astype("u2"), 32, 24), (TypeError, full.astype("f4"), 32, 24),
                (ValueError, released, 32, 24), (ValueError, flat[:-1], 32, 24), (ValueError, bytearray(), 1, 1),
                (BufferError, full[:, ::2], 16, 24), (BufferError, full[:, ::-1], 32, 24),
                (BufferError, memoryview(flat)[::2], 16, 24), (BufferError, full.T, 36, 20),
                (BufferError, numpy.zeros((), "u1"), 1, 1), (ValueError, flat, 32, 24, -32),
                (ValueError, flat, 32, 24, 30), (ValueError, flat, 32, 24, 34), (ValueError, flat, 32, 20, 33),
                (ValueError, flat, 32, 24, 2**70), (ValueError, full[:, :16], 16, 24, 16),
                (ValueError, flat, 0, 24), (ValueError, flat, 32, -24), (ValueError, flat, 2**31, 1),
                (ValueError, flat, 2**64 + 32, 24), (TypeError, flat, 32.0, 24), (TypeError, flat, 32, 24, "32")):
            with self.subTest(buffer=type(buffer), arguments=arguments), self.assertRaises(error):
                Frame.nv12(buffer, *arguments)
        for wrong in {"range": "tv"}, {"matrix": "bt2020"}:
            self.assertRaises(ValueError, Frame.gray, flat, 32, 24, **wrong)
        self.assertRaises(ValueError, Frame.planes, flat, flat, 31, 24, 32, 33)

    def test_memory_stays_while_it_is_drawn_into(self):
        buffer = bytearray(32 * 36)
        view = memoryview(buffer)
        frame = Frame.nv12(view, 32, 24)
        for error, change in ((BufferError, lambda: buffer.extend(b"more")), (BufferError, view.release),
                              (AttributeError, lambda: setattr(frame, "width", 99))):
            self.assertRaises(error, change)
        with frame:
            draw.fill_rect(frame, (0, 0, 9, 9), 200)
        view.release()
        buffer.extend(b"more")
        for use in (lambda: draw.fill_rect(frame, (0, 0, 9, 9), 200), lambda: draw_detections(frame, []),
                    lambda: draw.blit(Frame.gray(bytearray(9), 3, 3), (0, 0, 3, 3), frame)):
            self.assertRaises(ValueError, use)
        frame = Frame.gray(numpy.zeros((2000, 2000), "u1"), 2000, 2000)  # nobody else holds this array
        gc.collect()
        draw.fill_rect(frame, (0, 0, 2000, 2000), 9)
        draw.set_luma(frame, 1999, 1999, 8)


class Arguments(unittest.TestCase):
    def setUp(self):
        self.buffer = noise(32 * 36)
        self.frame = Frame.nv12(self.buffer, 32, 24)

    def test_refused_before_anything_is_drawn(self):
        frame, box, given = self.frame, (1, 1, 20, 20), bytes(self.buffer)
        gray, closed = Frame.gray(bytearray(9), 3, 3), Context()
        closed.close()
        for error, call in (
                (OverflowError, lambda: draw.draw_frame(frame, (0, 0, 2**31, 5), "red")),
                (OverflowError, lambda: draw.fill_polygon(frame, [(0, 0), (9, 9), (2**40, 0)], "red")),
                (OverflowError, lambda: draw.draw_text(frame, "a", (2**31, 9), "red", font=font())),
                (OverflowError, lambda: draw.draw_bitmap(frame, box, 1, 1, [2**32], 9)),
                (TypeError, lambda: draw.draw_frame(frame, (0, 0, 9.5, 5), "red")),
                (TypeError, lambda: draw.draw_frame(frame, (0, 0, NAN, 5), "red")),
                (ValueError, lambda: draw.fill_rect(frame, (1, 2, 3), "red")),
                (ValueError, lambda: draw.fill_rect(frame, box, "reddish")),
                (ValueError, lambda: draw.fill_rect(frame, box, (1, 2, 256))),
                (ValueError, lambda: draw.fill_rect(frame, box, 256)),
                (ValueError, lambda: draw.draw_text(frame, "a\0b", (9, 9), "red", font=font())),
                (ValueError, lambda: draw.draw_bitmap(frame, box, 33, 2, [1, 2, 3], "red")),
                (ValueError, lambda: draw.blit(frame, box, frame)),
                (ValueError, lambda: draw.set_chroma(gray, 0, 0, "red")),
                (ValueError, lambda: closed.draw_frame(frame, box, "red")),
                (IndexError, lambda: draw.set_luma(frame, 32, 0, 1)),
                (IndexError, lambda: draw.set_chroma(frame, 15, 12, 1)),
                (IndexError, lambda: draw.draw_chroma_spans(frame, [(0, 1, 12)], 1)),
                (IndexError, lambda: draw.fill_luma(frame, (0, 0, 33, 5), 1)),
                (ValueError, lambda: draw_detections(frame, [box], ["a", "b"], font=font())),
                (ValueError, lambda: draw_detections(frame, [box, box], colours=["red"])),
                (ValueError, lambda: draw_detections(frame, numpy.zeros(4))),
                (TypeError, lambda: draw_detections(frame, [box], [7], font=font()))):
            with self.subTest(call.__code__.co_firstlineno), self.assertRaises(error):
                call()
            self.assertEqual(self.buffer, given)

    def test_odd_detections(self):
        """Each is drawn as its neighbour in the table, or as nothing."""
        usual = (3, 4, 20, 18)
        for odd, even, labels in (
                ([(3.4999, 4, 19.5, 18.4)], [usual], ["a"]), ([(20, 18, 3, 4)], [usual], ["a"]),
                ([(3, 4, 20, NAN)], [], ["a"]), ([(NAN,) * 4, usual], [usual], ["a", "b"]),
                ([(-INF, -INF, INF, INF)], [(-99, -99, 99, 99)], ["a"]),
                ([(-1e300, 4, 10**400, 18)], [(-99, 4, 99, 18)], ["a"]), ([(3, 4, INF, 18)], [(3, 4, 99, 18)], ["a"]),
                ([(-INF, 4, -INF, 18)], [], ["a"]), ([(2**31, 4, 2**33, 18)], [], ["a"]),
                ([(-0.5, -0.5, 20, 18)], [(0, 0, 20, 18)], None), ([usual], [usual], [None]),
                (numpy.zeros((0, 4)), [], []), (numpy.array([]), [], None), ((), [], [])):
            with self.subTest(odd=odd):
                results = []
                for xyxy, texts in (odd, labels), (even, (labels or [])[-len(even):] if len(even) else None):
                    buffer = noise(32 * 36)
                    draw_detections(Frame.nv12(buffer, 32, 24), xyxy, texts or None, font=font())
                    results.append(buffer)
                self.assertEqual(*results)


class Fonts(unittest.TestCase):
    def test_found_by_name(self):
        for folder, sizes in {"home": (), "first": (12, 16), "second": (20, 24)}.items():
            for size in sizes:
                path = pathlib.Path(folder, f"orn-min-render/fonts/sans-{size}.cbf")
                path.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy("sans-12.cbf", path)
        here, shared = os.getcwd(), pathlib.Path("second/orn-min-render/fonts")
        shutil.copy("sans-12.cbf", shared / "sans-bold-9.cbf")
        shutil.copy("sans-12.cbf", shared / "sans-x.cbf")
        for home, folders, arguments, name in (
                ("home", "first:second", {}, "first/.*/sans-16"), ("home", "first:second", {"size": 14}, "sans-12"),
                ("home", "first:second", {"size": 14.1}, "sans-16"), ("second", "first", {}, "second/.*/sans-24"),
                ("second", "first", {"size": 1}, "sans-20"), ("home", "first:second", {"source": "sans-bold"}, "-9"),
                ("home", "", {"source": "./sans-12.cbf"}, "sans-12"), ("home", "", {"source": "plain"}, "/plain$")):
            shutil.copy("sans-12.cbf", "plain")
            os.environ.update(XDG_DATA_HOME=f"{here}/{home}",
                              XDG_DATA_DIRS=":".join(f"{here}/{folder}" for folder in folders.split(":")))
            self.assertRegex(Font(**arguments).name, name)
        os.environ.update(XDG_DATA_HOME=f"{here}/home", XDG_DATA_DIRS="first")  # relative: left out
        with self.assertRaisesRegex(FileNotFoundError, f"serif-SIZE.cbf in {here}/home/orn-min-render/fonts"):
            Font("serif")
        self.assertRaisesRegex(ValueError, "own size", Font, "plain", size=9)
        self.assertRaises(FileNotFoundError, Font, "no/such.cbf")
        self.assertRaises(ValueError, Font, b"no font")
        self.assertRaises(ValueError, font, "sideways")
        data = pathlib.Path("sans-12.cbf").read_bytes()
        self.assertEqual(draw.text_rect("x", font=Font(data)), draw.text_rect("x", font=font()))

    def test_threads_draw_at_the_same_time_with_one_font(self):
        buffers = [noise(320 * 360) for _ in range(4)]
        shared, start = font(), threading.Barrier(4)

        def work(buffer):
            start.wait()
            for turn in range(200):
                with Frame.nv12(buffer, 320, 240) as frame:
                    draw.fill_ellipse(frame, (turn, 20, turn + 99, 220), "blue")
                    draw_detections(frame, [(turn, 50, turn + 60, 99)], [f"{turn}"], [turn], font=shared)
        threads = [threading.Thread(target=work, args=(buffer,)) for buffer in buffers]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertTrue(all(buffer == buffers[0] != noise(320 * 360) for buffer in buffers))

    def test_calls_let_other_threads_run(self):
        """A call that waits in the library, for what another thread is going to write."""
        os.mkfifo("fifo")
        load = orn_min_render._library.call("LoadCbfFont", ctypes.c_void_p)
        found = []
        thread = threading.Thread(target=lambda: found.append(load(b"fifo")), daemon=True)
        thread.start()
        os.close(os.open("fifo", os.O_WRONLY))
        thread.join(60)
        self.assertEqual(found, [None])


class Surroundings(unittest.TestCase):
    def python(self, *arguments, **variables):
        return subprocess.run([sys.executable, *arguments], capture_output=True, text=True, check=False,
                              env={"PATH": os.environ["PATH"], "PYTHONPATH": str(PACKAGE), **variables})

    def test_a_library_that_does_not_serve_says_so(self):
        os.mkdir("old")
        subprocess.run(["cc", "-shared", "-o", "old/liborn_min_render.so.1", "-xc", "-"], check=True, text=True,
                       input="void OrnMinRenderCreateContext(void) {} void OrnMinRenderRGB2YUV(void) {}")
        for folder, message in ("", "Install it"), ("old", "old/liborn_min_render.so.1 is of another version"):
            told = self.python("-c", "import orn_min_render", LD_LIBRARY_PATH=folder)
            self.assertRegex(told.stderr, rf"ImportError: .*{message}")

    def test_types(self):
        pathlib.Path("client.py").write_text("""import numpy
from orn_min_render import Context, Font, Frame, draw_detections
frame = Frame.gray(numpy.zeros((3, 3), numpy.uint8), 3, 3)
Context().draw_text(frame, 'x', (1, 2), colour=(1, 2, 3), font=Font('x', size=9))
draw_detections(frame, numpy.zeros((1, 4)), ['x'], numpy.array([1]), ['red', (1, 2, 3)])
draw_detections(frame, [(1.5, 2, 3, 4)], colours=numpy.zeros(3, numpy.uint8))
""", encoding="ascii")
        told = subprocess.run(
            ["/usr/bin/mypy", "--strict", "--cache-dir=cache", "--python-version=3.9", PACKAGE / "orn_min_render",
             "client.py"], capture_output=True, text=True, check=False, env=dict(os.environ, MYPYPATH=str(PACKAGE)))
        self.assertEqual(told.returncode, 0, told.stdout)

    def test_version_is_the_headers(self):
        header = (SOURCE / "include/orn_min_render.h").read_text(encoding="utf-8")
        self.assertEqual(orn_min_render.__version__, ".".join(
            header.split(f"VERSION_{part} ")[1].split()[0] for part in ("MAJOR", "MINOR", "PATCH")))


def main():
    subprocess.run([CBFCONV, "-s12", "-r0x20-0xFF", "-osans-12.cbf", TTF], check=True)
    unittest.main(argv=sys.argv[:1])


with tempfile.TemporaryDirectory() as sandbox, contextlib.chdir(sandbox):
    main()
