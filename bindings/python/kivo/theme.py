"""The looks and texts of a session's screens."""

import dataclasses
import itertools
import math
from collections.abc import Iterator
from typing import Any

from kivo._library import check, ffi, lib, on_main_thread, string_of, taken, text_of


@dataclasses.dataclass(frozen=True)
class Color:
    """A colour in sRGB; each channel from 0 to 1."""

    red: float
    green: float
    blue: float
    alpha: float = 1


@dataclasses.dataclass(frozen=True)
class Font:
    """A typeface, empty for the system's, and its size in points."""

    typeface: str
    point_size: float


class Theme:
    """The properties by name, such as `theme["screenTitleColor"] = kivo.Color(0, 0, 0)`; iteration gives the names.

    A text, a number (a flag is 0 or 1), a `Color` or a `Font`, as the property is. A screen reads the theme when it
    appears.
    """

    def __init__(self, session: Any) -> None:
        self._session = session

    def __iter__(self) -> Iterator[str]:
        names = (string_of(lib.kivo_theme_property(index)) for index in itertools.count())
        return itertools.takewhile(bool, names)

    def __getitem__(self, name: str) -> str | float | Color | Font | None:
        """The value; None for a number that is not set."""
        kind, key = self._kind(name)
        if kind == lib.KIVO_PROPERTY_TEXT:
            return taken(lib.kivo_theme_text(self._session, key))
        if kind == lib.KIVO_PROPERTY_NUMBER:
            number = float(lib.kivo_theme_number(self._session, key))
            return None if math.isnan(number) else number
        if kind == lib.KIVO_PROPERTY_COLOR:
            color = lib.kivo_theme_color(self._session, key)
            return Color(color.red, color.green, color.blue, color.alpha)
        size = ffi.new("double *")
        return Font(taken(lib.kivo_theme_font(self._session, key, size)), size[0])

    def __setitem__(self, name: str, value: str | float | Color | Font) -> None:
        kind, key = self._kind(name)
        if kind == lib.KIVO_PROPERTY_TEXT and isinstance(value, str):
            check(lib.kivo_theme_set_text(self._session, key, text_of(value, name)))
        elif kind == lib.KIVO_PROPERTY_NUMBER and isinstance(value, (int, float)):
            check(lib.kivo_theme_set_number(self._session, key, value))
        elif kind == lib.KIVO_PROPERTY_COLOR and isinstance(value, Color):
            check(lib.kivo_theme_set_color(self._session, key, dataclasses.astuple(value)))
        elif kind == lib.KIVO_PROPERTY_FONT and isinstance(value, Font):
            check(lib.kivo_theme_set_font(self._session, key, text_of(value.typeface, "typeface"), value.point_size))
        else:
            raise TypeError(f"{name} takes no {type(value).__name__}")

    @staticmethod
    def _kind(name: str) -> tuple[int, dict[str, Any]]:
        on_main_thread()
        key = text_of(name, "name")
        kind: int = lib.kivo_theme_property_kind(key)
        if kind == lib.KIVO_PROPERTY_UNKNOWN:
            raise KeyError(name)
        return kind, key
