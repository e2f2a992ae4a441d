/// The kinds of elements of Abaqus and CalculiX as cells of VTK.
#ifndef VELTRANE_HOST_ABAQUS_CELLS_H
#define VELTRANE_HOST_ABAQUS_CELLS_H

#include "CellOrders.h"

#include <string_view>

namespace veltrane
{

struct AbaqusKind
{
    const CellOrder* order = nullptr; ///< null if there is no cell for it
    bool isVolume = false;
};

/// \param type  in capitals: "C3D20R"
AbaqusKind abaqusKindOf(std::string_view type);

} // namespace veltrane

#endif
