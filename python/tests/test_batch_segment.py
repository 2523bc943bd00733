"""Batches of images with labels and measurements: python -m orva.batch --segment."""

import hashlib
import json

import numpy as np
import pytest
import tifffile
from test_batch import batch, find_job_of, job_of, rows, segment_job_of
from test_batch_find import without_seconds

import orva
from orva.batch import _jobs

OPTIONS = [
    [],
    ["--same-settings", "--min-area", 60],
    ["--radius", "4:9", "--min-score", 0.3, "--max-area", 130, "--exclude-border"],
]


@pytest.mark.parametrize("options", OPTIONS)
def test_results_are_those_of_the_command(images, tmp_path, command, options):
    ours, theirs = tmp_path / "ours", tmp_path / "theirs"
    some = images[1:5]
    done = batch(*some, "--out", ours, "--workers", 2, "--segment", *options)
    assert (done.returncode, done.stdout) == (0, ""), done.stderr
    command("segment", "--quiet", "--out", theirs, *options, *some)
    assert without_seconds(ours / "summary.csv") == without_seconds(theirs / "summary.csv")
    everything = rows(ours / "objects.csv")
    for image, summary in zip(some, rows(ours / "summary.csv")):
        for name in (f"{image.stem}.csv", f"{image.stem}_labels.tif"):
            assert (ours / name).read_bytes() == (theirs / name).read_bytes()
        table = rows(ours / f"{image.stem}.csv")
        labels = tifffile.imread(ours / f"{image.stem}_labels.tif")
        assert (labels.dtype, labels.shape) == (np.uint16, (90, 120))
        np.testing.assert_array_equal(np.unique(labels)[1:], [int(r["label"]) for r in table])
        assert len(table) == int(summary["objects"])
        mine = [{k: v for k, v in r.items() if k != "file"} for r in everything if r["file"] == str(image)]
        assert mine == table
    assert len(everything) > 4
    assert rows(ours / "failures.csv") == []
    assert (ours / "counts.png").read_bytes().startswith(b"\x89PNG")
    again = batch(*some, "--out", ours, "--workers", 1, "--segment", *options)
    assert "4 of 4 images, 4 done before" in again.stderr


def test_the_table_is_that_of_the_function(images, tmp_path):
    job = segment_job_of(images[4], tmp_path, min_area=60)
    result = _jobs.run(job)
    labels, table = orva.segment(orva.read(images[4]), min_area=60)
    assert (result.error, result.centers) == ("", len(table))
    assert result.planes[0].used == orva.estimate_settings(orva.read(images[4]))
    np.testing.assert_array_equal(tifffile.imread(job.labels()), labels)
    written = rows(job.table)
    assert list(written[0]) == list(table.dtype.names)
    for name in set(table.dtype.names) - {"score", "touches_border"}:
        np.testing.assert_array_equal([float(r[name]) for r in written], table[name])
    borders = {"true": True, "false": False}
    assert [borders[r["touches_border"]] for r in written] == table["touches_border"].tolist()


@pytest.mark.parametrize("change", ["other", "none", "record"])
def test_labels_that_have_changed_are_made_again(images, tmp_path, change):
    job = segment_job_of(images[1], tmp_path)
    assert _jobs.run(job).error == ""
    content = job.labels().read_bytes()
    if change == "other":
        job.labels().write_bytes(content[:-1] + b"x")
    elif change == "none":
        job.labels().unlink()
    else:
        record = json.loads(job.record.read_text(encoding="utf-8"))
        record["labels"][job.labels().name] = hashlib.sha256(b"").hexdigest()
        job.record.write_text(json.dumps(record), encoding="utf-8")
    assert not _jobs.run(job).skipped
    assert job.labels().read_bytes() == content
    assert _jobs.run(job).skipped


def test_labels_of_others_are_not_replaced(images, tmp_path):
    job = segment_job_of(images[1], tmp_path)
    for make in (None, find_job_of):  # without and with a record of ours
        if make:
            assert _jobs.run(make(images[1], tmp_path)).error == ""
        job.labels().write_bytes(b"theirs")
        assert _jobs.run(job).error == f"{job.labels()} is there, and not from a batch"
        assert job.labels().read_bytes() == b"theirs"
        job.labels().unlink()
    assert _jobs.run(job).error == ""


@pytest.mark.parametrize("make", [find_job_of, job_of])
def test_labels_go_with_their_table(images, tmp_path, make):
    labels = segment_job_of(images[1], tmp_path).labels()
    for is_changed in (False, True):
        assert _jobs.run(segment_job_of(images[1], tmp_path)).error == ""
        if is_changed:
            labels.write_bytes(b"corrected by hand")
        assert _jobs.run(make(images[1], tmp_path)).error == ""
        assert labels.exists() == is_changed
        labels.unlink(missing_ok=True)


def test_one_method_is_never_taken_for_another(images, tmp_path):
    heads = []
    for make in (segment_job_of, find_job_of, segment_job_of, job_of, job_of, segment_job_of):
        job = make(images[1], tmp_path)
        result = _jobs.run(job)
        assert result.error == ""
        assert result.skipped == (heads[-1:] == [make])
        heads.append(make)
        columns = {find_job_of: "x,y,radius,score", job_of: "x,y,weight"}
        with open(job.table, encoding="utf-8") as file:
            assert file.readline().startswith(columns.get(make, "label,centroid-0,"))


def test_one_estimate_over_all_images_leaves_the_labels_ours(images, tmp_path):
    job = segment_job_of(images[1], tmp_path, min_area=60)
    first = _jobs.run(job)
    changed = segment_job_of(images[1], tmp_path, min_area=61)
    estimate = _jobs.estimate(changed)
    assert (estimate.error, estimate.used) == ("", first.planes[0].used)
    assert _jobs.run(changed).error == ""


def test_an_image_without_objects_has_labels_and_an_empty_table(tmp_path):
    image = tmp_path / "flat.tif"
    orva.write(image, np.full((30, 40), 7, np.uint8))
    out = tmp_path / "out"
    assert batch(image, "--out", out, "--workers", 1, "--segment").returncode == 0
    assert rows(out / "flat.csv") == rows(out / "objects.csv") == []
    assert not tifffile.imread(out / "flat_labels.tif").any()
    assert rows(out / "summary.csv")[0]["objects"] == "0"


def test_large_images_are_searched_in_tiles_and_labelled_as_a_whole(images, tmp_path, monkeypatch):
    whole = segment_job_of(images[4], tmp_path, radius=6.0, polarity="bright")
    assert _jobs.run(whole).error == ""
    monkeypatch.setattr(_jobs, "MAX_SIDE", 100)
    other = tmp_path / "tiles"
    other.mkdir()
    tiled = segment_job_of(images[4], other, radius=6.0, polarity="bright")
    assert _jobs.run(tiled).error == ""
    expected, found = tifffile.imread(whole.labels()), tifffile.imread(tiled.labels())
    assert len(np.unique(found)) == len(np.unique(expected)) > 2
    assert np.mean((found > 0) == (expected > 0)) > 0.999
