"""The filters, features and thresholds: sums with sampled Gaussians, in double precision."""

import numpy as np
import pytest
import scipy.ndimage
from numpy.polynomial import hermite_e
from plain_pgm import read_pgm

import orva

SHAPES = [(40, 48), (7, 20, 24), (2, 3, 20, 24), (2, 2, 2, 12, 14)]


def taps(sigma, order=0):
    """The derivative of the Gaussian at whole numbers, out to four sigmas."""
    radius = int(4 * sigma) if 4 * sigma >= 3 else 2
    x = np.arange(-radius, radius + 1)
    gauss = np.exp(-(x**2) / (2 * sigma**2)) / (np.sqrt(2 * np.pi) * sigma)
    polynomial = hermite_e.hermeval(x / sigma, [0] * order + [1])
    return (-1 / sigma) ** order * polynomial * gauss


def as_stack(image):
    return image.reshape(-1, *image.shape[-2:]).astype(float)


def derivative(image, sigmas, orders):
    """Sigmas and orders in the order (z, y, x)."""
    result = as_stack(image)
    for axis, (sigma, order) in enumerate(zip(sigmas, orders)):
        if result.shape[axis] > 1:
            kernel = taps(sigma, order)
            result = scipy.ndimage.convolve1d(result, kernel, axis, mode="nearest")
    return result.reshape(image.shape)


def smoothed(image, sigmas):
    """The taps outside are dropped and the others scaled up, as if all of them summed to 1."""
    result = as_stack(image)
    for axis, sigma in enumerate(sigmas):
        if result.shape[axis] > 1:
            kernel = taps(sigma)
            inside = scipy.ndimage.convolve1d(
                np.ones_like(result), kernel, axis, mode="constant"
            )
            sums = scipy.ndimage.convolve1d(result, kernel, axis, mode="constant")
            result = sums / (1 - (kernel.sum() - inside))
    return result.reshape(image.shape)


def assert_close(result, expected):
    assert result.dtype == np.float32
    assert result.shape == expected.shape
    assert np.ptp(expected) > 0
    np.testing.assert_allclose(result, expected, rtol=1e-4, atol=1e-5 * np.abs(expected).max())


@pytest.fixture(params=SHAPES)
def picture(request, random):
    return random.integers(0, 256, request.param, dtype=np.uint8)


@pytest.mark.parametrize("sigma", [0.6, 1.0, 2.3])
@pytest.mark.parametrize("order", [0, 1, 2, 3])
def test_gaussian_with_one_sigma_and_order(picture, sigma, order):
    result = orva.gaussian(picture, sigma=sigma, orders=order)
    assert_close(result, derivative(picture, [sigma] * 3, [order] * 3))


@pytest.mark.parametrize("orders", [(1, 0, 0), (0, 1, 0), (0, 0, 1), (0, 1, 2)])
def test_gaussian_takes_sigmas_and_orders_in_the_order_of_axes(picture, orders):
    sigmas = (0.8, 1.4, 2.0)
    if picture.ndim == 2:
        result = orva.gaussian(picture, sigma=sigmas[1:], orders=orders[1:])
    else:
        result = orva.gaussian(picture, sigma=sigmas, orders=orders)
    assert_close(result, derivative(picture, sigmas, orders))


def test_a_first_derivative_is_positive_where_brightness_grows():
    rising = np.arange(30, dtype=np.int16) * np.ones((20, 1), np.int16)
    assert np.all(orva.gaussian(rising, sigma=1, orders=(0, 1)) > 0)
    assert np.all(orva.gaussian(rising.T, sigma=1, orders=(1, 0)) > 0)


def test_smooth(picture):
    assert_close(orva.smooth(picture, sigma=1.7), smoothed(picture, [1.7] * 3))
    sigmas = (0.8, 1.4, 2.0)[-min(picture.ndim, 3) :]
    assert_close(orva.smooth(picture, sigma=sigmas), smoothed(picture, (0.8, 1.4, 2.0)))


def test_gradient(picture):
    squares = 0
    for orders in ((0, 0, 1), (0, 1, 0)):
        squares = squares + derivative(picture, [1.5] * 3, orders) ** 2
    if picture.ndim > 2:
        squares = squares + derivative(picture, [1.5 / 1.25] * 3, (1, 0, 0)) ** 2
    assert_close(orva.gradient(picture, sigma=1.5, ratio=1.25), np.sqrt(squares))


def test_laplacian(picture):
    axes = [(0, 0, 2), (0, 2, 0), (2, 0, 0)][: min(picture.ndim, 3)]
    expected = sum(derivative(picture, [1.5] * 3, orders) for orders in axes)
    assert_close(orva.laplacian(picture, sigma=1.5), expected)


@pytest.mark.parametrize(
    "operation, function",
    [
        ("smooth", lambda i: orva.smooth(i, sigma=1.5)),
        ("gradient", lambda i: orva.gradient(i, sigma=1.5)),
        ("laplacian", lambda i: orva.laplacian(i, sigma=1.5)),
        ("dx", lambda i: orva.gaussian(i, sigma=1.5, orders=(0, 1))),
        ("dyyy", lambda i: orva.gaussian(i, sigma=1.5, orders=(3, 0))),
        ("dxy", lambda i: orva.gaussian(i, sigma=1.5, orders=1)),
    ],
)
def test_filters_are_bit_for_bit_those_of_the_command(
    command, sample, tmp_path, operation, function
):
    written = tmp_path / "filtered.iht"
    command("filter", "--op", operation, "--sigma", 1.5, "--output", written, sample)
    image = read_pgm(sample)
    expected = np.frombuffer(written.read_bytes()[40:], np.float32).reshape(image.shape)
    np.testing.assert_array_equal(function(image), expected)


def shifted(image, dy, dx):
    return np.roll(image, (-dy, -dx), (0, 1))


def second_differences(image):
    """Lx, Ly, Lxx, Lyy and Lxy of a plane, right off the border."""
    right, left = shifted(image, 0, 1), shifted(image, 0, -1)
    below, above = shifted(image, 1, 0), shifted(image, -1, 0)
    mixed = (
        shifted(image, 1, 1) + shifted(image, -1, -1) - shifted(image, 1, -1) - shifted(image, -1, 1)
    )
    return (
        (right - left) / 2, (below - above) / 2,
        right + left - 2 * image, below + above - 2 * image, mixed / 4,
    )


def property_of(image, sigma, kind):
    """A number that is positive where the property holds."""
    if kind.startswith("laplacian"):
        value = sum(derivative(image, [sigma] * 3, o) for o in ((0, 0, 2), (0, 2, 0)))
        return -value if kind.endswith("negative") else value
    lx, ly, lxx, lyy, lxy = second_differences(smoothed(image, [sigma] * 3))
    if kind.startswith("hessian"):
        sign = -1 if kind.endswith("maximum") else 1
        middle, half = (lxx + lyy) / 2, np.hypot((lxx - lyy) / 2, lxy)
        return np.minimum(sign * (middle - half), sign * (middle + half))
    along = (lx**2 * lxx + 2 * lx * ly * lxy + ly**2 * lyy) / (lx**2 + ly**2 + 1e-9)
    return -along if kind.endswith("concave") else along


@pytest.mark.parametrize(
    "kind",
    ["laplacian_negative", "laplacian_positive", "hessian_maximum", "hessian_minimum",
     "gradient_concave", "gradient_convex"],
)
def test_features(random, kind):
    image = random.integers(0, 256, (40, 48), dtype=np.uint8)
    result = orva.features(image, sigma=1.5, kind=kind)
    assert (result.dtype, result.shape) == (np.bool_, image.shape)
    value = property_of(image, 1.5, kind)
    clear = np.abs(value) > 1e-3  # not so near to 0 that rounding decides
    if not kind.startswith("laplacian"):
        clear[[0, -1]] = clear[:, [0, -1]] = False
        border = np.ones_like(result)
        border[1:-1, 1:-1] = False
        assert not result[border].any()
    assert clear.mean() > 0.85
    assert 0 < np.sum(result & clear) < np.sum(clear)
    np.testing.assert_array_equal(result[clear], (value > 0)[clear])


def test_features_of_a_stack_look_along_its_planes():
    z, y, x = np.mgrid[:21, :20, :20]
    ball = 200 * np.exp(-((x - 9) ** 2 + (y - 10) ** 2 + (z - 10) ** 2) / 18)
    ball = ball.astype(np.float32)
    for kind, sign in (("laplacian_negative", -1), ("laplacian_positive", 1)):
        value = sign * sum(derivative(ball, [1.0] * 3, o) for o in ((0, 0, 2), (0, 2, 0), (2, 0, 0)))
        clear = np.abs(value) > 1e-3
        assert clear.mean() > 0.5
        result = orva.features(ball, sigma=1.0, kind=kind)
        np.testing.assert_array_equal(result[clear], (value > 0)[clear])
    # Smoothed more along the planes, a ball is a cap of brightness farther up and down.
    cap = orva.features(ball, sigma=1.0, kind="hessian_maximum")
    longer = orva.features(ball, sigma=1.0, kind="hessian_maximum", ratio=1 / 3)
    assert cap[:, 10, 9].sum() < longer[:, 10, 9].sum()


def test_threshold(picture):
    result = orva.threshold(picture, 100.5)
    assert (result.dtype, result.shape) == (np.bool_, picture.shape)
    np.testing.assert_array_equal(result, picture >= 101)
    np.testing.assert_array_equal(orva.threshold(picture, 100), picture >= 100)


def test_threshold_of_a_nan_is_false():
    image = np.array([[np.nan, 1, -np.inf, np.inf]], np.float32)
    np.testing.assert_array_equal(orva.threshold(image, 0.5), [[False, True, False, True]])


def test_compute_threshold_is_half_way_between_the_means(blobs):
    inside = property_of(blobs, 3.0, "laplacian_negative") > 0
    expected = (blobs[inside].mean() + blobs[~inside].mean()) / 2
    assert orva.compute_threshold(blobs, scale=3.0) == pytest.approx(expected, rel=1e-5)


def test_compute_threshold_is_that_of_the_command(command, sample, tmp_path):
    table = tmp_path / "regions.csv"
    for options, arguments in (({}, []), ({"scale": 2.5}, ["--auto", 2.5])):
        printed = command("measure", "--min-size", 99999, "--table", table, *arguments, sample)
        expected = np.float32(printed.splitlines()[0].split()[-1])
        assert orva.compute_threshold(read_pgm(sample), **options) == expected


def test_compute_threshold_refuses_what_is_no_number():
    image = np.ones((9, 9), np.float32)
    image[4, 4] = np.nan
    with pytest.raises(ValueError, match="no numbers"):
        orva.compute_threshold(image)


CALLS = {
    "gaussian": lambda i, **o: orva.gaussian(i, **{"sigma": 1, **o}),
    "smooth": lambda i, **o: orva.smooth(i, **{"sigma": 1, **o}),
    "gradient": lambda i, **o: orva.gradient(i, **{"sigma": 1, **o}),
    "laplacian": lambda i, **o: orva.laplacian(i, **{"sigma": 1, **o}),
    "features": lambda i, **o: orva.features(
        i, **{"sigma": 1, "kind": "laplacian_negative", **o}
    ),
}


@pytest.mark.parametrize("name", CALLS)
@pytest.mark.parametrize("sigma", [0, 0.05, -1, 1001, float("nan"), float("inf")])
def test_sigmas_out_of_range_are_refused(blobs, name, sigma):
    with pytest.raises(ValueError, match="sigma"):
        CALLS[name](blobs, sigma=sigma)


@pytest.mark.parametrize("name", CALLS)
@pytest.mark.parametrize("sigma", ["1", None, True, 1j])
def test_sigmas_of_another_type_are_refused(blobs, name, sigma):
    with pytest.raises(TypeError, match="sigma"):
        CALLS[name](blobs, sigma=sigma)


@pytest.mark.parametrize(
    "name, option, value",
    [
        ("gaussian", "sigma", (1, 1, 1)), ("smooth", "sigma", (1,)), ("gaussian", "orders", -1),
        ("gaussian", "orders", 11), ("gaussian", "orders", (1, 0, 0)),
        ("gradient", "ratio", 0), ("features", "ratio", -1), ("features", "ratio", 20),
        ("features", "kind", "ridge"),
    ],
)
def test_other_options_out_of_range_are_refused(blobs, name, option, value):
    with pytest.raises(ValueError, match=option):
        CALLS[name](blobs, **{option: value})


def test_a_derivative_needs_more_than_one_sample():
    line = np.zeros((1, 9), np.uint8)
    with pytest.raises(ValueError, match="along y"):
        orva.gaussian(line, sigma=1, orders=(1, 0))
    with pytest.raises(ValueError, match="along z"):
        orva.gaussian(line[np.newaxis], sigma=1, orders=(1, 0, 0))


@pytest.mark.parametrize("level", [float("nan"), float("inf"), 1e39])
def test_levels_that_are_no_numbers_are_refused(blobs, level):
    with pytest.raises(ValueError, match="level"):
        orva.threshold(blobs, level)
