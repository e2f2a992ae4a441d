import numpy as np
import pytest

import meshes
import veltrane


def block(n, size=1.0):
    points, cells = meshes.hexahedra(n)
    return veltrane.Mesh(points * size, cells, "hexahedron")


def test_a_linear_field_comes_back():
    source, target = block(4), block(3)
    values = meshes.linear(source.points)
    validation = veltrane.Map(source, target).validate(source, target, values)
    assert validation.difference < 1e-6
    assert validation.compared == source.n_points
    assert np.allclose(validation.returned, values, atol=1e-5)
    assert validation.source.node_share == validation.target.cell_share == 1
    assert validation.source.volume == pytest.approx(1)
    assert np.allclose(validation.source_integral, validation.target_integral)
    assert validation.integral_difference < 1e-6
    assert validation.source_integral_per_material.shape == (1, 1)


def test_what_is_lost_is_told():
    source, target = block(2), block(1)
    values = np.zeros((source.n_points, 3))
    values[13, 1] = 5.0  # in the middle
    validation = veltrane.Map(source, target).validate(source, target, values)
    assert validation.difference == pytest.approx(1)
    assert validation.largest == pytest.approx(5)
    assert validation.largest_at == 13
    assert validation.returned.shape == (source.n_points, 3)


def test_a_part_covers_a_part():
    source, target = block(4), block(2, 0.5)
    built = veltrane.Map(source, target)
    validation = built.validate(source, target, np.ones(source.n_points, dtype=np.float32))
    assert validation.returned.dtype == np.float32
    assert validation.target.volume_share == pytest.approx(1)
    assert validation.source.volume_share == pytest.approx(0.125)
    assert validation.source_integral == pytest.approx([1])
    assert validation.target_integral == pytest.approx([0.125])


def test_other_meshes_are_refused():
    source, target = block(2), block(3)
    built = veltrane.Map(source, target)
    with pytest.raises(veltrane.InvalidDataError):
        built.validate(target, target, np.ones(source.n_points))
    with pytest.raises(veltrane.InvalidDataError):
        built.validate(source, source, np.ones(source.n_points))
    with pytest.raises(veltrane.WrongTypeError):
        built.validate(source, np.zeros((3, 3)), np.ones(source.n_points))
