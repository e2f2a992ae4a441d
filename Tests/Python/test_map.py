import copy
import math
import pickle
import threading

import numpy as np
import pytest

import meshes
import veltrane


@pytest.fixture(scope="module")
def points():
    return meshes.inner_points(200)


@pytest.fixture(scope="module")
def the_map(cube, points):
    return veltrane.Map(cube, points)


def values_of(mesh):
    return meshes.linear(mesh.points.astype(float))


def test_linear_field_is_reproduced(cube, the_map, points):
    assert np.allclose(the_map.apply(values_of(cube)), meshes.linear(points), atol=1e-5)


@pytest.mark.parametrize("kind", [np.float32, np.float64])
def test_type_of_values_is_kept(cube, the_map, kind):
    assert the_map.apply(values_of(cube).astype(kind)).dtype == kind


@pytest.mark.parametrize("kind", [np.int8, np.uint64, np.bool_, ">f8", np.longdouble])
def test_other_numbers_become_double(cube, the_map, kind):
    values = np.arange(cube.n_points) % 2
    expected = the_map.apply(values.astype(float))
    result = the_map.apply(values.astype(kind))
    assert result.dtype == np.float64
    assert np.array_equal(result, expected)


def test_columns_are_carried_one_by_one(cube, the_map):
    columns = np.column_stack([values_of(cube) * factor for factor in range(1, 23)])
    result = the_map.apply(columns)
    assert result.shape == (200, 22)
    for column in range(22):
        assert np.array_equal(result[:, column], the_map.apply(columns[:, column]))


def test_tensors_keep_their_shape(cube, the_map):
    tensors = np.multiply.outer(values_of(cube), np.arange(9.0).reshape(3, 3))
    result = the_map.apply(tensors)
    assert result.shape == (200, 3, 3)
    assert np.array_equal(result[:, 1, 2], the_map.apply(tensors[:, 1, 2]))


def test_no_columns_are_no_columns(cube, the_map):
    assert the_map.apply(np.zeros((cube.n_points, 0))).shape == (200, 0)


def test_values_that_are_not_contiguous(cube, the_map):
    wide = np.column_stack([values_of(cube)] * 3)
    assert np.array_equal(the_map.apply(wide[:, 1]), the_map.apply(values_of(cube)))
    assert np.array_equal(the_map.apply(values_of(cube)[::-1][::-1]), the_map.apply(values_of(cube)))


def test_values_that_cannot_be_written_are_read(cube, the_map):
    values = values_of(cube)
    values.flags.writeable = False
    assert the_map.apply(values).shape == (200,)


def test_out_receives_the_result(cube, the_map):
    expected = the_map.apply(values_of(cube))
    out = np.full(200, 7.0)
    assert the_map.apply(values_of(cube), out=out) is out
    assert np.array_equal(out, expected)
    every_other = np.full(400, 7.0)
    the_map.apply(values_of(cube), out=every_other[::2])
    assert np.array_equal(every_other[::2], expected)
    assert np.all(every_other[1::2] == 7.0)


def test_out_may_be_where_the_values_are(cube):
    turned_round = veltrane.Map(cube, cube.points[::-1])
    values = values_of(cube)
    expected = turned_round.apply(values)
    turned_round.apply(values, out=values)
    assert np.array_equal(values, expected)


def test_out_that_does_not_fit_is_refused(cube, the_map):
    read_only = np.zeros(200)
    read_only.flags.writeable = False
    for out in (np.zeros(199), np.zeros(200, np.float32), np.zeros((200, 1)), read_only):
        with pytest.raises(veltrane.InvalidDataError, match="out="):
            the_map.apply(values_of(cube), out=out)
    with pytest.raises(veltrane.WrongTypeError):
        the_map.apply(values_of(cube), out=[0.0] * 200)


def test_values_that_do_not_fit_are_refused(the_map):
    with pytest.raises(veltrane.InvalidDataError, match="125 nodes"):
        the_map.apply(np.zeros(124))
    with pytest.raises(veltrane.InvalidDataError):
        the_map.apply(3.0)
    for values in ("heat", np.zeros(125, complex), [None] * 125, [[1.0], [1.0, 2.0]]):
        with pytest.raises(veltrane.WrongTypeError):
            the_map.apply(values)


def test_places(cube):
    target = np.array([[0.1, 0.2, 0.3], [2.0, 2.0, 2.0]])
    places = veltrane.Map(cube, target, outside="nan")
    assert places.inside.tolist() == [True, False]
    assert places.far.tolist() == [False, True]
    assert not places.near.any()
    assert places.element[1] == -1
    assert places.distance.tolist() == [0.0, math.inf]
    assert places.mask.tolist() == [1, -1]
    # x = 0.1, y = 0.2 and z = 0.3 lie in the first cell, in its tetrahedron of z > y > x: the third along the diagonal.
    corners = meshes.tetrahedra(4)
    in_element = corners[0][corners[1][places.element[0]]]
    assert np.all(in_element.min(0) <= target[0]) and np.all(in_element.max(0) >= target[0])
    assert not places.element.flags.writeable


def test_a_node_beside_the_source_is_near(cube):
    moved = cube.points + np.float32([0.01, 0, 0])
    target = veltrane.Mesh(moved, meshes.tetrahedra(4)[1], "tetra")
    near = veltrane.Map(cube, target)
    on_the_face = cube.points[:, 0] == 1.0
    assert np.array_equal(near.near, on_the_face)
    assert np.array_equal(near.mask, np.where(on_the_face, 3, 1))
    taken_from = near.to_scipy() @ cube.points.astype(float)
    assert np.allclose(near.distance, np.linalg.norm(moved - taken_from, axis=1), atol=1e-5)
    limited = veltrane.Map(cube, target, near_limit=0.001, outside="nan")
    assert np.array_equal(limited.far, on_the_face)


def test_what_is_farther_than_a_cell_is_long_is_far(cube):
    points, cells = meshes.tetrahedra(4)
    moved = veltrane.Mesh(points + [0.3, 0.0, 0.0], cells, "tetra")  # by more than a cell's 0.25
    with pytest.raises(veltrane.OutsideError, match="25 of 125 nodes are outside the source; the first is at .1.3, 0, 0"):
        veltrane.Map(cube, moved)
    with pytest.raises(veltrane.OutsideError, match=r"of 384 Gauss points are outside the source; outside='nan'"):
        veltrane.Map(cube, moved, target_at="gauss_points")
    wide = {"bucket_factor": 2.0, "outside": "default"}  # cells are found from twice their size away
    limited = veltrane.Map(cube, moved, **wide)
    assert np.array_equal(limited.far, points[:, 0] == 1.0)
    assert np.array_equal(limited.near, points[:, 0] == 0.75)
    assert veltrane.Map(cube, moved, near_limit=1.0, **wide).near.sum() == 50
    beside = {"target": [[0.5, 0.5, 0.5], [1.3, 0.5, 0.5]], "points_near": True, **wide}
    assert veltrane.Map(cube, **beside).far.tolist() == [False, True]
    assert veltrane.Map(cube, **beside, as_exported=True).near.tolist() == [False, True]


def test_outside(cube):
    target = np.array([[0.5, 0.5, 0.5], [0.5, 0.5, 3.0]])
    with pytest.raises(veltrane.OutsideError, match=r"1 of 2 points is outside the source; the first is at \(0.5, 0.5, 3\)"):
        veltrane.Map(cube, target)
    values = np.ones(cube.n_points)
    assert np.array_equal(veltrane.Map(cube, target, outside="nan").apply(values), [1.0, np.nan], equal_nan=True)
    filled = veltrane.Map(cube, target, outside="default", default=20)
    assert filled.apply(values).tolist() == [1.0, 20.0]
    assert filled.apply(values, default=-1).tolist() == [1.0, -1.0]
    assert filled.apply(values, out=np.full(2, 7.0)).tolist() == [1.0, 20.0]
    with pytest.raises(veltrane.InvalidOptionError):
        veltrane.Map(cube, target, outside="propagate")
    with pytest.raises(veltrane.WrongTypeError, match="default= is no number"):
        filled.apply(values, default=[-1.0])
    with pytest.raises(veltrane.InvalidOptionError, match="'errors' is none of"):
        veltrane.Map(cube, target, outside="errors")


def test_propagation_spreads_from_cell_to_cell(cube):
    points, cells = meshes.hexahedra(2)
    stretched = veltrane.Mesh(points * [1.0, 1.0, 2.0], cells, "hexahedron")
    spread = veltrane.Map(cube, stretched, outside="propagate")
    assert np.array_equal(spread.far, points[:, 2] == 1.0)
    assert spread.apply(np.full(cube.n_points, 5.0)).tolist() == [5.0] * 27
    assert set(spread.mask) == {1, 2}
    entries = np.diff(spread.to_scipy().indptr)
    assert np.array_equal(entries == 0, spread.far)
    assert np.allclose(spread.to_scipy(resolve_propagation=True).sum(axis=1), 1.0, atol=1e-6)


def test_what_propagation_does_not_reach_is_masked(cube):
    points, cells = meshes.hexahedra(1)
    apart = veltrane.Mesh(np.vstack([points, points + 5.0]), np.vstack([cells, cells + 8]), "hexahedron")
    spread = veltrane.Map(cube, apart, outside="propagate")
    assert spread.has_unreached_nodes
    assert spread.mask.tolist() == [1] * 8 + [0] * 8
    assert spread.apply(np.full(cube.n_points, 5.0)).tolist() == [5.0] * 8 + [0.0] * 8


def test_transposed_keeps_sums_and_moments(cube, the_map, points):
    forces = np.random.default_rng(2).normal(size=(200, 3))
    at_nodes = the_map.apply_transposed(forces)
    assert at_nodes.shape == (125, 3)
    assert np.allclose(at_nodes.sum(axis=0), forces.sum(axis=0), atol=1e-4)
    assert np.allclose(
        np.cross(cube.points, at_nodes).sum(axis=0), np.cross(points, forces).sum(axis=0), atol=1e-3
    )
    wide = the_map.apply_transposed(np.tile(forces, 4))
    assert np.array_equal(wide[:, 9:], at_nodes)


def test_transposed_tells_what_is_left(cube):
    target = np.array([[0.5, 0.5, 0.5], [0.5, 0.5, 3.0]])
    result, left = veltrane.Map(cube, target, outside="nan").apply_transposed([2.0, 3.0], return_left=True)
    assert result.shape == (125,) and np.isclose(result.sum(), 2.0)
    assert left == 3.0


def test_matrix_is_the_map(cube, the_map):
    matrix = the_map.to_scipy()
    assert matrix.format == "csr" and matrix.shape == the_map.shape == (200, 125)
    values = values_of(cube)
    assert np.allclose(matrix @ values, the_map.apply(values), atol=1e-5)
    weights = np.arange(200.0)
    assert np.allclose(matrix.T @ weights, the_map.apply_transposed(weights), atol=1e-9)


def test_precision(cube, points):
    values = values_of(cube)
    exact = meshes.linear(points)
    errors = [np.abs(veltrane.Map(cube, points, **one).apply(values) - exact).max()
              for one in ({}, {"precision": "double"}, {"precision": "single"}, {"as_exported": True})]  # fmt: skip
    assert errors[0] == errors[1] < 1e-12
    assert 1e-8 < errors[2] == errors[3] < 1e-5
    with pytest.raises(veltrane.InvalidOptionError, match="'half' is none of 'double', 'single'"):
        veltrane.Map(cube, points, precision="half")


def test_far_from_the_origin_in_double_precision(cube, the_map, points):
    away = np.array([4.0e6, 5.0e6, 100.0])
    source = veltrane.Mesh(cube.points + away, meshes.tetrahedra(4)[1], "tetra")
    assert np.array_equal(source.points, cube.points + away)
    moved = veltrane.Map(source, points + away)
    assert moved.statistics.origin == (4000000.5, 5000000.5, 100.5) and the_map.statistics.origin == (0.0, 0.0, 0.0)
    values = values_of(cube)
    assert np.allclose(moved.apply(values), the_map.apply(values), atol=1e-5)
    with_surfaces = veltrane.Mesh(source.points, {"triangle": [[0, 1, 5]], "tetra": meshes.tetrahedra(4)[1]})
    assert np.array_equal(veltrane.Map(with_surfaces, points + away).apply(values), moved.apply(values))
    with pytest.raises(veltrane.OutsideError):
        veltrane.Map(source, points + away, as_exported=True)


def test_gauss_points(bricks):
    at_gauss_points = veltrane.Map(bricks, bricks, target_at="gauss_points")
    result = at_gauss_points.apply(values_of(bricks))
    assert len(result) == bricks.n_gauss_points == 27 * 8
    # The mean over the Gauss points of a brick is the value at its centre, for a linear field.
    points, cells = meshes.hexahedra(3)
    centres = points[cells].mean(axis=1)
    assert np.allclose(result.reshape(27, 8).mean(axis=1), meshes.linear(centres), atol=1e-5)
    both = veltrane.Map(bricks, bricks, target_at="both", source_at="both")
    assert np.array_equal(both.apply(values_of(bricks), target_at="gauss_points"), result)
    back = both.apply(np.full(27 * 8, 4.0), source_at="gauss_points", target_at="nodes")
    assert np.allclose(back, 4.0, atol=1e-5)
    with pytest.raises(veltrane.InvalidOptionError, match="no values to nodes"):
        at_gauss_points.apply(values_of(bricks), target_at="nodes")


def test_materials_of_the_same_number_correspond():
    points, cells = meshes.tetrahedra(2)
    left = points[cells].mean(axis=1)[:, 0] < 0.5
    source = veltrane.Mesh(points, cells, "tetra", np.where(left, 4, 9))
    target = veltrane.Points([[0.25, 0.5, 0.5], [0.75, 0.5, 0.5]], [9, 9])
    found = veltrane.Map(source, target, outside="nan")
    assert found.inside.tolist() == [False, True]
    assert veltrane.Map(source, [[0.25, 0.5, 0.5]]).inside.tolist() == [True]
    mixed = veltrane.Points([[0.25, 0.5, 0.5], [0.75, 0.5, 0.5]], [4, 9])
    only_9 = veltrane.Map(source, mixed, only=[9], outside="default", default=3)
    assert only_9.mask.tolist() == [0, 1]
    assert only_9.apply(np.ones(source.n_points), out=np.full(2, 7.0)).tolist() == [3.0, 1.0]
    with pytest.raises(veltrane.InvalidDataError, match="no material 5"):
        veltrane.Map(source, mixed, only=5)


def test_a_map_knows_its_meshes_where_it_disregards_their_materials():
    points, cells = meshes.tetrahedra(2)
    numbered = veltrane.Mesh(points, cells, "tetra", np.arange(len(cells)) % 2)
    plain = veltrane.Mesh(points, cells, "tetra")
    assert veltrane.Map(numbered, plain).is_from(numbered) and veltrane.Map(plain, numbered).is_to(numbered)
    assert veltrane.Map(numbered, numbered).is_from(numbered)
    assert not veltrane.Map(numbered, plain).is_from(plain)
    centre = veltrane.Points([[0.5, 0.5, 0.6]], [7])
    assert veltrane.Map(plain, centre).is_to(centre)


def test_only_volumes_are_a_source():
    points, cells = meshes.tetrahedra(1)
    mesh = veltrane.Mesh(points, {"triangle": [[0, 1, 3]], "vertex": [[0]], "tetra": cells})
    assert mesh.elements.tolist() == [0, 2, 3, 4, 5, 6, 7]
    centre = points[cells[2]].mean(axis=0)
    found = veltrane.Map(mesh, [centre])
    assert found.element.tolist() == [4]
    assert pickle.loads(pickle.dumps(found)).element.tolist() == [4]
    with pytest.raises(veltrane.InvalidDataError, match="no volume cell"):
        veltrane.Map(veltrane.Mesh(points, [[0, 1, 3]], "triangle"), [centre])


def test_pickled_and_copied(cube, points):
    values = values_of(cube)
    outside = veltrane.Map(cube, np.vstack([points, [[9, 9, 9]]]), outside="default", default=3)
    expected = outside.apply(values)
    for other in (pickle.loads(pickle.dumps(outside)), copy.deepcopy(outside)):
        assert np.array_equal(other.apply(values), expected)
        assert repr(other) == repr(outside)


def test_saved_and_loaded(cube, the_map, tmp_path):
    values = values_of(cube)
    path = tmp_path / "cube.map"
    the_map.save(path)
    loaded = veltrane.Map.load(path)
    assert np.array_equal(loaded.apply(values), the_map.apply(values))
    assert loaded.is_from(cube) and not loaded.is_from(veltrane.Mesh(*meshes.tetrahedra(3), "tetra"))
    assert loaded.is_to(meshes.inner_points(200))
    with pytest.raises(veltrane.Error, match="cannot open"):
        veltrane.Map.load(tmp_path / "none.map")
    with pytest.raises(veltrane.Error, match="cannot write"):
        the_map.save(tmp_path / "none" / "cube.map")
    path.write_bytes(path.read_bytes()[:-1])
    with pytest.raises(veltrane.Error):
        veltrane.Map.load(path)
    for wrong in (7, None, "a\0b"):
        with pytest.raises(veltrane.Error):
            veltrane.Map.load(wrong)


def test_what_it_tells(the_map):
    assert repr(the_map) == "<veltrane.Map from 125 nodes to 200 nodes: 200 inside, 0 near, 0 far>"
    assert "<td>200</td>" in the_map._repr_html_()
    assert the_map.statistics.interpolated_point_count == 200
    assert not the_map.has_unreached_nodes and the_map.singular_elements.size == 0


def test_threads_do_not_change_the_result(cube, points):
    values = values_of(cube)
    maps = [veltrane.Map(cube, points, threads=threads) for threads in (1, 2, 0)]
    assert len({one.apply(values, threads=threads).tobytes() for one in maps for threads in (1, 2)}) == 1
    for threads in (-1, 2000, 2**40):
        with pytest.raises(veltrane.InvalidOptionError):
            veltrane.Map(cube, points, threads=threads)
    with pytest.raises(veltrane.WrongTypeError):
        veltrane.Map(cube, points, threads="two")


def test_one_map_in_many_threads(cube, the_map):
    values = values_of(cube)
    expected = the_map.apply(values).tobytes()
    results = []

    def work():
        results.extend(the_map.apply(values).tobytes() for _ in range(50))

    workers = [threading.Thread(target=work) for _ in range(4)]
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()
    assert results == [expected] * 200


def test_undefined_values_stay_undefined(cube, the_map):
    values = np.full(cube.n_points, -1e15)
    assert np.all(the_map.apply(values) == -99990001156096.0)
