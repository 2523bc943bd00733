"""The objects, regions or centers of one image, in files that are not made twice."""

from __future__ import annotations

import contextlib
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
from collections.abc import Callable, Iterator
from typing import Any, Literal

import numpy as np
import numpy.typing as npt

import orva

from .. import _orva
from .._arrays import Pixels, WideLabels
from .._files import PlaneOptions, plane_options
from .._objects import FindSettings, SettingsEstimate, find_settings, search
from .._running import running
from .._segment import SegmentSettings, search_regions, segment_settings
from ._grid import MAX_SIDE
from ._object_tiles import estimate_in_tiles, search_in_tiles
from ._tiles import find_centers_in_tiles

_NO_ANSWER = 70  # a status with which the library never exits

REGION_SETTINGS = frozenset(field.name for field in dataclasses.fields(SegmentSettings))

_AREAS = {"radius": False, "min_area": True, "max_area": True}  # the settings that may have units

PLANE_SETTINGS = frozenset({"frame", "channel", "z", "time", "series", "level"})

Method = Literal["find", "segment", "vote"]


@dataclasses.dataclass(frozen=True)
class Job:
    """A file, its table, and the settings of read() and of find_objects(), segment() or find_centers()."""

    image: str
    table: str
    settings: dict[str, Any]
    method: Method = "find"

    @property
    def record(self) -> pathlib.Path:
        """The file that records the input and the settings of the table."""
        return pathlib.Path(self.table).with_suffix(".json")

    def labels(self, ending: str = "") -> pathlib.Path:
        """The file of the labels of an image, of several in the file the one of this ending."""
        table = pathlib.Path(self.table)
        return table.with_name(f"{table.stem}_labels{ending}.tif")

    @property
    def files(self) -> list[pathlib.Path]:
        """All files that the job writes, of a file with one image."""
        labels = [self.labels()] if self.method == "segment" else []
        return [pathlib.Path(self.table), self.record, *labels]


@dataclasses.dataclass(frozen=True)
class Plane:
    """What was found in one image of a file."""

    fragment: str  # what tells it apart behind the name of the file, such as "#t=3"
    width: int
    height: int
    centers: int  # of objects, each of which has one
    seconds: float
    used: SettingsEstimate | None = None  # radius and polarity, except of a voting


@dataclasses.dataclass(frozen=True)
class Result:
    """A finished or failed file."""

    image: str
    table: str = ""
    planes: tuple[Plane, ...] = ()
    note: str = ""  # what was chosen without being asked for
    skipped: bool = False  # finished by an earlier run
    error: str = ""
    used: SettingsEstimate | None = None  # of estimate()

    @property
    def centers(self) -> int:
        return sum(plane.centers for plane in self.planes)


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
    for path in (pathlib.Path(job.table), job.record):
        _require_ours(path, '"origin"' in text)
    with contextlib.suppress(ValueError):
        value = json.loads(text)
        if isinstance(value, dict):
            return value
    # A damaged record may have had any labels.
    return {"labels": None} if text else {}


def _require_ours(path: pathlib.Path, is_ours: bool) -> None:
    if not is_ours and os.path.lexists(path):
        raise ValueError(f"{path} is there, and not from a batch")


def _known_labels(record: dict[str, Any]) -> dict[str, Any]:
    """The checksums of labels by the names of their files."""
    labels = record.get("labels")
    return labels if isinstance(labels, dict) else {}


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


def _plane_in(value: Any, method: Method) -> Plane:
    """An image of a file as it is recorded; raises KeyError or TypeError for other values."""
    plane = Plane(**value)
    numbers = (plane.width, plane.height, plane.centers, plane.seconds)
    if not isinstance(plane.fragment, str) or not all(type(n) in (int, float) for n in numbers):
        raise TypeError("not an image")
    return dataclasses.replace(plane, used=None if method == "vote" else _estimate_in(plane.used))


def _finished(job: Job, record: dict[str, Any], origin: dict[str, Any]) -> Result | None:
    """The result of an earlier run, if it is still good."""
    try:
        if record["origin"] != origin or _digest(job.table) != record["table"]:
            return None
        labels = _known_labels(record)
        if job.method == "segment" and not labels:
            return None
        folder = pathlib.Path(job.table).parent
        if any(_digest(folder / name) != checksum for name, checksum in labels.items()):
            return None
        planes = tuple(_plane_in(value, job.method) for value in record["planes"])
        if not planes or not isinstance(record["note"], str):
            return None
        return Result(job.image, job.table, planes, record["note"], skipped=True)
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
    """What is found in an image: the table, what was estimated, and the labels."""

    table: npt.NDArray[np.void]
    used: SettingsEstimate | None = None
    labels: WideLabels | None = None


def _voted(plane: Pixels, settings: dict[str, Any]) -> _Findings:
    """The centers of an image."""
    if max(plane.shape) > MAX_SIDE:
        return _Findings(find_centers_in_tiles(plane, **settings))
    return _Findings(orva.find_centers(plane, **settings))


def _search(
    plane: Pixels, told: FindSettings
) -> tuple[npt.NDArray[np.void], SettingsEstimate]:
    """The objects of an image of any size, and the radius and polarity used."""
    return search_in_tiles(plane, told) if max(plane.shape) > MAX_SIDE else search(plane, told)


def _found(plane: Pixels, settings: dict[str, Any]) -> _Findings:
    """The objects of an image."""
    return _Findings(*_search(plane, find_settings(**settings)))


def settings_of_regions(settings: dict[str, Any]) -> tuple[FindSettings, SegmentSettings]:
    """The settings of the search and those of the regions; raises as segment() does."""
    regions = {name: settings[name] for name in settings.keys() & REGION_SETTINGS}
    others = {name: settings[name] for name in settings.keys() - REGION_SETTINGS}
    return find_settings(**others), segment_settings(**regions)


def _segmented(plane: Pixels, settings: dict[str, Any]) -> _Findings:
    """The regions of an image."""
    labels, table, used = search_regions(plane, *settings_of_regions(settings))
    return _Findings(table, used, labels)


_METHODS: dict[Method, Callable[[Pixels, dict[str, Any]], _Findings]] = {
    "find": _found,
    "segment": _segmented,
    "vote": _voted,
}


# The table of a file as the command writes it.
_AS_CSV: dict[Method, Callable[[list[_orva.Part]], str]] = {
    "find": _orva.objects_as_csv,
    "segment": _orva.regions_as_csv,
    "vote": _orva.centers_as_csv,
}


def _write_record(job: Job, record: dict[str, Any]) -> None:
    write_whole(job.record, json.dumps(record, indent=1) + "\n")


def planes_of_settings(settings: dict[str, Any]) -> tuple[PlaneOptions, dict[str, Any]]:
    """Which planes are read, and the settings without that and the size of a pixel; raises as read()."""
    planes = {name: settings[name] for name in settings.keys() & PLANE_SETTINGS}
    others = settings.keys() - PLANE_SETTINGS - {"pixel_size"}
    return plane_options(**planes), {name: settings[name] for name in settings if name in others}


def _has_unit(settings: dict[str, Any], name: str) -> bool:
    return name in _AREAS and isinstance(settings[name], str)


def without_units(settings: dict[str, Any]) -> dict[str, Any]:
    """The settings that need no size of a pixel."""
    return {name: value for name, value in settings.items() if not _has_unit(settings, name)}


def _in_pixels(job: Job, settings: dict[str, Any], x: float | None, y: float | None) -> dict[str, Any]:
    """The settings for pixels of a width and height in micrometres."""
    result = without_units(settings)
    pixel_size = _orva.square_pixel_size(x, y)
    try:
        for name in settings.keys() - result.keys():
            parts = settings[name].split(":")
            sizes = [_orva.size_in_pixels(part, _AREAS[name], pixel_size) for part in parts]
            result[name] = sizes[0] if len(sizes) == 1 else sizes
    except _orva.FileError as error:
        raise OSError(f"{job.image}: {error}") from None
    return result


def _open(job: Job) -> tuple[_orva.ChosenImages, dict[str, Any]]:
    """The images of the file, and the settings without those that choose them."""
    planes, settings = planes_of_settings(job.settings)
    os.stat(job.image)  # raises FileNotFoundError for a missing file
    try:
        return _orva.ChosenImages(os.fsencode(job.image), *planes), settings
    except _orva.FileError as error:
        raise OSError(f"{job.image}: {error}") from None


def _read(job: Job, images: _orva.ChosenImages, i: int) -> tuple[Pixels, float | None, float | None]:
    try:
        return images.read(i, job.settings.get("pixel_size"))
    except _orva.FileError as error:
        raise OSError(f"{job.image}: {error}") from None


def _run(job: Job) -> Result:
    origin = _origin(job)
    record = _record(job)
    finished = _finished(job, record, origin)
    if finished:
        return finished
    start = time.perf_counter()
    images, settings = _open(job)
    places = [images.place(i) for i in range(len(images))]
    labels: dict[str, str] = {}
    old = _known_labels(record)
    if job.method == "segment":
        for _, _, ending, _ in places:
            path = job.labels(ending)
            _require_ours(path, path.name in old or record.get("labels", {}) is None)
            labels[path.name] = ""
    new: dict[str, Any] = {"origin": origin, "labels": {**old, **labels}}
    if job.method != "vote" and "estimate" in record:
        new["estimate"] = record["estimate"]
    if len(images) > 1:  # so that the labels of the first ones are ours
        with _not_terminated():
            _write_record(job, new)
    planes: list[Plane] = []
    parts: list[_orva.Part] = []
    content = b""
    for i, (t, z, ending, fragment) in enumerate(places):
        plane, x, y = _read(job, images, i)
        found = _METHODS[job.method](plane, _in_pixels(job, settings, x, y))
        parts.append((found.table, t, z, x, y))
        if found.labels is not None:
            path = job.labels(ending)
            content = _orva.labels_as_tiff(found.labels, x, y)
            labels[path.name] = hashlib.sha256(content).hexdigest()
            if len(images) > 1:
                with _not_terminated():
                    write_whole(path, content)
        now = time.perf_counter()
        height, width = plane.shape
        planes.append(Plane(fragment, width, height, len(found.table), now - start, found.used))
        start = now
    table = _AS_CSV[job.method](parts)
    new["labels"] = labels
    new["note"] = images.note()
    new["planes"] = [_recorded(plane, job.method) for plane in planes]
    new["table"] = hashlib.sha256(table.encode()).hexdigest()
    with _not_terminated():
        # First, so that a table without a record is none of ours.
        _write_record(job, new)
        _remove_stale(job, {name: old[name] for name in old.keys() - labels.keys()})
        if len(images) == 1 and job.method == "segment":
            write_whole(job.labels(), content)
        write_whole(pathlib.Path(job.table), table)
    return Result(job.image, job.table, tuple(planes), images.note())


def _recorded(plane: Plane, method: Method) -> dict[str, Any]:
    values = dataclasses.asdict(plane)
    if method == "vote":
        del values["used"]
    return values


def _remove_stale(job: Job, labels: dict[str, Any]) -> None:
    """Removes labels of an earlier run that do not belong to the table, if they are unchanged."""
    for name, checksum in labels.items():
        path = pathlib.Path(job.table).with_name(name)
        with contextlib.suppress(OSError):
            if _digest(path) == checksum:
                path.unlink()


def _estimate(job: Job) -> Result:
    """A result without a table: radius and polarity, which the record keeps for the next run."""
    origin = _origin(job)
    record = _record(job)
    with contextlib.suppress(KeyError, TypeError):
        if record["estimate"]["origin"] == origin:
            return Result(job.image, skipped=True, used=_estimate_in(record["estimate"]["used"]))
    images, settings = _open(job)
    plane, x, y = _read(job, images, 0)
    told = settings_of_regions(_in_pixels(job, settings, x, y))[0]
    is_large = max(plane.shape) > MAX_SIDE
    used = estimate_in_tiles(plane, told) if is_large else search(plane, told)[1]
    record["estimate"] = {"origin": origin, "used": dataclasses.asdict(used)}
    with _not_terminated():
        _write_record(job, record)
    return Result(job.image, used=used)
