"""Round objects of unknown size: centers, radii and scores."""

from __future__ import annotations

import dataclasses
from collections.abc import Iterable, Sequence

import numpy as np
import numpy.typing as npt

from . import _options as options
from . import _orva
from ._arrays import Image, Pixels, frames, image_of, plane_of
from ._running import Progress, running

_MIN_RADIUS = 0.1
_MAX_RADIUS = 1_000_000
RADIUS_RANGE = _orva.RADIUS_RANGE  # objects differ from a given radius by this factor at most

Radius = float | Sequence[float] | None


@dataclasses.dataclass(frozen=True)
class SettingsEstimate:
    """What an image appears to hold.

    radius is the typical radius of the objects in pixels, 0 for none. polarity is "bright" or "dark".
    confidence is from 0 (nothing was found) to 1. runner_up is the best estimate of the other
    polarity, which has no runner-up of its own. radius_um is the radius in micrometres, if the image
    is an orva.Image with square pixels of known size.
    """

    radius: float
    polarity: str
    confidence: float
    runner_up: SettingsEstimate | None = None
    radius_um: float | None = None


def estimate_of(values: _orva.Estimate) -> SettingsEstimate:
    """An estimate of the compiled functions."""
    best, other = values
    return SettingsEstimate(*best, SettingsEstimate(*other))


def combined(estimates: Iterable[SettingsEstimate]) -> SettingsEstimate:
    """One estimate over several images or tiles, each with its runner-up."""

    def values(e: SettingsEstimate) -> _orva.Guess:
        return e.radius, e.polarity, e.confidence

    pairs = [(values(e), values(e.runner_up)) for e in estimates if e.runner_up is not None]
    return estimate_of(_orva.combined_estimate(pairs))


@dataclasses.dataclass(frozen=True)
class FindSettings:
    """What to look for, in the order of the compiled function; None is estimated or unlimited."""

    radius: float | None
    min_radius: float | None
    max_radius: float | None
    polarity: str | None
    min_score: float


def find_settings(
    *, radius: Radius = None, polarity: str | None = None, min_score: float = 0.5
) -> FindSettings:
    """The options of find_objects() except frame; raises as it does."""
    low = high = None
    if isinstance(radius, Sequence) and not isinstance(radius, str):
        if len(radius) != 2:
            raise ValueError(f"radius must be a number or a pair of them, not {len(radius)} numbers")
        low = options.number("the lower radius", radius[0], 0, _MAX_RADIUS)
        high = options.number("the upper radius", radius[1], low, _MAX_RADIUS)
        radius = None
    elif radius is not None:
        radius = options.number("radius", radius, _MIN_RADIUS, _MAX_RADIUS)
    if polarity is not None:
        options.choice("polarity", polarity, ("bright", "dark"))
    return FindSettings(
        radius, low, high, polarity, options.number("min_score", min_score, 0, 1)
    )


def search(
    plane: Pixels, settings: FindSettings
) -> tuple[npt.NDArray[np.void], SettingsEstimate]:
    """The objects in a plane, and the radius and polarity that were used, given or estimated."""
    objects, used = _orva.find_objects(plane, *dataclasses.astuple(settings))
    return objects, estimate_of(used)


def one_plane_of(
    image: Image, frame: int | None, channel_axis: int | None, name: str = "image"
) -> Pixels:
    """The plane of an image that frame chooses, if there are several; raises as image_of()."""
    pixels = image_of(image, name, channel_axis=channel_axis)
    if frame is None and frames(pixels) > 1:
        raise ValueError(
            f"{name} has {frames(pixels)} planes; choose one, frame=0, or project them: "
            f"{name}.max(axis=0)"
        )
    return plane_of(pixels, 0 if frame is None else frame, name)


def find_objects(
    image: Image,
    *,
    radius: Radius = None,
    polarity: str | None = None,
    min_score: float = 0.5,
    frame: int | None = None,
    channel_axis: int | None = None,
    threads: int | None = None,
    progress: Progress | None = None,
) -> npt.NDArray[np.void]:
    """Find round objects of unknown size and brightness.

    All settings are optional; those that are left open are estimated from the image. The image is
    searched at full size for small objects and at reduced sizes for larger ones, so the cost does not
    grow with the radius. Of overlapping objects the one with the higher score remains.

    Parameters
    ----------
    image
        A plane (y, x) of any real type, or a stack, of which one plane is used.
    radius
        Typical radius of the objects in pixels, 0.1 to 1000000, for objects of 0.4 to 2.5 times this
        radius; or a pair (low, high) of the smallest and the largest radius to find. If None, it is
        estimated, and objects of any radius are found from 2 pixels to a third of the shorter side.
    polarity
        "bright" or "dark": the objects relative to their background. If None, it is estimated.
    min_score
        Objects of lower score are left out, 0 to 1.
    frame
        The plane of a stack, counted from 0: along z first, then c, then t. Needed for a stack.
    channel_axis
        The axis of colour, -1 as in scikit-image, which is searched by its luminance. If None, the
        image is grey.
    threads
        Threads to use, 1 to 1024; one per processor core if None. The result does not depend on it.
    progress
        Called with total=100 for a progress bar with the methods update(n) and close(), such as
        tqdm.tqdm.

    Returns
    -------
    Structured array with the float32 fields x and y (pixels, with pixel centers at whole numbers and
    0 at the top left), radius (pixels), score (0 to 1, how surely this is an object, comparable
    between images) and coverage (share of the outline that has an edge, 0 to 1), one row per object,
    highest score first.

    Raises
    ------
    TypeError
        For an array or an option of another type.
    ValueError
        For an option out of range.

    The outside of the image is unknown: the part of an outline that leaves the image counts neither
    for nor against an object, and x, y and radius describe the part inside. A pixel that is not a
    finite number counts as the smallest finite one. estimate_settings() shows what is estimated.
    """
    settings = find_settings(radius=radius, polarity=polarity, min_score=min_score)
    with running(threads, progress):
        return search(one_plane_of(image, frame, channel_axis), settings)[0]


def estimate_settings(
    image: Image,
    *,
    frame: int | None = None,
    channel_axis: int | None = None,
    threads: int | None = None,
    progress: Progress | None = None,
) -> SettingsEstimate:
    """Estimate the typical radius and the polarity of the objects in an image.

    Parameters
    ----------
    image
        A plane (y, x) of any real type, or a stack, of which one plane is used.
    frame
        The plane of a stack, counted from 0: along z first, then c, then t. Needed for a stack.
    channel_axis
        The axis of colour, -1 as in scikit-image, which is searched by its luminance. If None, the
        image is grey.
    threads
        Threads to use, 1 to 1024; one per processor core if None. The result does not depend on it.
    progress
        Called with total=100 for a progress bar with the methods update(n) and close(), such as
        tqdm.tqdm.

    Returns
    -------
    SettingsEstimate with the fields radius (pixels, 0 for an image without objects), polarity
    ("bright" or "dark"), confidence (0 to 1), runner_up, the same for the other polarity, and
    radius_um, the radius in micrometres, None for an array without the size of a pixel. These
    are the radius and polarity of the objects that find_objects() finds; passed to it, the radius leaves
    out objects below 0.4 and above 2.5 times it.

    Raises
    ------
    TypeError
        For an array or an option of another type.
    ValueError
        For a frame that the image does not have.
    """
    with running(threads, progress):
        estimate = estimate_of(_orva.estimate_settings(one_plane_of(image, frame, channel_axis)))
    sizes = getattr(image, "pixel_size", {})
    size = _orva.square_pixel_size(sizes.get("x"), sizes.get("y"))
    return estimate if size is None else dataclasses.replace(estimate, radius_um=estimate.radius * size)
