"""The results of a batch: a table of all objects or centers, one row per image, and a chart."""

from __future__ import annotations

import csv
import io
import pathlib
from collections.abc import Iterable, Sequence
from typing import Any

from .._segment import COLUMNS
from ._jobs import Method, Plane, Result, write_whole

# Of the tables of images without calibration.
_COLUMNS: dict[Method, tuple[str, ...]] = {
    "find": ("x", "y", "radius", "score"),
    "segment": COLUMNS,
    "vote": ("x", "y", "weight"),
}


def summary_files(method: Method) -> tuple[str, ...]:
    """The names of what write_summary() writes."""
    return f"{_noun(method)}.csv", "summary.csv", "failures.csv", "counts.png"


def _noun(method: Method) -> str:
    return "centers" if method == "vote" else "objects"


def _write_csv(path: pathlib.Path, head: Sequence[str], rows: Iterable[Sequence[Any]]) -> None:
    text = io.StringIO()
    writer = csv.writer(text, lineterminator="\n")
    writer.writerow(head)
    writer.writerows(rows)
    write_whole(path, text.getvalue())


def read_table(path: str) -> list[dict[str, str]]:
    """The rows of a table by the names of their columns."""
    with open(path, encoding="utf-8", newline="") as file:
        return list(csv.DictReader(file))


def write_summary(directory: pathlib.Path, results: list[Result], method: Method) -> None:
    """Writes the summary files, images in the order given."""
    done = [r for r in results if not r.error]
    everything, summary = summary_files(method)[:2]
    tables = [(r.image, read_table(r.table)) for r in done]
    # In the order of their first use: files may differ in calibration and axes.
    used = [name for _, rows in tables if rows for name in rows[0]]
    names = list(dict.fromkeys([*_COLUMNS[method], *used]))
    _write_csv(
        directory / everything,
        ("file", *names),
        ((image, *(row.get(name, "") for name in names)) for image, rows in tables for row in rows),
    )
    columns = ("centers",) if method == "vote" else ("objects", "radius", "polarity", "confidence")
    _write_csv(
        directory / summary,
        ("file", "width", "height", *columns, "seconds"),
        (
            (r.image + p.fragment, p.width, p.height, p.centers, *_used(p), f"{p.seconds:.3f}")
            for r in done
            for p in r.planes
        ),
    )
    _write_csv(
        directory / "failures.csv",
        ("file", "error"),
        ((r.image, r.error) for r in results if r.error),
    )
    _draw(directory / "counts.png", done, _noun(method))


def _used(plane: Plane) -> tuple[str, ...]:
    """Radius, polarity and confidence, rounded as in the summary of the command."""
    used = plane.used
    return () if used is None else (f"{used.radius:.1f}", used.polarity, f"{used.confidence:.2f}")


def _name(stem: str) -> str:
    """What stands under a bar: one line of letters that can be drawn."""
    maximum = 32
    name = " ".join(stem.encode("utf-8", "backslashreplace").decode("utf-8").split())
    if len(name) > maximum:
        name = name[: maximum // 2] + "\N{HORIZONTAL ELLIPSIS}" + name[-maximum // 2 :]
    return name.replace("$", r"\$")  # which would begin a formula


def _draw(path: pathlib.Path, results: list[Result], noun: str) -> None:
    """A bar an image, or of many images how many have so many centers."""
    from matplotlib.backends.backend_agg import FigureCanvasAgg  # type: ignore[import]
    from matplotlib.figure import Figure  # type: ignore[import]
    from matplotlib.ticker import MaxNLocator  # type: ignore[import]

    few = 40
    figure = Figure(figsize=(8, 4.5), layout="constrained")
    FigureCanvasAgg(figure)
    axes = figure.add_subplot()
    bars = [(pathlib.Path(r.image).stem + p.fragment, p.centers) for r in results for p in r.planes]
    counts = [count for _, count in bars]
    if len(bars) <= few:
        axes.bar(range(len(counts)), counts, color="#4477aa")
        names = [_name(name) for name, _ in bars]
        axes.set_xticks(range(len(counts)), names, rotation=60, ha="right", fontsize=7)
        axes.set_ylabel(noun)
        axes.yaxis.set_major_locator(MaxNLocator(integer=True))
    else:
        axes.hist(counts, bins=min(max(counts) - min(counts) + 1, few), color="#4477aa")
        axes.set_xlabel(f"{noun} in an image")
        axes.set_ylabel("images")
        axes.yaxis.set_major_locator(MaxNLocator(integer=True))
    axes.set_title(f"{sum(counts)} {noun} in {len(counts)} images")
    axes.spines[["top", "right"]].set_visible(False)
    content = io.BytesIO()
    figure.savefig(content, format="png", dpi=100)
    write_whole(path, content.getvalue())
