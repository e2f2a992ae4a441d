"""What PyVista's data sets get: ``mesh.veltrane``. PyVista imports this module when somebody asks for that."""

from __future__ import annotations

from typing import Any

import pyvista

from ._map import Map
from ._match import match_gauss_points, match_nodes
from ._transfer import sample, transfer


@pyvista.register_dataset_accessor("veltrane", pyvista.DataSet)
class VeltraneAccessor:
    """Transfers to and from this data set."""

    def __init__(self, data_set: pyvista.DataSet) -> None:
        self._data_set = data_set

    def sample_from(self, source: Any, fields: Any = None, **options: Any) -> pyvista.DataSet:
        """A copy of this data set with the source's fields at its points. See `veltrane.sample`."""
        return sample(source, self._data_set, fields, **options)

    def transfer_from(self, source: Any, fields: Any = None, **options: Any) -> pyvista.DataSet:
        """A copy of this mesh with the source's fields at its nodes. See `veltrane.transfer`."""
        return transfer(source, self._data_set, fields, **options)

    def map_from(self, source: Any, **options: Any) -> Map:
        """The map from a source to this data set. See `veltrane.Map`."""
        return Map(source, self._data_set, **options)

    def match_nodes_with(self, source: Any, **options: Any) -> pyvista.DataSet:
        """A copy of this mesh that tells the source node of each node. See `veltrane.match_nodes`."""
        return match_nodes(source, self._data_set, **options)

    def match_gauss_points_with(self, source: Any, **options: Any) -> pyvista.DataSet:
        """A copy of this mesh that tells the source Gauss points. See `veltrane.match_gauss_points`."""
        return match_gauss_points(source, self._data_set, **options)
