"""Meshes of other packages, known by what they can do: data sets of VTK and PyVista, and meshes of meshio.

None of these packages is imported unless an object of it comes in.
"""

from __future__ import annotations

import copy
from typing import Any, Optional

import numpy as np

from ._arrays import integers
from ._errors import InvalidDataError
from ._meshes import Cells


class VtkModel:
    """A data set of VTK or PyVista."""

    def __init__(self, data_set: Any) -> None:
        self._data = data_set
        self._grid = data_set if data_set.IsA("vtkUnstructuredGrid") else None

    @staticmethod
    def fits(model: Any) -> bool:
        return callable(getattr(model, "IsA", None)) and bool(model.IsA("vtkDataSet"))

    @staticmethod
    def _numpy(array: Any) -> np.ndarray:
        from vtkmodules.util.numpy_support import vtk_to_numpy

        return vtk_to_numpy(array)

    def _as_grid(self) -> Any:
        """The data set as an unstructured grid with the same points and cells."""
        if self._grid is None:
            from vtkmodules.vtkFiltersCore import vtkAppendFilter

            append = vtkAppendFilter()
            append.AddInputData(self._data)
            append.Update()
            self._grid = append.GetOutput()
        return self._grid

    def points(self) -> np.ndarray:
        points = self._data.GetPoints() if self._data.IsA("vtkPointSet") else self._as_grid().GetPoints()
        return np.empty((0, 3)) if points is None else self._numpy(points.GetData())

    def cells(self) -> Cells:
        grid = self._as_grid()
        cells = grid.GetCells()
        if cells is None or grid.GetNumberOfCells() == 0:
            raise InvalidDataError("there is no cell")
        return Cells(
            integers(self._numpy(cells.GetConnectivityArray()), "the cells"),
            integers(self._numpy(cells.GetOffsetsArray()), "the offsets"),
            integers(self._numpy(self._types(grid)), "the cell types"),
        )

    @staticmethod
    def _types(grid: Any) -> Any:
        try:
            return grid.GetCellTypes()
        except TypeError:  # before VTK 9.6 only the longer name gives them per cell
            return grid.GetCellTypesArray()

    def fields(self) -> dict[str, np.ndarray]:
        return self._arrays(self._data.GetPointData())

    def cell_arrays(self) -> dict[str, np.ndarray]:
        return self._arrays(self._data.GetCellData())

    def _arrays(self, data: Any) -> dict[str, np.ndarray]:
        arrays = (data.GetArray(i) for i in range(data.GetNumberOfArrays()))
        return {one.GetName(): self._numpy(one) for one in arrays if one is not None and one.GetName()}

    def with_arrays(self, point_arrays: dict[str, np.ndarray], cell_arrays: Optional[dict[str, np.ndarray]] = None) -> Any:
        """A copy that shares everything, with further arrays."""
        from vtkmodules.util.numpy_support import numpy_to_vtk

        if hasattr(self._data, "copy"):  # PyVista's, which keeps its class
            result = self._data.copy(deep=False)
        else:
            result = self._data.NewInstance()
            result.ShallowCopy(self._data)
        for data, arrays in ((result.GetPointData(), point_arrays), (result.GetCellData(), cell_arrays or {})):
            for name, values in arrays.items():
                array = numpy_to_vtk(values, deep=True)
                array.SetName(name)
                data.AddArray(array)
        return result


class MeshioModel:
    """A mesh of meshio."""

    def __init__(self, mesh: Any) -> None:
        self._mesh = mesh

    @staticmethod
    def fits(model: Any) -> bool:
        return all(hasattr(model, name) for name in ("points", "cells", "point_data", "cell_data")) and isinstance(
            model.cells, list
        )

    def points(self) -> np.ndarray:
        points = np.asarray(self._mesh.points)
        if points.ndim == 2 and points.shape[1] == 2:  # a plane mesh lies at z = 0
            points = np.column_stack([points, np.zeros(len(points))])
        return points

    def cells(self) -> Cells:
        blocks = []
        for block in self._mesh.cells:
            data = block.data
            if block.type == "wedge":  # whose triangles meshio runs through the other way round than VTK
                data = np.asarray(data)[:, [0, 2, 1, 3, 5, 4]]
            blocks.append((block.type, data))
        return Cells.of_blocks(blocks)

    def fields(self) -> dict[str, np.ndarray]:
        return {name: np.asarray(values) for name, values in self._mesh.point_data.items()}

    def cell_arrays(self) -> dict[str, np.ndarray]:
        return {name: np.concatenate(blocks) for name, blocks in self._mesh.cell_data.items()}

    def with_arrays(self, point_arrays: dict[str, np.ndarray], cell_arrays: Optional[dict[str, np.ndarray]] = None) -> Any:
        """A copy that shares everything, with further arrays."""
        result = copy.copy(self._mesh)
        result.point_data = {**self._mesh.point_data, **point_arrays}
        ends = np.cumsum([len(block.data) for block in self._mesh.cells])[:-1]
        split = {name: np.split(values, ends) for name, values in (cell_arrays or {}).items()}
        result.cell_data = {**self._mesh.cell_data, **split}
        return result


def adapted(model: Any) -> Any:
    """The adaptor of a mesh of another package, or None."""
    for adaptor in (VtkModel, MeshioModel):
        if adaptor.fits(model):
            return adaptor(model)
    return None
