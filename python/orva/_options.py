"""Checks of options. All raise TypeError for another type and ValueError out of range."""

from __future__ import annotations

import numbers
from collections.abc import Callable, Sequence
from typing import Any, TypeVar

import numpy as np

Value = TypeVar("Value")

# What the sigmas of all filters may be, in pixels.
MIN_SIGMA = 0.1
MAX_SIGMA = 1000.0


def _within(name: str, value: Any, low: Any, high: Any) -> None:
    if not low <= value <= high:
        raise ValueError(f"{name} must be from {low} to {high}, not {value}")


def number(name: str, value: Any, low: float, high: float) -> float:
    """A number from low to high."""
    if isinstance(value, bool) or not isinstance(value, numbers.Real):
        raise TypeError(f"{name} must be a number, not {type(value).__name__}")
    _within(name, value, low, high)
    return float(value)


def whole(name: str, value: Any, low: int, high: int) -> int:
    """An integer from low to high."""
    if isinstance(value, bool) or not isinstance(value, numbers.Integral):
        raise TypeError(f"{name} must be a whole number, not {type(value).__name__}")
    _within(name, value, low, high)
    return int(value)


def choice(name: str, value: Any, names: Sequence[str]) -> str:
    """One of the names."""
    if not isinstance(value, str):
        raise TypeError(f"{name} must be a str, not {type(value).__name__}")
    if value not in names:
        raise ValueError(f"{name} must be one of {', '.join(names)}, not {value!r}")
    return value


def flag(name: str, value: Any) -> bool:
    """True or False."""
    if not isinstance(value, (bool, np.bool_)):
        raise TypeError(f"{name} must be a bool, not {type(value).__name__}")
    return bool(value)


def sigma(name: str, value: Any) -> float:
    """The scale of a Gaussian in pixels."""
    return number(name, value, MIN_SIGMA, MAX_SIGMA)


def ratio(value: Any, scale: float) -> float:
    """The divisor of a sigma for the axis along the planes."""
    return number("ratio", value, scale / MAX_SIGMA, scale / MIN_SIGMA)


def along_axes(
    name: str, value: Any, axes: int, check: Callable[[str, Any], Value]
) -> tuple[Value, Value, Value]:
    """One value for all axes, or one each in the order of the array; returned for (x, y, z)."""
    count = min(axes, 3)
    if isinstance(value, numbers.Number):
        value = (value,) * count
    elif not isinstance(value, Sequence) or isinstance(value, str):
        raise TypeError(f"{name} must be a number or a sequence, not {type(value).__name__}")
    if len(value) != count:
        raise ValueError(f"{name} must have {count} values, one for each axis, not {len(value)}")
    checked = [check(name, v) for v in value]
    return checked[-1], checked[-2], checked[-3] if count == 3 else checked[-1]
