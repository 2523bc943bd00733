"""The objects, regions or centers of one image, in files that are not made twice."""

from __future__ import annotations

import contextlib
import csv
import dataclasses
import hashlib
import json
import os
import pathlib
import pickle
import signal
import tempfile
import time
import uuid
from collections.abc import Callable, Iterator, Sequence
from typing import Any, Literal

import numpy as np
import numpy.typing as npt

import orva

from .. import _orva
from .._arrays import Pixels
from .._objects import FindSettings, SettingsEstimate, find_settings, search
from .._running import running
from .._segment import SegmentSettings, search_regions, segment_settings
from ._grid import MAX_SIDE
from ._object_tiles import estimate_in_tiles, search_in_tiles
from ._tiles import find_centers_in_tiles

_NO_ANSWER = 70  # a status with which the library never exits

REGION_SETTINGS = frozenset(field.name for field in dataclasses.fields(SegmentSettings))

Center = tuple[int, int, float]
Method = Literal["find", "segment", "vote"]


@dataclasses.dataclass(frozen=True)
class Job:
    """An image, its table, and the settings: those of find_objects(), segment() or find_centers()."""

    image: str
    table: str
    settings: dict[str, Any]
    method: Method = "find"

    @property
    def record(self) -> pathlib.Path:
        """The file that records the input and the settings of the table."""
        return pathlib.Path(self.table).with_suffix(".json")

    @property
    def labels(self) -> pathlib.Path | None:
        """The file of the label image, where there is one."""
        table = pathlib.Path(self.table)
        return table.with_name(f"{table.stem}_labels.tif") if self.method == "segment" else None

    @property
    def files(self) -> list[pathlib.Path]:
        """All files that the job writes."""
        return [pathlib.Path(self.table), self.record, *filter(None, [self.labels])]


@dataclasses.dataclass(frozen=True)
class Result:
    """A finished or failed image."""

    image: str
    table: str = ""
    width: int = 0
    height: int = 0
    centers: int = 0  # of objects, each of which has one
    seconds: float = 0.0
    skipped: bool = False  # finished by an earlier run
    error: str = ""
    used: SettingsEstimate | None = None  # radius and polarity, except of a voting


def _digest(path: str | pathlib.Path) -> str:
    with open(path, "rb") as file:
        return hashlib.file_digest(file, "sha256").hexdigest()


def _origin(job: Job) -> dict[str, Any]:
    """All that the results depend on."""
    method = {} if job.method == "vote" else {"method": job.method}
    return {
        "version": orva.__version__,
        **method,
        "settings": job.settings,
        "sha256": _digest(job.image),
    }


def _record(job: Job) -> dict[str, Any]:
    """What an earlier run has recorded, empty if that is nothing or cannot be read.

    Raises ValueError for files of others in its place.
    """
    try:
        text = job.record.read_text(encoding="utf-8", errors="replace")
    except FileNotFoundError:
        text = ""
    record: dict[str, Any] | None = None
    with contextlib.suppress(ValueError):
        value = json.loads(text)
        record = value if isinstance(value, dict) else None
    for path in job.files:
        is_ours = '"origin"' in text
        if path == job.labels and record is not None:  # a damaged record may have had labels
            is_ours = "labels" in record
        if not is_ours and os.path.lexists(path):
            raise ValueError(f"{path} is there, and not from a batch")
    return record or {}


def _guess_in(value: Any, runner_up: SettingsEstimate | None) -> SettingsEstimate:
    radius, polarity, confidence = value["radius"], value["polarity"], value["confidence"]
    is_guess = polarity in ("bright", "dark") and all(
        type(n) in (int, float) for n in (radius, confidence)
    )
    if not is_guess:
        raise TypeError("not an estimate")
    return SettingsEstimate(radius, polarity, confidence, runner_up)


def _estimate_in(value: Any) -> SettingsEstimate:
    """An estimate as it is recorded; raises KeyError or TypeError for other values."""
    return _guess_in(value, _guess_in(value["runner_up"], None))


def _finished(job: Job, record: dict[str, Any], origin: dict[str, Any]) -> Result | None:
    """The result of an earlier run, if it is still good."""
    try:
        if record["origin"] != origin or _digest(job.table) != record["table"]:
            return None
        if job.labels and _digest(job.labels) != record["labels"]:
            return None
        result = Result(**record["result"])
        numbers = (result.width, result.height, result.centers, result.seconds)
        if result.error or not all(type(n) in (int, float) for n in numbers):
            return None
        used = None if job.method == "vote" else _estimate_in(result.used)
        return dataclasses.replace(result, image=job.image, table=job.table, skipped=True, used=used)
    except (OSError, ValueError, KeyError, TypeError):
        return None


def write_whole(path: pathlib.Path, content: str | bytes) -> None:
    """Writes a file atomically: under another name first, then renamed.

    Bytes of a name that are not UTF-8 are written as escapes, so that the file is UTF-8.
    """
    # Machines of a cluster share the directory. The name is short where the file's own is not.
    temporary = path.with_name(f".orva-{uuid.uuid4().hex}")
    if isinstance(content, str):
        content = content.encode("utf-8", "backslashreplace")
    try:
        temporary.write_bytes(content)
        os.replace(temporary, path)
    finally:
        temporary.unlink(missing_ok=True)


def _shortest(weight: np.float32) -> str:
    """In no more digits than it takes to read it back, as the command writes it.

    Whole numbers have all their digits, unless the form with an exponent is shorter.
    """
    whole = np.isfinite(weight) and weight == np.trunc(weight)
    plain = str(int(weight)) if whole else np.format_float_positional(weight, trim="-")
    power = np.format_float_scientific(weight, trim="-", exp_digits=2)
    return power if len(power) < len(plain) else plain


def read_rows(path: str, method: Method) -> Sequence[Sequence[Any]]:
    """The rows of a table, without its header."""
    if method == "vote":
        return read_centers(path)
    with open(path, encoding="utf-8", newline="") as file:
        return list(csv.reader(file))[1:]


def read_centers(path: str) -> list[Center]:
    """The rows of a table of centers."""
    with open(path, encoding="utf-8", newline="") as file:
        return [(int(x), int(y), float(w)) for x, y, w in list(csv.reader(file))[1:]]


def run(job: Job) -> Result:
    """Finds the objects of an image and writes its files, unless that has been done before.

    All that is wrong with the image is in the result; nothing is raised. The work is done in a child
    process, as the library ends its process when memory runs out.
    """
    return _in_child(_run, job)


def estimate(job: Job) -> Result:
    """Estimates radius and polarity of an image, as run() does with an image and its errors."""
    return _in_child(_estimate, job)


def _in_child(work: Callable[[Job], Result], job: Job) -> Result:
    with tempfile.TemporaryFile() as said, tempfile.TemporaryFile() as answer:
        child = os.fork()
        if child == 0:
            try:
                signal.signal(signal.SIGTERM, signal.SIG_DFL)
                os.dup2(said.fileno(), 2)
                answer.write(pickle.dumps(_attempt(work, job)))
                answer.flush()
                os._exit(0)
            except BaseException as error:
                os.write(2, f"{type(error).__name__}: {error}".encode("utf-8", "backslashreplace"))
            finally:  # whatever was raised: a child must not go on as its parent
                os._exit(_NO_ANSWER)
        _, status = os.waitpid(child, 0)
        said.seek(0)
        words = said.read()
        if status == 0:
            os.write(2, words)
            answer.seek(0)
            result: Result = pickle.load(answer)
            return result
        text = words.decode(errors="replace").strip() or "no word of why"
        return Result(job.image, error=f"its process ended early: {text}")


def _attempt(work: Callable[[Job], Result], job: Job) -> Result:
    try:
        # The workers share the processor cores among them.
        with running(1):
            return work(job)
    except MemoryError:
        return Result(job.image, error="out of memory")
    except (OSError, ValueError) as error:
        return Result(job.image, error=str(error) or type(error).__name__)


@contextlib.contextmanager
def _not_terminated() -> Iterator[None]:
    """Holds back SIGTERM, which would leave temporary files."""
    before = signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGTERM})
    try:
        yield
    finally:
        signal.pthread_sigmask(signal.SIG_SETMASK, before)


@dataclasses.dataclass(frozen=True)
class _Findings:
    """The results of an image: the table, its rows, what was estimated, and the file of the labels."""

    table: str
    count: int
    used: SettingsEstimate | None = None
    labels: bytes = b""


def _voted(plane: Pixels, settings: dict[str, Any]) -> _Findings:
    """The centers of an image."""
    if max(plane.shape) > MAX_SIDE:
        centers = find_centers_in_tiles(plane, **settings)
    else:
        centers = orva.find_centers(plane, **settings)
    rows = "".join(f"{c['x']},{c['y']},{_shortest(c['weight'])}\n" for c in centers)
    return _Findings("x,y,weight\n" + rows, len(centers))


def _search(
    plane: Pixels, told: FindSettings
) -> tuple[npt.NDArray[np.void], SettingsEstimate]:
    """The objects of an image of any size, and the radius and polarity used."""
    return search_in_tiles(plane, told) if max(plane.shape) > MAX_SIDE else search(plane, told)


def _found(plane: Pixels, settings: dict[str, Any]) -> _Findings:
    """The objects of an image, rounded as by the command."""
    objects, used = _search(plane, find_settings(**settings))
    rows = "".join(
        f"{o['x']:.3f},{o['y']:.3f},{o['radius']:.3f},{o['score']:.3f}\n" for o in objects
    )
    return _Findings("x,y,radius,score\n" + rows, len(objects), used)


def settings_of_regions(settings: dict[str, Any]) -> tuple[FindSettings, SegmentSettings]:
    """The settings of the search and those of the regions; raises as segment() does."""
    regions = {name: settings[name] for name in settings.keys() & REGION_SETTINGS}
    others = {name: settings[name] for name in settings.keys() - REGION_SETTINGS}
    return find_settings(**others), segment_settings(**regions)


def _segmented(plane: Pixels, settings: dict[str, Any]) -> _Findings:
    """The regions of an image, with the files of the command."""
    labels, table, used = search_regions(plane, *settings_of_regions(settings))
    return _Findings(
        _orva.regions_as_csv(table), len(table), used, _orva.labels_as_tiff(labels)
    )


_METHODS: dict[Method, Callable[[Pixels, dict[str, Any]], _Findings]] = {
    "find": _found,
    "segment": _segmented,
    "vote": _voted,
}


def _write_record(job: Job, record: dict[str, Any]) -> None:
    write_whole(job.record, json.dumps(record, indent=1) + "\n")


def _read(job: Job) -> tuple[Pixels, dict[str, Any]]:
    """The image, and the settings without the frame."""
    settings = dict(job.settings)
    return orva.read(job.image, frame=settings.pop("frame", 0)), settings


def _run(job: Job) -> Result:
    start = time.perf_counter()
    origin = _origin(job)
    record = _record(job)
    finished = _finished(job, record, origin)
    if finished:
        return finished
    plane, settings = _read(job)
    found = _METHODS[job.method](plane, settings)
    height, width = plane.shape
    seconds = time.perf_counter() - start
    result = Result(job.image, job.table, width, height, found.count, seconds, used=found.used)
    values = dataclasses.asdict(result)
    if job.method == "vote":
        del values["used"]
    new = {
        "origin": origin,
        "table": hashlib.sha256(found.table.encode()).hexdigest(),
        "result": values,
    }
    if job.labels:
        new["labels"] = hashlib.sha256(found.labels).hexdigest()
    elif "labels" in record:  # the file is still there, and from a batch
        new["labels"] = record["labels"]
    if job.method != "vote" and "estimate" in record:
        new["estimate"] = record["estimate"]
    with _not_terminated():
        # First, so that a table without a record is none of ours.
        _write_record(job, new)
        if job.labels:
            write_whole(job.labels, found.labels)
        write_whole(pathlib.Path(job.table), found.table)
    return result


def _estimate(job: Job) -> Result:
    """A result without a table: radius and polarity, which the record keeps for the next run."""
    origin = _origin(job)
    record = _record(job)
    with contextlib.suppress(KeyError, TypeError):
        if record["estimate"]["origin"] == origin:
            return Result(job.image, skipped=True, used=_estimate_in(record["estimate"]["used"]))
    plane, settings = _read(job)
    told = settings_of_regions(settings)[0]
    is_large = max(plane.shape) > MAX_SIDE
    used = estimate_in_tiles(plane, told) if is_large else search(plane, told)[1]
    record["estimate"] = {"origin": origin, "used": dataclasses.asdict(used)}
    with _not_terminated():
        _write_record(job, record)
    return Result(job.image, used=used)
