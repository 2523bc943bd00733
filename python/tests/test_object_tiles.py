"""Images that are searched tile by tile."""

import dask.array
import numpy as np
import pytest
from conftest import DATA

import orva
from orva._objects import combined, find_settings
from orva.batch import _grid, _object_tiles, find_objects_in_tiles


@pytest.fixture(scope="module")
def mosaic():
    """A plane (780, 1044) of uint8: a sample image with its neighbours turned and mirrored."""
    image = orva.read(DATA / "dsb_large_a.pgm")[::2, ::2]
    pictures = (image, image[:, ::-1], image[::-1], image[::-1, ::-1])
    return np.block([[pictures[(i + j) % 4] for i in range(3)] for j in range(3)])


@pytest.fixture(scope="module")
def frozen(mosaic):
    """The radius and polarity that the tiles of the mosaic have."""
    estimate = _object_tiles.estimate_in_tiles(mosaic, find_settings(), tile=300)
    return {"radius": estimate.radius, "polarity": estimate.polarity}


def share_of_same(found, expected):
    """The share of objects of either table that the other has with the same place and radius."""
    tables = [np.stack([o["x"], o["y"], o["radius"]], axis=1) for o in (found, expected)]
    distance = np.abs(tables[0][:, np.newaxis] - tables[1]).max(axis=2)
    same = distance < 0.05
    assert same.sum(axis=0).max() == same.sum(axis=1).max() == 1
    rows, columns = np.nonzero(same)
    np.testing.assert_allclose(found["score"][rows], expected["score"][columns], atol=0.1)
    return len(rows) / max(len(found), len(expected))


@pytest.mark.parametrize("tile", [300, 411, 2000])
def test_objects_are_those_of_the_whole(mosaic, frozen, tile):
    expected = orva.find_objects(mosaic, **frozen)
    found = find_objects_in_tiles(mosaic, tile=tile, **frozen)
    assert len(expected) > 100
    # Few change with the noise and contrast that a tile has.
    assert share_of_same(found, expected) > 0.98
    assert np.all(np.diff(found["score"]) <= 0)


def test_what_is_not_given_is_estimated_once(mosaic, frozen):
    assert frozen["polarity"] == "bright"
    assert frozen["radius"] == pytest.approx(orva.estimate_settings(mosaic).radius, rel=0.15)
    found, used = _object_tiles.search_in_tiles(mosaic, find_settings(), tile=300)
    np.testing.assert_array_equal(found, find_objects_in_tiles(mosaic, tile=300, **frozen))
    assert (used.radius, used.polarity) == (frozen["radius"], "bright")
    assert 0.5 < used.confidence <= 1
    assert used.runner_up.polarity == "dark"


def test_the_settings_used_are_those_that_are_given(mosaic):
    dark = find_settings(radius=15, polarity="dark")
    _, used = _object_tiles.search_in_tiles(mosaic, dark, tile=411)
    assert (used.radius, used.polarity) == (15, "dark")
    pair = find_settings(radius=(9, 14))
    found, used = _object_tiles.search_in_tiles(mosaic, pair, tile=411)
    assert used.polarity == "bright"
    assert 9 <= used.radius <= 14
    assert len(found) > 50
    assert 9 <= np.median(found["radius"]) <= 14


def test_without_overlap_are_others(mosaic, frozen):
    expected = orva.find_objects(mosaic, **frozen)
    found = find_objects_in_tiles(mosaic, tile=300, overlap=0, **frozen)
    assert share_of_same(found, expected) < 0.9


def test_large_objects_lie_in_several_tiles(frozen):
    y, x = np.mgrid[:500, :620]
    picture = np.random.default_rng(8).normal(20, 3, y.shape)
    for cx, cy in ((150, 150), (400, 200), (310.5, 380)):
        picture += 100 * np.clip(70.5 - np.hypot(x - cx, y - cy), 0, 1)
    found = find_objects_in_tiles(picture.astype(np.float32), tile=64, radius=60, polarity="bright")
    assert sorted(np.round(found["x"])) == pytest.approx([150, 310.5, 400], abs=1)
    np.testing.assert_allclose(found["radius"], 70, atol=1)


def test_objects_too_large_for_the_tiles_are_cut_with_a_warning(mosaic, monkeypatch):
    monkeypatch.setattr(_object_tiles, "MAX_SEEN", 400)
    with pytest.warns(UserWarning, match="too large for the tiles"):
        find_objects_in_tiles(mosaic, tile=300, radius=100, polarity="bright")


def test_take_what_gives_its_parts_as_arrays(mosaic, frozen):
    lazy = dask.array.from_array(mosaic, chunks=128)
    np.testing.assert_array_equal(
        find_objects_in_tiles(lazy, tile=411, **frozen),
        find_objects_in_tiles(mosaic, tile=411, **frozen),
    )


def test_an_image_without_objects_has_none():
    image = np.random.default_rng(3).normal(0, 5, (300, 200)).astype(np.float32)
    for plane in (image, np.zeros((300, 200), np.uint8)):
        found, used = _object_tiles.search_in_tiles(plane, find_settings(), tile=99)
        assert (len(found), used.confidence, used.radius) == (0, 0, 0)
        assert found.dtype == orva.find_objects(plane).dtype


def test_every_object_has_one_owner():
    shape = (50, 70)
    rows = orva.find_objects(np.zeros((20, 20), np.uint8))
    edges = [(-0.4, -0.3), (19.5, 0), (19.49, 20.2), (39.5, 49.4), (69.4, 49.49), (20, 39.5)]
    objects = np.zeros(len(edges), rows.dtype)
    objects["x"], objects["y"] = np.array(edges).T
    owned = [
        tuple(map(float, place))
        for t in _grid.tiles_of(shape, 20, 0)
        for place in _object_tiles._own(shifted(objects, t), t, shape)[["x", "y"]]
    ]
    np.testing.assert_allclose(sorted(owned), sorted(edges), atol=1e-5)


def shifted(objects, tile):
    """As the search in the tile places them."""
    result = objects.copy()
    result["x"] -= tile.seen[2]
    result["y"] -= tile.seen[0]
    return result


def test_the_estimates_of_tiles_are_combined_as_those_of_images(mosaic):
    parts = [orva.estimate_settings(p) for p in (mosaic[:390, :520], mosaic[390:, 520:])]
    both = combined(parts)
    assert both.polarity == "bright"
    assert min(p.radius for p in parts) <= both.radius <= max(p.radius for p in parts)
    assert combined([]).radius == 0


def test_errors(mosaic):
    with pytest.raises(ValueError, match="plane"):
        find_objects_in_tiles(mosaic[np.newaxis])
    with pytest.raises(ValueError, match="tile must be"):
        find_objects_in_tiles(mosaic, tile=0)
    with pytest.raises(ValueError, match="overlap must be"):
        find_objects_in_tiles(mosaic, overlap=-1)
    with pytest.raises(ValueError, match="radius must be"):
        find_objects_in_tiles(mosaic, radius=0)
    with pytest.raises(ValueError, match="min_score must be"):
        find_objects_in_tiles(mosaic, min_score=2)
    with pytest.raises(TypeError, match="complex128"):
        find_objects_in_tiles(mosaic.astype(complex))
    with pytest.raises(TypeError, match="complex128"):
        find_objects_in_tiles(dask.array.from_array(mosaic.astype(complex), chunks=400))
    with pytest.raises(TypeError, match="not list"):
        find_objects_in_tiles([[1, 2], [3, 4]])
    with pytest.raises(ValueError, match="empty"):
        find_objects_in_tiles(mosaic[:0])
