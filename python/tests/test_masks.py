"""Erosion, dilation, edges and holes: the operations of scipy.ndimage, or loops."""

import numpy as np
import pytest
import scipy.ndimage

import orva

BOX = np.ones((3, 3), bool)


def as_bytes(mask):
    return mask.astype(np.uint8) * np.uint8(255)


@pytest.fixture(params=[(30, 41), (1, 1, 1, 17, 23)])
def mask(request, random):
    """A plane with objects of many shapes, some at the border."""
    noise = random.normal(size=request.param)
    smooth = scipy.ndimage.gaussian_filter(noise, 1.2)
    result = smooth > np.quantile(smooth, 0.4)
    assert result.any() and not result.all()
    return result


def plane(array):
    return array.reshape(array.shape[-2:])


# What each function does to a plane of truth values.
EXPECTED = {
    orva.erode: lambda m: scipy.ndimage.binary_erosion(m, BOX),
    orva.dilate: lambda m: m | scipy.ndimage.binary_dilation(
        np.pad(m[1:-1, 1:-1], 1), BOX
    ),
    orva.fill_holes: scipy.ndimage.binary_fill_holes,
}


@pytest.mark.parametrize("function", EXPECTED)
def test_of_a_mask_of_either_type(mask, function):
    expected = EXPECTED[function](plane(mask)).reshape(mask.shape)
    assert np.any(expected != mask)
    before = mask.copy()
    result = function(mask)
    assert result.dtype == np.bool_
    np.testing.assert_array_equal(result, expected)
    result = function(as_bytes(mask))
    assert result.dtype == np.uint8
    np.testing.assert_array_equal(result, as_bytes(expected))
    np.testing.assert_array_equal(mask, before)


def test_holes_of_a_volume(random):
    mask = random.random((6, 9, 11)) < 0.7
    expected = scipy.ndimage.binary_fill_holes(mask)
    assert np.any(expected != mask)
    np.testing.assert_array_equal(orva.fill_holes(mask), expected)


def test_many_holes_are_filled_without_a_message(capfd):
    mask = np.ones((400, 400), bool)
    mask[1:-1:2, 1:-1:2] = False
    assert np.sum(~mask) > 32768
    assert orva.fill_holes(mask).all()
    assert capfd.readouterr() == ("", "")


def test_erosion_of_labels_parts_regions_that_touch():
    labels = np.full((12, 20), -1, np.int16)
    labels[2:8, 1:9] = 0
    labels[2:8, 9:16] = 4
    labels[9:, 16:] = 2
    minimum = scipy.ndimage.minimum_filter(labels, 3, mode="constant", cval=-9)
    maximum = scipy.ndimage.maximum_filter(labels, 3, mode="constant", cval=99)
    expected = np.where(minimum == maximum, labels, -1)
    assert set(np.unique(expected)) == {-1, 0, 2, 4}
    result = orva.erode(labels)
    assert result.dtype == np.int16
    np.testing.assert_array_equal(result, expected)


@pytest.mark.parametrize("dtype", [np.bool_, np.uint8, np.int16, np.int32, np.float32])
def test_edge_is_where_two_neighbours_differ(random, dtype):
    image = random.choice([0, 1], (15, 18), p=[0.15, 0.85]).astype(dtype)
    expected = np.zeros(image.shape, bool)
    for y, x in np.ndindex(13, 16):
        different = image[y : y + 3, x : x + 3] != image[y + 1, x + 1]
        expected[y + 1, x + 1] = different.sum() >= 2
    assert 0.1 < expected[1:-1, 1:-1].mean() < 0.9
    result = orva.edge(image)
    assert result.dtype == np.bool_
    np.testing.assert_array_equal(result, expected)


@pytest.mark.parametrize("function", [orva.erode, orva.dilate, orva.edge])
def test_a_stack_is_refused_where_a_plane_is_wanted(function):
    with pytest.raises(ValueError, match="planes"):
        function(np.zeros((2, 5, 5), bool))


@pytest.mark.parametrize("function", EXPECTED)
def test_bytes_that_are_no_mask_are_refused(function):
    for value in (1, 254):
        with pytest.raises(ValueError, match="0 and 255"):
            function(np.full((5, 5), value, np.uint8))


def test_channels_are_refused_where_a_volume_is_wanted():
    with pytest.raises(ValueError, match="channels"):
        orva.fill_holes(np.zeros((2, 1, 5, 5), bool))
