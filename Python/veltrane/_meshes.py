"""Meshes and points from arrays."""

from __future__ import annotations

from collections.abc import Mapping
from typing import Any, Optional, Union

import numpy as np

from . import _core
from ._arrays import coordinates, integers, numbered
from ._errors import InvalidDataError, WrongTypeError
from ._settings import GAUSS_RULES, choice

_NONE = np.zeros(0, dtype=np.int32)

#: VTK's numbers of cell types by the names that meshio has for them. Which can be used, `cell_kinds()` says.
_TYPE_NAMES = {
    "vertex": 1, "line": 3, "triangle": 5, "polygon": 7, "pixel": 8, "quad": 9, "tetra": 10, "voxel": 11,
    "hexahedron": 12, "wedge": 13, "pyramid": 14, "line3": 21, "triangle6": 22, "quad8": 23, "tetra10": 24,
    "hexahedron20": 25, "wedge15": 26, "pyramid13": 27, "quad9": 28, "hexahedron27": 29, "wedge18": 32,
    "line4": 35, "polyhedron": 42,
}  # fmt: skip


def type_number(cell_type: Any) -> int:
    """VTK's number of a cell type that is given by number or by name."""
    if isinstance(cell_type, str):
        if cell_type not in _TYPE_NAMES:
            raise InvalidDataError(f"there is no cell type '{cell_type}'; known are {', '.join(_TYPE_NAMES)}")
        return _TYPE_NAMES[cell_type]
    return int(integers([cell_type], "cell types")[0])


def _joined(arrays: list[np.ndarray]) -> np.ndarray:
    return arrays[0] if len(arrays) == 1 else np.concatenate(arrays)


def _positions(core: Union[_core.Mesh, _core.Points]) -> np.ndarray:
    exact = core.exact_points()
    return exact if len(exact) else core.points()


class Cells:
    """Cells in three arrays: points of all cells, where each cell's begin, and VTK's types."""

    def __init__(self, connectivity: np.ndarray, offsets: np.ndarray, types: np.ndarray) -> None:
        self.connectivity = connectivity
        self.offsets = offsets
        self.types = types

    @classmethod
    def of_blocks(cls, blocks: list[tuple[Any, Any]]) -> Cells:
        """Of pairs of a type, which all cells of a block have, and an array of shape (cells, points of a cell)."""
        parts, sizes, types = [], [], []
        for cell_type, block in blocks:
            array = integers(block, "the cells")
            if array.ndim != 2:
                raise InvalidDataError(f"cells of one type have the shape {array.shape}, not (cells, points per cell)")
            parts.append(array.reshape(-1))
            sizes.append(np.full(array.shape[0], array.shape[1], dtype=np.int64))
            types.append(np.full(array.shape[0], type_number(cell_type), dtype=np.int64))
        if not parts:
            raise InvalidDataError("there is no cell")
        offsets = np.zeros(sum(map(len, sizes)) + 1, dtype=np.int64)
        np.cumsum(_joined(sizes), out=offsets[1:])
        return cls(_joined(parts), offsets, _joined(types))

    @classmethod
    def of(cls, cells: Any, cell_types: Any) -> Cells:
        """Of any form that `Mesh` takes."""
        if isinstance(cells, Mapping):
            if cell_types is not None:
                raise InvalidDataError("the cells come with their types; cell_types is to be left out")
            return cls.of_blocks(list(cells.items()))
        if cell_types is None:
            raise InvalidDataError("the cells have no types; give cell_types")
        array = integers(cells, "the cells")
        if isinstance(cell_types, str) or np.ndim(cell_types) == 0:
            if array.ndim != 2:
                raise InvalidDataError(f"cells of one type have the shape {array.shape}, not (cells, points per cell)")
            return cls.of_blocks([(cell_types, array)])
        if len(cell_types) and all(isinstance(one, str) for one in cell_types):
            cell_types = [type_number(one) for one in cell_types]
        types = integers(cell_types, "cell types")
        if types.ndim != 1:
            raise InvalidDataError(f"the cell types have the shape {types.shape}, not (cells,)")
        if array.ndim == 2:
            offsets = np.arange(array.shape[0] + 1, dtype=np.int64) * array.shape[1]
            return cls(array.reshape(-1), offsets, types)
        if array.ndim != 1:
            raise InvalidDataError(f"the cells have the shape {array.shape}, not (n,) or (cells, points per cell)")
        connectivity, offsets = _core.split_cells(array)
        return cls(connectivity, offsets, types)


class Mesh:
    """A finite-element mesh, checked when it is built. It owns its numbers.

    Parameters
    ----------
    points : array of shape (n, 3)
        Positions of the nodes, of any type of numbers. The search works in single precision, counted from the middle
        of the source where that would not tell its nodes apart.
    cells
        One of these, whose point numbers count from 0 in VTK's order of a cell's points:

        - a mapping of cell types to arrays of shape (cells, points per cell)
        - an array of shape (cells, points per cell), with one type in `cell_types` or one per cell
        - an array of shape (n,) in which each cell's number of points stands before its points, as PyVista has it
    cell_types
        VTK's numbers, such as 10, or names, such as "tetra". `veltrane.cell_kinds()` lists those that can be used.
    materials : array of shape (cells,), optional
        Whole numbers, not -1. A target location takes values only from source cells of the same number. They are
        disregarded if source or target has none.
    skip_unsupported : bool
        Leave out cells that cannot be used. Points and lines are left out in any case.

    Raises
    ------
    InvalidDataError, WrongTypeError
        If something does not fit: the sentence says what and where.
    """

    def __init__(
        self,
        points: Any,
        cells: Any,
        cell_types: Any = None,
        materials: Any = None,
        *,
        skip_unsupported: bool = False,
    ) -> None:
        self._build(coordinates(points, "the points"), Cells.of(cells, cell_types), materials, skip_unsupported)

    @classmethod
    def _of(cls, points: Any, cells: Cells, materials: Any, skip_unsupported: bool) -> Mesh:
        mesh = cls.__new__(cls)
        mesh._build(coordinates(points, "the points"), cells, materials, skip_unsupported)
        return mesh

    def _build(self, points: np.ndarray, cells: Cells, materials: Any, skip_unsupported: bool) -> None:
        numbers, index = _NONE, _NONE
        if materials is not None:
            numbers, index = numbered(materials, len(cells.types), "cells")
        self._materials: Optional[np.ndarray] = None if materials is None else numbers
        self._core = _core.make_mesh(
            points, cells.connectivity, cells.offsets, cells.types, index, numbers, bool(skip_unsupported)
        )
        self._volumes: Optional[_core.Mesh] = None

    @property
    def n_points(self) -> int:
        """Number of points, whether or not they are part of a cell."""
        return self._core.node_count

    @property
    def n_cells(self) -> int:
        """Number of cells, including those that were left out."""
        return self._core.cell_count

    @property
    def n_gauss_points(self) -> int:
        """Number of Gauss points of all volume cells."""
        return self._core.gauss_point_count

    @property
    def gauss_rule(self) -> str:
        """The Gauss points of hexahedra with 20 or 27 nodes: "full", 27, or "reduced", 8. It can be set.

        It is for values that the mesh receives. Which rule source values are by is told from their number.
        """
        return "reduced" if self._core.is_gauss_rule_reduced else "full"

    @gauss_rule.setter
    def gauss_rule(self, rule: str) -> None:
        is_reduced = choice(rule, GAUSS_RULES, "gauss_rule")
        for core in (self._core, self._volumes):
            if core is not None:
                core.is_gauss_rule_reduced = is_reduced

    @property
    def points(self) -> np.ndarray:
        """A copy of the positions, of shape (n_points, 3): float32, or float64 if single precision does not hold them."""
        return _positions(self._core)

    @property
    def materials(self) -> Optional[np.ndarray]:
        """The different material numbers in increasing order, or None."""
        return None if self._materials is None else self._materials.copy()

    @property
    def elements(self) -> np.ndarray:
        """The numbers of the cells that are elements, int32: those that were not left out."""
        return self._core.cells()

    @property
    def gauss_point_offsets(self) -> np.ndarray:
        """Where the Gauss points of each element begin among those of the mesh, and the end: int64."""
        return self._core.gauss_point_offsets()

    def _as_source(self) -> _core.Mesh:
        """What a search works on: volumes alone."""
        if self._volumes is None:
            self._volumes = self._core.volumes() if self._core.has_surfaces else self._core
        return self._volumes

    def __repr__(self) -> str:
        kinds = ", ".join(f"{count} {name}" for name, count in self._core.kind_counts())
        return f"<veltrane.Mesh: {self.n_points} points, {kinds}>"


class Points:
    """Points that are to receive values.

    Parameters
    ----------
    points : array of shape (n, 3)
        Positions, of any type of numbers.
    materials : array of shape (n,), optional
        Whole numbers, not -1. A point takes values only from source cells of the same number. They are disregarded if
        the source has none.
    """

    def __init__(self, points: Any, materials: Any = None) -> None:
        positions = coordinates(points, "the points")
        numbers, index = _NONE, _NONE
        if materials is not None:
            numbers, index = numbered(materials, len(positions), "points")
        self._materials: Optional[np.ndarray] = None if materials is None else numbers
        self._core = _core.make_points(positions, index, numbers)

    @property
    def n_points(self) -> int:
        """Number of points."""
        return self._core.point_count

    @property
    def points(self) -> np.ndarray:
        """A copy of the positions, as of a `Mesh`."""
        return _positions(self._core)

    @property
    def materials(self) -> Optional[np.ndarray]:
        """The different material numbers in increasing order, or None."""
        return None if self._materials is None else self._materials.copy()

    def __repr__(self) -> str:
        return f"<veltrane.Points: {self.n_points} points>"


def selection(target: Union[Mesh, Points], only: Any) -> list[bool]:
    """Per material of the target whether its locations receive values; empty if all do."""
    if only is None:
        return []
    if target._materials is None:
        raise InvalidDataError("the target has no materials to choose from by only=")
    wanted = integers(np.atleast_1d(only), "the materials of only=").reshape(-1)
    missing = np.setdiff1d(wanted, target._materials)
    if missing.size:
        raise InvalidDataError(f"the target has no material {missing[0]}")
    return [bool(one) for one in np.isin(target._materials, wanted)]
