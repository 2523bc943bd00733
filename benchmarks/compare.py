#!/usr/bin/python3
"""Runs the benchmarks and compares the library with its reference implementations and OpenCV.

Each workload runs by itself, with its implementations interleaved in random order; figures are medians.
A ratio is the time of another implementation divided by that of the library. targets.csv holds the
ratios to reach; the first row whose pattern matches a workload applies. A target for OpenCV applies
where OpenCV was run.
"""

import argparse
import csv
import fnmatch
import json
import pathlib
import re
import subprocess
import sys
import tempfile

import report

PROGRAMS = ["opencv", "scalespace", "bip", "image_math", "image", "image_io", "voting"]
IMPLEMENTATIONS = ["ours", "reference", "opencv"]
LONG = re.compile(r"4096|2048 R 40")
HEADER = ["workload", "ours ms", "reference ms", "ratio", "OpenCV ms", "ratio", "target", "reached"]
# The workloads that the document shows, without the last two columns.
SHOWN = ["dX byte 4096 sigma 2", "dX byte 1024 sigma 1", "gaussian 0 0 byte 1024 sigma 2",
         "gradient byte 1024 sigma 2", "gradient byte 64x256x256 sigma 2", "hcut byte 1024 sigma 2 4",
         "regions 8 2048 discs", "regionFeatures 2048 discs", "fchamfer byte 2048 discs",
         "propagate labels 2048 discs", "erode byte 2048 discs", "convexHull 2048 discs",
         "threshold float 2048", "voting 1024 R 20 w 5 bright", "voting 2048 R 40 w 10 bright"]
COLUMNS = ["workload", "ours_ms", "reference_ms", "reference_ratio", "opencv_ms", "opencv_ratio", "target",
           "reached"]


def workloads_of(program):
    """The workloads that the program registers, in its order."""
    text = subprocess.run([program, "--benchmark_list_tests"], check=True, capture_output=True,
                          text=True).stdout
    return list(dict.fromkeys(line.split("/")[0] for line in text.splitlines() if "/" in line))


def measure(program, workload, quick):
    """The median time of each implementation in milliseconds."""
    with tempfile.NamedTemporaryFile(suffix=".json") as result:
        subprocess.run(
            [program, f"--benchmark_filter=^{workload}/", f"--benchmark_out={result.name}",
             "--benchmark_out_format=json", f"--benchmark_repetitions={3 if quick else 7}",
             f"--benchmark_min_time={0 if quick else 0.01}",
             "--benchmark_enable_random_interleaving=true"],
            check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        runs = json.load(result)["benchmarks"]
    times = {}
    for run in runs:
        name = run["run_name"].split("/")[1]
        if run.get("error_occurred"):
            sys.exit(f"{workload}: {name}: {run['error_message']}")
        if run.get("aggregate_name") == "median":
            times[name] = run["real_time"]
    return times


def read_targets(path):
    with open(path, encoding="utf-8") as file:
        return list(csv.DictReader(file))


def row_of(workload, times, targets):
    ours = times["ours"]
    ratios = {name: times[name] / ours for name in times}
    target = next((t for t in targets if fnmatch.fnmatchcase(workload, t["workload"])), {})
    ratios_to_reach = {name: float(target[name]) for name in IMPLEMENTATIONS[1:]
                       if target.get(name) and name in times}

    def shown(name):
        return [f"{times[name]:.3g}", f"{ratios[name]:.2f}"] if name in times else ["", ""]

    titles = {"reference": "reference", "opencv": "OpenCV"}
    shown_targets = ", ".join(f"{titles[name]} {value:g}" for name, value in ratios_to_reach.items())
    reached = all(ratios[name] >= value for name, value in ratios_to_reach.items())
    return [workload, f"{ours:.3g}", *shown("reference"), *shown("opencv"), shown_targets,
            ("yes" if reached else "no") if ratios_to_reach else ""]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("programs", type=pathlib.Path, help="folder of the built programs")
    parser.add_argument("--output", type=pathlib.Path, required=True, help="CSV file to write")
    parser.add_argument("--quick", action="store_true",
                        help="3 repetitions, without the long workloads")
    parser.add_argument("--filter", default="", help="only workloads that match this regular expression")
    parser.add_argument("--write", action="store_true", help="also update docs/performance.md and its table")
    arguments = parser.parse_args()

    targets = read_targets(pathlib.Path(__file__).with_name("targets.csv"))
    rows = []
    print("%-46s %8s %8s %6s %9s %6s  %-18s %s" % tuple(HEADER))
    seen = set()
    for name in PROGRAMS:
        program = arguments.programs / f"{name}_benchmark"
        if not program.exists():
            continue
        for workload in workloads_of(program):
            skipped = arguments.quick and LONG.search(workload)
            if workload in seen or skipped or not re.search(arguments.filter, workload):
                continue
            seen.add(workload)
            rows.append(row_of(workload, measure(program, workload, arguments.quick), targets))
            print("%-46s %8s %8s %6s %9s %6s  %-18s %s" % tuple(rows[-1]), flush=True)

    report.write_csv(arguments.output, [COLUMNS, *rows])
    missed = sum(row[-1] == "no" for row in rows)
    print(f"{len(rows)} workloads, {missed} below their target; {arguments.output}")
    if arguments.write:
        runs = "A short run: medians of 3, without the long workloads.\n\n" if arguments.quick else ""
        shown = [row[:-2] for row in rows if row[0] in SHOWN]
        report.publish("operations", [COLUMNS, *rows], runs + report.table(HEADER[:-2], shown))


if __name__ == "__main__":
    main()
