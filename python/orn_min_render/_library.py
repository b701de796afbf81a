# SPDX-License-Identifier: MIT
"""Finds the shared object, binds its calls and describes its records."""
from __future__ import annotations

import os
import sysconfig
from ctypes import (CDLL, Structure, byref, c_char_p, c_int32, c_int64, c_uint8, c_uint64,
                    c_void_p, cast)
from pathlib import Path
from typing import Any, Callable

Reference = Any  # what ctypes.byref returns: it keeps alive what it refers to
Call = Callable[..., Any]

SONAME = "liborn_min_render.so.1"
INT32_MIN, INT32_MAX = -2**31, 2**31 - 1


class Point(Structure):
    """Where one is passed by value."""
    _fields_ = [("x", c_int32), ("y", c_int32)]


class Rect(Structure):
    """Two corners, where one is passed by value or filled in."""
    _fields_ = [("left", c_int32), ("top", c_int32), ("right", c_int32), ("bottom", c_int32)]


class Colour(Structure):
    """Luma, Cb and Cr of the frame that it is for."""
    _fields_ = [("y", c_uint8), ("u", c_uint8), ("v", c_uint8)]
    y: int
    u: int
    v: int


class Image(Structure):
    """Planes in a caller's memory. `owners` keep that memory where it is, as long as anything
    refers to the record."""
    _fields_ = [("caller0", c_uint64), ("width", c_int32), ("height", c_int32), ("stride", c_int64),
                ("y_plane", c_void_p), ("caller1", c_uint64), ("uv_plane", c_void_p)]
    owners: tuple[object, ...]


def _places() -> list[Path]:
    """Where the shared object lies when it came with this package: inside, as in a wheel, or in the
    lib folder of the tree whose lib/python3/dist-packages this is."""
    package = Path(__file__).absolute().parent
    beside = list(package.parents)[2:3]
    triplet = sysconfig.get_config_var("MULTIARCH") or "."
    return [package, *beside, *(folder / triplet for folder in beside)]


def _load() -> CDLL:
    found = [folder / SONAME for folder in _places() if (folder / SONAME).exists()]
    try:
        return CDLL(str(found[0]) if found else SONAME)
    except OSError as error:
        raise ImportError(
            f"orn_min_render needs the library {SONAME}, which can't be loaded: {error}. Install it "
            "(Debian package liborn-min-render1, or cmake --install and ldconfig), or install the "
            "wheel of orn_min_render, which has it inside.") from error


def call(name: str, result: Any = None) -> Call:
    """The call OrnMinRender`name`. That all are there tells an older library from one that serves."""
    try:
        function = library["OrnMinRender" + name]
    except AttributeError as error:
        raise ImportError(f"{path() or SONAME} is of another version than this package: it has no "
                          f"call OrnMinRender{name}") from error
    function.restype = result
    return function


class _DlInfo(Structure):
    _fields_ = [("file", c_char_p), ("base", c_void_p), ("name", c_char_p), ("address", c_void_p)]


def path() -> str:
    """Where the loader found the library; empty when it doesn't tell."""
    info = _DlInfo()
    known = CDLL(None)["dladdr"](cast(library["OrnMinRenderCreateContext"], c_void_p), byref(info))
    return os.fsdecode(info.file) if known else ""


library = _load()


class Handle(c_void_p):
    """A context or font of the library, released with the last reference to it: a call that it is
    passed to holds one."""

    def __init__(self, address: int, destroy: Callable[[c_void_p], object]) -> None:
        super().__init__(address)
        self._destroy = destroy

    def __del__(self) -> None:
        self._destroy(c_void_p(self.value))
