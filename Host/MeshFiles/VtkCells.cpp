#include "VtkCells.h"

#include "Elements/ElementKinds.h"

#include <algorithm>
#include <array>

namespace veltrane
{
namespace
{

template <class... Kinds> struct CellKinds
{
    static constexpr std::size_t size = (Kinds::vtkCells.size() + ...);

    static constexpr std::array<VtkCellKind, size> values = []
    {
        std::array<VtkCellKind, size> cellKinds{};
        std::size_t count = 0;
        const auto addCellsOf = [&]<class Kind>(Kind)
        {
            for (const auto& cell : Kind::vtkCells)
            {
                cellKinds[count++] = {cell.cellType, static_cast<ElementKind>(Kind::typeCode), cell.nodeOrder};
            }
        };
        (addCellsOf(Kinds{}), ...);
        return cellKinds;
    }();
};

constexpr const auto& cellKinds = ElementKinds::Into<CellKinds>::values;

} // namespace

const VtkCellKind* findVtkCellKind(int cellType)
{
    const auto found = std::ranges::find(cellKinds, cellType, &VtkCellKind::cellType);
    return found == cellKinds.end() ? nullptr : &*found;
}

const VtkCellKind& vtkCellKindOf(ElementKind kind)
{
    return *std::ranges::find(cellKinds, kind, &VtkCellKind::kind);
}

} // namespace veltrane
