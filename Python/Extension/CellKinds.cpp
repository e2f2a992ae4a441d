#include "CellKinds.h"

#include "Elements/ElementKinds.h"

#include <algorithm>
#include <array>

namespace veltrane
{
namespace
{

template <class... Kinds> struct Listed
{
    static std::vector<CellKind> list()
    {
        std::vector<CellKind> kinds;
        const auto add = [&]<class Kind>(Kind)
        {
            for (const auto& cell : Kind::vtkCells)
            {
                kinds.push_back(
                    {cell.cellType, static_cast<ElementKind>(Kind::typeCode), cell.nodeOrder, Kind::dimension == 3});
            }
        };
        (add(Kinds{}), ...);
        return kinds;
    }
};

constexpr std::int64_t cellTypeCount = 256; // VTK keeps them in bytes

using CellTypeTable = std::array<const CellKind*, cellTypeCount>;

CellTypeTable tableOf(const std::vector<CellKind>& kinds)
{
    CellTypeTable table{};
    for (const CellKind& kind : kinds)
    {
        table[static_cast<std::size_t>(kind.cellType)] = &kind;
    }
    return table;
}

} // namespace

const std::vector<CellKind>& cellKinds()
{
    static const std::vector<CellKind> kinds = ElementKinds::Into<Listed>::list();
    return kinds;
}

const CellKind* findCellKind(std::int64_t cellType)
{
    static const CellTypeTable table = tableOf(cellKinds());
    return cellType < 0 || cellType >= cellTypeCount ? nullptr : table[static_cast<std::size_t>(cellType)];
}

bool isPointOrLine(std::int64_t cellType)
{
    // Nothing, vertices, lines, and curves of second, third and any order.
    constexpr std::array types{0, 1, 2, 3, 4, 21, 35, 68, 75};
    return std::ranges::find(types, cellType) != types.end();
}

} // namespace veltrane
