"""Comparison of centers and regions with the truth of a folder of images, for scripts and benchmarks.

The folder holds index.csv (columns name, polarity, objects, median_radius, and optionally kind),
images/NAME.pgm or images/NAME.png, truth/NAME.csv (columns x, y, radius), and optionally labels/NAME.png,
a label image of the true objects.

A center is a hit within max(3, radius / 2) pixels of a true object, one to one. Objects below half the
median radius count neither as hits nor as misses.

A region is a hit if its IoU with a true object, the area of their intersection over that of their union,
is above a limit of 0.5 or more. This is one to one without further ado: more than half of each of the two
belongs to the other, so neither has as much in common with a third. All true objects count.
"""

import csv
import io
import resource
import subprocess
import sys

import numpy as np
from scipy.optimize import linear_sum_assignment

USUAL_FACTOR = 1.4
SUFFIXES = (".pgm", ".png")


def read_table(text, columns):
    rows = [[float(row[c]) for c in columns] for row in csv.DictReader(io.StringIO(text))]
    return np.array(rows).reshape(-1, len(columns))


def matches(centers, truth):
    """Pairs (center, true object) of hits, and which true objects count."""
    counted = truth[:, 2] >= np.median(truth[:, 2]) / 2 if len(truth) else np.zeros(0, bool)
    if len(truth) == 0 or len(centers) == 0:
        return np.zeros(0, int), np.zeros(0, int), counted
    distance = np.hypot(*(centers[:, None, :2] - truth[None, :, :2]).transpose(2, 0, 1))
    allowed = distance <= np.maximum(3, truth[:, 2] / 2)
    rows, columns = linear_sum_assignment(np.where(allowed, distance, 1e6))
    kept = allowed[rows, columns]
    return rows[kept], columns[kept], counted


def count(centers, truth):
    """Hits, false alarms and misses."""
    rows, columns, counted = matches(centers, truth)
    hits = int(counted[columns].sum())
    return hits, len(centers) - len(rows), int(counted.sum()) - hits


def overlaps(labels, truth):
    """Rows (label, label of a true object) of those that share pixels, and the IoU of each row.

    Both images have 0 for the background; labels need not be consecutive.
    """
    if labels.shape != truth.shape:
        raise ValueError(f"label images of different shapes, {labels.shape} and {truth.shape}")
    both = (labels > 0) & (truth > 0)
    stride = int(truth.max(initial=0)) + 1
    codes, shared = np.unique(labels[both].astype(np.int64) * stride + truth[both], return_counts=True)
    pairs = np.stack(np.divmod(codes, stride), 1)
    areas = []
    for image, column in zip((labels, truth), pairs.T):
        values, counts = np.unique(image, return_counts=True)
        areas.append(counts[np.searchsorted(values, column)])
    return pairs, shared / (areas[0] + areas[1] - shared)


def region_matches(labels, truth, limit=0.5):
    """Rows (label, label of a true object) of hits."""
    if limit < 0.5:
        raise ValueError(f"at an IoU of {limit}, two regions may match one object")
    pairs, iou = overlaps(labels, truth)
    return pairs[iou > limit]


def region_count(image):
    return np.count_nonzero(np.unique(image) > 0)


def count_regions(labels, truth, limit=0.5):
    """Hits, false alarms and misses."""
    hits = len(region_matches(labels, truth, limit))
    return hits, region_count(labels) - hits, region_count(truth) - hits


def f1(hits, alarms, misses):
    """1 where there is nothing to find and nothing is found."""
    total = 2 * hits + alarms + misses
    return 2 * hits / total if total else 1.0


def precision(hits, alarms, misses):
    return hits / max(1, hits + alarms)


def recall(hits, alarms, misses):
    return hits / max(1, hits + misses)


def image_of(folder, name):
    """The file of an image; NAME.pgm where there is none."""
    files = [folder / "images" / f"{name}{suffix}" for suffix in SUFFIXES]
    return next((f for f in files if f.exists()), files[0])


def entries(folder):
    """For each image, its row of index.csv, its file, and its truth or None if there is no table.

    The row's kind is the folder's name where the table has no such column.
    """
    with open(folder / "index.csv", encoding="utf-8") as index:
        rows = list(csv.DictReader(index))
    for row in rows:
        row["kind"] = row.get("kind") or folder.resolve().name
        table = folder / "truth" / f"{row['name']}.csv"
        truth = None
        if table.exists():
            truth = read_table(table.read_text(encoding="utf-8"), ["x", "y", "radius"])
        yield row, image_of(folder, row["name"]), truth


def read_labels(path):
    """A label image: PNG or TIFF, of 8, 16 or 32 bits."""
    import PIL.Image  # no other function needs it

    with PIL.Image.open(path) as file:
        return np.asarray(file).astype(np.int32)


def true_labels(folder, name):
    """The label image of the true objects; None if there is none."""
    path = folder / "labels" / f"{name}.png"
    return read_labels(path) if path.exists() else None


def largest_radius(entry, factor=USUAL_FACTOR):
    """The max_radius for an image's median radius, in whole pixels; None if the radius is unknown."""
    radius = entry["median_radius"]
    return int(factor * float(radius) + 0.5) if radius else None


def command_for(orva, image, entry, options=()):
    radius = largest_radius(entry)
    chosen = [] if radius is None else ["--max-radius", str(radius)]
    return [orva, "vote", str(image), "--polarity", entry["polarity"], *chosen, *options]


def output(command):
    """What a command prints, and its CPU time in seconds."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    if result.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))}: status {result.returncode}: {result.stderr.strip()}")
    return result.stdout, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def vote(orva, image, entry, options):
    return read_table(output(command_for(orva, image, entry, options))[0], ["x", "y"])
