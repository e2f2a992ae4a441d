/// Data sets as VTK's writers take them.
#ifndef VELTRANE_HOST_VTK_WRITING_H
#define VELTRANE_HOST_VTK_WRITING_H

#include "Compression.h"
#include "FileErrors.h"

#include <vtkSmartPointer.h>

#include <filesystem>

class vtkPointSet;
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

/// Lets one of VTK's own writers append raw bytes, too.
void configure(vtkXMLWriter& writer, Compression compression);

/// Lets a writer, which has its input and the name of the file, write. Throws CannotWrite with nothing but the reason.
void runWriter(vtkWriter& writer);
void runWriter(vtkXMLWriter& writer);

} // namespace veltrane

#endif
