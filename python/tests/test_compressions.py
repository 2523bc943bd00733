"""TIFF files in every compression, as tiffcp of libtiff and Pillow write them."""

import itertools
import subprocess
import zlib

import numpy as np
import pytest
import tifffile
from PIL import Image
from test_axes import HELD, SIZES, assert_reads, numbered

import orva

# Options of tiffcp: compressions without loss, and the predictors that libtiff has for them.
FAST = ["none", "packbits", "lzw", "lzw:2", "zip", "zip:2"]
SLOW = ["zstd", "zstd:2", "lzma", "lzma:2"]
LAYOUTS = [
    ["-s", "-r", "5"],
    ["-s", "-r", "18", "-8"],
    ["-t", "-w", "16", "-l", "32"],
    ["-t", "-w", "48", "-l", "16", "-8"],
]
AXES = {"ome": "CTZYX", "imagej": "TZCYX", "plain": "ZYX"}
EVERYWHERE = list(itertools.product(LAYOUTS, ("-L", "-B")))


def converted(source, path, *options):
    subprocess.run(["tiffcp", *options, source, path], check=True, capture_output=True)
    return path


def write_kind(path, kind, array, axes):
    """Not compressed, and described as the kind says."""
    if kind == "imagej":
        tifffile.imwrite(path, array, imagej=True, metadata={"axes": axes})
    elif kind == "ome":
        tifffile.imwrite(path, array, photometric="minisblack", metadata={"axes": axes})
    else:
        with tifffile.TiffWriter(path) as out:
            for plane in array:
                out.write(plane, photometric="minisblack", metadata=None, contiguous=False)


def assert_is(image, array, axes):
    assert (image.axes, image.dtype) == (axes, HELD[array.dtype.name])
    np.testing.assert_array_equal(image, array)


@pytest.mark.parametrize("kind, dtype, compression", [
    (kind, dtype, compression)
    for kind, dtypes in (("ome", HELD), ("imagej", ("uint8", "uint16", "float32")), ("plain", HELD))
    for dtype in dtypes for compression in FAST])
def test_every_plane_in_every_layout(tmp_path, kind, dtype, compression):
    array = numbered(AXES[kind], dtype)
    source = tmp_path / ("a.ome.tif" if kind == "ome" else "a.tif")
    write_kind(source, kind, array, AXES[kind])
    for k, (layout, order) in enumerate(EVERYWHERE):
        path = converted(source, tmp_path / f"{k}{source.name}", "-c", compression, order, *layout)
        if kind == "plain":
            assert_is(orva.read(path), array, ("page", "y", "x"))
        else:
            assert_reads(path, array, AXES[kind])


@pytest.mark.parametrize("compression", SLOW)
@pytest.mark.parametrize("dtype", HELD)
def test_slow_compressions(tmp_path, dtype, compression):
    array = numbered("YX", dtype)
    tifffile.imwrite(tmp_path / "a.tif", array, photometric="minisblack", metadata=None)
    for layout, order in zip(LAYOUTS, ("-L", "-B", "-B", "-L"), strict=True):
        path = converted(tmp_path / "a.tif", tmp_path / "b.tif", "-c", compression, order, *layout)
        assert_is(orva.read(path), array, ("y", "x"))


@pytest.mark.parametrize("compression", ["lzw:3", "zip:3", "zstd:3", "lzma:3"])
def test_floating_point_predictor(tmp_path, compression):
    array = numbered("YX", "float32")
    tifffile.imwrite(tmp_path / "a.tif", array, photometric="minisblack", metadata=None)
    for layout in LAYOUTS:  # in the other byte order tiffcp swaps the bytes twice
        path = converted(tmp_path / "a.tif", tmp_path / "b.tif", "-c", compression, "-L", *layout)
        assert_is(orva.read(path), array, ("y", "x"))


def differences(row, predictor, byteorder):
    """A row of floating-point numbers behind a predictor."""
    if predictor == 2:
        return np.diff(row.view("u4"), prepend=np.uint32(0)).astype(byteorder + "u4").tobytes()
    # The most significant bytes of all numbers come first, in either byte order.
    planes = row.astype(">f4").view("u1").reshape(-1, 4).T.reshape(-1)
    return np.diff(planes, prepend=np.uint8(0)).tobytes()


@pytest.mark.parametrize("byteorder", "<>")
@pytest.mark.parametrize("predictor", [2, 3])
def test_predictors_of_floats_by_definition(tmp_path, predictor, byteorder):
    array = numbered("YX", "float32")
    strip = zlib.compress(b"".join(differences(row, predictor, byteorder) for row in array))
    with tifffile.TiffWriter(tmp_path / "a.tif", byteorder=byteorder) as out:
        out.write(iter([strip]), shape=array.shape, dtype="int32", compression="zlib", predictor=2,
                  rowsperstrip=len(array), photometric="minisblack", metadata=None)
    with tifffile.TiffFile(tmp_path / "a.tif", mode="r+b") as file:
        file.pages[0].tags["Predictor"].overwrite(predictor)
    with tifffile.TiffFile(tmp_path / "a.tif", mode="r+b") as file:
        file.pages[0].tags["SampleFormat"].overwrite(3)
    assert_is(orva.read(tmp_path / "a.tif"), array, ("y", "x"))


@pytest.mark.parametrize("compression", FAST)
@pytest.mark.parametrize("planar", ["contig", "separate"])
@pytest.mark.parametrize("dtype", ["uint8", "uint16"])
def test_colour_in_every_layout(tmp_path, dtype, planar, compression):
    array = numbered("CYXS", dtype)
    source = tmp_path / "a.ome.tif"
    stored = array if planar == "contig" else np.moveaxis(array, -1, 1)
    axes = "CYXS" if planar == "contig" else "CSYX"
    tifffile.imwrite(source, stored, photometric="rgb", planarconfig=planar, metadata={"axes": axes})
    for k, (layout, order) in enumerate(EVERYWHERE):
        if (dtype, planar) == ("uint16", "separate") and "-t" in layout:
            continue  # tiffcp confuses their bytes; test_axes.py has such files
        path = converted(source, tmp_path / f"{k}.ome.tif", "-c", compression, order, *layout)
        image = orva.read(path)
        assert image.axes == ("c", "y", "x")
        np.testing.assert_array_equal(image, orva.luminance(array))


def test_the_files_are_what_the_options_say(tmp_path):
    """So that the tests above do not read the same file again and again."""
    source = tmp_path / "a.tif"
    tifffile.imwrite(source, numbered("YX", "uint16"), photometric="minisblack", metadata=None)
    seen = set()
    for (layout, order), compression in itertools.product(EVERYWHERE, (*FAST, *SLOW)):
        path = converted(source, tmp_path / "b.tif", "-c", compression, order, *layout)
        with tifffile.TiffFile(path) as file:
            page = file.pages[0]
            name = f"{page.compression.name}:{int(page.predictor)}"
            seen.add((name, page.is_tiled, file.is_bigtiff, file.byteorder))
    names = {"NONE:1", "PACKBITS:1"} | {
        f"{name}:{predictor}" for name in ("LZW", "ADOBE_DEFLATE", "ZSTD", "LZMA") for predictor in (1, 2)}
    assert seen == set(itertools.product(names, (False, True), (False, True), "<>"))


@pytest.mark.parametrize("mode, dtype", [
    ("L", np.uint8), ("I;16", np.uint16), ("I", np.int32), ("F", np.float32)])
@pytest.mark.parametrize("compression", [
    "raw", "packbits", "tiff_lzw", "tiff_adobe_deflate", "tiff_deflate", "lzma", "zstd"])
def test_what_pillow_writes(tmp_path, mode, dtype, compression):
    array = numbered("YX", dtype)
    path = tmp_path / "a.tif"
    picture = Image.fromarray(array)
    assert picture.mode == mode
    picture.save(path, compression=compression)
    np.testing.assert_array_equal(orva.read(path), array)


def smooth(shape):
    return np.linspace(40, 200, int(np.prod(shape))).reshape(shape).astype(np.uint8)


@pytest.mark.parametrize("mode, compression", [
    ("L", "jpeg"), ("RGB", "jpeg"), ("RGB", "jpeg:r"), ("RGB", "webp")])
def test_lossy_compression_as_pillow_reads_it(tmp_path, mode, compression):
    shape = (SIZES["Y"] * 2, SIZES["X"] * 2, *((3,) if mode == "RGB" else ()))
    source = tmp_path / "a.tif"
    Image.fromarray(smooth(shape)).save(source)
    for layout in (["-s", "-r", "16"], ["-t", "-w", "32", "-l", "32"]):
        path = converted(source, tmp_path / "b.tif", "-c", compression, *layout)
        with Image.open(path) as picture:
            expected = np.asarray(picture)
        assert not np.array_equal(expected, smooth(shape))
        np.testing.assert_array_equal(
            orva.read(path), orva.luminance(expected) if mode == "RGB" else expected)


@pytest.mark.parametrize("compression", ["raw", "packbits", "group3", "group4", "tiff_lzw", "lzma"])
def test_one_bit_is_black_and_white(tmp_path, compression):
    array = numbered("YX", np.uint8) % 3 == 0
    Image.fromarray(array).save(tmp_path / "a.tif", compression=compression)
    np.testing.assert_array_equal(orva.read(tmp_path / "a.tif"), np.where(array, 255, 0))


def test_palettes_have_their_colours(tmp_path, random):
    indices = numbered("YX", np.uint8)
    colours = random.integers(0, 256, (256, 3), dtype=np.uint8)
    picture = Image.fromarray(indices, "P")
    picture.putpalette(colours.tobytes())
    for compression in ("raw", "packbits", "tiff_lzw", "tiff_adobe_deflate"):
        picture.save(tmp_path / "a.tif", compression=compression)
        np.testing.assert_array_equal(orva.read(tmp_path / "a.tif"), orva.luminance(colours[indices]))


@pytest.mark.parametrize("photometric", ["miniswhite", "minisblack"])
@pytest.mark.parametrize("dtype", ["uint8", "uint16", "int32"])
def test_white_may_be_zero(tmp_path, dtype, photometric):
    array = numbered("YX", dtype)
    tifffile.imwrite(tmp_path / "a.tif", array, photometric=photometric, metadata=None)
    for compression in ("packbits", "lzw:2", "zip"):
        path = converted(tmp_path / "a.tif", tmp_path / "b.tif", "-c", compression)
        np.testing.assert_array_equal(
            orva.read(path), np.invert(array) if photometric == "miniswhite" else array)


@pytest.mark.parametrize("compression", [34712, 34933, 50002, 4242])
def test_compressions_without_a_decoder_are_clear_errors(tmp_path, compression):
    tifffile.imwrite(tmp_path / "a.tif", numbered("YX", np.uint8), metadata=None)
    with tifffile.TiffFile(tmp_path / "a.tif", mode="r+b") as file:
        file.pages[0].tags["Compression"].overwrite(compression)
    with pytest.raises(OSError, match=r"a\.tif: .*(ompress|decod)"):
        orva.read(tmp_path / "a.tif")
