"""How good a map is: fields there and back, and what both meshes have in common."""

from __future__ import annotations

from typing import Any, NamedTuple

import numpy as np


class Coverage(NamedTuple):
    """What of one mesh lies in the other. What is not to receive values does not count."""

    nodes: int
    mapped_nodes: int  #: in a cell of the other mesh, or near one
    near_nodes: int  #: of these, near ones
    mean_near_distance: float
    largest_near_distance: float
    cells: int  #: volumes
    mapped_cells: int  #: all of whose nodes are mapped
    volume: float
    mapped_volume: float  #: of the Gauss points that lie in a cell of the other mesh

    @property
    def node_share(self) -> float:
        """Part of the nodes that is mapped."""
        return self.mapped_nodes / self.nodes if self.nodes else 0.0

    @property
    def cell_share(self) -> float:
        """Part of the cells that is mapped."""
        return self.mapped_cells / self.cells if self.cells else 0.0

    @property
    def volume_share(self) -> float:
        """Part of the volume that is mapped."""
        return self.mapped_volume / self.volume if self.volume else 0.0


class Validation(NamedTuple):
    """A field that was mapped to the target and back, beside the one it was."""

    returned: np.ndarray  #: as the values were given; not a number where nothing comes back
    difference: float  #: relative L2 difference of `returned` from the values
    largest: float  #: the largest difference, over the components
    largest_at: int  #: the source node or Gauss point where it is, from 0, or -1
    compared: int  #: number of locations where something came back
    source: Coverage  #: what of the source lies in the target
    target: Coverage  #: what of the target lies in the source
    source_integral: np.ndarray  #: over the source's volumes, of each component
    target_integral: np.ndarray  #: over the target's, without what has no value of the source
    source_integral_per_material: np.ndarray  #: of shape (materials, components)
    target_integral_per_material: np.ndarray
    integral_difference: float  #: relative to the integral of magnitudes over the source


def validation_of(found: dict[str, Any], shape: tuple[int, ...], components: int) -> Validation:
    """From what the extension gives."""
    found["returned"] = found["returned"].reshape(shape)
    for side in ("source", "target"):
        found[side] = Coverage(**found[side])
        found[f"{side}_integral_per_material"] = found[f"{side}_integral_per_material"].reshape(-1, components)
    return Validation(**found)
