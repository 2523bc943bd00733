#!/usr/bin/python3
"""Time per pixel of the key operations from 256 to 8192 pixels square, and the memory of voting.

Writes a table, and with --picture a chart. The memory is what CircularVoting::compute adds to the
peak of a process of its own, on two pictures of one size that differ in their voting points: the
part per point and the part per pixel solve two equations.
"""

import argparse
import csv
import pathlib
import subprocess

import report

OPERATIONS = ["derivative", "regions", "chamfer", "voting"]
SIDES = [256, 512, 1024, 2048, 4096, 8192]
MEMORY_SIDE = 4096
CELLS = [50, 200]  # pixels between discs


def call(program, *words):
    return subprocess.run([program, *map(str, words)], check=True, capture_output=True,
                          text=True).stdout.split()


def nanoseconds_a_pixel(program, operation, side):
    # Small images more often: a process is slow at first, while its memory is new.
    repetitions = 3 if side > 2048 else 7 * (2048 // side) ** 2
    milliseconds = float(call(program, "time", operation, side, repetitions)[0])
    return 1e6 * milliseconds / side**2


def memory(program):
    """Bytes per pixel and per voting point, and what they were solved from."""
    runs = []
    for cell in CELLS:
        points, before, peak = map(int, call(program, "memory", MEMORY_SIDE, cell))
        runs.append((points, peak - before))
    (points1, bytes1), (points2, bytes2) = runs
    a_point = (bytes1 - bytes2) / (points1 - points2)
    a_pixel = (bytes1 - a_point * points1) / MEMORY_SIDE**2
    return a_pixel, a_point, runs


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
    parser.add_argument("--output", type=pathlib.Path, required=True, help="the table as CSV")
    parser.add_argument("--picture", type=pathlib.Path, help="the chart, a PNG file")
    parser.add_argument("--write", action="store_true", help="into docs/performance.md too")
    arguments = parser.parse_args()

    rows = []
    print("%8s" % "side" + "".join("%12s" % name for name in OPERATIONS) + "   ns a pixel")
    for side in SIDES:
        row = [f"{nanoseconds_a_pixel(arguments.program, name, side):.3g}" for name in OPERATIONS]
        rows.append([side, *row])
        print("%8d" % side + "".join("%12s" % figure for figure in row), flush=True)
    a_pixel, a_point, runs = memory(arguments.program)
    text = (f"CircularVoting::compute on {MEMORY_SIDE} x {MEMORY_SIDE} bytes: "
            f"{a_pixel:.1f} bytes per pixel and {a_point:.1f} per voting point, from "
            + " and ".join(f"{size / 1e6:.0f} MB with {points} points" for points, size in runs))
    print(text)

    arguments.output.parent.mkdir(parents=True, exist_ok=True)
    with open(arguments.output, "w", newline="", encoding="utf-8") as file:
        csv.writer(file).writerows([["side", *OPERATIONS], *rows])
    print(arguments.output)
    if arguments.picture:
        draw(arguments.picture, rows)
        print(arguments.picture)
    if arguments.write:
        header = ["side", *(f"{name}, ns a pixel" for name in OPERATIONS)]
        report.write_section("growth", report.table(header, rows) + f"\n{text}.\n")


if __name__ == "__main__":
    main()
