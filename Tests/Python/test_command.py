"""The same bits as from the command, on the bundled meshes."""

import os
import pathlib
import subprocess

import numpy as np
import pytest

import veltrane

pyvista = pytest.importorskip("pyvista")

MESHES = pathlib.Path(__file__).resolve().parents[2] / "Examples" / "Meshes"


@pytest.fixture
def program():
    path = os.environ.get("VELTRANE_COMMAND", "")
    if not os.path.exists(path):
        pytest.skip("VELTRANE_COMMAND names no program")
    return path


@pytest.fixture
def command(program):
    def run(*arguments):
        subprocess.run([program, *map(os.fspath, arguments), "--quiet"], check=True)

    return run


def check_equal(ours, theirs):
    assert set(theirs.point_data) <= set(ours.point_data)
    for name in theirs.point_data:
        assert ours.point_data[name].dtype.kind == theirs.point_data[name].dtype.kind
        assert np.array_equal(ours.point_data[name], theirs.point_data[name], equal_nan=True), name


def test_a_refusal_begins_with_the_command_s_sentence(program, tmp_path):
    source = MESHES / "flange_tetrahedra_coarse.vtu"
    points = pyvista.PolyData([[27.0, 0.0, 50.0], [0.0, 0.0, 50.0]])  # in the wall of the pipe, and on its axis
    points.save(tmp_path / "points.vtp")
    arguments = [program, "sample", source, tmp_path / "points.vtp", "-o", tmp_path / "out.vtp"]
    said = subprocess.run(arguments, capture_output=True, text=True, check=False).stderr.splitlines()[-1]
    with pytest.raises(veltrane.OutsideError) as caught:
        veltrane.sample(pyvista.read(source), points)
    theirs, ours = said.removeprefix("veltrane: "), str(caught.value)
    assert theirs.split(";")[0] == ours.split(";")[0]
    assert "--outside" in theirs and "outside=" in ours


@pytest.mark.parametrize("outside", ["error", "default", "propagate"])
def test_transfer(command, tmp_path, outside):
    source, target = MESHES / "flange_quadratic_tetrahedra_fine.vtu", MESHES / "flange_mixed_coarse.vtu"
    command("transfer", source, target, "-o", tmp_path / "out.vtu", "--outside", outside)
    theirs = pyvista.read(tmp_path / "out.vtu")
    ours = veltrane.transfer(pyvista.read(source), pyvista.read(target), outside=outside, materials="material")
    check_equal(ours, theirs)


def test_sample(command, tmp_path):
    source = MESHES / "flange_tetrahedra_fine.vtu"
    grid = pyvista.read(source)
    random = np.random.default_rng(7)
    low, high = np.array(grid.bounds).reshape(3, 2).T
    points = pyvista.PolyData(random.uniform(low, high, (500, 3)).astype(np.float32))
    points.save(tmp_path / "points.vtp")
    command("sample", source, tmp_path / "points.vtp", "-o", tmp_path / "out.vtp", "--outside", "default",
            "--default", "nan")  # fmt: skip
    ours = veltrane.sample(grid, points, outside="nan")
    assert {-1, 1} == set(ours["vtkValidPointMask"])
    check_equal(ours, pyvista.read(tmp_path / "out.vtp"))


def test_match_nodes(command, tmp_path):
    source, target = MESHES / "assembly.vtu", MESHES / "assembly_part.vtu"
    command("match", "nodes", source, target, "-o", tmp_path / "out.vtu")
    theirs = pyvista.read(tmp_path / "out.vtu")["source_node"]
    ours = veltrane.match_nodes(pyvista.read(source), pyvista.read(target), materials="material")["source_node"]
    assert np.array_equal(ours + 1, theirs)
