#include "DirectElements.h"

#include "RepeatedNodes.h"
#include "ThreadWorkers.h"
#include "VtkCells.h"

#include <vtkCellType.h>
#include <vtkUnsignedCharArray.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
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
        cells.offsets.back() != cells.connectivity.size())
    {
        return std::nullopt;
    }
    GridElements elements;
    elements.data.kinds.resize(cellCount);
    std::atomic<bool> areDirect = true;
    const auto take = [&](std::int64_t number)
    {
        const auto cell = static_cast<std::size_t>(number);
        const unsigned char type = types.GetPointer(0)[cell];
        const ElementKindInfo* kind = kinds[type];
        const std::size_t begin = cells.offsets[cell];
        const std::size_t end = cells.offsets[cell + 1];
        if (kind == nullptr || end < begin || end > cells.connectivity.size() ||
            end - begin != static_cast<std::size_t>(kind->nodeCount))
        {
            areDirect = false;
            return;
        }
        const std::span<const int> points(cells.connectivity.data() + begin, end - begin);
        if (!areInRange(points, pointCount) ||
            (type == VTK_HEXAHEDRON && !reading.keepsRepeatedNodes && hasRepeatedNodes<int>(points)))
        {
            areDirect = false;
        }
        elements.data.kinds[cell] = kind->kind;
    };
    ThreadWorkers workers(reading.threads);
    forEachItem(workers, {"checking", 0, 100}, static_cast<std::int64_t>(cellCount), take);
    if (!areDirect)
    {
        return std::nullopt;
    }
    elements.data.offsets = std::move(cells.offsets);
    elements.data.connectivity = std::move(cells.connectivity);
    elements.cells = ItemNumbers(cellCount);
    elements.usedCellCount = static_cast<int>(cellCount);
    return elements;
}

} // namespace veltrane
