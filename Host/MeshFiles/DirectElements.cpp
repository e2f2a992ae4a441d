#include "DirectElements.h"

#include "VtkCells.h"

#include <vtkCellType.h>
#include <vtkUnsignedCharArray.h>

#include <algorithm>
#include <array>
#include <span>

namespace veltrane
{
namespace
{

/// The element kinds of the cell types that are elements as they are; null for the others.
std::array<const ElementKindInfo*, 256> directKinds(MeshRole role)
{
    std::array<const ElementKindInfo*, 256> kinds{};
    for (std::size_t type = 0; type < kinds.size(); ++type)
    {
        const VtkCellKind* cellKind = findVtkCellKind(static_cast<int>(type));
        const ElementKindInfo* kind = cellKind == nullptr ? nullptr : findElementKind(cellKind->kind);
        const bool isDirect = kind != nullptr && (role == MeshRole::target || kind->isVolume) &&
                              std::ranges::is_sorted(cellKind->nodeOrder);
        kinds[type] = isDirect ? kind : nullptr;
    }
    return kinds;
}

bool hasRepeatedNodes(std::span<const int> points)
{
    for (std::size_t i = 1; i < points.size(); ++i)
    {
        for (std::size_t j = 0; j < i; ++j)
        {
            if (points[i] == points[j])
            {
                return true;
            }
        }
    }
    return false;
}

bool areInRange(std::span<const int> points, vtkIdType pointCount)
{
    return std::ranges::all_of(points, [&](int point) { return point >= 0 && point < pointCount; });
}

} // namespace

std::optional<GridElements> takeElements(CellTable& cells, vtkUnsignedCharArray& types, vtkIdType pointCount,
                                         const MeshReading& reading)
{
    const auto kinds = directKinds(reading.role);
    const auto cellCount = static_cast<std::size_t>(types.GetNumberOfValues());
    if (cellCount == 0 || cells.offsets.size() != cellCount + 1 || cells.offsets.front() != 0 ||
        cells.offsets.back() != cells.connectivity.size() || !areInRange(cells.connectivity, pointCount))
    {
        return std::nullopt;
    }
    GridElements elements;
    elements.data.kinds.reserve(cellCount);
    for (std::size_t cell = 0; cell < cellCount; ++cell)
    {
        const unsigned char type = types.GetPointer(0)[cell];
        const ElementKindInfo* kind = kinds[type];
        const std::size_t begin = cells.offsets[cell];
        const std::size_t end = cells.offsets[cell + 1];
        if (kind == nullptr || end < begin || end - begin != static_cast<std::size_t>(kind->nodeCount) ||
            (type == VTK_HEXAHEDRON && !reading.keepsRepeatedNodes &&
             hasRepeatedNodes({cells.connectivity.data() + begin, end - begin})))
        {
            return std::nullopt;
        }
        elements.data.kinds.push_back(kind->kind);
    }
    elements.data.offsets = std::move(cells.offsets);
    elements.data.connectivity = std::move(cells.connectivity);
    elements.cells = ItemNumbers(cellCount);
    elements.usedCellCount = static_cast<int>(cellCount);
    return elements;
}

} // namespace veltrane
