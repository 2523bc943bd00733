#!/usr/bin/python3
"""Compares circular voting with other detectors of round objects: mean F1 and time per image.

The folders have the layout that scripts/score expects, and scoring is that of scripts/scoring.py. All
methods are given each image's polarity and median radius. The orva command runs with its defaults.
Every other method runs with each setting of a small grid, and the setting with the best mean F1 over
these very images is reported: an upper bound, as real settings cannot be tuned on the truth. The second
F1 takes for each image the setting that is best on the other images.

Times are CPU times on one thread: the median of 7 calls per image, then the median over the images.
For orva it is the time of the command minus that of the command on a single pixel, which includes
reading the image and printing the table. For the others it is that of the call on an image in memory.
"""

import argparse
import itertools
import os
import pathlib
import subprocess
import sys
import tempfile
import time

for variable in ("OMP_NUM_THREADS", "OPENBLAS_NUM_THREADS", "MKL_NUM_THREADS"):
    os.environ[variable] = "1"

import cv2
import numpy as np
import scipy.ndimage
import skimage.feature

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "benchmarks"), str(ROOT / "scripts")]
sys.dont_write_bytecode = True
import report
import scoring as score

REPETITIONS = 7
HEADER = ["method", "mean F1", "F1 with settings of the others", "median ms per image", "setting"]


class Sample:
    """An image with objects, their true centers, and what every method is given."""

    def __init__(self, entry, path, truth):
        self.entry, self.path, self.truth = entry, path, truth
        self.radius = float(entry["median_radius"])
        self.pixels = cv2.imread(str(path), cv2.IMREAD_GRAYSCALE)
        # For detectors of bright objects: images with dark objects are inverted.
        self.bright = 255 - self.pixels if entry["polarity"] == "dark" else self.pixels

    def f1(self, centers):
        return score.f1(*score.count(np.asarray(centers, float).reshape(-1, 2), self.truth))


def samples_of(folders):
    for folder in folders:
        for entry, path, truth in score.entries(folder):
            if truth is not None and len(truth) > 0:
                yield Sample(entry, path, truth)


def blurred(pixels, sigma):
    return cv2.GaussianBlur(pixels, (0, 0), sigma) if sigma > 0 else pixels


def circles(sample, mode, blur, dp, min_distance, min_radius, max_radius, canny, votes):
    """The Hough transform for circles, in either mode."""
    found = cv2.HoughCircles(
        blurred(sample.pixels, blur * sample.radius), mode, dp, max(1, min_distance * sample.radius),
        param1=canny, param2=votes, minRadius=int(min_radius * sample.radius),
        maxRadius=int(max_radius * sample.radius + 0.5))
    return [] if found is None else found.reshape(-1, found.shape[-1])[:, :2]


def blobs(sample, min_sigma, max_sigma, threshold, overlap):
    """Maxima of the Laplacian of Gaussian over scales."""
    sigma = sample.radius / np.sqrt(2)
    found = skimage.feature.blob_log(
        sample.bright / 255.0, min_sigma=min_sigma * sigma, max_sigma=max_sigma * sigma,
        num_sigma=1 if min_sigma == max_sigma else 4, threshold=None, threshold_rel=threshold,
        overlap=overlap)
    return found[:, 1::-1]


def peaks(sample, blur, smooth, min_distance, min_depth):
    """Peaks of the distance to the background of Otsu's threshold."""
    _, mask = cv2.threshold(blurred(sample.bright, blur * sample.radius), 0, 255,
                            cv2.THRESH_BINARY | cv2.THRESH_OTSU)
    depth = cv2.distanceTransform(mask, cv2.DIST_L2, 5)
    if smooth > 0:
        depth = scipy.ndimage.gaussian_filter(depth, smooth * sample.radius)
    found = skimage.feature.peak_local_max(
        depth, min_distance=max(1, int(min_distance * sample.radius)),
        threshold_abs=min_depth * sample.radius, exclude_border=False)
    return found[:, ::-1]


# Grids around the best settings of wider ones; a dp of 2 was never better.
METHODS = {
    "HoughCircles, HOUGH_GRADIENT": (circles, {
        "mode": [cv2.HOUGH_GRADIENT], "dp": [1], "blur": [0.3, 0.45], "min_distance": [1.0, 1.4, 1.7],
        "min_radius": [0.5, 0.65, 0.8], "max_radius": [1.0, 1.1, 1.2, 1.3], "canny": [10, 15, 25],
        "votes": [7, 9, 12]}),
    "HoughCircles, HOUGH_GRADIENT_ALT": (circles, {
        "mode": [cv2.HOUGH_GRADIENT_ALT], "dp": [1], "blur": [0, 0.15], "min_distance": [0.3, 0.5, 0.7],
        "min_radius": [0.5], "max_radius": [1.5, 2.0, 2.5], "canny": [15, 30, 60],
        "votes": [0.2, 0.3, 0.4]}),
    "skimage blob_log": (blobs, {
        "min_sigma": [0.6, 0.8, 1.0], "max_sigma": [1.0, 1.2], "threshold": [0.05, 0.1, 0.2],
        "overlap": [0.1, 0.2, 0.5]}),
    "Otsu, distance transform, peaks": (peaks, {
        "blur": [0, 0.05, 0.1, 0.2], "smooth": [0, 0.1, 0.2], "min_distance": [0.4, 0.6, 0.8, 1.0],
        "min_depth": [0, 0.1, 0.25, 0.4]}),
}


def seconds(call):
    """The median CPU time of a call in this process."""
    times = []
    for _ in range(REPETITIONS):
        start = time.process_time()
        call()
        times.append(time.process_time() - start)
    return float(np.median(times))


def command_seconds(command):
    """The median CPU time of the command, a process of its own."""
    times = []
    for _ in range(REPETITIONS):
        child = subprocess.Popen(command, stdout=subprocess.DEVNULL)
        _, status, usage = os.wait4(child.pid, 0)
        child.returncode = os.waitstatus_to_exitcode(status)
        if child.returncode != 0:
            sys.exit(f"{' '.join(command)}: status {child.returncode}")
        times.append(usage.ru_utime + usage.ru_stime)
    return float(np.median(times))


def voting_row(orva, samples):
    f1 = np.mean([s.f1(score.vote(orva, s.path, s.entry, [])) for s in samples])
    with tempfile.NamedTemporaryFile(suffix=".pgm") as pixel:
        pixel.write(b"P5\n1 1\n255\n\0")
        pixel.flush()
        start_up = command_seconds([orva, "vote", pixel.name])
    times = [command_seconds(score.command_for(orva, s.path, s.entry)) - start_up for s in samples]
    return ["orva vote", f"{f1:.3f}", "", f"{1000 * np.median(times):.1f}", "defaults"]


def peer_row(name, samples):
    detect, grid = METHODS[name]
    settings = [dict(zip(grid, values)) for values in itertools.product(*grid.values())]
    f1s = np.array([[s.f1(detect(s, **setting)) for s in samples] for setting in settings])
    best = int(np.argmax(f1s.mean(axis=1)))
    setting = settings[best]
    others = [f1s[np.argmax(np.delete(f1s, i, axis=1).mean(axis=1)), i]
              for i in range(len(samples))]
    times = [seconds(lambda s=s: detect(s, **setting)) for s in samples]
    shown = " ".join(f"{key} {value:g}" for key, value in setting.items() if key != "mode")
    return [name, f"{f1s[best].mean():.3f}", f"{np.mean(others):.3f}",
            f"{1000 * np.median(times):.1f}", shown]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--orva", required=True, help="the orva command")
    parser.add_argument("folders", nargs="*", type=pathlib.Path, help="default: data")
    parser.add_argument("--output", type=pathlib.Path, required=True, help="CSV file to write")
    parser.add_argument("--write", action="store_true", help="also update docs/performance.md and its table")
    arguments = parser.parse_args()
    cv2.setNumThreads(1)

    samples = list(samples_of(arguments.folders or [ROOT / "data"]))
    rows = [voting_row(arguments.orva, samples)]
    print(*rows[-1], sep=" | ", flush=True)
    for name in METHODS:
        rows.append(peer_row(name, samples))
        print(*rows[-1], sep=" | ", flush=True)
    report.write_csv(arguments.output, [HEADER, *rows])
    print(f"{len(samples)} images; {arguments.output}")
    if arguments.write:
        report.publish("detectors", [HEADER, *rows], report.table(HEADER, rows))


if __name__ == "__main__":
    main()
