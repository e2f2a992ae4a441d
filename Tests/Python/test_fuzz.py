"""Whatever comes in, an exception of the package or a right result comes out, and the interpreter lives on.

Under AddressSanitizer this is Scripts/python-package fuzz.
"""

import os
import pickle

import numpy as np
import pytest

import meshes
import veltrane

hypothesis = pytest.importorskip("hypothesis")
from hypothesis import given, settings  # noqa: E402
from hypothesis import strategies as st  # noqa: E402
from hypothesis.extra import numpy as arrays  # noqa: E402

EXAMPLES = int(os.environ.get("VELTRANE_FUZZ_EXAMPLES", "60"))
fuzzed = settings(max_examples=EXAMPLES, deadline=None, derandomize=True, database=None)

odd_numbers = st.sampled_from(
    [0, 1, -1, 3, 4, 10, 2**31 - 1, 2**31, -(2**31), 2**62, 1e30, 1e300, -1e15, np.nan, np.inf, 0.5]
)
dtypes = st.one_of(
    arrays.integer_dtypes(),
    arrays.unsigned_integer_dtypes(),
    arrays.floating_dtypes(),
    arrays.boolean_dtypes(),
    arrays.complex_number_dtypes(),
)
any_array = dtypes.flatmap(
    lambda dtype: arrays.arrays(dtype, arrays.array_shapes(min_dims=0, max_dims=3, min_side=0, max_side=9))
)
anything = st.one_of(
    any_array, st.none(), st.text(max_size=4), odd_numbers, st.lists(odd_numbers, max_size=9), st.booleans()
)

POINTS, CELLS = meshes.tetrahedra(1)


@st.composite
def damaged(draw, array):
    """The array with some entries replaced, perhaps of another type, shape or layout."""
    result = np.array(array, draw(st.sampled_from([np.float64, np.float32, np.int64, np.int32])))
    for _ in range(draw(st.integers(0, 3))):
        with np.errstate(all="ignore"):
            value = np.float64(draw(odd_numbers)).astype(result.dtype)
        result.flat[draw(st.integers(0, result.size - 1))] = value
    result = draw(st.sampled_from([lambda a: a, np.asfortranarray, lambda a: a[::-1], lambda a: a[:-1], np.ravel]))(
        result
    )
    result.flags.writeable = draw(st.booleans())
    return result


options = st.fixed_dictionaries(
    {},
    optional={
        "outside": st.sampled_from(["error", "nan", "default", "propagate", "none"]),
        "default": odd_numbers,
        "target_at": st.sampled_from(["nodes", "gauss_points", "both"]),
        "source_at": st.sampled_from(["nodes", "gauss_points", "both"]),
        "only": st.lists(st.integers(-2, 3), max_size=2),
        "near_limit": odd_numbers,
        "points_near": st.booleans(),
        "tolerance": odd_numbers,
        "bucket_factor": odd_numbers,
        "max_buckets": st.integers(-1, 100000),
        "as_exported": st.booleans(),
        "threads": st.integers(-1, 3),
    },
)


def attempt(work, *arguments, **keywords):
    try:
        return work(*arguments, **keywords)
    except veltrane.Error as error:
        assert str(error)
        return None


@fuzzed
@given(anything, anything, anything, anything)
def test_meshes_of_anything(points, cells, types, materials):
    attempt(veltrane.Mesh, points, cells, types, materials)
    attempt(veltrane.Points, points, materials)


@fuzzed
@given(damaged(POINTS), damaged(CELLS), damaged(np.full(6, 10)), damaged(np.arange(6)))
def test_damaged_meshes(points, cells, types, materials):
    mesh = attempt(veltrane.Mesh, points, cells, types, materials)
    if mesh is not None:
        found = attempt(veltrane.Map, mesh, meshes.inner_points(9), outside="nan")
        if found is not None:
            assert found.apply(np.ones(mesh.n_points)).shape == (9,)


@fuzzed
@given(damaged(POINTS), damaged(CELLS), damaged(POINTS), options)
def test_maps_between_damaged_meshes(points, cells, targets, keywords):
    source = attempt(veltrane.Mesh, points, cells, "tetra", np.arange(6) % 2)
    target = attempt(veltrane.Mesh, targets, CELLS, "tetra", np.arange(6) % 2)
    for model in (target, targets):
        if source is None or model is None:
            continue
        found = attempt(veltrane.Map, source, model, **keywords)
        if found is None:
            continue
        targets_count, sources_count = found.shape
        result = attempt(found.apply, np.ones((sources_count, 2), np.float32))
        assert result is None or result.shape == (targets_count, 2)
        attempt(found.apply_transposed, np.ones(targets_count))
        matrix = attempt(found.to_scipy)
        assert matrix is None or matrix.shape == found.shape
        assert repr(found) and found.mask.shape == found.element.shape


@pytest.fixture(scope="module")
def the_map():
    return veltrane.Map(veltrane.Mesh(POINTS, CELLS, "tetra"), meshes.inner_points(9))


@fuzzed
@given(values=anything, out=anything, default=anything, threads=anything)
def test_values_of_anything(the_map, values, out, default, threads):
    attempt(the_map.apply, values)
    attempt(the_map.apply, np.ones(8), out=out)
    attempt(the_map.apply, np.ones(8), default=default)
    attempt(the_map.apply, np.ones(8), threads=threads if not isinstance(threads, int) or threads < 64 else 1)
    attempt(the_map.apply_transposed, values)


@fuzzed
@given(st.data())
def test_damaged_bytes_of_a_map(the_map, data):
    make, (content, state) = the_map.__reduce__()
    damaged_bytes = bytearray(content)
    for _ in range(data.draw(st.integers(1, 4))):
        damaged_bytes[data.draw(st.integers(0, len(content) - 1))] = data.draw(st.integers(0, 255))
    cut = data.draw(st.integers(0, len(content)))
    for broken in (bytes(damaged_bytes), content[:cut], content + content[:cut]):
        restored = attempt(make, broken, state)
        if restored is not None:
            assert restored.apply(np.ones(8)).shape == (9,)
    assert pickle.loads(pickle.dumps(the_map)).shape == (9, 8)


@fuzzed
@given(damaged(POINTS), damaged(CELLS), options)
def test_matching_damaged_meshes(points, cells, keywords):
    chosen = {key: keywords[key] for key in ("only", "tolerance", "threads", "as_exported") if key in keywords}
    source = veltrane.Mesh(POINTS, CELLS, "tetra", np.arange(6) % 2)
    target = attempt(veltrane.Mesh, points, cells, "tetra", np.arange(6) % 2)
    if target is not None:
        attempt(veltrane.match_nodes, source, target, **chosen)
        attempt(veltrane.match_gauss_points, source, target, **chosen)
