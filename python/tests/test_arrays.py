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
    "find_objects": (lambda i: orva.find_objects(i, frame=0), GREY, "all"),
    "segment": (lambda i: orva.segment(i, frame=0)[0], GREY, "all"),
    "measure_labels": (
        lambda i: columns(orva.measure_labels(i, GREYS.reshape(i.shape))), WHOLE, "plane"
    ),
    "measure_labels of": (
        lambda i: columns(orva.measure_labels(LINE.reshape(i.shape) + 1, i)), GREY, "plane"
    ),
    "estimate_settings": (lambda i: orva.estimate_settings(i, frame=0).radius, GREY, "all"),
    "find_centers": (lambda i: orva.find_centers(i, max_radius=5, frame=0), GREY, "all"),
    "vote_field": (lambda i: orva.vote_field(i, max_radius=5, frame=0), GREY, "all"),
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


IMAGES = [name for name, (_, types, _) in CALLS.items() if types == GREY]
OTHERS = [name for name in CALLS if name not in IMAGES]


@pytest.mark.parametrize("name", OTHERS)
def test_other_types_are_refused_with_the_names_of_the_accepted_ones(name):
    function, types, _ = CALLS[name]
    whole = [f"{sign}int{bits}" for sign in ("", "u") for bits in (8, 16, 32, 64)]
    every = ["bool", *whole, "float16", "float32", "float64", "complex64", "U1", "O"]
    for dtype in set(every) - set(types):
        with pytest.raises(TypeError, match=", ".join(types)):
            function(np.zeros((36, 40), dtype))


@pytest.mark.parametrize("name, dtype", [p for p in PAIRS if p[0] in OTHERS])
def test_swapped_bytes_of_masks_and_labels_are_refused(name, dtype):
    image = picture(name, dtype)
    if image.dtype.itemsize == 1:
        return
    with pytest.raises(TypeError, match="swapped"):
        CALLS[name][0](image.astype(image.dtype.newbyteorder("S")))


@pytest.mark.parametrize("name", IMAGES)
def test_images_are_of_any_real_type_and_byte_order(name):
    function = CALLS[name][0]
    grey = np.floor(picture(name, "float32") / 2)  # that all types hold
    expected = function(grey)
    whole = [f"{sign}int{bits}" for sign in ("", "u") for bits in (8, 16, 32, 64)]
    for dtype in (*whole, "float16", "float32", "float64", "longdouble"):
        image = grey.astype(dtype)
        np.testing.assert_array_equal(function(image), expected)
        swapped = image.astype(image.dtype.newbyteorder("S"))
        np.testing.assert_array_equal(function(swapped), expected)
    truth = grey > 60
    as_bytes = np.where(truth, 255, 0).astype(np.uint8)
    np.testing.assert_array_equal(function(truth), function(as_bytes))
    for dtype in ("complex64", "U1", "O", "M8[s]"):
        with pytest.raises(TypeError, match="no type of real numbers"):
            function(np.zeros((36, 40), dtype))


@pytest.mark.parametrize("dtype", ["int64", "uint64"])
def test_wide_whole_numbers_are_taken_where_they_fit(dtype):
    image = np.zeros((9, 9), dtype)
    image[4, 4] = 2**32 - 1
    assert orva.threshold(image, 4e9).sum() == 1
    image[4, 4] = 2**32
    with pytest.raises(ValueError, match=r"values from 0 to 4294967296, which no whole numbers of 32"):
        orva.threshold(image, 4e9)
    if dtype == "int64":
        image[4, 4], image[0, 0] = 2**31, -1
        with pytest.raises(ValueError, match="values from -1 to 2147483648"):
            orva.threshold(image, 4e9)


def test_numbers_that_float32_does_not_hold_are_refused():
    image = np.zeros((9, 9))
    image[0, 0] = np.inf
    image[1, 1] = np.nan
    orva.smooth(image, sigma=1)
    image[4, 4] = 1e39
    with pytest.raises(ValueError, match=r"beyond 3\.4e38"):
        orva.smooth(image, sigma=1)


def spots(n=4):
    y, x = np.mgrid[:120, :150]
    image = np.full((120, 150), 20.0)
    for k in range(n):
        image[(x - 30 - 30 * k) ** 2 + (y - 60) ** 2 < 100] = 200
    return image.astype(np.uint8)


def test_colour_is_searched_by_its_luminance():
    grey = spots()
    colour = np.stack([grey // 2, grey, grey // 4], axis=-1)
    expected = orva.find_objects(orva.luminance(colour))
    assert len(expected) == 4
    np.testing.assert_array_equal(orva.find_objects(colour, channel_axis=-1), expected)
    np.testing.assert_array_equal(orva.find_objects(colour, channel_axis=2), expected)
    first = np.moveaxis(colour, -1, 0)
    np.testing.assert_array_equal(orva.find_objects(first, channel_axis=0), expected)
    alpha = np.concatenate([colour, np.full((120, 150, 1), 9, np.uint8)], axis=-1)
    np.testing.assert_array_equal(orva.find_objects(alpha, channel_axis=-1), expected)
    labels, table = orva.segment(colour, channel_axis=-1)
    assert labels.shape == (120, 150) and len(table) == 4
    assert orva.estimate_settings(colour, channel_axis=-1).polarity == "bright"


def test_luminance_is_that_of_a_file_in_colour(tmp_path):
    colour = np.random.default_rng(1).integers(0, 256, (20, 30, 3)).astype(np.uint8)
    (tmp_path / "a.ppm").write_bytes(b"P6\n30 20\n255\n" + colour.tobytes())
    result = orva.luminance(colour)
    assert result.dtype == np.float32
    np.testing.assert_array_equal(result, orva.read(tmp_path / "a.ppm"))


@pytest.mark.parametrize("channels", [3, 4])
def test_colour_without_an_axis_is_refused(channels):
    colour = np.zeros((40, 50, channels), np.uint8)
    for function in (orva.find_objects, orva.segment, lambda i: orva.smooth(i, sigma=1)):
        with pytest.raises(ValueError, match="looks like colour; pass channel_axis=-1"):
            function(colour)
    # A stack of narrow planes is none.
    assert orva.smooth(np.zeros((40, 9, channels), np.uint8), sigma=1).shape == (40, 9, channels)


def test_axes_without_colour_are_refused():
    with pytest.raises(ValueError, match="5 channels along the axis -1"):
        orva.find_objects(np.zeros((40, 50, 5), np.uint8), channel_axis=-1)
    with pytest.raises(ValueError, match="channel_axis must be from -3 to 2"):
        orva.find_objects(np.zeros((40, 50, 3), np.uint8), channel_axis=3)
    with pytest.raises(TypeError, match="channel_axis must be a whole number"):
        orva.find_objects(np.zeros((40, 50, 3), np.uint8), channel_axis="c")


def test_stacks_need_a_frame():
    stack = np.stack([spots(0), spots(4)])
    for function in (
        orva.find_objects, orva.segment, orva.estimate_settings, orva.find_centers, orva.vote_field
    ):
        with pytest.raises(ValueError, match="2 planes; choose one, frame=0, or project them"):
            function(stack)
    assert len(orva.find_objects(stack, frame=1)) == 4
    assert len(orva.find_objects(stack, frame=0)) == 0
    assert len(orva.find_objects(stack[:1])) == 0


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
