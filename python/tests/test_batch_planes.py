"""Batches of folders, patterns, stacks and calibrated images."""

import numpy as np
import pytest
import tifffile
from test_batch import batch, rows
from test_batch_find import without_seconds

import orva
from orva.batch import _command as batch_command
from orva.batch import _jobs


def disc(x, y, radius=9):
    rows_, columns = np.mgrid[:90, :110]
    return np.where(np.hypot(columns - x, rows_ - y) < radius, 200, 20).astype(np.uint8)


@pytest.fixture
def stack(tmp_path):
    """An OME-TIFF file of two times, two channels and three slices, with pixels of half a micrometre."""
    path = tmp_path / "stack.ome.tif"
    planes = np.array([
        [[disc(25 + 25 * z, 30 + 30 * t, 8 + 3 * c) for z in range(3)] for c in range(2)] for t in range(2)
    ])
    tifffile.imwrite(path, planes, photometric="minisblack", metadata={
        "axes": "TCZYX", "Channel": {"Name": ["DAPI", "GFP"]},
        "PhysicalSizeX": 0.5, "PhysicalSizeY": 0.5, "PhysicalSizeZ": 2.0})
    return path


@pytest.fixture
def jobs(monkeypatch):
    """Runs the jobs of a call one by one in this process, without a cluster."""

    def call(*arguments):
        parsed = batch_command._parser().parse_args([*map(str, arguments)])
        out = batch_command.pathlib.Path(parsed.out)
        out.mkdir(exist_ok=True)
        made = batch_command._jobs(
            batch_command._expanded(parsed.images), out, *batch_command._settings(parsed)
        )
        results = [_jobs.run(job) for job in made]
        batch_command.write_summary(out, results, made[0].method)
        return results

    return call


def same_files(ours, theirs, *names):
    for name in names:
        assert (ours / name).read_bytes() == (theirs / name).read_bytes(), name


OPTIONS = [
    ["--channel", "GFP"],
    ["--channel", "0", "--z", "1", "--time", "1"],
    ["--channel", "1", "--z", "mean", "--time", "0"],
    ["--channel", "DAPI", "--z", "all"],
    ["--frame", "5"],
]


@pytest.mark.parametrize("options", OPTIONS)
@pytest.mark.parametrize("name", ["find", "segment", "vote"])
def test_planes_are_those_of_the_command(stack, tmp_path, command, jobs, name, options):
    ours, theirs = tmp_path / "ours", tmp_path / "theirs"
    method = {"find": [], "segment": ["--segment"], "vote": ["--max-radius", 13]}[name]
    (result,) = jobs(stack, "--out", ours, *method, *options)
    assert result.error == ""
    told = method if name == "vote" else []
    command(name, "--quiet", "--out", theirs, *told, *options, stack)
    assert without_seconds(ours / "summary.csv") == without_seconds(theirs / "summary.csv")
    assert len(rows(ours / "stack.ome.csv")) >= len(result.planes) > 0
    labels = sorted(path.name for path in theirs.glob("*_labels*.tif"))
    assert sorted(path.name for path in ours.glob("*_labels*.tif")) == labels
    assert bool(labels) == (name == "segment")
    same_files(ours, theirs, "stack.ome.csv", *labels)
    assert _jobs.run(
        _jobs.Job(str(stack), str(ours / "stack.ome.csv"), *batch_command._settings(
            batch_command._parser().parse_args([str(stack), "--out", str(ours), *map(str, method), *options])
        ))
    ).skipped


def test_every_time_has_rows(stack, tmp_path, jobs):
    (result,) = jobs(stack, "--out", tmp_path / "out", "--channel", "DAPI", "--z", "all")
    places = [(t, z) for t in range(2) for z in range(3)]
    assert [plane.fragment for plane in result.planes] == [f"#t={t}&z={z}" for t, z in places]
    table = rows(tmp_path / "out" / "objects.csv")
    assert [(int(r["t"]), int(r["z"])) for r in table] == places
    for row in table:
        t, z = int(row["t"]), int(row["z"])
        assert float(row["x"]) == pytest.approx(25 + 25 * z, abs=1)
        assert float(row["y_um"]) == pytest.approx((30 + 30 * t) / 2, abs=0.5)


def test_planes_are_never_chosen_in_silence(stack, tmp_path, jobs):
    (result,) = jobs(stack, "--out", tmp_path / "out")
    assert result.error == f'{stack}: has 2 channels: 0 "DAPI", 1 "GFP"; choose one with --channel'
    (result,) = jobs(stack, "--out", tmp_path / "out", "--channel", "0")
    assert (result.error, result.note) == ("", "maximum of 3 slices; --z chooses")
    pages = tmp_path / "pages.tif"
    orva.write(pages, np.array([disc(30, 30), disc(60, 50)]))
    (result,) = jobs(pages, "--out", tmp_path / "other")
    assert "has 2 pages, and does not say whether they are channels, slices or times" in result.error


def test_what_was_chosen_is_said_once(stack, tmp_path):
    done = batch(stack, "--out", tmp_path / "out", "--workers", 1, "--channel", "0")
    assert (done.returncode, done.stderr) == (
        0, "1 of 1 images\n1 of 1 images: maximum of 3 slices; --z chooses\n")


def test_files_with_and_without_calibration_share_a_table(stack, tmp_path, jobs):
    plain = tmp_path / "plain.pgm"
    orva.write(plain, disc(40, 40))
    jobs(plain, stack, "--out", tmp_path / "out", "--channel", "0", "--time", "0", "--z", "0")
    first, second = rows(tmp_path / "out" / "objects.csv")
    assert list(first) == ["file", "x", "y", "radius", "score", "x_um", "y_um", "radius_um"]
    assert first["x_um"] == "" and float(second["x_um"]) == pytest.approx(float(second["x"]) / 2, abs=1e-3)


def test_labels_know_the_size_of_a_pixel(stack, tmp_path, jobs):
    jobs(stack, "--out", tmp_path / "out", "--segment", "--channel", "0", "--time", "0", "--z", "0")
    assert orva.read(tmp_path / "out" / "stack.ome_labels.tif").pixel_size == {"x": 0.5, "y": 0.5}


SIZES = [
    ["--radius", "5um"],
    ["--radius", "3um:0.008mm"],
    ["--segment", "--radius", "5um", "--min-area", "40um2", "--max-area", "100um2"],
    ["--radius", "10um", "--pixel-size", "1"],
    ["--segment", "--pixel-size", "500nm", "--min-area", "9e-5mm2"],
]


@pytest.mark.parametrize("options", SIZES)
def test_sizes_in_micrometres_are_those_of_the_command(stack, tmp_path, command, jobs, options):
    ours, theirs = tmp_path / "ours", tmp_path / "theirs"
    planes = ["--channel", "GFP", "--z", "all"]
    (result,) = jobs(stack, "--out", ours, *options, *planes)
    assert result.error == ""
    name = "segment" if "--segment" in options else "find"
    told = [option for option in options if option != "--segment"]
    command(name, "--quiet", "--out", theirs, *told, *planes, stack)
    assert without_seconds(ours / "summary.csv") == without_seconds(theirs / "summary.csv")
    same_files(ours, theirs, "stack.ome.csv")
    assert jobs(stack, "--out", ours, *options, *planes)[0].skipped


def test_each_image_has_its_own_pixels(tmp_path, jobs):
    paths = []
    for k, size in enumerate((0.5, 0.75)):
        paths.append(tmp_path / f"{k}.ome.tif")
        tifffile.imwrite(paths[-1], np.maximum(disc(30, 30, 8), disc(80, 50, 12)), metadata={
            "axes": "YX", "PhysicalSizeX": size, "PhysicalSizeY": size})
    results = jobs(*paths, "--out", tmp_path / "out", "--radius", "5um:7um")
    radii = [[float(row["radius"]) for row in rows(result.table)] for result in results]
    assert radii == [[pytest.approx(12, abs=0.5)], [pytest.approx(8, abs=0.5)]]


@pytest.mark.parametrize("more", [[], ["--same-settings"]])
def test_micrometres_need_a_known_size(tmp_path, jobs, more):
    plain = tmp_path / "plain.pgm"
    orva.write(plain, disc(40, 40))
    words = "has no known size of square pixels; give --pixel-size, or sizes in pixels without a unit"
    for options in (["--radius", "5um"], ["--segment", "--min-area", "5um2"]):
        (result,) = jobs(plain, "--out", tmp_path / "out", *options, *more)
        assert result.error == f"{plain}: {words}"
        assert _jobs.estimate(_jobs.Job(str(plain), str(tmp_path / "e.csv"), dict(
            batch_command._settings(batch_command._parser().parse_args(
                [str(plain), "--out", "o", *options]))[0]))).error == f"{plain}: {words}"
    (result,) = jobs(plain, "--out", tmp_path / "out", "--radius", "4.5um", "--pixel-size", "500nm", *more)
    assert result.error == ""
    (row,) = rows(result.table)
    assert float(row["radius_um"]) == pytest.approx(float(row["radius"]) / 2, abs=1e-3)


@pytest.mark.parametrize("options, message", [
    (["--radius", "5us"], "5us is neither a radius above 0 nor a range A:B of radii"),
    (["--radius", "0um"], "0um is neither a radius above 0"),
    (["--radius", "1um:5"], "1um:5 is neither a radius above 0"),
    (["--radius", "5um:1um"], "5um:1um is neither a radius above 0"),
    (["--pixel-size", "0"], "0 is not a length above 0, such as 0.25um"),
    (["--segment", "--min-area", "5um"], "5um is neither a number nor an area such as 50um2"),
    (["--segment", "--min-area", "5um2", "--max-area", "9"],
     "--min-area must have a unit if --max-area has one"),
    (["--segment", "--min-area", "5um2", "--max-area", "4um2"], "--min-area must not exceed --max-area"),
    (["--pixel-size", "1", "--power", "0.5"], "--power belongs to the voting and --pixel-size does not"),
])
def test_wrong_sizes_are_usage_errors(capsys, options, message):
    with pytest.raises(SystemExit) as ended:
        batch_command.main(["a.tif", "--out", "out", *options])
    assert ended.value.code == 2
    assert message in capsys.readouterr().err


def test_labels_of_times_that_are_left_out_go(stack, tmp_path, jobs):
    out = tmp_path / "out"
    jobs(stack, "--out", out, "--segment", "--channel", "0")
    assert sorted(p.name for p in out.glob("*.tif")) == [f"stack.ome_labels_t000{t}.tif" for t in range(2)]
    (result,) = jobs(stack, "--out", out, "--segment", "--channel", "0", "--time", "1")
    assert result.error == ""
    assert [p.name for p in out.glob("*.tif")] == ["stack.ome_labels.tif"]


def test_folders_and_patterns_stand_for_their_images(tmp_path, jobs):
    plate = tmp_path / "plate"
    (plate / "deeper.tif").mkdir(parents=True)
    for k, name in enumerate(("b.tif", "a.PGM", "c.png", ".hidden.tif", "deeper.tif/d.tif")):
        orva.write(plate / name.lower(), disc(30 + k, 30))
    (plate / "a.pgm").rename(plate / "a.PGM")
    (plate / "notes.txt").write_text("no image")
    for argument, names in (
        (plate, ["a.PGM", "b.tif", "c.png"]),
        (plate / "[bc].*", ["b.tif", "c.png"]),
        (plate / "?.tif", ["b.tif"]),
        (plate / "*" / "*.tif", ["deeper.tif/d.tif"]),
    ):
        results = jobs(argument, "--out", tmp_path / "out")
        assert [r.image for r in results] == [str(plate / name) for name in names]
        assert all(r.error == "" for r in results)


def test_folders_without_images_and_patterns_without_files_fail(tmp_path, jobs):
    (tmp_path / "empty").mkdir()
    for name, words in (("empty", "Is a directory"), ("*.png", "No such file or directory")):
        (result,) = jobs(tmp_path / name, "--out", tmp_path / "out")
        assert words in result.error


@pytest.mark.parametrize("arguments, message", [
    (["a.tif", "--out", ""], "argument --out: must name a folder"),
    (["a.tif", "--out", "out", "--z", "min"], "z must be one of all, max, mean"),
    (["a.tif", "--out", "out", "--frame", "0", "--channel", "1"], "frame is given"),
    (["a.tif", "--out", "out", "--level", "-1"], "level must be from 0"),
])
def test_wrong_calls_are_refused(tmp_path, capsys, arguments, message):
    with pytest.raises(SystemExit) as ended:
        batch_command.main(arguments)
    assert ended.value.code == 2
    assert message in capsys.readouterr().err
