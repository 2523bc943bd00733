"""Erosion, dilation, edges and holes."""

from __future__ import annotations

from typing import TypeVar

import numpy as np
import numpy.typing as npt

from . import _orva
from ._arrays import (
    LABEL_TYPES,
    MASK_TYPES,
    Bytes,
    Floats,
    Labels,
    Truth,
    require,
    require_mask,
    require_plane,
    require_volume,
)

AnyMask = TypeVar("AnyMask", Truth, Bytes)
MaskOrLabels = TypeVar("MaskOrLabels", Truth, Bytes, Labels)
_EDGE_TYPES = ("bool", "uint8", "int16", "int32", "float32")


def erode(image: MaskOrLabels) -> MaskOrLabels:
    """Remove the outermost pixels of the objects of a mask, or of the regions of labels.

    Of a mask the pixels at the border and those with background among their eight neighbours go; of
    labels those at the border and those with another value among the eight, so that regions that
    touch both lose their common border.

    Parameters
    ----------
    image
        A plane: a mask of bool or uint8 (0 and 255), or labels of int16 (-1 outside).

    Returns
    -------
    Array of the type and shape of image.

    Raises
    ------
    TypeError
        For an array of another type.
    ValueError
        For a stack, and for a mask with other values.
    """
    require(image, MASK_TYPES + LABEL_TYPES)
    require_plane(image)
    if image.dtype == np.int16:
        return _orva.erode_labels(image)
    require_mask(image, "image")
    return _orva.erode_mask(image)


def dilate(mask: AnyMask) -> AnyMask:
    """Add one pixel to the objects of a mask, in all eight directions.

    Pixels at the border do not grow.

    Parameters
    ----------
    mask
        A plane of bool or uint8 (0 and 255).

    Returns
    -------
    Array of the type and shape of mask.

    Raises
    ------
    TypeError
        For an array of another type.
    ValueError
        For a stack, and for a mask with other values.
    """
    require_mask(mask)
    require_plane(mask, "mask")
    return _orva.dilate(mask)


def fill_holes(mask: AnyMask) -> AnyMask:
    """Fill all background that is not connected to the border along the axes.

    Parameters
    ----------
    mask
        A plane or a volume of bool or uint8 (0 and 255).

    Returns
    -------
    Array of the type and shape of mask.

    Raises
    ------
    TypeError
        For an array of another type.
    ValueError
        For several channels or time points, and for a mask with other values.
    """
    require_mask(mask)
    require_volume(mask, "mask")
    return _orva.fill_holes(mask)


def edge(image: Truth | Bytes | Labels | npt.NDArray[np.int32] | Floats) -> Truth:
    """Where at least two of a pixel's eight neighbours differ from it.

    Parameters
    ----------
    image
        A plane of bool, uint8, int16, int32 or float32. A NaN differs from everything.

    Returns
    -------
    bool array of the shape of image; False at the border.

    Raises
    ------
    TypeError
        For an array of another type.
    ValueError
        For a stack.
    """
    require(image, _EDGE_TYPES)
    require_plane(image)
    return _orva.edge(image)
