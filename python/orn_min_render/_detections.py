# SPDX-License-Identifier: MIT
"""Boxes and labels of what a detector has found, in one call.

Most of the time goes into calls of the library, three for a box, so that as little as possible is done
between them: everything is checked and measured first, and a record serves for all boxes.
"""
from __future__ import annotations

from ctypes import byref, c_int32
from functools import lru_cache
from math import floor
from operator import index
from struct import Struct
from typing import Any, Collection, Iterable, NamedTuple, Optional, Sized, Union

from ._arguments import encoded
from ._colour import PALETTE, ColourLike, Space, colour_in, text_on
from ._font import Font, Label, font_of, handle_of, labels_of
from ._frame import Frame, images_of
from ._library import INT32_MAX, Colour, call

_frame_y8, _frame_yuv = call("DrawFrameY8"), call("DrawFrameYUV420SP")
_fill_y8, _fill_yuv = call("FillRectY8"), call("FillRectYUV420SP")
_text = call("DrawOutlineTextY8")

_Record = c_int32 * 6
_pack_rect, _pack_rect_and_pen = Struct("=4i").pack_into, Struct("=6i").pack_into
_PEN = 16  # where it begins in a record of both
_FAR = INT32_MAX  # edges are nearer, so that they and what is drawn beside them are of 32 bits

Box = tuple[int, int, int, int]
_NOWHERE: Box = (1 - _FAR, 1 - _FAR, 1 - _FAR, 1 - _FAR)
_REVERSED: Box = (0, 0, -1, -1)


class Ink(NamedTuple):
    """The colour of a box, its luma, and the luma of text on it."""
    colour: Colour
    luma: int
    text: int


def draw_detections(frame: Frame, xyxy: Iterable[Iterable[float]],
                    labels: Optional[Collection[Optional[str]]] = None,
                    ids: Optional[Collection[int]] = None,
                    colours: Union[ColourLike, Collection[ColourLike], None] = None,
                    font: Union[Font, str, None] = None) -> None:
    """Draws N boxes, then their labels over them.

    xyxy: N x 4, a NumPy array or nested sequences: left, top, right and bottom in pixels, right and
        bottom excluded. Edges are rounded to whole pixels, halves upward. Opposite corners may come in
        either order. Boxes outside the frame are cut off, also at infinity; one with a NaN isn't drawn.
    labels: N texts, None or "" for none. Each stands in its box's colour above the box, moved into the
        frame where it would leave it. Boxes wholly outside the frame have none.
    ids: N whole numbers, as trackers give them. Boxes of one id have one colour in all frames. Without
        `labels` they are the labels, too.
    colours: one colour for all boxes, or N of them; in place of those by id.
    font: a Font, or the name of one; "sans" at 24 pixels without.

    supervision's Detections go in like this: draw_detections(frame, found.xyxy, ids=found.tracker_id).

    A wrong shape, length or type raises an error before anything is drawn.
    """
    images_of(frame)
    boxes = _boxes(xyxy)
    count = len(boxes)
    numbers = None if ids is None else _numbers(ids, count)
    inks = _inks(frame.space, colours, numbers, count)
    texts = _texts(labels, numbers, count)
    chosen = font_of(font) if any(texts) else None
    measured = labels_of(chosen, texts) if chosen else []
    _draw_boxes(frame, boxes, inks)
    if chosen:
        _draw_labels(frame, boxes, measured, inks, chosen)


def _listed(values: Any) -> Any:
    """Python's own numbers in place of an array's."""
    return values.tolist() if hasattr(values, "tolist") else values


def _counted(what: str, values: Any, count: int) -> Any:
    listed = _listed(values)
    if len(listed) != count:
        raise ValueError(f"{what}: {len(listed)} for {count} boxes")
    return listed


def _boxes(xyxy: Any) -> list[Box]:
    boxes = []
    for row in _listed(xyxy):
        try:
            left, top, right, bottom = row
        except (TypeError, ValueError):
            raise ValueError("xyxy: expected N x 4 numbers") from None
        try:
            box = floor(left + 0.5), floor(top + 0.5), floor(right + 0.5), floor(bottom + 0.5)
        except TypeError:
            raise TypeError("xyxy: expected N x 4 numbers") from None
        except (ValueError, OverflowError):
            box = _REVERSED
        if not (-_FAR < box[0] <= box[2] < _FAR and -_FAR < box[1] <= box[3] < _FAR):
            box = _odd_box(row)
        boxes.append(box)
    return boxes


def _odd_box(row: Iterable[float]) -> Box:
    """Of NaN, infinities, edges of more than 32 bits, or corners in another order."""
    if any(edge != edge for edge in row):
        return _NOWHERE
    x0, y0, x1, y1 = (floor(max(2 - _FAR, min(_FAR - 1, edge)) + 0.5) for edge in row)
    return min(x0, x1), min(y0, y1), max(x0, x1), max(y0, y1)


def _numbers(ids: Any, count: int) -> list[int]:
    try:
        return [index(number) for number in _counted("ids", ids, count)]
    except TypeError as error:
        raise TypeError(f"ids: {error}") from None


def _inks(space: Space, colours: Any, ids: Optional[list[int]], count: int) -> list[Ink]:
    if colours is None:
        palette = _palette(space)
        if ids is None:
            return [palette[0]] * count
        return [palette[(number - 1) % len(palette)] for number in ids]
    listed = _listed(colours)
    if isinstance(listed, (str, int)) or (
            len(listed) == 3 and not any(isinstance(value, Sized) for value in listed)):
        return [_ink(space, listed)] * count
    return [_ink(space, colour) for colour in _counted("colours", listed, count)]


@lru_cache(maxsize=None)
def _palette(space: Space) -> list[Ink]:
    return [_ink(space, colour) for colour in PALETTE]


def _ink(space: Space, colour: ColourLike) -> Ink:
    record = colour_in(space, colour)
    return Ink(record, record.y, colour_in(space, text_on(colour)).y)


def _texts(labels: Any, ids: Optional[list[int]], count: int) -> list[str]:
    if labels is None:
        return list(map(str, ids)) if ids else []
    try:
        texts = ["" if text is None else text for text in _counted("labels", labels, count)]
        encoded("".join(texts))
    except TypeError as error:
        raise TypeError(f"labels: {error}") from None
    return texts


def _draw_boxes(frame: Frame, boxes: list[Box], inks: list[Ink]) -> None:
    gray = not frame.has_chroma
    draw, record = _frame_y8 if gray else _frame_yuv, _Record()
    rect, pack = byref(record), _pack_rect
    for image in images_of(frame):
        for (left, top, right, bottom), (colour, luma, _) in zip(boxes, inks):
            pack(record, 0, left, top, right - 1, bottom - 1)
            draw(None, image, rect, luma if gray else colour, 0)


def _draw_labels(frame: Frame, boxes: list[Box], labels: list[Label], inks: list[Ink],
                 font: Font) -> None:
    images, handle, vertical = images_of(frame), handle_of(font), font.is_vertical
    gray, width, height = not frame.has_chroma, frame.width, frame.height
    fill, record = _fill_y8 if gray else _fill_yuv, _Record()
    rect, pen, pack, luma_image = byref(record), byref(record, _PEN), _pack_rect_and_pen, images[0]
    # Backgrounds end with whole chroma samples: else colour would show past the luma.
    odd, even = (0, -1) if gray else (1, -2)
    for (left, top, right, bottom), label, (colour, luma, ink) in zip(boxes, labels, inks):
        text, wide, high, pen_x, pen_y = label
        if not text or left >= width or top >= height or right <= 0 or bottom <= 0:
            continue
        if left + wide > width:
            left = width - wide
        left, top = left if left > 0 else 0, top - high if top > high else 0
        right, bottom = (left + wide + odd) & even, (top + high + odd) & even
        left, top = left & even, top & even
        pen_x, pen_y = left + pen_x, top + pen_y
        pack(record, 0, left, top, right, bottom, pen_x, pen_y)
        for image in images:
            fill(None, image, rect, luma if gray else colour)
        _text(None, luma_image, handle, text, pen, pen_y if vertical else pen_x, luma, ink)
