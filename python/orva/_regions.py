"""Connected regions: labels, measurements, distances and hulls."""

from __future__ import annotations

from typing import Any, Literal, overload

import numpy as np
import numpy.typing as npt

from . import _options as options
from . import _orva
from ._arrays import (
    LABEL_TYPES,
    MASK_TYPES,
    AnyLabels,
    Floats,
    Image,
    Labels,
    Mask,
    WideLabels,
    image_of,
    labels_from_one,
    require,
    require_mask,
    require_volume,
)

_MAX_REACH = 32767
_MAX_REGIONS = 32768
_MAX_ROWS = 2**24
_MAX_DISTANCE = 10000  # of pixels that no region reaches


@overload
def label(
    mask: Mask,
    *,
    value: int | None = ...,
    connectivity: int = ...,
    reach: int = ...,
    background: Literal[-1] = ...,
) -> tuple[Labels, int]: ...
@overload
def label(
    mask: Mask,
    *,
    value: int | None = ...,
    connectivity: int = ...,
    reach: int = ...,
    background: Literal[0],
) -> tuple[WideLabels, int]: ...
def label(
    mask: Mask,
    *,
    value: int | None = None,
    connectivity: int = 4,
    reach: int = 1,
    background: int = -1,
) -> tuple[Labels | WideLabels, int]:
    """Number the connected regions of a mask.

    Parameters
    ----------
    mask
        A plane or a volume of bool or uint8 (0 and 255).
    value
        Regions consist of the pixels with this value, 0 to 255, of a uint8 array, which need not be a
        mask. With -1 every pixel belongs to a region, and regions are areas of equal value. None
        means the objects of the mask.
    connectivity
        4: pixels are connected along the axes; 8: also along the diagonals.
    reach
        With connectivity 4, pixels at exactly this distance along an axis are connected; with 8, all
        pixels in a box of this half-width.
    background
        -1, or 0 for the numbering of scikit-image.

    Returns
    -------
    labels
        int16 array of the shape of mask: 0, 1, 2, ... in the order (z, then y, then x) of the
        regions' first pixels, and -1 outside. With the background 0, int32: 1, 2, 3, ..., and 0
        outside.
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
    options.whole("background", background, -1, 0)
    reach = options.whole("reach", reach, 1, _MAX_REACH)
    labels, n = _orva.label(mask, value, reach, connectivity)
    return (labels.astype(np.int32) + 1 if background == 0 else labels), n


@overload
def measure(
    labels: Labels, image: Image | None = ..., *, background: Literal[-1] = ...
) -> dict[str, npt.NDArray[Any]]: ...
@overload
def measure(
    labels: AnyLabels, image: Image | None = ..., *, background: Literal[0]
) -> dict[str, npt.NDArray[Any]]: ...
def measure(
    labels: AnyLabels, image: Image | None = None, *, background: int = -1
) -> dict[str, npt.NDArray[Any]]:
    """Measure the regions of labels.

    Parameters
    ----------
    labels
        A plane or a volume of int16; negative pixels are ignored. With the background 0, of any
        integer type, such as labels of scikit-image.
    image
        The brightness, of the same shape.
    background
        -1, or 0 for labels from 1.

    Returns
    -------
    Columns by name, as pandas.DataFrame accepts them, with one row per label from 0 (with the
    background 0, from 1) to the largest: the bounding box xmin, xmax, ymin, ymax, zmin, zmax and the
    centroid cx, cy, cz, in pixels and rounded down; radius, that of the disc (or ball) of equal size,
    rounded down, at least 1; npix, the number of pixels; and with an image the mean and the sample
    variance var of the brightness, in single precision. A label without pixels has a row of zeros.

    Raises
    ------
    TypeError
        For an array of another type.
    ValueError
        For several channels or time points, for an image of another shape than labels, and with the
        background 0 for labels below 0 or above 16777216.

    measure_labels() measures the regions of a plane with the names and definitions of scikit-image.
    """
    if options.whole("background", background, -1, 0) == 0:
        labels = labels_from_one(labels)
    else:
        require(labels, LABEL_TYPES, "labels")
    require_volume(labels, "labels")
    if image is not None:
        image = image_of(image)
        if image.shape != labels.shape:
            raise ValueError(f"image has the shape {image.shape}, labels have {labels.shape}")
    return _orva.measure(labels, image) if background == -1 else _measured_from_one(labels, image)


def _measured_from_one(labels: AnyLabels, image: Image | None) -> dict[str, npt.NDArray[Any]]:
    """The table of labels with background 0, which may be more than the compiled function takes."""
    n = int(labels.max())
    if n > _MAX_ROWS:
        raise ValueError(
            f"labels has the value {n}; a table with a row per label has at most {_MAX_ROWS}, and "
            "measure_labels() has rows for labels with pixels only"
        )
    table: dict[str, npt.NDArray[Any]] = {}
    for first in range(1, max(n, 1) + 1, _MAX_REGIONS):
        is_here = (labels >= first) & (labels < first + _MAX_REGIONS)
        part = np.where(is_here, labels - first, -1).astype(np.int16)
        for name, column in _orva.measure(part, image).items():
            rows = table.setdefault(name, np.zeros(n, column.dtype))
            rows[first - 1 : first - 1 + len(column)] = column
    return table


def chamfer(image: Mask | Labels) -> Floats:
    """The distance of every object pixel from the background, by chamfer steps.

    Parameters
    ----------
    image
        A plane or a volume: a mask of bool or uint8, whose objects are the non-zero pixels, or labels
        of int16, whose objects are the pixels of at least 0. In labels, a pixel with a neighbour of
        another value has the distance 1; the others add their distance to it.

    Returns
    -------
    float32 array of the shape of image, in pixels; 0 in the background. The two passes leave out the
    border; pixels there get the distance of a neighbour plus 1. Pixels without such a neighbour
    have the distance 10000.

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
    """Extend regions into the background until they meet.

    Parameters
    ----------
    labels
        A plane or a volume of int16.
    max_distance
        Pixels at this distance or farther away become -1; above 0, at most 10000.

    Returns
    -------
    int16 array of the shape of labels: every negative pixel gets the label of the nearest region by
    chamfer distance. Border pixels are not reached and become -1, unless they belong to a region.

    Raises
    ------
    TypeError
        For an array or an option of another type.
    ValueError
        For a distance out of range, and for several channels or time points.
    """
    require(labels, LABEL_TYPES, "labels")
    require_volume(labels, "labels")
    distance = options.number("max_distance", max_distance, 0, _MAX_DISTANCE)
    if np.float32(distance) <= 0:
        raise ValueError("max_distance must be above 0")
    return _orva.propagate(labels, distance)


def convex_hull(image: Mask | Labels, *, precision: int = 20) -> Labels:
    """Fill every region up to its convex hull.

    Parameters
    ----------
    image
        A plane or a volume: labels of int16, or a mask of bool or uint8 (0 and 255), whose regions
        are connected along the axes.
    precision
        Number of directions over the half circle, 3 to 50; in a volume, 4 * precision * (precision +
        1) over the half sphere.

    Returns
    -------
    int16 labels of the shape of image. Regions are filled in label order and never lose pixels; a
    pixel is added if its projection on every direction lies within the region's.

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
