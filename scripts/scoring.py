"""Comparison of centers with the truth tables of a folder of images, for scripts and benchmarks.

The folder holds index.csv (columns name, polarity, objects, median_radius, and optionally kind),
images/NAME.pgm or images/NAME.png, and truth/NAME.csv (columns x, y, radius). A center is a hit within
max(3, radius / 2) pixels of a true object, one to one. Objects below half the median radius count neither
as hits nor as misses.
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


def f1(hits, alarms, misses):
    return 2 * hits / max(1, 2 * hits + alarms + misses)


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
