import os

import kivo
import pytest


@pytest.fixture(scope="session")
def session() -> kivo.Session:
    """The only session of this process, at the service that the environment names."""
    kivo.LinuxOptions(main_bundle=os.environ["KIVO_HOST_BUNDLE"], data_folder=os.environ["KIVO_DATA_FOLDER"]).install()
    kivo.Deployment(join_page_test=os.environ["KIVO_JOIN_PAGE"], requires_pins=True).install()
    kivo.assume_network()
    return kivo.load("EXAMPLE-KEY")
