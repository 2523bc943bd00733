"""Image analysis for microscope images.

orva finds round objects, such as cell nuclei, and measures and filters images. find_objects() needs no
settings; segment() also labels and measures their pixels; find_centers() is the bare voting with all
of its settings.

Images are NumPy arrays of any real type and byte order. bool (as 0 and 255), int8, uint16 and
float16 are widened; 64-bit integers are taken where their values fit 32 bits, and float64 is rounded
to float32. Masked arrays are refused: only their owner knows what masked pixels are. The axes are
(t, c, z, y, x), with x varying fastest; leading axes may be omitted: (y, x) is a plane, (z, y, x) a
stack, (c, z, y, x) a stack of several channels. Colour is (y, x, 3) or (y, x, 4) with
channel_axis=-1, or becomes grey with luminance(). A result has the axes of the input. Lengths and
coordinates are in pixels; coordinates start at 0.

Masks are arrays of bool, or of uint8 with only the values 0 and 255. Labels are int16: the pixels of
region k have the value k = 0, 1, 2, ..., and the background is -1. Labels in the
numbering of scikit-image, with the background 0 and regions from 1, are int32: segment() returns
them, measure_labels() measures them, and label() and measure() use them with background=0.

All functions work on a copy of the pixels and release the global interpreter lock while they run.
Lack of memory inside the library ends the process with a message and status 1: leave enough memory
free, or use a separate process.
"""

from ._arrays import luminance
from ._files import read, write
from ._filters import compute_threshold, features, gaussian, gradient, laplacian, smooth, threshold
from ._image import Image
from ._masks import dilate, edge, erode, fill_holes
from ._objects import SettingsEstimate, estimate_settings, find_objects
from ._orva import __version__
from ._regions import chamfer, convex_hull, label, measure, propagate
from ._segment import measure_labels, segment
from ._voting import find_centers, vote_field

__all__ = [
    "Image",
    "SettingsEstimate",
    "__version__",
    "chamfer",
    "compute_threshold",
    "convex_hull",
    "dilate",
    "edge",
    "erode",
    "estimate_settings",
    "features",
    "fill_holes",
    "find_centers",
    "find_objects",
    "gaussian",
    "gradient",
    "label",
    "laplacian",
    "luminance",
    "measure",
    "measure_labels",
    "propagate",
    "read",
    "segment",
    "smooth",
    "threshold",
    "vote_field",
    "write",
]
