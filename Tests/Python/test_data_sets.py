"""Data sets of PyVista and VTK, and meshes of meshio."""

import numpy as np
import pytest

import meshes
import veltrane

pyvista = pytest.importorskip("pyvista")


@pytest.fixture
def bricks_grid():
    points, cells = meshes.hexahedra(3)
    return pyvista.UnstructuredGrid({pyvista.CellType.HEXAHEDRON: cells}, points)


def test_transfer_between_grids(cube_grid, bricks_grid):
    arrays = set(bricks_grid.point_data)
    result = veltrane.transfer(cube_grid, bricks_grid)
    assert isinstance(result, pyvista.UnstructuredGrid)
    assert np.allclose(result["temperature"], meshes.linear(bricks_grid.points), atol=1e-5)
    assert np.allclose(result["velocity"], bricks_grid.points, atol=1e-5)
    assert result["velocity"].dtype == np.float32
    assert "number" not in result.point_data  # whole numbers are carried only if they are named
    assert np.all(result["vtkValidPointMask"] == 1)
    assert set(bricks_grid.point_data) == arrays


def test_fields_are_chosen_and_named(cube_grid, bricks_grid):
    assert set(veltrane.transfer(cube_grid, bricks_grid, "number").point_data) == {"number", "vtkValidPointMask"}
    named = veltrane.transfer(cube_grid, bricks_grid, {"temperature": "T"})
    assert set(named.point_data) == {"T", "vtkValidPointMask"}
    given = veltrane.transfer(cube_grid, bricks_grid, {"ones": np.ones(cube_grid.n_points)})
    assert np.allclose(given["ones"], 1.0)
    with pytest.raises(veltrane.InvalidDataError, match="no point array 'heat'"):
        veltrane.transfer(cube_grid, bricks_grid, ["heat"])
    with pytest.raises(veltrane.InvalidDataError, match="replace=True"):
        veltrane.transfer(cube_grid, named, {"velocity": "T"})
    replaced = veltrane.transfer(cube_grid, named, {"velocity": "T"}, replace=True)
    assert replaced["T"].shape == (bricks_grid.n_points, 3)


def test_sample_at_points(cube_grid):
    points = np.vstack([meshes.inner_points(20), [[5, 5, 5]]])
    result = veltrane.sample(cube_grid, pyvista.PolyData(points), "temperature", outside="nan")
    assert isinstance(result, pyvista.PolyData)
    assert np.allclose(result["temperature"][:-1], meshes.linear(points[:-1]), atol=1e-5)
    assert np.isnan(result["temperature"][-1])
    assert result["vtkValidPointMask"].tolist() == [1] * 20 + [-1]


def test_sample_at_an_array(cube_grid):
    points = meshes.inner_points(20)
    values, mask = veltrane.sample(cube_grid, points)
    assert set(values) == {"temperature", "velocity"} and mask.tolist() == [1] * 20
    values, mask = veltrane.sample(cube_grid, points, cube_grid["temperature"])
    assert np.allclose(values, meshes.linear(points), atol=1e-5)


def test_sample_at_the_points_of_a_mesh(cube_grid, bricks):
    values, _ = veltrane.sample(cube_grid, bricks, cube_grid["temperature"])
    assert np.allclose(values, meshes.linear(bricks.points), atol=1e-5)


def test_agrees_with_the_samples_of_pyvista(cube_grid):
    plane = pyvista.Plane(center=(0.5, 0.5, 0.43), direction=(0.2, 0.1, 1), i_size=1.6, j_size=1.6)
    theirs = plane.sample(cube_grid)
    ours = veltrane.sample(cube_grid, plane, outside="default")
    inside = ours["vtkValidPointMask"] == 1
    assert np.array_equal(inside, theirs["vtkValidPointMask"].astype(bool))
    assert np.allclose(ours["temperature"], theirs["temperature"], atol=1e-4)


@pytest.mark.parametrize("kind", ["image", "rectilinear", "structured"])
def test_grids_without_a_list_of_cells_are_sources(kind):
    image = pyvista.ImageData(dimensions=(4, 5, 6), spacing=(1 / 3, 1 / 4, 1 / 5))
    source = {
        "image": lambda: image,
        "rectilinear": image.cast_to_rectilinear_grid,
        "structured": image.cast_to_structured_grid,
    }[kind]()
    source.point_data["T"] = meshes.linear(source.points)
    values, _ = veltrane.sample(source, meshes.inner_points(30), source["T"])
    assert np.allclose(values, meshes.linear(meshes.inner_points(30)), atol=1e-5)


@pytest.mark.skipif(not hasattr(pyvista, "register_dataset_accessor"), reason="this PyVista has no accessors")
def test_the_accessor(cube_grid, bricks_grid):
    result = bricks_grid.veltrane.transfer_from(cube_grid, "temperature")
    assert np.allclose(result["temperature"], meshes.linear(bricks_grid.points), atol=1e-5)
    assert "velocity" in bricks_grid.veltrane.sample_from(cube_grid).point_data
    assert bricks_grid.veltrane.map_from(cube_grid).inside.all()
    partners = bricks_grid.veltrane.match_nodes_with(bricks_grid)["source_node"]
    assert np.array_equal(partners, np.arange(bricks_grid.n_points))


def test_materials_by_the_name_of_their_array(cube_grid):
    cube_grid.cell_data["part"] = np.where(cube_grid.cell_centers().points[:, 0] < 0.5, 1, 2)
    points = pyvista.PolyData([[0.25, 0.5, 0.5], [0.75, 0.5, 0.5]])
    points.point_data["part"] = [2, 2]
    mask = veltrane.sample(cube_grid, points, materials="part", outside="nan")["vtkValidPointMask"]
    assert mask.tolist() == [-1, 1]
    with pytest.raises(veltrane.InvalidDataError, match="no array 'patr'"):
        veltrane.sample(cube_grid, points, materials="patr")


def test_gauss_points_are_told_in_cell_arrays(bricks_grid):
    result = veltrane.match_gauss_points(bricks_grid, bricks_grid)
    assert np.array_equal(result.cell_data["source_element"], np.arange(27))
    assert np.array_equal(result.cell_data["source_gauss_point"], np.tile(np.arange(8), (27, 1)))


def test_a_data_set_of_vtk_itself(cube_grid, bricks_grid):
    from vtkmodules.util.numpy_support import vtk_to_numpy
    from vtkmodules.vtkCommonDataModel import vtkImageData, vtkUnstructuredGrid

    source, target = vtkUnstructuredGrid(), vtkUnstructuredGrid()
    source.ShallowCopy(cube_grid)
    target.ShallowCopy(bricks_grid)
    result = veltrane.transfer(source, target)
    assert type(result) is vtkUnstructuredGrid
    values = vtk_to_numpy(result.GetPointData().GetArray("temperature"))
    assert np.allclose(values, meshes.linear(bricks_grid.points), atol=1e-5)
    assert target.GetPointData().GetNumberOfArrays() == bricks_grid.GetPointData().GetNumberOfArrays()
    image = vtkImageData()
    image.SetDimensions(3, 3, 3)
    image.SetSpacing(0.5, 0.5, 0.5)
    assert veltrane.sample(source, image).GetPointData().HasArray("temperature")


@pytest.mark.parametrize("empty", [pyvista.UnstructuredGrid, pyvista.PolyData, pyvista.ImageData])
def test_empty_data_sets(cube_grid, empty):
    for source, target in ((empty(), cube_grid), (cube_grid, empty())):
        for work in (veltrane.transfer, veltrane.sample, veltrane.Map, veltrane.match_nodes):
            with pytest.raises(veltrane.Error):
                work(source, target)


def test_meshio(cube_grid, bricks_grid, tmp_path):
    meshio = pytest.importorskip("meshio")
    points, cells = meshes.tetrahedra(4)
    source = meshio.Mesh(
        points, [("tetra", cells), ("triangle", [[0, 1, 5]])], {"T": meshes.linear(points)}, {"part": [[1] * 384, [7]]}
    )
    points, cells = meshes.hexahedra(3)
    target = meshio.Mesh(points, [("hexahedron", cells)], cell_data={"part": [[1] * 27]})
    result = veltrane.transfer(source, target, materials="part")
    assert isinstance(result, meshio.Mesh)
    assert np.allclose(result.point_data["T"], meshes.linear(points), atol=1e-5)
    assert "T" not in target.point_data
    result.write(tmp_path / "result.vtu")
    assert np.array_equal(meshio.read(tmp_path / "result.vtu").point_data["T"], result.point_data["T"])
    matched = veltrane.match_gauss_points(target, target)
    assert np.array_equal(matched.cell_data["source_element"][0], np.arange(27))


def test_a_plane_mesh_of_meshio_lies_at_z_0(cube_grid):
    meshio = pytest.importorskip("meshio")
    plane = meshio.Mesh(np.array([[0.2, 0.3], [0.8, 0.3], [0.5, 0.9]]), [("triangle", [[0, 1, 2]])])
    result = veltrane.transfer(cube_grid, plane, "temperature")
    at_z_0 = np.column_stack([plane.points, np.zeros(3)])
    assert np.allclose(result.point_data["temperature"], meshes.linear(at_z_0), atol=1e-5)


def test_a_wedge_of_meshio_is_the_wedge_of_the_file(tmp_path):
    meshio = pytest.importorskip("meshio")
    points = [[0, 0, 0], [1, 0, 0], [0, 1, 0], [0, 0, 1], [1, 0, 1], [0, 1, 1]]
    grid = pyvista.UnstructuredGrid({pyvista.CellType.WEDGE: np.array([[0, 2, 1, 3, 5, 4]])}, np.array(points, float))
    grid.save(tmp_path / "wedge.vtu")
    target = [[0.2, 0.3, 0.4]]
    ours, theirs = veltrane.Map(grid, target), veltrane.Map(meshio.read(tmp_path / "wedge.vtu"), target)
    coordinates = ours.places().reference_coordinates
    assert np.array_equal(coordinates, theirs.places().reference_coordinates)
    assert np.allclose(theirs.to_scipy().toarray() @ np.array(points), target, atol=1e-5)
