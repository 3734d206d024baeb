"""The shared library, and the hand-over of texts and structures."""

import pathlib
import threading
from typing import Any

import cffi  # type: ignore[import]

from kivo._declarations import DECLARATIONS, LIBRARY, PLACES

ffi: Any = cffi.FFI()
ffi.cdef(DECLARATIONS)


def _load() -> Any:
    package = pathlib.Path(__file__).resolve().parent
    for place in PLACES:
        path = package / place / LIBRARY
        if path.exists():
            return ffi.dlopen(str(path))
    try:
        return ffi.dlopen(LIBRARY)
    except OSError as missing:
        raise ImportError(f"{LIBRARY} is neither beside the package {package} nor known to the loader: "
                          f"{missing}") from None


lib: Any = _load()
_guard_ffi: Any = cffi.FFI()
_guard_ffi.include(ffi)
_guard_ffi.cdef("""
kivo_status kivo_guard_keychain(const kivo_keychain *host);
kivo_status kivo_guard_queue(const kivo_main_queue *host);
void kivo_guard_close(void);
""")
# Installs a host's services, and closes them before the interpreter ends.
guard: Any = _guard_ffi.dlopen(str(pathlib.Path(__file__).with_name("_guard.so")))
_main_thread: int | None = None


def on_main_thread() -> None:
    """The library belongs to one thread: the first that uses the package."""
    global _main_thread
    if _main_thread is None:
        _main_thread = threading.get_ident()
    elif _main_thread != threading.get_ident():
        raise RuntimeError("Kivo belongs to the thread that has used it first")


def text_of(value: str, name: str) -> dict[str, Any]:
    """A text as the library takes it. The dictionary holds the bytes, so it lives until the call returns."""
    if not isinstance(value, str):
        raise TypeError(f"{name} must be a str, not {type(value).__name__}")
    data = value.encode()
    return {"data": ffi.from_buffer("char[]", data), "length": len(data)}


def string_of(text: Any) -> str:
    """A text of the library's."""
    return bytes(ffi.unpack(text.data, text.length)).decode()


def taken(string: Any) -> str:
    """A string that the library hands over; it is freed."""
    if string == ffi.NULL:
        raise RuntimeError("The library has refused the call; standard error says why")
    try:
        return string_of(lib.kivo_string_text(string))
    finally:
        lib.kivo_string_free(string)


def structure(type_name: str, **members: Any) -> list[dict[str, Any]]:
    """A pointer to a structure that begins with its size, for a call."""
    return [{"size": ffi.sizeof(type_name), **members}]


def check(status: int) -> None:
    """Raises what a status other than KIVO_OK means."""
    if status == lib.KIVO_MISUSE:
        raise ValueError("The library has refused the call; standard error names the argument")
    if status == lib.KIVO_NO_MEMORY:
        raise MemoryError
    if status != lib.KIVO_OK:
        raise OSError(f"The system has refused the call ({string_of(lib.kivo_status_name(status))})")
