"""Labels, measurements, distances and hulls: graphs, sums and searches over all pixels."""

import itertools

import numpy as np
import pandas
import pytest
import scipy.sparse.csgraph
from plain_pgm import read_pgm

import orva

SHAPES = [(14, 17), (5, 7, 9), (1, 1, 4, 6, 7)]


def offsets(axes, connectivity, reach):
    for step in itertools.product(range(-reach, reach + 1), repeat=axes):
        if connectivity == 8 or (np.count_nonzero(step) == 1 and reach in np.abs(step)):
            yield step


def numbered(image, takes_part, connectivity, reach):
    """The connected components, in the order of their first pixels; -1 elsewhere."""
    places = {p: i for i, p in enumerate(zip(*np.nonzero(takes_part)))}
    pairs = []
    for place, i in places.items():
        for step in offsets(image.ndim, connectivity, reach):
            j = places.get(tuple(np.add(place, step)))
            if j is not None and image[place] == image[list(places)[j]]:
                pairs.append((i, j))
    rows, columns = np.array(pairs).reshape(-1, 2).T
    graph = scipy.sparse.coo_matrix((np.ones(len(pairs)), (rows, columns)), (len(places),) * 2)
    n, parts = scipy.sparse.csgraph.connected_components(graph, directed=False)
    order = np.argsort(np.unique(parts, return_index=True)[1])
    result = np.full(image.shape, -1, np.int16)
    result[takes_part] = np.argsort(order)[parts]
    return result, n


@pytest.mark.parametrize("shape", SHAPES)
@pytest.mark.parametrize("connectivity, reach", [(4, 1), (8, 1), (8, 2)])
def test_label(random, shape, connectivity, reach):
    mask = random.random(shape) < {(4, 1): 0.45, (8, 1): 0.12, (8, 2): 0.03}[connectivity, reach]
    expected, n = numbered(mask, mask, connectivity, reach)
    assert n > 1
    options = {"connectivity": connectivity, "reach": reach}
    for array in (mask, mask.astype(np.uint8) * np.uint8(255)):
        labels, count = orva.label(array, **options)
        assert (count, labels.dtype) == (n, np.int16)
        np.testing.assert_array_equal(labels, expected)


def test_along_the_axes_a_reach_is_a_distance():
    mask = np.zeros((9, 11), bool)
    mask[4, 3] = mask[4, 5] = mask[4, 6] = mask[6, 6] = True
    expected, n = numbered(mask, mask, 4, 2)
    assert n == 2
    labels, count = orva.label(mask, reach=2)
    assert count == 2
    np.testing.assert_array_equal(labels, expected)


def test_truth_has_no_value_to_label():
    with pytest.raises(TypeError, match="uint8"):
        orva.label(np.ones((3, 3), bool), value=1)


@pytest.mark.parametrize("value", [-1, 0, 7, 200])
def test_label_of_a_value(random, value):
    image = random.choice(np.array([0, 7, 200], np.uint8), (14, 17))
    takes_part = image == value if value >= 0 else np.ones(image.shape, bool)
    expected, n = numbered(image, takes_part, 4, 1)
    labels, count = orva.label(image, value=value)
    assert count == n > 3
    np.testing.assert_array_equal(labels, expected)


def dots(n):
    """A mask of n regions of one pixel."""
    mask = np.zeros((400, 400), bool)
    mask[::2, ::2].flat[:n] = True
    assert mask.sum() == n
    return mask


def test_regions_run_out_with_an_error_and_no_message(capfd):
    labels, n = orva.label(dots(32768))
    assert (n, labels.max()) == (32768, 32767)
    for function in (orva.label, orva.convex_hull):
        with pytest.raises(ValueError, match="32768"):
            function(dots(32769))
    assert capfd.readouterr() == ("", "")


@pytest.mark.parametrize(
    "option, value", [("value", 256), ("value", -2), ("connectivity", 6), ("reach", 0)]
)
def test_options_of_label_out_of_range_are_refused(option, value):
    with pytest.raises(ValueError, match=option):
        orva.label(np.zeros((4, 4), np.uint8), **{option: value})


@pytest.mark.parametrize("shape", [(20, 25), (6, 8, 9)])
def test_measure(random, shape):
    labels, n = orva.label(random.random(shape) < 0.35)
    labels[labels == 2] = -1  # a label without pixels
    image = random.normal(100, 30, shape).astype(np.float32)
    table = orva.measure(labels, image)
    assert list(table) == [
        "xmin", "xmax", "ymin", "ymax", "zmin", "zmax", "cx", "cy", "cz", "radius", "npix", "mean",
        "var",
    ]
    assert len(pandas.DataFrame(table)) == n > 5
    for k in range(n):
        row = {name: column[k] for name, column in table.items()}
        places = np.argwhere(labels == k)
        if k == 2:
            assert not any(row.values())
            continue
        for axis, letter in zip(range(-1, -1 - len(shape), -1), "xyz"):
            assert row[letter + "min"] == places[:, axis].min()
            assert row[letter + "max"] == places[:, axis].max()
            assert row["c" + letter] == np.floor(places[:, axis].mean())
        count = len(places)
        radius = np.sqrt(count / np.pi) if len(shape) == 2 else np.cbrt(count * 0.75 / np.pi)
        assert (row["npix"], row["radius"]) == (count, max(1, int(radius)))
        values = image[labels == k].astype(float)
        assert row["mean"] == pytest.approx(values.mean(), rel=1e-5)
        if count > 1:
            assert row["var"] == pytest.approx(values.var(ddof=1), rel=1e-3)
    without = orva.measure(labels)
    assert list(without) == list(table)[:-2]
    for name, column in without.items():
        assert column.dtype == np.int32
        np.testing.assert_array_equal(column, table[name])


def test_the_table_is_that_of_the_command(command, sample, tmp_path):
    written = tmp_path / "regions.csv"
    command("measure", "--fill", "--table", written, sample)
    expected = pandas.read_csv(written, dtype={"mean": np.float32, "var": np.float32})
    image = read_pgm(sample)
    mask = orva.fill_holes(orva.threshold(image, orva.compute_threshold(image)))
    table = pandas.DataFrame(orva.measure(orva.label(mask)[0], image))
    assert len(table) == len(expected) > 0
    pandas.testing.assert_frame_equal(table, expected, check_dtype=False, check_exact=True)


def test_labels_and_image_must_have_one_shape():
    with pytest.raises(ValueError, match="shape"):
        orva.measure(np.zeros((4, 5), np.int16), np.zeros((5, 4), np.uint8))
    assert orva.measure(np.full((4, 5), -1, np.int16))["npix"].size == 0


@pytest.mark.parametrize("shape", SHAPES)
def test_labels_with_background_0_are_one_higher(random, shape):
    mask = random.random(shape) < 0.4
    labels, n = orva.label(mask, connectivity=8)
    wide, count = orva.label(mask, connectivity=8, background=0)
    assert (count, wide.dtype, labels.dtype) == (n, np.int32, np.int16)
    np.testing.assert_array_equal(wide, labels.astype(int) + 1)
    same, _ = orva.label(mask, connectivity=8, background=-1)
    assert same.dtype == np.int16
    np.testing.assert_array_equal(same, labels)
    assert orva.label(np.zeros(shape, bool), background=0)[0].max() == 0


def test_labels_with_background_0_reach_to_the_last_region():
    labels, n = orva.label(dots(32768), background=0)
    assert (n, labels.max()) == (32768, 32768)
    with pytest.raises(ValueError, match="32768"):
        orva.label(dots(32769), background=0)


@pytest.mark.parametrize("dtype", ["uint8", "int16", "uint16", "int32", "uint32", "int64", "uint64"])
@pytest.mark.parametrize("shape", [(20, 25), (6, 8, 9)])
def test_measure_of_labels_with_background_0(random, shape, dtype):
    labels, n = orva.label(random.random(shape) < 0.35)
    labels[labels == 2] = -1  # a label without pixels
    image = random.normal(100, 30, shape).astype(np.float32)
    for arguments in ((), (image,)):
        expected = orva.measure(labels, *arguments)
        table = orva.measure((labels + 1).astype(dtype), *arguments, background=0)
        assert list(table) == list(expected)
        assert len(table["npix"]) == n
        for name, column in expected.items():
            assert table[name].dtype == column.dtype
            np.testing.assert_array_equal(table[name], column)


@pytest.mark.parametrize("missing", [(), (32768, 40_000), range(32_000, 70_000)])
def test_measure_of_more_labels_than_fit_16_bits(missing):
    labels = np.arange(270 * 270).reshape(270, 270)
    labels[np.isin(labels, missing)] = 0
    table = orva.measure(labels, labels.astype(np.int32), background=0)
    numbers = np.arange(1, 270 * 270)
    is_there = np.isin(numbers, labels)
    np.testing.assert_array_equal(table["npix"], is_there)
    np.testing.assert_array_equal(table["mean"], np.where(is_there, numbers, 0))


def test_what_are_no_labels_with_background_0_is_refused():
    labels = np.zeros((4, 5), np.int32)
    assert orva.measure(labels, background=0)["npix"].size == 0
    with pytest.raises(ValueError, match="labels has the value -1; labels are from 1"):
        orva.measure(labels - 1, background=0)
    with pytest.raises(ValueError, match=r"labels has the value 16777217; .* measure_labels\(\)"):
        orva.measure(labels + 2**24 + 1, background=0)
    with pytest.raises(TypeError, match="labels has the dtype float32"):
        orva.measure(labels.astype(np.float32), background=0)
    with pytest.raises(ValueError, match="shape"):
        orva.measure(labels, np.zeros((5, 4), np.uint8), background=0)
    for function in (lambda **o: orva.label(labels > 0, **o), lambda **o: orva.measure(labels, **o)):
        with pytest.raises(ValueError, match="background must be from -1 to 0"):
            function(background=1)
        with pytest.raises(TypeError, match="background"):
            function(background=None)


def steps_between(a, b):
    """The length of the shortest way on the grid, by steps of 1, sqrt(2) and sqrt(3)."""
    far = np.sort(np.abs(a[:, None] - b[None]), axis=-1)[..., ::-1]
    lengths = np.sqrt(np.arange(1, far.shape[-1] + 1))
    longer = np.diff(np.concatenate([far, np.zeros_like(far[..., :1])], axis=-1), axis=-1)
    return (-longer * lengths).sum(axis=-1)


def off_the_border(random, shape, share):
    inner = random.random([s - 4 for s in shape]) < share
    return np.pad(inner, 2)


@pytest.mark.parametrize("shape", [(24, 31), (9, 11, 12)])
def test_chamfer_of_a_mask(random, shape):
    mask = off_the_border(random, shape, 0.93)
    expected = np.zeros(shape)
    expected[mask] = steps_between(np.argwhere(mask), np.argwhere(~mask)).min(axis=1)
    assert expected.max() > 1.5
    for array in (mask, mask.astype(np.uint8)):
        result = orva.chamfer(array)
        assert (result.dtype, result.shape) == (np.float32, shape)
        np.testing.assert_allclose(result, expected, rtol=1e-5)


def test_chamfer_of_labels_counts_from_their_boundaries():
    labels = np.full((20, 30), -1, np.int16)
    labels[3:16, 2:14] = 0
    labels[3:16, 14:27] = 3
    around = [np.roll(labels, step, (0, 1)) for step in offsets(2, 8, 1)]
    boundary = (labels >= 0) & np.any(np.array(around) != labels, axis=0)
    inside = (labels >= 0) & ~boundary
    expected = boundary.astype(float)
    expected[inside] = 1 + steps_between(np.argwhere(inside), np.argwhere(boundary)).min(axis=1)
    np.testing.assert_allclose(orva.chamfer(labels), expected, rtol=1e-5)


# In a volume two passes find the shortest way over small distances only.
@pytest.mark.parametrize("shape, n, max_distance", [((30, 37), 6, 7.5), ((9, 12, 14), 20, 1.9)])
def test_propagate_gives_the_label_of_the_nearest_region(random, shape, n, max_distance):
    labels = np.full(shape, -1, np.int16)
    seeds = random.permutation(np.argwhere(np.pad(np.ones([s - 4 for s in shape]), 2)))[:n]
    labels[tuple(seeds.T)] = np.arange(n)
    before = labels.copy()
    result = orva.propagate(labels, max_distance=max_distance)
    assert (result.dtype, result.shape) == (np.int16, shape)
    np.testing.assert_array_equal(labels, before)
    inner = np.argwhere(np.pad(np.ones([s - 2 for s in shape], bool), 1))
    distances = np.array(
        [steps_between(inner, np.argwhere(labels == k)).min(axis=1) for k in range(n)]
    )
    nearest = np.sort(distances, axis=0)
    clear = (nearest[1] - nearest[0] > 1e-3) & (np.abs(nearest[0] - max_distance) > 1e-3)
    expected = np.where(nearest[0] < max_distance, distances.argmin(axis=0), -1)
    assert clear.mean() > 0.7 and set(expected[clear]) == {-1, *range(n)}
    np.testing.assert_array_equal(result[tuple(inner.T)][clear], expected[clear])
    border = np.ones(shape, bool)
    border[tuple(inner.T)] = False
    assert np.all(result[border] == -1)


@pytest.mark.parametrize("distance", [0, -1, 10001, float("nan")])
def test_distances_out_of_range_are_refused(distance):
    with pytest.raises(ValueError, match="max_distance"):
        orva.propagate(np.zeros((5, 5), np.int16), max_distance=distance)


@pytest.mark.parametrize("options", [{"precision": 4}, {}, {"precision": 50}])
def test_convex_hull_of_a_plane(options, capfd):
    mask = np.zeros((40, 50), bool)
    mask[5:30, 8:11] = mask[27:30, 8:35] = mask[15:18, 8:20] = True  # an angular letter
    mask[35:38, 40:47] = True
    angles = np.arange(options.get("precision", 20)) * np.pi / options.get("precision", 20)
    directions = np.stack([np.sin(angles), np.cos(angles)])
    letter = np.argwhere(mask & (np.indices(mask.shape)[0] < 33)) @ directions
    every = np.argwhere(np.ones_like(mask)) @ directions
    # How far a pixel lies outside in the worst direction.
    beyond = np.maximum(letter.min(0) - every, every - letter.max(0)).max(1).reshape(mask.shape)
    labels = orva.convex_hull(mask, **options)
    assert labels.dtype == np.int16
    assert np.all((labels == 0)[beyond < -1e-3])
    assert not np.any((labels == 0)[beyond > 1e-3])
    assert np.sum((labels == 0) & ~mask) > 100
    assert np.array_equal(labels == 1, mask & (np.indices(mask.shape)[0] > 33))
    np.testing.assert_array_equal(orva.convex_hull(orva.label(mask)[0], **options), labels)
    assert capfd.readouterr() == ("", "")


def test_convex_hull_of_a_volume():
    labels = np.full((9, 9, 9), -1, np.int16)
    for axis in range(3):  # three rods through the center
        place = [4, 4, 4]
        place[axis] = slice(1, 8)
        labels[tuple(place)] = 0
    inside = np.abs(np.indices(labels.shape) - 4).sum(axis=0)
    result = orva.convex_hull(labels, precision=8)
    # The octahedron of their ends; on its faces rounding decides.
    assert np.all(result[inside < 3] == 0)
    assert np.all(result[inside > 3] == -1)


@pytest.mark.parametrize("precision", [2, 51])
def test_precisions_out_of_range_are_refused(precision):
    with pytest.raises(ValueError, match="precision"):
        orva.convex_hull(np.zeros((5, 5), bool), precision=precision)


@pytest.mark.parametrize(
    "function",
    [
        orva.label,
        orva.chamfer,
        orva.convex_hull,
        lambda a: orva.measure(a.astype(np.int16)),
        lambda a: orva.propagate(a.astype(np.int16), max_distance=3),
    ],
)
def test_channels_and_time_points_are_refused(function):
    for shape in ((2, 1, 5, 5), (2, 1, 1, 5, 5)):
        with pytest.raises(ValueError, match="channels"):
            function(np.zeros(shape, bool))


@pytest.mark.parametrize("function", [orva.label, orva.convex_hull])
def test_bytes_that_are_no_mask_are_refused(function):
    with pytest.raises(ValueError, match=r"(mask|image) != 0"):
        function(np.ones((5, 5), np.uint8))
