"""The files of whole_jobs.py, made with VTK: cubes of cells with a scalar and a vector field in double precision.

    whole_job_files.py MODEL FOLDER zlib|plain SCALE

prints the source, the target and how the output is to end.
"""

import pathlib
import sys
from typing import NamedTuple

from vtkmodules.vtkCommonDataModel import vtkImageData, vtkRectilinearGrid
from vtkmodules.vtkCommonCore import VTK_DOUBLE, VTK_FLOAT, vtkDoubleArray
from vtkmodules.vtkFiltersCore import vtkAppendFilter, vtkArrayCalculator
from vtkmodules.vtkFiltersGeneral import vtkImageDataToPointSet, vtkRectilinearGridToTetrahedra
from vtkmodules.vtkFiltersGeometry import vtkLinearToQuadraticCellsFilter
from vtkmodules.vtkIOXML import vtkXMLUnstructuredGridWriter


class Files(NamedTuple):
    source: pathlib.Path
    target: pathlib.Path
    ending: str


def hexahedra(n):
    """Of the unit cube, n along each axis."""
    image = vtkImageData()
    image.SetDimensions(n + 1, n + 1, n + 1)
    image.SetSpacing(1 / n, 1 / n, 1 / n)
    points = vtkImageDataToPointSet()
    points.SetInputData(image)
    grid = vtkAppendFilter()
    grid.SetInputConnection(points.GetOutputPort())
    return grid, n


def tetrahedra(n):
    """The same, each of n³ cells cut into six."""
    grid = vtkRectilinearGrid()
    grid.SetDimensions(n + 1, n + 1, n + 1)
    axis, mirrored = vtkDoubleArray(), vtkDoubleArray()
    for i in range(n + 1):
        axis.InsertNextValue(i / n)
        mirrored.InsertNextValue(1 - i / n)
    grid.SetXCoordinates(mirrored)  # the filter's tetrahedra are inside out otherwise
    grid.SetYCoordinates(axis)
    grid.SetZCoordinates(axis)
    cut = vtkRectilinearGridToTetrahedra()
    cut.SetTetraPerCellTo6()
    cut.SetInputData(grid)
    return cut, n


def quadratic(n):
    linear, n = tetrahedra(n)
    curved = vtkLinearToQuadraticCellsFilter()
    curved.SetInputConnection(linear.GetOutputPort())
    return curved, 2 * n


def calculate(upstream, name, function, is_of_coordinates=False):
    calculator = vtkArrayCalculator()
    calculator.SetInputConnection(upstream.GetOutputPort())
    calculator.AddCoordinateScalarVariable("x", 0)
    calculator.AddCoordinateScalarVariable("y", 1)
    calculator.AddCoordinateScalarVariable("z", 2)
    calculator.SetFunction(function)
    calculator.SetCoordinateResults(is_of_coordinates)
    calculator.SetResultArrayType(VTK_FLOAT if is_of_coordinates else VTK_DOUBLE)
    calculator.SetResultArrayName(name)
    return calculator


def distorted(mesh):
    """Nodes moved by a tenth of a cell, those of the surface along it, so that no two numbers are alike."""
    upstream, n = mesh
    inside = "x*(1-x)*y*(1-y)*z*(1-z)"
    way = f"{2 / n}*{inside}"
    parts = "+".join(f"({axis} + {way}*sin({a}*x + {b}*y + {c}*z))*{unit}" for axis, unit, a, b, c in (
        ("x", "iHat", 911, 357, 173), ("y", "jHat", 271, 829, 433), ("z", "kHat", 523, 197, 701)))
    return calculate(upstream, "moved", parts, is_of_coordinates=True)


def with_fields(upstream, time=0):
    wave = f"sin(3*x + {time}) * cos(2*y) + z*z"
    scalar = calculate(upstream, "temperature", wave)
    return calculate(scalar, "displacement", f"({wave})*iHat + x*y*jHat + (z - y)*kHat")


def write(upstream, path, is_plain=False):
    if path.exists():
        return
    writer = vtkXMLUnstructuredGridWriter()
    writer.SetInputConnection(upstream.GetOutputPort())
    writer.SetFileName(str(path))
    if is_plain:
        writer.SetCompressorTypeToNone()
        writer.EncodeAppendedDataOff()
    if writer.Write() != 1:
        raise OSError(f"cannot write {path}")


def make_series(folder, scale):
    source = folder / "series.pvd"
    mesh = distorted(hexahedra(round(58 * scale)))
    lines = []
    for step in range(20):
        write(with_fields(mesh, step / 10), folder / f"series_{step}.vtu")
        lines.append(f'<DataSet timestep="{step}" file="series_{step}.vtu"/>\n')
    source.write_text(f'<VTKFile type="Collection"><Collection>\n{"".join(lines)}</Collection></VTKFile>\n')
    target = folder / "series_target.vtu"
    write(distorted(hexahedra(round(66 * scale))), target)
    return Files(source, target, ".pvd")


def make(model, folder, is_plain, scale):
    """The files of a model, made unless they are there."""
    if model == "series":
        return make_series(folder, scale)
    source_mesh, target_size = {
        "tetrahedra": (lambda: tetrahedra(round(60 * scale)), 99),
        "quadratic": (lambda: quadratic(round(26 * scale)), 99),
        "small": (lambda: hexahedra(round(20 * scale)), 21),
    }[model]
    suffix = "_plain" if is_plain else ""
    source, target = folder / f"{model}{suffix}.vtu", folder / f"{model}_target{suffix}.vtu"
    write(with_fields(distorted(source_mesh())), source, is_plain)
    write(distorted(hexahedra(round(target_size * scale))), target, is_plain)
    return Files(source, target, ".vtu")


if __name__ == "__main__":
    print(*make(sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3] == "plain", float(sys.argv[4])), sep="\n")
