"""Threads, progress, Ctrl-C and a lack of memory."""

import signal
import subprocess
import sys
import time

import numpy as np
import pytest

import orva

WAIT = 60  # seconds after which a test has failed


@pytest.fixture(name="cells", scope="module")
def _cells():
    y, x = np.mgrid[0:300, 0:340]
    image = np.full(x.shape, 20.0)
    for k in range(30):
        cy, cx, r = 30 + 50 * (k // 6), 30 + 55 * (k % 6), 9 + k % 5
        image[(y - cy) ** 2 + (x - cx) ** 2 <= r * r] = 120 + k
    return (image + np.random.default_rng(3).normal(0, 4, image.shape)).astype(np.float32)


CALLS = {
    "find_objects": orva.find_objects,
    "segment": orva.segment,
    "find_centers": orva.find_centers,
    "vote_field": orva.vote_field,
}


@pytest.mark.parametrize("name", CALLS)
@pytest.mark.parametrize("threads", [2, 3, 7, 16])
def test_results_do_not_depend_on_threads(cells, name, threads):
    call = CALLS[name]
    one, several = call(cells, threads=1), call(cells, threads=threads)
    for a, b in zip(*((v if isinstance(v, tuple) else (v,)) for v in (one, several)), strict=True):
        np.testing.assert_array_equal(a, b)  # not the padding of rows
        assert len(a) > 0


@pytest.mark.parametrize("threads", [0, 1025])
def test_threads_out_of_range(cells, threads):
    with pytest.raises(ValueError, match="threads must be from 1 to 1024"):
        orva.find_objects(cells, threads=threads)


def test_threads_of_another_type(cells):
    with pytest.raises(TypeError, match="threads must be a whole number"):
        orva.find_objects(cells, threads=1.5)


class Bar:
    """What tqdm.tqdm(total=...) returns, as far as it is used."""

    def __init__(self, total):
        self.total = total
        self.done = 0
        self.is_closed = False

    def update(self, n):
        assert n > 0
        self.done += n

    def close(self):
        self.is_closed = True


@pytest.mark.parametrize("name", CALLS)
def test_progress_reaches_its_total(cells, name):
    bars = []

    def progress(total):
        bars.append(Bar(total))
        return bars[-1]

    CALLS[name](np.tile(cells, (3, 3)), progress=progress)
    (bar,) = bars
    assert (bar.done, bar.is_closed) == (bar.total, True)


def test_what_the_progress_raises_ends_the_call(cells):
    class Failing(Bar):
        def update(self, n):
            raise RuntimeError("no more")

    bars = []

    def progress(total):
        bars.append(Failing(total))
        return bars[-1]

    with pytest.raises(RuntimeError, match="no more"):
        orva.find_centers(np.tile(cells, (4, 4)), max_radius=60, progress=progress)
    assert bars[0].is_closed
    assert len(orva.find_objects(cells)) == 30  # the next call is not affected


def test_progress_must_be_callable(cells):
    with pytest.raises(TypeError, match="progress must be callable"):
        orva.find_objects(cells, progress=True)


LONG = """
import sys
import numpy as np
import orva

noise = np.random.default_rng(1).random((3000, 3000), np.float32)
print("ready", flush=True)
try:
    orva.find_centers(noise, max_radius=300)
except KeyboardInterrupt:
    print("interrupted", flush=True)
    sys.exit(len(orva.find_centers(noise[:100, :100])) < 0)
"""


def test_ctrl_c_ends_a_long_call():
    with subprocess.Popen([sys.executable, "-c", LONG], stdout=subprocess.PIPE, text=True) as process:
        assert process.stdout.readline() == "ready\n"
        time.sleep(0.5)
        process.send_signal(signal.SIGINT)
        try:
            assert process.stdout.readline() == "interrupted\n"
            assert process.wait(WAIT) == 0
        finally:
            process.kill()


SHORT_OF_MEMORY = """
import resource
import numpy as np
import orva

image = np.zeros((2000, 2000), np.float32)
image[500:600, 500:600] = 1
used = int(open("/proc/self/statm").read().split()[0]) * resource.getpagesize()
resource.setrlimit(resource.RLIMIT_AS, (used + (40 << 20), resource.RLIM_INFINITY))
for call in (orva.find_objects, orva.segment, orva.find_centers):
    try:
        call(image)
    except MemoryError:
        print(call.__name__)
resource.setrlimit(resource.RLIMIT_AS, (resource.RLIM_INFINITY, resource.RLIM_INFINITY))
assert len(orva.find_objects(image, polarity="bright")) == 1
"""


def test_a_lack_of_memory_raises_memory_error():
    line = [sys.executable, "-c", SHORT_OF_MEMORY]
    done = subprocess.run(line, capture_output=True, text=True, timeout=WAIT, check=False)
    assert (done.returncode, done.stderr) == (0, "")
    names = done.stdout.split()
    assert {"find_objects", "segment"} <= set(names)
