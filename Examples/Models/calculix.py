"""The flanged pipe's load case in CalculiX: input from a mesh, results back to its nodes."""

import pathlib
import re
import shutil
import subprocess

import numpy as np

from mesh import areaVector

# CalculiX orders the nodes and faces of these elements as VTK does; its faces count from 1
ELEMENT_TYPES = {"tetrahedron": "C3D4", "quadratic tetrahedron": "C3D10"}
REGIONS = {1: "FLANGE", 2: "WELD", 3: "PIPE"}

BORE_RADIUS = 24.0
PIPE_END = 120.0
HOLE_RADIUS = 7.0
BOLT_CIRCLE_RADIUS = 54.0
PRESSURE = 6.0

# Across the pipe, and along it what the pressure does on a closed end
END_FORCE = np.array([4000.0, 0.0, PRESSURE * np.pi * BORE_RADIUS**2])

TOLERANCE = 0.05


def onBore(corners):
    return np.all(np.abs(np.hypot(corners[:, 0], corners[:, 1]) - BORE_RADIUS) < TOLERANCE)


def onEnd(corners):
    return np.all(np.abs(corners[:, 2] - PIPE_END) < TOLERANCE)


def inHole(corners):
    # The holes lie at 45 degrees in each quadrant, so folding into the first quadrant finds all four
    centre = BOLT_CIRCLE_RADIUS * np.sqrt(0.5)
    distance = np.hypot(np.abs(corners[:, 0]) - centre, np.abs(corners[:, 1]) - centre)
    return np.all(np.abs(distance - HOLE_RADIUS) < TOLERANCE)


def endLoad(mesh, faces):
    """The end force spread evenly over the end face, as consistent nodal forces: {node: force[3]}.

    A uniform traction loads the corners of a linear triangle alike, and of a quadratic one only the mid-edge nodes.
    """
    shares = {}
    for face in faces:
        nodes = mesh.faceNodes(face)
        loaded = nodes[3:] if len(nodes) == 6 else nodes
        area = np.linalg.norm(areaVector(mesh.points[nodes]))
        for node in loaded:
            shares[node] = shares.get(node, 0.0) + area / len(loaded)
    total = sum(shares.values())
    return {node: END_FORCE * share / total for node, share in shares.items()}


def writeInput(mesh, folder):
    """Writes mesh.inp and end_load.inp; gives the resultant of all loads on this mesh."""
    boundary = mesh.boundaryFaces()
    corners = {face: mesh.points[mesh.faceNodes(face)[:3]] for face in boundary}
    bore = [face for face in boundary if onBore(corners[face])]
    end = [face for face in boundary if onEnd(corners[face])]
    holes = np.unique(np.concatenate([mesh.faceNodes(face) for face in boundary if inHole(corners[face])]))

    firstElement = {}
    with open(folder / "mesh.inp", "w") as file:
        file.write("*NODE, NSET=ALL\n")
        for i, point in enumerate(mesh.points):
            file.write(f"{i + 1}, {point[0]:.12g}, {point[1]:.12g}, {point[2]:.12g}\n")
        number = 1
        for name, block in mesh.blocks.items():
            firstElement[name] = number
            for material, region in REGIONS.items():
                file.write(f"*ELEMENT, TYPE={ELEMENT_TYPES[name]}, ELSET={region}\n")
                for element in np.flatnonzero(block.material == material):
                    nodes = ", ".join(str(node + 1) for node in block.connectivity[element])
                    file.write(f"{number + element}, {nodes}\n")
            number += len(block.material)
        file.write("*NSET, NSET=HOLES\n")
        file.writelines(f"{node + 1},\n" for node in holes)
        file.write("*SURFACE, NAME=BORE, TYPE=ELEMENT\n")
        file.writelines(f"{firstElement[name] + element}, S{face + 1}\n" for name, element, face in bore)

    with open(folder / "end_load.inp", "w") as file:
        file.write("*CLOAD\n")
        for node, force in endLoad(mesh, end).items():
            file.writelines(f"{node + 1}, {axis + 1}, {force[axis]:.12g}\n" for axis in range(3) if force[axis])

    # The bore's two rims are polygons of different areas, so the pressure has a small resultant along the pipe
    return END_FORCE + PRESSURE * sum(areaVector(mesh.points[mesh.faceNodes(face)]) for face in bore)


def readFrd(path, numberOfNodes):
    """Nodal results of the last step of a CalculiX result file: {block name: float[nodes][components]}.

    Every line of values is ' -1', the node in 10 columns and up to six values in 12 columns each, with no separators.
    """
    results = {}
    current = None
    components = 0
    with open(path) as file:
        for line in file:
            key = line[:3]
            if key == " -4":
                words = line.split()
                # The last component of a vector is its length, which is announced but not stored
                components = int(words[2]) - (words[1] == "DISP")
                current = results[words[1]] = np.full((numberOfNodes, components), np.nan)
            elif key == " -3":
                current = None
            elif key == " -1" and current is not None:
                current[int(line[3:13]) - 1] = [float(line[13 + 12 * i : 25 + 12 * i]) for i in range(components)]
    return results


def vonMises(stress):
    """From components xx, yy, zz, xy, yz, zx."""
    xx, yy, zz, xy, yz, zx = stress.T
    return np.sqrt(((xx - yy) ** 2 + (yy - zz) ** 2 + (zz - xx) ** 2) / 2 + 3 * (xy**2 + yz**2 + zx**2))


def readReaction(path):
    """The total force of the supports that CalculiX prints."""
    match = re.search(r"total force \(fx,fy,fz\).*\n\s*\n?\s*(\S+)\s+(\S+)\s+(\S+)", pathlib.Path(path).read_text())
    return np.array([float(value) for value in match.groups()])


def solve(mesh, loadCase, folder):
    """Solves the load case on a mesh and gives the mesh its results. Returns the resultants of the loads and of the
    supports, which must balance."""
    folder.mkdir(parents=True)
    shutil.copy(loadCase, folder / "job.inp")
    load = writeInput(mesh, folder)
    run = subprocess.run(["ccx", "job"], cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if run.returncode != 0 or "*ERROR" in run.stdout:
        raise RuntimeError(f"CalculiX failed:\n{run.stdout[-2000:]}")

    results = readFrd(folder / "job.frd", len(mesh.points))
    mesh.results = {
        "displacement": results["DISP"],
        "stress": results["STRESS"].astype(np.float32),
        "von_mises": vonMises(results["STRESS"]).astype(np.float32),
    }
    reaction = readReaction(folder / "job.dat")
    if np.linalg.norm(reaction + load) > 1e-5 * np.linalg.norm(load):
        raise RuntimeError(f"the supports' reaction {reaction} N does not balance the load {load} N")
    return load, reaction
