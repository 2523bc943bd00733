"""Other threads run during the work, and do not disturb it."""

import concurrent.futures
import sys
import threading

import numpy as np
import pytest

import orva

SMALL = (np.indices((20, 20)).sum(axis=0) % 13).astype(np.uint8)
RODS = np.full((12, 12, 12), -1, np.int16)
RODS[6, 6, 1:-1] = RODS[6, 1:-1, 6] = RODS[1:-1, 6, 6] = 0

# Work on arrays that NumPy itself copies without letting others run.
WORK = {
    "find_centers": lambda: orva.find_centers(SMALL, max_radius=60),
    "vote_field": lambda: orva.vote_field(SMALL, max_radius=60),
    "gaussian": lambda: orva.gaussian(SMALL, sigma=1000),
    "smooth": lambda: orva.smooth(SMALL, sigma=1000),
    "gradient": lambda: orva.gradient(SMALL, sigma=1000),
    "laplacian": lambda: orva.laplacian(SMALL, sigma=1000),
    "features": lambda: orva.features(SMALL, sigma=1000, kind="laplacian_negative"),
    "compute_threshold": lambda: orva.compute_threshold(SMALL, scale=1000),
    "convex_hull": lambda: orva.convex_hull(RODS[:, 6:7], precision=50),
}


@pytest.fixture
def no_turns():
    """The interpreter is handed over only where a thread lets go of it."""
    before = sys.getswitchinterval()
    sys.setswitchinterval(1000)
    yield
    sys.setswitchinterval(before)


@pytest.mark.parametrize("name", WORK)
def test_the_interpreter_is_let_go(no_turns, name):
    go = threading.Lock()
    ran = []

    def run():
        with go:
            ran.append(True)

    go.acquire()
    other = threading.Thread(target=run)
    other.start()  # it waits for the lock now
    go.release()
    # Each call is a chance to run; without one the list stays empty, however long it takes.
    for _ in range(500):
        if ran:
            break
        WORK[name]()
    was_run = bool(ran)
    other.join()
    assert was_run


def test_threads_do_not_disturb_one_another(tmp_path, capfd, blobs):
    crowd = np.zeros((400, 400), bool)
    crowd[::2, ::2] = True  # more regions than there are labels

    def run(k):
        mask = orva.threshold(blobs, 60 + k)
        path = tmp_path / f"{k}.iht"
        orva.write(path, blobs[: 10 + k])
        if k % 8 == 0:
            with pytest.raises(ValueError, match="32768"):
                orva.label(crowd)
        return (
            orva.convex_hull(mask),
            orva.fill_holes(mask),
            orva.find_centers(blobs, max_radius=4 + k % 3),
            orva.read(path),
        )

    expected = [run(k) for k in range(24)]
    with concurrent.futures.ThreadPoolExecutor(8) as threads:
        results = list(threads.map(run, range(24)))
    for result, once in zip(results, expected):
        for a, b in zip(result, once):
            np.testing.assert_array_equal(a, b)
    assert capfd.readouterr() == ("", "")
    assert len(list(tmp_path.iterdir())) == 24
