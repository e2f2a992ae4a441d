"""Whole transfers in one call."""

from __future__ import annotations

from collections.abc import Mapping
from typing import Any, NamedTuple, Union

import numpy as np

from ._adaptors import adapted
from ._arrays import values as values_of
from ._errors import InvalidDataError, InvalidOptionError
from ._map import Map
from ._models import mesh_of, points_of

MASK = "vtkValidPointMask"


class _MapForOneUse(Map):
    _takes_checksums = False


class Transferred(NamedTuple):
    """What a transfer gives for a target that cannot hold it."""

    values: Union[np.ndarray, dict[str, np.ndarray]]  #: an array, or a dict of them by name
    mask: np.ndarray  #: that of `Map`


def transfer(source: Any, target: Any, fields: Any = None, *, replace: bool = False, **options: Any) -> Any:
    """Transfers fields from one mesh to the nodes of another.

    Parameters
    ----------
    source, target
        `Mesh`, PyVista or VTK data sets, or meshio meshes.
    fields
        Which ones: None for all point arrays of floating-point numbers of the source, a name, a list of names, or a
        mapping of names to new names or to arrays of shape (n,) or (n, k). For a source that holds no fields, an array
        or a mapping of names to arrays.
    replace : bool
        Let transferred fields take the place of the target's arrays of the same names.
    **options
        Those of `Map`: `outside`, `default`, `materials`, `only`, `threads`, `progress` and so on.

    Returns
    -------
    A copy of the target with the fields and the point array `vtkValidPointMask` added, if the target is a data set;
    otherwise `Transferred`, a pair of values and mask. The mask is 1 in a source cell, 3 near one, whose values are
    taken, 2 where neighbours have given the values, -1 where they are default values, and 0 where there are none.

    Raises
    ------
    The exceptions of `Map`.
    """
    materials, skip = options.get("materials"), options.get("skip_unsupported", False)
    target_mesh = mesh_of(target, "target", materials, skip)
    return _carried(source, target, target_mesh, fields, replace, options)


def sample(source: Any, points: Any, fields: Any = None, *, replace: bool = False, **options: Any) -> Any:
    """Samples fields of a mesh at points.

    A point is in a source cell, or it is outside; `points_near=True` lets those outside take the values of a near cell.

    Parameters
    ----------
    source
        A `Mesh`, a PyVista or VTK data set, or a meshio mesh.
    points
        `Points`, an array of shape (n, 3), or a data set, whose points count alone.
    fields, replace, **options
        As for `transfer`.

    Returns
    -------
    As for `transfer`.
    """
    cloud = points_of(points, options.get("materials"))
    return _carried(source, points, cloud, fields, replace, options)


def _carried(source: Any, target: Any, target_model: Any, fields: Any, replace: bool, options: dict[str, Any]) -> Any:
    if options.get("target_at", "nodes") != "nodes" or options.get("source_at", "nodes") != "nodes":
        raise InvalidOptionError("values at Gauss points are carried by veltrane.Map")
    source_mesh = mesh_of(source, "source", options.get("materials"), options.get("skip_unsupported", False))
    result_holder = adapted(target)
    chosen = _chosen(fields, adapted(source))
    if result_holder is not None and not replace:
        _check_new(chosen, result_holder.fields())
    for name, values in chosen.items():
        if len(values) != source_mesh.n_points:
            raise InvalidDataError(
                f"field '{name}' has values at {len(values)} nodes, but the source has {source_mesh.n_points}"
            )
    the_map = _MapForOneUse(source_mesh, target_model, **{**options, "materials": None})
    results = {name: the_map.apply(values) for name, values in chosen.items()}
    if result_holder is not None:
        return result_holder.with_arrays({**results, MASK: the_map.mask})
    is_single = not isinstance(fields, (str, Mapping, list, tuple)) and fields is not None
    return Transferred(next(iter(results.values())) if is_single else results, the_map.mask)


def _check_new(names: Any, existing: dict[str, np.ndarray]) -> None:
    for name in names:
        if name in existing:
            raise InvalidDataError(
                f"the target has a point array '{name}' of its own; replace=True lets the new one take its place"
            )


def _chosen(fields: Any, holder: Any) -> dict[str, np.ndarray]:
    """The arrays to be carried, by their new names."""
    own = {} if holder is None else holder.fields()
    if fields is None:
        chosen = {name: array for name, array in own.items() if array.dtype.kind == "f" and name != MASK}
    elif isinstance(fields, str):
        chosen = {fields: _own(own, fields)}
    elif isinstance(fields, Mapping):
        chosen = {}
        for name, value in fields.items():
            if isinstance(value, str):
                chosen[value] = _own(own, name)
            else:
                chosen[str(name)] = value
        if len(chosen) != len(fields):
            raise InvalidDataError("two fields would have the same new name")
    elif isinstance(fields, (list, tuple)) and all(isinstance(name, str) for name in fields):
        chosen = {name: _own(own, name) for name in fields}
    else:
        chosen = {"values": fields}
    if not chosen:
        raise InvalidDataError("there is no field to be transferred")
    return {name: values_of(array, f"the values of field '{name}'") for name, array in chosen.items()}


def _own(arrays: dict[str, np.ndarray], name: Any) -> np.ndarray:
    if name not in arrays:
        there = f"only {', '.join(sorted(map(str, arrays)))}" if arrays else "and no other"
        raise InvalidDataError(f"the source has no point array '{name}', {there}")
    return arrays[name]
