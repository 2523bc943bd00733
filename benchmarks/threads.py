#!/usr/bin/python3
"""Operations with one thread and with two, and a simulation of more from the lengths of their tasks.

The ratios of 2 threads are measured: wall-clock time without a runner divided by that with two threads.
The others are simulated: the tasks of each job, as long as they took on one thread, go to the first
thread that is free, and what runs outside tasks is added. That leaves out the time to wake threads, and
memory and clock rates that threads share.
"""

import argparse
import csv
import pathlib
import subprocess

import report

COLUMNS = ["operation", "cpu_ms", "outside_tasks_ms", "in_tasks_ms", "wall_ms", "wall_2_ms", "measured_2",
           "simulated_2", "simulated_4", "simulated_16", "longest_silence_ms"]
HEADER = ["operation", "one thread, CPU ms", "2 threads, measured", "2, simulated", "4, simulated",
          "16, simulated"]
SHOWN = ["operation", "cpu_ms", "measured_2", "simulated_2", "simulated_4", "simulated_16"]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="orva_threads_benchmark")
    parser.add_argument("--output", type=pathlib.Path, required=True, help="CSV file to write")
    parser.add_argument("--side", type=int, default=4096, help="of the square image, in pixels")
    parser.add_argument("--repetitions", type=int, default=5, help="runs of which the median is taken")
    parser.add_argument("--filter", default="", help="only operations whose name contains this")
    parser.add_argument("--write", action="store_true", help="also update docs/performance.md and its table")
    arguments = parser.parse_args()

    command = [arguments.program, str(arguments.side), str(arguments.repetitions), arguments.filter]
    rows = []
    with subprocess.Popen(command, stdout=subprocess.PIPE, text=True) as process:
        for row in csv.reader(process.stdout):
            rows.append(dict(zip(COLUMNS, row)))
            print("%-34s" % row[0] + "".join("%12s" % figure for figure in row[1:]), flush=True)
    if process.returncode != 0:
        raise SystemExit(f"{arguments.program} failed")

    full = [COLUMNS, *([row[c] for c in COLUMNS] for row in rows)]
    report.write_csv(arguments.output, full)
    print(arguments.output)
    if arguments.write:
        side = arguments.side
        note = f"An image of {side} x {side} bytes, medians of {arguments.repetitions} runs.\n\n"
        shown = [[row[c] for c in SHOWN] for row in rows]
        report.publish("threads", full, note + report.table(HEADER, shown))


if __name__ == "__main__":
    main()
