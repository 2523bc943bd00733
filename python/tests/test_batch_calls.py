"""How python -m orva.batch answers usage errors and Ctrl-C."""

import json
import os
import signal
import subprocess
import sys
import time

import numpy as np
import pytest

import orva

WAIT = 120  # seconds, of what never takes that long
BATCH = [sys.executable, "-m", "orva.batch"]


def until(condition):
    """Waits for what is about to happen."""
    end = time.monotonic() + WAIT
    while not condition():
        assert time.monotonic() < end
        time.sleep(0.01)


@pytest.mark.parametrize(
    "arguments, message",
    [
        ([], "the following arguments are required: IMAGE, --out"),
        (["a.tif"], "the following arguments are required: --out"),
        (["a.tif", "--out", "o", "--nonsense"], "unrecognized arguments: --nonsense"),
        (
            ["a.tif", "--out", "o", "--max-radius", "36.5"],
            "argument --max-radius: must be a whole number, not 36.5",
        ),
        (
            ["a.tif", "--out", "o", "--workers", "two"],
            "argument --workers: must be a whole number, not two",
        ),
        (["a.tif", "--out", "o", "--max-radius", "0"], "max_radius must be from 1 to 1000, not 0"),
        (["a.tif", "a.tif", "--out", "o"], "an image is named twice"),
        (["a.tif", "--out", "/dev/null/o"], "--out /dev/null/o cannot be written to: Not a directory"),
    ],
)
def test_an_error_is_one_line(tmp_path, arguments, message):
    done = subprocess.run(
        [*BATCH, *arguments], cwd=tmp_path, capture_output=True, text=True, timeout=WAIT
    )
    assert (done.returncode, done.stdout) == (2, "")
    assert done.stderr == f"python -m orva.batch: error: {message}\n"


@pytest.fixture
def images(tmp_path):
    """Files whose voting takes some seconds each."""
    random = np.random.default_rng(5)
    files = []
    for i in range(6):
        files.append(str(tmp_path / f"field_{i}.tif"))
        orva.write(files[-1], random.integers(0, 255, (500, 500)).astype(np.uint8))
    return files


def is_gone(group):
    try:
        os.killpg(group, 0)
    except ProcessLookupError:
        return True
    return False


@pytest.mark.parametrize("finished", [None, 0, 1])
def test_ctrl_c_ends_all_processes_and_keeps_what_is_finished(images, tmp_path, finished):
    """While the workers start, right after that, and behind the first table."""
    out = tmp_path / "out"
    line = [*BATCH, *images, "--out", str(out), "--workers", "2", "--max-radius", "40"]
    with subprocess.Popen(line, stderr=subprocess.PIPE, text=True, start_new_session=True) as running:
        until(out.exists)
        if finished == 0:
            time.sleep(3)
        elif finished is not None:
            until(lambda: len(list(out.glob("field_*.csv"))) >= finished)
        # A terminal sends it to all processes of the call, and an impatient user twice.
        os.killpg(running.pid, signal.SIGINT)
        time.sleep(0.2)
        os.killpg(running.pid, signal.SIGINT)
        _, err = running.communicate(timeout=WAIT)
    assert err == "python -m orva.batch: interrupted; the same call goes on from here\n"
    assert running.returncode == 130
    until(lambda: is_gone(running.pid))

    tables = sorted(path.stem for path in out.glob("*.csv"))
    assert (finished or 0) <= len(tables) < len(images)
    assert sorted(path.stem for path in out.glob("*.json")) == tables
    assert sorted(path.stem for path in out.iterdir()) == sorted(2 * tables)
    for name in tables:
        record = json.loads((out / f"{name}.json").read_text(encoding="utf-8"))
        assert len(record["planes"]) == 1
    if finished:
        again = [*BATCH, images[0], "--out", str(out), "--workers", "1", "--max-radius", "40"]
        done = subprocess.run(again, capture_output=True, text=True, timeout=WAIT)
        assert done.returncode == 0
        assert ("1 done before" in done.stderr) == ("field_0" in tables)
