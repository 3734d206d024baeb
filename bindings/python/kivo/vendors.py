"""The vendors' libraries that read documents and scan faces, as objects that a host brings."""

import abc
import dataclasses
import weakref
from collections.abc import Callable, Sequence
from typing import Any

from kivo._answers import report_to_loop
from kivo._library import check, ffi, lib, on_main_thread, string_of, structure, text_of
from kivo.enumerations import DocumentType, ReadingFailure, ReadingStart, ScanKind

_kept: list[Any] = []  # what the library calls until the process ends


_bytes_of: Any = weakref.WeakKeyDictionary()


def _texts(values: Sequence[str], name: str) -> Any:
    texts = [text_of(value, name) for value in values]
    array = ffi.new("kivo_text[]", texts)
    _bytes_of[array] = texts  # the array refers to their bytes
    return array


@dataclasses.dataclass(frozen=True)
class Document:
    """What was read. Personal data: the library never logs it."""

    session_id: str = dataclasses.field(default="", repr=False)  #: the chip's data at the proxy; empty without a chip
    page_lines: Sequence[str] = dataclasses.field(default=(), repr=False)  #: at the foot of the page, 8 at most

    def _structure(self) -> list[dict[str, Any]]:
        return structure("kivo_document", session_id=text_of(self.session_id, "session_id"),
                         page_lines=_texts(self.page_lines, "page_lines"), page_line_count=len(self.page_lines))


@dataclasses.dataclass(frozen=True)
class ReadingSettings:
    """The settings of a reading."""

    allowed_types: tuple[DocumentType, ...]
    proxy_address: str  #: the document proxy's
    access_key: str = dataclasses.field(repr=False)  #: the proxy's, a secret
    encryption_pins: tuple[str, ...]  #: of the keys that encrypt the data beside the connection
    uses_pins: bool  #: whether connections go to pinned servers only
    skip_chip_after_attempts: int
    instructions_play_count: int
    shows_instructions_on_first_use_only: bool
    shows_document_selection: bool
    shows_page_result: bool
    shows_chip_result: bool
    plays_shutter_sound: bool


class Reading:
    """A reading under way. The vendor's screens have closed when the host tells how it ended. Any thread."""

    def __init__(self, handle: Any) -> None:
        self._handle = handle

    def succeed(self, document: Document | None = None) -> None:
        """Ends the reading with what was read."""
        check(lib.kivo_reading_succeed(self._handle, ffi.NULL if document is None else document._structure()))

    def fail(self, reason: ReadingFailure, document: Document | None = None) -> None:
        """Ends the reading without success; the document gives the lines of the page where they were read."""
        check(lib.kivo_reading_fail(self._handle, ReadingFailure(reason),
                                    ffi.NULL if document is None else document._structure()))


class DocumentReader(abc.ABC):
    """A document reader. Its functions are called on the main thread; exceptions belong to the loop."""

    @abc.abstractmethod
    def start(self, settings: ReadingSettings, reading: Reading) -> ReadingStart:
        """Begins a reading. With `ReadingStart.STARTED` the host calls `reading.succeed` or `reading.fail` later."""

    def finish(self, session_id: str) -> None:
        """The SDK no longer needs the session of that name at the document proxy."""


def install_document_reader(reader: DocumentReader) -> None:
    """Puts the reader in force, before the first session is loaded. It is kept until the process ends."""
    on_main_thread()

    @ffi.callback("kivo_reading_start(void *, const kivo_reading_settings *, kivo_reading *)",
                  error=lib.KIVO_READING_NOT_STARTED, onerror=report_to_loop)  # type: ignore[misc]
    def start(_: Any, given: Any, reading: Any) -> int:
        flags = ("uses_pins", "shows_instructions_on_first_use_only", "shows_document_selection", "shows_page_result",
                 "shows_chip_result", "plays_shutter_sound")
        numbers = ("skip_chip_after_attempts", "instructions_play_count")
        settings = ReadingSettings(
            allowed_types=tuple(DocumentType(given.allowed_types[i]) for i in range(given.allowed_type_count)),
            proxy_address=string_of(given.proxy_address), access_key=string_of(given.access_key),
            encryption_pins=tuple(string_of(given.encryption_pins[i]) for i in range(given.encryption_pin_count)),
            **{name: bool(getattr(given, name)) for name in flags}, **{name: getattr(given, name) for name in numbers})
        return ReadingStart(reader.start(settings, Reading(reading)))

    @ffi.callback("void(void *, kivo_text)", onerror=report_to_loop)  # type: ignore[misc]
    def finish(_: Any, session_id: Any) -> None:
        reader.finish(string_of(session_id))

    check(lib.kivo_document_reader_install(structure("kivo_document_reader", start=start, finish=finish)))
    _kept.append((start, finish))


@dataclasses.dataclass(frozen=True)
class ScannerKeys:
    """The keys with which the vendor's library begins. They are secrets; each may be empty."""

    production: bool  #: the vendor's production mode, in which there is a production key
    production_key: str = dataclasses.field(repr=False)
    device_key_identifier: str = dataclasses.field(repr=False)
    face_scan_encryption_key: str = dataclasses.field(repr=False)


@dataclasses.dataclass(frozen=True, kw_only=True)
class ScanResult:
    """What was scanned, as the vendor gives it: pictures and scan in Base64."""

    status: int = 0  #: the vendor's number; 0 for a completed scan
    session_id: str = ""
    scan: str = dataclasses.field(default="", repr=False)  #: 64 MiB at most
    images: Sequence[str] = dataclasses.field(default=(), repr=False)  #: 16 at most; of a card its front
    other_images: Sequence[str] = dataclasses.field(default=(), repr=False)  #: in low quality; of a card its back


class Scan:
    """A scan under way."""

    def __init__(self, handle: Any, kind: ScanKind) -> None:
        self._handle = handle
        self.kind = kind

    def submit(self, result: ScanResult) -> None:
        """Hands a result over. The SDK answers with `proceed` or `cancel`, perhaps before this function returns."""
        check(lib.kivo_scan_submit(self._handle, structure(
            "kivo_scan_result", status=result.status, session_id=text_of(result.session_id, "session_id"),
            scan=text_of(result.scan, "scan"), images=_texts(result.images, "images"), image_count=len(result.images),
            other_images=_texts(result.other_images, "other_images"), other_image_count=len(result.other_images))))

    def end(self) -> None:
        """The vendor's screens have closed, with a verdict or without."""
        check(lib.kivo_scan_end(self._handle))
        _scans.pop(self._handle, None)


_scans: dict[Any, Scan] = {}  # from their start to their end


class FaceScanner(abc.ABC):
    """A scanner of faces and ID cards. Its functions are called on the main thread; exceptions belong to the loop."""

    @abc.abstractmethod
    def initialize(self, keys: ScannerKeys, done: Callable[[bool], None]) -> None:
        """Begins the vendor's library; `done` tells once, on any thread, whether it has begun."""

    @abc.abstractmethod
    def start(self, scan: Scan, session_token: str) -> None:
        """Shows the vendor's screens. The host submits results until the SDK has given its verdict, and ends the scan
        when the screens have closed."""

    @abc.abstractmethod
    def proceed(self, scan: Scan, blob: str) -> bool:
        """The server has taken what was submitted. False when the vendor wants another scan, or refuses the blob."""

    @abc.abstractmethod
    def cancel(self, scan: Scan) -> None:
        """The SDK ends the scan without success: the vendor closes its screens."""

    def progress(self, scan: Scan, fraction: float) -> None:
        """How much of the upload is done, from 0 to 1."""

    def show_message(self, scan: Scan, message: str) -> None:
        """A text to show while the upload takes long."""

    def set_language(self, language: str) -> None:
        """The language of the vendor's screens."""

    def set_success_message(self, message: str) -> None:
        """The text that the vendor's screens show after a success."""

    def user_agent(self, session_id: str) -> str:
        """The vendor's user agent for a session."""
        return ""


def install_face_scanner(scanner: FaceScanner) -> None:
    """Puts the scanner in force, before the first session is loaded. It is kept until the process ends."""
    on_main_thread()

    def called(signature: str, **options: Any) -> Any:
        return ffi.callback(signature, onerror=report_to_loop, **options)

    @called("void(void *, const kivo_scanner_keys *, kivo_initialization *)")  # type: ignore[misc]
    def initialize(_: Any, keys: Any, initialization: Any) -> None:
        texts = ("production_key", "device_key_identifier", "face_scan_encryption_key")
        scanner.initialize(
            ScannerKeys(bool(keys.production), **{name: string_of(getattr(keys, name)) for name in texts}),
            lambda success: check(lib.kivo_face_scanner_initialized(initialization, bool(success))))

    @called("void(void *, kivo_scan_kind, kivo_text, kivo_scan *)")  # type: ignore[misc]
    def start(_: Any, kind: int, session_token: Any, handle: Any) -> None:
        scan = _scans[handle] = Scan(handle, ScanKind(kind))
        try:
            scanner.start(scan, string_of(session_token))
        except BaseException:
            if handle in _scans:
                scan.end()  # nobody else will
            raise

    @called("bool(void *, kivo_scan *, kivo_text)", error=False)  # type: ignore[misc]
    def proceed(_: Any, scan: Any, blob: Any) -> bool:
        return bool(scanner.proceed(_scans[scan], string_of(blob)))

    @called("void(void *, kivo_scan *)")  # type: ignore[misc]
    def cancel(_: Any, scan: Any) -> None:
        scanner.cancel(_scans[scan])

    @called("void(void *, kivo_scan *, float)")  # type: ignore[misc]
    def progress(_: Any, scan: Any, fraction: float) -> None:
        scanner.progress(_scans[scan], fraction)

    @called("void(void *, kivo_scan *, kivo_text)")  # type: ignore[misc]
    def show_message(_: Any, scan: Any, message: Any) -> None:
        scanner.show_message(_scans[scan], string_of(message))

    @called("void(void *, kivo_text)")  # type: ignore[misc]
    def set_language(_: Any, language: Any) -> None:
        scanner.set_language(string_of(language))

    @called("void(void *, kivo_text)")  # type: ignore[misc]
    def set_success_message(_: Any, message: Any) -> None:
        scanner.set_success_message(string_of(message))

    @called("void(void *, kivo_text, kivo_take_text, void *)")  # type: ignore[misc]
    def user_agent(_: Any, session_id: Any, take: Any, taker: Any) -> None:
        given = text_of(scanner.user_agent(string_of(session_id)), "user_agent")
        take(taker, given)

    functions = {"initialize": initialize, "start": start, "proceed": proceed, "cancel": cancel, "progress": progress,
                 "show_message": show_message, "set_language": set_language,
                 "set_success_message": set_success_message, "user_agent": user_agent}
    check(lib.kivo_face_scanner_install(structure("kivo_face_scanner", **functions)))
    _kept.append(functions)
