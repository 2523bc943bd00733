"""Arrays that know their axes and the size of a pixel."""

from __future__ import annotations

from typing import Any

import numpy as np
import numpy.typing as npt


class Image(np.ndarray):  # type: ignore[type-arg]
    """An array as read() returns it, with what the file says of its pixels.

    axes has a name for each axis: "t", "c", "z", "y" and "x", or "page" for pages of unknown meaning.
    pixel_size has the sizes of a pixel in micrometres by the names of axes, {} for a file without
    calibration. channel_names has a name for each channel, "" for one without. file_type is "uint16"
    for a file with pixels of this type, which are int32 here; write() writes them as uint16 again.

    Slices, copies and results of arithmetic are Images without these: axes, channel_names and
    file_type are None, and pixel_size is {}. All may be set.
    """

    axes: tuple[str, ...] | None
    pixel_size: dict[str, float]
    channel_names: tuple[str, ...] | None
    file_type: str | None

    def __array_finalize__(self, obj: Any) -> None:
        self.axes = None
        self.pixel_size = {}
        self.channel_names = None
        self.file_type = None


def described(
    array: npt.NDArray[Any],
    axes: tuple[str, ...],
    sizes: tuple[float | None, float | None, float | None],
    channel_names: tuple[str, ...],
    is_uint16: bool,
) -> Image:
    """The result of a compiled function; sizes are those of a pixel along x, y and z."""
    image = array.view(Image)
    image.axes = axes
    image.pixel_size = {axis: size for axis, size in zip("xyz", sizes) if size is not None}
    image.channel_names = channel_names
    image.file_type = "uint16" if is_uint16 else None
    return image
