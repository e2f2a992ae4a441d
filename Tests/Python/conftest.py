import os
import sys

import pytest

sys.path.insert(0, os.path.dirname(__file__))

import meshes  # noqa: E402
import veltrane  # noqa: E402


@pytest.fixture(scope="session")
def cube():
    """The unit cube in 384 tetrahedra."""
    return veltrane.Mesh(*meshes.tetrahedra(4), "tetra")


@pytest.fixture(scope="session")
def bricks():
    return veltrane.Mesh(*meshes.hexahedra(3), "hexahedron")


@pytest.fixture(scope="session")
def cube_grid():
    pyvista = pytest.importorskip("pyvista")
    points, cells = meshes.tetrahedra(4)
    grid = pyvista.UnstructuredGrid({pyvista.CellType.TETRA: cells}, points)
    grid.point_data["temperature"] = meshes.linear(points)
    grid.point_data["velocity"] = points.astype("float32")
    grid.point_data["number"] = range(len(points))
    return grid
