# SPDX-License-Identifier: MIT
"""Frames: planes in a caller's memory, checked before anything can draw into them."""
from __future__ import annotations

from ctypes import addressof, byref, c_char
from operator import index
from pickle import PickleBuffer
from typing import Any, NamedTuple, Optional

from ._colour import MATRICES, RANGES, Space
from ._library import INT32_MAX, Image, Reference


class Plane(NamedTuple):
    """Rows of a plane: where the first one begins, how far apart they are, and the ctypes object
    through which the caller's buffer stays exported."""
    address: int
    stride: int
    owner: object


class Frame:
    """A picture in memory that belongs to somebody else. Drawing changes that memory, no copy is made.

    Make one by `Frame.nv12`, `Frame.gray` or `Frame.planes`. Each takes writable objects of the buffer
    protocol with items of one byte: a bytearray, a memoryview, an array of ctypes or of NumPy's uint8, a
    plane of a PyAV frame, the data of a mapped GStreamer buffer. Of two dimensions and more, the first
    one counts rows, which may have gaps between them. Planes of PyAV tell their stride themselves.

    A frame keeps its buffers alive, and they can't be resized or released before it is closed: by
    `close`, by the end of a `with` block, or with the last reference to it.

    `range` and `matrix` say what the numbers in the frame mean, so that colours come out as asked for:
    "full" or "limited" (most video is), "bt601" or "bt709" (usual for HD).
    """
    __slots__ = ("space", "_size", "_luma", "_chroma", "_references")
    space: Space
    _size: tuple[int, int]
    _luma: Optional[Plane]
    _chroma: Optional[Plane]
    _references: tuple[Reference, ...]

    def __init__(self) -> None:
        raise TypeError("use Frame.nv12, Frame.gray or Frame.planes")

    @classmethod
    def nv12(cls, buffer: Any, width: int, height: int, stride: Optional[int] = None, *,
             range: str = "full", matrix: str = "bt601") -> Frame:
        """A frame of NV12 in one buffer: `height` rows of luma, then (height + 1) // 2 rows of chroma,
        each (width + 1) // 2 pairs of U and V.

        width, height: in pixels.
        stride: bytes from row to row, even. Without it: that of an array of two dimensions, of which
            NV12 has height * 3 // 2 rows; else `width` rounded up to even.
        """
        width, height = _size(width, height)
        columns, rows = (width + 1) // 2 * 2, (height + 1) // 2
        luma = _plane("buffer", buffer, stride, columns, height + rows)
        chroma = luma._replace(address=luma.address + luma.stride * height)
        return cls._of(width, height, luma, chroma, range, matrix)

    @classmethod
    def gray(cls, buffer: Any, width: int, height: int, stride: Optional[int] = None, *,
             range: str = "full", matrix: str = "bt601") -> Frame:
        """A frame of luma alone: `height` rows of `width` bytes.

        width, height: in pixels.
        stride: bytes from row to row. Without it: that of an array of two dimensions, else `width`.
        """
        width, height = _size(width, height)
        return cls._of(width, height, _plane("buffer", buffer, stride, width, height), None, range,
                       matrix)

    @classmethod
    def planes(cls, y: Any, uv: Any, width: int, height: int, y_stride: Optional[int] = None,
               uv_stride: Optional[int] = None, *, range: str = "full",
               matrix: str = "bt601") -> Frame:
        """A frame of NV12 whose planes lie in two buffers.

        y: luma, `height` rows of `width` bytes.
        uv: chroma, (height + 1) // 2 rows of (width + 1) // 2 pairs of U and V; an array may have the
            shape (rows, pairs, 2). None for none: then the frame is of luma alone.
        width, height: in pixels.
        y_stride, uv_stride: bytes from row to row, that of chroma even. Without them: those of arrays
            of two dimensions and more, else the length of a row.
        """
        width, height = _size(width, height)
        luma = _plane("y", y, y_stride, width, height)
        chroma = None if uv is None else _plane("uv", uv, uv_stride, (width + 1) // 2 * 2,
                                                (height + 1) // 2)
        return cls._of(width, height, luma, chroma, range, matrix)

    @classmethod
    def _of(cls, width: int, height: int, luma: Plane, chroma: Optional[Plane], range: str,
            matrix: str) -> Frame:
        if range not in RANGES or matrix not in MATRICES:
            raise ValueError(f"range {range!r} and matrix {matrix!r}: expected one of {RANGES} and "
                             f"one of {MATRICES}")
        if chroma and chroma.stride % 2:
            raise ValueError(f"the stride of chroma is {chroma.stride}: expected an even one")
        frame = cls.__new__(cls)
        frame._size, frame.space = (width, height), Space(range, matrix)
        frame._luma, frame._chroma = luma, chroma
        # One record serves both planes if their strides are the same.
        if chroma is None or chroma.stride == luma.stride:
            frame._references = (frame._image(luma, chroma),)
        else:
            frame._references = frame._image(luma, None), frame._image(None, chroma)
        return frame

    @property
    def width(self) -> int:
        """In pixels."""
        return self._size[0]

    @property
    def height(self) -> int:
        """In pixels."""
        return self._size[1]

    @property
    def has_chroma(self) -> bool:
        """Whether the frame is NV12, and not of luma alone."""
        return self._chroma is not None

    def close(self) -> None:
        """Lets go of the buffers. Nothing can be drawn any more; a call that another thread is in
        ends first."""
        self._references = ()
        self._luma = self._chroma = None

    def __enter__(self) -> Frame:
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()

    def __repr__(self) -> str:
        kind = "NV12" if self._chroma else "luma"
        state = f"{self.width} x {self.height}, {kind}" if self._references else "closed"
        return f"<orn_min_render.Frame: {state}>"

    def _image(self, luma: Optional[Plane], chroma: Optional[Plane]) -> Reference:
        planes = [plane for plane in (luma, chroma) if plane]
        image = Image(0, self.width, self.height, planes[0].stride, luma and luma.address, 0,
                      chroma and chroma.address)
        image.owners = tuple(plane.owner for plane in planes)
        return byref(image)


def images_of(frame: Frame) -> tuple[Reference, ...]:
    """What drawing calls take: an image of both planes, or one for each. Luma comes first."""
    if not isinstance(frame, Frame):
        raise TypeError(f"expected a Frame, not {type(frame).__name__}")
    if not frame._references:
        raise ValueError("the frame is closed")
    return frame._references


def planes_of(frame: Frame) -> tuple[Reference, ...]:
    """An image of each plane by itself, luma first."""
    images_of(frame)
    luma = frame._image(frame._luma, None)
    return (luma, frame._image(None, frame._chroma)) if frame._chroma else (luma,)


def extents_of(frame: Frame) -> list[tuple[int, int]]:
    """The addresses between which each plane lies."""
    rows = (frame.height + 1) // 2
    return [(plane.address, plane.address + plane.stride * count)
            for plane, count in ((frame._luma, frame.height), (frame._chroma, rows)) if plane]


def _size(width: int, height: int) -> tuple[int, int]:
    for what, size in ("width", width), ("height", height):
        if not 0 < index(size) <= INT32_MAX:
            raise ValueError(f"{what}: {size} is not within 1..{INT32_MAX}")
    return index(width), index(height)


def _plane(what: str, buffer: Any, stride: Optional[int], row_bytes: int, rows: int) -> Plane:
    # By way of this, a memoryview is kept from being released, as GStreamer does before it unmaps.
    view = memoryview(PickleBuffer(buffer) if isinstance(buffer, memoryview) else buffer)
    if view.readonly:
        raise BufferError(f"{what}: {type(buffer).__name__} is read-only; drawing needs writable memory")
    if view.itemsize != 1 or view.format.lstrip("<>") not in ("B", "b", "c"):
        raise TypeError(f"{what}: items of format {view.format!r} and {view.itemsize} bytes; expected "
                        "single bytes (uint8)")
    if stride is None:
        stride = getattr(buffer, "line_size", None)
    if view.c_contiguous and (view.ndim == 1 or stride is not None):
        step = row_bytes if stride is None else index(stride)
        enough = view.nbytes >= step * (rows - 1) + row_bytes
    else:
        step, count = _layout_of(what, view, stride)
        view = view[:1]
        enough = count >= rows and view.nbytes >= row_bytes
    if step < row_bytes:
        raise ValueError(f"{what}: the stride is {step}; a row takes {row_bytes} bytes")
    if not enough:
        raise ValueError(f"{what}: too small for {rows} rows of {row_bytes} bytes, {step} apart")
    owner = c_char.from_buffer(view)
    return Plane(addressof(owner), step, owner)


def _layout_of(what: str, view: memoryview, stride: Optional[int]) -> tuple[int, int]:
    """How far apart the rows lie, and how many there are: the first dimension counts them."""
    if view.ndim < 2 or not view[:1].c_contiguous or not view.shape or not view.strides:
        raise BufferError(f"{what}: the bytes of a row must lie side by side")
    if stride is not None and index(stride) != view.strides[0]:
        raise ValueError(f"{what}: the rows lie {view.strides[0]} bytes apart, not {stride}")
    return view.strides[0], view.shape[0]
