"""What the command writes, as other packages read it."""

import os
import pathlib
import subprocess

import numpy as np
import pytest

meshio = pytest.importorskip("meshio")
pyvista = pytest.importorskip("pyvista")

MESHES = pathlib.Path(__file__).resolve().parents[2] / "Examples" / "Meshes"


@pytest.fixture(params=["none", "fast", "small"])
def written(request, tmp_path):
    path = os.environ.get("VELTRANE_COMMAND", "")
    if not os.path.exists(path):
        pytest.skip("VELTRANE_COMMAND names no program")
    source, target = MESHES / "flange_quadratic_tetrahedra_fine.vtu", MESHES / "flange_tetrahedra_coarse.vtu"
    output = tmp_path / "out.vtu"
    arguments = ["transfer", source, target, "-o", output, "--outside", "default", "--replace",
                 "--compression", request.param]  # fmt: skip
    subprocess.run([path, *map(os.fspath, arguments), "--quiet"], check=True)
    return target, output


def test_meshio_reads_what_pyvista_reads(written):
    target, output = written
    expected, actual = pyvista.read(output), meshio.read(output)
    assert np.array_equal(actual.points, expected.points)
    assert set(actual.point_data) == set(expected.point_data)
    for name, values in expected.point_data.items():
        assert actual.point_data[name].shape == values.shape
        assert np.array_equal(actual.point_data[name], values), name
    for name, values in expected.cell_data.items():
        assert np.array_equal(np.concatenate(actual.cell_data[name]), values), name
    cells = np.concatenate([block.data.ravel() for block in actual.cells])
    assert np.array_equal(cells, expected.cell_connectivity)


def test_the_target_is_in_it_as_it_was(written):
    target, output = written
    before, after = pyvista.read(target), pyvista.read(output)
    assert np.array_equal(before.points, after.points)
    assert np.array_equal(before.cells, after.cells)
    assert np.array_equal(before.celltypes, after.celltypes)
    for name, values in before.cell_data.items():
        assert np.array_equal(after.cell_data[name], values), name
