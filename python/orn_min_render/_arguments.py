# SPDX-License-Identifier: MIT
"""What callers pass, checked and made into what the library's calls take.

Those calls are bound without types of arguments: declaring them would check everything a second time
and double what a call costs. But without them `ctypes` cuts integers down silently, so every number
of a caller goes through here.
"""
from __future__ import annotations

from array import array
from ctypes import byref, c_int8, c_int32, c_uint32
from operator import index
from typing import Iterable, Sequence, Union

from ._library import INT32_MAX, INT32_MIN, Reference

_ITEMS = {"b": c_int8, "i": c_int32, "I": c_uint32}


def first(numbers: array[int]) -> Reference:
    """A reference to the first of some numbers, which keeps them all."""
    return byref(_ITEMS[numbers.typecode].from_buffer(numbers))


def numbers(what: str, values: Iterable[int], count: int, kind: str = "i") -> array[int]:
    """As many whole numbers as that, each an int32 unless `kind` is another type code."""
    checked = array(kind, values)
    if len(checked) != count:
        raise ValueError(f"{what}: expected {count} whole numbers, not {len(checked)}")
    return checked


def ints(what: str, values: Iterable[int], count: int) -> Reference:
    """A reference to as many numbers as that, each an int32: a rectangle, say."""
    return first(numbers(what, values, count))


def rows(what: str, values: Iterable[Iterable[int]], count: int) -> array[int]:
    """N x `count` numbers, each an int32, one after another."""
    flat = array("i")
    for row in values:
        flat.extend(numbers(what, row, count))
    return flat


def words(values: Union[bytes, bytearray, Iterable[int]]) -> array[int]:
    """Words of 32 bits, or the bytes of such words."""
    return array("I", values)


def int32(what: str, value: int) -> int:
    """The same number, if it is a whole one of 32 bits."""
    number = index(value)
    if not INT32_MIN <= number <= INT32_MAX:
        raise OverflowError(f"{what}: {number} takes more than 32 bits")
    return number


def byte(what: str, value: int) -> int:
    """The same number, if it is 0..255."""
    number = index(value)
    if not 0 <= number <= 255:
        raise ValueError(f"{what}: {number} is not within 0..255")
    return number


def within(what: str, values: Sequence[int], sides: Sequence[int]) -> None:
    """Refuses what is not 0..side, where the library would trust it."""
    for value, side in zip(values, sides):
        if not 0 <= value <= side:
            raise IndexError(f"{what}: {value} is not within 0..{side}")


def encoded(text: str) -> bytes:
    """As the library takes it: UTF-8 up to a zero, so that there can't be one inside."""
    if not isinstance(text, str):
        raise TypeError(f"expected a str, not {type(text).__name__}")
    if "\0" in text:
        raise ValueError("a text can't hold the character NUL")
    return text.encode()
