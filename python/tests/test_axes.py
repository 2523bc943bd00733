"""Axes, calibration and pixel types of TIFF files that tifffile writes, and back."""

import copy
import itertools

import numpy as np
import PIL.Image
import pytest
import tifffile

import orva

# What an image keeps the samples in.
HELD = {
    "uint8": "uint8",
    "int8": "int16",
    "uint16": "int32",
    "int16": "int16",
    "uint32": "uint32",
    "int32": "int32",
    "float32": "float32",
}
ORDERS = ["".join(order) for order in itertools.permutations("TCZ")]
REFUSED = ("float16", "float64", "int64", "uint64", "complex64")
SIZES = {"T": 2, "C": 3, "Z": 4, "Y": 18, "X": 33}
LAYOUTS = [
    {},
    {"rowsperstrip": 5},
    {"tile": (16, 16)},
    {"compression": "zlib"},
    {"compression": "zlib", "predictor": True},
    {"tile": (16, 32), "compression": "zlib"},
    {"bigtiff": True},
]


def numbered(axes, dtype):
    """An array with these axes, all of whose samples differ as far as the type allows."""
    shape = [SIZES.get(axis, 3) for axis in axes]
    values = np.arange(np.prod(shape)).reshape(shape) * 7 - (30 if np.dtype(dtype).kind != "u" else 0)
    return values.astype(dtype)


def in_order(array, axes):
    """With the axes (T, C, Z, Y, X), as far as there are such, as orva.read() returns them."""
    order = [axis for axis in "TCZYX" if axis in axes]
    return np.transpose(array, [axes.index(axis) for axis in order]), tuple(a.lower() for a in order)


def assert_reads(path, expected, axes):
    image = orva.read(path)
    array, names = in_order(expected, axes)
    assert image.axes == names
    assert image.dtype == HELD[expected.dtype.name]
    np.testing.assert_array_equal(image, array)


@pytest.mark.parametrize("order", ORDERS)
@pytest.mark.parametrize("dtype", HELD)
def test_ome_of_every_order_and_type(tmp_path, order, dtype):
    axes = order + "YX"
    array = numbered(axes, dtype)
    for k, (layout, byteorder) in enumerate(itertools.product(LAYOUTS, "<>")):
        if layout.get("predictor") and np.dtype(dtype).kind == "f":
            continue  # tifffile writes none without imagecodecs; test_compressions.py has them
        path = tmp_path / f"{k}.ome.tif"
        tifffile.imwrite(path, array, byteorder=byteorder, photometric="minisblack",
                         metadata={"axes": axes}, **layout)
        assert_reads(path, array, axes)


@pytest.mark.parametrize("axes", ["TZCYX", "ZCYX", "TCYX", "TZYX", "CYX", "ZYX", "TYX", "YX"])
@pytest.mark.parametrize("dtype", ["uint8", "uint16", "float32"])
def test_imagej_hyperstacks(tmp_path, axes, dtype):
    array = numbered(axes, dtype)
    for k, (layout, byteorder) in enumerate(itertools.product(LAYOUTS, "<>")):
        if "bigtiff" in layout or (layout.get("predictor") and dtype == "float32"):
            continue
        path = tmp_path / f"{k}.tif"
        tifffile.imwrite(path, array, byteorder=byteorder, imagej=True, metadata={"axes": axes}, **layout)
        assert_reads(path, array, axes)


@pytest.mark.parametrize("dtype", HELD)
def test_plain_pages_have_no_known_meaning(tmp_path, dtype):
    array = numbered("ZYX", dtype)
    for k, (layout, byteorder) in enumerate(itertools.product(LAYOUTS, "<>")):
        if layout.get("predictor") and np.dtype(dtype).kind == "f":
            continue
        path = tmp_path / f"{k}.tif"
        with tifffile.TiffWriter(path, byteorder=byteorder, bigtiff=layout.get("bigtiff", False)) as out:
            options = {key: value for key, value in layout.items() if key != "bigtiff"}
            for plane in array:
                out.write(plane, photometric="minisblack", metadata=None, contiguous=False, **options)
        image = orva.read(path)
        assert image.axes == ("page", "y", "x")
        np.testing.assert_array_equal(image, array)
        for option in ("channel", "z", "time"):
            np.testing.assert_array_equal(orva.read(path, **{option: 2}), array[2])
        np.testing.assert_array_equal(orva.read(path, frame=3), array[3])


@pytest.mark.parametrize("kind, dtype", [
    *(("plain", dtype) for dtype in REFUSED), ("ome", "float64"), ("ome", "complex64")])
def test_other_types_are_clear_errors(tmp_path, kind, dtype):
    path = tmp_path / ("a.ome.tif" if kind == "ome" else "a.tif")
    tifffile.imwrite(path, numbered("ZYX", dtype), photometric="minisblack",
                     metadata={"axes": "ZYX"} if kind == "ome" else None)
    with pytest.raises(OSError, match=r"a(\.ome)?\.tif: is a TIFF file of "):
        orva.read(path)


@pytest.mark.parametrize("dtype", ["uint8", "uint16"])
@pytest.mark.parametrize("planar", ["contig", "separate"])
@pytest.mark.parametrize("axes", ["YXS", "ZYXS", "TZYXS"])
def test_colour_becomes_luminance(tmp_path, dtype, planar, axes):
    stored = axes if planar == "contig" else axes.replace("YXS", "SYX")
    array = numbered(axes, dtype)
    moved = array if planar == "contig" else np.moveaxis(array, -1, -3)
    for kind in ("ome", "plain"):
        if kind == "plain" and axes != "YXS":
            continue
        path = tmp_path / ("a.ome.tif" if kind == "ome" else "a.tif")
        tifffile.imwrite(path, moved, photometric="rgb", planarconfig=planar,
                         metadata={"axes": stored} if kind == "ome" else None)
        image = orva.read(path)
        assert image.axes == tuple(axes[:-1].lower())
        np.testing.assert_array_equal(image, orva.luminance(array))


@pytest.mark.parametrize("planar", ["contig", "separate"])
@pytest.mark.parametrize("order", ORDERS)
@pytest.mark.parametrize("dtype", ["uint8", "uint16"])
def test_colour_of_every_order(tmp_path, order, dtype, planar):
    """Several channels, each in colour."""
    axes = order + "YXS"
    array = numbered(axes, dtype)
    grey, names = in_order(orva.luminance(array), order + "YX")
    stored = array if planar == "contig" else np.moveaxis(array, -1, -3)
    for k, (layout, byteorder) in enumerate(itertools.product(LAYOUTS, "<>")):
        path = tmp_path / f"{k}.ome.tif"
        metadata = {"axes": axes if planar == "contig" else order + "SYX"}
        tifffile.imwrite(path, stored, byteorder=byteorder, photometric="rgb", planarconfig=planar,
                         metadata=metadata, **layout)
        image = orva.read(path)
        assert image.axes == names
        np.testing.assert_array_equal(image, grey)


@pytest.mark.parametrize("axes", ["TZCYXS", "ZYXS", "YXS"])
def test_colour_of_imagej(tmp_path, axes):
    array = numbered(axes, "uint8")
    for byteorder in "<>":
        tifffile.imwrite(tmp_path / "a.tif", array, byteorder=byteorder, imagej=True, metadata={"axes": axes})
        grey, names = in_order(orva.luminance(array), axes[:-1])
        image = orva.read(tmp_path / "a.tif")
        assert image.axes == names
        np.testing.assert_array_equal(image, grey)


@pytest.mark.parametrize("kind, dtype", [
    *(("plain", dtype) for dtype in (*HELD, *REFUSED)),
    *(("ome", dtype) for dtype in (*HELD, "float64", "complex64"))])
def test_colour_of_any_type_is_read_or_refused(tmp_path, kind, dtype):
    array = numbered("YXS", dtype)
    path = tmp_path / ("a.ome.tif" if kind == "ome" else "a.tif")
    tifffile.imwrite(path, array, photometric="rgb", metadata={"axes": "YXS"} if kind == "ome" else None)
    if dtype in REFUSED:
        with pytest.raises(OSError, match=r"a(\.ome)?\.tif: is a TIFF file of "):
            orva.read(path)
    else:
        np.testing.assert_array_equal(orva.read(path), orva.luminance(array))


def test_channels_in_one_page_are_refused(tmp_path):
    """Several samples per pixel that are no colour."""
    for planar in ("contig", "separate"):
        shape = (18, 33, 5) if planar == "contig" else (5, 18, 33)
        tifffile.imwrite(tmp_path / "a.tif", np.zeros(shape, np.uint8), photometric="minisblack",
                         planarconfig=planar, metadata=None)
        with pytest.raises(OSError, match=r"a\.tif: is a TIFF file with 5 samples per pixel"):
            orva.read(tmp_path / "a.tif")


def test_calibration_and_channel_names(tmp_path):
    array = numbered("CZYX", "uint16")
    tifffile.imwrite(tmp_path / "a.ome.tif", array, photometric="minisblack", metadata={
        "axes": "CZYX", "Channel": {"Name": ["DAPI", "GFP", "a & b"]},
        "PhysicalSizeX": 250, "PhysicalSizeXUnit": "nm",
        "PhysicalSizeY": 0.25, "PhysicalSizeYUnit": "µm",
        "PhysicalSizeZ": 0.001, "PhysicalSizeZUnit": "mm"})
    image = orva.read(tmp_path / "a.ome.tif")
    assert image.channel_names == ("DAPI", "GFP", "a & b")
    assert image.pixel_size == pytest.approx({"x": 0.25, "y": 0.25, "z": 1.0})
    gfp = orva.read(tmp_path / "a.ome.tif", channel="GFP", z="max")
    np.testing.assert_array_equal(gfp, array[1].max(axis=0))
    assert (gfp.axes, gfp.channel_names) == (("y", "x"), ("GFP",))
    mean = orva.read(tmp_path / "a.ome.tif", channel=2, z="mean")
    np.testing.assert_allclose(mean, array[2].mean(axis=0), rtol=1e-6)
    with pytest.raises(OSError, match=r'has no channel "RFP"; there are 0 "DAPI", 1 "GFP", 2 "a & b"'):
        orva.read(tmp_path / "a.ome.tif", channel="RFP")

    tifffile.imwrite(tmp_path / "b.tif", array[0], imagej=True, resolution=(4, 2),
                     metadata={"axes": "ZYX", "unit": "micron", "spacing": 3})
    image = orva.read(tmp_path / "b.tif")
    assert image.pixel_size == pytest.approx({"x": 0.25, "y": 0.5, "z": 3})

    for unit, factor in (("INCH", 25400), ("CENTIMETER", 10000)):
        tifffile.imwrite(tmp_path / "c.tif", array[0, 0], resolution=(20000, 20000, unit), metadata=None)
        assert orva.read(tmp_path / "c.tif").pixel_size == pytest.approx(
            {"x": factor / 20000, "y": factor / 20000})
        tifffile.imwrite(tmp_path / "d.tif", array[0, 0], resolution=(72, 72, unit), metadata=None)
        assert orva.read(tmp_path / "d.tif").pixel_size == {}


def test_the_estimate_is_in_micrometres_too(tmp_path):
    y, x = np.mgrid[:120, :160]
    discs = np.where(np.hypot(x % 40 - 20, y % 40 - 20) < 9, 200, 20).astype(np.uint8)
    assert orva.estimate_settings(discs).radius_um is None
    image = discs.view(orva.Image)
    square = {"x": 0.5, "y": 0.5, "z": 2}
    for sizes, size in (({}, None), ({"x": 0.5}, None), (square, 0.5), ({"x": 1, "y": 2}, None)):
        image.pixel_size = sizes
        estimate = orva.estimate_settings(image)
        assert estimate.radius == pytest.approx(9, abs=1)
        assert estimate.radius_um == (None if size is None else size * estimate.radius)


def test_a_plane_is_read_without_the_others(tmp_path):
    """Of which one is damaged."""
    array = numbered("CZYX", "uint16")
    path = tmp_path / "a.ome.tif"
    tifffile.imwrite(path, array, photometric="minisblack", compression="zlib", metadata={"axes": "CZYX"})
    with tifffile.TiffFile(path) as file:
        start, length = file.pages[1].dataoffsets[0], file.pages[1].databytecounts[0]
    content = bytearray(path.read_bytes())
    content[start : start + length] = bytes(length)
    path.write_bytes(content)
    for c, z in itertools.product(range(3), range(4)):
        if (c, z) != (0, 1):
            np.testing.assert_array_equal(orva.read(path, channel=c, z=z), array[c, z])
    for options in ({"channel": 0, "z": 1}, {"channel": 0, "z": "max"}, {}):
        with pytest.raises(OSError, match="damaged"):
            orva.read(path, **options)


@pytest.mark.parametrize(
    "operation", [lambda i: i[0], lambda i: i + 1, lambda i: i.copy(), lambda i: i.T, copy.deepcopy]
)
def test_results_of_operations_know_nothing(tmp_path, operation):
    tifffile.imwrite(tmp_path / "a.ome.tif", numbered("CYX", "uint16"), photometric="minisblack",
                     metadata={"axes": "CYX", "PhysicalSizeX": 0.5, "PhysicalSizeY": 0.5})
    image = orva.read(tmp_path / "a.ome.tif", channel=0)
    assert (image.axes, image.pixel_size, image.file_type) == (("y", "x"), {"x": 0.5, "y": 0.5}, "uint16")
    result = operation(image)
    assert isinstance(result, orva.Image)
    assert (result.axes, result.pixel_size, result.channel_names, result.file_type) == (
        None, {}, None, None)


@pytest.mark.parametrize("options", [{}, {"frame": 0}])
def test_sixteen_bits_are_written_as_they_were_read(tmp_path, options):
    array = np.array([[0, 65535, 300], [4, 5, 6]], "uint16")
    tifffile.imwrite(tmp_path / "a.ome.tif", array, metadata={
        "axes": "YX", "PhysicalSizeX": 0.25, "PhysicalSizeY": 0.25})
    image = orva.read(tmp_path / "a.ome.tif", **options)
    assert image.pixel_size == {"x": 0.25, "y": 0.25}
    orva.write(tmp_path / "b.ome.tif", image)
    written = tifffile.imread(tmp_path / "b.ome.tif")
    assert written.dtype == "uint16"
    np.testing.assert_array_equal(written, array)
    assert orva.read(tmp_path / "b.ome.tif").pixel_size == {"x": 0.25, "y": 0.25}
    image[0, 0] = -1  # no longer what the file has
    orva.write(tmp_path / "c.tif", image)
    assert tifffile.imread(tmp_path / "c.tif").dtype == "int32"


@pytest.mark.parametrize("attribute, value, error", [
    ("pixel_size", (0.5, 0.5), TypeError),
    ("pixel_size", {"x": 0}, ValueError),
    ("pixel_size", {"x": -1.0}, ValueError),
    ("pixel_size", {"x": float("nan")}, ValueError),
    ("pixel_size", {"x": "1"}, TypeError),
    ("axes", ("y", "y", "x"), ValueError),
    ("axes", (1, "y", "x"), TypeError),
    ("channel_names", ("a",), ValueError),
    ("channel_names", (1, 2, 3), TypeError),
])
def test_wrong_descriptions_are_not_written(tmp_path, attribute, value, error):
    tifffile.imwrite(tmp_path / "a.ome.tif", numbered("CYX", "uint8"), photometric="minisblack",
                     metadata={"axes": "CYX"})
    image = orva.read(tmp_path / "a.ome.tif", channel=None)
    setattr(image, attribute, value)
    with pytest.raises(error, match=r"size|axis|names"):
        orva.write(tmp_path / "b.ome.tif", image)
    assert not (tmp_path / "b.ome.tif").exists()


@pytest.mark.parametrize("dtype", ["uint8", "uint16"])
@pytest.mark.parametrize("name", ["a.tif", "a.png"])
def test_colour_is_read_with_an_axis(tmp_path, dtype, name):
    array = np.arange(4 * 5 * 3).reshape(4, 5, 3).astype(dtype) * (1 if dtype == "uint8" else 900)
    orva.write(tmp_path / name, array, channel_axis=-1)
    for options in ({}, {"frame": 0}):
        image = orva.read(tmp_path / name, channel_axis=-1, **options)
        assert (image.dtype, image.axes) == (dtype, ("y", "x", "rgb"))
        np.testing.assert_array_equal(image, array)
        first = orva.read(tmp_path / name, channel_axis=0, **options)
        assert first.axes == ("rgb", "y", "x")
        np.testing.assert_array_equal(first, np.moveaxis(array, -1, 0))
        grey = orva.read(tmp_path / name, **options)
        np.testing.assert_array_equal(grey, orva.luminance(image))
    with pytest.raises(ValueError, match="channel_axis"):
        orva.read(tmp_path / name, channel_axis=3)


def test_grey_has_no_axis_of_colour(tmp_path):
    orva.write(tmp_path / "a.tif", np.zeros((4, 5), np.uint8))
    with pytest.raises(OSError, match="holds no colour of 8 or 16 bits"):
        orva.read(tmp_path / "a.tif", channel_axis=-1)


def test_colour_is_written_with_the_size_of_a_pixel(tmp_path):
    image = np.zeros((4, 5, 3), np.uint8).view(orva.Image)
    image.pixel_size = {"x": 0.5, "y": 0.5}
    orva.write(tmp_path / "a.ome.tif", image, channel_axis=-1)
    assert orva.read(tmp_path / "a.ome.tif").pixel_size == {"x": 0.5, "y": 0.5}
    with pytest.raises(ValueError, match="axes"):
        orva.write(tmp_path / "b.tif", np.zeros((1, 1, 1, 1, 2, 2, 3), np.uint8), channel_axis=-1)


@pytest.mark.parametrize("name", ["a.ome.tif", "a.tif"])
def test_what_is_read_is_written_as_it_was(tmp_path, name):
    array = numbered("TCZYX", "uint16")
    tifffile.imwrite(tmp_path / "in.ome.tif", array, photometric="minisblack", metadata={
        "axes": "TCZYX", "Channel": {"Name": ["x", "y", "z"]}, "PhysicalSizeX": 0.5,
        "PhysicalSizeY": 0.5, "PhysicalSizeZ": 2.0})
    image = orva.read(tmp_path / "in.ome.tif")
    orva.write(tmp_path / name, image)
    again = orva.read(tmp_path / name)
    np.testing.assert_array_equal(again, image)
    assert again.axes == image.axes
    assert again.pixel_size == pytest.approx(image.pixel_size)
    if name.endswith(".ome.tif"):
        assert again.channel_names == ("x", "y", "z")
    with tifffile.TiffFile(tmp_path / name) as file:
        series = file.series[0]
        assert (file.is_ome, file.is_imagej) == (".ome." in name, ".ome." not in name)
        assert set(series.axes) == set("TCZYX")
        order = [series.axes.index(a) for a in "TCZYX"]
        np.testing.assert_array_equal(np.transpose(series.asarray(), order), array)


def test_unsigned_16_bits_stay(tmp_path):
    for plane in (numbered("YX", "uint16") * 90, numbered("YX", "uint16") % 256):
        for name in ("a.tif", "a.png"):
            orva.write(tmp_path / name, plane)
            np.testing.assert_array_equal(orva.read(tmp_path / name), plane)
        assert tifffile.imread(tmp_path / "a.tif").dtype == np.uint16
        with PIL.Image.open(tmp_path / "a.png") as picture:
            assert picture.mode == "I"  # of 8 bits it would be L


@pytest.mark.parametrize("dtype", ["uint8", "uint16"])
def test_colour_is_written(tmp_path, dtype):
    colour = numbered("YXS", dtype)
    orva.write(tmp_path / "a.tif", colour, channel_axis=-1)
    np.testing.assert_array_equal(tifffile.imread(tmp_path / "a.tif"), colour)
    orva.write(tmp_path / "a.png", np.moveaxis(colour, -1, 0), channel_axis=0)
    np.testing.assert_array_equal(orva.read(tmp_path / "a.png"), orva.luminance(colour))
    with pytest.raises(ValueError, match="does not hold colour"):
        orva.write(tmp_path / "a.pgm", colour, channel_axis=-1)
    with pytest.raises(TypeError, match="colour is written of uint8 and uint16"):
        orva.write(tmp_path / "a.tif", colour.astype(float), channel_axis=-1)


@pytest.mark.parametrize("option, value, error", [
    ("channel", -1, ValueError), ("channel", 1.5, TypeError), ("z", "min", ValueError),
    ("time", "max", ValueError), ("level", -1, ValueError), ("series", "a", TypeError),
])
def test_wrong_options_are_refused(tmp_path, option, value, error):
    tifffile.imwrite(tmp_path / "a.tif", np.zeros((5, 6), np.uint8))
    with pytest.raises(error, match=option):
        orva.read(tmp_path / "a.tif", **{option: value})
    with pytest.raises(ValueError, match="frame is given"):
        orva.read(tmp_path / "a.tif", frame=0, z=0)


def test_smaller_levels(tmp_path, command):
    full = numbered("YX", "uint8")
    with tifffile.TiffWriter(tmp_path / "a.ome.tif") as out:
        out.write(full, subifds=1, metadata={"axes": "YX"})
        out.write(full[::2, ::2], subfiletype=1)
    np.testing.assert_array_equal(orva.read(tmp_path / "a.ome.tif"), full)
    np.testing.assert_array_equal(orva.read(tmp_path / "a.ome.tif", level=1), full[::2, ::2])
    with tifffile.TiffWriter(tmp_path / "b.ome.tif") as out:
        out.write(full, subifds=1, metadata={"axes": "YX", "PhysicalSizeX": 0.5, "PhysicalSizeY": 0.5})
        out.write(full[::2, ::2], subfiletype=1)
    assert orva.read(tmp_path / "b.ome.tif").pixel_size == {"x": 0.5, "y": 0.5}
    smaller = orva.read(tmp_path / "b.ome.tif", level=1)
    assert smaller.pixel_size == pytest.approx({"x": 33 / 17 / 2, "y": 1.0})
    command("convert", "--level", 1, tmp_path / "b.ome.tif", tmp_path / "c.tif")
    assert orva.read(tmp_path / "c.tif").pixel_size == pytest.approx(smaller.pixel_size)
    with pytest.raises(OSError, match="has no level 2; there are 0 to 1"):
        orva.read(tmp_path / "a.ome.tif", level=2)
