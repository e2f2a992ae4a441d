"""How far a transferred result is from what the solver finds on the other mesh, beside how far the solver's own results
on the two meshes are from each other.

usage: solver_comparison.py VELTRANE      the command, as build/release/Host/veltrane

Meshes the bracket of Thermal/ with Gmsh, each mesh with all nodes of a coarser one, and computes temperatures and a
bending of the foot on all of them with CalculiX. The solver's own difference is that at the nodes that both meshes have;
that of the transfer from the coarser to the finer one is at all nodes of the finer one. Both are root mean squares, as
parts of that of the finer result.
"""

import pathlib
import subprocess
import sys
import tempfile

import numpy as np

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE / "Thermal"))

from make import addNodeSets, solve  # noqa: E402

LIMIT = 2  # times the solver's own difference

MODEL = """*INCLUDE, INPUT={mesh}
*MATERIAL, NAME=STEEL
*ELASTIC
206000, 0.3
*CONDUCTIVITY
45
*MATERIAL, NAME=COPPER
*ELASTIC
120000, 0.34
*CONDUCTIVITY
380
*SOLID SECTION, ELSET=STEEL, MATERIAL=STEEL
*SOLID SECTION, ELSET=COPPER, MATERIAL=COPPER
*INITIAL CONDITIONS, TYPE=TEMPERATURE
ALL, 20
*STEP
"""

HEAT = """*HEAT TRANSFER, STEADY STATE
*BOUNDARY
HOT, 11, 11, 200
COLD, 11, 11, 20
*NODE FILE
NT
*END STEP
"""

BENDING = """*STATIC
*BOUNDARY
COLD, 1, 3
HOT, 1, 1, 0.1
*NODE FILE
U
*EL FILE
S
*END STEP
"""

REFINED = "refined"

# name of the pair, arguments of Gmsh for the coarser and the finer mesh
PAIRS = (
    ("20-node hexahedra", ["-setnumber", "swept", "1", "-setnumber", "fine", "2", "-order", "2"],
     ["-setnumber", "swept", "1", "-setnumber", "fine", "4", "-order", "2"]),
    ("hexahedra", ["-setnumber", "swept", "1", "-setnumber", "fine", "2", "-order", "1"],
     ["-setnumber", "swept", "1", "-setnumber", "fine", "4", "-order", "1"]),
    ("tetrahedra", ["-setnumber", "size", "4"], ["-setnumber", "size", "4", REFINED]),
    ("10-node tetrahedra", ["-setnumber", "size", "6", "-order", "2"],
     ["-setnumber", "size", "6", "-order", "2", REFINED]),
)


def mesh(path, arguments):
    def gmsh(source, target, *options):
        subprocess.run(["gmsh", str(source), "-v", "1", *options, "-o", str(target)], check=True)

    if REFINED in arguments:
        settings = arguments[:3]
        order = ["-order", "2"] if "-order" in arguments else []
        gmsh(HERE / "Thermal" / "bracket.geo", path.with_suffix(".msh"), "-3", *settings)
        gmsh(path.with_suffix(".msh"), path.with_suffix(".refined.msh"), "-refine")
        gmsh(path.with_suffix(".refined.msh"), path, "-3", *order)
    else:
        gmsh(HERE / "Thermal" / "bracket.geo", path, "-3", *arguments)
    addNodeSets(path)


def readFrd(path):
    """Nodes {number: position} and fields {name: {number: values}} of the last step."""
    fields, values, width = {}, {}, 3
    for line in pathlib.Path(path).read_text().splitlines():
        if line.startswith(" -4"):
            words = line.split()
            width = int(words[2]) - (words[1] == "DISP")
            values = fields[words[1]] = {}
        elif line.startswith("    2C"):
            values = fields["nodes"] = {}
        elif line.startswith("    3C"):
            values = {}
        elif line.startswith(" -1"):
            values[int(line[3:13])] = [float(line[13 + 12 * i:25 + 12 * i] or 0) for i in range(width)] \
                if values is not None and len(line) >= 25 and "." in line else []
    return fields.pop("nodes"), fields


def readMsh(path):
    """Values {name: {number: values}} of the file that the command has written."""
    lines = iter(pathlib.Path(path).read_text().splitlines())
    fields = {}
    for line in lines:
        if line == "$NodeData":
            head = [next(lines) for _ in range(8)]
            rows = (next(lines).split() for _ in range(int(head[7])))
            fields[head[1].strip('"')] = {int(row[0]): [float(x) for x in row[1:]] for row in rows}
    return fields


def difference(first, second, pairs):
    a = np.array([first[i] for i, _ in pairs])
    b = np.array([second[j] for _, j in pairs])
    return np.sqrt(np.mean((a - b) ** 2) / np.mean(b ** 2))


def wholeTensor(values):
    xx, yy, zz, xy, yz, zx = values
    return [xx, xy, zx, xy, yy, yz, zx, yz, zz]


def main():
    veltrane = str(pathlib.Path(sys.argv[1]).resolve())
    failed = False
    print(f"{'meshes':20} {'field':8} {'solver':>10} {'transfer':>10} {'ratio':>6}")
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for title, coarse, fine in PAIRS:
            results = {}
            for size, arguments in (("coarse", coarse), ("fine", fine)):
                mesh(folder / f"{size}.inp", arguments)
                for load, step in (("heat", HEAT), ("bending", BENDING)):
                    (folder / f"{size}_{load}.inp").write_text(MODEL.format(mesh=f"{size}.inp") + step)
                    solve(f"{size}_{load}", folder)
                    results[size, load] = readFrd(folder / f"{size}_{load}.frd")
            for load, field in (("heat", "NDTEMP"), ("bending", "DISP"), ("bending", "STRESS")):
                coarseNodes, coarseFields = results["coarse", load]
                fineNodes, fineFields = results["fine", load]
                places = {tuple(np.round(x, 4)): number for number, x in fineNodes.items()}
                common = [(number, places[tuple(np.round(x, 4))]) for number, x in coarseNodes.items()
                          if tuple(np.round(x, 4)) in places]
                subprocess.run([veltrane, "transfer", f"coarse_{load}.frd", f"fine_{load}.frd", "-o", "out.msh",
                                "--field", f"{field}=transferred", "--quiet"], cwd=folder, check=True)
                transferred = readMsh(folder / "out.msh")["transferred"]
                own = fineFields[field]
                if field == "STRESS":
                    own = {number: wholeTensor(values) for number, values in own.items()}
                solver = difference(coarseFields[field], fineFields[field], common)
                transfer = difference(transferred, own, [(number, number) for number in own])
                failed = failed or transfer > LIMIT * solver
                print(f"{title:20} {field:8} {solver:10.3e} {transfer:10.3e} {transfer / solver:6.2f}", flush=True)
    if failed:
        sys.exit(f"a transferred result is more than {LIMIT} times as far from the solver's as its own results are")


if __name__ == "__main__":
    main()
