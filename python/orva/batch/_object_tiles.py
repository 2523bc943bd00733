"""Objects of an image that is too large to be searched as a whole."""

from __future__ import annotations

import dataclasses
import math
import warnings
from collections.abc import Iterable
from typing import Any

import numpy as np
import numpy.typing as npt

from .. import _options as options
from .._objects import (
    RADIUS_RANGE,
    FindSettings,
    Radius,
    SettingsEstimate,
    combined,
    find_settings,
    search,
)
from ._grid import MAX_SEEN, TILE_SIDE, Tile, block_of, plane_shape, tiles_of


def find_objects_in_tiles(
    image: Any,
    *,
    tile: int = TILE_SIDE,
    overlap: int | None = None,
    radius: Radius = None,
    polarity: str | None = None,
    min_score: float = 0.5,
) -> npt.NDArray[np.void]:
    """Find round objects in a plane of any size, tile by tile.

    A radius and a polarity that are left open are estimated once for the whole plane: in each tile
    without its overlap, and combined. Then every tile is searched with the same radius and polarity.
    An object belongs to the tile that has its center.

    Parameters
    ----------
    image
        A plane (y, x): a NumPy array, or an object that converts to one for image[y0:y1, x0:x1],
        such as a Dask array or a memory map. Only one tile is in memory at a time.
    tile
        The side of a tile without its overlap, in pixels.
    overlap
        The overlap on each side, in pixels; if None, large enough that every object of at most
        2.5 times the radius lies completely in the tile that has its center, up to a tile of 16384
        pixels or twice its side, with a warning when that is not enough.
    radius, polarity, min_score
        As for find_objects().

    Returns
    -------
    As find_objects(). Unless radius is a pair, objects of 0.4 to 2.5 times the radius are found, also
    if it is estimated, whereas find_objects() then finds objects of any radius. Noise and contrast
    are measured in each tile, so scores may differ from those in the whole image, and places and
    radii by fractions of a pixel.

    Raises
    ------
    TypeError, ValueError
        As find_objects(), and for an image that is not a plane.
    """
    settings = find_settings(radius=radius, polarity=polarity, min_score=min_score)
    return search_in_tiles(image, settings, tile=tile, overlap=overlap)[0]


def search_in_tiles(
    image: Any, settings: FindSettings, *, tile: int = TILE_SIDE, overlap: int | None = None
) -> tuple[npt.NDArray[np.void], SettingsEstimate]:
    """The objects as find_objects_in_tiles() returns them, and the radius and polarity used."""
    shape = plane_shape(image)
    options.whole("tile", tile, 1, 30000)
    if overlap is not None:
        options.whole("overlap", overlap, 0, 30000)
    used = None
    if settings.radius is None or settings.polarity is None:
        used = estimate_in_tiles(image, settings, tile=tile)
        radius = settings.radius
        if settings.min_radius is None and settings.max_radius is None:
            radius = radius or used.radius or None
        settings = dataclasses.replace(settings, radius=radius, polarity=used.polarity)
    largest = _largest(settings, shape, tile)
    if overlap is None:
        overlap = _overlap(largest, shape, tile)
    found = []
    estimates = []
    for t in tiles_of(shape, tile, overlap):
        t = _aligned(t, largest)
        objects, estimate = search(block_of(image, t.seen), settings)
        found.append(_own(objects, t, shape))
        estimates.append(estimate)
    result: npt.NDArray[np.void] = np.concatenate(found)
    order = np.lexsort((result["x"], result["y"], -result["score"]))
    return result[order], used or _combined(estimates, settings)


def estimate_in_tiles(
    image: Any, settings: FindSettings, *, tile: int = TILE_SIDE
) -> SettingsEstimate:
    """The radius and polarity of a plane of any size, given or estimated from tiles without overlap."""
    shape = plane_shape(image)
    return _combined(
        (search(block_of(image, t.own), settings)[1] for t in tiles_of(shape, tile, 0)), settings
    )


def _combined(estimates: Iterable[SettingsEstimate], settings: FindSettings) -> SettingsEstimate:
    """One estimate over the tiles that hold objects, with what is given."""
    result = combined(e for e in estimates if e.confidence > 0)
    return dataclasses.replace(
        result,
        radius=result.radius if settings.radius is None else settings.radius,
        polarity=settings.polarity or result.polarity,
    )


def _largest(settings: FindSettings, shape: tuple[int, int], tile: int) -> float:
    """The radius of the largest objects that are looked for."""
    if settings.max_radius is not None:
        radius = settings.max_radius
    elif settings.radius is not None:
        radius = RADIUS_RANGE * settings.radius
    else:
        radius = tile / 8  # nothing is known
    return min(radius, min(shape) / 3)  # no larger ones are found


def _overlap(largest: float, shape: tuple[int, int], tile: int) -> int:
    """So that a tile has the objects that it owns completely, with what surrounds them."""
    overlap = math.ceil(3 * largest)  # half the length of an object of axes 1 : 4 is two radii
    limit = max(MAX_SEEN - tile, tile) // 2
    if overlap <= limit or max(shape) <= tile:
        return overlap
    warnings.warn("the objects are too large for the tiles; some may be cut", stacklevel=4)
    return limit


def _aligned(t: Tile, largest: float) -> Tile:
    """The tile with more overlap, so that its reduced sizes have the pixels of the image's own.

    Objects are searched where their radius is at least 4 pixels.
    """
    unit = 1 << math.ceil(math.log2(max(largest / 4, 1)))
    y0, y1, x0, x1 = t.seen
    return Tile(t.own, (y0 - y0 % unit, y1, x0 - x0 % unit, x1))


def _own(
    objects: npt.NDArray[np.void], t: Tile, shape: tuple[int, int]
) -> npt.NDArray[np.void]:
    """The objects that the tile owns, with their places in the image."""
    objects["x"] += t.seen[2]
    objects["y"] += t.seen[0]
    row = np.clip(np.floor(objects["y"] + 0.5), 0, shape[0] - 1)
    column = np.clip(np.floor(objects["x"] + 0.5), 0, shape[1] - 1)
    own = (row >= t.own[0]) & (row < t.own[1]) & (column >= t.own[2]) & (column < t.own[3])
    result: npt.NDArray[np.void] = objects[own]
    return result
