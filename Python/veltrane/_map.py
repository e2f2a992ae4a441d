"""Maps: the search is done once, values are carried as often as one likes."""

from __future__ import annotations

import math
import os
from typing import Any, Optional, Union

import numpy as np

from . import _core
from ._arrays import values as values_of
from ._columns import carry, carry_back, check_out
from ._errors import InvalidDataError, InvalidOptionError, OutsideError, WrongTypeError
from ._meshes import selection
from ._models import mesh_of, target_of
from ._places import FAR, INSIDE, NEAR, Places, Statistics, counts, outside_sentence
from ._progress import Progress, told
from ._settings import GAUSS_RULES, MODES, PLACES, choice, number, settings, whole
from ._validation import Validation, validation_of


class Map:
    """A map from a source mesh to a target mesh or to points.

    It keeps nothing of the meshes and is never changed. Any number of threads may use it at once.

    Parameters
    ----------
    source
        A `Mesh`, a PyVista or VTK data set, or a meshio mesh. Its surface cells are left out.
    target
        The same, or points: `Points`, an array of shape (n, 3), or a data set without cells but points and lines.
    outside : {"error", "nan", "default", "propagate"}
        What happens to locations too far from the source: there is no map (`OutsideError`); they become not a number;
        they become `default`; or nodes of a mesh get the mean of their neighbours, spreading from cell to cell.
    default : float, optional
        What locations hold that get no values, 0 if not given.
    target_at, source_at : {"nodes", "gauss_points", "both"}
        Where values go to and where they come from.
    materials : str, optional
        The name of the cell array that numbers the materials of data sets; of points, a point array.
    only : sequence of int, optional
        The target's materials whose locations receive values, all if not given.
    skip_unsupported : bool
        Leave out cells that cannot be used.
    near_limit : float, optional
        Locations in no cell that are farther than this from the nearest one are far: by default, the longest edge of
        the box of any source cell.
    points_near : bool
        Let points in no cell take the values of a near one, as the nodes of a mesh do.
    tolerance, bucket_factor, max_buckets : optional
        Of the search: how exactly reference coordinates are found (0.001), by which part of its size the box of a cell
        is enlarged (0.1), and the most buckets of the grid.
    as_exported : bool
        Work as the exported functions of the library do: refuse what they refuse, such as targets far larger than the
        source, have no `near_limit` unless it is given, and compute in single precision.
    precision : {"double", "single"}
        Of weights and sums: double unless `as_exported` says otherwise.
    threads : int
        0 stands for `usable_thread_count()`. Results do not depend on it.
    progress : bool or callable
        True shows a bar if tqdm is there. A callable gets percent and stage; returning False cancels.

    Raises
    ------
    OutsideError
        If `outside` is "error" and a location is too far from the source.
    TransferError
        If the meshes cannot be mapped otherwise.
    InvalidDataError, InvalidOptionError, WrongTypeError
        If the arguments do not fit.
    CancelledError, KeyboardInterrupt
        If the progress callback returned False, or Ctrl-C was pressed.
    """

    _takes_checksums = True  # for is_from() and is_to()

    def __init__(
        self,
        source: Any,
        target: Any,
        *,
        outside: str = "error",
        default: Optional[float] = None,
        target_at: str = "nodes",
        source_at: str = "nodes",
        materials: Optional[str] = None,
        only: Any = None,
        skip_unsupported: bool = False,
        near_limit: Optional[float] = None,
        points_near: bool = False,
        tolerance: Optional[float] = None,
        bucket_factor: Optional[float] = None,
        max_buckets: Optional[int] = None,
        as_exported: bool = False,
        precision: Optional[str] = None,
        threads: int = 0,
        progress: Progress = False,
    ) -> None:
        task = _core.Task()
        task.mode = choice(outside, MODES, "outside")
        task.to_nodes, task.to_gauss_points = choice(target_at, PLACES, "target_at")
        task.from_gauss_points = choice(source_at, PLACES, "source_at")[1]
        if outside == "nan" and default is not None:
            raise InvalidOptionError("outside='nan' leaves no choice of default=")
        chosen = settings(
            threads, tolerance, bucket_factor, max_buckets, near_limit, points_near, as_exported, precision
        )
        source_mesh = mesh_of(source, "source", materials, skip_unsupported)
        target_model = target_of(target, materials, skip_unsupported)
        task.takes_checksums = self._takes_checksums
        task.selection = selection(target_model, only)
        task.uses_materials = source_mesh._materials is not None and target_model._materials is not None
        volumes = source_mesh._as_source()
        core = _found(volumes, target_model, task, chosen, progress)
        cells = None if volumes.is_whole else volumes.cells()
        start = math.nan if outside == "nan" else number(default, "default") or 0.0
        self._set(core, start, source_at, target_at, chosen.threads, cells)

    def _set(
        self, core: _core.Map, default: float, source_at: str, target_at: str, threads: int, cells: Optional[np.ndarray]
    ) -> None:
        self._core = core
        self._default = default
        self._from_gauss_points = source_at == "gauss_points"
        self._to_gauss_points = target_at == "gauss_points"
        self._state = (default, source_at, target_at, threads, cells)
        self._threads = threads
        self._cells = cells
        self._kept_places: dict[bool, Places] = {}
        every = core.location_count(False) + core.location_count(True)
        self._fills_first = core.statistics()["interpolated_point_count"] != every

    # Values

    def apply(
        self,
        values: Any,
        *,
        out: Optional[np.ndarray] = None,
        source_at: Optional[str] = None,
        target_at: Optional[str] = None,
        default: Optional[float] = None,
        threads: Optional[int] = None,
    ) -> np.ndarray:
        """The values of a source field at the target.

        Parameters
        ----------
        values : array of shape (n,) or (n, k)
            One row per source node, or Gauss point, by either rule of a kind that has two. float32 stays float32; all
            else becomes float64. Values at or below -8.888e13 are undefined, and so is what depends on them:
            -9.999e13.
        out : array, optional
            Receives the result: of its shape and type, writeable. All of it is written.
        source_at, target_at : {"nodes", "gauss_points"}, optional
            Where the values are and where they go, if the map has both.
        default : float, optional
            Instead of the map's own.

        Returns
        -------
        array of shape (m,) or (m, k)
            `out`, if that was given.
        """
        array = values_of(values)
        way = self._way(source_at, target_at, default, threads)
        counts = self._source_counts(way.from_gauss_points)
        if array.shape[0] not in counts:
            place = "Gauss points" if way.from_gauss_points else "nodes"
            known = " or ".join(map(str, dict.fromkeys(counts)))
            raise InvalidDataError(
                f"the values have the shape {array.shape}, but the source of the map has {known} {place}"
            )
        shape = (self._core.location_count(way.to_gauss_points), *array.shape[1:])
        if shape[0] == 0:
            raise InvalidOptionError(
                f"the map gives no values to {'Gauss points' if way.to_gauss_points else 'nodes'} of the target"
            )
        if out is None:
            result = np.empty(shape, dtype=array.dtype)
            carry(self._core, array, result, way)
            return result
        check_out(out, shape, array.dtype)
        if out.flags.c_contiguous and out.dtype.isnative and not np.may_share_memory(out, array):
            carry(self._core, array, out, way)
        else:
            result = np.empty(shape, dtype=array.dtype)
            carry(self._core, array, result, way)
            out[...] = result
        return out

    def apply_transposed(
        self, values: Any, *, target_at: Optional[str] = None, return_left: bool = False
    ) -> Union[np.ndarray, tuple[np.ndarray, Any]]:
        """Distributes what stands at target locations, such as nodal forces, to the source's nodes.

        The weights are those of `apply`, so sums are kept up to the rounding of the weights.

        Parameters
        ----------
        values : array of shape (m,) or (m, k)
        return_left : bool
            Return the sum of what stood at locations without weights, too: a float, or an array of shape (k,).

        Returns
        -------
        float64 array of shape (n,) or (n, k)
        """
        array = values_of(values)
        at_gauss_points = self._target_place(target_at)
        count = self._core.location_count(at_gauss_points)
        if array.shape[0] != count or count == 0:
            place = "Gauss points" if at_gauss_points else "nodes"
            raise InvalidDataError(
                f"the values have the shape {array.shape}, but the target of the map has {count} {place}"
            )
        rest = array.shape[1:]
        sums, left = carry_back(self._core, array.reshape(count, math.prod(rest)), at_gauss_points)
        result = sums.reshape(len(sums), *rest)
        return (result, left.reshape(rest)[()]) if return_left else result

    def validate(
        self,
        source: Any,
        target: Any,
        values: Any,
        *,
        source_at: Optional[str] = None,
        target_at: Optional[str] = None,
        materials: Optional[str] = None,
        only: Any = None,
        skip_unsupported: bool = False,
        threads: Optional[int] = None,
    ) -> Validation:
        """Maps values to the target and back, and compares them with what they were.

        Parameters
        ----------
        source, target, materials, only, skip_unsupported
            As the map was built from them. The target is a mesh with volume cells.
        values : array of shape (n,) or (n, k)
            As of `apply`, of up to 9 components.

        Returns
        -------
        Validation
            Also tells which share of nodes, cells and volume of both meshes is mapped, and the integrals of both sides.
        """
        array = values_of(values)
        way = self._way(source_at, target_at, None, threads)
        task = _core.ValidationTask()
        task.component_count = math.prod(array.shape[1:])
        task.from_gauss_points, task.to_gauss_points = way.from_gauss_points, way.to_gauss_points
        source_mesh = mesh_of(source, "source", materials, skip_unsupported)
        target_mesh = mesh_of(target, "target", materials, skip_unsupported)
        task.selection = selection(target_mesh, only)
        task.uses_materials = source_mesh._materials is not None and target_mesh._materials is not None
        task.threads = way.threads
        flat = np.ascontiguousarray(array).reshape(-1)
        found = _core.validate(self._core, source_mesh._as_source(), target_mesh._core, flat, task)
        return validation_of(found, array.shape, task.component_count)

    def to_scipy(
        self,
        *,
        source_at: Optional[str] = None,
        target_at: Optional[str] = None,
        resolve_propagation: bool = False,
        gauss_rule: str = "full",
    ) -> Any:
        """The map as a `scipy.sparse.csr_array` of shape (m, n).

        Its product with source values is what `apply` gives up to rounding. Rows of locations without weights are
        empty. With `resolve_propagation`, nodes that propagation reaches are expressed by source nodes, too. Columns of
        Gauss points are by the `gauss_rule` "full" or "reduced", as of a `Mesh`.
        """
        from scipy.sparse import csr_array

        way = self._way(source_at, target_at, None, None)
        data, columns, starts, rows, width = self._core.matrix(
            way.to_gauss_points,
            way.from_gauss_points,
            choice(gauss_rule, GAUSS_RULES, "gauss_rule"),
            bool(resolve_propagation),
        )
        return csr_array((data, columns, starts), shape=(rows, width))

    # Places

    def places(self, target_at: Optional[str] = None) -> Places:
        """Where the target's locations lie in the source."""
        at_gauss_points = self._target_place(target_at)
        if at_gauss_points not in self._kept_places:
            finding, element, coordinates, distance = self._core.places(at_gauss_points)
            if self._cells is not None:
                element = np.where(element >= 0, self._cells[np.maximum(element, 0)], np.int32(-1))
            for array in (finding, element, coordinates, distance):
                array.flags.writeable = False
            self._kept_places[at_gauss_points] = Places(finding, element, coordinates, distance)
        return self._kept_places[at_gauss_points]

    @property
    def inside(self) -> np.ndarray:
        """Per target location, whether it is in a source cell: bool."""
        return self.places().finding == INSIDE

    @property
    def near(self) -> np.ndarray:
        """Per target location, whether it is in no source cell but takes the values of a near one: bool."""
        return self.places().finding == NEAR

    @property
    def far(self) -> np.ndarray:
        """Per target location, whether it is too far from the source, reached by propagation or not: bool."""
        return self.places().finding >= FAR

    @property
    def element(self) -> np.ndarray:
        """Per target location, the source cell that gives the values, from 0, or -1: int32."""
        return self.places().element

    @property
    def distance(self) -> np.ndarray:
        """Per target location 0 inside, of near ones how far their values come from, infinite elsewhere: float64."""
        return self.places().distance

    @property
    def mask(self) -> np.ndarray:
        """Where the values of each target location come from: int8.

        1 a cell it is in, 3 one that it is near, 2 neighbours, -1 the default value, 0 none.
        """
        propagates = self._core.mode == MODES["propagate"]
        codes = np.array([0, 1, 3, 0 if propagates else -1, 2], dtype=np.int8)
        return codes[self.places().finding]

    @property
    def statistics(self) -> Statistics:
        """The figures of the search."""
        return Statistics(**self._core.statistics())

    @property
    def shape(self) -> tuple[int, int]:
        """Number of target locations and of source locations, as of the matrix."""
        return (self._core.location_count(self._to_gauss_points), self._source_count(self._from_gauss_points))

    @property
    def has_unreached_nodes(self) -> bool:
        """Whether there are far nodes that propagation does not reach; they become 0."""
        return self._core.has_unreached_nodes

    @property
    def singular_elements(self) -> np.ndarray:
        """The source cells that were left out for some location because they are singular: int32."""
        elements = self._core.singular_elements()
        return elements if self._cells is None else self._cells[elements]

    def is_from(self, source: Any, *, materials: Optional[str] = None, skip_unsupported: bool = False) -> bool:
        """Whether the map was built from this mesh: positions, cells and materials are the same."""
        return self._core.is_from(mesh_of(source, "source", materials, skip_unsupported)._as_source())

    def is_to(self, target: Any, *, materials: Optional[str] = None, skip_unsupported: bool = False) -> bool:
        """Whether the map was built to this target."""
        return self._core.is_to(target_of(target, materials, skip_unsupported)._core)

    # Keeping

    def save(self, path: Union[str, os.PathLike[str]]) -> None:
        """Writes the map to a file, which the C++ interface can read, too. Raises `Error` if that fails."""
        self._core.save(_path(path))

    @classmethod
    def load(cls, path: Union[str, os.PathLike[str]], *, default: float = math.nan) -> Map:
        """Reads a map back. Raises `Error` if there is no such file, or it is not a whole map of this version.

        A file holds no default value: locations without values become not a number, or what `default` says. If cells
        of the source were left out, `element` counts those that were not.
        """
        return _restored(_core.Map.load(_path(path)), number(default, "default") or 0.0)

    def __reduce__(self) -> tuple[Any, ...]:
        return _unpickled, (self._core.to_bytes(), self._state)

    # What it tells

    def _sizes(self) -> tuple[str, str]:
        def say(count: int, at_gauss_points: bool) -> str:
            return f"{count} {'Gauss points' if at_gauss_points else 'nodes'}"

        targets, sources = self.shape
        return say(sources, self._from_gauss_points), say(targets, self._to_gauss_points)

    def __repr__(self) -> str:
        source, target = self._sizes()
        places = ", ".join(f"{count} {name}" for name, count in counts(self.places()).items())
        return f"<veltrane.Map from {source} to {target}: {places}>"

    def _repr_html_(self) -> str:
        source, target = self._sizes()
        rows = [("source", source), ("target", target), *counts(self.places()).items()]
        rows.append(("mean iterations", f"{self._core.statistics()['mean_iterations']:.2f}"))
        cells = "".join(f"<tr><th style='text-align:left'>{name}</th><td>{value}</td></tr>" for name, value in rows)
        return f"<table><caption>veltrane.Map</caption>{cells}</table>"

    # Helpers

    def _source_counts(self, at_gauss_points: bool) -> tuple[int, ...]:
        """How many source values there may be: of Gauss points by the full rule or the reduced one."""
        return self._core.source_gauss_point_counts if at_gauss_points else (self._core.source_node_count,)

    def _source_count(self, at_gauss_points: bool) -> int:
        return self._source_counts(at_gauss_points)[0]

    def _target_place(self, target_at: Optional[str]) -> bool:
        return self._to_gauss_points if target_at is None else _is_at_gauss_points(target_at, "target_at")

    def _way(
        self, source_at: Optional[str], target_at: Optional[str], default: Optional[float], threads: Optional[int]
    ) -> _core.Way:
        way = _core.Way()
        way.from_gauss_points = (
            self._from_gauss_points if source_at is None else _is_at_gauss_points(source_at, "source_at")
        )
        way.to_gauss_points = self._target_place(target_at)
        way.default_value = self._default if default is None else number(default, "default") or 0.0
        way.fills_first = self._fills_first
        way.threads = self._threads if threads is None else whole(threads, "threads", 2**31 - 1)
        return way


def _found(volumes: _core.Mesh, target: Any, task: _core.Task, chosen: _core.Settings, progress: Progress) -> _core.Map:
    with told(progress) as callback:
        try:
            return _core.make_map(volumes, target._core, task, chosen, callback)
        except OutsideError:
            if chosen.as_exported:
                raise
            task.mode = MODES["default"]  # which tells what lies where
            found = _core.make_map(volumes, target._core, task, chosen, None)
    raise OutsideError(outside_sentence(found, target))


def _is_at_gauss_points(place: Any, name: str) -> bool:
    return choice(place, {"nodes": False, "gauss_points": True}, name)


def _path(path: Any) -> str:
    try:
        name = os.fsdecode(path)
    except TypeError:
        raise WrongTypeError("the path of a map is no path") from None
    if "\0" in name:
        raise InvalidDataError("the path of a map has a zero character in it")
    return name


def _restored(core: _core.Map, default: float) -> Map:
    at_nodes, at_gauss_points = core.location_count(False) > 0, core.location_count(True) > 0
    result = Map.__new__(Map)
    target_at = "nodes" if not at_gauss_points else "both" if at_nodes else "gauss_points"
    result._set(core, default, "nodes", target_at, 0, None)
    return result


def _unpickled(content: bytes, state: tuple[Any, ...]) -> Map:
    result = Map.__new__(Map)
    result._set(_core.Map.from_bytes(content), *state)
    return result
