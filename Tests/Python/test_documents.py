"""The Python in the documents runs as it stands."""

import pathlib
import re
import subprocess
import sys

import numpy as np
import pytest

import meshes
import veltrane

pyvista = pytest.importorskip("pyvista")

ROOT = pathlib.Path(__file__).resolve().parents[2]


def blocks_of(document):
    return re.findall(r"```python\n(.*?)```", (ROOT / document).read_text(encoding="utf-8"), flags=re.DOTALL)


def test_the_lines_of_the_readme(cube_grid):
    (block,) = blocks_of("README.md")
    assert len(block.splitlines()) == 3
    cube_grid.cell_data["material"] = np.ones(cube_grid.n_cells, int)
    names = {"thermal": cube_grid, "structure": cube_grid.copy(), "temperature": cube_grid["temperature"]}
    names["structure"].clear_point_data()
    exec(block, names)
    assert np.array_equal(names["loaded"]["temperature"], names["loads"])
    assert np.allclose(names["loads"], cube_grid["temperature"], atol=1e-5)


@pytest.fixture
def names(cube, monkeypatch):
    """What stands in the guide without being made there."""
    monkeypatch.chdir(ROOT)
    monkeypatch.setattr(pyvista.UnstructuredGrid, "plot", lambda self, scalars: self[scalars])
    points, cells = meshes.tetrahedra(4)
    wedge = np.array([[0, 1, 5, 25, 26, 30]])
    return {
        "np": np,
        "points": points,
        "cells": cells,
        "tetra": cells,
        "wedge": wedge,
        "grid": pyvista.UnstructuredGrid({pyvista.CellType.TETRA: cells}, points),
        "numbers": np.ones(len(cells), int),
        "places": np.vstack([meshes.inner_points(9), [[5, 5, 5]]]),
        "temperature": meshes.linear(points),
        "thermal_mesh": cube,
        "structure_mesh": cube,
        "solve_thermal": lambda step: np.full(len(points), float(step)),
        "solve_structure": lambda step, values: np.testing.assert_allclose(values, step, rtol=1e-6),
        "fluid_surface_points": meshes.inner_points(20),
        "pressure_forces": np.random.default_rng(1).normal(size=(20, 3)),
        "source": cube,
        "target": cube,
    }


def test_the_guide(names):
    blocks = blocks_of("Documentation/Python.md")
    assert len(blocks) == 7
    guide = "\n".join(blocks[:2])
    assert len(blocks[0].strip().splitlines()) <= 10
    exec(guide, names)
    assert names["mask"].tolist() == [1] * 9 + [-1]
    names.update(temperature=meshes.linear(names["points"]), target=names["source"])
    for block in blocks[2:]:
        exec(block, names)
    assert names["matrix"].shape == (125, 125)
    assert names["check"].target.volume_share == pytest.approx(1)
    assert len(names["values"]) == veltrane.Mesh(*meshes.tetrahedra(4), "tetra").n_gauss_points


def test_the_example_draws_its_picture(tmp_path):
    pytest.importorskip("matplotlib")
    script = ROOT / "Examples/Python/stress_along_a_line.py"
    picture = tmp_path / "stress.png"
    done = subprocess.run([sys.executable, script, picture], capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stderr
    assert "carried to" in done.stdout and picture.read_bytes().startswith(b"\x89PNG")
