"""Batches of images with odd names, and results in odd places."""

import json
import os
import shutil

import dask
import numpy as np
import pytest
from test_batch import batch, find_job_of, job_of, rows, segment_job_of

import orva
from orva.batch import _command as batch_command
from orva.batch import _jobs, _summary

NAMES = [
    "with space.pgm",
    "a,b.pgm",
    "quo\"te'.pgm",
    "new\nline.pgm",
    "\N{GREEK SMALL LETTER MU}m.pgm",
    "NONE",
    "UP.PGM",
    "$\\frac$.pgm",
    os.fsdecode(b"latin\xff.pgm"),
    "x" * 245 + ".pgm",
]


@pytest.fixture
def field(tmp_path, blobs):
    """The file of an image with four objects."""
    path = tmp_path / "field.pgm"
    orva.write(path, blobs)
    return path


@pytest.fixture
def refused(monkeypatch):
    """The message of a call that must not get as far as the images."""

    def call(capsys, *arguments):
        monkeypatch.setattr(batch_command, "run_all", lambda *_: pytest.fail("it ran"))
        with pytest.raises(SystemExit) as ended:
            batch_command.main([*map(str, arguments)])
        assert ended.value.code == 2
        return capsys.readouterr().err

    return call


def test_images_may_have_any_name(tmp_path, field):
    images = [tmp_path / "in" / name for name in NAMES]
    images[0].parent.mkdir()
    for image in images:
        shutil.copy(field, image)
    out = tmp_path / "out"
    done = batch(*images, "--out", out, "--workers", 1, "--max-radius", 8)
    assert (done.returncode, rows(out / "failures.csv")) == (0, []), done.stderr
    told = [str(i).encode("utf-8", "backslashreplace").decode("utf-8") for i in images]
    assert [r["file"] for r in rows(out / "summary.csv")] == told
    expected = str(len(orva.find_centers(orva.read(field), max_radius=8)))
    assert {r["centers"] for r in rows(out / "summary.csv")} == {expected} != {"0"}
    assert (out / "counts.png").read_bytes().startswith(b"\x89PNG")
    assert "done before" in batch(*images, "--out", out, "--workers", 1, "--max-radius", 8).stderr


@pytest.mark.parametrize("name", ["field.csv", "field.json", "counts.png"])
def test_a_result_never_takes_the_place_of_an_image(tmp_path, capsys, field, refused, name):
    image = tmp_path / name
    field.rename(image)
    (tmp_path / "link").symlink_to(tmp_path)
    for out in (tmp_path, tmp_path / "link"):
        assert "would take its place" in refused(capsys, image, "--out", out)
    assert orva.read(image).shape == (40, 48)
    assert len(list(tmp_path.iterdir())) == 2


def test_labels_never_take_the_place_of_an_image(tmp_path, capsys, field, refused):
    image = field.rename(tmp_path / "field_labels.tif")
    other = tmp_path / "in" / "field.tif"
    message = refused(capsys, image, other, "--out", tmp_path, "--segment")
    assert f"{image}: a result would take its place" in message


def test_a_result_never_takes_the_place_of_what_a_link_leads_to(tmp_path, capsys, field, refused):
    (tmp_path / "out").mkdir()
    kept = field.rename(tmp_path / "out" / "counts.png")
    (tmp_path / "picture.pgm").symlink_to(kept)
    message = refused(capsys, tmp_path / "picture.pgm", "--out", tmp_path / "out")
    assert "would take its place" in message


def test_the_picture_is_not_written_through_a_link(tmp_path, field):
    other = tmp_path / "other.png"
    other.write_bytes(b"kept")
    (tmp_path / "counts.png").symlink_to(other)
    _summary.write_summary(tmp_path, [], "find")
    assert other.read_bytes() == b"kept"
    assert (tmp_path / "counts.png").read_bytes().startswith(b"\x89PNG")


@pytest.mark.parametrize("place", ["a file", "in a file", "no directory for files"])
def test_results_that_can_not_be_written_are_a_wrong_call(tmp_path, capsys, field, refused, place):
    out = {"a file": field, "in a file": field / "out", "no directory for files": "/proc"}[place]
    assert "cannot be written to" in refused(capsys, field, "--out", out)
    assert orva.read(field).shape == (40, 48)


@pytest.mark.parametrize("address", ["nonsense", "tcp://127.0.0.1:9"])
def test_an_address_without_a_scheduler_is_a_wrong_call(tmp_path, capsys, field, refused, address):
    with dask.config.set({"distributed.comm.timeouts.connect": "1s"}):
        message = refused(capsys, field, "--out", tmp_path / "out", "--scheduler", address)
    assert f"no scheduler answers at {address}" in message


@pytest.mark.parametrize(
    "change", [{"centers": "4"}, {"seconds": None}, {"error": "none"}, {"more": 1}, {"used": None}]
)
@pytest.mark.parametrize(
    "make, settings", [(job_of, {"max_radius": 8}), (find_job_of, {}), (segment_job_of, {})]
)
def test_a_record_that_is_no_longer_one_is_made_again(tmp_path, field, change, make, settings):
    job = make(field, tmp_path, **settings)
    first = _jobs.run(job)
    record = json.loads(job.record.read_text(encoding="utf-8"))
    record["planes"][0].update(change)
    job.record.write_text(json.dumps(record), encoding="utf-8")
    again = _jobs.run(job)
    is_good = job.method == "vote" and "used" in change
    assert (again.skipped, again.error, again.centers) == (is_good, "", first.centers)


@pytest.mark.parametrize("power", [0, 1, 1.5, 2, 3, 4, 5])
@pytest.mark.parametrize("scale", [1e-2, 1, 1e3, 1e6])
def test_weights_of_any_size_are_written_as_by_the_command(tmp_path, command, blobs, scale, power):
    image = tmp_path / "field.tif"
    orva.write(image, blobs.astype(np.float32) * np.float32(scale))
    job = job_of(image, tmp_path, max_radius=5, threshold=1e-2, power=float(power))
    assert _jobs.run(job).error == ""
    options = ("--max-radius", 5, "--threshold", 1e-2, "--power", power)
    expected = command("vote", "--quiet", *options, image)
    assert len(expected.splitlines()) > 1
    assert (tmp_path / "field.csv").read_text(encoding="utf-8") == expected
