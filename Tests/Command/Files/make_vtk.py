"""Writes an EnSight case with VTK, and VTKHDF files of two versions with h5py. Usage: make_vtk.py DIRECTORY (needs the packages
vtk and h5py)."""
import sys

import h5py
import numpy as np
import vtk

CUBE = [(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 1, 0), (0, 0, 1), (1, 0, 1), (1, 1, 1), (0, 1, 1)]
KINDS = {
    vtk.VTK_TETRA: [CUBE[i] for i in (0, 1, 3, 4)],
    vtk.VTK_HEXAHEDRON: CUBE,
    vtk.VTK_WEDGE: [CUBE[i] for i in (0, 1, 3, 4, 5, 7)],
    vtk.VTK_PYRAMID: CUBE[:4] + [(0.5, 0.5, 1)],
}
EDGES = {
    vtk.VTK_QUADRATIC_TETRA: (vtk.VTK_TETRA, [(0, 1), (1, 2), (2, 0), (0, 3), (1, 3), (2, 3)]),
    vtk.VTK_QUADRATIC_HEXAHEDRON: (vtk.VTK_HEXAHEDRON,
                                   [(0, 1), (1, 2), (2, 3), (3, 0), (4, 5), (5, 6), (6, 7), (7, 4),
                                    (0, 4), (1, 5), (2, 6), (3, 7)]),
}


def quadratic(x, y, z):
    return 1 + 2 * x - 3 * y + 5 * z + x * x - 2 * y * y + z * x


def grid(types, array, factor=1):
    cells = vtk.vtkUnstructuredGrid()
    points = vtk.vtkPoints()
    points.SetDataTypeToDouble()
    cells.SetPoints(points)
    cells.Allocate()
    for place, cell_type in enumerate(types):
        nodes = KINDS.get(cell_type)
        if nodes is None:
            corner_type, edges = EDGES[cell_type]
            corners = KINDS[corner_type]
            nodes = corners + [tuple(0.5 * (a + b) for a, b in zip(corners[i], corners[j])) for i, j in edges]
        ids = [points.InsertNextPoint(x + 2 * place, y, z) for x, y, z in nodes]
        cells.InsertNextCell(cell_type, len(ids), ids)
    values = vtk.vtkDoubleArray()
    values.SetName(array)
    for i in range(points.GetNumberOfPoints()):
        values.InsertNextValue(factor * quadratic(*points.GetPoint(i)))
    cells.GetPointData().AddArray(values)
    damage = vtk.vtkDoubleArray()
    damage.SetName("damage")
    blocks = vtk.vtkIntArray()
    blocks.SetName("BlockId")
    for i in range(len(types)):
        damage.InsertNextValue(10.0 * i)
        blocks.InsertNextValue(1 if i < 2 else 2)
    cells.GetCellData().AddArray(damage)
    cells.GetCellData().AddArray(blocks)
    return cells


def write_ensight(directory):
    writer = vtk.vtkEnSightWriter()
    writer.SetPath(directory)
    writer.SetBaseName("all_kinds")
    writer.SetProcessNumber(0)
    for step in range(2):
        writer.SetTimeStep(step)
        writer.SetInputData(grid([*KINDS, *EDGES], "T", step + 1))
        writer.Write()
    writer.WriteCaseFile(2)


def write_hdf(path, version):
    """As the first version of the format describes it."""
    cells = grid([*KINDS, *EDGES], "T")
    points = np.array([cells.GetPoint(i) for i in range(cells.GetNumberOfPoints())])
    connectivity = [cells.GetCell(c).GetPointId(i) for c in range(cells.GetNumberOfCells())
                    for i in range(cells.GetCell(c).GetNumberOfPoints())]
    offsets = np.cumsum([0] + [cells.GetCell(c).GetNumberOfPoints() for c in range(cells.GetNumberOfCells())])
    with h5py.File(path, "w") as file:
        root = file.create_group("VTKHDF")
        root.attrs["Version"] = version
        root.attrs.create("Type", b"UnstructuredGrid", dtype=h5py.string_dtype("ascii", 16))
        for name, value in (("Points", len(points)), ("Cells", cells.GetNumberOfCells()),
                            ("ConnectivityIds", len(connectivity))):
            root.create_dataset("NumberOf" + name, data=np.array([value], dtype="i8"))
        root.create_dataset("Points", data=points)
        root.create_dataset("Connectivity", data=np.array(connectivity, dtype="i8"))
        root.create_dataset("Offsets", data=np.array(offsets, dtype="i8"))
        root.create_dataset("Types", data=np.array([cells.GetCellType(c) for c in range(cells.GetNumberOfCells())],
                                                   dtype="u1"))
        values = cells.GetPointData().GetArray("T")
        root.create_group("PointData").create_dataset("T", data=[values.GetValue(i) for i in range(len(points))])
        root.create_group("CellData").create_dataset("damage", data=[10.0 * c for c in range(len(offsets) - 1)])


write_ensight(sys.argv[1])
write_hdf(sys.argv[1] + "/all_kinds.vtkhdf", (1, 0))
write_hdf(sys.argv[1] + "/newer.vtkhdf", (2, 2))
