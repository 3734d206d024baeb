"""Verification sessions."""

from collections.abc import Callable
from typing import Any

from kivo._answers import answer_to, forget, on_loop, outcome_of, register, running_loop
from kivo._library import check, ffi, lib, on_main_thread, text_of
from kivo.enumerations import AcquisitionObject
from kivo.failures import Failure, failure_of
from kivo.screens import Display
from kivo.theme import Theme
from kivo.values import Config, Result


class Session:
    """A verification session. A process has one for each interface version; `kivo.load` gives it.

    A request raises a `Failure` when it fails, and is given up when its task is cancelled: the identity service may
    have received it all the same.
    """

    def __init__(self, handle: Any) -> None:
        self._handle = handle
        self.theme = Theme(handle)  #: the looks and texts of the session's screens
        self._acquisition: Any = None
        self._display: Display | None = None

    async def join(self, activation_code: str, config: Config) -> Result:
        """Joins the session of an activation code. The join takes the place of an earlier session."""
        if not isinstance(config, Config):
            raise TypeError(f"config must be a kivo.Config, not {type(config).__name__}")
        code, requirements = text_of(activation_code, "activation_code"), config._structure()
        return await outcome_of(lib.kivo_session_join, self._handle, code, requirements)

    async def update(self, action: str, message: str) -> Result:
        """Reports an action and a message to the session that this process has joined."""
        texts = text_of(action, "action"), text_of(message, "message")
        return await outcome_of(lib.kivo_session_update, self._handle, *texts)

    async def status(self) -> Result:
        """Asks for the session's status."""
        return await outcome_of(lib.kivo_session_status, self._handle)

    async def upload(self, subject: AcquisitionObject, data: str) -> Result:
        """Uploads text, such as Base64, as evidence, and counts one attempt."""
        evidence = AcquisitionObject(subject), text_of(data, "data")
        return await outcome_of(lib.kivo_session_upload, self._handle, *evidence)

    async def commit(self) -> Result:
        """Commits the session."""
        return await outcome_of(lib.kivo_session_commit, self._handle)

    def reset(self) -> None:
        """Deletes the stored session. Requests under way continue, and the object is ready for another join."""
        on_main_thread()
        check(lib.kivo_session_reset(self._handle))

    def resume_in_browser(self) -> None:
        """Opens the session's resume page in the person's browser. Does nothing without a session."""
        on_main_thread()
        check(lib.kivo_session_resume_in_browser(self._handle))

    @property
    def last_failure(self) -> Failure | None:
        """The failure that the session told last. A request that was given up does not count."""
        failure = lib.kivo_session_last_failure(self._handle)
        if failure == ffi.NULL:
            return None
        try:
            return failure_of(failure)
        finally:
            lib.kivo_failure_free(failure)

    def show_on(self, display: Display | None) -> None:
        """Has the session show its screens on the display."""
        on_main_thread()
        check(lib.kivo_session_set_display(self._handle, ffi.NULL if display is None else display._handle))
        self._display = display  # which lives as long as the session shows screens there

    def acquire(self, subject: AcquisitionObject, on_answer: Callable[[Result | Failure], None]) -> None:
        """Shows the screen that acquires `subject`. `on_answer` is called on the loop as often as the screen has
        something to tell, until the next call takes its place. Without a display, or for a `subject` without a
        screen, raises `ValueError`."""
        user = register(on_loop(running_loop(), on_answer))
        try:
            check(lib.kivo_session_acquire(self._handle, AcquisitionObject(subject), answer_to(user)))
        except BaseException:
            forget(user)
            raise
        if self._acquisition is not None:
            forget(self._acquisition)
        self._acquisition = user


_sessions: dict[Any, Session] = {}


def load(key: str, version: str = "") -> Session:
    """The session of an interface version, "14" to "18"; empty for the newest. `key` becomes part of the device code
    that a join sends. Loading a version again gives the same session with the new key."""
    on_main_thread()
    handle = lib.kivo_session_open(text_of(key, "key"), text_of(version, "version"))
    if handle == ffi.NULL:
        raise ValueError(f"There is no interface version {version!r}")
    if handle not in _sessions:
        _sessions[handle] = Session(handle)
    return _sessions[handle]
