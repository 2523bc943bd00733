"""find_centers() and vote_field(): the command, and a calculation from the votes."""

import numpy as np
import pytest
import scipy.ndimage
from plain_pgm import read_pgm

import orva

# Options of the function, and the command's.
SETTINGS = [
    ({}, []),
    ({"max_radius": 10, "min_radius": 3}, ["--max-radius", 10, "--min-radius", 3]),
    ({"polarity": "dark", "max_radius": 12}, ["--polarity", "dark", "--max-radius", 12]),
    ({"polarity": "both", "cone_width": 4}, ["--polarity", "both", "--cone-width", 4]),
    ({"sigma": 1.5, "gradient": 2.5}, ["--sigma", 1.5, "--gradient", 2.5]),
    ({"relative_gradient": 0.2}, ["--relative-gradient", 0.2]),
    ({"threshold": 3.25}, ["--threshold", 3.25]),
    ({"relative_threshold": 0.6}, ["--relative-threshold", 0.6]),
    ({"edges": True, "power": 1.25}, ["--edges", "--power", 1.25]),
]


def rows_of(table):
    """The command's table as an array like that of find_centers()."""
    rows = [line.split(",") for line in table.splitlines()]
    assert rows[0] == ["x", "y", "weight"]
    fields = [("x", np.int32), ("y", np.int32), ("weight", np.float32)]
    return np.array([(int(x), int(y), np.float32(w)) for x, y, w in rows[1:]], dtype=fields)


@pytest.mark.parametrize("options, arguments", SETTINGS)
def test_centers_are_those_of_the_command(command, sample, options, arguments):
    expected = rows_of(command("vote", *arguments, sample))
    centers = orva.find_centers(read_pgm(sample), **options)
    assert len(expected) > 0
    assert centers.dtype == expected.dtype
    np.testing.assert_array_equal(centers, expected)


@pytest.mark.parametrize("options", [{}, {"max_radius": 8, "relative_threshold": 0.5}])
def test_centers_are_the_centroids_of_strong_votes(sample, options):
    image = read_pgm(sample)
    field = orva.vote_field(image, **options)
    assert (field.dtype, field.shape) == (np.float32, image.shape)
    share = np.float32(options.get("relative_threshold", 0.3))
    regions, n = scipy.ndimage.label(field > share * field.max())
    centers = orva.find_centers(image, **options)
    index = range(1, n + 1)
    centroids = np.floor(scipy.ndimage.center_of_mass(regions > 0, regions, index))
    np.testing.assert_array_equal(np.column_stack([centers["y"], centers["x"]]), centroids)
    np.testing.assert_allclose(
        centers["weight"], scipy.ndimage.mean(field, regions, index), rtol=1e-5
    )


def test_centers_lie_on_discs():
    expected = [(15, 14), (17, 44), (43, 30)]
    y, x = np.mgrid[:60, :64]
    image = np.zeros((60, 64), np.uint8)
    for cy, cx in expected:
        image[(y - cy) ** 2 + (x - cx) ** 2 <= 49] = 200
    for polarity, picture in (("bright", image), ("dark", 255 - image)):
        centers = orva.find_centers(picture, max_radius=10, polarity=polarity)
        found = sorted(zip(centers["y"].tolist(), centers["x"].tolist()))
        assert len(found) == 3
        assert np.abs(np.array(found) - expected).max() <= 1


def test_only_whether_there_is_a_threshold_changes_the_votes(blobs):
    field = orva.vote_field(blobs, relative_threshold=0.3)
    np.testing.assert_array_equal(field, orva.vote_field(blobs, relative_threshold=0.9))
    assert np.any(field != orva.vote_field(blobs, threshold=1.0))


def test_a_frame_of_a_stack_is_that_plane(blobs):
    stack = np.stack([[blobs, blobs[::-1]], [blobs[:, ::-1], 255 - blobs], [blobs * 0, blobs // 2]])
    assert stack.shape == (3, 2, 40, 48)
    for frame, (c, z) in enumerate(np.ndindex(3, 2)):
        plane = np.ascontiguousarray(stack[c, z])
        centers = orva.find_centers(stack, max_radius=8, frame=frame)
        np.testing.assert_array_equal(centers, orva.find_centers(plane, max_radius=8))
        field = orva.vote_field(stack, max_radius=8, frame=frame)
        np.testing.assert_array_equal(field, orva.vote_field(plane, max_radius=8))
    for function in (orva.find_centers, orva.vote_field):
        with pytest.raises(ValueError, match="6 planes; choose one, frame=0"):
            function(stack, max_radius=8)


def test_nothing_is_found_in_an_even_image():
    centers = orva.find_centers(np.full((20, 30), 7, np.uint8))
    assert centers.shape == (0,)
    assert centers.dtype.names == ("x", "y", "weight")


@pytest.mark.parametrize(
    "option, value",
    [
        ("max_radius", 0), ("max_radius", 1001), ("min_radius", 0), ("min_radius", 21),
        ("cone_width", -1), ("cone_width", 1001), ("sigma", 0.09), ("sigma", 1001),
        ("sigma", float("nan")), ("gradient", -1), ("gradient", 4e38), ("relative_gradient", 1.1),
        ("threshold", -0.5), ("relative_threshold", 0.04), ("relative_threshold", 1.5),
        ("polarity", "grey"), ("power", -1), ("power", 101), ("frame", 1), ("frame", -1),
    ],
)
@pytest.mark.parametrize("function", [orva.find_centers, orva.vote_field])
def test_options_out_of_range_are_refused_by_name(blobs, function, option, value):
    with pytest.raises(ValueError, match=option):
        function(blobs, **{option: value})


@pytest.mark.parametrize(
    "option, value",
    [("max_radius", 20.0), ("max_radius", True), ("sigma", "2"), ("polarity", 1), ("edges", 1)],
)
def test_options_of_another_type_are_refused_by_name(blobs, option, value):
    with pytest.raises(TypeError, match=option):
        orva.find_centers(blobs, **{option: value})


def test_options_need_their_names(blobs):
    with pytest.raises(TypeError, match="positional"):
        orva.find_centers(blobs, 20)


@pytest.mark.parametrize("function", [orva.find_centers, orva.vote_field])
def test_an_image_too_long_for_the_radius_is_refused(function):
    assert function(np.zeros((2, 32700), np.uint8)) is not None
    with pytest.raises(ValueError, match="32767"):
        function(np.zeros((2, 32750), np.uint8))
