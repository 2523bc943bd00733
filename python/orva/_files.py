"""Image files."""

from __future__ import annotations

import os
from typing import Union

from . import _options as options
from . import _orva
from ._arrays import IMAGE_TYPES, Image, Truth, require

Path = Union[str, "os.PathLike[str]"]

_MAX_FRAME = 65534


def read(path: Path, *, frame: int | None = None) -> Image:
    """Read an image file: PGM, PPM, PNG, TIFF, IHT or UIF.

    Parameters
    ----------
    path
        The file. IHT and UIF files are known by their names, the others by their first bytes.
    frame
        Page of a TIFF file or plane of a stack, from 0; all if None.

    Returns
    -------
    Array (y, x), or (z, y, x) of the planes if there are several. Grey pixels keep their type, but
    for int8, which becomes int16, and uint16, which becomes int32. Colour becomes its luminance,
    float32.

    Raises
    ------
    OSError
        For a file that is missing (FileNotFoundError), damaged or of another kind, and for a frame
        that it does not have.
    TypeError, ValueError
        For a frame that is not an integer or is out of range.
    """
    if frame is not None:
        frame = options.whole("frame", frame, 0, _MAX_FRAME)
    os.stat(path)  # raises FileNotFoundError for a missing file
    try:
        return _orva.read(os.fsencode(path), frame)
    except _orva.FileError as error:
        reason = str(error).replace("--frame", "frame=")
    raise OSError(f"{os.fsdecode(path)}: {reason}")


def write(path: Path, image: Image | Truth, *, stretch: bool = False) -> None:
    """Write an image file, completely or not at all.

    Parameters
    ----------
    path
        The file, of the kind that its extension says: .pgm, .ppm or .png for one plane, .tif, .tiff,
        .iht, .uif or .ics for stacks. ICS is a pair, with a file .ids.
    image
        Array of 2 to 5 axes; truth values become 0 and 255.
    stretch
        Map the range of pixels to 0..255. Otherwise a format that does not hold the pixels as they
        are is an error.

    Raises
    ------
    OSError
        For a file that cannot be written, and for a format that does not hold the image.
    TypeError
        For an array or an option of another type.
    ValueError
        For an extension that is not known, and for a path with a null character.
    """
    require(image, ("bool", *IMAGE_TYPES))
    stretch = options.flag("stretch", stretch)
    name = os.fsdecode(path)
    if "\0" in name:  # the file would have what comes before it as its name
        raise ValueError("embedded null byte")
    if not _orva.is_writable(os.fsencode(path)):
        known = ", ".join(_orva.writable_extensions())
        raise ValueError(f"{name} has none of the extensions that can be written: {known}")
    os.stat(os.path.dirname(name) or os.curdir)
    try:
        return _orva.write(os.fsencode(path), image, stretch)
    except _orva.FileError as error:
        reason = str(error).replace("--stretch", "stretch=True").replace("; choose one with --frame", "")
    raise OSError(reason if reason.startswith(name) else f"{name}: {reason}")
