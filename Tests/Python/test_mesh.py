import numpy as np
import pytest

import meshes
import veltrane

CORNERS = np.array([[0, 0, 0], [1, 0, 0], [0, 1, 0], [0, 0, 1]], float)


@pytest.mark.parametrize("kind", [np.int8, np.uint8, np.int32, np.uint64, np.float64, ">i4"])
def test_numbers_of_any_type(kind):
    mesh = veltrane.Mesh(CORNERS.astype(np.float32), np.array([[0, 1, 2, 3]], kind), np.array([10], kind))
    assert mesh.n_cells == 1 and mesh.n_points == 4
    assert np.array_equal(mesh.points, CORNERS)


def test_forms_of_cells():
    points, cells = meshes.tetrahedra(2)
    padded = np.column_stack([np.full(len(cells), 4), cells]).ravel()
    forms = [
        veltrane.Mesh(points, cells, "tetra"),
        veltrane.Mesh(points, cells, 10),
        veltrane.Mesh(points, cells, ["tetra"] * len(cells)),
        veltrane.Mesh(points, padded, np.full(len(cells), 10)),
        veltrane.Mesh(points, {"tetra": cells}),
        veltrane.Mesh(points.tolist(), {10: cells.tolist()}),
        veltrane.Mesh(np.asfortranarray(points), np.asfortranarray(cells), "tetra"),
    ]
    target = meshes.inner_points(20)
    elements = {veltrane.Map(mesh, target).element.tobytes() for mesh in forms}
    assert len(elements) == 1
    assert repr(forms[0]) == "<veltrane.Mesh: 27 points, 48 tetrahedra>"


def test_the_mesh_owns_its_numbers():
    points = CORNERS.copy()
    mesh = veltrane.Mesh(points, [[0, 1, 2, 3]], "tetra")
    points[:] = np.nan
    assert np.array_equal(mesh.points, CORNERS)


@pytest.mark.parametrize(
    "points, cells, types, sentence",
    [
        (CORNERS, [[0, 1, 2, 4]], 10, "cell 0 refers to point 4, but there are 4 points, counted from 0"),
        (CORNERS, [[0, 1, 2, -1]], 10, "refers to point -1"),
        (CORNERS, [[0, 1, 2, 2**40]], 10, "refers to point 1099511627776"),
        (CORNERS, np.array([[0, 1, 2, 2**64 - 1]], np.uint64), 10, "refers to point"),
        (CORNERS, [[0, 1, 2]], 10, "cell 0 is a tetrahedron of 3 points instead of 4"),
        (CORNERS, [4, 0, 1, 2], [10], "cell 0 says that it has 4 points, but 3 numbers are left"),
        (CORNERS, [-4, 0, 1, 2], [10], "cell 0 says that it has -4 points"),
        (CORNERS, [4, 0, 1, 2, 3], [10, 10], "there are 2 cell types, but 2 offsets"),
        (CORNERS, [[0, 1, 2, 3]], 42, "cell 0 is of type 42, which cannot be used"),
        (CORNERS, [[0, 1, 2, 3]], -5, "cell 0 is of type -5, which cannot be used"),
        (CORNERS, [[0, 1, 2, 3]], "tetrahedron", "no cell type 'tetrahedron'"),
        (CORNERS, [[0, 1, 2, 3]], None, "give cell_types"),
        (CORNERS, {}, None, "there is no cell"),
        (CORNERS, {"vertex": [[0]]}, None, "there is no element"),
        (CORNERS, np.zeros((0, 4), int), 10, "there is no element"),
        (CORNERS[:, :2], [[0, 1, 2, 3]], 10, "shape (4, 2), not (n, 3)"),
        (CORNERS * np.nan, [[0, 1, 2, 3]], 10, "coordinate x of node 0 is not a finite"),
        (CORNERS * 1e300, [[0, 1, 2, 3]], 10, "coordinate"),
        (np.zeros((0, 3)), [[0, 1, 2, 3]], 10, "there are 0 points"),
    ],
)
def test_what_does_not_fit_is_said_in_a_sentence(points, cells, types, sentence):
    with pytest.raises(veltrane.InvalidDataError) as caught:
        veltrane.Mesh(points, cells, types)
    assert sentence in str(caught.value)
    assert isinstance(caught.value, ValueError) and isinstance(caught.value, veltrane.Error)


@pytest.mark.parametrize(
    "points, cells, types",
    [
        ("points", [[0, 1, 2, 3]], 10),
        (CORNERS + 1j, [[0, 1, 2, 3]], 10),
        (CORNERS, [[0.5, 1, 2, 3]], 10),
        (CORNERS, [[0, 1, 2, np.nan]], 10),
        (CORNERS, [[0, 1, 2, None]], 10),
        (CORNERS, [[0, 1], [2]], 10),
        (CORNERS, [[0, 1, 2, 3]], [object()]),
        (np.ma.masked_greater(CORNERS, 0.5), [[0, 1, 2, 3]], 10),
    ],
)
def test_what_is_no_number_is_refused(points, cells, types):
    with pytest.raises(veltrane.WrongTypeError) as caught:
        veltrane.Mesh(points, cells, types)
    assert isinstance(caught.value, TypeError)


def test_cells_that_cannot_be_used_may_be_left_out():
    mesh = veltrane.Mesh(CORNERS, [4, 0, 1, 2, 3, 4, 0, 1, 2, 3], [42, 10], skip_unsupported=True)
    assert mesh.elements.tolist() == [1] and mesh.n_cells == 2


@pytest.mark.parametrize("materials", [[1, 2], [[1]], [-1], [2**31], [2**70], ["steel"], [1.5]])
def test_materials_that_do_not_fit(materials):
    with pytest.raises(veltrane.Error):
        veltrane.Mesh(CORNERS, [[0, 1, 2, 3]], 10, materials)
    with pytest.raises(veltrane.Error):
        veltrane.Points([[0.1, 0.1, 0.1]], materials)


def test_every_kind_of_cell_is_listed_with_its_size():
    kinds = {kind.cell_type: kind for kind in veltrane.cell_kinds()}
    assert (kinds[10].n_points, kinds[10].is_volume) == (4, True)
    assert (kinds[12].n_points, kinds[12].n_gauss_points) == (8, 8)
    assert not kinds[5].is_volume


def test_what_is_no_mesh_is_named():
    with pytest.raises(veltrane.WrongTypeError, match="is a dict, not a veltrane.Mesh"):
        veltrane.transfer({}, {})
    with pytest.raises(veltrane.WrongTypeError, match="the source is a list"):
        veltrane.sample([], [[0.0, 0.0, 0.0]])


def test_an_exception_can_be_caught_as_its_family():
    assert issubclass(veltrane.OutsideError, veltrane.TransferError)
    assert issubclass(veltrane.SingularElementError, veltrane.TransferError)
    assert issubclass(veltrane.InvalidOptionError, ValueError)
    assert veltrane.OutsideError.__module__ == "veltrane"


def test_a_flat_source_element_is_left_out_or_named():
    points = np.vstack([CORNERS, [[1, 1, 0]]])
    cells = [[0, 1, 2, 3], [0, 1, 2, 4]]
    mesh = veltrane.Mesh(points, cells, "tetra")
    target = [[0.1, 0.1, 0.0]]
    assert veltrane.Map(mesh, target).element.tolist() == [0]
    with pytest.raises(veltrane.SingularElementError) as caught:
        veltrane.Map(veltrane.Mesh(points, cells[::-1], "tetra"), target, as_exported=True)
    assert caught.value.element == 0
