"""Meshes of the unit cube whose answers are known from geometry."""

import itertools

import numpy as np

# The six tetrahedra around a cell's diagonal, by the cell's corners x + 2 y + 4 z.
_TETRAHEDRA = np.array(
    [[0, 1, 3, 7], [0, 3, 2, 7], [0, 2, 6, 7], [0, 6, 4, 7], [0, 4, 5, 7], [0, 5, 1, 7]], dtype=np.int64
)
_HEXAHEDRON = np.array([0, 1, 3, 2, 4, 5, 7, 6], dtype=np.int64)


def grid_points(n):
    axis = np.linspace(0.0, 1.0, n + 1)
    z, y, x = np.meshgrid(axis, axis, axis, indexing="ij")
    return np.column_stack([x.ravel(), y.ravel(), z.ravel()])


def _corners(n):
    starts = np.array([x + (n + 1) * (y + (n + 1) * z) for z, y, x in itertools.product(range(n), repeat=3)])
    steps = np.array([x + (n + 1) * (y + (n + 1) * z) for z, y, x in itertools.product(range(2), repeat=3)])
    return starts[:, None] + steps[None, :]


def tetrahedra(n):
    """Points, cells of the unit cube in 6 n^3 tetrahedra."""
    return grid_points(n), _corners(n)[:, _TETRAHEDRA].reshape(-1, 4)


def hexahedra(n):
    return grid_points(n), _corners(n)[:, _HEXAHEDRON]


def linear(points):
    """Reproduced by every kind of element."""
    return 1.0 + points @ np.array([2.0, -3.0, 0.5])


def inner_points(count, seed=1):
    return np.random.default_rng(seed).uniform(0.02, 0.98, (count, 3))
