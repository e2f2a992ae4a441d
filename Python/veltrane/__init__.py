"""Transfers results between finite-element models.

Given a source mesh with fields and a target, a second mesh or points, Veltrane finds every target location in the
source mesh and evaluates the fields there with the element's shape functions.

- `transfer(source, target)` carries fields to the nodes of another mesh, `sample(source, points)` to points. Given
  PyVista or VTK data sets or meshio meshes they return copies with the fields and a mask; given arrays, arrays.
- `Map(source, target)` does the search once; `Map.apply(values)` carries values as often as one likes,
  `Map.apply_transposed` brings loads back, `Map.to_scipy` gives the matrix, `Map.validate` maps back and compares.
- `match_nodes`, `match_gauss_points` find which is which in meshes of the same geometry.
- `Mesh(points, cells, cell_types)` and `Points(points)` are meshes and points from arrays.

Every error is an `Error` with one sentence: `InvalidDataError`, `InvalidOptionError`, `WrongTypeError`,
`TransferError` with `OutsideError` and `SingularElementError`, `CancelledError`.

    >>> import numpy as np, veltrane
    >>> corners = np.array([[0, 0, 0], [1, 0, 0], [0, 1, 0], [0, 0, 1]])
    >>> mesh = veltrane.Mesh(corners, [[0, 1, 2, 3]], "tetra")
    >>> values, mask = veltrane.sample(mesh, [[0.25, 0.25, 0.25]], corners[:, 0] * 4.0)
    >>> values
    array([1.])
"""

from typing import NamedTuple

from . import _core
from ._errors import (
    CancelledError,
    Error,
    InvalidDataError,
    InvalidOptionError,
    OutsideError,
    SingularElementError,
    TransferError,
    WrongTypeError,
)
from ._map import Map
from ._match import GaussPointMatch, match_gauss_points, match_nodes
from ._meshes import Mesh, Points
from ._places import Places, Statistics
from ._transfer import Transferred, sample, transfer
from ._validation import Coverage, Validation

__version__: str = _core.version


class CellKind(NamedTuple):
    """A type of cells that can be used."""

    cell_type: int  #: VTK's number
    name: str
    n_points: int
    n_gauss_points: int
    is_volume: bool  #: others can only receive values


def cell_kinds() -> list[CellKind]:
    """The types of cells that can be used, as `CellKind`."""
    return [CellKind(*kind) for kind in _core.cell_kinds()]


def usable_thread_count() -> int:
    """How many threads ``threads=0`` stands for: the cores that the process may use."""
    return _core.usable_thread_count()


__all__ = [
    "CancelledError",
    "CellKind",
    "Coverage",
    "Error",
    "GaussPointMatch",
    "InvalidDataError",
    "InvalidOptionError",
    "Map",
    "Mesh",
    "OutsideError",
    "Places",
    "Points",
    "SingularElementError",
    "Statistics",
    "TransferError",
    "Transferred",
    "Validation",
    "WrongTypeError",
    "cell_kinds",
    "match_gauss_points",
    "match_nodes",
    "sample",
    "transfer",
    "usable_thread_count",
]
