"""Finite-element meshes of the examples: element kinds, files, geometry.

Node orders are those of VTK throughout; the readers and writers of other formats convert.
"""

import dataclasses

import numpy as np
import vtk
from vtk.util.numpy_support import numpy_to_vtk, numpy_to_vtkIdTypeArray, vtk_to_numpy


def tensorRule(pointsPerAxis):
    """Gauss-Legendre points and weights on the unit cube."""
    x, w = np.polynomial.legendre.leggauss(pointsPerAxis)
    x, w = (x + 1) / 2, w / 2
    points = np.array([(a, b, c) for a in x for b in x for c in x])
    weights = np.array([a * b * c for a in w for b in w for c in w])
    return points, weights


def wedgeRule():
    """Three points in the unit triangle times two along the third axis."""
    x, w = np.polynomial.legendre.leggauss(2)
    triangle = [(1 / 6, 1 / 6), (2 / 3, 1 / 6), (1 / 6, 2 / 3)]
    points = np.array([(r, s, (t + 1) / 2) for r, s in triangle for t in x])
    return points, np.full(6, 1 / 12)


def tetrahedronRule():
    """Five points in the unit tetrahedron, exact to degree 3: the Jacobian of a curved ten-node tetrahedron."""
    a, b = 1 / 6, 1 / 2
    points = np.array([(1 / 4, 1 / 4, 1 / 4), (a, a, a), (b, a, a), (a, b, a), (a, a, b)])
    return points, np.array([-4 / 5, 9 / 20, 9 / 20, 9 / 20, 9 / 20]) / 6


@dataclasses.dataclass(frozen=True)
class Kind:
    """An element kind. Faces list the corner nodes, then the mid-edge nodes, with the normal pointing inwards."""

    name: str
    vtkType: int
    vtkClass: type
    nodes: int
    faces: tuple
    rule: tuple

    def derivatives(self, point):
        """Shape function derivatives by VTK's own definition of the cell: float[nodes][3]."""
        values = [0.0] * (3 * self.nodes)
        self.vtkClass().InterpolateDerivs(list(point), values)
        return np.array(values).reshape(3, self.nodes).T

    def referenceNodes(self):
        """Reference coordinates of the nodes by VTK's own definition of the cell: float[nodes][3]."""
        cell = self.vtkClass()
        return np.array([[cell.GetParametricCoords()[3 * i + j] for j in range(3)] for i in range(self.nodes)])


KINDS = {
    kind.name: kind
    for kind in (
        Kind("tetrahedron", vtk.VTK_TETRA, vtk.vtkTetra, 4,
             ((0, 1, 2), (0, 3, 1), (1, 3, 2), (2, 3, 0)), tetrahedronRule()),
        Kind("hexahedron", vtk.VTK_HEXAHEDRON, vtk.vtkHexahedron, 8,
             ((0, 1, 2, 3), (4, 7, 6, 5), (0, 4, 5, 1), (1, 5, 6, 2), (2, 6, 7, 3), (3, 7, 4, 0)), tensorRule(2)),
        Kind("wedge", vtk.VTK_WEDGE, vtk.vtkWedge, 6,
             ((0, 1, 2), (3, 5, 4), (0, 3, 4, 1), (1, 4, 5, 2), (2, 5, 3, 0)), wedgeRule()),
        Kind("pyramid", vtk.VTK_PYRAMID, vtk.vtkPyramid, 5,
             ((0, 1, 2, 3), (0, 4, 1), (1, 4, 2), (2, 4, 3), (3, 4, 0)), tensorRule(3)),
        Kind("quadratic tetrahedron", vtk.VTK_QUADRATIC_TETRA, vtk.vtkQuadraticTetra, 10,
             ((0, 1, 2, 4, 5, 6), (0, 3, 1, 7, 8, 4), (1, 3, 2, 8, 9, 5), (2, 3, 0, 9, 7, 6)), tetrahedronRule()),
    )
}


@dataclasses.dataclass
class Block:
    """Elements of one kind: connectivity int[n][nodes], 0-based, and material int[n]."""

    connectivity: np.ndarray
    material: np.ndarray


@dataclasses.dataclass
class Mesh:
    """Points float[n][3], one block per element kind, results by name as float[n][components] at the nodes."""

    points: np.ndarray
    blocks: dict
    results: dict = dataclasses.field(default_factory=dict)

    def numberOfElements(self):
        return sum(len(block.material) for block in self.blocks.values())

    def materials(self):
        return np.unique(np.concatenate([block.material for block in self.blocks.values()]))

    def usedNodes(self):
        return np.unique(np.concatenate([block.connectivity.ravel() for block in self.blocks.values()]))

    def jacobians(self, kindName, referencePoints):
        """Determinant of the Jacobian of every element of a kind at every reference point: float[n][points]."""
        nodes = self.points[self.blocks[kindName].connectivity].astype(float)
        derivatives = np.array([KINDS[kindName].derivatives(point) for point in referencePoints])
        return np.linalg.det(np.einsum("enx,pnr->epxr", nodes, derivatives))

    def volumes(self, kindName):
        """Volume of every element of a kind."""
        points, weights = KINDS[kindName].rule
        return self.jacobians(kindName, points) @ weights

    def volumeOfMaterial(self, material):
        return sum(self.volumes(name)[block.material == material].sum() for name, block in self.blocks.items())

    def boundaryFaces(self):
        """Faces that belong to one element only, as (kind name, element in its block, face in the element)."""
        seen = {}
        for name, block in self.blocks.items():
            for faceNumber, face in enumerate(KINDS[name].faces):
                corners = np.sort(block.connectivity[:, face[: cornerCount(face)]], axis=1)
                for element, key in enumerate(map(tuple, corners)):
                    seen.setdefault(key, []).append((name, element, faceNumber))
        return [owners[0] for owners in seen.values() if len(owners) == 1]

    def faceNodes(self, boundaryFace):
        name, element, faceNumber = boundaryFace
        return self.blocks[name].connectivity[element, list(KINDS[name].faces[faceNumber])]


def cornerCount(face):
    """A face of six nodes is a quadratic triangle; one of three or four has corners only."""
    return 3 if len(face) == 6 else len(face)


def areaVector(nodes):
    """Integral of the normal over a face of straight or parabolic edges, float[3, 4 or 6][3]: half the integral of
    r x dr around its edge."""
    corners = cornerCount(nodes)
    total = np.zeros(3)
    for i in range(corners):
        a, b = nodes[i], nodes[(i + 1) % corners]
        middle = nodes[corners + i] if len(nodes) == 6 else (a + b) / 2
        # r = a + t p + t^2 q with t from 0 to 1
        p, q = 4 * middle - 3 * a - b, 2 * a + 2 * b - 4 * middle
        total += (np.cross(a, p) + np.cross(a, q) + np.cross(p, q) / 3) / 2
    return total


def splitIntoPyramids(mesh, material):
    """Every hexahedron of a material becomes six pyramids around its centre. Its faces stay as they are, so the mesh
    still conforms with its neighbours."""
    hexahedra = mesh.blocks["hexahedron"]
    chosen = hexahedra.material == material
    corners = hexahedra.connectivity[chosen]
    apexes = len(mesh.points) + np.arange(len(corners))
    pyramids = [np.column_stack((corners[:, list(face)], apexes)) for face in KINDS["hexahedron"].faces]
    blocks = dict(mesh.blocks)
    blocks["hexahedron"] = Block(hexahedra.connectivity[~chosen], hexahedra.material[~chosen])
    blocks["pyramid"] = Block(
        np.stack(pyramids, axis=1).reshape(-1, 5), np.full(6 * len(corners), material))
    return Mesh(np.vstack((mesh.points, mesh.points[corners].mean(axis=1))), blocks)


def readGmsh(path):
    """Reads the volume elements of a Gmsh file of format 2.2 in ASCII; the physical volume becomes the material."""
    names = {4: "tetrahedron", 5: "hexahedron", 6: "wedge", 7: "pyramid", 11: "quadratic tetrahedron"}
    with open(path) as file:
        lines = file.read().split("\n")
    start = lines.index("$Nodes")
    count = int(lines[start + 1])
    table = np.array([line.split() for line in lines[start + 2 : start + 2 + count]], dtype=float)
    position = {int(number): i for i, number in enumerate(table[:, 0])}

    start = lines.index("$Elements")
    elements = {}
    for line in lines[start + 2 : start + 2 + int(lines[start + 1])]:
        numbers = [int(number) for number in line.split()]
        if numbers[1] in names:
            nodes = [position[number] for number in numbers[3 + numbers[2] :]]
            elements.setdefault(names[numbers[1]], []).append((nodes, numbers[3]))

    blocks = {}
    for name, rows in elements.items():
        connectivity = np.array([nodes for nodes, _ in rows])
        if name == "quadratic tetrahedron":
            # Gmsh lists the mid-edge nodes of 2-3 and 1-3 the other way round
            connectivity = connectivity[:, [0, 1, 2, 3, 4, 5, 6, 7, 9, 8]]
        blocks[name] = Block(connectivity, np.array([material for _, material in rows]))
    return withoutUnusedNodes(Mesh(table[:, 1:], blocks))


def withoutUnusedNodes(mesh):
    used = mesh.usedNodes()
    newNumber = np.full(len(mesh.points), -1)
    newNumber[used] = np.arange(len(used))
    blocks = {name: Block(newNumber[block.connectivity], block.material) for name, block in mesh.blocks.items()}
    return Mesh(mesh.points[used], blocks, {name: values[used] for name, values in mesh.results.items()})


def onlyMaterial(mesh, material):
    """The elements of one material and their nodes, in the order of the mesh."""
    blocks = {}
    for name, block in mesh.blocks.items():
        chosen = block.material == material
        if chosen.any():
            blocks[name] = Block(block.connectivity[chosen], block.material[chosen])
    return withoutUnusedNodes(Mesh(mesh.points, blocks, mesh.results))


def detachMaterials(mesh):
    """Gives every material nodes of its own: where materials met, nodes now coincide exactly but are not shared."""
    parts = [onlyMaterial(mesh, material) for material in mesh.materials()]
    firstNode = np.cumsum([0] + [len(part.points) for part in parts])
    blocks = {}
    for name in mesh.blocks:
        pieces = [(part.blocks[name], first) for part, first in zip(parts, firstNode) if name in part.blocks]
        blocks[name] = Block(np.vstack([piece.connectivity + first for piece, first in pieces]),
                             np.concatenate([piece.material for piece, _ in pieces]))
    return Mesh(np.vstack([part.points for part in parts]), blocks)


def renumbered(mesh, random):
    """The same mesh with its nodes, and the elements within each kind, in random order."""
    order = random.permutation(len(mesh.points))
    newNumber = np.argsort(order)
    blocks = {}
    for name, block in mesh.blocks.items():
        elements = random.permutation(len(block.material))
        blocks[name] = Block(newNumber[block.connectivity[elements]], block.material[elements])
    return Mesh(mesh.points[order], blocks, {name: values[order] for name, values in mesh.results.items()})


def writeVtu(mesh, path):
    """Writes a mesh with its results as a compressed binary VTK file; block after block."""
    grid = vtk.vtkUnstructuredGrid()
    points = vtk.vtkPoints()
    points.SetData(numpy_to_vtk(np.ascontiguousarray(mesh.points, dtype=np.float32), deep=1))
    grid.SetPoints(points)

    types, sizes, connectivity, materials = [], [0], [], []
    for name, block in mesh.blocks.items():
        kind = KINDS[name]
        types += [kind.vtkType] * len(block.material)
        sizes += [kind.nodes] * len(block.material)
        connectivity.append(block.connectivity.ravel())
        materials.append(block.material)
    cells = vtk.vtkCellArray()
    cells.SetData(numpy_to_vtkIdTypeArray(np.cumsum(sizes).astype(np.int64), deep=1),
                  numpy_to_vtkIdTypeArray(np.concatenate(connectivity).astype(np.int64), deep=1))
    grid.SetCells(numpy_to_vtk(np.array(types, dtype=np.uint8), deep=1), cells)

    def attach(attributes, name, values, componentNames=()):
        array = numpy_to_vtk(np.ascontiguousarray(values), deep=1)
        array.SetName(name)
        for i, component in enumerate(componentNames):
            array.SetComponentName(i, component)
        attributes.AddArray(array)

    attach(grid.GetCellData(), "material", np.concatenate(materials).astype(np.int32))
    components = {"displacement": ("x", "y", "z"), "stress": ("xx", "yy", "zz", "xy", "yz", "zx")}
    for name, values in mesh.results.items():
        attach(grid.GetPointData(), name, values, components.get(name, ()))

    writer = vtk.vtkXMLUnstructuredGridWriter()
    writer.SetFileName(str(path))
    writer.SetInputData(grid)
    writer.SetDataModeToAppended()
    writer.EncodeAppendedDataOff()
    writer.SetCompressorTypeToZLib()
    writer.SetCompressionLevel(9)
    writer.SetIdTypeToInt32()
    writer.SetBlockSize(1 << 20)
    if not writer.Write():
        raise OSError(f"cannot write {path}")


def readVtu(path):
    """Reads a file of `writeVtu`."""
    reader = vtk.vtkXMLUnstructuredGridReader()
    reader.SetFileName(str(path))
    reader.Update()
    grid = reader.GetOutput()
    if grid.GetNumberOfCells() == 0:
        raise OSError(f"cannot read {path}")
    types = vtk_to_numpy(grid.GetCellTypesArray())
    offsets = vtk_to_numpy(grid.GetCells().GetOffsetsArray())
    connectivity = vtk_to_numpy(grid.GetCells().GetConnectivityArray())
    materials = vtk_to_numpy(grid.GetCellData().GetArray("material"))
    blocks = {}
    for kind in KINDS.values():
        cells = np.flatnonzero(types == kind.vtkType)
        if len(cells):
            blocks[kind.name] = Block(connectivity[offsets[cells][:, None] + np.arange(kind.nodes)], materials[cells])
    if sum(len(block.material) for block in blocks.values()) != len(types):
        raise ValueError(f"{path} holds cells of an unknown kind")
    data = grid.GetPointData()
    results = {data.GetArrayName(i): vtk_to_numpy(data.GetArray(i)).copy() for i in range(data.GetNumberOfArrays())}
    return Mesh(vtk_to_numpy(grid.GetPoints().GetData()).copy(), blocks, results)
