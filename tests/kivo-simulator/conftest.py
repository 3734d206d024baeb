"""Starts kivo-simulator and talks to it from outside: over sockets, with signals, and by its files."""
import http.client
import json
import os
import re
import signal
import ssl
import subprocess

import jsonschema
import pytest

PROGRAM = os.environ["KIVO_SIMULATOR_PROGRAM"]
with open(os.path.join(os.environ["KIVO_SOURCE"], "tools/kivo-simulator/openapi.json"), encoding="utf-8") as file:
    OPENAPI = json.load(file)


def documented(method, path):
    """The operation that the description has for a request, or None."""
    for pattern, item in OPENAPI["paths"].items():
        if re.fullmatch(re.sub(r"\{\w+\}", "[^/]+", re.escape(pattern).replace(r"\{", "{").replace(r"\}", "}")), path):
            return item.get(method.lower())
    return None


def require(schema, value):
    jsonschema.Draft202012Validator({**schema, "components": OPENAPI["components"]}).validate(value)


class Simulator:
    """A running program."""

    def __init__(self, *options, environment=None):
        self.process = subprocess.Popen([PROGRAM, *options], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                        env={**os.environ, **(environment or {})})
        self.first_line = self.process.stdout.readline()
        if "--json" in options:
            start = json.loads(self.first_line)
            self.join_page, self.certificate = start["joinPage"], start["certificate"]
            self.control = re.fullmatch(r"http://(127\.0\.0\.1:\d+)/", start["page"])[1]
        else:
            told = dict(re.findall(r"(KIVO_\w+)=(\S+)", self.first_line))
            self.join_page, self.certificate = told["KIVO_JOIN_PAGE"], told["KIVO_AUTHORITY"]
            self.control = told["KIVO_SIMULATOR"].removeprefix("http://")

    def end(self, how=signal.SIGTERM):
        self.process.send_signal(how)
        self.output, self.errors = self.process.communicate(timeout=30)
        return self.process.returncode

    def raw(self, method, path, body=None, headers=None):
        """An exchange with the control interface, whatever its description says."""
        connection = http.client.HTTPConnection(self.control, timeout=30)
        if isinstance(body, (dict, list)):
            body, headers = json.dumps(body), {"Content-Type": "application/json", **(headers or {})}
        connection.request(method, path, body, headers or {})
        answer = connection.getresponse()
        content = answer.read().decode()
        connection.close()
        return answer, content

    def ask(self, method, path, body=None, status=200, headers=None):
        """An exchange whose answer is as the description says. Returns the answer's JSON, or its text."""
        operation = documented(method, path.split("?")[0])
        assert operation, f"{method} {path} is not in openapi.json"
        answer, content = self.raw(method, path, body, headers)
        assert answer.status == status, content
        response = operation["responses"][str(status)]
        if "$ref" in response:
            response = OPENAPI["components"]["responses"][response["$ref"].rsplit("/", 1)[1]]
        kind = answer.getheader("Content-Type").split(";")[0]
        value = json.loads(content) if kind == "application/json" else content
        require(response["content"][kind]["schema"], value)
        return value

    def service(self):
        """A connection to the identity service itself."""
        trust = ssl.create_default_context(cafile=self.certificate)
        return http.client.HTTPSConnection(self.join_page.split("/")[2], context=trust, timeout=30)

    def post(self, path, body, connection=None):
        """A request of a host. Returns the answer's JSON."""
        connection = connection or self.service()
        connection.request("POST", path, body if isinstance(body, (str, bytes)) else json.dumps(body),
                           {"Content-Type": "application/json; charset=UTF-8"})
        content = connection.getresponse().read()
        return json.loads(content) if content else None

    def join(self, code="123456"):
        return self.post("/enrol/join.html", join_body(code))

    def listen(self, headers=None):
        """A stream of events: the connection's answer, to be read by lines."""
        connection = http.client.HTTPConnection(self.control, timeout=30)
        connection.request("GET", "/events", headers=headers or {})
        answer = connection.getresponse()
        answer.kept = connection
        return answer


def join_body(code):
    info = ["appVersion", "os", "networkType", "NetworkIpAddress", "networkMacAddress", "deviceModel", "deviceSerialNo",
            "expiryDateLeafCert", "expiryDateIntermediateCert", "sdkVersion", "deviceId", "apiLevel"]
    config = ["target-env", "kivo-app-doclist", "kivo-expiry-grace", "kivo-facematch-min", "kivo-doc-issuers",
              "kivo-images"]
    return {"kivo-action": "init", "kivo-init-code": code, "kivo-device-code": "1801SECRET-KEY",
            "app-info": dict.fromkeys(info, "x"), "app-config": dict.fromkeys(config, "")}


def next_event(stream):
    """The next event of a stream: its number, its name and its data."""
    fields = {}
    while True:
        line = stream.readline().decode().rstrip("\n")
        name, _, value = line.partition(": ")
        if name in ("id", "event", "data"):
            fields[name] = value
        if not line and "event" in fields:
            return int(fields["id"]), fields["event"], json.loads(fields["data"])


@pytest.fixture
def start():
    """Starts programs, and kills those that still run at the end of the test."""
    started = []

    def begin(*options, **more):
        started.append(Simulator(*options, **more))
        return started[-1]

    yield begin
    for each in started:
        each.process.kill()
        each.process.communicate()


@pytest.fixture
def simulator(start):
    return start()
