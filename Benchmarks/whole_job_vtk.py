"""A transfer as one writes it with VTK's Python modules: whole_job_vtk.py SOURCE TARGET OUTPUT [none]."""

import os
import re
import sys

from vtkmodules.vtkFiltersCore import vtkProbeFilter
from vtkmodules.vtkIOXML import vtkXMLUnstructuredGridReader, vtkXMLUnstructuredGridWriter


def transfer(source, target, output, is_compressed):
    """Writes the target with the source's point data; readers come and go with the call."""
    read_source, read_target = vtkXMLUnstructuredGridReader(), vtkXMLUnstructuredGridReader()
    read_source.SetFileName(source)
    read_target.SetFileName(target)
    probe = vtkProbeFilter()
    probe.SetSourceConnection(read_source.GetOutputPort())
    probe.SetInputConnection(read_target.GetOutputPort())
    writer = vtkXMLUnstructuredGridWriter()
    writer.SetInputConnection(probe.GetOutputPort())
    writer.SetFileName(output)
    if not is_compressed:
        writer.SetCompressorTypeToNone()
        writer.EncodeAppendedDataOff()
    if writer.Write() != 1:
        sys.exit("cannot write " + output)


def transfer_steps(collection, target, output):
    """The same for the files of a collection, with what can be kept from step to step."""
    read_source, read_target = vtkXMLUnstructuredGridReader(), vtkXMLUnstructuredGridReader()
    read_target.SetFileName(target)
    probe = vtkProbeFilter()
    probe.SetSourceConnection(read_source.GetOutputPort())
    probe.SetInputConnection(read_target.GetOutputPort())
    writer = vtkXMLUnstructuredGridWriter()
    writer.SetInputConnection(probe.GetOutputPort())
    folder = output.removesuffix(".pvd")
    os.makedirs(folder, exist_ok=True)
    with open(collection, encoding="utf-8") as file:
        text = file.read()
    for number, name in enumerate(re.findall('file="([^"]*)"', text)):
        read_source.SetFileName(os.path.join(os.path.dirname(collection), name))
        written = f"{folder}/step_{number:04}.vtu"
        writer.SetFileName(written)
        if writer.Write() != 1:
            sys.exit("cannot write " + written)
        text = text.replace(f'"{name}"', f'"{os.path.basename(folder)}/step_{number:04}.vtu"')
    with open(output, "w", encoding="utf-8") as file:
        file.write(text)


if sys.argv[1].endswith(".pvd"):
    transfer_steps(*sys.argv[1:4])
else:
    transfer(*sys.argv[1:4], is_compressed="none" not in sys.argv[4:])
