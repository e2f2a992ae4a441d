"""Cells of second order: hexahedra of 20 and 27 nodes, wedges of 15 and 18, pyramids of 13."""

import numpy as np
import pytest

import meshes
import veltrane

CUBE = np.array([[0, 0, 0], [1, 0, 0], [1, 1, 0], [0, 1, 0], [0, 0, 1], [1, 0, 1], [1, 1, 1], [0, 1, 1]], float)
WEDGE = CUBE[[0, 1, 3, 4, 5, 7]]
PYRAMID = np.vstack([CUBE[:4], [[0.5, 0.5, 1.0]]])
CUBE_EDGES = [(0, 1), (1, 2), (2, 3), (3, 0), (4, 5), (5, 6), (6, 7), (7, 4), (0, 4), (1, 5), (2, 6), (3, 7)]
CUBE_CENTRES = [(0, 3, 7, 4), (1, 2, 6, 5), (0, 1, 5, 4), (3, 2, 6, 7), (0, 1, 2, 3), (4, 5, 6, 7), range(8)]
WEDGE_EDGES = [(0, 1), (1, 2), (2, 0), (3, 4), (4, 5), (5, 3), (0, 3), (1, 4), (2, 5)]
WEDGE_CENTRES = [(0, 1, 4, 3), (1, 2, 5, 4), (2, 0, 3, 5)]
PYRAMID_EDGES = [(0, 1), (1, 2), (2, 3), (3, 0), (0, 4), (1, 4), (2, 4), (3, 4)]
CELLS = {
    "hexahedron20": (CUBE, CUBE_EDGES),
    "hexahedron27": (CUBE, CUBE_EDGES + CUBE_CENTRES),
    "wedge15": (WEDGE, WEDGE_EDGES),
    "wedge18": (WEDGE, WEDGE_EDGES + WEDGE_CENTRES),
    "pyramid13": (PYRAMID, PYRAMID_EDGES),
}


def cell(name):
    """A mesh of one cell, affinely distorted, and its points."""
    corners, groups = CELLS[name]
    points = np.vstack([corners, [corners[list(group)].mean(axis=0) for group in groups]])
    points = points @ np.array([[2.0, 0.3, 0.0], [-0.2, 1.5, 0.1], [0.4, 0.0, 1.2]])
    return veltrane.Mesh(points, {name: np.arange(len(points))[None, :]}), points


def quadratic(points):
    x, y, z = points.T
    return 1 + 2 * x - y + 3 * z + x * x - 2 * x * y + 3 * y * y + z * x - 0.5 * z * y + 0.7 * z * z


@pytest.mark.parametrize("name", CELLS)
def test_quadratic_fields_are_exact(name):
    mesh, points = cell(name)
    rng = np.random.default_rng(1)
    within = rng.dirichlet(np.ones(len(points)), size=200) @ points
    moved = veltrane.Map(mesh, within).apply(quadratic(points))
    assert np.abs(moved - quadratic(within)).max() < 1e-12


@pytest.mark.parametrize("name", ["hexahedron20", "hexahedron27"])
def test_the_rule_of_gauss_points_is_told_from_the_number_of_values(name):
    source, _ = cell(name)
    target, points = cell(name)
    assert source.n_gauss_points == 27
    for rule, count in (("full", 27), ("reduced", 8)):
        target.gauss_rule = rule
        assert (target.gauss_rule, target.n_gauss_points) == (rule, count)
        carry = veltrane.Map(source, target, source_at="gauss_points", target_at="both")
        at_gauss_points = veltrane.Map(source, target, target_at="gauss_points").apply(meshes.linear(points))
        assert len(at_gauss_points) == count
        assert list(target.gauss_point_offsets) == [0, count]
        at_nodes = carry.apply(at_gauss_points, target_at="nodes")
        assert np.abs(at_nodes - meshes.linear(points)).max() < 1e-12
        matrix = carry.to_scipy(target_at="nodes", gauss_rule=rule)
        assert np.abs(matrix @ at_gauss_points - at_nodes).max() < 1e-12
    with pytest.raises(veltrane.InvalidDataError, match="the source of the map has 27 or 8 Gauss points"):
        carry.apply(np.zeros(9))
    with pytest.raises(veltrane.InvalidOptionError, match="gauss_rule='half' is none of 'full', 'reduced'"):
        target.gauss_rule = "half"


def test_they_are_among_the_kinds():
    kinds = {kind.cell_type: kind for kind in veltrane.cell_kinds()}
    expected = {25: (20, 27), 26: (15, 9), 27: (13, 8), 29: (27, 27), 32: (18, 9)}
    assert {number: (kinds[number].n_points, kinds[number].n_gauss_points) for number in expected} == expected
