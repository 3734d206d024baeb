"""The program from outside: options, output, signals and files."""
import json
import os
import signal
import stat
import subprocess

import pytest

from conftest import PROGRAM

TOOLS = os.path.dirname(PROGRAM)


def run(*command, **more):
    return subprocess.run(command, capture_output=True, text=True, timeout=120, **more)


@pytest.mark.parametrize("options, status, said", [
    (["--port", "0"], 2, "--port takes a number from 1 to 65535"),
    (["--port", "70000"], 2, "from 1 to 65535"),
    (["--control-port", "80x"], 2, "from 1 to 65535"),
    (["--code", "a/b"], 2, "--code takes at most 64 letters"),
    (["--fault", "join"], 2, "takes ENDPOINT=FAULT"),
    (["--fault", "jion=reset"], 2, "takes ENDPOINT=FAULT"),
    (["--fault", "join=rest"], 2, "such as reset or delay:2s"),
    (["--fault", "join=delay:2"], 2, "such as 2s or 250ms"),
    (["--retry-limit", "-1"], 2, "--retry-limit needs a value"),
    (["--records"], 2, "--records needs a value"),
    (["--cacert", "/dev/null"], 2, "belongs to --check-service"),
    (["--check-service", "http://localhost/join", "--code", "1"], 2, "takes an https address"),
    (["--check-service", "https://localhost/join"], 2, "needs one --code"),
    (["--check-service", "https://localhost/join", "--code", "1", "--port", "1"], 2, "checks another service"),
    (["--check-service", "https://localhost/join", "--code", "1", "--cacert", "/nowhere"], 2, "may not be read"),
    (["extra"], 2, "unexpected argument"),
    (["--records", "/nowhere/records.json"], 1, "cannot be written (No such file"),
    (["--records", "/tmp"], 1, "cannot be written (Is a directory"),
    (["--certificate", "/nowhere/root.pem"], 1, "cannot be written (No such file"),
])
def test_a_mistake_is_one_sentence_and_a_status(options, status, said):
    ended = run(PROGRAM, *options)
    assert (ended.returncode, ended.stdout) == (status, "")
    assert said in ended.stderr and ended.stderr.count("\n") == 1 and ended.stderr.startswith("kivo-simulator: ")


def test_the_help_names_every_option_of_the_document():
    with open(os.path.join(os.environ["KIVO_SOURCE"], "docs/kivo-simulator.md"), encoding="utf-8") as file:
        document = file.read()
    told = run(PROGRAM, "--help")
    options = {line.split()[0] for line in told.stdout.splitlines() if line.startswith("  --")}
    assert told.returncode == 0 and "exit status:" in told.stdout
    assert len(options) > 10 and [each for each in options if each not in document] == []


@pytest.mark.parametrize("how", [signal.SIGTERM, signal.SIGINT, signal.SIGHUP])
def test_ends_cleanly_with_its_records_written_for_the_owner(start, tmp_path, how):
    records, certificate = tmp_path / "records.json", tmp_path / "a copy.pem"
    os.umask(0)
    simulator = start("--records", str(records), "--certificate", str(certificate),
                      environment={"TMPDIR": str(tmp_path)})
    assert certificate.read_bytes() == open(simulator.certificate, "rb").read()
    assert stat.S_IMODE(certificate.stat().st_mode) == 0o644
    stream = simulator.listen()  # an open stream does not hold up the end
    simulator.join()
    simulator.post("/nowhere", {})
    simulator.post("/session/%1b%5b2J%c2%9b2J/update", {})
    assert simulator.end(how) == 0 and simulator.errors == ""
    assert stream.read() is not None
    assert [each.name for each in tmp_path.iterdir()] == ["records.json"]
    assert stat.S_IMODE(records.stat().st_mode) == 0o600
    written = json.loads(records.read_text())
    assert [each["endpoint"] for each in written["records"]] == ["join", None, "update"] and written["violations"] == 2
    assert written["sessions"][0]["interfaceVersion"] == "18" and "SECRET" not in records.read_text()
    assert "join    200  s1" in simulator.output and "breaks the protocol: the path" in simulator.output
    assert "3 requests, 2 of them broke the protocol" in simulator.output
    assert "\x1b" not in simulator.output and "\x9b" not in simulator.output


def test_a_second_signal_ends_the_program_at_once(start, tmp_path):
    simulator = start("--fault", "join=drop", environment={"TMPDIR": str(tmp_path)})
    os.kill(simulator.process.pid, signal.SIGSTOP)  # so that both signals are there when the program goes on
    for each in (signal.SIGTERM, signal.SIGINT, signal.SIGCONT):
        os.kill(simulator.process.pid, each)
    assert simulator.process.wait(30) in (0, -signal.SIGTERM, -signal.SIGINT)
    assert list(tmp_path.iterdir()) == []


def test_one_line_an_event_for_machines(start):
    simulator = start("--json", "--fault", "status=refuse:STATUS_BAD_FACEMAP")
    simulator.join()
    assert simulator.post("/session/s1/status", {})["response-code"] == "STATUS_BAD_FACEMAP"
    assert simulator.end() == 0
    lines = [json.loads(each) for each in simulator.output.splitlines()]
    assert [each["type"] for each in lines] == ["request", "request", "end"]
    assert lines[1]["fault"] == "refuse:STATUS_BAD_FACEMAP"
    assert lines[2] == {"type": "end", "requests": 2, "violations": 0}


def test_two_programs_do_not_share_a_port(simulator, start):
    taken = [simulator.join_page.split(":")[2].split("/")[0], simulator.control.split(":")[1]]
    for option, port in zip(["--port", "--control-port"], taken):
        ended = run(PROGRAM, option, port)
        assert ended.returncode == 1 and port in ended.stderr and "Address already in use" in ended.stderr
        assert ended.stderr.count("\n") == 1
    assert simulator.end() == 0
    again = start("--port", taken[0], "--control-port", taken[1])
    assert again.join_page == simulator.join_page and again.join()["tid"] == "T1"


def test_a_certificate_fault_meets_one_endpoint_with_a_host_of_its_own(start):
    simulator = start("--host-per-endpoint", "--fault", "update=expired")
    checked = run(PROGRAM, "--check-service", simulator.join_page, "--code", "123456",
                  "--cacert", simulator.certificate)
    assert {line.split(":")[0] for line in checked.stdout.splitlines()} == {
        "update", "update of a foreign session", "notice"}


def test_the_demo_walks_against_it(start):
    simulator = start("--code", "777777")
    pin = simulator.ask("GET", "/service")["pins"]["leaf"]
    rows = [
        (["--cacert", simulator.certificate, "--code", "777777", "--version", "all"], 0, "as expected"),
        (["--pin", pin, "--code", "777777", "--scan"], 0, "as expected"),
        (["--pin", "other", "--code", "777777", "--version", "14"], 0, "UNSECURE_SERVER_PINNING_FAILED"),
        (["--cacert", simulator.certificate], 1, "STATUS_INVALID_ACTIVATION_CODE"),
        (["--fault", "join=reset"], 2, "give it to the program behind --service"),
        (["--pin", "leaf"], 2, "needs the pin itself"),
        (["--code", "1"], 2, "six characters"),
    ]
    for options, status, said in rows:
        ended = run(os.path.join(TOOLS, "kivo-demo"), "--service", simulator.join_page, *options)
        assert (ended.returncode, said in ended.stdout + ended.stderr) == (status, True), ended.stdout + ended.stderr
    assert len(simulator.ask("GET", "/sessions")["sessions"]) == 6
    for options in (["--cacert", "/dev/null"], ["--code", "123456"], ["--pin", pin]):
        ended = run(os.path.join(TOOLS, "kivo-demo"), *options)
        assert ended.returncode == 2 and "belongs to --service" in ended.stderr
