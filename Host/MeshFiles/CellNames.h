/// What cells are called in messages and in what info tells.
#ifndef VELTRANE_HOST_CELL_NAMES_H
#define VELTRANE_HOST_CELL_NAMES_H

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

} // namespace veltrane

#endif
