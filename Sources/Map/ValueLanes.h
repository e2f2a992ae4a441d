/// Values of fields side by side, so that those of a node come with one access.
#ifndef VELTRANE_VALUE_LANES_H
#define VELTRANE_VALUE_LANES_H

#include "TransferMap.h"

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstdint>

/// Most components that are evaluated together.
inline constexpr int maxNbLanes = 8;

/// One component of one field.
template <class Real> struct Column
{
    const MapField* field = nullptr;
    const Real* nodeAverages = nullptr; ///< of a field at Gauss points
    int component = 0;
};

/// Components that are evaluated together: those of fields at one kind of target location.
template <class Real> struct Group
{
    std::array<Column<Real>, maxNbLanes> columns;
    int nbColumns = 0;

    /// Columns per node in the copy; those that no component fills are 0.
    int nbLanes() const { return static_cast<int>(std::bit_ceil(static_cast<unsigned>(nbColumns))); }
};

/// Copies `nbNodes` values of one source array into a lane; true if one of them is undefined.
template <class Value, class Real>
bool copyLane(const Value* source, int stride, Real* lane, int nbLanes, std::int64_t nbNodes)
{
    bool isUndefined = false;
    for (std::int64_t node = 0; node < nbNodes; ++node)
    {
        const auto value = static_cast<Real>(source[node * stride]);
        isUndefined |= value <= Real{undefinedBelow};
        lane[node * nbLanes] = value;
    }
    return isUndefined;
}

template <class Real>
bool copyColumn(const Column<Real>& column, Real* lane, int nbLanes, std::int64_t first, std::int64_t end)
{
    const MapField& field = *column.field;
    const int stride = field.nbComponents;
    const std::int64_t offset = first * stride + column.component;
    if (column.nodeAverages != nullptr)
    {
        return copyLane(column.nodeAverages + offset, stride, lane, nbLanes, end - first);
    }
    return field.sourceFloats != nullptr ? copyLane(field.sourceFloats + offset, stride, lane, nbLanes, end - first)
                                         : copyLane(field.sourceDoubles + offset, stride, lane, nbLanes, end - first);
}

/// Whether one of the values is undefined.
template <class Real> bool areUndefined(const Real* begin, const Real* end)
{
    bool isUndefined = false;
    for (const Real* value = begin; value != end; ++value)
    {
        isUndefined |= *value <= Real{undefinedBelow};
    }
    return isUndefined;
}

/// The source values of a group where they stand, if they stand as the copy would: all components of one field in the
/// precision of the map. Otherwise null.
template <class Real> const Real* valuesInPlace(const Group<Real>& group)
{
    const Column<Real>& first = group.columns.front();
    const Column<Real>& last = group.columns[static_cast<std::size_t>(group.nbColumns) - 1];
    const bool isOneField = first.field == last.field && group.nbColumns == first.field->nbComponents;
    if (!isOneField || group.nbColumns != group.nbLanes())
    {
        return nullptr;
    }
    if (first.nodeAverages != nullptr)
    {
        return first.nodeAverages;
    }
    if constexpr (std::same_as<Real, float>)
    {
        return first.field->sourceFloats;
    }
    else
    {
        return first.field->sourceDoubles;
    }
}

/// Copies the values of some nodes side by side; true if one of them is undefined.
template <class Real>
bool copySideBySide(const Group<Real>& group, std::int64_t firstNode, std::int64_t end, Real* values)
{
    constexpr std::int64_t cachedNodes = 512;
    const int nbLanes = group.nbLanes();
    bool isUndefined = false;
    for (std::int64_t first = firstNode; first < end; first += cachedNodes)
    {
        const std::int64_t last = std::min(first + cachedNodes, end);
        for (int lane = 0; lane < group.nbColumns; ++lane)
        {
            isUndefined |= copyColumn(group.columns[static_cast<std::size_t>(lane)], values + first * nbLanes + lane,
                                      nbLanes, first, last);
        }
        for (int lane = group.nbColumns; lane < nbLanes; ++lane)
        {
            for (std::int64_t node = first; node < last; ++node)
            {
                values[node * nbLanes + lane] = Real{0};
            }
        }
    }
    return isUndefined;
}

/// Writes one lane of some rows to where a component of the target's values stands.
template <class Value, class Real>
void writeLane(Value* target, int stride, const Real* values, int nbLanes, std::int64_t nbRows)
{
    for (std::int64_t row = 0; row < nbRows; ++row)
    {
        target[row * stride] = static_cast<Value>(values[row * nbLanes]);
    }
}

#endif
