"""A host in Python that walks a session. Where the identity service is comes from the environment, as for c-host."""

import asyncio
import os
from collections.abc import Awaitable

import kivo


async def tell(name: str, request: Awaitable[kivo.Result]) -> None:
    try:
        print(f"{name}: {(await request).event.name}")
    except kivo.Failure as failure:
        print(f"{name}: {failure}")


async def walk(session: kivo.Session) -> None:
    config = kivo.Config(environment=kivo.Environment.TEST, document_list="PASSPORT")
    await session.join(os.environ.get("KIVO_ACTIVATION_CODE", "123456"), config)
    await tell("status", session.status())  # may well be refused: the service has not seen the evidence yet
    await tell("update", session.update("inform", "The person has read the terms."))
    leaving = asyncio.create_task(session.update("inform", "The person leaves the page."))
    await asyncio.sleep(0)  # the request sets out,
    leaving.cancel()  # and is given up
    await asyncio.wait([leaving])
    print("update:", "given up" if leaving.cancelled() else "answered")
    await tell("upload", session.upload(kivo.AcquisitionObject.SELFIE_IMAGE, "c2VsZmll"))
    await tell("commit", session.commit())
    session.reset()


kivo.set_log_threshold(kivo.LogLevel.OFF)
kivo.LinuxOptions(main_bundle=os.environ["KIVO_HOST_BUNDLE"], data_folder=os.environ["KIVO_DATA_FOLDER"]).install()
kivo.Deployment(join_page_test=os.environ["KIVO_JOIN_PAGE"], requires_pins=True).install()
kivo.assume_network()
asyncio.run(walk(kivo.load("EXAMPLE-KEY", "18")))
