"""Connected regions: labels, measurements, distances and hulls."""

from __future__ import annotations

from typing import Any

import numpy as np
import numpy.typing as npt

from . import _options as options
from . import _orva
from ._arrays import (
    IMAGE_TYPES,
    LABEL_TYPES,
    MASK_TYPES,
    Floats,
    Image,
    Labels,
    Mask,
    require,
    require_mask,
    require_volume,
)

_MOST_REACH = 32767
_MOST_DISTANCE = 10000  # that of pixels which no region reaches


def label(
    mask: Mask, *, value: int | None = None, connectivity: int = 4, reach: int = 1
) -> tuple[Labels, int]:
    """Number the connected regions of a mask.

    Parameters
    ----------
    mask
        A plane or a volume of bool or uint8 (0 and 255).
    value
        Regions are made of the pixels of this value of a uint8 array, 0 to 255, which then needs be
        no mask; with -1 every pixel takes part and regions are areas of equal value. None stands
        for the objects of the mask.
    connectivity
        4: pixels touch along the axes; 8: along the diagonals, too.
    reach
        With 4 those pixels touch that are just so far apart, with 8 all in a box of that half-width.

    Returns
    -------
    labels
        int16 array of the shape of mask: 0, 1, 2, ... in the order (z, then y, then x) of the
        regions' first pixels, and -1 outside.
    n
        The number of regions.

    Raises
    ------
    TypeError
        For an array or an option of another type.
    ValueError
        For more than 32768 regions, several channels or time points, a mask with other values than
        0 and 255, and an option out of range.
    """
    if value is None:
        require_mask(mask)
        value = 255
    else:
        require(mask, ("uint8",), "mask")
        value = options.whole("value", value, -1, 255)
    require_volume(mask, "mask")
    if options.whole("connectivity", connectivity, 4, 8) not in (4, 8):
        raise ValueError(f"connectivity must be 4 or 8, not {connectivity}")
    return _orva.label(mask, value, options.whole("reach", reach, 1, _MOST_REACH), connectivity)


def measure(labels: Labels, image: Image | None = None) -> dict[str, npt.NDArray[Any]]:
    """Measure the regions of labels.

    Parameters
    ----------
    labels
        A plane or a volume of int16; pixels below 0 are left out.
    image
        The brightness, of the same shape.

    Returns
    -------
    Columns by name, a row for each label from 0 to the largest, as pandas.DataFrame takes them: the
    bounding box xmin, xmax, ymin, ymax, zmin, zmax and the centroid cx, cy, cz, in pixels and
    rounded down; radius, that of the disc (or ball) of as many pixels, rounded down, at least 1;
    npix, the number of pixels; and with an image the mean and the sample variance var of the
    brightness, in single precision. A label without pixels has a row of zeros.

    Raises
    ------
    TypeError
        For an array of another type.
    ValueError
        For several channels or time points, and for an image of another shape than labels.
    """
    require(labels, LABEL_TYPES, "labels")
    require_volume(labels, "labels")
    if image is not None:
        require(image, IMAGE_TYPES)
        if image.shape != labels.shape:
            raise ValueError(f"image has the shape {image.shape}, labels have {labels.shape}")
    return _orva.measure(labels, image)


def chamfer(image: Mask | Labels) -> Floats:
    """The distance of every object pixel from the background, by chamfer steps.

    Parameters
    ----------
    image
        A plane or a volume: a mask of bool or uint8, where objects are the pixels other than 0, or
        labels of int16, where they are the pixels of at least 0. In labels a pixel with another
        value among its neighbours counts as 1, and the others add their distance to that.

    Returns
    -------
    float32 array of the shape of image, in pixels; 0 in the background. The two passes leave out the
    border, which then follows its neighbours at 1 for every step; what has nothing to follow is
    10000.

    Raises
    ------
    TypeError
        For an array of another type.
    ValueError
        For several channels or time points.
    """
    require(image, MASK_TYPES + LABEL_TYPES)
    require_volume(image)
    return _orva.chamfer(image)


def propagate(labels: Labels, *, max_distance: float) -> Labels:
    """Let regions grow into the background until they meet.

    Parameters
    ----------
    labels
        A plane or a volume of int16.
    max_distance
        Pixels that far away or more become -1; above 0, at most 10000.

    Returns
    -------
    int16 array of the shape of labels: every pixel below 0 has the label of the region nearest by
    chamfer distance. The border is not reached and becomes -1, unless it belongs to a region.

    Raises
    ------
    TypeError
        For an array or an option of another type.
    ValueError
        For a distance out of range, and for several channels or time points.
    """
    require(labels, LABEL_TYPES, "labels")
    require_volume(labels, "labels")
    distance = options.number("max_distance", max_distance, 0, _MOST_DISTANCE)
    if np.float32(distance) <= 0:
        raise ValueError("max_distance must be above 0")
    return _orva.propagate(labels, distance)


def convex_hull(image: Mask | Labels, *, precision: int = 20) -> Labels:
    """Fill every region up to its convex hull.

    Parameters
    ----------
    image
        A plane or a volume: labels of int16, or a mask of bool or uint8 (0 and 255), whose regions
        touch along the axes.
    precision
        Number of directions over the half circle, 3 to 50; in a volume 4 * precision * (precision +
        1) over the half sphere.

    Returns
    -------
    int16 labels of the shape of image. Regions are filled in label order and never lose pixels; a
    pixel joins where its projection on every direction lies within the region's.

    Raises
    ------
    TypeError
        For an array or an option of another type.
    ValueError
        For a precision out of range, a mask with other values or of more than 32768 regions, and
        several channels or time points.
    """
    require(image, MASK_TYPES + LABEL_TYPES)
    if image.dtype != np.int16:
        require_mask(image, "image")
    require_volume(image)
    return _orva.convex_hull(image, options.whole("precision", precision, 3, 50))
