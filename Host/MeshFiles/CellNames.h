/// What cells are called in messages and in what info tells.
#ifndef VELTRANE_HOST_CELL_NAMES_H
#define VELTRANE_HOST_CELL_NAMES_H

#include <optional>
#include <string>

namespace veltrane
{

struct CellName
{
    std::string one;  ///< "quadratic hexahedron"
    std::string more; ///< "quadratic hexahedra"
};

/// Of a cell type of VTK, whatever it is. Types that differ in nothing but the order of their nodes have one name.
CellName cellNameOf(int cellType);

/// From 0 for points to 3 for volumes, -1 for cells without nodes; nothing for types that VTK does not name.
std::optional<int> cellDimension(int cellType);

} // namespace veltrane

#endif
