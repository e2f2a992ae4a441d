"""Exact correspondences between meshes of the same geometry."""

from __future__ import annotations

from typing import Any, NamedTuple, Optional

import numpy as np

from . import _core
from ._adaptors import adapted
from ._errors import TransferError, advising
from ._meshes import Mesh, selection
from ._models import mesh_of
from ._progress import Progress, told
from ._settings import settings


class GaussPointMatch(NamedTuple):
    """The partners of Gauss points, which run over the target's elements in order."""

    source_element: np.ndarray  #: int32: the source cell, from 0, or -1
    source_gauss_point: np.ndarray  #: int32: the number within that cell, from 0, or -1
    offsets: np.ndarray  #: int64: where each target element's Gauss points begin, and the end


def match_nodes(source: Any, target: Any, **options: Any) -> Any:
    """Finds the source node at the place of each target node, in a material of the same number.

    No values are interpolated: every selected node has its partner, or there is no result.

    Parameters
    ----------
    source, target
        `Mesh`, PyVista or VTK data sets, or meshio meshes.
    **options
        Of those of `Map`: `materials`, `only`, `skip_unsupported`, `as_exported`, `threads`, `progress`.

    Returns
    -------
    int32 array of shape (target nodes,)
        Numbers of source nodes from 0; -1 for nodes that were not selected or are part of no element. For a data set,
        a copy of it with the point array `source_node`.

    Raises
    ------
    TransferError
        If a node has no partner.
    """
    partners = _matched(_core.match_nodes, source, target, **options)[0]
    holder = adapted(target)
    return partners if holder is None else holder.with_arrays({"source_node": partners})


def match_gauss_points(source: Any, target: Any, **options: Any) -> Any:
    """Finds the source Gauss point at the place of each Gauss point of the target.

    Parameters
    ----------
    source, target, **options
        As for `match_nodes`, and `tolerance`, `bucket_factor` and `max_buckets` as for `Map`.

    Returns
    -------
    GaussPointMatch
        For a data set, a copy of it with the cell arrays `source_element`, one number per cell, and
        `source_gauss_point`, as many per cell as the cell with the most has; -1 where there is none.
    """
    (elements, gauss_points), source_mesh, target_mesh = _matched(_core.match_gauss_points, source, target, **options)
    cells = np.where(elements >= 0, source_mesh.cells()[np.maximum(elements, 0)], np.int32(-1))
    match = GaussPointMatch(cells, gauss_points, target_mesh.gauss_point_offsets)
    holder = adapted(target)
    return match if holder is None else holder.with_arrays({}, _cell_arrays(match, target_mesh))


def _cell_arrays(match: GaussPointMatch, mesh: Mesh) -> dict[str, np.ndarray]:
    counts = np.diff(match.offsets)
    element = np.full(mesh.n_cells, -1, dtype=np.int32)
    gauss_point = np.full((mesh.n_cells, max(1, int(counts.max(initial=0)))), -1, dtype=np.int32)
    rows = np.repeat(mesh.elements, counts)
    columns = np.arange(len(rows)) - np.repeat(match.offsets[:-1], counts)
    element[rows] = match.source_element
    gauss_point[rows, columns] = match.source_gauss_point
    return {"source_element": element, "source_gauss_point": gauss_point}


def _matched(
    matching: Any,
    source: Any,
    target: Any,
    *,
    materials: Optional[str] = None,
    only: Any = None,
    skip_unsupported: bool = False,
    progress: Progress = False,
    **search: Any,
) -> tuple[Any, _core.Mesh, Mesh]:
    chosen = settings(**search)
    source_mesh = mesh_of(source, "source", materials, skip_unsupported)
    target_mesh = mesh_of(target, "target", materials, skip_unsupported)
    uses_materials = source_mesh._materials is not None and target_mesh._materials is not None
    volumes = source_mesh._as_source()
    flags = selection(target_mesh, only)
    with told(progress) as callback, advising(
        TransferError, lambda sentence: sentence.replace("the Mapping option", "the Mapping option (veltrane.transfer)")
    ):
        result = matching(volumes, target_mesh._core, uses_materials, flags, chosen, callback)
    return result, volumes, target_mesh
