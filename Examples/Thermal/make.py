"""Meshes the bracket with Gmsh, computes its temperatures with CalculiX, and writes the files that the example starts from.

usage: make.py FOLDER
"""

import pathlib
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
TOLERANCE = 1e-6


def mesh(path, *arguments):
    subprocess.run(["gmsh", str(HERE / "bracket.geo"), "-3", "-v", "2", "-o", str(path), *arguments], check=True)


def addNodeSets(path):
    """All nodes, those of the wall's upper end, which is hot, and those of the foot's end, which is cold."""
    nodes = {}
    isNode = False
    for line in path.read_text().splitlines():
        if line.startswith("*"):
            isNode = line.upper().startswith("*NODE")
        elif isNode:
            number, *position = line.split(",")
            nodes[int(number)] = [float(x) for x in position]
    sets = {"ALL": lambda x: True, "HOT": lambda x: x[2] > 40 - TOLERANCE, "COLD": lambda x: x[0] > 40 - TOLERANCE}
    with open(path, "a") as file:
        for name, isIn in sets.items():
            file.write(f"*NSET, NSET={name}\n")
            file.writelines(f"{number},\n" for number, position in nodes.items() if isIn(position))


def solve(job, folder):
    run = subprocess.run(["ccx", job], cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if run.returncode != 0 or "*ERROR" in run.stdout:
        raise RuntimeError(f"CalculiX failed:\n{run.stdout[-2000:]}")


def main():
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    mesh(folder / "heat_mesh.inp", "-setnumber", "swept", "1", "-setnumber", "fine", "2")
    mesh(folder / "stress_mesh.inp", "-setnumber", "size", "8", "-order", "2")
    for name in ("heat_mesh", "stress_mesh"):
        addNodeSets(folder / f"{name}.inp")
    mesh(folder / "bracket.msh", "-setnumber", "size", "10", "-order", "2")
    shutil.copy(HERE / "heat.inp", folder)
    solve("heat", folder)


if __name__ == "__main__":
    main()
