"""kivo-simulator --check-service, against kivo-simulator with faults and against services that err in other ways."""
import http.server
import json
import ssl
import subprocess
import threading

import pytest

from conftest import PROGRAM


def check(page, certificate, *options):
    return subprocess.run([PROGRAM, "--check-service", page, "--code", "123456", "--cacert", certificate, *options],
                          capture_output=True, text=True, timeout=120)


# Each named fault: what the check says of an update that meets it, or None for what the protocol allows.
FAULTS = {
    "slow": None, "slow-body": None, "slow-reader": None, "empty": None, "refuse": None, "bad-document": None,
    "drop": "update: there is no whole answer after 3 s; expected a whole answer",
    "reset": "update: connectionLost", "truncate": "update: connectionLost", "garbage": "update: badAnswer",
    "html": "update: the answer is no JSON in UTF-8; expected a JSON object",
    "204": "update: the status 204 brings no body", "404": "update: the status is 404; expected 200 to 299",
    "500": "update: the status is 500", "redirect": "update: unsupportedScheme",
    "huge": "update: answerTooLarge", "expired": "update: serverCertificateUntrusted",
    "not-yet-valid": "update: serverCertificateUntrusted", "wrong-host": "update: serverCertificateUntrusted",
    "self-signed": "update: serverCertificateUntrusted", "untrusted": "update: serverCertificateUntrusted",
}


def test_a_sound_service_keeps_the_protocol(simulator):
    ended = check(simulator.join_page, simulator.certificate)
    assert (ended.returncode, ended.stderr) == (0, "") and "keeps the protocol in 10 requests" in ended.stdout
    records = simulator.ask("GET", "/records")["records"]
    assert [each["violation"] for each in records if each["violation"]] == ["the body is not JSON"]


def test_finds_every_named_fault_that_breaks_the_protocol(start):
    simulator = start("--host-per-endpoint")
    assert {each["name"] for each in simulator.ask("GET", "/faults")["named"]} == set(FAULTS)
    for fault, said in FAULTS.items():
        simulator.ask("PUT", "/faults/update", {"fault": fault, "calls": 1})
        ended = check(simulator.join_page, simulator.certificate, "--timeout", "3")
        assert ended.returncode == (1 if said else 0), fault + ended.stdout
        if said:
            assert ended.stdout.startswith(said) and ended.stdout.count("\n") == 1, fault + ended.stdout
        assert ("update: refused with" in ended.stderr) == (fault in ("refuse", "bad-document")), ended.stderr


@pytest.mark.parametrize("fault, said", [
    ("empty", 'join: the "response-type" is not "data"'),
    ("refuse", "join: the code is refused with STATUS_AUTH_FAILED; expected a code that joins"),
    ("reset", "join: connectionLost"),
    ("answer:[]", "join: the answer is a list; expected a JSON object"),
    ('answer:{"response-type":"data","tid":7}', 'join: "tid" is a number; expected a text'),
    ('answer:{"response-type":"fail","response-code":"NEVER_HEARD"}', "the name of an error"),
    ('answer:{"response-type":"fail","response-code":1001}', '"response-code" is a number; expected a text'),
    ("answer:" + "[" * 40 + "]" * 40, "too much JSON; expected at most 32 levels"),
])
def test_tells_what_is_wrong_with_a_join(simulator, fault, said):
    simulator.ask("PUT", "/faults/join", {"fault": fault})
    ended = check(simulator.join_page, simulator.certificate)
    assert ended.returncode == 1 and said in ended.stdout
    assert "nothing else could be checked" in ended.stderr


@pytest.mark.parametrize("fault, said", [
    ("html", "face scan: the answer is no JSON"), ("status:404", "face scan: the answer is no JSON"),
    ('answer:{"response-type":"data"}', 'neither "pass" nor "fail"'),
    ('answer:{"response-type":"pass","response-data":{"scanResultBlob":1}}', "is no text"),
    ("refuse", None), ("another-scan", None),
])
def test_tells_what_is_wrong_with_the_answer_to_a_scan(simulator, fault, said):
    simulator.ask("PUT", "/faults/facemap", {"fault": fault})
    ended = check(simulator.join_page, simulator.certificate)
    assert ended.returncode == (1 if said else 0) and (said or "keeps the protocol") in ended.stdout


class Careless(http.server.BaseHTTPRequestHandler):
    """A service that accepts everything, and writes numbers where texts belong."""
    protocol_version = "HTTP/1.1"

    def do_POST(self):
        self.rfile.read(int(self.headers["Content-Length"]))
        base = f"https://localhost:{self.server.server_port}/"
        answer = json.dumps({
            "response-type": "data", "tid": "T1", "app-config": {},
            "idp-config": {"update-endpoint": base, "status-endpoint": base, "resume-endpoint": base,
                           **self.server.more},
            "idp-biodata": {"biodata-endpoint": base}, "idp-facemap": {}}).encode()
        self.send_response(200)
        self.send_header("Content-Length", str(len(answer)))
        self.end_headers()
        self.wfile.write(answer)

    def log_message(self, *_):
        pass


@pytest.mark.parametrize("more, said", [
    ({}, ["join without a body: the request is accepted; expected a refusal with STATUS_BAD_PROTOCOL",
          "update of a foreign session: the request is accepted; expected a refusal"]),
    ({"retry-limit": 3}, ['join: "retry-limit" in "idp-config" is a number; expected a text']),
    ({"retry-limit": "three"}, ['join: "retry-limit" in "idp-config" is no such text; expected a decimal number']),
    ({"status-endpoint": "http://localhost/"},
     ['"status-endpoint" in "idp-config" is no such text; expected an https']),
])
def test_tells_what_another_service_does_wrong(simulator, tmp_path, more, said):
    # The certificate is made here, as a service of somebody else has its own.
    key, certificate = tmp_path / "key.pem", tmp_path / "certificate.pem"
    subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=localhost", "-days", "2",
                    "-addext", "subjectAltName=DNS:localhost", "-keyout", key, "-out", certificate],
                   check=True, capture_output=True)
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Careless)
    server.more = more
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(certificate, key)
    server.socket = context.wrap_socket(server.socket, server_side=True)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    ended = check(f"https://localhost:{server.server_port}/", str(certificate), "--json")
    server.shutdown()
    lines = [json.loads(each) for each in ended.stdout.splitlines()]
    found = [f"{each['step']}: {each['found']}; expected {each['expected']}" for each in lines[:-1]]
    assert ended.returncode == 1 and lines[-1]["findings"] == len(found)
    for sentence in said:
        assert any(sentence in each for each in found), found
