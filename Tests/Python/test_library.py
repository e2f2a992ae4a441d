"""The same bits as from the exported functions, and the same sentences."""

import os

import numpy as np
import pytest

import library
import veltrane


@pytest.fixture
def exported(tmp_path, monkeypatch):
    path = os.environ.get("VELTRANE_LIBRARY", "")
    if not os.path.exists(path):
        pytest.skip("VELTRANE_LIBRARY names no library")
    monkeypatch.chdir(tmp_path)  # where a call writes its log
    return library.Library(path)


def both(kind, n, scale=1.0, shift=0.0):
    points, cells = library.cube(kind, n, scale, shift)
    return library.Model(points, cells, kind), veltrane.Mesh(points, cells, kind)


def fields_of(model):
    random = np.random.default_rng(3)
    for kind in (np.float32, np.float64):
        for shape in ((), (3,), (6,)):
            yield random.normal(size=(len(model.points), *shape)).astype(kind)


@pytest.mark.parametrize("kinds", [("tetra", "hexahedron"), ("hexahedron", "tetra")])
@pytest.mark.parametrize("outside, shift", [("error", 0.001), ("default", 0.04), ("propagate", 0.04)])
@pytest.mark.parametrize("rules", [{"as_exported": True}, {"precision": "single"}])
def test_values_at_nodes(exported, kinds, outside, shift, rules):
    theirs_source, source = both(kinds[0], 5)
    theirs_target, target = both(kinds[1], 4, 0.998, shift)
    the_map = veltrane.Map(source, target, outside=outside, default=20, **rules)
    for values in fields_of(theirs_source):
        code, message, expected = exported.transfer(
            {"error": 0, "default": 1, "propagate": 2}[outside], 20, theirs_source, values, theirs_target,
            len(theirs_target.points),
        )  # fmt: skip
        assert code == 0, message
        assert the_map.apply(values).tobytes() == expected.tobytes()


@pytest.mark.parametrize("kinds", [("tetra", "hexahedron"), ("hexahedron", "tetra")])
def test_values_at_gauss_points(exported, kinds):
    theirs_source, source = both(kinds[0], 5)
    theirs_target, target = both(kinds[1], 4, 0.9, 0.05)
    the_map = veltrane.Map(source, target, target_at="gauss_points", as_exported=True)
    for values in fields_of(theirs_source):
        code, message, expected = exported.transfer(
            0, 0, theirs_source, values, theirs_target, target.n_gauss_points, location=2
        )
        assert code == 0, message
        assert the_map.apply(values).tobytes() == expected.tobytes()


@pytest.mark.parametrize("shift", [0.04, 2.0])
def test_refusals(exported, shift):
    theirs_source, source = both("tetra", 12)
    theirs_target, target = both("hexahedron", 4, 1.0, shift)
    values = np.zeros(len(theirs_source.points))
    code, message, _ = exported.transfer(0, 0, theirs_source, values, theirs_target, len(theirs_target.points))
    assert code > 0
    with pytest.raises(veltrane.OutsideError if code == 2 else veltrane.TransferError) as caught:
        veltrane.Map(source, target, as_exported=True)
    assert str(caught.value) == " ".join(message.split())


def test_matching_nodes(exported):
    theirs_source, source = both("hexahedron", 3)
    order = np.random.default_rng(4).permutation(len(theirs_source.points))
    points, cells = library.cube("hexahedron", 3)
    shuffled = np.argsort(order)[cells]
    theirs_target = library.Model(points[order], shuffled, "hexahedron")
    code, message, expected = exported.match_nodes(theirs_source, theirs_target)
    assert code == 0, message
    partners = veltrane.match_nodes(source, veltrane.Mesh(points[order], shuffled, "hexahedron"), as_exported=True)
    assert np.array_equal(partners, expected - 1)
    assert np.array_equal(partners, order)
