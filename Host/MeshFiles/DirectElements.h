/// Cells that are elements as they are.
#ifndef VELTRANE_HOST_DIRECT_ELEMENTS_H
#define VELTRANE_HOST_DIRECT_ELEMENTS_H

#include "CellTable.h"
#include "GridElements.h"

#include <optional>

class vtkUnsignedCharArray;

namespace veltrane
{

/// The elements of a file, made of the table of its cells without a copy, if every cell is an element, point for point:
/// of a kind that the reading wants, with its points in the order of the element's nodes, hexahedra without repeated
/// nodes. Nothing otherwise, or if anything is wrong, and the table stays as it is.
std::optional<GridElements> takeElements(CellTable& cells, vtkUnsignedCharArray& types, vtkIdType pointCount,
                                         const MeshReading& reading);

} // namespace veltrane

#endif
