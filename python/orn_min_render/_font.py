# SPDX-License-Identifier: MIT
"""Fonts: files, or sets of files that are found by name."""
from __future__ import annotations

import os
import re
import tempfile
import threading
from ctypes import byref, c_int32, c_void_p
from functools import lru_cache
from pathlib import Path
from struct import Struct
from typing import Optional, Tuple, Union

from ._library import Handle, call, path

DIRECTIONS = ("normal", "down", "up", "inverted")
# Outlines reach up to 3 pixels beyond the measured text; as much again stays free around them.
LABEL_MARGIN = 6
_MAX_LABELS = 4096
_FAR = 2**30
_PenAndRect = c_int32 * 6
_put_pen, _all_of = Struct("=2i").pack_into, Struct("=6i").unpack
_RECT = 8  # where it begins in a record of both

_load_font = call("LoadCbfFont", c_void_p)
_destroy_font = call("DestroyFont")
_set_direction = call("SetFontDirection")
_get_text_rect = call("GetTextRect")


# A text as a label: its bytes, width and height of its background, and where the pen starts in that.
Label = Tuple[bytes, int, int, int, int]


class _OfThread(threading.local):
    """The library's font of one thread: drawing adds to its cache of glyphs."""

    def __init__(self, data: bytes, name: str) -> None:
        self.handle = Handle(_loaded(data, name), _destroy_font)
        self.direction = 0
        self.labels: dict[str, Label] = {}


class Font:
    """A font in the CBF format, at the one pixel size that it was made for by `cbfconv`.

    Font(): the set "sans" at 24 pixels.
    Font("sans", size=16): of the set of that name the file of the nearest size; of two equally near
        ones the smaller. The files are named sans-12.cbf, sans-16.cbf and so on.
    Font("some/font.cbf"): a file. What has a "/" or ends in ".cbf" is one.
    Font(data): the bytes of a file.

    A set is looked for in orn-min-render/fonts below $XDG_DATA_HOME, below each of $XDG_DATA_DIRS, and
    below the share folder of the tree that the library lies in. The first folder that has it counts.

    `direction` is "normal", "down", "up" or "inverted", and may be changed: which way text is written.

    Threads may share a font. Each one that draws gets a copy of its own in memory.
    """

    def __init__(self, source: Union[str, os.PathLike[str], bytes, bytearray, memoryview] = "sans", *,
                 size: Optional[float] = None, direction: str = "normal") -> None:
        if isinstance(source, (bytes, bytearray, memoryview)):
            self.name, data = f"{len(source)} bytes", bytes(source)
            _refuse_size(self.name, size)
        else:
            self.name = _file_of(os.fspath(source), size)
            data = Path(self.name).read_bytes()
        self.direction = direction
        self._of_thread = _OfThread(data, self.name)

    @property
    def direction(self) -> str:
        """Which way text is written: "normal" from left to right, "down", "up", or "inverted"."""
        return DIRECTIONS[self._direction]

    @direction.setter
    def direction(self, direction: str) -> None:
        if direction not in DIRECTIONS:
            raise ValueError(f"direction {direction!r}: expected one of {', '.join(DIRECTIONS)}")
        self._direction = DIRECTIONS.index(direction)

    @property
    def is_vertical(self) -> bool:
        """Whether text is written down or up: then a line begins at a y coordinate."""
        return self._direction in (1, 2)

    def __repr__(self) -> str:
        return f"<orn_min_render.Font: {self.name}>"

    def _mine(self) -> _OfThread:
        mine, wanted = self._of_thread, self._direction
        if mine.direction != wanted:
            _set_direction(mine.handle, wanted)
            mine.direction = wanted
            mine.labels.clear()
        return mine


def font_of(font: Union[Font, str, None]) -> Font:
    """The font itself, or the one of that name; without any, the usual one."""
    if isinstance(font, Font):
        return font
    if font is not None and not isinstance(font, str):
        raise TypeError(f"expected a Font or the name of one, not {type(font).__name__}")
    return _named_font("sans" if font is None else font)


@lru_cache(maxsize=16)
def _named_font(name: str) -> Font:
    return Font(name)


def handle_of(font: Font) -> Handle:
    """This thread's own."""
    return font._mine().handle


def labels_of(font: Font, texts: list[str]) -> list[Label]:
    """Each text, which `encoded` takes, as a label, measured when it is new."""
    mine = font._mine()
    known = mine.labels
    if len(known) > _MAX_LABELS:
        known.clear()
    try:
        return [known[text] for text in texts]
    except KeyError:
        _measure(mine.handle, texts, known)
        return [known[text] for text in texts]


def _measure(handle: Handle, texts: list[str], known: dict[str, Label]) -> None:
    record = _PenAndRect()
    pen, rect, margin, margins = byref(record), byref(record, _RECT), LABEL_MARGIN, 2 * LABEL_MARGIN
    for text in set(texts).difference(known):
        data = text.encode()
        _put_pen(record, 0, 0, 0)
        _get_text_rect(None, handle, data, pen, 0, rect)
        _, _, left, top, right, bottom = _all_of(record)
        wide, high = right - left, bottom - top
        # Of a font without reason, not even differences would be of 32 bits.
        if wide > _FAR or high > _FAR:
            left, top = max(left, -_FAR), max(top, -_FAR)
            wide, high = -left, -top
        known[text] = data, wide + margins, high + margins, margin - left, margin - top


def _loaded(data: bytes, name: str) -> int:
    """The library reads files, so the bytes lie in one for a moment."""
    with tempfile.NamedTemporaryFile(suffix=".cbf") as file:
        file.write(data)
        file.flush()
        address = _load_font(os.fsencode(file.name))
    if not address:
        raise ValueError(f"{name}: no CBF font, or one that is cut short")
    return int(address)


def _refuse_size(name: str, size: Optional[float]) -> None:
    if size is not None:
        raise ValueError(f"{name} is one font, and has its own size: only sets take another")


def _file_of(name: str, size: Optional[float]) -> str:
    if not isinstance(name, str):
        raise TypeError(f"the name of a font is a str, not {type(name).__name__}")
    is_path = "/" in name or name.endswith(".cbf")
    files = {} if is_path else _files_of_set(name)
    if files:
        wanted = 24 if size is None else size
        if not wanted > 0:
            raise ValueError(f"size: {size} is no number of pixels")
        return str(files[min(files, key=lambda of: (abs(of - wanted), of))])
    if not is_path and not os.path.exists(name):
        raise FileNotFoundError(
            f"no font {name}: no such file, and no set of that name: there is no {name}-SIZE.cbf in "
            f"{', '.join(map(str, _folders()))} (Debian's package orn-min-render-fonts has the set sans, "
            "and cbfconv makes fonts)")
    _refuse_size(name, size)
    return os.path.abspath(name)


def _files_of_set(name: str) -> dict[int, Path]:
    for folder in _folders():
        try:
            entries = list(folder.iterdir())
        except OSError:
            continue
        sizes = {entry: re.fullmatch(re.escape(name) + r"-([0-9]{1,5})\.cbf", entry.name)
                 for entry in sorted(entries, reverse=True)}
        files = {int(match[1]): entry for entry, match in sizes.items() if match}
        if files:
            return files
    return {}


def _folders() -> list[Path]:
    """Relative ones would be others in every working directory, and are left out."""
    home = os.environ.get("XDG_DATA_HOME") or os.path.expanduser("~/.local/share")
    shared = os.environ.get("XDG_DATA_DIRS") or "/usr/local/share:/usr/share"
    library = Path(path()).parents
    beside = [str(folder / "share") for folder in list(library)[1:3]]
    data = dict.fromkeys(Path(folder) for folder in (home, *shared.split(":"), *beside))
    return [folder / "orn-min-render" / "fonts" for folder in data if folder.is_absolute()]
