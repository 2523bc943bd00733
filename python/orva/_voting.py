"""Centers of round objects."""

from __future__ import annotations

from collections.abc import Callable, Mapping
from typing import Any, TypeVar

import numpy as np
import numpy.typing as npt

from . import _options as options
from . import _orva
from ._arrays import Floats, Image
from ._objects import one_plane_of
from ._running import Progress, running

Result = TypeVar("Result")

_MAX_PIXELS = 1000  # the cones take memory by the product of radius and width
MAX_LEVEL = 3e38


def _settings(
    *,
    max_radius: int,
    min_radius: int,
    cone_width: int | None,
    sigma: float | None,
    gradient: float | None,
    relative_gradient: float,
    threshold: float | None,
    relative_threshold: float,
    polarity: str,
    edges: bool,
    power: float,
) -> _orva.VoteSettings:
    options.whole("max_radius", max_radius, 1, _MAX_PIXELS)
    if cone_width is not None:
        options.whole("cone_width", cone_width, 0, _MAX_PIXELS)
    if sigma is not None:
        options.sigma("sigma", sigma)
    if gradient is not None:
        options.number("gradient", gradient, 0, MAX_LEVEL)
    if threshold is not None:
        options.number("threshold", threshold, 0, MAX_LEVEL)
    return _orva.VoteSettings(
        max_radius=max_radius,
        min_radius=options.whole("min_radius", min_radius, 1, max_radius),
        cone_width=cone_width,
        sigma=sigma,
        gradient=gradient,
        relative_gradient=options.number("relative_gradient", relative_gradient, 0, 1),
        threshold=threshold,
        relative_threshold=options.number("relative_threshold", relative_threshold, 0.05, 1),
        polarity=options.choice("polarity", polarity, ("bright", "dark", "both")),
        edges=options.flag("edges", edges),
        power=options.number("power", power, 0, 100),
    )


def _voted(
    vote: Callable[[npt.NDArray[Any], _orva.VoteSettings], Result],
    *,
    image: Image,
    frame: int | None,
    channel_axis: int | None,
    threads: int | None,
    progress: Progress | None,
    **settings: Any,
) -> Result:
    try:
        with running(threads, progress):
            return vote(one_plane_of(image, frame, channel_axis), _settings(**settings))
    except _orva.FileError as error:
        raise ValueError(f"image {error}") from None


def find_centers(
    image: Image,
    *,
    max_radius: int = 20,
    min_radius: int = 1,
    cone_width: int | None = None,
    sigma: float | None = None,
    gradient: float | None = None,
    relative_gradient: float = 0.03,
    threshold: float | None = None,
    relative_threshold: float = 0.3,
    polarity: str = "bright",
    edges: bool = False,
    power: float = 0.5,
    frame: int | None = None,
    channel_axis: int | None = None,
    threads: int | None = None,
    progress: Progress | None = None,
) -> npt.NDArray[np.void]:
    """Find the centers of round objects by iterative circular voting.

    Every pixel with a strong gradient votes in a cone along its gradient. In each pass the cones turn
    towards the maximum of the votes and become narrower, until the votes of an object are
    concentrated at its center.

    Parameters
    ----------
    image
        A plane (y, x), or a stack, of which one plane is used.
    max_radius
        Distance of the farthest vote in pixels, 1 to 1000: about 1.4 times the radius of the objects.
    min_radius
        Distance of the nearest vote in pixels, 1 to max_radius.
    cone_width
        Half-width of the widest cone at its end in pixels, 0 to 1000; half of max_radius if None.
    sigma
        Scale of the gradient in pixels, 0.1 to 1000; a seventh of max_radius, at least 1, if None.
    gradient
        Smallest gradient that votes, in grey levels per pixel. If None, relative_gradient applies.
    relative_gradient
        The same as a fraction of the strongest gradient, 0 to 1.
    threshold
        Regions with more votes than this become centers; gradients are then in grey levels per
        pixel. If None, relative_threshold applies.
    relative_threshold
        The same as a fraction of the strongest vote, 0.05 to 1.
    polarity
        "bright", "dark" or "both": the objects relative to their background.
    edges
        Vote only from the edges of bright blobs.
    power
        Exponent that turns gradient magnitudes into weights, 0 to 100.
    frame
        The plane of a stack, counted from 0: along z first, then c, then t. Needed for a stack.
    channel_axis
        The axis of colour, -1 as in scikit-image, whose luminance votes. If None, the image is grey.
    threads
        Threads to use, 1 to 1024; one per processor core if None. The result does not depend on it.
    progress
        Called with total=100 for a progress bar with the methods update(n) and close(), such as
        tqdm.tqdm.

    Returns
    -------
    Structured array with the fields x and y (int32, pixels from 0 at the top left) and weight
    (float32, the mean vote of the center's region), one row per center.

    Raises
    ------
    TypeError
        For an array or an option of another type.
    ValueError
        For an option out of range, and for an image that has, with the margin for the cones, a
        side of more than 32767 pixels.

    The border sample is repeated outside the image. Votes outside it are lost. Of more than 32768
    regions of votes, only the first are used, with a warning on standard error. An image with
    an infinite pixel has no centers, unless gradient and threshold are given.
    """
    return _voted(_orva.find_centers, **locals())


def vote_field(
    image: Image,
    *,
    max_radius: int = 20,
    min_radius: int = 1,
    cone_width: int | None = None,
    sigma: float | None = None,
    gradient: float | None = None,
    relative_gradient: float = 0.03,
    threshold: float | None = None,
    relative_threshold: float = 0.3,
    polarity: str = "bright",
    edges: bool = False,
    power: float = 0.5,
    frame: int | None = None,
    channel_axis: int | None = None,
    threads: int | None = None,
    progress: Progress | None = None,
) -> Floats:
    """The votes after the last pass, from which find_centers() extracts the centers.

    The parameters and the exceptions are those of find_centers(). relative_threshold has no effect
    here; of threshold, it only matters whether it is given.

    Returns
    -------
    float32 array (y, x): the votes at every pixel of the plane. The centers are the centroids of
    its regions above the threshold, their weights the mean vote of a region.
    """
    return _voted(_orva.vote_field, **locals())


def complete(settings: Mapping[str, Any]) -> dict[str, Any]:
    """The settings of the voting, with the defaults of find_centers(); raises as it does."""
    defaults = dict(find_centers.__kwdefaults__)
    for name in ("frame", "channel_axis", "threads", "progress"):
        del defaults[name]
    result = {**defaults, **settings}
    _settings(**result)
    return result
