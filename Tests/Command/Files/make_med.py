"""Writes all_kinds.med with MEDCoupling: cells of all kinds side by side, in groups, with a field of each place at two
steps. Usage: make_med.py DIRECTORY (needs the package medcoupling)."""
import sys

import medcoupling as mc

# Corners of a cell in the unit cube, in MED's order: the base runs clockwise when seen from the top.
CORNERS = {
    mc.NORM_TETRA4: [(0, 0, 0), (0, 1, 0), (1, 0, 0), (0, 0, 1)],
    mc.NORM_HEXA8: [(0, 0, 0), (0, 1, 0), (1, 1, 0), (1, 0, 0), (0, 0, 1), (0, 1, 1), (1, 1, 1), (1, 0, 1)],
    mc.NORM_PENTA6: [(0, 0, 0), (0, 1, 0), (1, 0, 0), (0, 0, 1), (0, 1, 1), (1, 0, 1)],
    mc.NORM_PYRA5: [(0, 0, 0), (0, 1, 0), (1, 1, 0), (1, 0, 0), (0.5, 0.5, 1)],
}
ORDERS = {mc.NORM_TETRA4: [0], mc.NORM_HEXA8: [0, 1], mc.NORM_PENTA6: [0], mc.NORM_PYRA5: [0]}


def cell(kind, place):
    mesh = mc.MEDCouplingUMesh("mesh", 3)
    corners = [(x + place, y, z) for x, y, z in CORNERS[kind]]
    mesh.setCoords(mc.DataArrayDouble([c for corner in corners for c in corner], len(corners), 3))
    mesh.allocateCells(1)
    mesh.insertNextCell(kind, list(range(len(corners))))
    mesh.finishInsertingCells()
    return mesh


def wedge_of_18_nodes(place):
    mesh = cell(mc.NORM_PENTA6, place)
    corners = mesh.getCoords().getValuesAsTuple()
    between = [(0, 1), (1, 2), (2, 0), (3, 4), (4, 5), (5, 3), (0, 3), (1, 4), (2, 5),
               (0, 1, 4, 3), (1, 2, 5, 4), (2, 0, 3, 5)]
    middles = [tuple(sum(corners[i][axis] for i in ends) / len(ends) for axis in range(3)) for ends in between]
    curved = mc.MEDCouplingUMesh("mesh", 3)
    nodes = list(corners) + middles
    curved.setCoords(mc.DataArrayDouble([c for node in nodes for c in node], len(nodes), 3))
    curved.allocateCells(1)
    curved.insertNextCell(mc.NORM_PENTA18, list(range(len(nodes))))
    curved.finishInsertingCells()
    return curved


def joined(meshes):
    mesh = mc.MEDCouplingUMesh.MergeUMeshes(meshes)
    mesh.sortCellsInMEDFileFrmt()
    mesh.setName("mesh")
    return mesh


def quadratic(x, y, z):
    return 1 + 2 * x - 3 * y + 5 * z + x * x - 2 * y * y + z * x


def all_cells():
    meshes = []
    for kind in CORNERS:
        meshes.append(cell(kind, 2 * len(meshes)))
        assert meshes[-1].getMeasureField(False).getArray().getValues()[0] > 0, kind
        for order in ORDERS[kind]:
            curved = cell(kind, 2 * len(meshes))
            curved.convertLinearCellsToQuadratic(order)
            meshes.append(curved)
    meshes.append(wedge_of_18_nodes(2 * len(meshes)))
    return joined(meshes)


def write(path):
    mesh = all_cells()
    file = mc.MEDFileUMesh()
    file.setMeshAtLevel(0, mesh)
    mesh = file.getMeshAtLevel(0)  # in the order of the file, type after type
    count = mesh.getNumberOfCells()
    groups = []
    for name, cells in (("steel", range(count // 2)), ("rubber part", range(count // 2, count)), ("top", range(1))):
        groups.append(mc.DataArrayInt(list(cells)))
        groups[-1].setName(name)
    file.setGroupsAtLevel(0, groups)
    nodes = mc.DataArrayInt([0, 1])
    nodes.setName("fixed")
    file.setGroupsAtLevel(1, [nodes])
    file.write40(path, 2)

    places = mesh.getCoords().getValuesAsTuple()
    for step, time in enumerate((0.5, 2.0)):
        def add(name, sort, values, components, discretization=None):
            field = discretization or mc.MEDCouplingFieldDouble(sort, mc.ONE_TIME)
            field.setName(name)
            field.setMesh(mesh)
            array = mc.DataArrayDouble(values, len(values) // len(components), len(components))
            array.setInfoOnComponents(components)
            field.setArray(array)
            field.setTime(time, step + 1, 0)
            mc.WriteFieldUsingAlreadyWrittenMesh(path, field)

        factor = step + 1
        add("T", mc.ON_NODES, [factor * quadratic(*place) for place in places], ["TEMP"])
        add("u", mc.ON_NODES, [factor * c for place in places for c in place], ["DX", "DY", "DZ"])
        add("damage", mc.ON_CELLS, [factor * 10.0 * i for i in range(count)], ["V1"])
        stress = [c for i in range(count) for c in (1, 2, 3, 12, 13, 23)]
        add("stress", mc.ON_CELLS, [float(c) for c in stress], ["SIXX", "SIYY", "SIZZ", "SIXY", "SIXZ", "SIYZ"])
        nodal = mc.MEDCouplingFieldDouble(mc.ON_GAUSS_NE, mc.ONE_TIME)
        nodal.setMesh(mesh)
        add("at_nodes_of_cells", None, [1.0] * nodal.getNumberOfTuplesExpected(), ["V"], nodal)


def write_gauss(path):
    """Tetrahedra and hexahedra with the points of common rules, in reference elements of MED's usual kind."""
    a = 3 ** -0.5
    meshes = [cell(mc.NORM_TETRA4, 0), cell(mc.NORM_HEXA8, 2)]
    mesh = joined(meshes)
    file = mc.MEDFileUMesh()
    file.setMeshAtLevel(0, mesh)
    file.write40(path, 2)
    mesh = file.getMeshAtLevel(0)
    field = mc.MEDCouplingFieldDouble(mc.ON_GAUSS_PT, mc.ONE_TIME)
    field.setName("S")
    field.setMesh(mesh)
    field.setGaussLocalizationOnType(mc.NORM_TETRA4, [0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0], [0.25, 0.25, 0.25], [1 / 6])
    field.setGaussLocalizationOnType(
        mc.NORM_HEXA8,
        [-1, -1, -1, -1, 1, -1, 1, 1, -1, 1, -1, -1, -1, -1, 1, -1, 1, 1, 1, 1, 1, 1, -1, 1],
        [c for x in (-a, a) for y in (-a, a) for z in (-a, a) for c in (x, y, z)], [1.0] * 8)
    points = field.getLocalizationOfDiscr().getValuesAsTuple()
    array = mc.DataArrayDouble([1 + 2 * x - 3 * y + 5 * z for x, y, z in points], len(points), 1)
    field.setArray(array)
    field.setTime(0.0, -1, -1)
    mc.WriteFieldUsingAlreadyWrittenMesh(path, field)


write(sys.argv[1] + "/all_kinds.med")
write_gauss(sys.argv[1] + "/gauss.med")
