"""The arrays that the functions take, and their checks."""

from __future__ import annotations

from typing import Any

import numpy as np
import numpy.typing as npt

from . import _options as options

Bytes = npt.NDArray[np.uint8]
Truth = npt.NDArray[np.bool_]
Floats = npt.NDArray[np.float32]
Labels = npt.NDArray[np.int16]
WideLabels = npt.NDArray[np.int32]  # with background 0
AnyLabels = npt.NDArray[np.integer[Any]]
# What the compiled functions take, and what others are converted to.
Pixels = Bytes | Labels | npt.NDArray[np.int32] | npt.NDArray[np.uint32] | Floats
Image = Truth | npt.NDArray[np.integer[Any]] | npt.NDArray[np.floating[Any]]
Mask = Truth | Bytes

IMAGE_TYPES = ("uint8", "int16", "int32", "uint32", "float32")
MASK_TYPES = ("bool", "uint8")
LABEL_TYPES = ("int16",)
WHOLE_TYPES = ("int8", "uint8", "int16", "uint16", "int32", "uint32", "int64", "uint64")

MAX_PIXELS = 2**31 - 1
MAX_LABEL = 2**31 - 1


# Types that an image type holds without loss.
_WIDER = {"bool": "uint8", "int8": "int16", "uint16": "int32", "float16": "float32"}
_COLOURS = (3, 4)  # channels that colour has, the last one alpha
_LARGE = 16  # a stack has no more columns than a colour has channels; a picture has this many or more


def require(array: Any, types: tuple[str, ...], name: str = "image") -> None:
    """Raises TypeError unless it is an array of one of the types, ValueError for its size."""
    require_array(array, name)
    if not any(array.dtype == np.dtype(accepted) for accepted in types):
        hint = ""
        if not array.dtype.isnative:
            hint = f"; its bytes are swapped: {name}.astype({name}.dtype.newbyteorder('='))"
        raise TypeError(f"{name} has the dtype {array.dtype}; accepted: {', '.join(types)}{hint}")
    _require_sizes(array, name)


def require_array(array: Any, name: str) -> None:
    """Raises TypeError unless it is an array without a mask."""
    if isinstance(array, np.ma.MaskedArray):
        raise TypeError(
            f"{name} must be a numpy.ndarray, not {type(array).__name__}; say what masked pixels are: "
            f"{name}.filled(0)"
        )
    if not isinstance(array, np.ndarray):
        raise TypeError(f"{name} must be a numpy.ndarray, not {type(array).__name__}")


def _require_sizes(array: npt.NDArray[Any], name: str) -> None:
    if not 2 <= array.ndim <= 5:
        raise ValueError(f"{name} has {array.ndim} axes; it must have 2 to 5: (t, c, z, y, x)")
    if array.size == 0:
        raise ValueError(f"{name} is empty")
    if array.size > MAX_PIXELS:
        raise ValueError(f"{name} has {array.size} pixels; an image has at most {MAX_PIXELS}")


def image_of(image: Any, name: str = "image", *, channel_axis: int | None = None) -> Pixels:
    """The pixels of an array of any real type in one of IMAGE_TYPES, in the machine's byte order.

    Truth values become 0 and 255. Whole numbers and floating-point numbers become wider where their
    type is none of these, and 64-bit ones narrower: whole numbers where all values fit 32 bits,
    floating-point numbers by rounding to float32. Colour along channel_axis becomes its luminance.

    Raises TypeError for what is no array or has no real numbers, ValueError for values that do not
    fit, for sizes, and for colour without channel_axis.
    """
    require_array(image, name)
    if channel_axis is not None:
        image = _luminance(image, channel_axis, name)
    _require_sizes(image, name)
    if channel_axis is None and _looks_like_colour(image):
        raise ValueError(
            f"{name} has the shape {np.shape(image)}, which looks like colour; pass channel_axis=-1 "
            f"where there is such an option, or orva.luminance({name}), or one channel: {name}[..., 0]"
        )
    array = np.asarray(image)
    dtype = array.dtype
    if dtype.name in IMAGE_TYPES:
        return array.astype(dtype.newbyteorder("="), copy=False)
    if dtype.name == "bool":
        return np.multiply(array, 255, dtype=np.uint8)
    if dtype.name in _WIDER:
        return array.astype(_WIDER[dtype.name])
    if dtype.kind in "iu":
        return _narrow_whole(array, name)
    if dtype.kind == "f":
        return _float32(array, name)
    raise TypeError(f"{name} has the dtype {dtype}, which is no type of real numbers")


def _looks_like_colour(array: npt.NDArray[Any]) -> bool:
    return (
        array.ndim >= 3 and array.shape[-1] in _COLOURS and min(array.shape[-3:-1]) >= _LARGE
    )


def _narrow_whole(array: npt.NDArray[Any], name: str) -> Pixels:
    low, high = int(array.min()), int(array.max())
    limits = np.iinfo(np.int32)
    if limits.min <= low and high <= limits.max:
        return array.astype(np.int32)
    if low >= 0 and high <= np.iinfo(np.uint32).max:
        return array.astype(np.uint32)
    raise ValueError(
        f"{name} has values from {low} to {high}, which no whole numbers of 32 bits hold; convert it, "
        f"which rounds: {name}.astype(numpy.float32)"
    )


def _float32(array: npt.NDArray[Any], name: str) -> Floats:
    with np.errstate(over="ignore"):
        narrow: Floats = array.astype(np.float32)
    if np.any(np.isinf(narrow) & np.isfinite(array)):
        raise ValueError(f"{name} has values beyond 3.4e38, which float32 does not hold; scale it")
    return narrow


def luminance(image: Any, *, channel_axis: int = -1) -> Floats:
    """The brightness of a colour image.

    Parameters
    ----------
    image
        Array of any real type whose axis channel_axis has 3 channels, red, green and blue, or 4, the
        last of which (alpha) is not used.
    channel_axis
        The number of this axis, from -image.ndim to image.ndim - 1.

    Returns
    -------
    float32 array without that axis, 0.212671 red + 0.71516 green + 0.072169 blue, as read() returns
    it for a file in colour.

    Raises
    ------
    TypeError
        For what is no array of real numbers, and for an axis that is not an integer.
    ValueError
        For an axis that the image does not have, or one of other than 3 or 4 channels.
    """
    return _luminance(image, channel_axis, "image")


def _luminance(image: Any, channel_axis: int, name: str) -> Floats:
    require_array(image, name)
    array = np.asarray(image)
    if array.dtype.kind not in "biuf":
        raise TypeError(f"{name} has the dtype {array.dtype}, which is no type of real numbers")
    axis = options.whole("channel_axis", channel_axis, -array.ndim, array.ndim - 1)
    if array.shape[axis] not in _COLOURS:
        raise ValueError(
            f"{name} has {array.shape[axis]} channels along the axis {axis}; colour has 3, or 4 with "
            f"alpha. Pass one channel: numpy.take({name}, 0, {axis})"
        )
    red, green, blue = (np.take(array, c, axis).astype(np.float64) for c in range(3))
    return _float32(0.072169 * blue + 0.71516 * green + 0.212671 * red, name)


def require_mask(mask: Any, name: str = "mask") -> None:
    """Raises as require(), and ValueError for bytes that are neither 0 nor 255."""
    require(mask, MASK_TYPES, name)
    if mask.dtype == np.uint8 and np.any((mask != 0) & (mask != 255)):
        raise ValueError(f"{name} has values other than 0 and 255; make a mask of it: {name} != 0")


def labels_from_one(labels: Any, name: str = "labels") -> WideLabels:
    """Labels with background 0 of any integer type; raises as require(), and ValueError for values."""
    require(labels, WHOLE_TYPES, name)
    array = np.asarray(labels)
    low, high = int(array.min()), int(array.max())
    if low < 0:
        raise ValueError(f"{name} has the value {low}; labels are from 1, and the background is 0")
    if high > MAX_LABEL:
        raise ValueError(f"{name} has the value {high}; labels are at most {MAX_LABEL}")
    return array.astype(np.int32, copy=False)


def frames(array: npt.NDArray[Any]) -> int:
    """The number of planes: z, then c, then t."""
    return int(np.prod(array.shape[:-2]))


def plane_of(
    image: Any, frame: int, name: str = "image", *, channel_axis: int | None = None
) -> npt.NDArray[Any]:
    """One plane of an image, counted along z first, then c, then t; raises as image_of()."""
    pixels = image_of(image, name, channel_axis=channel_axis)
    count = frames(pixels)
    planes: npt.NDArray[Any] = pixels.reshape(count, *pixels.shape[-2:])
    plane: npt.NDArray[Any] = planes[options.whole("frame", frame, 0, count - 1)]
    return plane


def require_plane(array: npt.NDArray[Any], name: str = "image") -> None:
    """Raises ValueError for more than one plane."""
    if frames(array) > 1:
        raise ValueError(f"{name} has {frames(array)} planes; take one at a time: {name}[k]")


def require_volume(array: npt.NDArray[Any], name: str = "image") -> None:
    """Raises ValueError for more than one channel or time point."""
    if np.prod(array.shape[:-3]) > 1:
        raise ValueError(f"{name} has several channels or time points; take one at a time")
