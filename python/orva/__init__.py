"""Image analysis for microscope images.

orva finds the centers of round objects, such as cell nuclei, and measures and filters images.

Images are NumPy arrays of the types uint8, int16, int32, uint32 and float32; others are not
converted but refused with a TypeError. Their axes are (t, c, z, y, x), x fastest, of which the first
may be missing: (y, x) is a plane, (z, y, x) a stack, (c, z, y, x) a stack of several channels. A
result has the axes of the input. Lengths are in pixels, and so are coordinates, from 0.

Masks are arrays of bool, or of uint8 with the values 0 and 255 alone. Labels are int16: the pixels of
region k carry k = 0, 1, 2, ..., and the background -1.

All functions let other threads run while they work, on a copy of the pixels. A lack of memory inside
the library ends the process with a message and status 1: keep some to spare, or work in a process
of its own.
"""

from ._files import read, write
from ._filters import compute_threshold, features, gaussian, gradient, laplacian, smooth, threshold
from ._masks import dilate, edge, erode, fill_holes
from ._orva import __version__
from ._regions import chamfer, convex_hull, label, measure, propagate
from ._voting import find_centers, vote_field

__all__ = [
    "__version__",
    "chamfer",
    "compute_threshold",
    "convex_hull",
    "dilate",
    "edge",
    "erode",
    "features",
    "fill_holes",
    "find_centers",
    "gaussian",
    "gradient",
    "label",
    "laplacian",
    "measure",
    "propagate",
    "read",
    "smooth",
    "threshold",
    "vote_field",
    "write",
]
