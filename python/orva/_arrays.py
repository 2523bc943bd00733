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
Image = Bytes | Labels | npt.NDArray[np.int32] | npt.NDArray[np.uint32] | Floats
Mask = Truth | Bytes

IMAGE_TYPES = ("uint8", "int16", "int32", "uint32", "float32")
MASK_TYPES = ("bool", "uint8")
LABEL_TYPES = ("int16",)
WHOLE_TYPES = ("int8", "uint8", "int16", "uint16", "int32", "uint32", "int64", "uint64")

MAX_PIXELS = 2**31 - 1
MAX_LABEL = 2**31 - 1


def _hint(name: str, dtype: np.dtype[Any]) -> str:
    if not dtype.isnative:
        return f"; its bytes are swapped: {name}.astype({name}.dtype.newbyteorder('='))"
    wider = {"float64": "float32", "float16": "float32", "uint16": "int32", "int8": "int16"}
    if dtype.name in wider:
        return f"; convert it: {name}.astype(numpy.{wider[dtype.name]})"
    return ""


def require(array: Any, types: tuple[str, ...], name: str = "image") -> None:
    """Raises TypeError unless it is an array of one of the types, ValueError for its size."""
    if not isinstance(array, np.ndarray) or isinstance(array, np.ma.MaskedArray):
        raise TypeError(f"{name} must be a numpy.ndarray, not {type(array).__name__}")
    if not any(array.dtype == np.dtype(accepted) for accepted in types):
        hint = _hint(name, array.dtype) if types == IMAGE_TYPES or not array.dtype.isnative else ""
        raise TypeError(f"{name} has the dtype {array.dtype}; accepted: {', '.join(types)}{hint}")
    if not 2 <= array.ndim <= 5:
        raise ValueError(f"{name} has {array.ndim} axes; it must have 2 to 5: (t, c, z, y, x)")
    if array.size == 0:
        raise ValueError(f"{name} is empty")
    if array.size > MAX_PIXELS:
        raise ValueError(f"{name} has {array.size} pixels; an image has at most {MAX_PIXELS}")


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


def plane_of(image: Any, frame: int, name: str = "image") -> npt.NDArray[Any]:
    """One plane of an image, counted along z first, then c, then t; raises as require()."""
    require(image, IMAGE_TYPES, name)
    count = frames(image)
    planes: npt.NDArray[Any] = np.asarray(image).reshape(count, *image.shape[-2:])
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
