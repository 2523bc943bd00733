"""The results of a batch: a table of all centers, one row per image, and a chart of the counts."""

from __future__ import annotations

import csv
import io
import pathlib
from collections.abc import Iterable, Sequence
from typing import Any

from ._jobs import Result, read_centers, write_whole

SUMMARY_FILES = ("centers.csv", "summary.csv", "failures.csv", "counts.png")


def _write_csv(path: pathlib.Path, head: Sequence[str], rows: Iterable[Sequence[Any]]) -> None:
    text = io.StringIO()
    writer = csv.writer(text, lineterminator="\n")
    writer.writerow(head)
    writer.writerows(rows)
    write_whole(path, text.getvalue())


def write_summary(directory: pathlib.Path, results: list[Result]) -> None:
    """Writes centers.csv, summary.csv, failures.csv and counts.png, images in the order given."""
    done = [r for r in results if not r.error]
    _write_csv(
        directory / "centers.csv",
        ("file", "x", "y", "weight"),
        ((r.image, *center) for r in done for center in read_centers(r.table)),
    )
    _write_csv(
        directory / "summary.csv",
        ("file", "width", "height", "centers", "seconds"),
        ((r.image, r.width, r.height, r.centers, f"{r.seconds:.3f}") for r in done),
    )
    _write_csv(
        directory / "failures.csv",
        ("file", "error"),
        ((r.image, r.error) for r in results if r.error),
    )
    _draw(directory / "counts.png", done)


def _name(stem: str) -> str:
    """What stands under a bar: one line of letters that can be drawn."""
    maximum = 32
    name = " ".join(stem.encode("utf-8", "backslashreplace").decode("utf-8").split())
    if len(name) > maximum:
        name = name[: maximum // 2] + "\N{HORIZONTAL ELLIPSIS}" + name[-maximum // 2 :]
    return name.replace("$", r"\$")  # which would begin a formula


def _draw(path: pathlib.Path, results: list[Result]) -> None:
    """A bar an image, or of many images how many have so many centers."""
    from matplotlib.backends.backend_agg import FigureCanvasAgg  # type: ignore[import]
    from matplotlib.figure import Figure  # type: ignore[import]
    from matplotlib.ticker import MaxNLocator  # type: ignore[import]

    few = 40
    figure = Figure(figsize=(8, 4.5), layout="constrained")
    FigureCanvasAgg(figure)
    axes = figure.add_subplot()
    counts = [r.centers for r in results]
    if len(results) <= few:
        axes.bar(range(len(counts)), counts, color="#4477aa")
        names = [_name(pathlib.Path(r.image).stem) for r in results]
        axes.set_xticks(range(len(counts)), names, rotation=60, ha="right", fontsize=7)
        axes.set_ylabel("centers")
        axes.yaxis.set_major_locator(MaxNLocator(integer=True))
    else:
        axes.hist(counts, bins=min(max(counts) - min(counts) + 1, few), color="#4477aa")
        axes.set_xlabel("centers in an image")
        axes.set_ylabel("images")
        axes.yaxis.set_major_locator(MaxNLocator(integer=True))
    axes.set_title(f"{sum(counts)} centers in {len(counts)} images")
    axes.spines[["top", "right"]].set_visible(False)
    content = io.BytesIO()
    figure.savefig(content, format="png", dpi=100)
    write_whole(path, content.getvalue())
