"""Image files."""

from __future__ import annotations

import os
import sys
from typing import Any, NamedTuple, Union

import numpy as np

from . import _options as options
from . import _orva
from ._arrays import MAX_PIXELS, image_of, require_array
from ._arrays import Image as AnyImage
from ._image import Image, described

Path = Union[str, "os.PathLike[str]"]

_MAX_FRAME = 65534
_MAX_LEVEL = 63


def read(
    path: Path,
    *,
    frame: int | None = None,
    channel: int | str | None = None,
    z: int | str | None = None,
    time: int | str | None = None,
    series: int | None = None,
    level: int = 0,
    channel_axis: int | None = None,
) -> Image:
    """Read an image file: PGM, PPM, PNG, TIFF, IHT or UIF.

    Parameters
    ----------
    path
        The file. IHT and UIF files are known by their names, the others by their first bytes.
    frame
        Page of a TIFF file or plane of a stack, from 0, whatever it shows; instead of what follows.
    channel
        Number or name of a channel; all if None.
    z
        Number of a slice, "max" or "mean" for the maximum or the mean of all, or "all", as None.
    time
        Number of a time, or "all", as None.
    series
        Number of the image in an OME-TIFF file of several.
    level
        Number of a smaller size, in a file that stores several; 0 is the full one.
    channel_axis
        Where the result has an axis of colour, -1 as in scikit-image: red, green and blue, uint8 or
        uint16. If None, colour becomes its luminance.

    Returns
    -------
    Image, an array with the axes (t, c, z, y, x) without those of length 1, and with the attributes
    axes, pixel_size (in micrometres) and channel_names. The pages of a TIFF file that does not say
    what they are have the axes (page, y, x), unless channel, z or time says it. Grey pixels keep
    their type, but for int8, which becomes int16, and uint16, which becomes int32. Colour becomes
    its luminance, float32.

    Raises
    ------
    OSError
        For a file that is missing (FileNotFoundError), damaged or of another kind, and for a plane
        that it does not have.
    TypeError, ValueError
        For an option of another type or out of range.
    """
    os.stat(path)  # raises FileNotFoundError for a missing file
    name = os.fsencode(path)
    chosen = plane_options(frame=frame, channel=channel, z=z, time=time, series=series, level=level)
    try:
        if channel_axis is not None:
            return _in_colour(described(*_orva.read_colour(name, *chosen)), channel_axis)
        if chosen.frame is not None:
            return described(*_orva.read_frame(name, chosen.frame))
        return described(*_orva.read(name, *chosen[1:]))
    except _orva.FileError as error:
        reason = str(error)
        for option in ("frame", "channel", "z", "time", "series", "level"):
            reason = reason.replace(f"--{option} K|NAME", f"{option}=").replace(f"--{option}", f"{option}=")
    raise OSError(f"{os.fsdecode(path)}: {reason}")


def _in_colour(image: Image, channel_axis: int) -> Image:
    """With the last axis, that of colour, as this one."""
    axis = options.whole("channel_axis", channel_axis, -image.ndim, image.ndim - 1)
    moved = np.moveaxis(image, -1, axis).view(Image)
    names = list(image.axes or ())
    names.insert(axis if axis >= 0 else image.ndim + axis, names.pop())
    moved.axes, moved.pixel_size, moved.channel_names = tuple(names), image.pixel_size, image.channel_names
    return moved


class PlaneOptions(NamedTuple):
    """Which planes of a file are read, in the order of the compiled functions."""

    frame: int | None
    series: int | None
    channel: str | None
    z: int | None
    slices: str  # "all", "max", "mean" or ""
    time: int | None
    each_time: bool
    level: int


def plane_options(
    *,
    frame: int | None = None,
    channel: int | str | None = None,
    z: int | str | None = None,
    time: int | str | None = None,
    series: int | None = None,
    level: int = 0,
) -> PlaneOptions:
    """The options of read(); raises as it does."""
    if frame is not None:
        if (channel, z, time, series, level) != (None, None, None, None, 0):
            raise ValueError("frame is given; it goes without channel, z, time, series and level")
        frame = options.whole("frame", frame, 0, _MAX_FRAME)
    if channel is not None and not isinstance(channel, str):
        channel = str(options.whole("channel", channel, 0, _MAX_FRAME))
    slices, z = _number_or_word("z", z, ("all", "max", "mean"))
    times, time = _number_or_word("time", time, ("all",))
    if series is not None:
        series = options.whole("series", series, 0, _MAX_FRAME)
    level = options.whole("level", level, 0, _MAX_LEVEL)
    return PlaneOptions(frame, series, channel, z, slices, time, times == "all", level)


def _number_or_word(
    name: str, value: int | str | None, words: tuple[str, ...]
) -> tuple[str, int | None]:
    """The word and the number that an option gives; "" and None for the other one."""
    if value is None:
        return "", None
    if isinstance(value, str):
        return options.choice(name, value, words), None
    return "", options.whole(name, value, 0, _MAX_FRAME)


def write(
    path: Path, image: AnyImage, *, stretch: bool = False, channel_axis: int | None = None
) -> None:
    """Write an image file, completely or not at all.

    Parameters
    ----------
    path
        The file, of the kind that its extension says: .pgm, .ppm or .png for one plane, .tif, .tiff,
        .iht, .uif or .ics for stacks. ICS is a pair, with a file .ids.
    image
        Array of 2 to 5 axes, of any real type; truth values become 0 and 255. TIFF keeps the axes,
        the size of a pixel and, if the name ends in .ome.tif, the names of channels that an Image
        has; and, as PNG, uint16, whatever the values.
    stretch
        Map the range of pixels to 0..255. Otherwise a format that does not hold the pixels as they
        are is an error.
    channel_axis
        The axis of colour, red, green and blue, of a uint8 or uint16 array; uint16 for TIFF and PNG.

    Raises
    ------
    OSError
        For a file that cannot be written, and for a format that does not hold the image.
    TypeError
        For an array or an option of another type.
    ValueError
        For an extension that is not known, and for a path with a null character.
    """
    stretch = options.flag("stretch", stretch)
    pixels = None if channel_axis is not None else image_of(image)
    name = os.fsdecode(path)
    if "\0" in name:  # the file would have what comes before it as its name
        raise ValueError("embedded null byte")
    if not _orva.is_writable(os.fsencode(path)):
        known = ", ".join(_orva.writable_extensions())
        raise ValueError(f"{name} has none of the extensions that can be written: {known}")
    os.stat(os.path.dirname(name) or os.curdir)
    try:
        if pixels is None:
            return _write_colour(path, image, channel_axis, stretch)
        order, sizes, pixel_size, names = _description(image)
        pixels = pixels if order is None else np.transpose(pixels, order)
        unsigned = _is_uint16(image)
        return _orva.write(os.fsencode(path), pixels, stretch, unsigned, sizes, pixel_size, names)
    except _orva.FileError as error:
        reason = str(error).replace("--stretch", "stretch=True").replace("; choose one with --frame", "")
    raise OSError(reason if reason.startswith(name) else f"{name}: {reason}")


def _description(
    image: Any,
) -> tuple[tuple[int, ...] | None, tuple[int, int, int], _orva.PixelSizes, list[str]]:
    """The order of axes with channels varying fastest, their sizes, and what else an Image says."""
    pixel_size = _pixel_size(image)
    axes: tuple[str, ...] = tuple(getattr(image, "axes", None) or ())
    names = list(getattr(image, "channel_names", None) or [])
    if not all(isinstance(name, str) for name in (*axes, *names)):
        raise TypeError("the names of axes and channels of an image must be str")
    if len(set(axes)) < len(axes):
        raise ValueError(f"image has an axis twice: {axes}")
    plain = ("y", "x")
    if axes[-2:] != plain or not set(axes) <= set("tzc") | set(plain) or len(axes) != image.ndim:
        return None, (1, 1, 1) if image.ndim == 2 else (0, 0, 0), pixel_size, []
    counts = dict(zip(axes, image.shape))
    if names and len(names) != counts.get("c", 1):
        raise ValueError(f"image has {counts.get('c', 1)} channels and {len(names)} names of channels")
    order = sorted(range(image.ndim), key=lambda i: "tzcyx".index(axes[i]))
    return tuple(order), (counts.get("c", 1), counts.get("z", 1), counts.get("t", 1)), pixel_size, names


def _pixel_size(image: Any) -> _orva.PixelSizes:
    size = getattr(image, "pixel_size", {})
    if not isinstance(size, dict):
        raise TypeError(f"pixel_size must be a dict of sizes by axes, not {type(size).__name__}")
    for axis, value in size.items():
        options.number(f"pixel_size[{axis!r}]", value, sys.float_info.min, sys.float_info.max)
    return size.get("x"), size.get("y"), size.get("z")


def _is_uint16(image: Any) -> bool:
    """Whether an image has the type uint16, or had it in its file and still fits it."""
    if getattr(image, "file_type", None) != "uint16" or image.dtype.name != "int32":
        return bool(image.dtype.name == "uint16")
    limit = np.iinfo(np.uint16).max
    return bool(image.min() >= 0 and image.max() <= limit)


def _write_colour(path: Path, image: Any, channel_axis: int | None, stretch: bool) -> None:
    require_array(image, "image")
    array = np.asarray(image)
    if stretch:
        raise ValueError("stretch is for grey images")
    if array.dtype.name not in ("uint8", "uint16"):
        raise TypeError(f"image has the dtype {array.dtype}; colour is written of uint8 and uint16")
    axis = options.whole("channel_axis", channel_axis, -array.ndim, array.ndim - 1)
    if array.ndim < 3 or array.shape[axis] != 3:
        raise ValueError(f"image has {array.shape[axis]} channels along the axis {axis}; colour has 3")
    if array.size == 0:
        raise ValueError("image is empty")
    if array.ndim > 6 or array.size // 3 > MAX_PIXELS:
        raise ValueError(
            f"image has the shape {array.shape}; it must have up to 5 axes and one of colour, and at "
            f"most {MAX_PIXELS} pixels"
        )
    holds = _orva.holds_colour if array.dtype.name == "uint8" else _orva.holds_colour_16
    if not holds(os.fsencode(path)):
        raise ValueError(f"{os.fsdecode(path)}: this format does not hold colour of {array.dtype}")
    planes = np.moveaxis(array, axis, -1)
    native = planes.astype(planes.dtype.newbyteorder("="), order="C", copy=False)
    stack = native.reshape(-1, *native.shape[-3:])
    _orva.write_colour(os.fsencode(path), stack, (0, 0, 0), _pixel_size(image))
