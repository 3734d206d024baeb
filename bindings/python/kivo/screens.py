"""The screens as data, for a toolkit of the host's own."""

import json
from collections.abc import Callable
from types import TracebackType
from typing import Any

from kivo._answers import forget, on_loop, on_work, register, running_loop
from kivo._library import check, ffi, lib, on_main_thread, taken, text_of


class Display:
    """A display with the SDK's screens. The host draws its snapshot and hands a person's input back.

    Belongs to the main thread. Frees itself at the end of a `with`, or by `close`.
    """

    def __init__(self, width: float, height: float) -> None:
        """The size is in points."""
        on_main_thread()
        self._notice: Any = None
        self._open = lib.kivo_display_new(width, height)
        if self._open == ffi.NULL:
            raise ValueError("The size of a display is above 0")

    @property
    def _handle(self) -> Any:
        on_main_thread()
        if self._open is None:
            raise ValueError("The display is closed")
        return self._open

    def close(self) -> None:
        """Takes the display from its sessions. A second call does nothing."""
        if self._open is not None:
            lib.kivo_display_free(self._handle)
            self._open = None
            self._forget_notice()

    def __enter__(self) -> "Display":
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.close()

    def snapshot(self) -> dict[str, Any]:
        """What a person sees now: kivo/c/screens.h lists the members."""
        tree: dict[str, Any] = json.loads(taken(lib.kivo_display_snapshot(self._handle)))
        return tree

    def on_change(self, changed: Callable[[], object] | None) -> None:
        """Has `changed` called on the loop after what a person sees has changed; None for no notices."""
        if changed is None:
            check(lib.kivo_display_on_change(self._handle, ffi.NULL, ffi.NULL, ffi.NULL))
            self._forget_notice()
            return
        user = register(on_loop(running_loop(), changed))
        try:
            check(lib.kivo_display_on_change(self._handle, on_work, user, ffi.NULL))
        except BaseException:
            forget(user)
            raise
        self._forget_notice()
        self._notice = user

    def _forget_notice(self) -> None:
        if self._notice is not None:
            forget(self._notice)
            self._notice = None

    def set_size(self, width: float, height: float) -> None:
        """Lays the screens out anew."""
        check(lib.kivo_display_set_size(self._handle, width, height))

    def set_margins(self, top: float, left: float, bottom: float, right: float) -> None:
        """How far a notch or bars reach into the display."""
        check(lib.kivo_display_set_margins(self._handle, top, left, bottom, right))

    def set_reading_size(self, size: int) -> None:
        """The reading size that the person has chosen, from 0 over 3 (as designed) to 11."""
        check(lib.kivo_display_set_reading_size(self._handle, size))

    def set_appearance(self, appearance: int) -> None:
        """The appearance that the person has chosen: 0 for light, as at first, or 1 for dark."""
        check(lib.kivo_display_set_appearance(self._handle, appearance))

    def clear(self) -> None:
        """Takes every screen away."""
        check(lib.kivo_display_clear(self._handle))

    # A person's input. Each returns whether a view has received it.

    def touch(self, x: float, y: float) -> bool:
        """A tap at a point."""
        return bool(lib.kivo_display_touch(self._handle, x, y))

    def tap(self, outlet: str) -> bool:
        """A tap in the middle of a view, which is scrolled into sight before."""
        return bool(lib.kivo_display_tap(self._handle, text_of(outlet, "outlet")))

    def type(self, outlet: str, text: str) -> bool:
        """Types into a field; an empty outlet stands for the field that has the keyboard."""
        return bool(lib.kivo_display_type(self._handle, text_of(outlet, "outlet"), text_of(text, "text")))

    def paste(self, outlet: str, text: str) -> bool:
        """Pastes into a field, likewise."""
        return bool(lib.kivo_display_paste(self._handle, text_of(outlet, "outlet"), text_of(text, "text")))

    def delete_backward(self) -> bool:
        """The delete key, in the field that has the keyboard."""
        return bool(lib.kivo_display_delete_backward(self._handle))

    def scroll(self, outlet: str, offset: float) -> bool:
        """Scrolls so that the content begins `offset` points above the view's top."""
        return bool(lib.kivo_display_scroll(self._handle, text_of(outlet, "outlet"), offset))
