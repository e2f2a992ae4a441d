/// Data sets as VTK's writers take them.
#ifndef VELTRANE_HOST_VTK_WRITING_H
#define VELTRANE_HOST_VTK_WRITING_H

#include "FileErrors.h"
#include "FileFormat.h"

#include <vtkSmartPointer.h>

#include <filesystem>

class vtkPolyData;
class vtkUnstructuredGrid;
class vtkWriter;
class vtkXMLWriter;

namespace veltrane
{

/// A data set of this sort and with cells, without which no program shows the points: the same one, or its points alone
/// as cells of one point.
vtkSmartPointer<vtkUnstructuredGrid> asGrid(vtkPointSet& dataSet);
vtkSmartPointer<vtkPolyData> asPolyData(vtkPointSet& dataSet);

/// asGrid() with the cells of types that can be written. Voxels and pixels become what they are a special case of; the
/// other cells go, with their values, and are named in `leftOut`.
vtkSmartPointer<vtkUnstructuredGrid> asGridOf(vtkPointSet& dataSet, bool (*isWritten)(int cellType), LeftOut& leftOut);

/// Lets one of VTK's own writers append raw bytes, too.
void configure(vtkXMLWriter& writer, Compression compression);

/// Lets a writer, which has its input and the name of the file, write. Throws CannotWrite with nothing but the reason.
void runWriter(vtkWriter& writer);
void runWriter(vtkXMLWriter& writer);

} // namespace veltrane

#endif
