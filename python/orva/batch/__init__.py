"""Objects in many images, on the processors of this machine or on a cluster, and in very large ones.

``python -m orva.batch --help`` describes the command, which needs dask and distributed.
"""

from ._object_tiles import find_objects_in_tiles
from ._tiles import find_centers_in_tiles

__all__ = ["find_centers_in_tiles", "find_objects_in_tiles"]
