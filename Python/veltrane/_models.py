"""Sources and targets from whatever was given."""

from __future__ import annotations

from typing import Any, Optional, Union

import numpy as np

from ._adaptors import adapted
from ._errors import InvalidDataError, WrongTypeError
from ._meshes import Mesh, Points


def _material_array(arrays: dict[str, np.ndarray], name: Optional[str], what: str) -> Any:
    if name is None:
        return None
    if not isinstance(name, str):
        raise WrongTypeError("materials= is the name of an array of the meshes; a Mesh has numbers of its own")
    if name not in arrays:
        raise InvalidDataError(f"the {what} has no array '{name}' to tell the materials")
    return arrays[name]


def mesh_of(model: Any, what: str, materials: Optional[str] = None, skip_unsupported: bool = False) -> Mesh:
    """A mesh as it is, or that of a data set whose cell array of this name numbers the materials."""
    if isinstance(model, Mesh):
        return model
    adaptor = adapted(model)
    if adaptor is None:
        raise WrongTypeError(
            f"the {what} is a {type(model).__name__}, not a veltrane.Mesh, a PyVista or VTK data set, or a meshio mesh"
        )
    numbers = _material_array(adaptor.cell_arrays(), materials, what)
    return Mesh._of(adaptor.points(), adaptor.cells(), numbers, skip_unsupported)


def points_of(model: Any, materials: Optional[str] = None) -> Points:
    """Points as they are, or those of an array or a data set, whose point array of this name numbers the materials."""
    if isinstance(model, Points):
        return model
    if isinstance(model, Mesh):
        return Points(model.points)
    adaptor = adapted(model)
    if adaptor is None:
        return Points(model)
    arrays = adaptor.fields()
    numbers = None if materials is None else arrays.get(materials)
    return Points(adaptor.points(), numbers)


def target_of(
    model: Any, materials: Optional[str] = None, skip_unsupported: bool = False
) -> Union[Mesh, Points]:
    """Arrays are points, and so is a data set without cells but points and lines."""
    if isinstance(model, (Mesh, Points)):
        return model
    adaptor = adapted(model)
    if adaptor is None:
        return points_of(model)
    try:
        holds_nothing = bool(np.all(np.isin(adaptor.cells().types, (0, 1, 2, 3, 4))))
    except InvalidDataError:
        holds_nothing = True
    return points_of(model, materials) if holds_nothing else mesh_of(model, "target", materials, skip_unsupported)
