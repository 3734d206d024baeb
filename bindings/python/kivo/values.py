"""What a host tells the library, and what a success tells the host."""

import dataclasses
import os
from typing import Any

from kivo._library import check, lib, on_main_thread, structure, text_of
from kivo.enumerations import Environment, Event


def _texts(value: Any, *names: str) -> dict[str, Any]:
    return {name: text_of(getattr(value, name), name) for name in names}


@dataclasses.dataclass(frozen=True, kw_only=True)
class Config:
    """A host's requirements for a session. The identity service defines what the texts mean."""

    environment: Environment
    document_list: str = ""  #: the accepted documents
    expiry_grace: str = ""  #: how long a document may have expired
    face_match_minimum: str = ""  #: the least likeness of face and document
    document_issuers: str = ""  #: the accepted issuers
    images: str = ""  #: the images that the service is to return

    def _structure(self) -> list[dict[str, Any]]:
        texts = _texts(self, "document_list", "expiry_grace", "face_match_minimum", "document_issuers", "images")
        return structure("kivo_config", environment=Environment(self.environment), **texts)


@dataclasses.dataclass(frozen=True, kw_only=True)
class Deployment:
    """Where the identity service is, and the host's rules for reaching it."""

    join_page_prod: str = ""  #: https addresses; an environment without a page cannot be joined
    join_page_preprod: str = ""
    join_page_test: str = ""
    join_page_dev: str = ""
    face_tec_production: bool = False  #: whether the face scan library runs in production mode
    face_tec_production_key: str = dataclasses.field(default="", repr=False)
    requires_pins: bool = False  #: whether requests fail where no list of pins is found

    def install(self) -> None:
        """Replaces the whole deployment, before the first join."""
        on_main_thread()
        texts = _texts(self, "join_page_prod", "join_page_preprod", "join_page_test", "join_page_dev",
                       "face_tec_production_key")
        check(lib.kivo_deployment_install(structure(
            "kivo_deployment", face_tec_production=bool(self.face_tec_production),
            requires_pins=bool(self.requires_pins), **texts)))


@dataclasses.dataclass(frozen=True, kw_only=True)
class LinuxOptions:
    """The places that the services of Linux use. An empty path stands for the default."""

    main_bundle: str | os.PathLike[str] = ""  #: the host's bundle, with its identifier and its list of pins
    data_folder: str | os.PathLike[str] = ""  #: the folder of the session; it must belong to this user
    trusted_certificates: str | os.PathLike[str] = ""  #: a file (PEM) that replaces the system's store
    camera_pipeline: str = ""  #: the GStreamer pipeline that gives the camera's pictures
    language: str = ""  #: the person's language, such as "de"; otherwise that of LC_ALL, LC_MESSAGES or LANG

    def install(self) -> None:
        """Puts the services with these places in force, before any other call but the log's."""
        on_main_thread()
        paths = {name: text_of(os.fspath(getattr(self, name)), name)
                 for name in ("main_bundle", "data_folder", "trusted_certificates")}
        texts = _texts(self, "camera_pipeline", "language")
        check(lib.kivo_linux_install(structure("kivo_linux_options", **paths, **texts)))


@dataclasses.dataclass(frozen=True)
class Result:
    """A success: the step and its data, which is the transaction identifier unless the event says otherwise."""

    event: Event
    data: str = dataclasses.field(repr=False)  # a typed code is a secret


def assume_network() -> None:
    """Has requests tried without asking whether the machine has a network. Call before the first session."""
    on_main_thread()
    check(lib.kivo_network_assume())
