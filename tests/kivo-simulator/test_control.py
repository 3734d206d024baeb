"""The control interface, held against openapi.json."""
import contextlib
import gzip
import http.client
import json
import re
import socket
import ssl
import time

import pytest

from conftest import OPENAPI, documented, next_event, require

METHODS = ["GET", "PUT", "POST", "DELETE", "PATCH"]


def test_serves_every_route_that_is_described_and_no_other(simulator):
    for pattern, item in OPENAPI["paths"].items():
        path = pattern.replace("{endpoint}", "update").replace("{code}", "123456")
        for method in METHODS:
            if method == "GET" and pattern == "/events":
                assert simulator.listen().status == 200
                continue
            answer, content = simulator.raw(method, path, {})
            if method.lower() in item:
                assert answer.status not in (404, 405), f"{method} {path}: {content}"
            else:
                assert answer.status == 405 and "error" in json.loads(content), f"{method} {path}"
        simulator.raw("POST", "/codes", {"code": "123456"})
    for stranger in ["/nothing", "/faults/", "/codes//picture.svg", "/page.html", "/../etc/passwd"]:
        assert simulator.raw("GET", stranger)[0].status in (404, 405) and documented("GET", stranger) is None


def test_what_is_asked_for_is_answered_as_described(simulator):
    assert simulator.ask("GET", "/service")["joinPage"] == simulator.join_page
    assert "<html" in simulator.ask("GET", "/")
    assert simulator.ask("GET", "/openapi.json") == OPENAPI
    assert "replaceChildren" in simulator.ask("GET", "/page.js") and "color-scheme" in simulator.ask("GET", "/page.css")

    assert len(simulator.ask("GET", "/faults")["named"]) > 10
    reset = {"endpoint": "update", "fault": "reset", "callsLeft": None}
    assert simulator.ask("PUT", "/faults/update", {"fault": "drop", "calls": 3})["pending"][0]["callsLeft"] == 3
    assert simulator.ask("PUT", "/faults/update", {"fault": "reset"})["pending"] == [reset]
    late = {"endpoint": "join", "fault": "delay:30ms", "callsLeft": 2}
    assert simulator.ask("PUT", "/faults/join", {"fault": "delay:30ms", "calls": 2})["pending"] == [reset, late]
    assert simulator.ask("DELETE", "/faults/update")["pending"] == [late]
    simulator.join()
    assert simulator.ask("GET", "/faults")["pending"] == [{**late, "callsLeft": 1}]
    assert simulator.ask("DELETE", "/faults")["pending"] == []

    assert simulator.ask("POST", "/codes", {"code": "A-1_b"}, 201)["codes"] == ["123456", "A-1_b"]
    assert simulator.ask("GET", "/codes/A-1_b/picture.svg").startswith("<svg")
    assert simulator.join("A-1_b")["tid"] == "T2"
    assert simulator.ask("DELETE", "/codes/A-1_b")["codes"] == ["123456"]
    assert simulator.join("A-1_b")["response-code"] == "STATUS_INVALID_ACTIVATION_CODE"
    assert [each["name"] for each in simulator.ask("GET", "/sessions")["sessions"]] == ["s1", "s2"]

    assert [each["number"] for each in simulator.ask("GET", "/records?after=1&limit=1")["records"]] == [3]
    assert simulator.ask("GET", "/records")["records"][0]["fault"] == "delay:30ms"
    assert simulator.ask("DELETE", "/records") == {"records": [], "last": 3, "violations": 0}


@pytest.mark.parametrize("method, path, body, status, said", [
    ("PUT", "/faults/join", {"fault": "unheard"}, 400, "reset or delay:2s"),
    ("PUT", "/faults/join", {"fault": "delay:1h"}, 400, "such as 2s or 250ms, not"),
    ("PUT", "/faults/join", {"fault": "status:99"}, 400, "such as 503"),
    ("PUT", "/faults/join", {"fault": "redirect:a\r\nSet-Cookie: b"}, 400, "such as https"),
    ("PUT", "/faults/join", {"fault": "reset", "calls": 0}, 400, "from 1 to"),
    ("PUT", "/faults/join", {"fault": "reset", "calls": "2"}, 400, "from 1 to"),
    ("PUT", "/faults/join", {"fault": "answer:" + "x" * 2000}, 400, "1024 bytes"),
    ("PUT", "/faults/join", {"fault": "reset", "when": "later"}, 400, "the body is no"),
    ("PUT", "/faults/join", ["reset"], 400, "the body is no"),
    ("PUT", "/faults/jion", {"fault": "reset"}, 404, "GET /faults"),
    ("DELETE", "/faults/jion", None, 404, "GET /faults"),
    ("POST", "/codes", {"code": "a b"}, 400, "at most 64 letters"),
    ("POST", "/codes", {"code": "a" * 65}, 400, "at most 64 letters"),
    ("POST", "/codes", {"code": 123456}, 400, "the body is no"),
    ("POST", "/codes", {"code": "123456"}, 409, "already"),
    ("POST", "/codes", {"code": "x" * 70000}, 413, "64 KiB"),
    ("DELETE", "/codes/999", None, 404, "no such code"),
    ("GET", "/codes/999/picture.svg", None, 404, "no such code"),
    ("GET", "/records?limit=0", None, 400, "from 1 to 500"),
    ("GET", "/records?after=-1", None, 400, "is a number"),
])
def test_refuses_with_a_sentence(simulator, method, path, body, status, said):
    assert said in simulator.ask(method, path, body, status)["error"]
    assert simulator.ask("GET", "/faults")["pending"] == [] and simulator.ask("GET", "/codes")["codes"] == ["123456"]


def test_no_page_of_another_origin_drives_it(simulator):
    port = simulator.control.split(":")[1]
    json_type = {"Content-Type": "application/json"}
    good = [{}, {"Host": f"localhost:{port}"}, {"Sec-Fetch-Site": "none"},
            {"Origin": f"http://{simulator.control}", "Sec-Fetch-Site": "same-origin"}]
    bad = [{"Host": f"rebound.example:{port}"}, {"Host": "127.0.0.1"}, {"Origin": "https://evil.example"},
           {"Origin": "null"}, {"Origin": f"http://127.0.0.1.evil.example:{port}"}, {"Sec-Fetch-Site": "cross-site"},
           {"Origin": f"http://localhost:{port}"}, {"Sec-Fetch-Site": "same-site"}]
    for headers in good:
        simulator.ask("GET", "/faults", headers=headers)
    for headers in bad:
        simulator.ask("GET", "/records", status=403, headers=headers)
        simulator.ask("DELETE", "/faults", status=403, headers=headers)
        simulator.ask("PUT", "/faults/join", {"fault": "reset"}, 403, headers)
        assert simulator.raw("GET", "/events", headers=headers)[0].status == 403
    # What a form or a script of another page can send without asking first.
    for kind in ["text/plain", "application/x-www-form-urlencoded", "multipart/form-data", "application/jsonx"]:
        simulator.ask("POST", "/codes", '{"code": "1"}', 415, {"Content-Type": kind})
    form = '--x\r\nContent-Disposition: form-data; name="code"\r\n\r\n1\r\n--x--\r\n'
    form_type = "multipart/form-data; boundary=x"
    simulator.ask("POST", "/codes", form, 415, {"Content-Type": form_type})
    connection = simulator.service()
    connection.request("POST", "/enrol/join.html", form, {"Content-Type": form_type})
    connection.getresponse().read()
    assert form_type in simulator.ask("GET", "/records")["records"][-1]["violation"]
    assert simulator.raw("OPTIONS", "/faults", headers={"Access-Control-Request-Method": "PUT"})[0].status == 405
    answer, _ = simulator.raw("GET", "/")
    assert "default-src 'none'" in answer.getheader("Content-Security-Policy")
    assert answer.getheader("Access-Control-Allow-Origin") is None
    # A request in the body of a refused one is not another request.
    hidden = f"PUT /faults/join HTTP/1.1\r\nHost: {simulator.control}\r\n" \
             "Content-Type: application/json\r\nContent-Length: 17\r\n\r\n{\"fault\":\"reset\"}"
    simulator.ask("POST", "/codes", hidden, 403, {"Origin": "https://evil.example", "Content-Type": "text/plain"})
    assert simulator.ask("GET", "/faults")["pending"] == []
    assert simulator.ask("PUT", "/faults/join", '{"fault":"reset"}', headers=json_type)["pending"]


def test_repeats_nothing_for_ranges(simulator):
    ranged, content = simulator.raw("GET", "/page.js", headers={"Range": "bytes=" + ",".join(["0-"] * 2000)})
    assert (ranged.status, content) == (200, simulator.raw("GET", "/page.js")[1])


def test_bounds_a_body_without_a_length(simulator):
    with socket.create_connection(("127.0.0.1", int(simulator.control.split(":")[1])), timeout=30) as peer:
        peer.sendall(f"POST /codes HTTP/1.1\r\nHost: {simulator.control}\r\nContent-Type: application/json\r\n"
                     "Transfer-Encoding: chunked\r\n\r\n".encode())
        for _ in range(100):
            peer.sendall(b"400\r\n" + b"x" * 1024 + b"\r\n")
        peer.sendall(b"0\r\n\r\n")
        assert peer.recv(100).startswith(b"HTTP/1.1 413")
    packed = gzip.compress(b" " * (65 << 20), 1)
    with pytest.raises((OSError, http.client.HTTPException)):
        connection = simulator.service()
        connection.request("POST", "/enrol/join.html", packed, {"Content-Encoding": "gzip"})
        connection.getresponse()


def test_refuses_a_body_that_breaks_off(simulator):
    # What has come would be a whole text.
    half = b'{"fault":"reset"}'
    for head in [b"Content-Length: 40\r\n\r\n" + half, b"Transfer-Encoding: chunked\r\n\r\n11\r\n" + half]:
        with socket.create_connection(("127.0.0.1", int(simulator.control.split(":")[1])), timeout=30) as peer:
            peer.sendall(f"PUT /faults/join HTTP/1.1\r\nHost: {simulator.control}\r\n"
                         "Content-Type: application/json\r\n".encode() + head)
            peer.shutdown(socket.SHUT_WR)
            while peer.recv(65536):
                pass
        assert simulator.ask("GET", "/faults")["pending"] == []


def memory(simulator):
    """The most memory that the program has had so far, in bytes."""
    with open(f"/proc/{simulator.process.pid}/status", encoding="utf-8") as file:
        return int(re.search(r"VmHWM:\s+(\d+) kB", file.read())[1]) * 1024


CHUNKED = "Content-Type: application/json\r\nTransfer-Encoding: chunked\r\n\r\n"
PARTS = "Content-Type: multipart/form-data; boundary=x\r\n"
LONG = "Content-Length: 1000000000\r\n\r\n"
PACKED = gzip.compress(b"--x\r\nA: " + b"a" * (100 << 20), 1)


@pytest.mark.parametrize("begin, endless", [
    pytest.param("GET /", b"x" * 65536, id="address"),
    pytest.param("GET /faults HTTP/1.1\r\nA: ", b"x" * 65536, id="header"),
    pytest.param("GET /faults HTTP/1.1\r\n", b"A: x\r\n" * 10000, id="headers"),
    pytest.param(f"POST /codes HTTP/1.1\r\n{CHUNKED}", b"0" * 65536, id="size of a chunk"),
    pytest.param(f"POST /codes HTTP/1.1\r\n{CHUNKED}0\r\nA: ", b"x" * 65536, id="trailer"),
    pytest.param(f"POST /codes HTTP/1.1\r\n{PARTS}{LONG}--x\r\nA: ", b"x" * 65536, id="header of a part"),
    pytest.param(f"POST /codes HTTP/1.1\r\n{PARTS}Content-Encoding: gzip\r\n{LONG}", PACKED, id="packed part"),
    pytest.param(f"PRI /codes HTTP/1.1\r\n{LONG}", b"x" * 65536, id="body"),
    pytest.param(f"PRI /codes HTTP/1.1\r\nContent-Encoding: gzip\r\n{LONG}", PACKED, id="packed body"),
])
def test_ends_a_request_without_an_end_before_memory_does(simulator, begin, endless):
    with socket.create_connection(("127.0.0.1", int(simulator.control.split(":")[1])), timeout=30) as peer:
        expect_an_end(simulator, peer, begin, endless)


@pytest.mark.parametrize("begin, endless", [
    pytest.param("POST /", b"x" * 65536, id="address"),
    pytest.param("POST /enrol/join.html HTTP/1.1\r\nA: ", b"x" * 65536, id="header"),
    pytest.param("POST /enrol/join.html HTTP/1.1\r\n", b"A: x\r\n" * 10000, id="headers"),
])
def test_ends_a_hosts_request_without_an_end_before_memory_does(simulator, begin, endless):
    connection = simulator.service()
    connection.connect()
    with connection.sock as peer:
        expect_an_end(simulator, peer, begin, endless)
    assert simulator.join()["response-type"] == "data"


def expect_an_end(simulator, peer, begin, endless):
    before = memory(simulator)
    with contextlib.suppress(OSError):
        peer.sendall(begin.encode())
        for _ in range((160 << 20) // len(endless)):
            peer.sendall(endless)
        while peer.recv(65536):
            pass
    simulator.ask("GET", "/codes")
    assert memory(simulator) - before < 64 << 20


def test_ends_a_request_that_never_ends(simulator):
    began = time.monotonic()
    with socket.create_connection(("127.0.0.1", int(simulator.control.split(":")[1])), timeout=0.5) as peer:
        peer.sendall(b"GET /faults HTTP/1.1\r\n")
        while time.monotonic() < began + 60:
            try:
                peer.sendall(b"A: x\r\n")
                if not peer.recv(65536):
                    break
            except TimeoutError:
                pass
            except OSError:
                break
    assert time.monotonic() < began + 30


def test_tells_what_happens_as_it_happens(simulator):
    stream = simulator.listen()
    simulator.ask("PUT", "/faults/status", {"fault": "204"})
    simulator.ask("POST", "/codes", {"code": "654321"}, 201)
    simulator.join("654321")
    simulator.ask("DELETE", "/records")
    seen = [next_event(stream) for _ in range(5)]
    assert [(number, name) for number, name, _ in seen] == list(enumerate(
        ["faults", "codes", "request", "sessions", "cleared"], 1))
    for _, name, data in seen:
        schema = {"request": "Record", "cleared": "Records"}.get(name, name.capitalize())
        require({"$ref": "#/components/schemas/" + schema}, data)
    # A listener that comes back goes on where it was; one of another run is told that it has lost its place.
    assert next_event(simulator.listen({"Last-Event-ID": "3"}))[:2] == (4, "sessions")
    assert next_event(simulator.listen({"Last-Event-ID": "77"}))[:2] == (5, "lost")


def test_serves_eight_listeners_and_notices_those_that_go(simulator):
    streams = [simulator.listen() for _ in range(8)]
    assert all(each.status == 200 for each in streams)
    assert simulator.listen().status == 503
    for each in streams:
        each.close()
        each.kept.close()
    for _ in range(200):
        if simulator.listen().status == 200:
            return
        time.sleep(0.1)
    pytest.fail("a listener that has gone is still served")


def test_a_slow_listener_loses_events_and_the_program_no_memory(simulator):
    slow = socket.socket()
    slow.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
    slow.settimeout(60)
    slow.connect(("127.0.0.1", int(simulator.control.split(":")[1])))
    slow.sendall(f"GET /events HTTP/1.1\r\nHost: {simulator.control}\r\n\r\n".encode())
    slow.recv(100)
    connection = simulator.service()
    large = {"a": [{"message": "x" * 1000} for _ in range(20)]}
    for _ in range(1600):
        simulator.post("/session/s1/update", large, connection)
    received = b""
    while b"event: lost" not in received:
        piece = slow.recv(1 << 20)
        if not piece:
            break  # a busy program has waited for the listener too long, and has let go of the connection
        received = received[-100:] + piece
        assert b'"number":1600,' not in received, "nothing was lost"
    records = simulator.ask("GET", "/records")
    assert len(records["records"]) == 500 and records["last"] == 1600
    assert all(len(each["body"]) < 17000 for each in records["records"])


def test_masks_what_is_secret_and_keeps_what_helps(simulator):
    connection = simulator.service()
    simulator.join()
    simulator.post("/session/s1/update", {"kivo-action": "inform", "message": "shown", "tid": "T1",
                                          "SECRET-free": {"token": "SECRET"}, "pin": 271828})
    simulator.post("/session/s1/update", "SECRET, no JSON")
    connection.request("POST", "/session/s1/facemap/enrollment-3d", json.dumps({"faceScan": "SECRET"}),
                       {"Content-Type": "application/json", "X-Device-Key": "SECRET", "Authorization": "SECRET"})
    connection.getresponse().read()
    text = json.dumps(simulator.ask("GET", "/records"))
    assert "shown" in text and "s1" in text and "no JSON object" in text and "(6 characters)" in text
    assert text.count("SECRET") == text.count("SECRET-free") and "271828" not in text and "123456" not in text
    for key in ["simulated-token", "simulated-device-key", "simulated-access-key",
                "c2ltdWxhdGVkLWVuY3J5cHQta2V5LW9mLTMyYnl0ZXM="]:
        assert key not in text


def test_a_code_is_taken_back_while_its_session_goes_on(simulator):
    simulator.join()
    simulator.ask("DELETE", "/codes/123456")
    assert simulator.post("/session/s1/status", {})["tid"] == "T1"
    assert simulator.join()["response-code"] == "STATUS_INVALID_ACTIVATION_CODE"


def test_the_certificate_is_trusted_and_another_is_not(simulator):
    with pytest.raises(ssl.SSLCertVerificationError):
        connection = simulator.service()
        connection._context = ssl.create_default_context()
        connection.connect()
