"""Hosts that bring services of their own. A process installs services once, so each host is a program of its own."""

import os
import pathlib
import subprocess
import sys

import kivo
import pytest

HOST = """
import asyncio, os, sys, threading, kivo
kivo.set_log_threshold(kivo.LogLevel.OFF)
options = {"main_bundle": os.environ.get("KIVO_LAYOUTS", ""), "trusted_certificates": os.environ["KIVO_AUTHORITY"]}
kivo.LinuxOptions(data_folder=os.environ["KIVO_DATA_FOLDER"], **options).install()
kivo.Deployment(join_page_test=os.environ["KIVO_JOIN_PAGE"]).install()
kivo.assume_network()
config = kivo.Config(environment=kivo.Environment.TEST, document_list="PASSPORT")
"""


def run(script: str, *options: str) -> list[str]:
    """What a host prints that runs against a service of its own."""
    done = subprocess.run([os.environ["KIVO_SIMULATED_SERVICE"], *options, sys.executable, "-B", "-c", HOST + script],
                          timeout=60, text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout.splitlines()


def test_a_host_keeps_the_session_and_runs_the_queue():
    assert run("""
class Keychain(kivo.Keychain):
    def __init__(self): self.items, self.broken = {}, False
    def set(self, service, account, value):
        if self.broken: raise OSError("the disk is full")
        self.items[service, account] = value
    def get(self, service, account): return self.items.get((service, account))
    def remove(self, service, account): return self.items.pop((service, account), None) is not None

class Queue(kivo.MainQueue):
    def __init__(self, loop): self.loop, self.thread, self.pieces = loop, threading.get_ident(), 0
    def post(self, delay, work):
        self.pieces += 1
        self.loop.call_soon_threadsafe(self.loop.call_later, delay, work)
    def is_current(self): return threading.get_ident() == self.thread

async def host():
    keychain, queue = Keychain(), Queue(asyncio.get_running_loop())
    kivo.install_main_queue(queue)
    kivo.install_keychain(keychain)
    session = kivo.load("KEY")
    await session.join("123456", config)
    print(any(b'"tid"' in value for value in keychain.items.values()), queue.pieces > 0)
    try: await session.status()
    except kivo.Refused as refused: print(refused.name)
    session.reset()
    print([account for _, account in keychain.items if account == "qr_response"])
    keychain.broken = True
    sys.excepthook = lambda kind, error, trace: print(error)
    try: await session.join("123456", config)
    except kivo.Failure as failure: print(failure.kind.name)

asyncio.run(asyncio.wait_for(host(), 30))
""")[-5:] == ["True True", "STATUS_BAD_BIODATA", "[]", "the disk is full", "STORAGE"]


def test_a_forked_child_ends_while_the_keychain_is_at_work():
    assert run("""
class Keychain(kivo.Keychain):
    def __init__(self): self.main, self.inside, self.has_forked = threading.get_ident(), False, threading.Event()
    def set(self, service, account, value):
        self.inside = threading.get_ident() != self.main
        if self.inside: self.has_forked.wait(30)
    def get(self, service, account): return None
    def remove(self, service, account): return False

async def host():
    keychain = Keychain()
    kivo.install_keychain(keychain)
    joining = asyncio.create_task(kivo.load("KEY").join("123456", config))
    while not keychain.inside: await asyncio.sleep(0.01)
    child = os.fork() or sys.exit()
    print(os.waitpid(child, 0) == (child, 0))
    keychain.has_forked.set()
    joining.cancel()

asyncio.run(asyncio.wait_for(host(), 30))
""")[-1] == "True"


def test_the_vendors_read_a_document_and_scan_a_face(monkeypatch):
    layouts = pathlib.Path(os.environ["KIVO_SIMULATED_SERVICE"]).parents[1] / "lib/ZORFramework.bundle"
    monkeypatch.setenv("KIVO_LAYOUTS", str(layouts))
    assert run("""
class Reader(kivo.DocumentReader):
    def __init__(self): self.readings, self.finished = 0, []
    def start(self, settings, reading):
        assert settings.allowed_types == (kivo.DocumentType.PASSPORT,) and settings.uses_pins, settings
        assert settings.access_key and settings.access_key not in repr(settings)
        self.readings += 1
        if self.readings == 1: return kivo.ReadingStart.NFC_NOT_SUPPORTED
        if self.readings == 2: raise RuntimeError("the reader is broken")
        page = kivo.Document(session_id="READING-1", page_lines=["P<UTO", "L898902C3"])
        try: reading.succeed(kivo.Document(page_lines=["LINE"] * 9))
        except ValueError: pass
        threading.Thread(target=reading.succeed, args=(page,)).start()
        return kivo.ReadingStart.STARTED
    def finish(self, session_id): self.finished.append(session_id)

class Scanner(kivo.FaceScanner):
    def __init__(self): self.scans, self.fractions, self.cancelled = 0, [], 0
    def initialize(self, keys, done):
        assert keys.device_key_identifier and keys.device_key_identifier not in repr(keys)
        done(True)
    def start(self, scan, session_token):
        self.scans += 1
        assert scan.kind == kivo.ScanKind.FACE and session_token
        if self.scans == 1: raise RuntimeError("the scanner is broken")
        scan.submit(kivo.ScanResult(status=8) if self.scans == 2 else self.result())
    def result(self):
        return kivo.ScanResult(session_id="SCAN-1", scan="c2Nhbg==", images=["aW1hZ2U="], other_images=["aW1hZ2U="])
    def proceed(self, scan, blob):
        scan.end()
        return bool(blob)
    def cancel(self, scan):
        self.cancelled += 1
        scan.end()
    def progress(self, scan, fraction): self.fractions.append(fraction)
    def user_agent(self, session_id): return "a scanner in Python"

async def tapped(display, outlet):
    while not display.tap(outlet): await asyncio.sleep(0.01)

async def host():
    reader, scanner, told = Reader(), Scanner(), asyncio.Queue()
    raised = []
    asyncio.get_running_loop().set_exception_handler(lambda loop, context: raised.append(str(context["exception"])))
    kivo.install_document_reader(reader)
    kivo.install_face_scanner(scanner)
    session = kivo.load("KEY")
    await session.join("123456", config)
    with kivo.Display(390, 844) as display:
        session.show_on(display)
        session.acquire(kivo.AcquisitionObject.NFC_SCAN, told.put_nowait)
        for expected in range(3):
            await tapped(display, "passportOptionContainerView")
            outcome = await told.get()
            print(getattr(outcome, "name", "") or outcome.event.name)
        display.clear()
        for _ in range(3):
            session.acquire(kivo.AcquisitionObject.FACEMAP_SCAN, told.put_nowait)
            await tapped(display, "nextButton")
            outcome = await told.get()
            print(getattr(outcome, "name", "") or outcome.event.name)
    print(raised, reader.finished, scanner.cancelled, 0 < max(scanner.fractions) <= 1)

asyncio.run(asyncio.wait_for(host(), 50))
""", "--any-document") == [
        "NFC_NOT_SUPPORTED", "UNKNOWN_ERROR", "DOCUMENT_SCAN", "FACESCAN_NO_SESSION_RESULT", "TIMEOUT", "FACE_SCAN",
        "['the reader is broken', 'the scanner is broken'] ['READING-1'] 1 True"]


def test_the_simulator_runs_as_a_program():
    program = pathlib.Path(os.environ["KIVO_SIMULATED_SERVICE"]).parent / "kivo-simulator"
    with pytest.raises(FileNotFoundError, match="kivo-tools"):
        kivo.Simulator(program="no-such-program")
    if not program.exists():
        pytest.skip("this build has no kivo-simulator")
    with pytest.raises(RuntimeError, match="--fault"):
        kivo.Simulator(program=str(program), faults={"join": "nothing"})
    with kivo.Simulator(program=str(program), codes=["654321"], faults={"commit": "status:503"}) as simulator:
        with pytest.raises(ValueError, match="fault"):
            simulator.inject("status", "nothing")
        simulator.inject("status", "reset", calls=1)
        simulator.add_code("111111")
        script = """
async def host():
    session = kivo.load("KEY")
    for request in (lambda: session.join("111111", config), session.status, session.status, session.commit):
        try: print((await request()).event.name)
        except kivo.Failure as failure: print(failure.kind.name)

asyncio.run(host())
"""
        environment = os.environ | {"KIVO_JOIN_PAGE": simulator.join_page, "KIVO_AUTHORITY": simulator.certificate}
        done = subprocess.run([sys.executable, "-B", "-c", HOST + script], env=environment, timeout=60, text=True,
                              stdout=subprocess.PIPE)
        assert done.stdout.split() == ["JOIN_SESSION", "CONNECTION", "SESSION_STATUS", "STATUS"]
        assert len(simulator.sessions()) == 1 and simulator.violations() == []
        assert [record["endpoint"] for record in simulator.records()].count("status") == 2
        simulator.clear_faults()
    simulator.close()
    assert not pathlib.Path(simulator.certificate).exists()
