#!/usr/bin/python3
"""Time per pixel of the key operations from 256 to 8192 pixels square, and the memory of voting.

Writes a table, and with --picture a chart. Memory is what CircularVoting::compute adds to the peak of
its process. Two images of one size with different numbers of voting points give two equations for the
bytes per point and per pixel.
"""

import argparse
import pathlib
import subprocess

import report

OPERATIONS = ["derivative", "regions", "chamfer", "voting"]
SIDES = [256, 512, 1024, 2048, 4096, 8192]
MEMORY_SIDE = 4096
CELLS = [50, 200]  # distance between discs in pixels


def call(program, *arguments):
    return subprocess.run([program, *map(str, arguments)], check=True, capture_output=True,
                          text=True).stdout.split()


def nanoseconds_per_pixel(program, operation, side):
    # More often for small images: the first calls of a process are slow, as its pages are new.
    repetitions = 3 if side > 2048 else 7 * (2048 // side) ** 2
    milliseconds = float(call(program, "time", operation, side, repetitions)[0])
    return 1e6 * milliseconds / side**2


def memory(program):
    """Bytes per pixel, bytes per voting point, and the (points, bytes) that they follow from."""
    runs = []
    for cell in CELLS:
        points, before, peak = map(int, call(program, "memory", MEMORY_SIDE, cell))
        runs.append((points, peak - before))
    (points1, bytes1), (points2, bytes2) = runs
    per_point = (bytes1 - bytes2) / (points1 - points2)
    per_pixel = (bytes1 - per_point * points1) / MEMORY_SIDE**2
    return per_pixel, per_point, runs


def draw(picture, rows):
    import matplotlib

    matplotlib.use("Agg")
    from matplotlib import pyplot

    figure, axes = pyplot.subplots(figsize=(7, 4.2), layout="constrained")
    for operation, marker in zip(OPERATIONS, "os^D"):
        figures = [float(row[1 + OPERATIONS.index(operation)]) for row in rows]
        axes.plot(SIDES, figures, marker=marker, label=operation)
    axes.set_xscale("log", base=2)
    axes.set_yscale("log")
    axes.set_xticks(SIDES, [str(side) for side in SIDES])
    axes.yaxis.set_major_formatter("{x:g}")
    axes.set_ylim(bottom=0.3)
    axes.set_xlabel("side of the square image, pixels")
    axes.set_ylabel("time per pixel, nanoseconds")
    axes.grid(True, which="both", alpha=0.3)
    axes.legend(loc="center left", bbox_to_anchor=(1, 0.5), frameon=False)
    figure.savefig(picture, dpi=110)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="orva_single_call")
    parser.add_argument("--output", type=pathlib.Path, required=True, help="CSV file to write")
    parser.add_argument("--picture", type=pathlib.Path, help="PNG file to draw the chart to")
    parser.add_argument("--write", action="store_true", help="also update docs/performance.md and its table")
    arguments = parser.parse_args()

    rows = []
    print("%8s" % "side" + "".join("%12s" % name for name in OPERATIONS) + "   ns per pixel")
    for side in SIDES:
        row = [f"{nanoseconds_per_pixel(arguments.program, name, side):.3g}" for name in OPERATIONS]
        rows.append([side, *row])
        print("%8d" % side + "".join("%12s" % figure for figure in row), flush=True)
    per_pixel, per_point, runs = memory(arguments.program)
    text = (f"CircularVoting::compute on {MEMORY_SIDE} x {MEMORY_SIDE} bytes: "
            f"{per_pixel:.1f} bytes per pixel and {per_point:.1f} per voting point, from "
            + " and ".join(f"{size / 1e6:.0f} MB with {points} points" for points, size in runs))
    print(text)

    full = [["side", *OPERATIONS], *rows]
    report.write_csv(arguments.output, full)
    print(arguments.output)
    if arguments.picture:
        draw(arguments.picture, rows)
        print(arguments.picture)
    if arguments.write:
        report.publish("growth", full, f"{text}.\n")


if __name__ == "__main__":
    main()
