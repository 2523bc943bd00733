"""Regions of objects: label images and tables of measurements."""

from __future__ import annotations

import dataclasses
import math
from typing import Any

import numpy as np
import numpy.typing as npt

from . import _options as options
from . import _orva
from ._arrays import (
    MAX_PIXELS,
    AnyLabels,
    Image,
    Pixels,
    WideLabels,
    image_of,
    labels_from_one,
    require_plane,
)
from ._objects import (
    FindSettings,
    Radius,
    SettingsEstimate,
    estimate_of,
    find_settings,
    one_plane_of,
)
from ._running import Progress, running

COLUMNS = _orva.REGION_COLUMNS

_MIN_SCORE = 0.5  # of the objects that are looked for


@dataclasses.dataclass(frozen=True)
class SegmentSettings:
    """Which regions are kept, in the order of the compiled function."""

    min_area: float
    max_area: float
    exclude_border: bool


def segment_settings(
    *, min_area: float = 0, max_area: float | None = None, exclude_border: bool = False
) -> SegmentSettings:
    """The options of segment() about regions; raises as it does."""
    low = options.number("min_area", min_area, 0, MAX_PIXELS)
    high = math.inf if max_area is None else options.number("max_area", max_area, low, math.inf)
    return SegmentSettings(low, high, options.flag("exclude_border", exclude_border))


def search_regions(
    image: Pixels,
    sought: FindSettings,
    settings: SegmentSettings,
    measure: Pixels | None = None,
) -> tuple[WideLabels, npt.NDArray[np.void], SettingsEstimate]:
    """The labels and the table of what is found in a plane, and the radius and polarity used."""
    labels, table, used = _orva.segment_image(
        image, measure, *dataclasses.astuple(sought), *dataclasses.astuple(settings)
    )
    return labels, table, estimate_of(used)


def _object_rows(objects: Any) -> npt.NDArray[np.void]:
    """A table of objects in the form in which they are found."""
    columns = {}
    for name in ("x", "y", "radius", "score"):
        try:
            with np.errstate(over="ignore"):
                columns[name] = np.asarray(objects[name], np.float32)
        except (IndexError, KeyError, OverflowError, TypeError, ValueError):
            raise TypeError(
                f"objects must be a table as find_objects() returns it, with numbers in a column {name}"
            ) from None
    shapes = {column.shape for column in columns.values()}
    if len(shapes) != 1 or len(shapes.pop()) != 1:
        raise ValueError("objects must be a table with columns of the same length")
    for name in ("x", "y", "radius"):
        if not np.all(np.isfinite(columns[name])):
            raise ValueError(f"objects has a {name} that is not a finite number")
    if np.any(columns["radius"] <= 0):
        raise ValueError("objects has a radius that is not above 0")
    rows = np.zeros(len(columns["x"]), _orva.OBJECT)
    for name, column in columns.items():
        rows[name] = column
    return rows


def segment(
    image: Image,
    *,
    objects: Any = None,
    measure: Image | None = None,
    radius: Radius = None,
    polarity: str | None = None,
    min_score: float | None = None,
    min_area: float = 0,
    max_area: float | None = None,
    exclude_border: bool = False,
    frame: int | None = None,
    channel_axis: int | None = None,
    threads: int | None = None,
    progress: Progress | None = None,
) -> tuple[WideLabels, npt.NDArray[np.void]]:
    """Find round objects, label the pixels of each, and measure them.

    All settings are optional; those that are left open are estimated from the image. Every object has
    a threshold of its own, and touching objects are divided between their centers. An object that
    does not stand out from what surrounds it is left out. Compact regions that stand out like the
    others but have no center that the search finds, such as crescents, follow with a score of 0.5.

    Parameters
    ----------
    image
        A plane (y, x) of any real type, or a stack, of which one plane is used.
    objects
        The objects to label: a table as find_objects() returns it, or rows of one, with the columns
        x, y, radius and score. If None, they are searched for. Those with a center off the image or
        a radius above its longer side are left out, and all in an image with a side below 16 pixels.
    measure
        The brightness that is measured, such as another channel; an array of the shape of image. If
        None, that of image. It is read as float32, which rounds whole numbers above 16777216.
    radius
        As for find_objects(); None if objects are given.
    polarity
        "bright" or "dark": the objects relative to their background. If None, it is estimated.
    min_score
        Objects of lower score are left out, 0 to 1. If None, 0.5; None if objects are given. Above
        0.5, regions without a center are left out, too.
    min_area
        Smaller regions are left out; in pixels.
    max_area
        Larger regions are left out; in pixels, at least min_area. If None, none are too large.
    exclude_border
        Whether regions with a pixel in the first or last row or column are left out.
    frame
        The plane of a stack, counted from 0: along z first, then c, then t. Needed for a stack.
    channel_axis
        The axis of colour, -1 as in scikit-image, which is searched and measured by its luminance. If
        None, image and measure are grey.
    threads
        Threads to use, 1 to 1024; one per processor core if None. The result does not depend on it.
    progress
        Called with total=100 for a progress bar with the methods update(n) and close(), such as
        tqdm.tqdm.

    Returns
    -------
    labels
        int32 array (y, x): 0 in the background, k in the region of row k - 1 of the table. Regions
        are connected along the axes; a hole in one is another region.
    table
        Structured array with one row per region, in the order of the objects; those that are found have
        the highest score first, those without a center come last; pandas.DataFrame(table) converts it.
        The columns have the names and definitions of regionprops_table() of scikit-image: label
        (int32); centroid-0 and centroid-1 (row and column); area; equivalent_diameter_area; perimeter;
        eccentricity, major_axis_length, minor_axis_length and orientation of the ellipse with the same
        second moments; solidity; mean_intensity, min_intensity, max_intensity and intensity_std (all
        float64); bbox-0 to bbox-3 (int32: first row and column, and those behind the last). score
        (float32), that of the object, and touches_border (bool), whether a pixel is in the first or
        last row or column, follow. Lengths are in pixels, orientation is in radians from the row axis.

    Raises
    ------
    TypeError
        For an array, a table or an option of another type.
    ValueError
        For an option out of range, for arrays of different shapes, and for objects with a radius or a
        min_score.

    The search is that of find_objects(). In the search, a pixel that is not a finite number counts
    as the smallest finite one; the brightness of a region with a NaN is NaN.
    """
    kept = segment_settings(min_area=min_area, max_area=max_area, exclude_border=exclude_border)
    for name, value in (("radius", radius), ("min_score", min_score)):
        if objects is not None and value is not None:
            raise ValueError(f"{name} belongs to the search, and objects are given; give one of them")
    sought = find_settings(
        radius=radius, polarity=polarity, min_score=_MIN_SCORE if min_score is None else min_score
    )
    plane = one_plane_of(image, frame, channel_axis)
    brightness = None
    if measure is not None:
        brightness = one_plane_of(measure, frame, channel_axis, "measure")
        if np.shape(measure) != np.shape(image):
            raise ValueError(f"measure has the shape {measure.shape}, image has {image.shape}")
    rows = None if objects is None else _object_rows(objects)
    with running(threads, progress):
        if rows is None:
            return search_regions(plane, sought, kept, brightness)[:2]
        return _orva.segment_objects(
            plane, brightness, rows, polarity, *dataclasses.astuple(kept)
        )


def measure_labels(labels: AnyLabels, image: Image) -> npt.NDArray[np.void]:
    """Measure the regions of labels with background 0, as segment() does.

    Parameters
    ----------
    labels
        A plane of any integer type, such as labels of scikit-image, or of segment() after changes. A
        region is all pixels of one value above 0, connected or not; 0 is the background.
    image
        The brightness, of the same shape.

    Returns
    -------
    Structured array as the table of segment(), in ascending order of the labels, whose numbers may
    have gaps: the column label has the values. The column score is NaN.

    Raises
    ------
    TypeError
        For an array of another type.
    ValueError
        For labels below 0 or above 2147483647, for several planes, and for an image of another shape
        than labels.
    """
    narrow = labels_from_one(labels)
    require_plane(labels, "labels")
    image = image_of(image)
    if image.shape != labels.shape:
        raise ValueError(f"image has the shape {image.shape}, labels have {labels.shape}")
    return _orva.measure_labels(narrow, image)
