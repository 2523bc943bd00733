"""Batches of images that are searched without or with few settings."""

import dataclasses
import json
import pathlib

import numpy as np
import pytest
from test_batch import batch, find_job_of, job_of, rows, tables

import orva
from orva.batch import _command as batch_command
from orva.batch import _jobs


def without_seconds(path):
    return [{k: v for k, v in row.items() if k != "seconds"} for row in rows(path)]


@pytest.mark.parametrize("options", [[], ["--same-settings"], ["--same-settings", "--radius", "4:9"]])
def test_the_summary_of_finding_is_that_of_the_command(images, tmp_path, command, options):
    ours, theirs = tmp_path / "ours", tmp_path / "theirs"
    assert batch(*images[:4], "--out", ours, "--workers", 2, *options).returncode == 0
    command("find", "--quiet", "--out", theirs, *options, *images[:4])
    assert without_seconds(ours / "summary.csv") == without_seconds(theirs / "summary.csv")
    for image in images[:4]:
        table = (ours / f"{image.stem}.csv").read_text(encoding="utf-8")
        assert table == (theirs / f"{image.stem}.csv").read_text(encoding="utf-8")
    # Three radii that are found alone, one that is shared.
    radii = {row["radius"] for row in rows(ours / "summary.csv")}
    assert (len(radii) == 1) == (options == ["--same-settings"])


def test_one_estimate_over_all_images_is_not_made_twice(images, tmp_path):
    large = tmp_path / "large.tif"
    orva.write(large, np.kron(orva.read(images[4]), np.ones((4, 4), np.uint8)))
    out = tmp_path / "out"
    line = [large, "--out", out, "--workers", 1, "--same-settings"]
    assert batch(*line).stderr == "estimates: 1 of 1 images\n1 of 1 images\n"
    before = tables(out)
    again = batch(*line)
    assert again.stderr == "estimates: 1 of 1 images, 1 done before\n1 of 1 images, 1 done before\n"
    assert tables(out) == before
    # Other images change the estimate over all of them, so this one is searched again.
    more = batch(*images[:3], *line)
    assert more.stderr == "estimates: 4 of 4 images, 1 done before\n4 of 4 images\n"


def test_an_image_without_an_estimate_fails_once_and_the_others_are_done(images, tmp_path):
    damaged = tmp_path / "damaged.tif"
    damaged.write_bytes(images[0].read_bytes()[:50])
    out = tmp_path / "out"
    done = batch(damaged, *images[:2], "--out", out, "--workers", 1, "--same-settings")
    assert done.returncode == 1
    assert [r["file"] for r in rows(out / "failures.csv")] == [str(damaged)]
    assert len(rows(out / "summary.csv")) == 2


@pytest.mark.parametrize("settings", [{}, {"polarity": "bright"}, {"frame": 0}])
def test_a_voting_is_never_taken_for_a_search(images, tmp_path, settings):
    """And the other way round, with settings that both have."""
    jobs = [make(images[1], tmp_path, **settings) for make in (job_of, find_job_of, job_of)]
    heads = []
    for job in jobs:
        result = _jobs.run(job)
        assert (result.error, result.skipped) == ("", False)
        heads.append(pathlib.Path(job.table).read_text(encoding="utf-8").splitlines()[0])
    assert heads == ["x,y,weight", "x,y,radius,score", "x,y,weight"]


def test_an_estimate_is_kept_by_the_search_and_lost_by_the_voting(images, tmp_path):
    job = find_job_of(images[0], tmp_path)
    first = _jobs.estimate(job)
    assert (first.error, first.skipped) == ("", False)
    assert first.used == orva.estimate_settings(orva.read(images[0]))
    assert not pathlib.Path(job.table).exists()
    assert not _jobs.run(find_job_of(images[0], tmp_path, radius=7.0)).skipped
    assert _jobs.estimate(job) == dataclasses.replace(first, skipped=True)
    assert _jobs.run(find_job_of(images[0], tmp_path, radius=7.0)).skipped
    assert not _jobs.estimate(find_job_of(images[0], tmp_path, polarity="dark")).skipped
    _jobs.run(job_of(images[0], tmp_path, max_radius=9))
    assert not _jobs.estimate(job).skipped


@pytest.mark.parametrize("change", [{"radius": "7"}, {"polarity": "both"}, {"runner_up": None}])
def test_a_damaged_estimate_is_made_again(images, tmp_path, change):
    job = find_job_of(images[0], tmp_path)
    first = _jobs.estimate(job)
    record = json.loads(job.record.read_text(encoding="utf-8"))
    record["estimate"]["used"].update(change)
    job.record.write_text(json.dumps(record), encoding="utf-8")
    assert _jobs.estimate(job) == first


def test_large_images_are_searched_in_tiles(images, tmp_path, monkeypatch):
    whole = _jobs.run(find_job_of(images[4], tmp_path, radius=6.0, polarity="bright"))
    monkeypatch.setattr(_jobs, "MAX_SIDE", 100)
    searched = []

    def search(image, settings):
        searched.append(settings)
        return search_in_tiles(image, settings, tile=70)

    search_in_tiles = _jobs.search_in_tiles
    monkeypatch.setattr(_jobs, "search_in_tiles", search)
    other = tmp_path / "tiles"
    other.mkdir()
    job = find_job_of(images[4], other, radius=6.0, polarity="bright")
    tiled = _jobs._run(job)
    assert len(searched) == 1
    assert tiled.centers == whole.centers > 0
    assert (tiled.planes[0].used.radius, tiled.planes[0].used.polarity) == (6.0, "bright")
    expected = np.loadtxt(tmp_path / f"{images[4].stem}.csv", delimiter=",", skiprows=1)
    found = np.loadtxt(job.table, delimiter=",", skiprows=1)
    order = [np.lexsort(np.round(table[:, 1::-1]).T) for table in (found, expected)]
    np.testing.assert_allclose(found[order[0], :3], expected[order[1], :3], atol=0.1)
    assert _jobs.estimate(find_job_of(images[4], other)).used.polarity == "bright"


@pytest.mark.parametrize(
    "options, method",
    [
        ([], "find"),
        (["--polarity", "dark"], "find"),
        (["--frame", "0", "--radius", "8"], "find"),
        (["--same-settings"], "find"),
        (["--segment"], "segment"),
        (["--segment", "--same-settings", "--radius", "8", "--max-area", "90"], "segment"),
        (["--polarity", "both"], "vote"),
        (["--polarity", "dark", "--power", "0.5"], "vote"),
        (["--edges"], "vote"),
        (["--min-radius", "1"], "vote"),
    ],
)
def test_any_setting_of_the_voting_selects_it(options, method):
    arguments = batch_command._parser().parse_args(["a.tif", "--out", "o", *options])
    settings, selected = batch_command._settings(arguments)
    assert selected == method
    assert not settings.keys() & {"same_settings", "segment"}
