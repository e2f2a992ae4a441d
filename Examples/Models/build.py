"""Meshes, solves and writes the example models.

usage: build.py MESHES_FOLDER TEMPORARY_FOLDER
"""

import pathlib
import subprocess
import sys

import numpy as np

import calculix
from mesh import detachMaterials, onlyMaterial, readGmsh, renumbered, splitIntoPyramids, writeVtu

HERE = pathlib.Path(__file__).resolve().parent

# name, settings of flange.geo, element order, solved
FLANGES = (
    ("tetrahedra_coarse", {"size": 10, "wall": 6, "detail": 4}, 1, True),
    ("tetrahedra_fine", {"size": 6, "wall": 3.5, "detail": 2.8}, 1, True),
    ("quadratic_tetrahedra_coarse", {"size": 18, "wall": 9, "detail": 6}, 2, True),
    ("quadratic_tetrahedra_fine", {"size": 10, "wall": 6, "detail": 4}, 2, True),
    ("mixed_coarse", {"swept": 1, "division": 2}, 1, False),
    ("mixed_fine", {"swept": 1, "division": 3}, 1, False),
)
WELD = 2
FORK = 2


def gmsh(geometry, settings, path, *options):
    command = ["gmsh", str(HERE / geometry), "-v", "2", "-o", str(path), *options]
    for name, value in settings.items():
        command += ["-setnumber", name, str(value)]
    subprocess.run(command, check=True)
    return readGmsh(path)


def buildFlanges(meshes, temporary):
    for name, settings, order, solved in FLANGES:
        mesh = gmsh("flange.geo", settings, temporary / f"{name}.msh", "-3", "-order", str(order))
        if solved:
            load, reaction = calculix.solve(mesh, HERE / "flange.inp", temporary / name)
            balance = f", load {load.round(2) + 0.0} N, reaction of the bolts {reaction.round(2) + 0.0} N"
        else:
            mesh = splitIntoPyramids(mesh, WELD)
            balance = ""
        print(f"flange_{name}: {mesh.numberOfElements()} elements, {len(mesh.points)} nodes{balance}", flush=True)
        writeVtu(mesh, meshes / f"flange_{name}.vtu")


def buildAssembly(meshes, temporary):
    # The geometry file itself meshes and then merges the nodes, so Gmsh only has to save
    assembly = detachMaterials(gmsh("clevis.geo", {}, temporary / "clevis.msh", "-save"))
    part = renumbered(onlyMaterial(assembly, FORK), np.random.default_rng(1))
    for name, mesh in (("assembly", assembly), ("assembly_part", part)):
        print(f"{name}: {mesh.numberOfElements()} elements, {len(mesh.points)} nodes", flush=True)
        writeVtu(mesh, meshes / f"{name}.vtu")


def main():
    meshes, temporary = (pathlib.Path(argument) for argument in sys.argv[1:3])
    meshes.mkdir(parents=True, exist_ok=True)
    buildFlanges(meshes, temporary)
    buildAssembly(meshes, temporary)


if __name__ == "__main__":
    main()
