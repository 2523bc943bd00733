"""What all functions hold of arrays: types, axes, strides, and what is refused."""

import numpy as np
import pytest

import orva

GREY = ("uint8", "int16", "int32", "uint32", "float32")
MASKS = ("bool", "uint8")
LABELS = ("int16",)
WHOLE = ("int8", "uint8", "int16", "uint16", "int32", "uint32", "int64", "uint64")



def columns(table):
    """The columns of a structured array as rows."""
    return np.array([table[name] for name in table.dtype.names], float)


# A call of each function, the types it takes and the axes: planes, volumes or all.
CALLS = {
    "find_objects": (orva.find_objects, GREY, "all"),
    "segment": (lambda i: orva.segment(i)[0], GREY, "all"),
    "measure_labels": (
        lambda i: columns(orva.measure_labels(i, GREYS.reshape(i.shape))), WHOLE, "plane"
    ),
    "measure_labels of": (
        lambda i: columns(orva.measure_labels(LINE.reshape(i.shape) + 1, i)), GREY, "plane"
    ),
    "estimate_settings": (lambda i: orva.estimate_settings(i).radius, GREY, "all"),
    "find_centers": (lambda i: orva.find_centers(i, max_radius=5), GREY, "all"),
    "vote_field": (lambda i: orva.vote_field(i, max_radius=5), GREY, "all"),
    "gaussian": (lambda i: orva.gaussian(i, sigma=1), GREY, "all"),
    "smooth": (lambda i: orva.smooth(i, sigma=1), GREY, "all"),
    "gradient": (lambda i: orva.gradient(i, sigma=1), GREY, "all"),
    "laplacian": (lambda i: orva.laplacian(i, sigma=1), GREY, "all"),
    "features": (lambda i: orva.features(i, sigma=1, kind="hessian_maximum"), GREY, "all"),
    "threshold": (lambda i: orva.threshold(i, 9), GREY, "all"),
    "compute_threshold": (orva.compute_threshold, GREY, "all"),
    "label": (lambda i: orva.label(i)[0], MASKS, "volume"),
    "measure": (lambda i: orva.measure(i)["npix"], LABELS, "volume"),
    "measure from 1": (lambda i: orva.measure(i, background=0)["npix"], WHOLE, "volume"),
    "measure of": (lambda i: orva.measure(LINE.reshape(i.shape), i)["mean"], GREY, "volume"),
    "chamfer": (orva.chamfer, MASKS + LABELS, "volume"),
    "propagate": (lambda i: orva.propagate(i, max_distance=3), LABELS, "volume"),
    "convex_hull": (orva.convex_hull, MASKS + LABELS, "volume"),
    "fill_holes": (orva.fill_holes, MASKS, "volume"),
    "erode": (orva.erode, MASKS + LABELS, "plane"),
    "dilate": (orva.dilate, MASKS, "plane"),
    "edge": (orva.edge, ("bool", "uint8", "int16", "int32", "float32"), "plane"),
}
LINE = (np.arange(1440) % 7 - 1).astype(np.int16)
GREYS = (np.arange(1440) % 251).astype(np.uint8)
SHAPES = {
    "plane": [(36, 40), (1, 36, 40), (1, 1, 36, 40), (1, 1, 1, 36, 40)],
    "volume": [(36, 40), (6, 12, 20), (1, 6, 12, 20), (1, 1, 6, 12, 20)],
    "all": [(36, 40), (6, 12, 20), (2, 3, 12, 20), (2, 3, 2, 12, 10)],
}
# Those whose results have no axes.
FLAT = (
    "find_objects", "measure_labels", "measure_labels of", "estimate_settings", "find_centers",
    "compute_threshold", "measure", "measure from 1", "measure of",
)
PAIRS = [(name, dtype) for name, (_, types, _) in CALLS.items() for dtype in types]


def picture(name, dtype, shape=(36, 40)):
    """Whatever the function takes: grey, a mask or labels."""
    y, x = np.mgrid[:36, :40]
    spots = np.sin(x / 3.0) * np.cos(y / 4.0)
    _, types, _ = CALLS[name]
    if dtype in ("bool", "uint8") and "bool" in types:
        result = np.where(spots > 0.1, 255, 0)
    elif types in (LABELS, MASKS + LABELS):
        result = np.floor(spots * 2)
    elif types == WHOLE:
        result = np.maximum(np.floor(spots * 4), 0)
    else:
        result = 100 + 100 * spots
    return result.astype(dtype).reshape(shape)


@pytest.mark.parametrize("name, dtype", PAIRS)
def test_results_have_the_axes_of_the_input(name, dtype):
    function, _, kind = CALLS[name]
    for shape in SHAPES[kind]:
        result = function(picture(name, dtype, shape))
        if name in ("vote_field", "segment"):
            assert result.shape == shape[-2:]
        elif name not in FLAT:
            assert result.shape == shape


@pytest.mark.parametrize("name, dtype", PAIRS)
def test_the_way_an_array_lies_in_memory_does_not_matter(name, dtype):
    function, _, kind = CALLS[name]
    image = picture(name, dtype, SHAPES[kind][1])
    before = image.copy()
    expected = function(image)
    np.testing.assert_array_equal(image, before)  # and it is left alone
    wide = np.repeat(image, 2, axis=-1)
    others = [
        np.asfortranarray(image),
        wide[..., ::2],
        image[..., ::-1].copy()[..., ::-1],
    ]
    frozen = image.copy()
    frozen.flags.writeable = False
    # At an odd address.
    odd = np.zeros(image.nbytes + 1, np.uint8)[1:].view(image.dtype).reshape(image.shape)
    odd[...] = image
    for other in [*others, frozen, odd]:
        np.testing.assert_array_equal(function(other), expected)
    assert not any(other.flags.c_contiguous for other in others)


@pytest.mark.parametrize("name", CALLS)
def test_other_types_are_refused_with_the_names_of_the_accepted_ones(name):
    function, types, _ = CALLS[name]
    whole = [f"{sign}int{bits}" for sign in ("", "u") for bits in (8, 16, 32, 64)]
    every = ["bool", *whole, "float16", "float32", "float64", "complex64", "U1", "O"]
    for dtype in set(every) - set(types):
        with pytest.raises(TypeError, match=", ".join(types)) as caught:
            function(np.zeros((36, 40), dtype))
        if dtype == "float64" and types == GREY:
            assert "image.astype(numpy.float32)" in str(caught.value)


@pytest.mark.parametrize("name, dtype", [p for p in PAIRS if np.dtype(p[1]).itemsize > 1])
def test_swapped_bytes_are_refused(name, dtype):
    image = picture(name, dtype)
    with pytest.raises(TypeError, match="swapped"):
        CALLS[name][0](image.astype(image.dtype.newbyteorder("S")))


@pytest.mark.parametrize("name", CALLS)
def test_what_is_no_array_is_refused(name):
    function, types, _ = CALLS[name]
    image = np.zeros((36, 40), types[0])
    function(image)
    for other in (np.ma.masked_array(image), memoryview(image)):
        with pytest.raises(TypeError, match=r"numpy.ndarray"):
            function(other)


@pytest.mark.parametrize("name", CALLS)
def test_sizes_and_axes_that_no_image_has_are_refused(name):
    function, types, _ = CALLS[name]
    plane = np.zeros((4, 4), np.int16)
    function = {
        "measure_labels": lambda i: orva.measure_labels(i, plane),
        "measure_labels of": lambda i: orva.measure_labels(plane, i),
        "measure of": lambda i: orva.measure(plane, i),
    }.get(name, function)
    for shape in ((), (5,), (1, 1, 1, 1, 4, 4)):
        with pytest.raises(ValueError, match="axes"):
            function(np.zeros(shape, types[0]))
    for shape in ((0, 5), (5, 0), (0, 5, 5)):
        with pytest.raises(ValueError, match="empty"):
            function(np.zeros(shape, types[0]))
    with pytest.raises(ValueError, match="2147483648 pixels"):
        function(np.broadcast_to(np.zeros((), types[0]), (2**15, 2**16)))


@pytest.mark.filterwarnings("ignore::PendingDeprecationWarning")
@pytest.mark.parametrize("name, dtype", PAIRS)
def test_a_matrix_which_cannot_have_other_axes_is_an_array(name, dtype):
    function = CALLS[name][0]
    array = picture(name, dtype)
    np.testing.assert_array_equal(function(np.matrix(array)), function(array))


def test_results_own_their_pixels():
    image = picture("smooth", "float32")
    one = orva.smooth(image, sigma=1)
    kept = one.copy()
    two = orva.smooth(image, sigma=1)
    two[...] = 0
    image[...] = 0
    np.testing.assert_array_equal(one, kept)
    assert one.flags.writeable and one.flags.c_contiguous


def test_wide_values_are_not_cut():
    image = np.full((9, 9), 3_000_000_000, np.uint32)
    image[4, 4] = 4_000_000_000
    np.testing.assert_array_equal(orva.threshold(image, 3.5e9), image > 3_500_000_000)
    image = np.full((9, 9), -70_000, np.int32)
    assert orva.gaussian(image, sigma=1)[4, 4] == pytest.approx(-70_000, rel=1e-3)
