"""What the tests share: the command to compare with, the sample images, and pictures."""

import os
import pathlib
import subprocess

import numpy as np
import pytest

import orva

DATA = pathlib.Path(__file__).resolve().parents[2] / "data" / "images"


@pytest.fixture(scope="session")
def command():
    """Runs the orva command and returns what it writes to standard output."""
    program = os.environ["ORVA_COMMAND"]

    def run(*arguments):
        line = [program, *map(str, arguments)]
        return subprocess.run(line, check=True, capture_output=True, text=True).stdout

    return run


@pytest.fixture(params=["dsb_sparse_a", "dsb_histw_a"])
def sample(request):
    """The file of a sample image."""
    path = DATA / f"{request.param}.pgm"
    assert path.is_file()
    return path


@pytest.fixture
def random():
    return np.random.default_rng(7)


@pytest.fixture
def blobs(random):
    """A plane (40, 48) of uint8 with soft spots, and noise below them."""
    y, x = np.mgrid[:40, :48]
    picture = random.uniform(0, 20, (40, 48))
    for cy, cx in ((10, 10), (12, 30), (28, 20), (30, 38)):
        picture += 180 * np.exp(-((y - cy) ** 2 + (x - cx) ** 2) / 18)
    return picture.astype(np.uint8)


@pytest.fixture
def images(tmp_path):
    """Files of small images with some discs each."""
    random = np.random.default_rng(5)
    y, x = np.mgrid[:90, :120]
    files = []
    for i in range(24):
        picture = random.uniform(0, 10, y.shape)
        for _ in range(i % 5 + 1):
            cy, cx = random.uniform(10, 80), random.uniform(10, 110)
            picture += 120 * (np.hypot(y - cy, x - cx) < 6)
        files.append(tmp_path / f"field_{i:02}.tif")
        orva.write(files[-1], np.clip(picture, 0, 255).astype(np.uint8))
    return files
