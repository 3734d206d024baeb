"""Failures as exceptions."""

from typing import Any

from kivo._library import lib, string_of
from kivo.enumerations import Code, FailureKind


class Failure(Exception):
    """A request or a screen has failed. The texts carry no secret."""

    code: Code
    name: str  #: as the identity service writes it, such as "STATUS_INVALID_SESSION"
    message: str  #: in English, for hosts without a text of their own
    kind: FailureKind
    cause: str  #: one sentence for the person who reads the host's log
    is_cancellation: bool  #: whether the person has left a screen, and nothing went wrong

    def __init__(self, code: Code, kind: FailureKind, cause: str) -> None:
        super().__init__(code, kind, cause)
        response = lib.kivo_response_code_of(code)
        self.code = code
        self.name = string_of(response.name)
        self.message = string_of(response.message)
        self.kind = kind
        self.cause = cause
        self.is_cancellation = bool(lib.kivo_response_code_is_cancellation(code))

    def __str__(self) -> str:
        return f"{self.name} ({string_of(lib.kivo_failure_kind_name(self.kind))}): {self.cause}"


class Refused(Failure):
    """The identity service has refused the request; the code says why."""


class Unreachable(Failure):
    """No network, no connection or no answer in time: another attempt may succeed."""


class Untrusted(Failure):
    """The server's certificate or key is not the expected one: do not try again without looking."""


class NoSession(Failure):
    """There is no session to go on with: join first."""


_CLASSES: dict[FailureKind, type[Failure]] = {
    FailureKind.REFUSED: Refused,
    FailureKind.NO_NETWORK: Unreachable,
    FailureKind.CONNECTION: Unreachable,
    FailureKind.TIMED_OUT: Unreachable,
    FailureKind.CERTIFICATE: Untrusted,
    FailureKind.PINS: Untrusted,
    FailureKind.NO_SESSION: NoSession,
}


def failure_of(failure: Any) -> Failure:
    """The exception for a failure of the library's."""
    kind = FailureKind(failure.kind)
    return _CLASSES.get(kind, Failure)(Code(failure.code.code), kind, string_of(failure.cause))
