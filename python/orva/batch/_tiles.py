"""Centers of an image that is too large to be processed as a whole."""

from __future__ import annotations

import math
import warnings
from collections.abc import Iterable
from typing import Any

import numpy as np
import numpy.typing as npt

import orva

from .. import _options as options
from .. import _orva
from .._voting import MAX_LEVEL, complete
from ._grid import MAX_SEEN, TILE_SIDE, Tile, around, block_of, plane_shape, tiles_of

_CENTER = np.dtype([("x", np.int32), ("y", np.int32), ("weight", np.float32)])
_NEGLIGIBLE = 0.001  # gradients up to this value do not vote


def _settled(settings: dict[str, Any]) -> tuple[int, int, float]:
    """The maximum radius, the cone width and the sigma that complete settings imply."""
    radius, width, sigma = (settings[name] for name in ("max_radius", "cone_width", "sigma"))
    return (
        radius,
        math.floor(radius / 2 + 0.5) if width is None else width,
        max(1.0, radius / 7) if sigma is None else sigma,
    )


def reach_of(settings: dict[str, Any]) -> int:
    """The largest distance of pixels on which the votes of a pixel depend, for complete settings.

    A vote reaches as far as the margin that the voting adds to an image. A pass turns a cone by the
    votes within its reach, each of which came from a point within another.
    """
    radius, width, sigma = _settled(settings)
    margin = _orva.vote_margin(width, radius)
    passes = 1
    while width > 0:
        width = int(radius * math.tan(0.7 * math.atan(width / radius)))
        passes += 1
    kernel = max(2, int(4 * sigma)) + 2
    return (2 * passes + 1) * margin + kernel


def _inside(values: npt.NDArray[Any], tile: Tile) -> npt.NDArray[Any]:
    """The part of a result that the tile owns."""
    own, seen = tile
    return values[own[0] - seen[0] : own[1] - seen[0], own[2] - seen[2] : own[3] - seen[2]]


def find_centers_in_tiles(
    image: Any, *, tile: int = TILE_SIDE, overlap: int | None = None, **settings: Any
) -> npt.NDArray[np.void]:
    """Find the centers of round objects in a plane of any size, tile by tile.

    Parameters
    ----------
    image
        A plane (y, x): a NumPy array, or an object that converts to one for image[y0:y1, x0:x1],
        such as a Dask array or a memory map. Only one tile is in memory at a time.
    tile
        The side of a tile without its overlap, in pixels.
    overlap
        The overlap on each side, in pixels; if None, large enough to include all pixels on which the
        centers of the tile depend. Where a region of votes is long, the overlap grows, up to a tile
        of 16384 pixels; a longer region is cut, with a warning.
    settings
        As for find_centers(), except frame.

    Returns
    -------
    As find_centers(), ordered by y, then x. With gradient and threshold, the centers and weights are
    exactly those of find_centers(). relative_gradient is relative to the strongest gradient of the
    whole image, and relative_threshold to its strongest vote: with either, the tiles are processed
    twice, and results may differ from those of find_centers() in the last bits of a vote. With a
    power above 1 they may also differ by the votes of faint gradients, of which find_centers()
    ignores those below a thousandth.

    Raises
    ------
    TypeError, ValueError
        As find_centers(), and for an image that is not a plane.
    """
    shape = plane_shape(image)
    settings = complete(settings)
    options.whole("tile", tile, 1, 30000)
    may_grow = overlap is None
    if overlap is None:
        # May exceed the image. The region of a center is seldom longer than its object.
        overlap = reach_of(settings) + 2 * settings["max_radius"]
    else:
        options.whole("overlap", overlap, 0, 30000)
    tiles = list(tiles_of(shape, tile, overlap))
    absolute = _absolute(image, tiles, settings)
    if absolute is None:
        return np.zeros(0, _CENTER)
    settings, factor, scale = absolute

    found: list[npt.NDArray[np.void]] = []
    for t in tiles:
        centers, is_cut = _centers(image, t, shape, factor, settings)
        wider = overlap
        while may_grow and is_cut:
            wider *= 2
            t = Tile(t.own, around(t.own, shape, wider))
            if max(t.seen[1] - t.seen[0], t.seen[3] - t.seen[2]) > MAX_SEEN:
                warnings.warn("a region of votes is too long for the tiles and is cut", stacklevel=2)
                break
            centers, is_cut = _centers(image, t, shape, factor, settings)
        found.append(centers)
    result: npt.NDArray[np.void] = np.concatenate(found)
    if scale != 1:
        result["weight"] /= scale
    ordered: npt.NDArray[np.void] = result[np.lexsort((result["x"], result["y"]))]
    return ordered


def _centers(
    image: Any, t: Tile, shape: tuple[int, int], factor: float, settings: dict[str, Any]
) -> tuple[npt.NDArray[np.void], bool]:
    """The centers that the tile owns, as find_centers() finds them.

    Also whether one of them may belong to a region that goes on where the tile cannot tell.
    """
    votes = orva.vote_field(block_of(image, t.seen, factor), **settings)
    labels, _ = orva.label(votes > np.float32(settings["threshold"]))
    regions = orva.measure(labels, votes)
    centers = np.zeros(len(regions["npix"]), _CENTER)
    centers["x"] = regions["cx"] + t.seen[2]
    centers["y"] = regions["cy"] + t.seen[0]
    centers["weight"] = regions["mean"]
    own = (centers["y"] >= t.own[0]) & (centers["y"] < t.own[1])
    own &= (centers["x"] >= t.own[2]) & (centers["x"] < t.own[3])

    # Near the edge of what the tile sees votes are wrong, but not where that is the image's own.
    reach = reach_of(settings) + 1
    is_open = np.zeros(len(centers), bool)
    meets = np.ones(len(centers), bool)
    for low, high, first, last, start, end, size in (
        ("ymin", "ymax", *t.seen[:2], *t.own[:2], shape[0]),
        ("xmin", "xmax", *t.seen[2:], *t.own[2:], shape[1]),
    ):
        lowest, highest = regions[low] + first, regions[high] + first
        is_open |= (first > 0) & (lowest < first + reach)
        is_open |= (last < size) & (highest >= last - reach)
        meets &= (lowest < end) & (highest >= start)
    return centers[own], bool(np.any(is_open & meets))


def _most(values: Iterable[npt.NDArray[Any]]) -> float:
    """The largest of all that are numbers."""
    return float(np.fmax.reduce([np.fmax.reduce(v, axis=None) for v in values]))


def _absolute(
    image: Any, tiles: list[Tile], settings: dict[str, Any]
) -> tuple[dict[str, Any], float, float] | None:
    """Settings with thresholds that are the same for all tiles.

    With what to multiply the image by for them, and the scale of their votes. None where shares of
    the strongest gradient find no centers.
    """
    settings = dict(settings)
    share = settings.pop("relative_gradient")
    relative = settings.pop("relative_threshold")
    is_relative = settings["threshold"] is None
    strongest = 1.0
    if settings["gradient"] is None or is_relative:
        sigma = _settled(settings)[2]
        strongest = _most(
            _inside(orva.gradient(block_of(image, t.seen), sigma=sigma), t) for t in tiles
        )
    gradient = settings["gradient"]
    if gradient is None:
        gradient = float(np.float32(share) * np.float32(strongest))
        if not gradient < MAX_LEVEL:
            gradient = MAX_LEVEL
    settings["gradient"] = gradient
    if not is_relative:
        return settings, 1.0, 1.0
    if not _NEGLIGIBLE < strongest < math.inf:
        return None
    # With the strongest gradient from 1 to 2 votes stay below the largest float for any power, and
    # none is too faint to count that a share counts. A power of two changes no digit.
    factor = 2.0 ** -math.floor(math.log2(strongest))
    settings["gradient"] = min(gradient * factor, MAX_LEVEL)
    settings["threshold"] = 0.0
    settings["threshold"] = relative * _most(
        _inside(orva.vote_field(block_of(image, t.seen, factor), **settings), t) for t in tiles
    )
    # Votes of gradients in grey levels are those of shares, times the strongest to the power.
    return settings, factor, (strongest * factor) ** settings["power"]
