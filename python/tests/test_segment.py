"""segment() and measure_labels(): the command, discs, sums over pixels, and what is refused."""

import io

import numpy as np
import pandas
import pytest
import scipy.ndimage
import tifffile
from plain_pgm import read_pgm

import orva

COLUMNS = {
    "label": np.int32,
    "centroid-0": np.float64,
    "centroid-1": np.float64,
    "area": np.float64,
    "equivalent_diameter_area": np.float64,
    "perimeter": np.float64,
    "eccentricity": np.float64,
    "major_axis_length": np.float64,
    "minor_axis_length": np.float64,
    "orientation": np.float64,
    "solidity": np.float64,
    "mean_intensity": np.float64,
    "min_intensity": np.float64,
    "max_intensity": np.float64,
    "intensity_std": np.float64,
    "bbox-0": np.int32,
    "bbox-1": np.int32,
    "bbox-2": np.int32,
    "bbox-3": np.int32,
    "score": np.float32,
    "touches_border": np.bool_,
}

# Options of the function, and the command's.
SETTINGS = [
    ({}, []),
    ({"radius": (6, 14.5), "min_score": 0.25}, ["--radius", "6:14.5", "--min-score", 0.25]),
    (
        {"min_area": 90, "max_area": 900, "exclude_border": True},
        ["--min-area", 90, "--max-area", 900, "--exclude-border"],
    ),
]


@pytest.fixture
def discs():
    """A plane (150, 190) of uint8 with noise and soft discs, and their rows (x, y, radius).

    The last two touch, the first reaches over the border.
    """
    places = [(3, 75, 13), (30, 30.5, 12), (150, 50, 15), (60, 110, 12), (120, 110.5, 11), (142, 112, 12)]
    y, x = np.mgrid[:150, :190]
    picture = 20 + np.random.default_rng(2).normal(0, 4, y.shape)
    for k, (cx, cy, radius) in enumerate(places):
        shape = np.clip(radius + 0.5 - np.hypot(x - cx, y - cy), 0, 1)
        picture = np.maximum(picture, (100 + 20 * k) * shape)
    return np.clip(picture, 0, 255).astype(np.uint8), np.array(places)


@pytest.fixture
def mosaic(random):
    """Labels (60, 80) with gaps between their numbers, of irregular regions, and an image."""
    seeds = scipy.ndimage.gaussian_filter(random.random((60, 80)), 3)
    labels, n = scipy.ndimage.label(seeds > np.median(seeds))
    assert n > 5
    return 3 * labels.astype(np.int32), random.normal(90, 30, labels.shape).astype(np.float32)


def assert_consistent(labels, table):
    """Whether every row has a label and the reverse, each a connected region without holes."""
    assert (labels.dtype, labels.ndim) == (np.int32, 2)
    np.testing.assert_array_equal(table["label"], np.arange(1, len(table) + 1))
    np.testing.assert_array_equal(np.unique(labels[labels > 0]), table["label"])
    np.testing.assert_array_equal(table["area"], np.bincount(labels.flat, minlength=1)[1:])
    for k in table["label"]:
        assert scipy.ndimage.label(labels == k)[1] == 1
        enclosed = scipy.ndimage.binary_fill_holes(labels == k) & (labels != k)
        assert not np.any(labels[enclosed] == 0)


def assert_without_score(found, expected):
    assert np.all(np.isnan(found["score"]))
    for name in set(COLUMNS) - {"score"}:
        np.testing.assert_array_equal(found[name], expected[name], name)


@pytest.mark.parametrize("options, arguments", SETTINGS)
def test_labels_and_table_are_those_of_the_command(command, sample, tmp_path, options, arguments):
    written = tmp_path / "labels.tif"
    text = command("segment", "--quiet", "--labels", written, *arguments, sample)
    labels, table = orva.segment(read_pgm(sample), **options)
    np.testing.assert_array_equal(labels, tifffile.imread(written))
    expected = pandas.read_csv(io.StringIO(text), float_precision="round_trip")
    assert list(expected.columns) == list(COLUMNS)
    assert len(table) == len(expected) > 0
    for name in COLUMNS:
        # The command writes thousandths of a score.
        tolerance = 0.00051 if name == "score" else 0
        np.testing.assert_allclose(table[name], expected[name], rtol=0, atol=tolerance)
    assert_consistent(labels, table)


def test_the_table_is_one_for_pandas(discs, tmp_path):
    _, table = orva.segment(discs[0])
    assert table.dtype.names == tuple(COLUMNS)
    assert {name: table.dtype[name] for name in COLUMNS} == COLUMNS
    frame = pandas.DataFrame(table)
    assert list(frame.columns) == list(COLUMNS)
    assert len(frame) == len(table) == 6
    np.testing.assert_array_equal(frame["area"], table["area"])
    assert frame["touches_border"].sum() == 1
    larger = table[table["area"] > 400]
    assert 0 < len(larger) < 6
    np.save(tmp_path / "table.npy", larger)
    np.testing.assert_array_equal(np.load(tmp_path / "table.npy")["area"], larger["area"])


@pytest.mark.parametrize("polarity", ["bright", "dark"])
def test_discs_have_their_places_and_areas(discs, polarity):
    image, places = discs
    image = image if polarity == "bright" else 255 - image
    labels, table = orva.segment(image)
    assert_consistent(labels, table)
    objects = orva.find_objects(image)
    np.testing.assert_array_equal(table["score"], objects["score"])
    assert len(table) == len(places)
    for cx, cy, radius in places[1:]:
        row = table[labels[int(cy), int(cx)] - 1]
        assert (row["centroid-1"], row["centroid-0"]) == pytest.approx((cx, cy), abs=0.5)
        assert row["area"] == pytest.approx(np.pi * radius**2, rel=0.08)
        assert not row["touches_border"]
    cut = table[labels[75, 3] - 1]
    assert cut["touches_border"]
    assert cut["bbox-1"] == 0


def test_the_brightness_of_another_channel_is_measured(discs, random):
    image, _ = discs
    other = random.normal(1000, 100, image.shape).astype(np.float32)
    labels, table = orva.segment(image, measure=other)
    expected, plain = orva.segment(image)
    np.testing.assert_array_equal(labels, expected)
    changed = {"mean_intensity", "min_intensity", "max_intensity", "intensity_std"}
    for name in set(COLUMNS) - changed:
        np.testing.assert_array_equal(table[name], plain[name])
    for row in table:
        values = other[labels == row["label"]].astype(float)
        assert (row["min_intensity"], row["max_intensity"]) == (values.min(), values.max())
        assert row["mean_intensity"] == pytest.approx(values.mean(), rel=1e-12)
        assert row["intensity_std"] == pytest.approx(values.std(), rel=1e-12)


def test_objects_may_be_given(discs):
    image, _ = discs
    objects = orva.find_objects(image)
    expected, table = orva.segment(image)
    for polarity in (None, "bright"):
        labels, same = orva.segment(image, objects=objects, polarity=polarity)
        np.testing.assert_array_equal(labels, expected)
        np.testing.assert_array_equal(same, table)
    some = objects[objects["x"] < 100]
    assert 0 < len(some) < len(objects)
    labels, table = orva.segment(image, objects=some)
    assert_consistent(labels, table)
    np.testing.assert_array_equal(table["score"], some["score"])
    assert np.all(table["centroid-1"] < 100)
    dark = orva.segment(255 - image, objects=some)
    assert np.mean(dark[0] != labels) < 0.01


def test_given_objects_may_be_any_table(discs):
    image, _ = discs
    objects = orva.find_objects(image)[::-2]
    expected, table = orva.segment(image, objects=objects)
    assert len(table) == 3
    frame = pandas.DataFrame(objects)
    others = [
        frame,
        frame.to_records(),
        frame.to_dict("list"),
        frame[["score", "radius", "y", "x"]].astype(float),
    ]
    for other in others:
        labels, same = orva.segment(image, objects=other)
        np.testing.assert_array_equal(labels, expected)
        np.testing.assert_array_equal(same, table)


def test_objects_without_support_have_no_label(discs):
    image, _ = discs
    objects = orva.find_objects(image)
    objects["x"][1] = 500  # off the image
    objects["radius"][2] = 5000  # larger than the image
    objects[3] = (100, 20, 9, 0.9, 1)  # background
    labels, table = orva.segment(image, objects=objects, polarity="bright")
    assert_consistent(labels, table)
    np.testing.assert_array_equal(table["score"], objects["score"][[0, 4, 5]])
    labels, table = orva.segment(image, objects=objects[:0])
    assert (len(table), labels.any(), labels.shape) == (0, False, image.shape)


def test_settings_limit_the_regions(discs):
    image, _ = discs
    labels, table = orva.segment(image)
    for options, is_kept in (
        ({"min_area": 450}, table["area"] >= 450),
        ({"max_area": 450.5}, table["area"] <= 450.5),
        ({"min_area": 400, "max_area": 500}, (table["area"] >= 400) & (table["area"] <= 500)),
        ({"exclude_border": True}, ~table["touches_border"]),
        ({"min_area": 1e6}, np.zeros(len(table), bool)),
    ):
        assert not is_kept.all(), options
        fewer, kept = orva.segment(image, **options)
        assert_consistent(fewer, kept)
        np.testing.assert_array_equal(kept["score"], table["score"][is_kept])
        np.testing.assert_array_equal(fewer > 0, np.isin(labels, table["label"][is_kept]))
    assert len(orva.segment(image, min_area=0, max_area=float("inf"))[1]) == len(table)
    assert len(orva.segment(image, radius=60)[1]) == 0
    assert len(orva.segment(image, min_score=1)[1]) == 0


@pytest.mark.parametrize(
    "image",
    [
        np.full((40, 50), 7, np.uint8),
        np.random.default_rng(1).normal(0, 3, (120, 150)).astype(np.float32),
        np.full((30, 40), np.nan, np.float32),
        np.zeros((3, 4), np.int16),
        np.ones((1, 1), np.uint8),
    ],
)
def test_there_are_no_regions_where_there_is_nothing(image):
    labels, table = orva.segment(image)
    assert (labels.shape, labels.dtype, labels.any()) == (image.shape, np.int32, False)
    assert (table.shape, table.dtype.names) == ((0,), tuple(COLUMNS))
    given = np.array([(1, 1, 5, 1, 1)], orva.find_objects(image).dtype)
    assert len(orva.segment(image, objects=given)[1]) == 0


def test_a_frame_of_a_stack_is_that_plane(discs):
    image, _ = discs
    stack = np.stack([[image, image[::-1]], [255 - image, image * 0]])
    other = stack[::-1].astype(np.float32)
    for frame, place in enumerate(np.ndindex(2, 2)):
        labels, table = orva.segment(stack, measure=other, frame=frame)
        expected = orva.segment(stack[place].copy(), measure=other[place].copy())
        np.testing.assert_array_equal(labels, expected[0])
        np.testing.assert_array_equal(table, expected[1])
        assert len(table) == (0 if frame == 3 else 6)


def test_a_pixel_that_is_no_number_counts_as_the_smallest_one(discs):
    image = discs[0].astype(np.float32)
    image[5, 5] = np.nan
    labels, table = orva.segment(image)
    assert len(table) == 6
    assert np.all(np.isfinite(table["mean_intensity"]))
    image[30, 30] = np.nan  # inside a disc
    labels, table = orva.segment(image)
    (k,) = np.flatnonzero(np.isnan(table["mean_intensity"]))
    assert labels[31, 31] == k + 1
    for name in ("min_intensity", "max_intensity", "intensity_std"):
        assert np.isnan(table[name][k])


@pytest.mark.parametrize(
    "option, value",
    [
        ("radius", 0), ("radius", (9, 5)), ("polarity", "both"), ("min_score", 1.1), ("min_area", -1),
        ("min_area", float("nan")), ("min_area", float("inf")), ("max_area", -1),
        ("max_area", float("nan")), ("frame", 1),
        ("measure", np.zeros((48, 40), np.uint8)), ("measure", np.zeros((1, 40, 48), np.uint8)),
        ("measure", np.zeros((40, 48, 3), np.uint8)),
    ],
)
def test_options_out_of_range_are_refused_by_name(blobs, option, value):
    with pytest.raises(ValueError, match=option):
        orva.segment(blobs, **{option: value})


@pytest.mark.parametrize(
    "option, value",
    [
        ("radius", "9"), ("polarity", 1), ("min_score", "1"), ("min_area", "9"), ("min_area", None),
        ("max_area", True), ("exclude_border", 1), ("frame", 1.0), ("measure", [[1]]),
        ("measure", np.zeros((40, 48), complex)), ("objects", [1, 2]), ("objects", np.zeros((3, 4))),
        ("objects", "x"), ("objects", {"x": [1], "y": [1], "score": [1]}),
        ("objects", {"x": ["a"], "y": [1], "radius": [5], "score": [1]}),
    ],
)
def test_options_of_another_type_are_refused_by_name(blobs, option, value):
    with pytest.raises(TypeError, match=option):
        orva.segment(blobs, **{option: value})


def test_what_contradicts_itself_is_refused(blobs):
    with pytest.raises(ValueError, match=r"max_area must be from 50\.0"):
        orva.segment(blobs, min_area=50, max_area=49)
    objects = orva.find_objects(blobs)
    for option, value in (("radius", 9), ("min_score", 0.5)):
        with pytest.raises(ValueError, match=f"{option} belongs to the search"):
            orva.segment(blobs, objects=objects, **{option: value})
    for value in (0, -3):
        with pytest.raises(ValueError, match="a radius that is not above 0"):
            orva.segment(blobs, objects={"x": [9], "y": [9], "radius": [value], "score": [1]})
    with pytest.raises(TypeError, match="with numbers in a column x"):
        orva.segment(blobs, objects={"x": [10**400], "y": [1], "radius": [5], "score": [1]})
    with pytest.raises(ValueError, match="same length"):
        orva.segment(blobs, objects={"x": [1, 2], "y": [1], "radius": [5], "score": [1]})
    for name in ("x", "y", "radius"):
        for value in (np.nan, np.inf, 1e300):
            columns = {"x": [9], "y": [9], "radius": [5], "score": [1], name: [value]}
            with pytest.raises(ValueError, match=f"a {name} that is not a finite number"):
                orva.segment(blobs, objects=columns)


def test_arrays_of_colours_are_refused():
    with pytest.raises(ValueError, match="looks like colour; pass channel_axis=-1"):
        orva.segment(np.zeros((40, 50, 3), np.uint8))


def test_measures_are_sums_over_the_pixels(mosaic):
    labels, image = mosaic
    table = orva.measure_labels(labels, image)
    np.testing.assert_array_equal(table["label"], np.unique(labels)[1:])
    assert np.all(np.isnan(table["score"]))
    for row in table:
        places = np.argwhere(labels == row["label"])
        values = image[labels == row["label"]].astype(float)
        assert row["area"] == len(places)
        np.testing.assert_allclose(
            [row["centroid-0"], row["centroid-1"]], places.mean(axis=0), rtol=1e-14
        )
        box = [*places.min(axis=0), *(places.max(axis=0) + 1)]
        assert [row[f"bbox-{k}"] for k in range(4)] == box
        at_border = np.any((places == 0) | (places == np.array(labels.shape) - 1))
        assert row["touches_border"] == at_border
        assert (row["min_intensity"], row["max_intensity"]) == (values.min(), values.max())
        assert row["mean_intensity"] == pytest.approx(values.mean(), rel=1e-12)
        assert row["intensity_std"] == pytest.approx(values.std(), rel=1e-12)
        if len(places) > 1:
            variances = np.linalg.eigvalsh(np.cov(places.T, ddof=0))
            axes = row["minor_axis_length"], row["major_axis_length"]
            np.testing.assert_allclose(axes, 4 * np.sqrt(variances), rtol=1e-6, atol=1e-6)


def test_the_table_of_labels_is_that_of_their_segmentation(sample):
    image = read_pgm(sample)
    labels, table = orva.segment(image)
    assert_without_score(orva.measure_labels(labels, image), table)
    kept = labels.copy()
    kept[kept == 2] = 0
    assert_without_score(orva.measure_labels(kept, image), table[table["label"] != 2])


@pytest.mark.parametrize("dtype", ["uint8", "int16", "uint16", "uint32", "int64", "uint64"])
def test_labels_may_have_any_integer_type(mosaic, dtype):
    labels, image = mosaic
    frozen = labels.astype(dtype)
    frozen.flags.writeable = False
    assert_without_score(orva.measure_labels(frozen, image), orva.measure_labels(labels, image))


def test_labels_may_have_any_number():
    labels = np.zeros((5, 6), np.int64)
    labels[0, 0] = 2**31 - 1
    labels[2:4, 2] = 70_000
    table = orva.measure_labels(labels, np.ones(labels.shape, np.uint8))
    assert [*table["label"]] == [70_000, 2**31 - 1]
    assert [*table["area"]] == [2, 1]
    many = np.arange(300 * 300, dtype=np.int32).reshape(300, 300)
    np.testing.assert_array_equal(orva.measure_labels(many, many)["mean_intensity"], many.flat[1:])
    assert len(orva.measure_labels(labels[:1, 1:], np.ones((1, 5), np.uint8))) == 0


def test_what_are_no_labels_is_refused():
    image = np.zeros((4, 5), np.uint8)
    labels = np.zeros((4, 5), np.int32)
    for dtype in ("float32", "bool"):
        with pytest.raises(TypeError, match="labels has the dtype"):
            orva.measure_labels(labels.astype(dtype), image)
    with pytest.raises(ValueError, match="labels has the value -1"):
        orva.measure_labels(labels - 1, image)
    with pytest.raises(ValueError, match="labels has the value 2147483648"):
        orva.measure_labels(labels + np.int64(2**31), image)
    with pytest.raises(ValueError, match=r"shape \(4, 5\), labels have \(5, 4\)"):
        orva.measure_labels(labels.T, image)
    with pytest.raises(ValueError, match="labels has 2 planes"):
        orva.measure_labels(np.stack([labels] * 2), np.stack([image] * 2))
    with pytest.raises(TypeError, match="complex128"):
        orva.measure_labels(labels, image.astype(complex))
    with pytest.raises(TypeError, match=r"numpy\.ndarray"):
        orva.measure_labels(labels.tolist(), image)


@pytest.mark.parametrize("extension", [".tif", ".png"])
def test_labels_survive_in_files(sample, tmp_path, extension):
    labels, _ = orva.segment(read_pgm(sample))
    path = tmp_path / f"labels{extension}"
    orva.write(path, labels)
    np.testing.assert_array_equal(orva.read(path), labels)
    if extension == ".tif":
        written = tifffile.imread(path)
        assert written.dtype == np.int32
        np.testing.assert_array_equal(written, labels)
        tifffile.imwrite(path, labels.astype(np.uint16), compression="zlib")
        np.testing.assert_array_equal(orva.read(path), labels)


def test_measures_are_those_of_scikit_image(mosaic, sample):
    skimage = pytest.importorskip("skimage.measure")
    image = read_pgm(sample)
    for labels, brightness in (mosaic, (orva.segment(image)[0], image)):
        table = orva.measure_labels(labels, brightness)
        table = table[table["area"] > 20]
        names = [name for name in COLUMNS if name[:4] not in ("scor", "touc", "inte", "cent", "bbox")]
        theirs = skimage.regionprops_table(
            np.where(np.isin(labels, table["label"]), labels, 0),
            brightness.astype(float),
            properties=("centroid", "bbox", *names),
        )
        assert len(table) == len(theirs["label"]) > 3
        exact = {"label", "area", "min_intensity", "max_intensity"}
        exact |= {name for name in COLUMNS if name.startswith("bbox")}
        for name in theirs:
            tolerance = 0 if name in exact else 1e-6
            np.testing.assert_allclose(table[name], theirs[name], rtol=tolerance, atol=tolerance)


def test_labels_travel_to_scikit_image_and_back(discs):
    pytest.importorskip("skimage")
    import skimage.measure
    import skimage.segmentation

    image, _ = discs
    labels, table = orva.segment(image)
    cleared = skimage.segmentation.clear_border(labels)
    dense, _, _ = skimage.segmentation.relabel_sequential(cleared)
    expected = table[~table["touches_border"]]
    np.testing.assert_array_equal(orva.measure_labels(cleared, image)["label"], expected["label"])
    np.testing.assert_array_equal(orva.measure_labels(dense, image)["area"], expected["area"])
    components = skimage.measure.label(labels > 0, connectivity=1)
    ours, n = orva.label(labels > 0, background=0)
    np.testing.assert_array_equal(ours, components)
    assert n == components.max() == 5  # two discs touch
