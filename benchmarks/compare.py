#!/usr/bin/python3
"""Runs the benchmarks and sets the library, its reference implementations and OpenCV side by side.

Each workload runs by itself, its ways in turns of random order, and its figure is the median. A ratio
says how many times faster the library is. targets.csv names the ratios that it should reach; of its
rows the first whose pattern fits a workload counts. A target for OpenCV counts where OpenCV was run.
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
WAYS = ["ours", "reference", "opencv"]
LONG = re.compile(r"4096|2048 R 40")
HEADER = ["workload", "ours ms", "reference ms", "ratio", "OpenCV ms", "ratio", "target", "reached"]
COLUMNS = ["workload", "ours_ms", "reference_ms", "reference_ratio", "opencv_ms", "opencv_ratio", "target",
           "reached"]


def workloads_of(program):
    """The workloads that the program measures, in its order."""
    text = subprocess.run([program, "--benchmark_list_tests"], check=True, capture_output=True,
                          text=True).stdout
    return list(dict.fromkeys(line.split("/")[0] for line in text.splitlines() if "/" in line))


def measure(program, workload, quick):
    """The median of each way, in milliseconds."""
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
        way = run["run_name"].split("/")[1]
        if run.get("error_occurred"):
            sys.exit(f"{workload}: {way}: {run['error_message']}")
        if run.get("aggregate_name") == "median":
            times[way] = run["real_time"]
    return times


def read_targets(path):
    with open(path, encoding="utf-8") as file:
        return list(csv.DictReader(file))


def row_of(workload, times, targets):
    ours = times["ours"]
    ratios = {way: times[way] / ours for way in times}
    goal = next((t for t in targets if fnmatch.fnmatchcase(workload, t["workload"])), {})
    goals = {way: float(goal[way]) for way in WAYS[1:] if goal.get(way) and way in times}
    def shown(way):
        return [f"{times[way]:.3g}", f"{ratios[way]:.2f}"] if way in times else ["", ""]
    names = {"reference": "reference", "opencv": "OpenCV"}
    target = ", ".join(f"{names[way]} {value:g}" for way, value in goals.items())
    reached = all(ratios[way] >= value for way, value in goals.items())
    return [workload, f"{ours:.3g}", *shown("reference"), *shown("opencv"), target,
            ("yes" if reached else "no") if goals else ""]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("programs", type=pathlib.Path, help="the folder of the built programs")
    parser.add_argument("--output", type=pathlib.Path, required=True, help="the table as CSV")
    parser.add_argument("--quick", action="store_true",
                        help="3 repetitions, and none of the long workloads")
    parser.add_argument("--filter", default="", help="only workloads that this expression is found in")
    parser.add_argument("--write", action="store_true", help="into docs/performance.md too")
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
            left_out = arguments.quick and LONG.search(workload)
            if workload in seen or left_out or not re.search(arguments.filter, workload):
                continue
            seen.add(workload)
            rows.append(row_of(workload, measure(program, workload, arguments.quick), targets))
            print("%-46s %8s %8s %6s %9s %6s  %-18s %s" % tuple(rows[-1]), flush=True)

    arguments.output.parent.mkdir(parents=True, exist_ok=True)
    with open(arguments.output, "w", newline="", encoding="utf-8") as file:
        csv.writer(file).writerows([COLUMNS, *rows])
    missed = sum(row[-1] == "no" for row in rows)
    print(f"{len(rows)} workloads, {missed} below their target; {arguments.output}")
    if arguments.write:
        runs = "A short run: medians of 3, without the long workloads.\n\n" if arguments.quick else ""
        report.write_section("operations", runs + report.table(HEADER, rows))


if __name__ == "__main__":
    main()
