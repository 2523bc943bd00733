"""Images that are voted on tile by tile."""

import dask.array
import numpy as np
import pytest

import orva
from orva.batch import _tiles, find_centers_in_tiles


@pytest.fixture(scope="module")
def discs():
    """A plane (420, 500) of uint8 with some bright discs on noise."""
    random = np.random.default_rng(3)
    y, x = np.mgrid[:420, :500]
    picture = random.uniform(0, 20, y.shape)
    for _ in range(70):
        cy, cx = random.uniform(0, 420), random.uniform(0, 500)
        picture += 150 * (np.hypot(y - cy, x - cx) < random.uniform(4, 9))
    return np.clip(picture, 0, 255).astype(np.uint8)


def ordered(centers):
    return centers[np.lexsort((centers["x"], centers["y"]))]


ABSOLUTE = {"gradient": 8.0, "threshold": 30.0}


@pytest.mark.parametrize(
    "settings",
    [{"max_radius": 10}, {"max_radius": 12, "polarity": "both"}, {"max_radius": 9, "edges": True}],
)
@pytest.mark.parametrize("tile", [90, 137, 1000])
def test_with_absolute_thresholds_are_exactly_those_of_the_whole(discs, settings, tile):
    expected = ordered(orva.find_centers(discs, **settings, **ABSOLUTE))
    assert len(expected) > 30
    found = find_centers_in_tiles(discs, tile=tile, **settings, **ABSOLUTE)
    np.testing.assert_array_equal(found, expected)


@pytest.fixture(scope="module")
def bar():
    """A plane (300, 1000) of uint8 with a bar across several tiles."""
    picture = np.zeros((300, 1000), np.uint8)
    picture[140:146, 70:930] = 200
    return picture


@pytest.mark.parametrize("threshold", [1.0, 5.0])
def test_regions_longer_than_a_tile_are_those_of_the_whole(bar, threshold):
    settings = {"max_radius": 10, "gradient": 8.0, "threshold": threshold}
    expected = ordered(orva.find_centers(bar, **settings))
    labels, _ = orva.label(orva.vote_field(bar, **settings) > np.float32(threshold))
    boxes = orva.measure(labels)
    assert (boxes["xmax"] - boxes["xmin"]).max() > 800
    np.testing.assert_array_equal(find_centers_in_tiles(bar, tile=200, **settings), expected)


def test_regions_longer_than_what_a_tile_may_see_are_cut_with_a_warning(bar, monkeypatch):
    monkeypatch.setattr(_tiles, "MAX_SEEN", 700)
    settings = {"max_radius": 10, "gradient": 8.0, "threshold": 1.0}
    with pytest.warns(UserWarning, match="is cut"):
        assert len(find_centers_in_tiles(bar, tile=200, **settings)) > 0


def test_without_overlap_are_others(discs):
    expected = ordered(orva.find_centers(discs, max_radius=10, **ABSOLUTE))
    found = find_centers_in_tiles(discs, tile=90, overlap=0, max_radius=10, **ABSOLUTE)
    assert not np.array_equal(found, expected)


def test_with_relative_thresholds_are_at_the_same_places_with_nearly_the_same_votes(discs):
    expected = ordered(orva.find_centers(discs, max_radius=10))
    found = find_centers_in_tiles(discs, tile=137, max_radius=10)
    np.testing.assert_array_equal(found[["x", "y"]], expected[["x", "y"]])
    # Sums of some thousand votes, each a few roundings apart.
    np.testing.assert_allclose(found["weight"], expected["weight"], rtol=1e-4)


def test_relative_thresholds_are_shares_of_the_whole_image_in_empty_tiles_too(discs):
    wide = np.zeros((420, 1500), np.uint8)
    wide[:, :500] = discs
    wide[:, 500:] = np.random.default_rng(4).integers(0, 3, (420, 1000))
    found = find_centers_in_tiles(wide, tile=200, max_radius=10)
    assert len(found) > 30
    assert found["x"].max() < 520


def test_take_what_gives_its_parts_as_arrays(discs):
    lazy = dask.array.from_array(discs, chunks=128)
    np.testing.assert_array_equal(
        find_centers_in_tiles(lazy, tile=137, max_radius=10, **ABSOLUTE),
        find_centers_in_tiles(discs, tile=137, max_radius=10, **ABSOLUTE),
    )


def test_an_image_of_one_colour_has_no_centers():
    assert len(find_centers_in_tiles(np.full((300, 200), 7, np.uint8), tile=99, max_radius=10)) == 0


@pytest.mark.parametrize("power", [25, 50, 100])
def test_high_powers_are_no_more_than_votes_can_be(discs, power):
    expected = orva.find_centers(discs, max_radius=10, power=power)
    found = find_centers_in_tiles(discs, tile=137, max_radius=10, power=power)
    # Few gradients vote then, and the center of the strongest is where it was.
    assert 0 < len(found) < 10
    first, other = (c[np.argmax(c["weight"])] for c in (expected, found))
    assert np.hypot(first["x"] - other["x"], first["y"] - other["y"]) < 3


@pytest.mark.parametrize("value", [np.nan, np.inf, -np.inf, 3e38])
@pytest.mark.parametrize("thresholds", [{}, {"gradient": 8.0}, {"threshold": 30.0}])
def test_pixels_that_are_no_numbers_are_as_in_the_whole(discs, value, thresholds):
    odd = discs.astype(np.float32)
    odd[200:203, 250] = value
    expected = ordered(orva.find_centers(odd, max_radius=10, **thresholds))
    assert (len(expected) > 30) == np.isnan(value)
    found = find_centers_in_tiles(odd, tile=137, max_radius=10, **thresholds)
    np.testing.assert_array_equal(found[["x", "y"]], expected[["x", "y"]])


def test_radii_larger_than_a_tile(discs):
    part = np.ascontiguousarray(discs[:60, :70])
    settings = {"max_radius": 1000, "cone_width": 20, "threshold": 30.0, "gradient": 8.0}
    np.testing.assert_array_equal(
        find_centers_in_tiles(part, tile=50, **settings),
        ordered(orva.find_centers(part, **settings)),
    )


def test_errors(discs):
    with pytest.raises(ValueError, match="plane"):
        find_centers_in_tiles(discs[np.newaxis], max_radius=10)
    with pytest.raises(ValueError, match="tile must be"):
        find_centers_in_tiles(discs, tile=0)
    with pytest.raises(ValueError, match="max_radius must be"):
        find_centers_in_tiles(discs, max_radius=0, **ABSOLUTE)
    with pytest.raises(TypeError, match="complex128"):
        find_centers_in_tiles(discs.astype(complex), max_radius=10)
    with pytest.raises(TypeError, match="frame"):
        find_centers_in_tiles(discs, max_radius=10, frames=0)
    with pytest.raises(TypeError, match="MaskedArray"):
        find_centers_in_tiles(np.ma.masked_greater(discs, 99), max_radius=10)
    with pytest.raises(TypeError, match="not list"):
        find_centers_in_tiles([[1, 2], [3, 4]], max_radius=10)
    with pytest.raises(ValueError, match="empty"):
        find_centers_in_tiles(discs[:0], max_radius=10)
