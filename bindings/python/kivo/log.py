"""The library's log."""

import atexit
import itertools
import logging
import sys
import threading
from collections.abc import Callable
from typing import Any

from kivo._library import check, ffi, lib, on_main_thread, string_of
from kivo.enumerations import LogLevel

Sink = Callable[[LogLevel, str], object]

_LEVELS = {LogLevel.INFO: logging.INFO, LogLevel.WARNING: logging.WARNING, LogLevel.ERROR: logging.ERROR}
_keys = itertools.count(1)
_sinks: dict[int, Sink] = {}  # until the library has released them
_change = threading.Condition()


def _key_of(user: Any) -> int:
    return int(ffi.cast("uintptr_t", user))


@ffi.callback("void(void *, kivo_log_level, kivo_text)")  # type: ignore[misc]
def _on_line(user: Any, level: int, line: Any) -> None:
    try:
        _sinks[_key_of(user)](LogLevel(level), string_of(line))
    except BaseException:
        sys.excepthook(*sys.exc_info())


@ffi.callback("void(void *)")  # type: ignore[misc]
def _on_release(user: Any) -> None:
    with _change:
        del _sinks[_key_of(user)]
        _change.notify_all()


def set_log_threshold(level: LogLevel) -> None:
    """Sets the threshold, before the first session is loaded. `LogLevel.OFF` silences the log at any time."""
    on_main_thread()
    check(lib.kivo_log_set_threshold(LogLevel(level)))


def set_log_sink(sink: Sink | None) -> None:
    """Hands the log to `sink` in place of standard output; None gives it back. `sink` is called on any thread, also
    on several at once; an exception of the sink's goes to `sys.excepthook`."""
    on_main_thread()
    if sink is None:
        check(lib.kivo_log_set_sink(ffi.NULL, ffi.NULL, ffi.NULL))
        return
    key = next(_keys)
    _sinks[key] = sink
    check(lib.kivo_log_set_sink(_on_line, ffi.cast("void *", key), _on_release))


def log_to(logger: logging.Logger) -> None:
    """Hands the log to a logger. Verbose and debug lines come as DEBUG."""
    set_log_sink(lambda level, line: logger.log(_LEVELS.get(level, logging.DEBUG), "%s", line))


@atexit.register
def _return_log() -> None:
    # A thread of the library's must not meet an interpreter that is gone.
    if _sinks:
        lib.kivo_log_set_sink(ffi.NULL, ffi.NULL, ffi.NULL)
        with _change:
            _change.wait_for(lambda: not _sinks, 10)
