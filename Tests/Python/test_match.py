import numpy as np
import pytest

import meshes
import veltrane


def test_nodes_in_another_order(bricks):
    points, cells = meshes.hexahedra(3)
    order = np.random.default_rng(5).permutation(len(points))
    target = veltrane.Mesh(points[order], np.argsort(order)[cells], "hexahedron")
    assert np.array_equal(veltrane.match_nodes(bricks, target), order)


def test_a_node_without_a_partner(bricks):
    with pytest.raises(veltrane.TransferError, match="Mapping option .veltrane.transfer."):
        veltrane.match_nodes(bricks, veltrane.Mesh(*meshes.hexahedra(2), "hexahedron"))


def test_only_selected_materials_are_matched():
    points, cells = meshes.hexahedra(2)
    materials = (points[cells].mean(axis=1)[:, 0] > 0.5) + 1
    mesh = veltrane.Mesh(points, cells, "hexahedron", materials)
    partners = veltrane.match_nodes(mesh, mesh, only=[2])
    assert np.array_equal(partners >= 0, points[:, 0] == 1.0)


def test_gauss_points_of_cells_in_another_order(bricks):
    points, cells = meshes.hexahedra(3)
    order = np.random.default_rng(6).permutation(len(cells))
    match = veltrane.match_gauss_points(bricks, veltrane.Mesh(points, cells[order], "hexahedron"))
    assert np.array_equal(match.source_element, np.repeat(order, 8))
    assert np.array_equal(match.source_gauss_point, np.tile(np.arange(8), 27))
    assert np.array_equal(match.offsets, np.arange(28) * 8)


def test_cells_that_were_left_out_count():
    points, cells = meshes.hexahedra(2)
    source = veltrane.Mesh(points, {"quad": [[0, 1, 4, 3]], "hexahedron": cells})
    match = veltrane.match_gauss_points(source, veltrane.Mesh(points, cells, "hexahedron"))
    assert np.array_equal(match.source_element, np.repeat(np.arange(8) + 1, 8))
