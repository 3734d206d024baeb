"""Identity-verification enrolment: `session = kivo.load(key)`, then `await session.join(code, config)`."""

from kivo._library import lib as _lib, string_of as _string_of
from kivo.enumerations import (AcquisitionObject, Code, DocumentType, Environment, Event, FailureKind, LogLevel,
                               ReadingFailure, ReadingStart, ScanKind)
from kivo.failures import Failure, NoSession, Refused, Unreachable, Untrusted
from kivo.log import log_to, set_log_sink, set_log_threshold
from kivo.screens import Display
from kivo.services import Keychain, MainQueue, install_keychain, install_main_queue
from kivo.sessions import Session, load
from kivo.simulator import Simulator
from kivo.theme import Color, Font, Theme
from kivo.values import Config, Deployment, LinuxOptions, Result, assume_network
from kivo.vendors import (Document, DocumentReader, FaceScanner, Reading, ReadingSettings, Scan, ScannerKeys,
                          ScanResult, install_document_reader, install_face_scanner)

__version__ = _string_of(_lib.kivo_version())

__all__ = [
    "AcquisitionObject", "Code", "Color", "Config", "Deployment", "Display", "Document", "DocumentReader",
    "DocumentType", "Environment", "Event", "FaceScanner", "Failure", "FailureKind", "Font", "Keychain",
    "LinuxOptions", "LogLevel", "MainQueue", "NoSession", "Reading", "ReadingFailure", "ReadingSettings",
    "ReadingStart", "Refused", "Result", "Scan", "ScanKind", "ScanResult", "ScannerKeys", "Session", "Simulator",
    "Theme", "Unreachable", "Untrusted", "assume_network", "install_document_reader", "install_face_scanner",
    "install_keychain", "install_main_queue", "load", "log_to", "set_log_sink", "set_log_threshold",
]
