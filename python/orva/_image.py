"""Arrays that know their axes and the size of a pixel."""

from __future__ import annotations

from typing import Any

import numpy as np
import numpy.typing as npt


class Image(np.ndarray):  # type: ignore[type-arg]
    """An array as read() returns it, with what the file says of its pixels.

    axes has a name for each axis: "t", "c", "z", "y" and "x", or "page" for pages of unknown meaning.
    pixel_size has the sizes of a pixel in micrometres by the names of axes, {} for a file without
    calibration. channel_names has a name for each channel, "" for one without.

    The results of slicing and of arithmetic are Images without these: axes and channel_names are
    None, and pixel_size is {}.
    """

    axes: tuple[str, ...] | None
    pixel_size: dict[str, float]
    channel_names: tuple[str, ...] | None

    def __array_finalize__(self, obj: Any) -> None:
        self.axes = None
        self.pixel_size = {}
        self.channel_names = None


def described(
    array: npt.NDArray[Any],
    axes: tuple[str, ...],
    pixel_size: dict[str, float],
    channel_names: tuple[str, ...],
) -> Image:
    image = array.view(Image)
    image.axes = axes
    image.pixel_size = pixel_size
    image.channel_names = channel_names
    return image
