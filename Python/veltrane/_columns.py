"""Values with any number of components, of which the C++ interface carries a few at a time."""

from __future__ import annotations

import math
from typing import Any

import numpy as np

from . import _core
from ._errors import InvalidDataError, WrongTypeError

_MOST_COMPONENTS = 9


def _parts(count: int) -> list[slice]:
    return [slice(first, first + _MOST_COMPONENTS) for first in range(0, count, _MOST_COMPONENTS)]


def carry(core: _core.Map, values: np.ndarray, result: np.ndarray, way: _core.Way) -> None:
    """Writes the target's values, of the type of the source's and contiguous like them, to `result`."""
    components = math.prod(values.shape[1:])
    if components <= _MOST_COMPONENTS:
        if components:
            way.component_count = components
            core.apply(values, result, way)
        return
    sources = values.reshape(len(values), components)
    targets = result.reshape(len(result), components)
    for columns in _parts(components):
        part = np.ascontiguousarray(sources[:, columns])
        piece = np.empty((len(targets), part.shape[1]), dtype=part.dtype)
        carry(core, part, piece, way)
        targets[:, columns] = piece


def carry_back(core: _core.Map, values: np.ndarray, at_gauss_points: bool) -> tuple[np.ndarray, np.ndarray]:
    """The sums at source nodes of what stands at target locations, and what is left; both per column."""
    sums = np.zeros((core.source_node_count, values.shape[1]))
    left = np.zeros(values.shape[1])
    for columns in _parts(values.shape[1]):
        part = np.ascontiguousarray(values[:, columns])
        at_nodes, left[columns] = core.apply_transposed(part, part.shape[1], at_gauss_points)
        sums[:, columns] = at_nodes.reshape(-1, part.shape[1])
    return sums, left


def check_out(out: Any, shape: tuple[int, ...], dtype: np.dtype) -> None:
    if not isinstance(out, np.ndarray):
        raise WrongTypeError("out= is no numpy array")
    if out.shape != shape or out.dtype.newbyteorder("=") != dtype:
        raise InvalidDataError(f"out= is of shape {out.shape} and type {out.dtype}, not {shape} and {dtype}")
    if not out.flags.writeable:
        raise InvalidDataError("out= cannot be written")
