"""read() and write(): the command's conversions, and other readers."""

import os
import pathlib

import numpy as np
import pytest
import tifffile
from plain_pgm import read_pgm

import orva

GREY = ["uint8", "int16", "int32", "uint32", "float32"]


@pytest.fixture(params=GREY)
def picture(request, random):
    """A stack (3, 6, 9) with values that only its own type holds."""
    values = {
        "uint8": random.integers(0, 256, 162),
        "int16": random.integers(-32768, 32768, 162),
        "int32": random.integers(-(2**31), 2**31, 162),
        "uint32": random.integers(0, 2**31, 162),
        "float32": random.normal(0, 1e6, 162),
    }
    return values[request.param].astype(request.param).reshape(3, 6, 9)


def test_read_pgm(sample):
    expected = read_pgm(sample)
    for path in (sample, str(sample)):
        image = orva.read(path)
        assert image.dtype == np.uint8
        np.testing.assert_array_equal(image, expected)


def test_tiff_both_ways(picture, tmp_path):
    path = tmp_path / "stack.tif"
    orva.write(path, picture)
    np.testing.assert_array_equal(tifffile.imread(path), picture)
    tifffile.imwrite(path, picture, photometric="minisblack")
    image = orva.read(path)
    assert image.dtype == picture.dtype
    np.testing.assert_array_equal(image, picture)
    for frame in range(3):
        np.testing.assert_array_equal(orva.read(path, frame=frame), picture[frame])


@pytest.mark.parametrize("dtype, wider", [("uint16", "int32"), ("int8", "int16")])
def test_types_that_no_image_has_become_wider(tmp_path, dtype, wider):
    limits = np.iinfo(dtype)
    expected = np.linspace(limits.min, limits.max, 40).astype(dtype).reshape(5, 8)
    tifffile.imwrite(tmp_path / "plane.tif", expected)
    image = orva.read(tmp_path / "plane.tif")
    assert image.dtype == wider
    np.testing.assert_array_equal(image, expected)


def test_colour_becomes_the_luminance_of_the_command(command, random, tmp_path):
    colour = random.integers(0, 256, (7, 9, 3), dtype=np.uint8)
    ppm = tmp_path / "colour.ppm"
    ppm.write_bytes(b"P6\n9 7\n255\n" + colour.tobytes())
    expected = colour @ np.array([0.212671, 0.71516, 0.072169])
    png = tmp_path / "colour.png"
    command("convert", ppm, png)
    for path in (ppm, png):
        image = orva.read(path)
        assert image.dtype == np.float32
        np.testing.assert_allclose(image, expected, rtol=1e-6)


@pytest.mark.parametrize("extension", [".png", ".tif", ".iht", ".uif", ".pgm"])
def test_read_is_a_conversion_of_the_command(command, sample, tmp_path, extension):
    path = tmp_path / f"converted{extension}"
    command("convert", sample, path)
    np.testing.assert_array_equal(orva.read(path), read_pgm(sample))


@pytest.mark.parametrize("extension", [".png", ".tif", ".iht", ".uif", ".pgm", ".ppm", ".ics"])
def test_write_is_a_conversion_of_the_command(command, sample, tmp_path, extension):
    ours, theirs = tmp_path / f"ours{extension}", tmp_path / f"theirs{extension}"
    orva.write(ours, read_pgm(sample))
    command("convert", sample, theirs)
    # An ICS header holds its own name.
    assert ours.read_bytes() == theirs.read_bytes().replace(b"theirs", b"ours")
    if extension == ".ics":
        assert ours.with_suffix(".ids").read_bytes() == theirs.with_suffix(".ids").read_bytes()


def test_sixteen_bits_by_png(tmp_path):
    image = np.array([[0, 255, 256], [40000, 65535, 1]], np.int32)
    orva.write(tmp_path / "deep.png", image)
    result = orva.read(tmp_path / "deep.png")
    assert result.dtype == np.int32
    np.testing.assert_array_equal(result, image)


def test_iht_both_ways(picture, tmp_path):
    orva.write(tmp_path / "stack.iht", picture)
    image = orva.read(tmp_path / "stack.iht")
    assert image.dtype == (np.int32 if picture.dtype == np.uint32 else picture.dtype)
    np.testing.assert_array_equal(image, picture)


def test_ics_holds_the_axes(picture, tmp_path):
    image = picture.reshape(1, 3, 1, 6, 9)
    orva.write(tmp_path / "stack.ics", image)
    assert (tmp_path / "stack.ids").read_bytes() == image.tobytes()
    header = (tmp_path / "stack.ics").read_text()
    fields = [line.split("\t") for line in header.splitlines()]
    layout = {name: values for kind, name, *values in fields[1:] if kind == "layout"}
    assert dict(zip(layout["order"][1:], layout["sizes"][1:])) == {
        "x": "9", "y": "6", "z": "1", "c": "3", "t": "1",
    }


def test_truth_becomes_0_and_255(random, tmp_path):
    mask = random.random((5, 8)) < 0.5
    orva.write(tmp_path / "mask.tif", mask)
    expected = np.where(mask, 255, 0).astype(np.uint8)
    np.testing.assert_array_equal(tifffile.imread(tmp_path / "mask.tif"), expected)


def test_stretch_maps_the_range_to_bytes(tmp_path):
    image = np.array([[-10.0, 0.0, 30.0]], np.float32)
    orva.write(tmp_path / "stretched.pgm", image, stretch=True)
    np.testing.assert_array_equal(read_pgm(tmp_path / "stretched.pgm"), [[0, 63, 255]])


def test_what_a_format_does_not_hold_is_an_error_that_leaves_no_file(tmp_path):
    path = tmp_path / "image.pgm"
    with pytest.raises(OSError, match=r"image.pgm: .*8 bits; stretch=True"):
        orva.write(path, np.array([[256]], np.int32))
    with pytest.raises(OSError, match=r"3 planes and PGM holds one$"):
        orva.write(path, np.zeros((3, 2, 2), np.uint8))
    assert list(tmp_path.iterdir()) == []


def test_files_that_can_not_be_read(sample, tmp_path):
    with pytest.raises(FileNotFoundError) as caught:
        orva.read(tmp_path / "none.tif")
    assert caught.value.filename == str(tmp_path / "none.tif")
    with pytest.raises(OSError, match="directory"):
        orva.read(tmp_path)
    text = tmp_path / "text.txt"
    text.write_text("nothing to see")
    with pytest.raises(OSError, match=r"text.txt: is not a PGM"):
        orva.read(text)
    short = tmp_path / "short.pgm"
    short.write_bytes(sample.read_bytes()[:-1])
    with pytest.raises(OSError, match=r"short.pgm: "):
        orva.read(short)
    with pytest.raises(OSError, match="frame 1"):
        orva.read(sample, frame=1)


def test_pages_that_differ_are_read_one_by_one(tmp_path):
    path = tmp_path / "pages.tif"
    tifffile.imwrite(path, np.zeros((4, 5), np.uint8))
    tifffile.imwrite(path, np.ones((3, 5), np.uint8), append=True)
    with pytest.raises(OSError, match="frame="):
        orva.read(path)
    np.testing.assert_array_equal(orva.read(path, frame=1), np.ones((3, 5)))


@pytest.mark.parametrize("frame, error", [(-1, ValueError), (1.0, TypeError), (70000, ValueError)])
def test_frames_that_no_file_has(sample, frame, error):
    with pytest.raises(error, match="frame"):
        orva.read(sample, frame=frame)


def test_files_that_can_not_be_written(tmp_path):
    image = np.zeros((4, 5), np.uint8)
    with pytest.raises(FileNotFoundError):
        orva.write(tmp_path / "none" / "image.tif", image)
    (tmp_path / "taken.tif").mkdir()
    with pytest.raises(OSError, match=r"taken.tif can not be written"):
        orva.write(tmp_path / "taken.tif", image)
    for name in ("image", "image.jpg", "image.ICS"):
        with pytest.raises(ValueError, match=r"\.png"):
            orva.write(tmp_path / name, image)
    with pytest.raises(TypeError, match="stretch"):
        orva.write(tmp_path / "image.tif", image, stretch=1)
    with pytest.raises(TypeError, match="complex128"):
        orva.write(tmp_path / "image.tif", image.astype(complex))
    assert [p.name for p in tmp_path.iterdir()] == ["taken.tif"]


def test_a_name_with_a_null_character_is_refused_and_leaves_no_file(picture, tmp_path):
    with pytest.raises(ValueError, match="null"):
        orva.write(f"{tmp_path}/kept\0.tif", picture)
    assert list(tmp_path.iterdir()) == []


def test_a_name_may_be_bytes(tmp_path):
    path = os.fsencode(tmp_path / "half.pgm")
    with pytest.raises(OSError, match=r"half.pgm: .*do not fit"):
        orva.write(path, np.full((3, 4), 0.5, np.float32))
    orva.write(path, np.full((3, 4), 5, np.uint8))
    np.testing.assert_array_equal(orva.read(path), np.full((3, 4), 5))


def test_errors_tell_names_that_are_no_text(tmp_path):
    path = os.fsencode(tmp_path) + b"/\xff.png"
    with open(path, "wb") as file:
        file.write(b"no image")
    for name in (path, os.fsdecode(path)):
        with pytest.raises(OSError, match=r"\udcff.png: is not a PGM"):
            orva.read(name)
        with pytest.raises(OSError, match=r"\udcff.png: .*stretch=True"):
            orva.write(name, np.full((2, 2), 0.5, np.float32))


def test_a_full_disk_is_an_error(tmp_path):
    device = pathlib.Path("/dev/full")
    assert device.exists()
    (tmp_path / "full.png").symlink_to(device)
    with pytest.raises(OSError, match="No space left"):
        orva.write(tmp_path / "full.png", np.zeros((4, 5), np.uint8))


@pytest.mark.parametrize("mask", [0o022, 0o077])
def test_files_have_the_usual_mode(tmp_path, mask):
    before = os.umask(mask)
    try:
        orva.write(tmp_path / "image.png", np.zeros((4, 5), np.uint8))
        assert os.umask(mask) == mask
    finally:
        os.umask(before)
    assert (tmp_path / "image.png").stat().st_mode & 0o777 == 0o666 & ~mask


def test_relative_names(monkeypatch, tmp_path):
    monkeypatch.chdir(tmp_path)
    image = np.arange(20, dtype=np.uint8).reshape(4, 5)
    orva.write("imäge.png", image)
    np.testing.assert_array_equal(orva.read("imäge.png"), image)
    name = os.fsdecode(b"odd\xff.png")
    orva.write(name, image)
    np.testing.assert_array_equal(orva.read(name), image)
