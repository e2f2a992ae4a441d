"""Arrays as people have them, turned into arrays as the extension takes them."""

from __future__ import annotations

from typing import Any

import numpy as np

from ._errors import InvalidDataError, WrongTypeError


def plain(values: Any, what: str) -> np.ndarray:
    """The array of numbers that the argument is; masked and ragged ones are none."""
    if isinstance(values, np.ma.MaskedArray) and np.ma.is_masked(values):
        raise WrongTypeError(f"{what} are a masked array; fill its gaps first")
    try:
        array = np.asarray(values)
    except (ValueError, TypeError) as error:
        raise WrongTypeError(f"{what} are not an array of numbers: {error}") from None
    if array.dtype.kind not in "biuf":
        raise WrongTypeError(f"{what} are of type {array.dtype}, not real numbers")
    return array


def integers(values: Any, what: str) -> np.ndarray:
    """Whole numbers as int64; those beyond its range become its ends, which no count reaches."""
    array = plain(values, what)
    if array.dtype.kind == "f":
        if not np.all(np.isfinite(array)) or np.any(array != np.floor(array)):
            raise WrongTypeError(f"{what} are not whole numbers")
        array = np.clip(array, -(2.0**62), 2.0**62)
    elif array.dtype == np.uint64:
        array = np.minimum(array, np.uint64(2**63 - 1))
    return np.ascontiguousarray(array, dtype=np.int64)


def coordinates(values: Any, what: str) -> np.ndarray:
    """Positions of shape (n, 3), as float32 or float64, contiguous."""
    array = plain(values, what)
    if array.ndim != 2 or array.shape[1] != 3:
        raise InvalidDataError(f"{what} have the shape {array.shape}, not (n, 3)")
    return floating(array)


def floating(array: np.ndarray) -> np.ndarray:
    """Numbers of single precision or less as float32, others as float64, contiguous."""
    kind = np.float32 if array.dtype.kind == "f" and array.dtype.itemsize <= 4 else np.float64
    with np.errstate(over="ignore"):  # what becomes infinite is refused where it matters
        return np.ascontiguousarray(array, dtype=kind)


def values(array: Any, what: str = "the values") -> np.ndarray:
    """Field values as float32 or float64, contiguous. Whole numbers become float64."""
    array = plain(array, what)
    if array.ndim == 0:
        raise InvalidDataError(f"{what} are a single number, not an array")
    return floating(array)


def numbered(materials: Any, count: int, what: str) -> tuple[np.ndarray, np.ndarray]:
    """The different material numbers in increasing order, and per item the index of its own."""
    array = integers(materials, "the materials")
    if array.shape != (count,):
        raise InvalidDataError(f"the materials have the shape {array.shape}, but there are {count} {what}")
    numbers, index = np.unique(array, return_inverse=True)
    limit = np.iinfo(np.int32)
    if numbers.size and (numbers[0] < limit.min or numbers[-1] > limit.max):
        raise InvalidDataError(f"material numbers reach from {numbers[0]} to {numbers[-1]}, too far for 32 bits")
    return numbers.astype(np.int32), np.ascontiguousarray(index, dtype=np.int32).reshape(-1)
