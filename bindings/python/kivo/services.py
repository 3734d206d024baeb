"""Services that a host brings in place of the platform's own: a keychain and a main queue."""

import abc
import atexit
from collections.abc import Callable
from typing import Any

from kivo._answers import hand_over, report
from kivo._library import check, ffi, guard, lib, on_main_thread, string_of, structure

_kept: list[Any] = []  # what the library calls until the process ends


@atexit.register
def _close() -> None:
    guard.kivo_guard_close()


class Keychain(abc.ABC):
    """A store for small secrets: the session and the activation code. An item has a name, which is a service and an
    account, and a value.

    The functions are called on any thread, also on several at once. A change is durable when the function returns. An
    exception makes the call fail, and goes to `sys.excepthook`. The interpreter ends after the calls under way, and
    later calls fail without reaching the keychain.
    """

    @abc.abstractmethod
    def set(self, service: str, account: str, value: bytes) -> None:
        """Stores a value, or replaces the former value."""

    @abc.abstractmethod
    def get(self, service: str, account: str) -> bytes | None:
        """The value, at most 16 MiB; None where there is none."""

    @abc.abstractmethod
    def remove(self, service: str, account: str) -> bool:
        """Deletes the item beyond recovery; False where there was none."""


def install_keychain(keychain: Keychain) -> None:
    """Puts the keychain in force, before the first session is loaded. It is kept until the process ends."""
    on_main_thread()
    failed = lib.KIVO_KEYCHAIN_FAILED

    @ffi.callback("kivo_keychain_status(void *, kivo_text, kivo_text, const void *, size_t)", error=failed,
                  onerror=report)  # type: ignore[misc]
    def store(_: Any, service: Any, account: Any, data: Any, length: int) -> int:
        keychain.set(string_of(service), string_of(account), bytes(ffi.buffer(data, length)) if length else b"")
        return int(lib.KIVO_KEYCHAIN_OK)

    @ffi.callback("kivo_keychain_status(void *, kivo_text, kivo_text, kivo_keychain_take, void *)", error=failed,
                  onerror=report)  # type: ignore[misc]
    def fetch(_: Any, service: Any, account: Any, take: Any, taker: Any) -> int:
        value = keychain.get(string_of(service), string_of(account))
        if value is None:
            return int(lib.KIVO_KEYCHAIN_NOT_FOUND)
        take(taker, ffi.from_buffer(value), len(value))
        return int(lib.KIVO_KEYCHAIN_OK)

    @ffi.callback("kivo_keychain_status(void *, kivo_text, kivo_text)", error=failed,
                  onerror=report)  # type: ignore[misc]
    def remove(_: Any, service: Any, account: Any) -> int:
        was_there = keychain.remove(string_of(service), string_of(account))
        return int(lib.KIVO_KEYCHAIN_OK if was_there else lib.KIVO_KEYCHAIN_NOT_FOUND)

    check(guard.kivo_guard_keychain(structure("kivo_keychain", set=store, get=fetch, remove=remove)))
    _kept.append((store, fetch, remove))


class MainQueue(abc.ABC):
    """The loop of a host whose asyncio loop cannot watch a descriptor, such as that of a toolkit. The loop that awaits
    requests must run on the queue's thread."""

    @abc.abstractmethod
    def post(self, delay: float, work: Callable[[], None]) -> None:
        """Has `work` called once on the main thread, no sooner than `delay` seconds from now; work with equal delays in
        the order in which it came. Returns at once. Called on any thread."""

    @abc.abstractmethod
    def is_current(self) -> bool:
        """Whether the calling thread is the main thread. Called on any thread."""


def install_main_queue(queue: MainQueue) -> None:
    """Puts the queue in force, before the first session is loaded. It is kept until the process ends."""
    on_main_thread()

    @ffi.callback("void(void *, uint64_t, kivo_work, void *)", onerror=report)  # type: ignore[misc]
    def post(_: Any, delay: int, work: Any, argument: Any) -> None:
        def run() -> None:
            work(argument)

        queue.post(delay / 1e9, run)

    @ffi.callback("bool(void *)", error=False, onerror=report)  # type: ignore[misc]
    def is_current(_: Any) -> bool:
        return queue.is_current()

    check(guard.kivo_guard_queue(structure("kivo_main_queue", post=post, is_current=is_current)))
    _kept.append((post, is_current))
    hand_over()
