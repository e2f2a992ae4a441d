#!/usr/bin/env python3
"""Carries the stresses of a flanged pipe to another mesh and draws them along a line of both.

    pip install . pyvista matplotlib
    Examples/Python/stress_along_a_line.py stress.png
"""

import pathlib
import sys

import matplotlib

matplotlib.use("Agg")  # needs no display

import matplotlib.pyplot as plt
import numpy as np
import pyvista
import veltrane

MESHES = pathlib.Path(__file__).resolve().parents[1] / "Meshes"


def main() -> None:
    solved = pyvista.read(MESHES / "flange_quadratic_tetrahedra_fine.vtu")
    other = pyvista.read(MESHES / "flange_mixed_coarse.vtu")

    carried = veltrane.transfer(solved, other, ["von_mises"], materials="material")
    print(f"carried to {carried.n_points} nodes, {np.sum(carried['vtkValidPointMask'] == 1)} of them from a cell")

    # Up the wall of the pipe, halfway between its faces, and beyond its end, where there is nothing to be sampled.
    z = np.linspace(0.5, 130, 300)
    line = np.column_stack([np.full_like(z, 27.0), np.zeros_like(z), z])
    for mesh, label in ((solved, "solved: ten-node tetrahedra"), (carried, "carried: coarse mixed mesh")):
        values, mask = veltrane.sample(mesh, line, mesh["von_mises"], outside="nan")
        plt.plot(z, values, label=f"{label} ({np.sum(mask == 1)} points inside)")

    plt.xlabel("z [mm]")
    plt.ylabel("von Mises stress [MPa]")
    plt.legend()
    plt.tight_layout()
    plt.savefig(sys.argv[1] if len(sys.argv) > 1 else "stress.png", dpi=120)


if __name__ == "__main__":
    main()
