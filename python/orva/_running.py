"""How the compiled functions run: on how many threads, and what hears of their progress."""

from __future__ import annotations

import contextlib
from collections.abc import Callable, Iterator
from typing import Any

from . import _options as options
from . import _orva

# Called with total=100, such as tqdm.tqdm; returns an object with the methods update(n) and close().
Progress = Callable[..., Any]

_MAX_THREADS = 1024
_PERCENT = 100


class _Bar:
    """A progress bar that takes whole percents."""

    def __init__(self, progress: Progress) -> None:
        self._bar = progress(total=_PERCENT)
        self._done = 0

    def report(self, step: str, share: float) -> None:
        del step
        self._advance_to(int(_PERCENT * share))

    def complete(self) -> None:
        self._advance_to(_PERCENT)

    def close(self) -> None:
        self._bar.close()

    def _advance_to(self, done: int) -> None:
        if done > self._done:
            self._bar.update(done - self._done)
            self._done = done


@contextlib.contextmanager
def running(threads: int | None, progress: Progress | None = None) -> Iterator[None]:
    """Lends threads to the compiled functions that are called, as many as around this if None."""
    if threads is not None:
        threads = options.whole("threads", threads, 1, _MAX_THREADS)
    if progress is not None and not callable(progress):
        raise TypeError(f"progress must be callable, such as tqdm.tqdm, not {type(progress).__name__}")
    bar = None if progress is None else _Bar(progress)
    before = _orva.set_call_settings(threads, None if bar is None else bar.report)
    try:
        yield
        if bar is not None:
            bar.complete()
    finally:
        _orva.set_call_settings(*before)
        if bar is not None:
            bar.close()
