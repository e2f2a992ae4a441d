"""Where target locations lie in the source, and the figures of the search."""

from __future__ import annotations

from typing import Any, NamedTuple, Optional

import numpy as np

from . import _core
from ._meshes import Points

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


def outside_sentence(found: _core.Map, target: Any) -> str:
    """What to say of a target that leaves the source, by a map that tells where its locations lie."""
    at_gauss_points = found.location_count(False) == 0 or not np.any(found.places(False)[0] == FAR)
    finding = found.places(at_gauss_points)[0]
    far = np.flatnonzero(finding == FAR)
    is_points = isinstance(target, Points)
    locations = "Gauss points" if at_gauss_points else "points" if is_points else "nodes"
    sentence = f"{len(far)} of {np.count_nonzero(finding != NOT_MAPPED)} {locations} "
    sentence += f"{'is' if len(far) == 1 else 'are'} outside the source"
    if not at_gauss_points and len(far):
        place = ", ".join(f"{coordinate:g}" for coordinate in target.points[far[0]])
        sentence += f"; the first is at ({place})"
    if is_points:
        return f"{sentence}; outside='nan' gives a result all the same, points_near=True those just outside values, too"
    return f"{sentence}; outside='nan', 'default' or 'propagate' gives a result all the same"


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
