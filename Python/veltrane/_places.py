"""Where target locations lie in the source, and the figures of the search."""

from __future__ import annotations

from typing import NamedTuple, Optional

import numpy as np

NOT_MAPPED, INSIDE, NEAR, FAR, REACHED = range(5)


class Places(NamedTuple):
    """Where target locations lie in the source; one entry per location."""

    finding: np.ndarray  #: uint8: 0 receives no values, 1 inside, 2 near, 3 far, 4 far and reached by propagation
    element: np.ndarray  #: int32: the source cell, from 0, or -1
    reference_coordinates: np.ndarray  #: float32 of shape (n, 3)
    distance: np.ndarray  #: float64: of near ones to where their values come from; 0 inside, infinite elsewhere


class Statistics(NamedTuple):
    """The figures of a search."""

    bucket_count: int
    used_bucket_count: int
    mean_elements_per_used_bucket: float
    interpolated_point_count: int
    mean_iterations: float  #: per interpolated point
    nodes_near_and_far: Optional[tuple[int, int]]  #: None where locations cannot be near
    gauss_points_near_and_far: Optional[tuple[int, int]]
    unconverged_point_count: int
    singular_element_count: int
    origin: tuple[float, float, float]  #: what was taken off all coordinates before they became single precision


def counts(places: Places) -> dict[str, int]:
    """How many locations are inside, near and far, and of the other findings if there are any."""
    finding = np.bincount(places.finding, minlength=5)
    named = {
        "inside": finding[INSIDE],
        "near": finding[NEAR],
        "far": finding[FAR] + finding[REACHED],
        "reached by propagation": finding[REACHED],
        "not mapped": finding[NOT_MAPPED],
    }
    return {name: int(count) for name, count in named.items() if count or name in ("inside", "near", "far")}
