"""The tiles of an image that is too large to be processed as a whole."""

from __future__ import annotations

from collections.abc import Iterator
from typing import Any, NamedTuple

import numpy as np
import numpy.typing as npt

from .._arrays import image_of, require_array

# Images with a longer side are divided into tiles.
MAX_SIDE = 8192

TILE_SIDE = 4096
MAX_SEEN = 16384  # the largest side of a tile with its overlap, limited by memory

Part = tuple[int, int, int, int]  # rows from and up to, columns from and up to


class Tile(NamedTuple):
    """The part of the image that a tile owns, and that part with the overlap."""

    own: Part
    seen: Part


def around(own: Part, shape: tuple[int, int], overlap: int) -> Part:
    """The part and its surroundings within the overlap."""
    return (
        max(own[0] - overlap, 0),
        min(own[1] + overlap, shape[0]),
        max(own[2] - overlap, 0),
        min(own[3] + overlap, shape[1]),
    )


def tiles_of(shape: tuple[int, int], tile: int, overlap: int) -> Iterator[Tile]:
    for y in range(0, shape[0], tile):
        for x in range(0, shape[1], tile):
            own = (y, min(y + tile, shape[0]), x, min(x + tile, shape[1]))
            yield Tile(own, around(own, shape, overlap))


def block_of(image: Any, part: Part, factor: float = 1.0) -> npt.NDArray[Any]:
    block = image_of(np.asarray(image[part[0] : part[1], part[2] : part[3]]))
    return block if factor == 1 else block.astype(np.float32) * np.float32(factor)


def plane_shape(image: Any) -> tuple[int, int]:
    """The sides of what is to be divided into tiles; raises for what is not a plane."""
    if isinstance(image, np.ndarray) or not hasattr(image, "shape"):
        require_array(image, "image")
    if len(image.shape) != 2:
        raise ValueError(f"image must be a plane (y, x), not of {len(image.shape)} axes")
    shape = int(image.shape[0]), int(image.shape[1])
    if 0 in shape:
        raise ValueError("image is empty")
    return shape
