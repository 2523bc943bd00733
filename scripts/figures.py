"""What the scripts that make the pictures of the guides share."""

import importlib.machinery
import importlib.util
import pathlib

import cv2
import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt
import numpy as np
import PIL.Image

ROOT = pathlib.Path(__file__).resolve().parent.parent
PICTURES = ROOT / "docs/images"

BLUE, RED, ORANGE = "deepskyblue", "red", "orange"  # right, wrong, true
plt.rcParams["figure.dpi"] = 80


def script(name):
    """A program of this folder as a module."""
    path = str(ROOT / "scripts" / name)
    loader = importlib.machinery.SourceFileLoader(name, path)
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(name, loader))
    loader.exec_module(module)
    return module


def save(figure, name):
    """With 256 colours, for small files."""
    figure.canvas.draw()
    picture = PIL.Image.fromarray(np.asarray(figure.canvas.buffer_rgba())).convert("RGB")
    few = picture.quantize(256, PIL.Image.Quantize.MAXCOVERAGE, kmeans=1, dither=PIL.Image.Dither.NONE)
    few.save(PICTURES / name, optimize=True)
    plt.close(figure)
    print(PICTURES / name, flush=True)


def pixels_as_shown(path, polarity):
    """Dim objects of fluorescence are made visible."""
    pixels = cv2.imread(str(path), cv2.IMREAD_GRAYSCALE).astype(float)
    return np.sqrt(pixels) if polarity == "bright" else pixels


def show(axes, pixels, part, title):
    x, y, width, height = part
    shown = pixels[y : y + height, x : x + width]
    axes.imshow(pixels, cmap="gray", vmin=shown.min(), vmax=shown.max(), interpolation="nearest")
    axes.set(xlim=(x - 0.5, x + width - 0.5), ylim=(y + height - 0.5, y - 0.5), xticks=[], yticks=[])
    axes.set_title(title, fontsize=11)
