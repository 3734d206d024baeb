"""The simulated identity service as a program, for tests of a host."""

import json
import shutil
import subprocess
import threading
import urllib.error
import urllib.request
from collections.abc import Iterable, Mapping
from types import TracebackType
from typing import IO, Any

_PATIENCE = 30  # seconds for the program to begin, and again for it to end


def _drain(stream: IO[str]) -> None:
    with stream:
        for _ in stream:
            pass


class Simulator:
    """Runs `kivo-simulator` from its making to `close`, or to the end of a `with`. Any thread.

    The faults are those that `kivo-simulator --help` lists, such as "delay:2s" or "status:503".
    """

    join_page: str  #: for `Deployment`
    certificate: str  #: the file of the authority's certificate, for `LinuxOptions.trusted_certificates`
    pin: str  #: the server's, for a list of pins
    address: str  #: of the page for a browser, and of the control interface

    def __init__(self, *, codes: Iterable[str] = ("123456",), faults: Mapping[str, str] | None = None,
                 program: str = "kivo-simulator", options: Iterable[str] = ()) -> None:
        """Lets the activation codes join. Raises FileNotFoundError without the program (package kivo-tools), and
        RuntimeError, with the program's own words, when it does not begin."""
        if shutil.which(program) is None:
            raise FileNotFoundError(f"{program} is not installed (package kivo-tools)")
        arguments = [f"--code={code}" for code in codes]
        arguments += [f"--fault={endpoint}={fault}" for endpoint, fault in (faults or {}).items()]
        self._process = subprocess.Popen([program, "--json", *arguments, *options], text=True,
                                         stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        assert self._process.stdout is not None and self._process.stderr is not None
        impatience = threading.Timer(_PATIENCE, self._process.kill)
        impatience.start()
        line = self._process.stdout.readline()
        impatience.cancel()
        if not line:
            told = self._process.communicate()[1].strip()
            raise RuntimeError(told or f"{program} has ended with status {self._process.returncode}")
        start = json.loads(line)
        self.join_page, self.certificate, self.pin = start["joinPage"], start["certificate"], start["pins"]["leaf"]
        self.address = start["page"].rstrip("/")
        # The program tells each request; nobody reads it here, and a full pipe would hold the program up.
        self._drains = [threading.Thread(target=_drain, args=(stream,), daemon=True)
                        for stream in (self._process.stdout, self._process.stderr)]
        for drain in self._drains:
            drain.start()

    def __enter__(self) -> "Simulator":
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.close()

    def close(self) -> None:
        """Ends the program. A second call does nothing."""
        if self._process.poll() is None:
            self._process.terminate()
            try:
                self._process.wait(_PATIENCE)
            except subprocess.TimeoutExpired:
                self._process.kill()
                self._process.wait()
        for drain in self._drains:
            drain.join(_PATIENCE)

    def inject(self, endpoint: str, fault: str, calls: int | None = None) -> None:
        """Makes an endpoint misbehave, for that many calls or until the fault is taken back."""
        self._ask("PUT", f"/faults/{endpoint}", {"fault": fault} | ({} if calls is None else {"calls": calls}))

    def clear_faults(self) -> None:
        """Takes every fault back."""
        self._ask("DELETE", "/faults")

    def add_code(self, code: str) -> None:
        """Lets another activation code join."""
        self._ask("POST", "/codes", {"code": code})

    def sessions(self) -> list[dict[str, Any]]:
        """The sessions that were joined: `name`, `tid`, `interfaceVersion` and `joinedAt` of each."""
        sessions: list[dict[str, Any]] = self._ask("GET", "/sessions")["sessions"]
        return sessions

    def records(self) -> list[dict[str, Any]]:
        """The last requests, the oldest first: `endpoint`, `status`, `violation` and more of each."""
        records: list[dict[str, Any]] = self._ask("GET", "/records")["records"]
        return records

    def violations(self) -> list[str]:
        """The breaches of the protocol in the last requests, a sentence each. A test asserts that there are none."""
        return [record["violation"] for record in self.records() if record["violation"]]

    def _ask(self, method: str, path: str, body: dict[str, Any] | None = None) -> Any:
        request = urllib.request.Request(self.address + path, None if body is None else json.dumps(body).encode(),
                                         {"Content-Type": "application/json"}, method=method)
        # The program is on this machine: no proxy is asked.
        opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        try:
            with opener.open(request, timeout=_PATIENCE) as answer:
                return json.load(answer)
        except urllib.error.HTTPError as refused:
            with refused:
                raise ValueError(refused.read().decode(errors="replace")) from None
