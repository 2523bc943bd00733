"""Comparison of centers with the truth tables of a folder of images, for scripts and benchmarks.

The folder holds index.csv (columns name, polarity, objects, median_radius), images/NAME.pgm and
truth/NAME.csv (columns x, y, radius). A center is a hit within max(3, radius / 2) pixels of a true
object, one to one. Objects below half the median radius count neither as hits nor as misses.
"""

import csv
import io
import subprocess
import sys

import numpy as np
from scipy.optimize import linear_sum_assignment

USUAL_FACTOR = 1.4


def read_table(text, columns):
    rows = [[float(row[c]) for c in columns] for row in csv.DictReader(io.StringIO(text))]
    return np.array(rows).reshape(-1, len(columns))


def count(centers, truth):
    """Hits, false alarms and misses."""
    if len(truth) == 0:
        return 0, len(centers), 0
    counted = truth[:, 2] >= np.median(truth[:, 2]) / 2
    if len(centers) == 0:
        return 0, 0, int(counted.sum())
    distance = np.hypot(*(centers[:, None, :2] - truth[None, :, :2]).transpose(2, 0, 1))
    allowed = distance <= np.maximum(3, truth[:, 2] / 2)
    rows, columns = linear_sum_assignment(np.where(allowed, distance, 1e6))
    matched = columns[allowed[rows, columns]]
    hits = int(counted[matched].sum())
    return hits, len(centers) - len(matched), int(counted.sum()) - hits


def f1(hits, alarms, misses):
    return 2 * hits / max(1, 2 * hits + alarms + misses)


def entries(folder):
    """For each image, its row of index.csv, its file, and its truth or None if there is no table."""
    with open(folder / "index.csv", encoding="utf-8") as index:
        rows = list(csv.DictReader(index))
    for row in rows:
        table = folder / "truth" / f"{row['name']}.csv"
        truth = None
        if table.exists():
            truth = read_table(table.read_text(encoding="utf-8"), ["x", "y", "radius"])
        yield row, folder / "images" / f"{row['name']}.pgm", truth


def largest_radius(entry, factor=USUAL_FACTOR):
    """The max_radius for an image's median radius, in whole pixels; None if the radius is unknown."""
    radius = entry["median_radius"]
    return int(factor * float(radius) + 0.5) if radius else None


def command_for(orva, image, entry, options=()):
    radius = largest_radius(entry)
    chosen = [] if radius is None else ["--max-radius", str(radius)]
    return [orva, "vote", str(image), "--polarity", entry["polarity"], *chosen, *options]


def vote(orva, image, entry, options):
    command = command_for(orva, image, entry, options)
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    if result.returncode != 0:
        sys.exit(f"{image}: status {result.returncode}: {result.stderr.strip()}")
    return read_table(result.stdout, ["x", "y"])
