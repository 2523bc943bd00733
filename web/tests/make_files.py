"""Image files of several kinds from a PGM file: make_files.py IMAGE.pgm FOLDER"""

import pathlib
import sys

import numpy as np
import tifffile
from PIL import Image

image = np.asarray(Image.open(sys.argv[1]))[:256, :256]
folder = pathlib.Path(sys.argv[2])


def write(name, pixels, **options):
    tifffile.imwrite(folder / name, pixels, **options)


wide = image.astype(np.uint16) * 200 + 17
write("uint8.tif", image, compression="zlib", predictor=True)
write("uint16.tif", wide, bigtiff=True, tile=(64, 64))
write("float32.tif", wide / np.float32(3), photometric="minisblack", rowsperstrip=10)
write("white.tif", 255 - image, photometric="miniswhite")
colour = np.stack([image // 3, image // 2, image], axis=-1)
write("colour.tif", colour, photometric="rgb", resolution=(4, 4), resolutionunit="centimeter")
Image.fromarray(colour).save(folder / "colour.png")

# Three slices, of which each shows a third of the image, and a channel of another part of it.
slices = np.stack([np.roll(wide, 0, 0)] * 3)
for z in range(3):
    slices[z, :, np.arange(256) % 3 != z] //= 2
stack = np.stack([slices, slices[:, ::-1, :]], axis=1)  # z, c, y, x
metadata = {"axes": "ZCYX", "unit": "um"}
write("imagej.tif", stack, imagej=True, resolution=(1 / 0.325, 1 / 0.325), metadata=metadata)
write(
    "stack.ome.tif",
    stack.swapaxes(0, 1),
    metadata={
        "axes": "CZYX",
        "Channel": {"Name": ["nuclei", "other"]},
        "PhysicalSizeX": 0.5,
        "PhysicalSizeY": 0.5,
    },
)
Image.open(sys.argv[1]).save(folder / "picture.jpg", quality=95)
