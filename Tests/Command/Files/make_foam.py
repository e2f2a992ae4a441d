"""Writes an OpenFOAM case of a hexahedron and a prism on a pentagon, with a field of the cells at two times.
Usage: make_foam.py DIRECTORY"""
import pathlib
import sys

BASE = [(0, 0), (1, 0), (1, 1), (0, 1), (2, 0), (2.5, 0.5), (2, 1)]
FACES = [(1, 2, 9, 8),
         (0, 3, 2, 1), (7, 8, 9, 10), (0, 7, 10, 3), (0, 1, 8, 7), (3, 10, 9, 2),
         (1, 2, 6, 5, 4), (8, 11, 12, 13, 9), (1, 4, 11, 8), (4, 5, 12, 11), (5, 6, 13, 12), (6, 2, 9, 13)]
OWNER = [0] * 6 + [1] * 6


def write(path, kind, name, body):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text("FoamFile\n{\n    version 2.0;\n    format ascii;\n"
                    f"    class {kind};\n    object {name};\n}}\n{body}\n")


def entries(values):
    return f"{len(values)}\n(\n" + "\n".join(str(value) for value in values) + "\n)\n"


case = pathlib.Path(sys.argv[1]) / "foam"
mesh = case / "constant" / "polyMesh"
write(mesh / "points", "vectorField", "points", entries([f"({x} {y} {z})" for z in (0, 1) for x, y in BASE]))
write(mesh / "faces", "faceList", "faces", entries([f"{len(face)}({' '.join(map(str, face))})" for face in FACES]))
write(mesh / "owner", "labelList", "owner", entries(OWNER))
write(mesh / "neighbour", "labelList", "neighbour", entries([1]))
write(mesh / "boundary", "polyBoundaryMesh", "boundary",
      "1\n(\nwalls\n{\n    type wall;\n    nFaces 11;\n    startFace 1;\n}\n)\n")
write(case / "system" / "controlDict", "dictionary", "controlDict",
      "application none;\nstartTime 0;\nendTime 2;\ndeltaT 1;\nwriteControl timeStep;\nwriteInterval 1;\n")
for time in (1, 2):
    write(case / str(time) / "T", "volScalarField", "T",
          "dimensions [0 0 0 1 0 0 0];\ninternalField nonuniform List<scalar>\n"
          f"2\n(\n{10 * time}\n{20 * time}\n)\n;\nboundaryField\n{{\n    walls\n    {{\n        type zeroGradient;\n    }}\n}}\n")
(case / "case.foam").write_text("")
