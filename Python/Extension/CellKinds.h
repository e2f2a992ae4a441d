/// VTK's cell types, by which people and files in the world of Python name the kinds of cells.
#ifndef VELTRANE_PYTHON_CELL_KINDS_H
#define VELTRANE_PYTHON_CELL_KINDS_H

#include "ElementKind.h"

#include <cstdint>
#include <span>
#include <vector>

namespace veltrane
{

/// A cell type that has a counterpart among the element kinds.
struct CellKind
{
    int cellType;
    ElementKind kind;
    std::span<const int> nodeOrder; ///< element node i is cell node nodeOrder[i]
    bool isVolume;
};

/// All of them, as the element kinds name them.
const std::vector<CellKind>& cellKinds();

/// Null for other cell types.
const CellKind* findCellKind(std::int64_t cellType);

/// Whether cells of the type are points or lines, which hold nothing and are left out of every mesh.
bool isPointOrLine(std::int64_t cellType);

} // namespace veltrane

#endif
