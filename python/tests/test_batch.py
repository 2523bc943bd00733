"""Batches of images: python -m orva.batch."""

import csv
import dataclasses
import json
import os
import pathlib
import resource
import signal
import subprocess
import sys
import time

import numpy as np
import pytest
from distributed import Client

import orva
from orva.batch import _command as batch_command
from orva.batch import _jobs

DATA = pathlib.Path(__file__).resolve().parents[2] / "data" / "images"
WAIT = 120  # seconds, of what never takes that long


def batch(*arguments):
    line = [sys.executable, "-m", "orva.batch", *map(str, arguments)]
    return subprocess.run(line, capture_output=True, text=True, timeout=WAIT * 3)


def rows(path):
    with open(path, newline="", encoding="utf-8") as file:
        return list(csv.DictReader(file))


def tables(directory):
    """What must not depend on who did the work."""
    return {
        path.name: path.read_text(encoding="utf-8")
        for path in directory.glob("*.csv")
        if path.name != "summary.csv"  # it has the seconds
    }


# Options of the batch and of the command, the table of all images, and columns of their tables.
METHODS = [
    (["--max-radius", 9], ["vote", "--max-radius", 9], "centers", ("x", "y", "weight")),
    ([], ["find"], "objects", ("x", "y", "radius", "score")),
    (
        ["--radius", "3:9", "--min-score", 0.3, "--polarity", "bright"],
        ["find", "--radius", "3:9", "--min-score", 0.3, "--polarity", "bright"],
        "objects",
        ("x", "y", "radius", "score"),
    ),
]


@pytest.mark.parametrize("options, arguments, noun, columns", METHODS)
def test_tables_are_those_of_the_command(images, tmp_path, command, options, arguments, noun, columns):
    out = tmp_path / "out"
    done = batch(*images[:3], "--out", out, "--workers", 1, *options, "--frame", 0)
    assert (done.returncode, done.stdout) == (0, "")
    assert "3 of 3 images" in done.stderr
    for image in images[:3]:
        expected = command(*arguments, "--quiet", image)
        assert (out / f"{image.stem}.csv").read_text(encoding="utf-8") == expected
    everything = rows(out / f"{noun}.csv")
    assert [r["file"] for r in rows(out / "summary.csv")] == [str(i) for i in images[:3]]
    for row, image in zip(rows(out / "summary.csv"), images):
        table = rows(out / f"{image.stem}.csv")
        assert int(row[noun]) == len(table) > 0
        assert (row["width"], row["height"]) == ("120", "90")
        mine = [{k: r[k] for k in columns} for r in everything if r["file"] == str(image)]
        assert mine == table
    assert rows(out / "failures.csv") == []
    assert (out / "counts.png").read_bytes().startswith(b"\x89PNG")
    others = {"objects.csv", "centers.csv"} - {f"{noun}.csv"}
    assert not any((out / name).exists() for name in others)


def test_a_failing_image_is_recorded_and_the_others_are_done(images, tmp_path):
    damaged = tmp_path / "damaged.tif"
    damaged.write_bytes(images[0].read_bytes()[:50])
    out = tmp_path / "out"
    done = batch(images[0], damaged, tmp_path / "missing.tif", images[1], "--out", out, "--workers", 2)
    assert done.returncode == 1
    assert [r["file"] for r in rows(out / "failures.csv")] == [
        str(damaged),
        str(tmp_path / "missing.tif"),
    ]
    assert all(r["error"] for r in rows(out / "failures.csv"))
    assert [r["file"] for r in rows(out / "summary.csv")] == [str(images[0]), str(images[1])]
    assert not (out / "damaged.csv").exists()
    # Mended, it is done by the next run.
    damaged.write_bytes(images[2].read_bytes())
    assert batch(images[0], damaged, "--out", out, "--workers", 1).returncode == 0
    assert rows(out / "failures.csv") == []


def job_of(image, out, **settings):
    """A job that votes."""
    return _jobs.Job(str(image), str(out / f"{image.stem}.csv"), settings, "vote")


def find_job_of(image, out, **settings):
    return _jobs.Job(str(image), str(out / f"{image.stem}.csv"), settings)


def segment_job_of(image, out, **settings):
    return _jobs.Job(str(image), str(out / f"{image.stem}.csv"), settings, "segment")


@pytest.mark.parametrize(
    "make, settings",
    [
        (job_of, {"max_radius": 9}),
        (find_job_of, {}),
        (find_job_of, {"radius": [3, 9]}),
        (segment_job_of, {}),
        (segment_job_of, {"radius": [3, 9], "min_area": 60, "exclude_border": True}),
    ],
)
def test_what_is_finished_and_unchanged_is_skipped(images, tmp_path, make, settings):
    job = make(images[0], tmp_path, **settings)
    first = _jobs.run(job)
    assert (first.error, first.skipped) == ("", False)
    again = _jobs.run(job)
    assert again.skipped
    assert again == dataclasses.replace(first, skipped=True)
    # A file that was written anew with the same content is the same.
    images[0].write_bytes(images[0].read_bytes())
    assert _jobs.run(job).skipped


@pytest.mark.parametrize("change", ["file", "settings", "table", "no table", "record"])
@pytest.mark.parametrize(
    "make, settings, others",
    [
        (job_of, {"max_radius": 9}, {"max_radius": 9, "min_radius": 2}),
        (find_job_of, {}, {"min_score": 0.25}),
        (segment_job_of, {}, {"min_area": 1}),
    ],
)
def test_what_has_changed_is_done_again(images, tmp_path, change, make, settings, others):
    job = make(images[0], tmp_path, **settings)
    _jobs.run(job)
    table = pathlib.Path(job.table)
    expected = table.read_text(encoding="utf-8")
    if change == "file":
        images[0].write_bytes(images[1].read_bytes())
        expected = None
    elif change == "settings":
        job = make(images[0], tmp_path, **others)
        expected = None
    elif change == "table":
        table.write_text(expected[:-4], encoding="utf-8")
    elif change == "no table":
        table.unlink()
    else:
        job.record.write_text(job.record.read_text(encoding="utf-8")[:30], encoding="utf-8")
    assert not _jobs.run(job).skipped
    if expected is not None:
        assert table.read_text(encoding="utf-8") == expected
    assert _jobs.run(job).skipped


def test_what_the_process_of_an_image_says_is_passed_on(images, tmp_path, monkeypatch, capfd):
    def warn(job):
        os.write(2, b"a warning\n")
        return _jobs.Result(job.image, planes=(_jobs.Plane("", 5, 4, 3, 0.1),))

    monkeypatch.setattr(_jobs, "_run", warn)
    assert _jobs.run(job_of(images[0], tmp_path)).centers == 3
    assert capfd.readouterr().err == "a warning\n"


def test_an_error_that_nobody_foresaw_is_told(images, tmp_path, monkeypatch):
    def fail(job):
        raise RuntimeError("odd")

    monkeypatch.setattr(_jobs, "_run", fail)
    assert _jobs.run(job_of(images[0], tmp_path)).error == "its process ended early: RuntimeError: odd"


@pytest.mark.parametrize("suffix", [".csv", ".json"])
def test_files_of_others_are_not_replaced(images, tmp_path, suffix):
    job = job_of(images[0], tmp_path, max_radius=9)
    theirs = pathlib.Path(job.table).with_suffix(suffix)
    theirs.write_text("{}", encoding="utf-8")
    assert "not from a batch" in _jobs.run(job).error
    assert theirs.read_text(encoding="utf-8") == "{}"
    assert not pathlib.Path(job.table).with_suffix({".csv": ".json", ".json": ".csv"}[suffix]).exists()
    theirs.unlink()
    assert _jobs.run(job).error == ""


def test_an_interrupted_batch_goes_on_where_it_was(images, tmp_path):
    out = tmp_path / "out"
    out.mkdir()
    for image in images[:4]:  # as far as it came
        assert _jobs.run(find_job_of(image, out)).error == ""
    done = batch(*images[:6], "--out", out, "--workers", 1)
    assert done.returncode == 0
    assert "6 of 6 images, 4 done before" in done.stderr
    assert len(rows(out / "summary.csv")) == 6


def lines(path):
    return path.read_text(encoding="utf-8").splitlines()


def test_large_images_are_taken_apart(images, tmp_path, monkeypatch):
    settings = {"max_radius": 9, "gradient": 4.0, "threshold": 20.0}
    _jobs.run(job_of(images[4], tmp_path, **settings))
    whole = lines(tmp_path / f"{images[4].stem}.csv")
    monkeypatch.setattr(_jobs, "MAX_SIDE", 100)
    other = tmp_path / "tiles"
    other.mkdir()
    _jobs.run(job_of(images[4], other, **settings))
    assert sorted(lines(other / f"{images[4].stem}.csv")) == sorted(whole)
    assert len(whole) > 1


def test_a_bar_shows_the_progress_on_a_terminal(images, tmp_path):
    ours, theirs = os.openpty()
    line = [sys.executable, "-m", "orva.batch", *map(str, images[:2]), "--workers", "1"]
    with subprocess.Popen([*line, "--out", str(tmp_path / "out")], stderr=theirs) as running:
        os.close(theirs)
        shown = b""
        try:
            while part := os.read(ours, 1000):
                shown += part
        except OSError:  # the other side is closed
            pass
        os.close(ours)
        assert running.wait(WAIT) == 0
    half, whole = b"#" * 15 + b" " * 15, b"#" * 30
    assert [s[1:31] for s in shown.split(b"\r") if s[:1] == b"["] == [b" " * 30, half, whole]
    assert shown.rstrip().endswith(b"] 2 of 2 images")


@pytest.mark.parametrize("options", [["--max-radius", "20"], []])
def test_an_image_without_enough_memory_is_recorded_and_the_others_are_done(images, tmp_path, options):
    large = tmp_path / "large.tif"
    orva.write(large, np.eye(6000, dtype=np.uint8))
    memory = 1 << 30
    line = [sys.executable, "-m", "orva.batch", *map(str, [large, *images[:8]]), *options]
    done = subprocess.run(
        [*line, "--out", str(tmp_path / "out"), "--workers", "1"],
        capture_output=True,
        text=True,
        timeout=WAIT * 3,
        preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (memory, memory)),
    )
    assert done.returncode == 1, done.stderr
    failures = rows(tmp_path / "out" / "failures.csv")
    assert [f["file"] for f in failures] == [str(large)]
    assert failures[0]["error"].endswith("out of memory")
    assert len(rows(tmp_path / "out" / "summary.csv")) == 8


@pytest.mark.parametrize(
    "arguments, message",
    [
        (["a.tif"], "--out"),
        (["a.tif", "--out", "o", "--max-radius", "0"], "max_radius must be from 1 to 1000"),
        (["a.tif", "--out", "o", "--polarity", "grey"], "polarity must be one of"),
        (["a.tif", "--out", "o", "--radius", "0"], "0 is neither a radius above 0 nor a range"),
        (["a.tif", "--out", "o", "--min-area", "20"], "--min-area goes with --segment"),
        (["a.tif", "--out", "o", "--exclude-border"], "--exclude-border goes with --segment"),
        (
            ["a.tif", "--out", "o", "--segment", "--min-area", "20", "--max-area", "19"],
            "max_area must be from 20.0 to inf, not 19.0",
        ),
        (["a.tif", "--out", "o", "--segment", "--min-area", "-1"], "min_area must be from 0"),
        (
            ["a.tif", "--out", "o", "--segment", "--max-radius", "12"],
            "--max-radius belongs to the voting and --segment does not; give one of them",
        ),
        (["objects.tif", "--out", "o", "--segment"], "rename it"),
        (["a.tif", "--out", "o", "--radius", "9:5"], "9:5 is neither a radius above 0 nor a range"),
        (["a.tif", "--out", "o", "--radius", "1:2:3"], "1:2:3 is neither a radius above 0 nor a range"),
        (["a.tif", "--out", "o", "--radius", "ten"], "ten is neither a radius above 0 nor a range"),
        (["a.tif", "--out", "o", "--min-score", "2"], "min_score must be from 0 to 1"),
        (
            ["a.tif", "--out", "o", "--radius", "9", "--max-radius", "12"],
            "--max-radius belongs to the voting and --radius does not; give one of them",
        ),
        (
            ["a.tif", "--out", "o", "--min-score", "0.4", "--edges"],
            "--edges belongs to the voting and --min-score does not",
        ),
        (
            ["a.tif", "--out", "o", "--same-settings", "--polarity", "both"],
            "--polarity both belongs to the voting and --same-settings does not",
        ),
        (["objects.tif", "--out", "o"], "rename it"),
        (["centers.tif", "--out", "o", "--max-radius", "12"], "rename it"),
        (["a.tif", "--out", "o", "--workers", "0"], "workers must be"),
        (["a.tif", "d/a.png", "--out", "o"], "both have the table a.csv"),
        (["a.tif", "a.tif", "--out", "o"], "named twice"),
        (["summary.tif", "--out", "o"], "rename it"),
        (["a.tif", "--out", "o", "--workers", "2", "--scheduler", "tcp://x:1"], "not allowed"),
    ],
)
def test_wrong_calls(tmp_path, monkeypatch, capsys, arguments, message):
    monkeypatch.chdir(tmp_path)
    with pytest.raises(SystemExit) as ended:
        batch_command.main(arguments)
    assert ended.value.code == 2
    assert message in capsys.readouterr().err
    assert list(tmp_path.iterdir()) == []


def test_the_status_of_a_wrong_call_is_that_of_the_process():
    done = batch("a.tif")
    assert (done.returncode, done.stdout) == (2, "")
    assert "--out" in done.stderr


class Cluster:
    """A scheduler and workers, each a process, on this machine alone."""

    def __init__(self, directory):
        self._directory = directory
        self._file = directory / "scheduler.json"
        self._processes = []
        self.scheduler = self.start("dask_scheduler", "--port", "0", "--no-dashboard")
        # The scheduler creates the file before it writes the line.
        until(lambda: self._file.exists() and self._file.read_text(encoding="utf-8").strip().endswith("}"))
        self.workers = [self.start_worker(), self.start_worker()]

    def start(self, module, *arguments):
        line = [sys.executable, "-m", f"distributed.cli.{module}", "--host", "127.0.0.1"]
        line += [*arguments, "--scheduler-file", str(self._file)]
        with open(self._directory / f"{module}.log", "ab") as log:
            process = subprocess.Popen(line, stdout=log, stderr=log, cwd=self._directory)
        self._processes.append(process)
        return process

    def start_worker(self):
        # Without a nanny that would start it again.
        return self.start("dask_worker", "--nthreads", "1", "--no-nanny", "--no-dashboard")

    @property
    def address(self):
        return json.loads(self._file.read_text(encoding="utf-8"))["address"]

    def stop(self):
        for process in self._processes:
            process.kill()
        for process in self._processes:
            process.wait(WAIT)


def until(condition):
    """Waits for what is about to happen."""
    end = time.monotonic() + WAIT
    while not condition():
        assert time.monotonic() < end
        time.sleep(0.01)


@pytest.fixture
def cluster(tmp_path):
    directory = tmp_path / "cluster"
    directory.mkdir()
    running = Cluster(directory)
    yield running
    running.stop()


def test_a_worker_that_is_killed_loses_nothing(images, tmp_path, cluster):
    serial = tmp_path / "serial"
    serial.mkdir()
    for image in images:
        assert _jobs.run(job_of(image, serial, max_radius=60)).error == ""

    with Client(cluster.address, set_as_default=False) as client:
        client.wait_for_workers(2, timeout=WAIT)
    out = tmp_path / "out"
    line = [sys.executable, "-m", "orva.batch", *map(str, images), "--out", str(out)]
    line += ["--scheduler", cluster.address, "--max-radius", "60"]
    with subprocess.Popen(line, stderr=subprocess.PIPE, text=True) as running:
        until(lambda: len(list(out.glob("field_*.csv"))) >= 4)
        os.kill(cluster.workers[0].pid, signal.SIGKILL)
        assert len(list(out.glob("field_*.csv"))) < len(images)
        _, err = running.communicate(timeout=WAIT)
    assert running.returncode == 0, err
    assert rows(out / "failures.csv") == []
    assert [r["file"] for r in rows(out / "summary.csv")] == [str(i) for i in images]
    found = tables(out)
    for name, text in tables(serial).items():
        assert found[name] == text
    assert cluster.workers[0].wait(WAIT) == -signal.SIGKILL
    assert cluster.workers[1].poll() is None


def test_images_that_a_lost_scheduler_leaves_have_failed_and_the_others_are_done(
    images, tmp_path, cluster
):
    out = tmp_path / "out"
    line = [sys.executable, "-m", "orva.batch", *map(str, images), "--out", str(out)]
    line += ["--scheduler", cluster.address, "--max-radius", "60"]
    with subprocess.Popen(line, stderr=subprocess.PIPE, text=True) as running:
        until(lambda: len(list(out.glob("field_*.csv"))) >= 4)
        cluster.scheduler.kill()
        _, err = running.communicate(timeout=WAIT)
    assert running.returncode == 1 and (out / "summary.csv").exists(), err
    done, failed = rows(out / "summary.csv"), rows(out / "failures.csv")
    assert len(done) > 0 and len(failed) > 0
    assert [r["file"] for r in sorted(done + failed, key=lambda r: r["file"])] == [
        str(i) for i in images
    ]
    assert all("scheduler" in r["error"] for r in failed)
