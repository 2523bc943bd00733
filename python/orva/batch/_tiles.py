"""Centres of an image that is too large to vote on as a whole."""

from __future__ import annotations

import math
from typing import Any, Dict, Iterable, Iterator, List, NamedTuple, Optional, Tuple

import numpy as np
import numpy.typing as npt

import orva

from .. import _options as options
from .._arrays import IMAGE_TYPES, require
from .._voting import MOST_LEVEL, complete

# Larger images are taken apart.
MOST_SIDE = 8192

_TILE = 4096
_NEGLIGIBLE = 0.001  # up to that the voting takes a gradient for none


class _Tile(NamedTuple):
    """What it owns, and what of the image it looks at: rows and columns from and up to."""

    own: Tuple[int, int, int, int]
    seen: Tuple[int, int, int, int]


def _settled(settings: Dict[str, Any]) -> Tuple[int, int, float]:
    """The largest radius, the cone width and the sigma that complete settings stand for."""
    radius, width, sigma = (settings[name] for name in ("max_radius", "cone_width", "sigma"))
    return (
        radius,
        math.floor(radius / 2 + 0.5) if width is None else width,
        max(1.0, radius / 7) if sigma is None else sigma,
    )


def overlap_of(settings: Dict[str, Any]) -> int:
    """So far from a pixel lies all that its votes depend on, and a centre's region.

    The settings are complete.

    A vote reaches as far as the margin that the voting adds to an image. A pass turns a cone by the
    votes within its reach, each of which came from a point within another.
    """
    radius, width, sigma = _settled(settings)
    margin = int(math.hypot(width, radius) + 3)
    passes = 1
    while width > 0:
        width = int(radius * math.tan(0.7 * math.atan(width / radius)))
        passes += 1
    kernel = max(2, int(4 * sigma)) + 2
    return (2 * passes + 1) * margin + kernel + 2 * radius


def _tiles(height: int, width: int, tile: int, overlap: int) -> Iterator[_Tile]:
    for y in range(0, height, tile):
        for x in range(0, width, tile):
            own = (y, min(y + tile, height), x, min(x + tile, width))
            seen = (
                max(own[0] - overlap, 0),
                min(own[1] + overlap, height),
                max(own[2] - overlap, 0),
                min(own[3] + overlap, width),
            )
            yield _Tile(own, seen)


def _block(image: Any, part: Tuple[int, int, int, int], factor: float = 1.0) -> npt.NDArray[Any]:
    block: npt.NDArray[Any] = np.asarray(image[part[0] : part[1], part[2] : part[3]])
    return block if factor == 1 else block.astype(np.float32) * np.float32(factor)


def _inside(values: npt.NDArray[Any], tile: _Tile) -> npt.NDArray[Any]:
    """The part of a result that the tile owns."""
    own, seen = tile
    return values[own[0] - seen[0] : own[1] - seen[0], own[2] - seen[2] : own[3] - seen[2]]


def find_centers_in_tiles(
    image: Any, *, tile: int = _TILE, overlap: Optional[int] = None, **settings: Any
) -> npt.NDArray[np.void]:
    """Find the centres of round objects in a plane of any size, tile by tile.

    Parameters
    ----------
    image
        A plane (y, x): an array of NumPy, or anything that gives one for image[y0:y1, x0:x1], such
        as a dask array or a memory map. One tile is held at a time.
    tile
        The side of what a tile owns, in pixels.
    overlap
        By how much it looks further on each side; if None, so far that it sees all that its centres
        depend on, and regions of votes of up to 2 max_radius beyond its own.
    settings
        As for find_centers(). frame is not among them.

    Returns
    -------
    As find_centers(), ordered by y, then x. With gradient and threshold given the centres and
    weights are exactly those of find_centers(). relative_gradient is a share of the strongest
    gradient of the whole image, relative_threshold one of its strongest vote: with them the image is
    voted on twice, and results may differ from those of find_centers() by the last bits of a vote;
    with a power above 1 also by the votes of faint gradients, of which find_centers() leaves out
    those below a thousandth.

    Raises
    ------
    TypeError, ValueError
        As find_centers(), and for an image that is no plane.
    """
    if isinstance(image, np.ndarray) or not hasattr(image, "shape"):
        require(image, IMAGE_TYPES)
    shape = tuple(image.shape)
    if len(shape) != 2:
        raise ValueError(f"image must be a plane (y, x), not of {len(shape)} axes")
    if 0 in shape:
        raise ValueError("image is empty")
    settings = complete(settings)
    options.whole("tile", tile, 1, 30000)
    if overlap is None:
        overlap = overlap_of(settings)  # may be more than the image
    else:
        options.whole("overlap", overlap, 0, 30000)
    tiles = list(_tiles(shape[0], shape[1], tile, overlap))
    absolute = _absolute(image, tiles, settings)
    if absolute is None:
        return orva.find_centers(np.zeros((1, 1), np.uint8))
    settings, factor, scale = absolute

    found: List[npt.NDArray[np.void]] = []
    for t in tiles:
        centers = orva.find_centers(_block(image, t.seen, factor), **settings)
        centers["x"] += t.seen[2]
        centers["y"] += t.seen[0]
        own = (centers["y"] >= t.own[0]) & (centers["y"] < t.own[1])
        own &= (centers["x"] >= t.own[2]) & (centers["x"] < t.own[3])
        found.append(centers[own])
    result: npt.NDArray[np.void] = np.concatenate(found)
    if scale != 1:
        result["weight"] /= scale
    ordered: npt.NDArray[np.void] = result[np.lexsort((result["x"], result["y"]))]
    return ordered


def _most(values: Iterable[npt.NDArray[Any]]) -> float:
    """The largest of all that are numbers."""
    return float(np.fmax.reduce([np.fmax.reduce(v, axis=None) for v in values]))


def _absolute(
    image: Any, tiles: List[_Tile], settings: Dict[str, Any]
) -> Optional[Tuple[Dict[str, Any], float, float]]:
    """Settings with thresholds that are the same for all tiles.

    With what to multiply the image by for them, and the scale of their votes. None where shares of
    the strongest gradient find no centres.
    """
    settings = dict(settings)
    share = settings.pop("relative_gradient")
    relative = settings.pop("relative_threshold")
    is_relative = settings["threshold"] is None
    strongest = 1.0
    if settings["gradient"] is None or is_relative:
        sigma = _settled(settings)[2]
        strongest = _most(
            _inside(orva.gradient(_block(image, t.seen), sigma=sigma), t) for t in tiles
        )
    gradient = settings["gradient"]
    if gradient is None:
        gradient = float(np.float32(share) * np.float32(strongest))
        if not gradient < MOST_LEVEL:
            gradient = MOST_LEVEL
    settings["gradient"] = gradient
    if not is_relative:
        return settings, 1.0, 1.0
    if not _NEGLIGIBLE < strongest < math.inf:
        return None
    # With the strongest gradient from 1 to 2 votes stay below the largest float for any power, and
    # none is too faint to count that a share counts. A power of two changes no digit.
    factor = 2.0 ** -math.floor(math.log2(strongest))
    settings["gradient"] = min(gradient * factor, MOST_LEVEL)
    settings["threshold"] = 0.0
    settings["threshold"] = relative * _most(
        _inside(orva.vote_field(_block(image, t.seen, factor), **settings), t) for t in tiles
    )
    # Votes of gradients in grey levels are those of shares, times the strongest to the power.
    return settings, factor, (strongest * factor) ** settings["power"]
