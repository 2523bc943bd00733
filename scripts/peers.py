"""Other methods that find objects and are told nothing about the image, for scripts/score.

Each takes the grey levels of an image. Those of PEERS return centers (x, y), those of REGION_PEERS a label
image. They take the smaller part of Otsu's threshold for the objects where they need a polarity. Their
settings have one value for all images, that of a small grid with the best mean F1 on the images of
docs/detect.md and docs/segment.md or a part of them. This favours them, as the settings of an unknown
image cannot be tuned on its truth.
"""

import os

for variable in ("OMP_NUM_THREADS", "OPENBLAS_NUM_THREADS", "MKL_NUM_THREADS"):
    os.environ[variable] = "1"

import numpy as np
import scipy.ndimage

MISSING = []
try:
    import cv2

    cv2.setNumThreads(1)
except ImportError:
    cv2 = None
    MISSING.append("OpenCV (Debian: python3-opencv)")
try:
    import skimage.feature
    import skimage.segmentation
except ImportError:
    skimage = None
    MISSING.append("scikit-image (Debian: python3-skimage)")

NONE = np.zeros((0, 2))
MIN_AREA = 20  # of a component, in pixels


def read(path):
    """The grey levels of a PGM or PNG image, 8 bits per pixel."""
    pixels = cv2.imread(str(path), cv2.IMREAD_GRAYSCALE)
    if pixels is None:
        raise SystemExit(f"{path}: OpenCV cannot read it")
    return pixels


def foreground(pixels, blur=1.0):
    """The smaller side of Otsu's threshold."""
    smooth = cv2.GaussianBlur(pixels, (0, 0), blur) if blur > 0 else pixels
    threshold, _ = cv2.threshold(smooth, 0, 255, cv2.THRESH_BINARY + cv2.THRESH_OTSU)
    mask = smooth > threshold
    return ~mask if mask.mean() > 0.5 else mask


def without_specks(labels):
    return np.where(np.bincount(labels.ravel())[labels] < MIN_AREA, 0, labels)


def components(mask):
    """A label image of the connected components, without specks."""
    return without_specks(scipy.ndimage.label(mask)[0])


def centers_of(labels):
    numbers = np.unique(labels[labels > 0])
    if len(numbers) == 0:
        return NONE
    return np.array(scipy.ndimage.center_of_mass(labels > 0, labels, numbers))[:, ::-1]


def otsu_regions(pixels):
    return components(foreground(pixels, 0))


def otsu_components(pixels):
    return centers_of(components(foreground(pixels)))


def distance_peaks(mask, smooth=0.25, distance=0.7):
    """Peaks (row, column) of the distance to the background, and the distance.

    It is smoothed, and the peaks are kept apart, by shares of the median component's radius.
    """
    areas = np.bincount(components(mask).ravel())[1:]
    areas = areas[areas > 0]
    if len(areas) == 0:
        return np.zeros((0, 2), int), np.zeros(mask.shape)
    radius = np.sqrt(np.median(areas) / np.pi)
    depth = scipy.ndimage.distance_transform_edt(mask)
    depth = scipy.ndimage.gaussian_filter(depth, max(0.5, smooth * radius))
    peaks = skimage.feature.peak_local_max(depth, min_distance=max(1, int(distance * radius)),
                                           labels=scipy.ndimage.label(mask)[0], exclude_border=False)
    return peaks, depth


def otsu_peaks(pixels):
    return distance_peaks(foreground(pixels))[0][:, ::-1]


def divided(mask, depth, peaks):
    """A label image of the mask, by a watershed of the depth from its peaks."""
    markers = np.zeros(mask.shape, int)
    markers[tuple(peaks.T)] = range(1, len(peaks) + 1)
    return skimage.segmentation.watershed(-depth, markers, mask=mask)


def otsu_watershed(pixels, distance=15):
    """The usual recipe: peaks of the distance to the background, at least 15 pixels apart."""
    mask = foreground(pixels)
    depth = scipy.ndimage.distance_transform_edt(mask)
    peaks = skimage.feature.peak_local_max(depth, min_distance=distance,
                                           labels=scipy.ndimage.label(mask)[0], exclude_border=False)
    return divided(mask, depth, peaks)


def adaptive_watershed(pixels):
    """Peaks that are kept apart according to the size of the components; no specks."""
    mask = foreground(pixels, 0)
    peaks, depth = distance_peaks(mask, smooth=0.4)
    return without_specks(divided(mask, depth, peaks))


def blobs(pixels, min_sigma=2, max_sigma=36, threshold=None, relative=0.2, overlap=0.5):
    """Maxima of the Laplacian of Gaussian over a wide range of scales, radii of 3 to 50 pixels."""
    mask = foreground(pixels)
    is_bright = mask.any() and pixels[mask].mean() > pixels.mean()
    bright = (pixels if is_bright else 255 - pixels) / 255.0
    found = skimage.feature.blob_log(bright, min_sigma=min_sigma, max_sigma=max_sigma, num_sigma=12,
                                     threshold=threshold, threshold_rel=relative, overlap=overlap,
                                     exclude_border=False)
    return found[:, 1::-1]


def circles(pixels, dp=1.5, median=5, distance=10, canny=60, roundness=0.35):
    """The Hough transform for circles of 4 to 60 pixels; its older mode, HOUGH_GRADIENT, finds fewer."""
    found = cv2.HoughCircles(cv2.medianBlur(pixels, median), cv2.HOUGH_GRADIENT_ALT, dp, distance,
                             param1=canny, param2=roundness, minRadius=4, maxRadius=60)
    return NONE if found is None else found.reshape(-1, found.shape[-1])[:, :2]


PEERS = {
    "Otsu components": otsu_components,
    "Otsu distance peaks": otsu_peaks,
    "blob_log": blobs,
    "HoughCircles": circles,
}

REGION_PEERS = {
    "Otsu components": otsu_regions,
    "Otsu with watershed": otsu_watershed,
    "adaptive watershed": adaptive_watershed,
}
