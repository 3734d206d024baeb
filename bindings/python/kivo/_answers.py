"""The way from the library's main queue to asyncio."""

import asyncio
import itertools
import sys
from collections.abc import Callable
from typing import Any

from kivo._library import ffi, lib, on_main_thread, string_of
from kivo.enumerations import Event
from kivo.failures import failure_of
from kivo.values import Result

Receiver = Callable[..., object]  # of an outcome, or of nothing

_loop: asyncio.AbstractEventLoop | None = None
_keys = itertools.count(1)
# The library is given a key, no object: what is left over when the interpreter ends then points nowhere.
_receivers: dict[int, Receiver] = {}


_has_own_queue = False


def hand_over() -> None:
    """The host's own main queue runs the library's work from now on."""
    global _has_own_queue
    _has_own_queue = True


def report(kind: type[BaseException], error: BaseException, trace: Any) -> None:
    """Tells an exception of the host's own that has no other way out. Any thread."""
    sys.excepthook(kind, error, trace)


def report_to_loop(kind: type[BaseException], error: BaseException, trace: Any) -> None:
    """Hands an exception of the host's own to the loop on which it was raised."""
    if _loop is None or _loop.is_closed():
        report(kind, error, trace)
    else:
        _loop.call_exception_handler({"message": "A function that the library has called has failed",
                                      "exception": error.with_traceback(trace)})


def running_loop() -> asyncio.AbstractEventLoop:
    """The running loop, which drains the library's main queue from now on."""
    global _loop
    on_main_thread()
    loop = asyncio.get_running_loop()
    if _has_own_queue:
        _loop = loop
    elif loop is not _loop:
        descriptor = lib.kivo_main_descriptor()
        if descriptor < 0:
            raise RuntimeError("The library's main queue cannot be polled")
        if _loop is not None and not _loop.is_closed():
            _loop.remove_reader(descriptor)
        loop.add_reader(descriptor, lib.kivo_main_drain)
        _loop = loop
    return loop


def register(receiver: Receiver) -> Any:
    """A user pointer that stands for the receiver."""
    key = next(_keys)
    _receivers[key] = receiver
    return ffi.cast("void *", key)


def forget(user: Any) -> None:
    """The receiver is not called again."""
    _receivers.pop(int(ffi.cast("uintptr_t", user)), None)


def answer_to(user: Any) -> dict[str, Any]:
    """The structure that has outcomes sent to the receiver."""
    # A structure that is passed by value needs all its members: cffi leaves the others as the stack has them.
    return {"call": _on_answer, "user": user, "release": ffi.NULL}


def _receiver_of(user: Any) -> Receiver | None:
    return _receivers.get(int(ffi.cast("uintptr_t", user)))


@ffi.callback("void(void *, const kivo_outcome *)")  # type: ignore[misc]
def _on_answer(user: Any, outcome: Any) -> None:
    receiver = _receiver_of(user)
    if receiver is None:
        return
    told: Result | BaseException
    try:
        told = (failure_of(outcome.failure) if outcome.failure
                else Result(Event(outcome.event), string_of(outcome.data)))
    except BaseException as raised:  # whoever waits is answered, whatever happens
        told = raised
    receiver(told)


@ffi.callback("void(void *)")  # type: ignore[misc]
def on_work(user: Any) -> None:
    """Calls the receiver that `user` stands for."""
    receiver = _receiver_of(user)
    if receiver is not None:
        receiver()


def on_loop(loop: asyncio.AbstractEventLoop, function: Receiver) -> Receiver:
    """A receiver that has `function` called by the loop, where an exception of the host's own belongs."""
    def receive(*told: object) -> None:
        if not loop.is_closed():
            loop.call_soon(function, *told)

    return receive


async def outcome_of(begin: Any, *arguments: Any) -> Result:
    """Begins a request and waits for its outcome. Cancelling the wait gives the request up."""
    loop = running_loop()
    future: asyncio.Future[Result] = loop.create_future()

    def receive(told: Result | BaseException) -> None:
        if future.done() or loop.is_closed():
            return
        if isinstance(told, Result):
            future.set_result(told)
        else:
            future.set_exception(told)

    user = register(receive)
    try:
        request = begin(*arguments, answer_to(user))
        if request == 0:
            raise ValueError("The library has refused the call; standard error names the argument")
        try:
            return await future
        except asyncio.CancelledError:
            lib.kivo_request_give_up(request)
            raise
    finally:
        forget(user)
