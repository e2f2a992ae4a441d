/// VTK's cells as elements.
#ifndef VELTRANE_HOST_VTK_CELLS_H
#define VELTRANE_HOST_VTK_CELLS_H

#include "ElementKind.h"

#include <span>

namespace veltrane
{

/// A cell type of VTK that has a counterpart among the element kinds.
struct VtkCellKind
{
    int cellType;
    ElementKind kind;
    /// Element node i is cell node nodeOrder[i]. Nodes of the same place in the reference cell and the reference
    /// element correspond, so orientation is kept.
    std::span<const int> nodeOrder;
};

/// Null for other cell types.
const VtkCellKind* findVtkCellKind(int cellType);

/// The cell type in which elements of a kind are written.
const VtkCellKind& vtkCellKindOf(ElementKind kind);

} // namespace veltrane

#endif
