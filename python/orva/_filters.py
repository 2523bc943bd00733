"""Gaussian filters, features of the smoothed image and thresholds."""

from __future__ import annotations

from collections.abc import Sequence

import numpy as np

from . import _options as options
from . import _orva
from ._arrays import Floats, Image, Truth, frames, image_of

_MAX_LEVEL = 3e38
_MAX_ORDER = 10

# The library's numbers.
_KINDS = {
    "laplacian_negative": 1,
    "laplacian_positive": 2,
    "hessian_maximum": 4,
    "hessian_minimum": 8,
    "gradient_concave": 16,
    "gradient_convex": 32,
}


def gaussian(
    image: Image,
    *,
    sigma: float | Sequence[float],
    orders: int | Sequence[int] = 0,
) -> Floats:
    """Smooth or differentiate by a Gaussian; the border sample is repeated outside the image.

    Parameters
    ----------
    image
        Array of 2 to 5 axes. The planes of all channels and time points form one stack, which
        is filtered along x, along y and along the planes; an axis of length 1 is skipped.
    sigma
        Scale in pixels, 0.1 to 1000: one for all axes, or one each for (y, x) or (z, y, x). Below
        0.7 the sampled Gaussian does not sum to 1.
    orders
        Order of the derivative, 0 to 10: one for all axes, or one per axis. A first derivative is
        positive where brightness increases with the coordinate.

    Returns
    -------
    float32 array of the shape of image, in grey levels per pixel to the power of the orders.

    Raises
    ------
    TypeError
        For an array or an option of another type.
    ValueError
        For an option out of range, and for a derivative along an axis of length 1.
    """
    image = image_of(image)
    sigmas = options.along_axes("sigma", sigma, image.ndim, options.sigma)
    chosen = options.along_axes(
        "orders", orders, image.ndim, lambda name, v: options.whole(name, v, 0, _MAX_ORDER)
    )
    sizes = image.shape[-1], image.shape[-2], frames(image)
    used = chosen if image.ndim > 2 else chosen[:2]
    for axis, size, order in zip("xyz", sizes, used):
        if size == 1 and order > 0:
            raise ValueError(f"the derivative along {axis} needs more than one sample")
    return _orva.gaussian(image, sigmas, chosen)


def smooth(image: Image, *, sigma: float | Sequence[float]) -> Floats:
    """Smooth by a Gaussian; taps outside the image are dropped and the others scaled up for them.

    Parameters
    ----------
    image
        Array of 2 to 5 axes; for its planes see gaussian().
    sigma
        Scale in pixels, 0.1 to 1000: one for all axes, or one each for (y, x) or (z, y, x).

    Returns
    -------
    float32 array of the shape of image.

    Raises
    ------
    TypeError, ValueError
        For an array or an option of another type, and for a sigma out of range.
    """
    image = image_of(image)
    return _orva.smooth(image, options.along_axes("sigma", sigma, image.ndim, options.sigma))


def gradient(image: Image, *, sigma: float, ratio: float = 1.0) -> Floats:
    """The magnitude of the gradient; the border sample is repeated outside the image.

    Parameters
    ----------
    image
        Array of 2 to 5 axes; for its planes see gaussian(). In a stack the derivative along the
        planes takes part.
    sigma
        Scale in pixels, 0.1 to 1000.
    ratio
        In a stack the derivative along the planes uses sigma / ratio, on all axes.

    Returns
    -------
    float32 array of the shape of image, in grey levels per pixel.

    Raises
    ------
    TypeError, ValueError
        For an array or an option of another type, and for a sigma out of range.
    """
    image = image_of(image)
    scale = options.sigma("sigma", sigma)
    return _orva.gradient(image, scale, options.ratio(ratio, scale))


def laplacian(image: Image, *, sigma: float) -> Floats:
    """The sum of the second derivatives along x, y and, in a stack, the planes.

    The border sample is repeated outside the image.

    Parameters
    ----------
    image
        Array of 2 to 5 axes; for its planes see gaussian().
    sigma
        Scale in pixels, 0.1 to 1000.

    Returns
    -------
    float32 array of the shape of image, in grey levels a square pixel.

    Raises
    ------
    TypeError, ValueError
        For an array or an option of another type, and for a sigma out of range.
    """
    image = image_of(image)
    return _orva.laplacian(image, options.sigma("sigma", sigma))


def features(image: Image, *, sigma: float, kind: str, ratio: float = 1.0) -> Truth:
    """Where the smoothed image has a differential property.

    Parameters
    ----------
    image
        Array of 2 to 5 axes; for its planes see gaussian(). In a stack the tests have their terms
        along the planes.
    sigma
        Scale in pixels, 0.1 to 1000.
    kind
        "laplacian_negative" or "laplacian_positive": the bright or the dark side of a blob;
        "hessian_maximum" or "hessian_minimum": a cap or a cup of brightness; "gradient_concave" or
        "gradient_convex": the sign of the second derivative along the gradient.
    ratio
        The planes of a stack are smoothed with sigma / ratio.

    Returns
    -------
    bool array of the shape of image. The first two kinds repeat the border sample outside the
    image; the others are False at the border.

    Raises
    ------
    TypeError, ValueError
        For an array or an option of another type, and for an option out of range.
    """
    image = image_of(image)
    scale = options.sigma("sigma", sigma)
    number = _KINDS[options.choice("kind", kind, tuple(_KINDS))]
    return _orva.features(image, scale, number, options.ratio(ratio, scale))


def threshold(image: Image, level: float) -> Truth:
    """Where a pixel, as a float, is at least level.

    Parameters
    ----------
    image
        Array of 2 to 5 axes.
    level
        In grey levels; rounded to single precision.

    Returns
    -------
    bool array of the shape of image; False for a NaN.

    Raises
    ------
    TypeError, ValueError
        For an array or a level of another type, and for a level that is no finite number.
    """
    image = image_of(image)
    options.number("level", level, -_MAX_LEVEL, _MAX_LEVEL)
    planes = np.asarray(image).reshape(frames(image), *image.shape[-2:])
    return _orva.threshold(planes, level).reshape(image.shape)


def compute_threshold(image: Image, *, scale: float = 5.0) -> float:
    """The midpoint between the mean brightness inside and outside bright blobs.

    Parameters
    ----------
    image
        Array of 2 to 5 axes; for its planes see gaussian().
    scale
        Size of the blobs in pixels, about the radius of the objects, 0.1 to 1000.

    Returns
    -------
    A level for threshold(), in grey levels. Sums are in single precision.

    Raises
    ------
    TypeError, ValueError
        For an array or a scale of another type, for a scale out of range, and when the level is no
        finite number because pixels are none.
    """
    image = image_of(image)
    level = _orva.compute_threshold(image, options.sigma("scale", scale))
    if not -_MAX_LEVEL <= level <= _MAX_LEVEL:
        raise ValueError("image has pixels that are no numbers or infinite")
    return level
