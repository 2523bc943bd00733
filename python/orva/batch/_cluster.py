"""Jobs on the workers of Dask."""

from __future__ import annotations

import contextlib
import logging
import sys
import tempfile
import threading
from collections.abc import Callable, Iterator
from concurrent.futures import CancelledError
from typing import Any, TextIO

from distributed import Client, LocalCluster, as_completed

from ._interrupt import Interrupted
from ._jobs import Job, Result


class _Progress:
    """A bar on a terminal; elsewhere nothing until the end."""

    def __init__(self, total: int, out: TextIO, label: str) -> None:
        self._total = total
        self._label = label
        self._out = out
        self._done = self._failed = self._skipped = 0
        self._draw()

    def add(self, result: Result) -> None:
        self._done += 1
        self._failed += bool(result.error)
        self._skipped += result.skipped
        self._draw()

    def _text(self) -> str:
        text = f"{self._label}{self._done} of {self._total} images"
        if self._skipped:
            text += f", {self._skipped} done before"
        return text + (f", {self._failed} failed" if self._failed else "")

    def _draw(self) -> None:
        if not self._out.isatty():
            return
        width = 30
        filled = width * self._done // max(self._total, 1)
        self._out.write(f"\r[{'#' * filled}{' ' * (width - filled)}] {self._text()}")
        self._out.flush()

    def end(self) -> None:
        self._out.write("\n" if self._out.isatty() else self._text() + "\n")


@contextlib.contextmanager
def client(scheduler: str | None, workers: int) -> Iterator[Client]:
    """A client of the scheduler at an address, or of so many processes on this machine.

    Raises ConnectionError when no scheduler answers.
    """
    if scheduler is not None:
        try:
            remote = Client(scheduler)  # type: ignore[no-untyped-call]
        except (OSError, ValueError) as error:
            raise ConnectionError(f"no scheduler answers at {scheduler}: {error}") from None
        with remote as c:
            yield c
        return
    logging.getLogger("distributed.nanny").addFilter(_is_of_use)
    # A folder of its own, so that nothing is said of what other clusters have left.
    with tempfile.TemporaryDirectory(prefix="orva-", ignore_cleanup_errors=True) as folder:
        # The search uses one processor.
        local: Any = LocalCluster(  # type: ignore[no-untyped-call]
            n_workers=workers,
            threads_per_worker=1,
            processes=True,
            local_directory=folder,
            # Workers that are ended say what they were about; their results say what failed.
            silence_logs=logging.CRITICAL,
            # A free port, because another batch may be running, and no dashboard.
            dashboard_address="127.0.0.1:0",
            scheduler_kwargs={"dashboard": False},
        )
        with local as cluster, Client(cluster) as c:  # type: ignore[no-untyped-call]
            yield c


def _is_of_use(record: logging.LogRecord) -> bool:
    """Not that an idle worker took long to end."""
    return "still alive after" not in record.getMessage()


def run_all(
    work: Callable[[Job], Result],
    jobs: list[Job],
    c: Client,
    stop: threading.Event,
    label: str = "",
    out: TextIO = sys.stderr,
) -> list[Result]:
    """Runs work(job) in one task per job and returns the results in the order of the jobs.

    A task whose worker dies goes to another one. Raises Interrupted soon after `stop` is set.
    """
    futures: list[Any] = c.map(work, jobs, pure=False)  # type: ignore[no-untyped-call]
    jobs_of: dict[str, Job] = {f.key: job for f, job in zip(futures, jobs)}
    results: dict[str, Result] = {}
    if not c.scheduler_info()["workers"]:  # type: ignore[no-untyped-call]
        out.write("the scheduler has no workers yet; waiting for them\n")
    progress = _Progress(len(jobs), out, label)
    completed: Any = as_completed(futures)  # type: ignore[no-untyped-call]
    while not completed.is_empty():
        if stop.is_set():
            logging.disable(logging.CRITICAL)  # of workers that take long to end
            c.cancel(futures)  # type: ignore[no-untyped-call]
            raise Interrupted
        if not completed.has_ready():
            stop.wait(0.02)
            continue
        future = next(completed)
        results[future.key] = _result(future, jobs_of[future.key])
        progress.add(results[future.key])
    progress.end()
    return [results[f.key] for f in futures]


def _result(future: Any, job: Job) -> Result:
    try:
        error = future.exception()  # when it has ended
        if error is None:
            result: Result = future.result()
            return result
    except (CancelledError, OSError):  # from fetching it
        return Result(job.image, error="the scheduler ended, or the way to it was lost")
    return Result(job.image, error=f"{type(error).__name__}: {error}")
