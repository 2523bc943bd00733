"""Stacks of two channels, three slices and two times in every order of axes.

make_hyperstacks.py IMAGE.pgm FOLDER
Prints the names of the files."""

import itertools
import pathlib
import sys

import numpy as np
import tifffile
from PIL import Image

image = np.asarray(Image.open(sys.argv[1])).astype(np.uint16) * 100
folder = pathlib.Path(sys.argv[2])
SIZES = {"T": 2, "Z": 3, "C": 2}

# No two planes are alike.
planes = np.empty((2, 3, 2, *image.shape), np.uint16)
for t, z, c in np.ndindex(2, 3, 2):
    planes[t, z, c] = np.roll(image, 9 * t + 5 * z, axis=c) // (1 + 2 * z) + 10 * c

for order in itertools.permutations("TZC"):
    axes = "".join(order)
    name = f"{axes}.ome.tif"
    tifffile.imwrite(
        folder / name,
        planes.transpose(*("TZC".index(axis) for axis in axes), 3, 4),
        photometric="minisblack",
        metadata={
            "axes": f"{axes}YX",
            "Channel": {"Name": ["DAPI", "tubulin"]},
            "PhysicalSizeX": 325.0,
            "PhysicalSizeXUnit": "nm",
            "PhysicalSizeY": 0.325,
        },
    )
    print(name)
tifffile.imwrite(
    folder / "hyperstack.tif",
    planes,
    imagej=True,
    resolution=(3.2, 3.2),
    metadata={"axes": "TZCYX", "unit": "\\u00B5m"},
)
print("hyperstack.tif")
