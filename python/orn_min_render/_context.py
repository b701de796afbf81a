# SPDX-License-Identifier: MIT
"""The drawing calls, as methods of a context."""
from __future__ import annotations

import threading
from ctypes import CDLL, byref, c_size_t, c_uint32, c_void_p, string_at
from operator import index
from typing import Any, Iterable, NamedTuple, Optional, Sequence, Union

from ._arguments import byte, encoded, first, int32, ints, numbers, rows, within, words
from ._colour import ColourLike, colour_in
from ._font import Font, font_of, handle_of
from ._frame import Frame, extents_of, images_of, planes_of
from ._library import Call, Handle, Point, Rect, Reference, call

Corners = Iterable[int]
Position = Iterable[int]


class _Pair(NamedTuple):
    """One call for frames of luma alone, and one for frames with chroma."""
    y8: Call
    yuv: Call


def _pair(name: str) -> _Pair:
    return _Pair(call(name + "Y8"), call(name + "YUV420SP"))


def _coloured(name: str) -> _Pair:
    """A call that serves both: it leaves out the plane that isn't there."""
    both = call(name + "YUV420SP")
    return _Pair(both, both)


_create_context = call("CreateContext", c_void_p)
_destroy_context = call("DestroyContext")
_hline, _vline, _line, _frame = map(_pair, ("DrawHLine", "DrawVLine", "DrawLine", "DrawFrame"))
_rect, _polygon, _bitmap = map(_pair, ("FillRect", "FillPolygon", "DrawBitmap"))
_ellipse, _full_ellipse = _coloured("DrawEllipse"), _coloured("FillEllipse")
_round_rect, _full_round_rect = _coloured("DrawRoundRect"), _coloured("FillRoundRect")
_half_bitmap = _coloured("DrawBitmapSemiTransparent")
_blit = call("BltYUV420SP")
_set_luma, _set_chroma = call("SetYPixel"), call("SetUVPixel")
_luma_spans, _chroma_spans = call("DrawScanlinesY8"), call("DrawScanlinesUV")
_fill_luma, _fill_chroma = call("FillRectY8Impl"), call("FillRectUVImpl")
_get_text_rect, _fix_text_width = call("GetTextRect"), call("FixTextWidth", c_void_p)
_text, _outline_text = call("DrawTextY8"), call("DrawOutlineTextY8")
_text_bitmap = call("TextBitmap")
_free = CDLL(None)["free"]


class _OfThread(threading.local):
    """The library's context of one thread: it holds scratch memory of the call."""

    def __init__(self) -> None:
        address = _create_context()
        if not address:
            raise MemoryError("no memory for a context")
        self.handle = Handle(address, _destroy_context)


class Context:
    """All drawing calls. Threads may share a context: each has one of the library's by itself.

    Coordinates are luma pixels, x to the right and y downward; (0, 0) is the first pixel. They are
    whole numbers of 32 bits (else OverflowError) and may lie outside the frame: what is drawn there is
    cut off. A rectangle is (left, top, right, bottom), a point (x, y).

    A colour is a name such as "red", "#rrggbb", (red, green, blue) of 0..255, or one number 0..255: a
    grey of just that luma. In text only its luma counts.

    Lines are two pixels thick; dashed ones have 8 pixels on and 8 off. What exactly each call paints
    stands in orn_min_render.h, under the name that the method's description ends with.

    Wrong types, numbers and closed frames raise an error before anything is drawn.
    """

    def __init__(self) -> None:
        self._of_thread: Optional[_OfThread] = _OfThread()

    def close(self) -> None:
        """Releases the library's contexts. Nothing can be drawn any more."""
        self._of_thread = None

    def __enter__(self) -> Context:
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()

    # Lines

    def draw_hline(self, frame: Frame, x0: int, x1: int, y: int, colour: ColourLike, *,
                   dashed: bool = False) -> None:
        """A horizontal line over columns x0 up to but not including x1. [DrawHLine]"""
        where = int32("x0", x0), int32("x1", x1), int32("y", y)
        self._paint(_hline, frame, where, colour, (int(bool(dashed)),))

    def draw_vline(self, frame: Frame, x: int, y0: int, y1: int, colour: ColourLike, *,
                   dashed: bool = False) -> None:
        """A vertical line over rows y0 up to but not including y1. [DrawVLine]"""
        where = int32("x", x), int32("y0", y0), int32("y1", y1)
        self._paint(_vline, frame, where, colour, (int(bool(dashed)),))

    def draw_line(self, frame: Frame, start: Position, end: Position, colour: ColourLike, *,
                  dashed: bool = False) -> None:
        """A line from one point to another, both included. [DrawLine]"""
        where = _point("start", start), _point("end", end)
        self._paint(_line, frame, where, colour, (int(bool(dashed)),))

    # Shapes

    def draw_frame(self, frame: Frame, rect: Corners, colour: ColourLike, *,
                   dashed: bool = False) -> None:
        """The outline of a rectangle whose right column and bottom row are included. [DrawFrame]"""
        self._paint(_frame, frame, (ints("rect", rect, 4),), colour, (int(bool(dashed)),))

    def fill_rect(self, frame: Frame, rect: Corners, colour: ColourLike) -> None:
        """A filled rectangle up to but not including right and bottom. [FillRect]"""
        self._paint(_rect, frame, (ints("rect", rect, 4),), colour)

    def fill_polygon(self, frame: Frame, points: Iterable[Position], colour: ColourLike) -> None:
        """A filled polygon, closed by itself, by the even-odd rule. points: N x 2. [FillPolygon]"""
        corners = rows("points", points, 2) or numbers("points", (0, 0), 2)
        vertices = first(corners), c_size_t(len(corners) // 2)
        self._paint(_polygon, frame, vertices, colour)

    def draw_ellipse(self, frame: Frame, rect: Corners, colour: ColourLike) -> None:
        """The outline of the ellipse that fits into a rectangle. [DrawEllipse]"""
        self._paint(_ellipse, frame, (ints("rect", rect, 4),), colour)

    def fill_ellipse(self, frame: Frame, rect: Corners, colour: ColourLike) -> None:
        """The inside of the ellipse that fits into a rectangle. [FillEllipse]"""
        self._paint(_full_ellipse, frame, (ints("rect", rect, 4),), colour)

    def draw_round_rect(self, frame: Frame, rect: Corners, radii: Position,
                        colour: ColourLike) -> None:
        """The outline of a rectangle with rounded corners. radii: (x, y). [DrawRoundRect]"""
        where = ints("rect", rect, 4), ints("radii", radii, 2)
        self._paint(_round_rect, frame, where, colour)

    def fill_round_rect(self, frame: Frame, rect: Corners, radii: Position,
                        colour: ColourLike) -> None:
        """The inside of a rectangle with rounded corners. radii: (x, y). [FillRoundRect]"""
        where = ints("rect", rect, 4), ints("radii", radii, 2)
        self._paint(_full_round_rect, frame, where, colour)

    # Pictures

    def blit(self, frame: Frame, rect: Corners, source: Frame, position: Position = (0, 0)) -> None:
        """Copies pixels of another frame, from position on, into a rectangle. A plane that either frame
        lacks is left out. The two must not lie in the same memory. [Blt]"""
        self._handle()
        corners = Rect.from_buffer(numbers("rect", rect, 4))
        start = _point("position", position)
        images, others = planes_of(frame), planes_of(source)
        _refuse_overlap(frame, source)
        for image, other in zip(images, others):
            _blit(image, corners, other, start)

    def draw_bitmap(self, frame: Frame, rect: Corners, width: int, height: int,
                    bits: Union[bytes, bytearray, Iterable[int]], colour: ColourLike, *,
                    semi_transparent: bool = False) -> None:
        """Stamps a bitmap of 1 bit a pixel, scaled to a rectangle.

        width, height: of the bitmap, each 1..32767.
        bits: `height` rows of (width + 31) // 32 words of 32 bits, the most significant bit leftmost; or
            the words' bytes, as they lie in this machine's memory.
        semi_transparent: paints the average of colour and picture. [DrawBitmap,
            DrawBitmapSemiTransparent]
        """
        self._handle()
        columns, lines, data = index(width), index(height), words(bits)
        if not (0 < columns < 2**15 and 0 < lines < 2**15):
            raise ValueError(f"a bitmap of {columns} x {lines}: expected sides of 1..32767")
        if len(data) < (columns + 31) // 32 * lines:
            raise ValueError(f"bits: {len(data)} words are too few for {columns} x {lines} pixels")
        where = ints("rect", rect, 4), columns, lines, first(data)
        _paint(_half_bitmap if semi_transparent else _bitmap, (), frame, where, colour)

    # Text

    def text_rect(self, text: str, *, font: Union[Font, str, None] = None, pen: Position = (0, 0),
                  line_start: Optional[int] = None) -> tuple[int, int, int, int]:
        """The rectangle, right and bottom excluded, that holds a text and where its pen starts. Outlines
        reach up to 3 pixels further. pen, line_start: as in `draw_text`. [GetTextRect]"""
        self._handle()
        chosen, start, rect = font_of(font), numbers("pen", pen, 2), Rect()
        line = _line_start(chosen, start, line_start)
        _get_text_rect(None, handle_of(chosen), encoded(text), first(start), line, byref(rect))
        return rect.left, rect.top, rect.right, rect.bottom

    def fix_text_width(self, text: str, width: int, *, font: Union[Font, str, None] = None) -> str:
        """The text in lines that fit a width in pixels: with a line feed and "- " before every word that
        would not fit. [FixTextWidth]"""
        data, limit = encoded(text), int32("width", width)
        fitted = _fix_text_width(self._handle(), handle_of(font_of(font)), data, limit)
        if data and not fitted:
            raise MemoryError("no memory for a text")
        copy = string_at(fitted) if fitted else b""
        _free(c_void_p(fitted))
        return copy.decode()

    def draw_text(self, frame: Frame, text: str, pen: Position, colour: ColourLike, *,
                  font: Union[Font, str, None] = None,
                  line_start: Optional[int] = None) -> tuple[int, int]:
        """Draws a text into the luma, and returns where the pen stands after it.

        text: line feeds begin new lines.
        pen: (x, y), where the baseline of the first line begins.
        font: a Font or the name of one; "sans" at 24 pixels without.
        line_start: x (y, if the font writes up or down) of new lines; that of the pen without.
            [DrawText]
        """
        return self._write(_text, frame, text, pen, font, line_start, (colour,))

    def draw_outline_text(self, frame: Frame, text: str, pen: Position, colour: ColourLike,
                          outline: ColourLike = "black", *, font: Union[Font, str, None] = None,
                          line_start: Optional[int] = None) -> tuple[int, int]:
        """Like `draw_text`, with a band of two pixels around every letter. [DrawOutlineText]"""
        return self._write(_outline_text, frame, text, pen, font, line_start, (outline, colour))

    def text_bitmap(self, frame: Frame, box: Iterable[int], bitmap: Iterable[int], pen: Position,
                    colour: ColourLike) -> None:
        """Stamps a bitmap in the format of glyphs into the luma: from pen.x + bearing_x to the right, and
        from pen.y - bearing_y down.

        box: (width, height, bearing_x, bearing_y), each -128..127.
        bitmap: rows of (width + 31) // 32 words of 32 bits, the least significant bit leftmost. What
            lies past its end counts as clear. [TextBitmap]
        """
        self._handle()
        sides, data = numbers("box", box, 4, "b"), words(bitmap)
        image, at = images_of(frame)[0], ints("pen", pen, 2)
        ink = colour_in(frame.space, colour).y
        if data:
            _text_bitmap(first(sides), first(data), c_uint32(len(data)), image, at, ink)

    # Building blocks. The library trusts their input, so that it is checked here.

    def set_luma(self, frame: Frame, x: int, y: int, luma: int) -> None:
        """Sets one pixel of the luma to 0..255. IndexError outside the frame. [SetYPixel]"""
        self._handle()
        image, ink = images_of(frame)[0], byte("luma", luma)
        within("x, y", (x, y), (frame.width - 1, frame.height - 1))
        _set_luma(image, index(x), index(y), ink)

    def set_chroma(self, frame: Frame, x: int, y: int, colour: ColourLike) -> None:
        """Sets one sample of the chroma, of 2 x 2 pixels; x and y count samples. [SetUVPixel]"""
        self._handle()
        image, ink = _chroma_of(frame), colour_in(frame.space, colour)
        within("x, y", (x, y), ((frame.width - 1) // 2, (frame.height - 1) // 2))
        _set_chroma(image, index(x), index(y), ink)

    def draw_luma_spans(self, frame: Frame, spans: Iterable[Iterable[int]], luma: int) -> None:
        """Paints runs of luma. spans: N x 3, (x0, x1, y), x1 excluded. [DrawScanlinesY8]"""
        self._handle()
        image, ink = images_of(frame)[0], byte("luma", luma)
        _draw_spans(_luma_spans, image, spans, (frame.width, frame.height), ink)

    def draw_chroma_spans(self, frame: Frame, spans: Iterable[Iterable[int]],
                          colour: ColourLike) -> None:
        """Paints runs of chroma. spans: as in `draw_luma_spans`, in samples. [DrawScanlinesUV]"""
        self._handle()
        image, ink = _chroma_of(frame), colour_in(frame.space, colour)
        sides = (frame.width + 1) // 2, (frame.height + 1) // 2
        _draw_spans(_chroma_spans, image, spans, sides, ink)

    def fill_luma(self, frame: Frame, rect: Corners, luma: int) -> None:
        """Fills the luma of a rectangle that lies inside the frame. [FillRectY8Impl]"""
        image, ink = images_of(frame)[0], byte("luma", luma)
        _fill_luma(self._handle(), image, _corners_inside(frame, rect), ink)

    def fill_chroma(self, frame: Frame, rect: Corners, colour: ColourLike) -> None:
        """Fills the chroma of a rectangle, in pixels, that lies inside the frame. [FillRectUVImpl]"""
        image, ink = _chroma_of(frame), colour_in(frame.space, colour)
        _fill_chroma(self._handle(), image, _corners_inside(frame, rect), ink)

    def _handle(self) -> Handle:
        """This thread's own; calls without need of it still mind that the context is open."""
        mine = self._of_thread
        if mine is None:
            raise ValueError("the context is closed")
        return mine.handle

    def _paint(self, calls: _Pair, frame: Frame, where: tuple[Any, ...], colour: ColourLike,
               how: tuple[int, ...] = ()) -> None:
        _paint(calls, (self._handle(),), frame, where, colour, how)

    def _write(self, function: Call, frame: Frame, text: str, pen: Position,
               font: Union[Font, str, None], line_start: Optional[int],
               colours: tuple[ColourLike, ...]) -> tuple[int, int]:
        image, chosen, at = images_of(frame)[0], font_of(font), numbers("pen", pen, 2)
        line = _line_start(chosen, at, line_start)
        inks = [colour_in(frame.space, colour).y for colour in colours]
        function(self._handle(), image, handle_of(chosen), encoded(text), first(at), line, *inks)
        return at[0], at[1]


def _paint(calls: _Pair, context: tuple[Handle, ...], frame: Frame, where: tuple[Any, ...],
           colour: ColourLike, how: tuple[int, ...] = ()) -> None:
    images, ink = images_of(frame), colour_in(frame.space, colour)
    if frame.has_chroma or calls.y8 is calls.yuv:
        for image in images:
            calls.yuv(*context, image, *where, ink, *how)
    else:
        calls.y8(*context, images[0], *where, ink.y, *how)


def _point(what: str, values: Position) -> Point:
    return Point.from_buffer(numbers(what, values, 2))


def _line_start(font: Font, pen: Sequence[int], given: Optional[int]) -> int:
    return pen[font.is_vertical] if given is None else int32("line_start", given)


def _refuse_overlap(frame: Frame, source: Frame) -> None:
    others = extents_of(source)
    if any(low < end and start < high for low, high in extents_of(frame) for start, end in others):
        raise ValueError("the frames lie in the same memory")


def _chroma_of(frame: Frame) -> Reference:
    images = images_of(frame)
    if not frame.has_chroma:
        raise ValueError("the frame has no chroma")
    return images[-1]


def _corners_inside(frame: Frame, rect: Corners) -> Reference:
    corners = numbers("rect", rect, 4)
    left, top, right, bottom = corners
    within("rect", (right, bottom, left, top), (frame.width, frame.height, right, bottom))
    return first(corners)


def _draw_spans(function: Call, image: Reference, spans: Iterable[Iterable[int]],
                sides: tuple[int, int], ink: Any) -> None:
    points = numbers("spans", (), 0)
    for x0, x1, y in spans:
        within("span", (x1, x0, y), (sides[0], x1, sides[1] - 1))
        points.extend(numbers("span", (x0, y, x1, y), 4))
    if points:
        function(image, first(points), len(points) // 2, ink)
