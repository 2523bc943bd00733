"""Results of the Python package for images and options in JSON on standard input, with every number exact.

Each job is {"file", "width", "height", "type", "calls": [[function, options], ...]}; the pixels are in
the file. The answer to a call is a list of rows, or {"labels": checksum, "rows"} for segment.
"""

import json
import math
import sys
import zlib

import numpy as np

import orva

# As the command reads samples from files.
PIXELS = {"uint8": np.uint8, "uint16": np.int32, "int16": np.int16, "float32": np.float32}


def exact(value):
    """A number that JSON keeps, or its name."""
    number = value.item()
    return number if math.isfinite(number) else str(number)


def rows_of(table):
    return [[exact(row[name]) for name in table.dtype.names] for row in table]


def answer(image, function, options):
    if "radius" in options and isinstance(options["radius"], list):
        options["radius"] = tuple(options["radius"])
    if function == "estimate_settings":
        e = orva.estimate_settings(image)
        return [[s.radius, s.polarity, s.confidence] for s in (e, e.runner_up)]
    if function == "segment":
        labels, table = orva.segment(image, **options)
        return {"labels": zlib.crc32(labels.tobytes()), "rows": rows_of(table)}
    return rows_of(getattr(orva, function)(image, **options))


def main():
    answers = []
    for job in json.load(sys.stdin):
        pixels = np.fromfile(job["file"], dtype=job["type"]).reshape(job["height"], job["width"])
        image = pixels.astype(PIXELS[job["type"]])
        answers.append([answer(image, function, options) for function, options in job["calls"]])
    json.dump(answers, sys.stdout)


main()
