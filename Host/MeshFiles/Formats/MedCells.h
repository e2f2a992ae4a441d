/// The cells of MED files and those of VTK.
#ifndef VELTRANE_HOST_MED_CELLS_H
#define VELTRANE_HOST_MED_CELLS_H

#include <med.h>

#include <span>
#include <string_view>

namespace veltrane
{

struct MedCell
{
    med_geometry_type type;
    std::string_view name; ///< of MED
    int cellType;          ///< of VTK
    int dimension;
    std::span<const int> order; ///< node i of VTK's cell is node order[i] of MED's; the corners run the other way round
};

std::span<const MedCell> medCells();

/// Null for types that VTK does not have, or that have no fixed number of nodes.
const MedCell* findMedCell(int cellType);

} // namespace veltrane

#endif
