import asyncio
import json
import os
import pathlib
import subprocess
import sys
import threading

import kivo
import pytest
from kivo._library import ffi, lib

SOURCES = pathlib.Path(__file__).resolve().parents[3]
CONFIG = kivo.Config(environment=kivo.Environment.TEST, document_list="PASSPORT")


def run(script: pathlib.Path | str) -> str:
    """What a program in Python prints that runs against a service of its own."""
    program = [script] if isinstance(script, pathlib.Path) else ["-c", script]
    done = subprocess.run([os.environ["KIVO_SIMULATED_SERVICE"], sys.executable, "-B", *program], timeout=60, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    assert done.returncode == 0, done.stdout
    return done.stdout


def test_the_example_walks_a_session():
    assert run(SOURCES / "examples/python-host/main.py").splitlines() == [
        "status: STATUS_BAD_BIODATA (refused): The identity service refused the request with STATUS_BAD_BIODATA.",
        "update: UPDATE_SESSION", "update: given up", "upload: UPLOAD_DOCUMENT", "commit: COMMIT_SESSION"]


def test_a_failure_says_why(session):
    with pytest.raises(kivo.Refused) as refused:
        asyncio.run(session.join("000000", CONFIG))
    failure = refused.value
    assert (failure.code, failure.kind) == (kivo.Code.STATUS_INVALID_ACTIVATION_CODE, kivo.FailureKind.REFUSED)
    assert failure.name == "STATUS_INVALID_ACTIVATION_CODE" and failure.message and failure.cause
    assert f"{failure.kind} {failure.kind!s:>8}" == "REFUSED  REFUSED" and not failure.is_cancellation
    assert str(session.last_failure) == str(failure) and "000000" not in repr(failure)
    session.reset()
    with pytest.raises(kivo.NoSession):
        asyncio.run(session.status())  # in another loop than the join


def test_a_cancelled_task_gives_its_request_up(session):
    async def host():
        joining = asyncio.create_task(session.join("123456", CONFIG))
        await asyncio.sleep(0)
        joining.cancel()
        await asyncio.wait([joining])
        assert joining.cancelled() and not any(lib.kivo_request_give_up(number) for number in range(100))
        assert (await session.join("123456", CONFIG)).event == kivo.Event.JOIN_SESSION
        with pytest.raises(TimeoutError):
            async with asyncio.timeout(0):
                await session.commit()

    asyncio.run(host())


def test_mistakes_are_exceptions_and_send_nothing(session):
    for code, config, expected in [(1, CONFIG, TypeError), ("\ud800", CONFIG, ValueError), ("1", None, TypeError),
                                   ("1", kivo.Config(environment=7), ValueError)]:
        with pytest.raises(expected):
            asyncio.run(session.join(code, config))
    for mistake in [lambda: kivo.load("KEY", "13"), lambda: kivo.set_log_threshold(0), lambda: kivo.Display(0, 1),
                    lambda: asyncio.run(session.upload(8, ""))]:
        with pytest.raises(ValueError):
            mistake()
    with pytest.raises(RuntimeError):
        session.acquire(kivo.AcquisitionObject.ACTIVATION_CODE, print)  # outside of a loop
    raised = []
    thread = threading.Thread(target=lambda: raised.append(pytest.raises(RuntimeError, session.reset)))
    thread.start()
    thread.join()
    assert raised and "SECRET" not in repr(kivo.Deployment(face_tec_production_key="SECRET"))


def test_a_person_types_a_code_and_leaves(session):
    session.theme["zorCloseButtonAppearance.closeButtonIsHidden"] = 0
    for name, value in [("codeScreenGetStartedTitle", "Welcome"), ("screenTitleColor", kivo.Color(1, 0, 0, 0.5)),
                        ("screenTitleFont", kivo.Font("", 21)), ("primaryButtonBorderWidth", 2)]:
        session.theme[name] = value
        assert name in session.theme and session.theme[name] == value
        with pytest.raises(TypeError):
            session.theme[name] = None

    async def host():
        heard, changed = asyncio.Queue(), asyncio.Event()
        with kivo.Display(390, 844) as display:
            display.on_change(changed.set)
            session.show_on(display)
            session.acquire(kivo.AcquisitionObject.ACTIVATION_CODE, heard.put_nowait)
            while "textFieldDigitOne" not in json.dumps(display.snapshot()):
                await changed.wait()
                changed.clear()
            assert display.type("textFieldDigitOne", "12A456") and not display.tap("noSuchView")
            told = await heard.get()
            assert told == kivo.Result(kivo.Event.SCAN_QR_CODE, "12A456") and "12A" not in repr(told)
            assert display.tap("closeButton")
            told = await heard.get()
            assert told.code == kivo.Code.CANCELLED_BY_USER and told.is_cancellation
        pytest.raises(ValueError, display.snapshot)

    asyncio.run(asyncio.wait_for(host(), 20))


def test_the_interpreter_ends_with_a_request_and_a_log_under_way():
    assert run("""
import asyncio, logging, os, sys, kivo
logging.basicConfig(level=logging.DEBUG, stream=sys.stdout)
kivo.set_log_threshold(kivo.LogLevel.DEBUG)
kivo.log_to(logging.getLogger("host"))
kivo.LinuxOptions(main_bundle=os.environ["KIVO_HOST_BUNDLE"], data_folder=os.environ["KIVO_DATA_FOLDER"]).install()
kivo.Deployment(join_page_test=os.environ["KIVO_JOIN_PAGE"]).install()
kivo.assume_network()
loop = asyncio.new_event_loop()
task = loop.create_task(kivo.load("KEY").join("123456", kivo.Config(environment=kivo.Environment.TEST)))
loop.call_later(0.01, loop.stop)
loop.run_forever()
""").count(":host:")


def test_the_declarations_are_those_of_the_headers(tmp_path):
    lines = ["#include <kivo/kivo.h>", "#include <kivo/c/linux.h>"]
    for name in ffi.list_types()[0]:
        declared = ffi.typeof(name)
        if declared.kind == "struct" and declared.fields:
            lines.append(f'_Static_assert(sizeof({name}) == {ffi.sizeof(name)}, "{name}");')
            lines += [f'_Static_assert(offsetof({name}, {field}) == {ffi.offsetof(name, field)}, "{name}.{field}");'
                      for field, _ in declared.fields]
        elif declared.kind == "enum":
            lines += [f'_Static_assert({name} == {value}, "{name}");' for name, value in declared.relements.items()]
    source = tmp_path / "declarations.c"
    source.write_text("\n".join(lines))
    assert len(lines) > 150 and len(dir(lib)) > 70
    for function in dir(lib):
        getattr(lib, function)  # which the library must have
    subprocess.run(["cc", "-std=c11", "-fsyntax-only", f"-I{SOURCES}/include", source], check=True)
