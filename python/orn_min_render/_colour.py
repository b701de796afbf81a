# SPDX-License-Identifier: MIT
"""Names of colours, and what they are in luma and chroma."""
from __future__ import annotations

import re
from ctypes import byref, c_uint8
from functools import lru_cache
from math import floor
from typing import Any, Collection, Iterable, NamedTuple, Union

from ._arguments import byte
from ._library import Colour, call

ColourLike = Union[str, int, Collection[int]]

# As CSS has them, but for brown.
NAMES = {
    "black": 0x000000, "white": 0xffffff, "grey": 0x808080, "gray": 0x808080, "red": 0xff0000,
    "green": 0x008000, "lime": 0x00ff00, "blue": 0x0000ff, "yellow": 0xffff00, "cyan": 0x00ffff,
    "pink": 0xffc0cb, "orange": 0xffa500, "magenta": 0xff00ff, "brown": 0x804000, "purple": 0x800080,
}
# Of ids, in turn; those of overlay/colour.cpp.
PALETTE = (
    "#ffb000", "#35c4ff", "#7ddc1f", "#ff6f91", "#c58cff", "#ffe14d", "#2fe0c0", "#ff8c42",
    "#ee66ff", "#66ee88", "#7799ee", "#ffccff", "#77aa55", "#bb9944", "#ff66cc", "#aaeeee",
    "#dd8877", "#99aa00", "#9999bb", "#dddd99", "#77aa88", "#ccee77", "#bbaa99", "#ccee00")

_rgb_to_yuv = call("RGB2YUV")
_yuv_to_rgb = call("YUV2RGB")
_Bytes = c_uint8 * 3


class Space(NamedTuple):
    """What the numbers of a frame mean."""
    range: str
    matrix: str


RANGES, MATRICES = ("full", "limited"), ("bt601", "bt709")


def rgb_to_yuv(rgb: Iterable[int]) -> tuple[int, int, int]:
    """Full-range BT.601 luma, Cb and Cr of red, green and blue, all 0..255, as JPEG files have them.

    White becomes (254, 128, 128): the library rounds down.
    """
    yuv = Colour()
    _rgb_to_yuv(byref(yuv), _Bytes(*_three(rgb)))
    return yuv.y, yuv.u, yuv.v


def yuv_to_rgb(yuv: Iterable[int]) -> tuple[int, int, int]:
    """The inverse of `rgb_to_yuv`, each result clamped to 0..255."""
    rgb = _Bytes()
    _yuv_to_rgb(rgb, _Bytes(*_three(yuv)))
    return rgb[0], rgb[1], rgb[2]


def colour_in(space: Space, colour: ColourLike) -> Colour:
    """A colour as frames of that space have it. The record is shared: it is only read."""
    if isinstance(colour, Collection):
        return _converted(space, _rgb_of(colour))
    return _grey(byte("luma", colour))


def text_on(colour: ColourLike) -> str:
    """Black or white: what has more contrast."""
    if isinstance(colour, Collection):
        return _text_on(_rgb_of(colour))
    return _text_on(bytes([colour] * 3))


@lru_cache(maxsize=4096)
def _text_on(rgb: bytes) -> str:
    light = sum(share * (value / 255) ** 2.2 for share, value in zip((0.2126, 0.7152, 0.0722), rgb))
    return "black" if light > 0.18 else "white"  # where the contrasts with both are the same


def _rgb_of(colour: Any) -> bytes:
    return _named(colour) if isinstance(colour, str) else _three(colour)


def _three(values: Iterable[Any]) -> bytes:
    numbers = bytes(byte("colour", value) for value in values)
    if len(numbers) != 3:
        raise ValueError(f"a colour has 3 numbers, not {len(numbers)}")
    return numbers


@lru_cache(maxsize=None)
def _grey(luma: int) -> Colour:
    return Colour(luma, 128, 128)


@lru_cache(maxsize=1024)
def _named(word: str) -> bytes:
    if word in NAMES:
        return NAMES[word].to_bytes(3, "big")
    if re.fullmatch("#[0-9a-fA-F]{6}", word):
        return bytes.fromhex(word[1:])
    raise ValueError(f"bad colour {word!r}: expected #rrggbb or one of {', '.join(NAMES)}")


# ITU-R BT.601 and BT.709. Limited range: luma 16..235, chroma 16..240.
@lru_cache(maxsize=4096)
def _converted(space: Space, rgb: bytes) -> Colour:
    if space == ("full", "bt601"):
        return Colour(*rgb_to_yuv(rgb))
    red_share, blue_share = (0.2126, 0.0722) if space.matrix == "bt709" else (0.299, 0.114)
    red, green, blue = (value / 255.0 for value in rgb)
    luma = red_share * red + (1 - red_share - blue_share) * green + blue_share * blue
    base, luma_span, chroma_span = (16, 219, 224) if space.range == "limited" else (0, 255, 255)
    return Colour(_rounded(base + luma_span * luma),
                  _rounded(128 + chroma_span * (blue - luma) / (2 - 2 * blue_share)),
                  _rounded(128 + chroma_span * (red - luma) / (2 - 2 * red_share)))


def _rounded(value: float) -> int:
    return max(0, min(255, floor(value + 0.5)))
