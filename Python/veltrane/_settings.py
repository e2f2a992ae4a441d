"""Settings that computations share, from keywords."""

from __future__ import annotations

import math
from typing import Any, Optional

import numpy as np

from . import _core
from ._errors import InvalidOptionError, WrongTypeError

MODES = {"error": 0, "default": 1, "nan": 1, "propagate": 2}
PRECISIONS = {"double": True, "single": False}
GAUSS_RULES = {"full": False, "reduced": True}
PLACES = {"nodes": (True, False), "gauss_points": (False, True), "both": (True, True)}


def number(value: Any, name: str) -> Optional[float]:
    if value is None:
        return None
    try:
        if np.ndim(value) > 0:
            raise TypeError
        with np.errstate(over="ignore"):  # what becomes infinite is refused where it matters
            return float(np.float32(float(value)))
    except (TypeError, ValueError):
        raise WrongTypeError(f"{name}= is no number") from None
    except OverflowError:
        return math.inf


def whole(value: Any, name: str, largest: int) -> int:
    try:
        result = int(value.__index__())
    except (AttributeError, TypeError):
        raise WrongTypeError(f"{name}= is no whole number") from None
    if not -largest <= result <= largest:
        raise InvalidOptionError(f"{name}={result} is too large")
    return result


def choice(value: Any, choices: dict[str, Any], name: str) -> Any:
    if not isinstance(value, str) or value not in choices:
        raise InvalidOptionError(f"{name}={value!r} is none of {', '.join(map(repr, choices))}")
    return choices[value]


def settings(
    threads: Any = 0,
    tolerance: Any = None,
    bucket_factor: Any = None,
    max_buckets: Any = None,
    near_limit: Any = None,
    points_near: bool = False,
    as_exported: bool = False,
    precision: Optional[str] = None,
) -> _core.Settings:
    result = _core.Settings()
    result.threads = whole(threads, "threads", 2**31 - 1)
    result.tolerance = number(tolerance, "tolerance")
    result.bucket_factor = number(bucket_factor, "bucket_factor")
    result.max_buckets = None if max_buckets is None else whole(max_buckets, "max_buckets", 2**63 - 1)
    result.near_limit = number(near_limit, "near_limit")
    result.points_may_be_near = bool(points_near)
    result.as_exported = bool(as_exported)
    result.in_double_precision = None if precision is None else choice(precision, PRECISIONS, "precision")
    return result
