"""Work in threads and child processes that Ctrl-C ends in order."""

from __future__ import annotations

import contextlib
import os
import pathlib
import signal
import threading
from collections.abc import Callable
from concurrent.futures import Future, ThreadPoolExecutor
from multiprocessing import resource_tracker
from typing import TypeVar

Value = TypeVar("Value")


class Interrupted(Exception):
    """The work has been asked to stop and has done so."""


def run(work: Callable[[threading.Event], Value]) -> Value:
    """Call work(stop) in a thread, and return or raise what it does.

    At Ctrl-C the event is set, grandchildren of this process are ended, and when the work has come
    to its end, KeyboardInterrupt is raised; from then on SIGINT is ignored. It is blocked in all
    threads and processes of the work.
    """
    executor = ThreadPoolExecutor(1)
    stop = threading.Event()
    future: Future[Value] | None = None
    try:
        # It would let the signal through in the thread that first needs it.
        resource_tracker.ensure_running()
        signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGINT})
        future = executor.submit(work, stop)
        signal.pthread_sigmask(signal.SIG_UNBLOCK, {signal.SIGINT})
        return future.result()
    except KeyboardInterrupt:
        ignore_interrupts()
        stop.set()
        if future is not None:
            _end(future)
        raise


def ignore_interrupts() -> None:
    """Ignore further Ctrl-C, even one that is waiting to be handled; once is enough."""
    while signal.getsignal(signal.SIGINT) is not signal.SIG_IGN:
        with contextlib.suppress(KeyboardInterrupt):  # signal() lets a waiting one through
            signal.signal(signal.SIGINT, signal.SIG_IGN)


def _end(future: Future[Value]) -> None:
    """Wait for the work, whose workers wait for processes of theirs."""
    while not future.done():
        for pid in _grandchildren():
            with contextlib.suppress(ProcessLookupError):
                os.kill(pid, signal.SIGTERM)
        with contextlib.suppress(TimeoutError):
            future.exception(timeout=0.1)


def _grandchildren() -> list[int]:
    """The children of this process's children."""
    parents: dict[int, int] = {}
    for entry in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            # The name, in brackets, may hold anything.
            fields = (entry / "stat").read_text(errors="replace").rpartition(")")[2].split()
        except OSError:  # it has ended
            continue
        parents[int(entry.name)] = int(fields[1])
    children = {pid for pid, parent in parents.items() if parent == os.getpid()}
    return [pid for pid, parent in parents.items() if parent in children]
