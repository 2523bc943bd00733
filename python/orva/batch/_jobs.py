"""The centers of one image, as a table in a file that is not made twice."""

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
from collections.abc import Iterator
from typing import Any

import numpy as np

import orva

from ._tiles import MAX_SIDE, find_centers_in_tiles

_NO_ANSWER = 70  # a status with which the library never exits

Center = tuple[int, int, float]


@dataclasses.dataclass(frozen=True)
class Job:
    """An image, the table of its centers, and the settings: those of find_centers()."""

    image: str
    table: str
    settings: dict[str, Any]

    @property
    def record(self) -> pathlib.Path:
        """The file that records the input and the settings of the table."""
        return pathlib.Path(self.table).with_suffix(".json")


@dataclasses.dataclass(frozen=True)
class Result:
    """A finished or failed image."""

    image: str
    table: str = ""
    width: int = 0
    height: int = 0
    centers: int = 0
    seconds: float = 0.0
    skipped: bool = False  # finished by an earlier run
    error: str = ""


def _digest(path: str) -> str:
    with open(path, "rb") as file:
        return hashlib.file_digest(file, "sha256").hexdigest()


def _origin(job: Job) -> dict[str, Any]:
    """All that the table depends on."""
    return {"version": orva.__version__, "settings": job.settings, "sha256": _digest(job.image)}


def _finished(job: Job, origin: dict[str, Any]) -> Result | None:
    """The result of an earlier run, if it is still good.

    Raises ValueError for files of others in its place.
    """
    try:
        text = job.record.read_text(encoding="utf-8", errors="replace")
    except FileNotFoundError:
        if os.path.lexists(job.table):
            raise ValueError(f"{job.table} is there, and not from a batch") from None
        return None
    if '"origin"' not in text:
        raise ValueError(f"{job.record} is there, and not from a batch")
    try:
        record = json.loads(text)
        if record["origin"] != origin or _digest(job.table) != record["table"]:
            return None
        result = Result(**record["result"])
        numbers = (result.width, result.height, result.centers, result.seconds)
        if result.error or not all(type(n) in (int, float) for n in numbers):
            return None
        return dataclasses.replace(result, image=job.image, table=job.table, skipped=True)
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


def read_centers(path: str) -> list[Center]:
    """The rows of a table of centers."""
    with open(path, encoding="utf-8", newline="") as file:
        return [(int(x), int(y), float(w)) for x, y, w in list(csv.reader(file))[1:]]


def run(job: Job) -> Result:
    """Finds the centers of an image and writes its table, unless that has been done before.

    All that is wrong with the image is in the result; nothing is raised. The work is done in a child
    process, as the library ends its process when memory runs out.
    """
    with tempfile.TemporaryFile() as said, tempfile.TemporaryFile() as answer:
        child = os.fork()
        if child == 0:
            try:
                signal.signal(signal.SIGTERM, signal.SIG_DFL)
                os.dup2(said.fileno(), 2)
                answer.write(pickle.dumps(_run(job)))
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


@contextlib.contextmanager
def _not_terminated() -> Iterator[None]:
    """Holds back SIGTERM, which would leave temporary files."""
    before = signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGTERM})
    try:
        yield
    finally:
        signal.pthread_sigmask(signal.SIG_SETMASK, before)


def _run(job: Job) -> Result:
    start = time.perf_counter()
    try:
        origin = _origin(job)
        finished = _finished(job, origin)
        if finished:
            return finished
        settings = dict(job.settings)
        plane = orva.read(job.image, frame=settings.pop("frame", 0))
        height, width = plane.shape
        if max(plane.shape) > MAX_SIDE:
            centers = find_centers_in_tiles(plane, **settings)
        else:
            centers = orva.find_centers(plane, **settings)
        rows = "".join(f"{c['x']},{c['y']},{_shortest(c['weight'])}\n" for c in centers)
        table = "x,y,weight\n" + rows
        seconds = time.perf_counter() - start
        result = Result(job.image, job.table, width, height, len(centers), seconds)
        record = {
            "origin": origin,
            "table": hashlib.sha256(table.encode()).hexdigest(),
            "result": dataclasses.asdict(result),
        }
        with _not_terminated():
            # First, so that a table without a record is none of ours.
            write_whole(job.record, json.dumps(record, indent=1) + "\n")
            write_whole(pathlib.Path(job.table), table)
        return result
    except (OSError, ValueError, MemoryError) as error:
        return Result(job.image, error=str(error) or type(error).__name__)
