#!/usr/bin/python3
"""Checks the example models in Examples/Meshes: cells, geometry, results. Prints a table of what they hold.

usage: verify.py [MESHES_FOLDER]
"""

import pathlib
import sys

sys.dont_write_bytecode = True
HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE / "Models"))

import numpy as np

from calculix import BOLT_CIRCLE_RADIUS, BORE_RADIUS, END_FORCE, HOLE_RADIUS, PIPE_END, PRESSURE, onBore, vonMises
from mesh import KINDS, areaVector, readVtu

PIPE_RADIUS = 30.0
PLATE_THICKNESS = 16.0
FLANGE, WELD, PIPE = 1, 2, 3

# file, element kinds, with results, how far its volumes may be from the true ones: a faceted mesh cuts the corners of
# curved surfaces, most of all in the small weld with its cap
FLANGES = (
    ("flange_tetrahedra_coarse", {"tetrahedron"}, True, 0.06),
    ("flange_tetrahedra_fine", {"tetrahedron"}, True, 0.02),
    ("flange_quadratic_tetrahedra_coarse", {"quadratic tetrahedron"}, True, 0.0005),
    ("flange_quadratic_tetrahedra_fine", {"quadratic tetrahedron"}, True, 0.0005),
    ("flange_mixed_coarse", {"hexahedron", "wedge", "pyramid"}, False, 0.03),
    ("flange_mixed_fine", {"hexahedron", "wedge", "pyramid"}, False, 0.015),
)

failures = []


def check(condition, text):
    if not condition:
        failures.append(text)
        print(f"FAILED: {text}")


def arc(centre, start, end, steps=2000):
    """Points of a circular arc in the meridian plane, the short way round."""
    a, b = (np.arctan2(point[1] - centre[1], point[0] - centre[0]) for point in (start, end))
    b += 2 * np.pi * np.round((a - b) / (2 * np.pi))
    radius = np.hypot(start[0] - centre[0], start[1] - centre[1])
    angles = np.linspace(a, b, steps)
    return [(centre[0] + radius * np.cos(t), centre[1] + radius * np.sin(t)) for t in angles]


def solidOfRevolution(profile):
    """Volume and surface of a closed counter-clockwise profile of (radius, z) turned about the z axis."""
    r, z = np.array(profile).T
    nextR, nextZ = np.roll(r, -1), np.roll(z, -1)
    volume = np.pi / 3 * np.sum((r**2 + r * nextR + nextR**2) * (nextZ - z))
    surface = np.pi * np.sum((r + nextR) * np.hypot(nextR - r, nextZ - z))
    return volume, surface


def trueGeometry():
    """Volume per material and outer surface of the flanged pipe, from its drawing."""
    weldBottom, weldTop, capHeight = (PIPE_RADIUS, 38.0), (PIPE_RADIUS, 48.0), 1.2
    capRadius = (5.0**2 + capHeight**2) / (2 * capHeight)
    cap = arc((PIPE_RADIUS + capHeight - capRadius, 43.0), weldBottom, weldTop)
    fillet = arc((40.0, 22.0), (40.0, 16.0), (34.0, 22.0))
    pipe = [(PIPE_RADIUS, PIPE_END), (BORE_RADIUS, PIPE_END)]
    whole, surface = solidOfRevolution(
        [(BORE_RADIUS, 0.0), (70.0, 0.0), (70.0, PLATE_THICKNESS)] + fillet + cap + pipe)
    weldVolume, _ = solidOfRevolution([(BORE_RADIUS, 41.0)] + cap + [(BORE_RADIUS, 45.0)])
    pipeVolume, _ = solidOfRevolution([(BORE_RADIUS, 45.0), weldTop] + pipe)
    holeArea = np.pi * HOLE_RADIUS**2
    holeWall = 2 * np.pi * HOLE_RADIUS * PLATE_THICKNESS
    volumes = {FLANGE: whole - weldVolume - pipeVolume - 4 * holeArea * PLATE_THICKNESS,
               WELD: weldVolume, PIPE: pipeVolume}
    return volumes, surface + 4 * (holeWall - 2 * holeArea)


def checkElements(name, mesh, kinds):
    """Kinds, positive Jacobians, no unused nodes; returns the smallest Jacobian per kind."""
    check(set(mesh.blocks) == kinds, f"{name} consists of {sorted(kinds)}")
    check(len(mesh.usedNodes()) == len(mesh.points), f"{name} has no unused nodes")
    smallest = {}
    for kindName in mesh.blocks:
        nodes = KINDS[kindName].referenceNodes()
        if kindName == "pyramid":
            nodes = nodes[:4]  # at the apex the Jacobian of VTK's pyramid vanishes by construction
        jacobians = mesh.jacobians(kindName, np.vstack((KINDS[kindName].rule[0], nodes)))
        smallest[kindName] = jacobians.min()
        check(jacobians.min() > 0, f"{name}: every {kindName} has a positive Jacobian")
    return smallest


def checkFlange(name, mesh, tolerance, volumes, surface):
    check(list(mesh.materials()) == [FLANGE, WELD, PIPE], f"{name} has the three materials")
    for material, volume in volumes.items():
        error = mesh.volumeOfMaterial(material) / volume - 1
        check(abs(error) < tolerance, f"{name}: volume of material {material} is right within {tolerance} ({error:+.5f})")
    # A gap between the regions would show as two coinciding nodes, and as surface inside the part
    check(len(np.unique(mesh.points, axis=0)) == len(mesh.points), f"{name} has no coinciding nodes")
    outside = sum(np.linalg.norm(areaVector(mesh.points[mesh.faceNodes(face)].astype(float)))
                  for face in mesh.boundaryFaces())
    check(abs(outside / surface - 1) < 0.01, f"{name}: outer surface {outside:.1f} mm2 is {surface:.1f} within 1 %")


def checkResults(name, mesh, quadratic):
    """Against theory in the pipe, far from the weld and the loaded end: a thick tube under pressure, and a beam."""
    shapes = {key: values.shape[1:] for key, values in mesh.results.items()}
    check(shapes == {"displacement": (3,), "stress": (6,), "von_mises": ()}, f"{name} has all results")
    check(all(np.isfinite(values).all() for values in mesh.results.values()), f"{name}: results are finite")
    stress = mesh.results["stress"].astype(float)
    check(np.allclose(vonMises(stress), mesh.results["von_mises"], rtol=1e-4, atol=1e-3),
          f"{name}: von Mises stress belongs to the stress")

    x, y, z = mesh.points.T.astype(float)
    centre = BOLT_CIRCLE_RADIUS * np.sqrt(0.5)
    hole = np.abs(np.hypot(np.abs(x) - centre, np.abs(y) - centre) - HOLE_RADIUS) < 1e-3
    check(hole.any() and not mesh.results["displacement"][hole].any(), f"{name}: the bolt holes stay in place")

    nodes = np.flatnonzero([onBore(point[None, :]) for point in mesh.points] & (z > 70) & (z < 100))
    cosine, sine = x[nodes] / BORE_RADIUS, y[nodes] / BORE_RADIUS
    xx, yy, zz, xy, yz, zx = stress[nodes].T
    hoop = (xx * sine**2 + yy * cosine**2 - 2 * xy * sine * cosine).mean()
    trueHoop = PRESSURE * (PIPE_RADIUS**2 + BORE_RADIUS**2) / (PIPE_RADIUS**2 - BORE_RADIUS**2)
    section = np.pi * (PIPE_RADIUS**2 - BORE_RADIUS**2)
    axial, shear = END_FORCE[2] / section, END_FORCE[0] / section
    inertia = np.pi / 4 * (PIPE_RADIUS**4 - BORE_RADIUS**4)
    bending = -END_FORCE[0] * (PIPE_END - z[nodes]) * x[nodes] / inertia
    slope, offset = np.polyfit(bending, zz, 1)
    tolerance = 0.05 if quadratic else 0.15
    print(f"  in the pipe's bore: hoop stress {hoop:.2f} (theory {trueHoop:.2f}), axial {offset:.2f} ({axial:.2f}),"
          f" shear {zx.mean():.2f} ({shear:.2f}) MPa, bending {slope:.3f} of the beam's")
    check(abs(hoop / trueHoop - 1) < tolerance, f"{name}: hoop stress agrees with the thick tube's")
    check(abs(offset / axial - 1) < tolerance, f"{name}: axial stress agrees with the force")
    check(abs(slope - 1) < tolerance, f"{name}: bending stress agrees with the beam's")
    # The beam's shear stress is an average over the wall; on the bore it differs a little
    check(abs(zx.mean() / shear - 1) < 0.25, f"{name}: shear stress agrees with the force")
    check(abs(yz.mean()) < 0.05 * shear, f"{name}: no shear stress across the force")
    return (np.linalg.norm(mesh.results["displacement"], axis=1).max(), mesh.results["von_mises"].max(),
            mesh.results["von_mises"][np.unique(np.concatenate(
                [block.connectivity[block.material != FLANGE].ravel() for block in mesh.blocks.values()]))].max())


def describe(name, path, mesh, smallest):
    cells = ", ".join(f"{len(block.material)} {kind}" for kind, block in mesh.blocks.items())
    jacobians = ", ".join(f"{kind} {value:.3g}" for kind, value in smallest.items())
    print(f"{name}: {cells}; {len(mesh.points)} nodes; {path.stat().st_size / 1000:.0f} kB; "
          f"smallest Jacobian (mm3): {jacobians}")


def checkAssembly(folder):
    assembly, part = (readVtu(folder / f"{name}.vtu") for name in ("assembly", "assembly_part"))
    for name, mesh, kinds in (("assembly", assembly, {"tetrahedron", "hexahedron", "wedge"}),
                              ("assembly_part", part, {"hexahedron", "wedge"})):
        describe(name, folder / f"{name}.vtu", mesh, checkElements(name, mesh, kinds))
    check(list(assembly.materials()) == [1, 2, 3, 4], "assembly has four parts")
    nodesOf = {material: np.unique(np.concatenate(
        [block.connectivity[block.material == material].ravel() for block in assembly.blocks.values()]))
        for material in assembly.materials()}
    check(sum(len(nodes) for nodes in nodesOf.values()) == len(assembly.points), "the parts share no node")
    coinciding = len(assembly.points) - len(np.unique(assembly.points, axis=0))
    print(f"  {coinciding} nodes of the assembly coincide with one of another part")
    check(coinciding > 0, "parts of the assembly touch in coinciding nodes")

    # Every node of the part is, bit for bit, one of the assembly's nodes of that material; so is every element
    check(list(part.materials()) == [2], "assembly_part is material 2")
    inAssembly = {assembly.points[node].tobytes(): node for node in nodesOf[2]}
    matching = np.array([inAssembly.get(point.tobytes(), -1) for point in part.points])
    check(len(matching) == len(nodesOf[2]) and (np.sort(matching) == nodesOf[2]).all(),
          "assembly_part has exactly the nodes of its material")
    check((np.diff(matching) < 0).any(), "assembly_part numbers its nodes in another order")
    for kind, block in part.blocks.items():
        own = assembly.blocks[kind].connectivity[assembly.blocks[kind].material == 2]
        there = matching[block.connectivity]
        check(sorted(map(tuple, there)) == sorted(map(tuple, own)), f"assembly_part has its material's {kind} elements")
        check((there != own).any(), f"assembly_part lists its {kind} elements in another order")


def main():
    folder = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else HERE / "Meshes"
    volumes, surface = trueGeometry()
    print("true volumes (mm3): " + ", ".join(f"{material}: {volume:.1f}" for material, volume in volumes.items()))
    peaks = {}
    for name, kinds, solved, tolerance in FLANGES:
        path = folder / f"{name}.vtu"
        mesh = readVtu(path)
        describe(name, path, mesh, checkElements(name, mesh, kinds))
        print("  volumes (mm3): " + ", ".join(f"{m}: {mesh.volumeOfMaterial(m):.1f}" for m in volumes))
        checkFlange(name, mesh, tolerance, volumes, surface)
        if solved:
            peaks[name] = checkResults(name, mesh, "quadratic tetrahedron" in kinds)
            print("  largest displacement {:.5f} mm, von Mises stress {:.1f} MPa, in weld and pipe {:.1f} MPa".format(
                *peaks[name]))
        else:
            check(not mesh.results, f"{name} has no results")

    best = peaks["flange_quadratic_tetrahedra_fine"][0]
    for name, tolerance in (("flange_quadratic_tetrahedra_coarse", 0.01), ("flange_tetrahedra_fine", 0.1),
                            ("flange_tetrahedra_coarse", 0.2)):
        difference = peaks[name][0] / best - 1
        print(f"{name}: largest displacement {100 * difference:+.2f} % from the fine quadratic mesh's")
        check(abs(difference) < tolerance, f"{name}: displacement within {tolerance}")
    # Displacement elements are too stiff, and a finer mesh is less so
    check(peaks["flange_tetrahedra_coarse"][0] < peaks["flange_tetrahedra_fine"][0] < best,
          "linear tetrahedra converge from below")
    checkAssembly(folder)
    total = sum(path.stat().st_size for path in folder.glob("*.vtu"))
    print(f"all files: {total / 1e6:.2f} MB")
    check(total < 4e6, "the files stay below 4 MB")
    if failures:
        sys.exit(f"{len(failures)} checks failed")
    print("all checks passed")


if __name__ == "__main__":
    main()
