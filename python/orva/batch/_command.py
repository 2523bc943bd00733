"""What ``python -m orva.batch`` does."""

from __future__ import annotations

import argparse
import collections
import dataclasses
import os
import pathlib
import sys
import tempfile
import threading
from collections.abc import Iterable
from typing import Any, NoReturn

from .. import _options as options
from .. import _orva
from .._objects import combined
from .._voting import complete
from ._cluster import client, run_all
from ._interrupt import ignore_interrupts
from ._interrupt import run as run_interruptible
from ._jobs import (
    PLANE_SETTINGS,
    REGION_SETTINGS,
    Job,
    Method,
    Result,
    estimate,
    planes_of_settings,
    run,
    settings_of_regions,
    without_units,
)
from ._summary import summary_files, write_summary

_EPILOG = """\
Radius and polarity are estimated from each image. A setting of the voting selects the voting instead.

DIR receives a table x,y,radius,score per image, objects.csv with all objects, summary.csv with one row
per image, failures.csv and counts.png; with --segment, tables of measurements, and the label image
NAME_labels.tif per image; of the voting, tables x,y,weight, and centers.csv with all centers. A repeated
run skips images whose file and settings have not changed. Of a file with several times, the tables and
summary.csv have rows for each. The exit status is 0, 1 if an image failed, or 2 for a usage error.

Example: the nuclei of a plate, on four processors
  python -m orva.batch plate/*.tif --out results --workers 4
"""


class _Parser(argparse.ArgumentParser):
    def error(self, message: str) -> NoReturn:
        """Ends with the message alone; --help shows the usage."""
        self.exit(2, f"{self.prog}: error: {message}\n")


def _whole(text: str) -> int:
    try:
        return int(text)
    except ValueError:
        raise argparse.ArgumentTypeError(f"must be a whole number, not {text}") from None


def _number_or_word(text: str) -> int | str:
    return int(text) if text.isdecimal() else text


def _radius(text: str) -> float | list[float] | str:
    """A radius, or a range A:B of them as a list, which is also how JSON holds it.

    With a unit it stays a text, which in_pixels() converts for each image.
    """
    parts = text.split(":")
    sizes = [size for part in parts if (size := _orva.size_in(part, False)) is not None]
    if len(sizes) == len(parts) == 1 and sizes[0][0] > 0:
        return text if sizes[0][1] else float(text)
    if len(sizes) == len(parts) == 2:
        (low, is_metric), (high, is_high_metric) = sizes
        if low <= high and is_metric == is_high_metric:
            return text if is_metric else [float(part) for part in parts]
    raise argparse.ArgumentTypeError(
        f"{text} is neither a radius above 0 nor a range A:B of radii"
    )


def _area(text: str) -> float | str:
    """An area in pixels; with a unit a text, as _radius()."""
    size = _orva.size_in(text, True)
    if size is not None and size[1]:
        return text
    try:
        return float(text)
    except ValueError:
        raise argparse.ArgumentTypeError(f"{text} is neither a number nor an area such as 50um2") from None


def _pixel_size(text: str) -> float:
    """In micrometres, with and without a unit."""
    size = _orva.size_in(text, False)
    if size is None or not size[0] > 0:
        raise argparse.ArgumentTypeError(f"{text} is not a length above 0, such as 0.25um")
    return size[0]


def _parser() -> argparse.ArgumentParser:
    parser = _Parser(
        prog="python -m orva.batch",
        description="Find round objects in many images",
        epilog=_EPILOG,
        formatter_class=argparse.RawDescriptionHelpFormatter,
    )
    parser.add_argument(
        "images",
        nargs="+",
        metavar="IMAGE",
        help="what orva.read() reads; also a folder of images or a pattern such as 'plate/*.tif'",
    )
    parser.add_argument("--out", required=True, metavar="DIR", help="the results go there")
    where = parser.add_mutually_exclusive_group()
    where.add_argument("--scheduler", metavar="ADDRESS", help="of a running Dask cluster")
    where.add_argument(
        "--workers",
        type=_whole,
        metavar="N",
        help="processes on this machine; default one a processor",
    )
    parser.add_argument(
        "--polarity",
        metavar="NAME",
        help="bright or dark; default estimated. For the voting bright, dark or both; default bright",
    )
    find = parser.add_argument_group("finding", "as for orva find")
    find.add_argument(
        "--radius",
        type=_radius,
        metavar="R|A:B",
        help="typical radius in pixels, or with a unit such as um, or a range of the radii",
    )
    find.add_argument("--min-score", type=float, metavar="S", help="default 0.5")
    find.add_argument(
        "--same-settings",
        action="store_true",
        default=None,
        help="one estimate over all images, then the same radius and polarity for each",
    )
    find.add_argument(
        "--pixel-size",
        type=_pixel_size,
        metavar="S",
        help="of a pixel, in micrometres unless it has a unit; default what the file says",
    )
    regions = parser.add_argument_group("regions", "as for orva segment")
    regions.add_argument(
        "--segment",
        action="store_true",
        default=None,
        help="label and measure the pixels of each object",
    )
    for option, those in (("--min-area", "smaller"), ("--max-area", "larger")):
        regions.add_argument(
            option, type=_area, metavar="N", help=f"leave out {those} ones, in pixels or as 50um2"
        )
    regions.add_argument(
        "--exclude-border",
        action="store_true",
        default=None,
        help="leave out objects that touch the border of the image",
    )
    vote = parser.add_argument_group("voting", "as for orva vote; each of these selects the voting")
    vote.add_argument("--min-radius", type=_whole, metavar="N", help="nearest vote; default 1")
    vote.add_argument("--max-radius", type=_whole, metavar="N", help="farthest vote; default 20")
    vote.add_argument("--cone-width", type=_whole, metavar="N", help="default half of --max-radius")
    vote.add_argument("--sigma", type=float, metavar="S", help="default --max-radius / 7, at least 1")
    vote.add_argument(
        "--gradient", type=float, metavar="G", help="of weaker gradients no vote, in grey levels"
    )
    vote.add_argument("--relative-gradient", type=float, metavar="F", help="a share; default 0.03")
    vote.add_argument("--threshold", type=float, metavar="T", help="a center needs more votes")
    vote.add_argument("--relative-threshold", type=float, metavar="F", help="a share; default 0.3")
    vote.add_argument("--edges", action="store_true", default=None, help="vote from edges only")
    vote.add_argument("--power", type=float, metavar="P", help="of gradients; default 0.5")
    planes = parser.add_argument_group("planes", "as for orva find")
    planes.add_argument("--channel", metavar="K|NAME", help="needed if there are several")
    planes.add_argument(
        "--z", type=_number_or_word, metavar="K|max|mean|all", help="slice, or their projection; default max"
    )
    planes.add_argument("--time", type=_number_or_word, metavar="K|all", help="default all")
    planes.add_argument("--series", type=_whole, metavar="K", help="image of an OME-TIFF file of several")
    planes.add_argument("--level", type=_whole, metavar="K", help="smaller size, if the file stores several")
    planes.add_argument(
        "--frame", type=_whole, metavar="K", help="page or plane by its number, instead of the others"
    )
    return parser


def _settings(arguments: argparse.Namespace) -> tuple[dict[str, Any], Method]:
    """What was given, checked, and the method that it selects; the rest has the defaults."""
    others = ("images", "out", "scheduler", "workers")
    given = {k: v for k, v in vars(arguments).items() if k not in others and v is not None}
    common = PLANE_SETTINGS | {"polarity"}
    of_regions = given.keys() & REGION_SETTINGS
    of_find = given.keys() & {"radius", "min_score", "pixel_size", "same_settings", "segment"} | of_regions
    of_vote = given.keys() - of_find - common
    if given.get("polarity") == "both":
        of_vote.add("polarity both")
    if of_find and of_vote:
        one, other = (_option(min(names)) for names in (of_find, of_vote))
        raise ValueError(f"{other} belongs to the voting and {one} does not; give one of them")
    if of_regions and "segment" not in given:
        raise ValueError(f"{_option(min(of_regions))} goes with --segment")
    given.pop("same_settings", None)
    method: Method = "vote" if of_vote else "segment" if given.pop("segment", False) else "find"
    checked = planes_of_settings(given)[1]
    if method == "vote":
        complete(checked)
    else:
        _require_order(checked)
        settings_of_regions(without_units(checked))
    return given, method


def _require_order(settings: dict[str, Any]) -> None:
    """Raises ValueError for areas of which only one has a unit or the lower one is the larger."""
    low, high = settings.get("min_area"), settings.get("max_area")
    if low is None or high is None:
        return
    sizes = [_orva.size_in(area, True) for area in (low, high) if isinstance(area, str)]
    if len(sizes) == 1:
        raise ValueError("--min-area must have a unit if --max-area has one")
    values = [size[0] for size in sizes if size is not None]
    if len(values) == 2 and values[0] > values[1]:
        raise ValueError("--min-area must not exceed --max-area")


def _option(name: str) -> str:
    return "--" + name.replace("_", "-")


def _expanded(names: list[str]) -> list[str]:
    """The images that names, folders and patterns stand for."""
    return [os.fsdecode(path) for name in names for path in _orva.images_named(os.fsencode(name))]


def _jobs(
    images: list[str], out: pathlib.Path, settings: dict[str, Any], method: Method
) -> list[Job]:
    """A job an image; two images of one name would have one table."""
    reserved = {pathlib.Path(name).stem for name in summary_files(method) if name.endswith(".csv")}
    seen: dict[str, str] = {}
    jobs = []
    for image in images:
        path = os.path.abspath(image)
        name = pathlib.Path(path).stem
        if name in reserved:
            raise ValueError(f"{image}: its table would be the batch's {name}.csv; rename it")
        if seen.setdefault(name, path) != path:
            raise ValueError(f"{image} and {seen[name]} would both have the table {name}.csv")
        jobs.append(Job(path, str(out / f"{name}.csv"), settings, method))
    if len(jobs) != len(seen):
        raise ValueError("an image is named twice")
    _require_apart(jobs, out)
    return jobs


def _require_apart(jobs: list[Job], out: pathlib.Path) -> None:
    """Raises ValueError for an image in the place of a result."""
    results = [out / name for name in summary_files(jobs[0].method)]
    results += [path for job in jobs for path in job.files]
    places = {os.path.join(os.path.realpath(out), path.name) for path in results}
    for job in jobs:
        directory, name = os.path.split(job.image)
        # A link in that place would go, and so would what another one there leads to.
        if {os.path.join(os.path.realpath(directory), name), os.path.realpath(job.image)} & places:
            raise ValueError(f"{job.image}: a result would take its place; choose another --out")


def _frozen(jobs: list[Job], estimates: Iterable[Result]) -> list[Job]:
    """The jobs with one radius and polarity, from the images that could be read."""
    common = combined(r.used for r in estimates if r.used is not None)
    settings: dict[str, Any] = {"polarity": common.polarity}
    if common.radius > 0:
        settings["radius"] = common.radius
    return [dataclasses.replace(job, settings={**settings, **job.settings}) for job in jobs]


def _run(
    jobs: list[Job], out: pathlib.Path, scheduler: str | None, workers: int, same_settings: bool
) -> list[Result]:
    """The results of the jobs, and all files that the batch makes of them."""

    def work(stop: threading.Event) -> list[Result]:
        with client(scheduler, workers) as c:
            final = jobs
            if same_settings:
                final = _frozen(jobs, run_all(estimate, jobs, c, stop, "estimates: "))
            results = run_all(run, final, c, stop)
        write_summary(out, results, jobs[0].method)
        notes = collections.Counter(r.note for r in results if r.note)
        for note, count in notes.items():
            sys.stderr.write(f"{count} of {len(results)} images: {note}\n")
        return results

    return run_interruptible(work)


def main(argv: list[str] | None = None) -> int:
    parser = _parser()
    arguments = parser.parse_args(argv)
    out = pathlib.Path(arguments.out).absolute()
    try:
        if not arguments.out:
            raise ValueError("argument --out: must name a folder")
        jobs = _jobs(_expanded(arguments.images), out, *_settings(arguments))
        workers = len(os.sched_getaffinity(0))
        if arguments.workers is not None:
            workers = options.whole("workers", arguments.workers, 1, 1024)
    except (TypeError, ValueError) as error:
        parser.error(str(error))
    try:
        out.mkdir(parents=True, exist_ok=True)
        with tempfile.TemporaryFile(dir=out):
            pass
    except OSError as error:
        parser.error(f"--out {arguments.out} cannot be written to: {error.strerror}")
    try:
        same_settings = bool(arguments.same_settings)
        results = _run(jobs, out, arguments.scheduler, min(workers, len(jobs)), same_settings)
        failed = [r for r in results if r.error]
        for r in failed:
            print(f"{r.image}: {r.error}", file=sys.stderr)
        return 1 if failed else 0
    except ConnectionError as error:
        parser.error(str(error))
    except KeyboardInterrupt:
        ignore_interrupts()
        line = f"{parser.prog}: interrupted; the same call goes on from here\n"
        # On a terminal the bar stands in the line.
        parser.exit(130, "\n" + line if sys.stderr.isatty() else line)
