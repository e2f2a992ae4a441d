"""Cuts the flanged pipe into four pieces around its axis, as a parallel solver writes it: pieces.py MESHES"""
import pathlib
import sys

import numpy
from vtkmodules.util.numpy_support import numpy_to_vtkIdTypeArray, vtk_to_numpy
from vtkmodules.vtkCommonDataModel import vtkSelection, vtkSelectionNode
from vtkmodules.vtkFiltersExtraction import vtkExtractSelection
from vtkmodules.vtkIOXML import vtkXMLUnstructuredGridReader, vtkXMLUnstructuredGridWriter

ARRAY_TYPES = {"double": "Float64", "float": "Float32", "int": "Int32"}


def read(path):
    reader = vtkXMLUnstructuredGridReader()
    reader.SetFileName(str(path))
    reader.Update()
    return reader.GetOutput()


def part(grid, cells):
    node = vtkSelectionNode()
    node.SetFieldType(vtkSelectionNode.CELL)
    node.SetContentType(vtkSelectionNode.INDICES)
    node.SetSelectionList(numpy_to_vtkIdTypeArray(cells, deep=True))
    selection = vtkSelection()
    selection.AddNode(node)
    extraction = vtkExtractSelection()
    extraction.SetInputData(0, grid)
    extraction.SetInputData(1, selection)
    extraction.Update()
    result = extraction.GetOutput()
    result.GetCellData().RemoveArray("vtkOriginalCellIds")
    result.GetPointData().RemoveArray("vtkOriginalPointIds")
    return result


def array_list(data, place):
    lines = [f"    <{place}>"]
    for i in range(data.GetNumberOfArrays()):
        array = data.GetArray(i)
        lines.append(f'      <PDataArray type="{ARRAY_TYPES[array.GetDataTypeAsString()]}" Name="{array.GetName()}" '
                     f'NumberOfComponents="{array.GetNumberOfComponents()}"/>')
    return lines + [f"    </{place}>"]


def cut(meshes, name):
    grid = read(meshes / f"{name}.vtu")
    points = vtk_to_numpy(grid.GetPoints().GetData())
    connectivity = vtk_to_numpy(grid.GetCells().GetConnectivityArray())
    first = vtk_to_numpy(grid.GetCells().GetOffsetsArray())[:-1]
    places = points[connectivity[first]]
    quarters = (places[:, 0] > 0).astype(int) + 2 * (places[:, 1] > 0)
    folder = meshes / f"{name}_pieces"
    folder.mkdir(exist_ok=True)
    lines = ['<?xml version="1.0"?>',
             '<VTKFile type="PUnstructuredGrid" version="1.0" byte_order="LittleEndian" header_type="UInt64">',
             '  <PUnstructuredGrid GhostLevel="0">']
    lines += array_list(grid.GetPointData(), "PPointData") + array_list(grid.GetCellData(), "PCellData")
    kind = ARRAY_TYPES[grid.GetPoints().GetData().GetDataTypeAsString()]
    lines += ["    <PPoints>", f'      <PDataArray type="{kind}" NumberOfComponents="3"/>', "    </PPoints>"]
    for quarter in range(4):
        writer = vtkXMLUnstructuredGridWriter()
        writer.SetFileName(str(folder / f"{quarter}.vtu"))
        writer.SetInputData(part(grid, numpy.flatnonzero(quarters == quarter)))
        writer.Write()
        lines.append(f'    <Piece Source="{folder.name}/{quarter}.vtu"/>')
    lines += ["  </PUnstructuredGrid>", "</VTKFile>", ""]
    (meshes / f"{name}.pvtu").write_text("\n".join(lines))


if __name__ == "__main__":
    for mesh in ("flange_tetrahedra_coarse", "flange_mixed_coarse"):
        cut(pathlib.Path(sys.argv[1]), mesh)
