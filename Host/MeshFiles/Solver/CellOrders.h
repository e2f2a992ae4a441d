/// The cells of VTK that elements of other programs become, and the order of their nodes.
#ifndef VELTRANE_HOST_CELL_ORDERS_H
#define VELTRANE_HOST_CELL_ORDERS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace veltrane
{

/// How a kind of elements becomes a cell.
struct CellOrder
{
    int number; ///< of the kind in its format
    unsigned char cellType;
    int nodeCount;
    /// The place among the element's nodes of each node of the cell; empty if the order is the same.
    std::span<const std::int8_t> order{};
};

/// Several formats have the nodes on the edges between two opposite faces before those of the second face.
inline constexpr std::array<std::int8_t, 20> hexahedronEdgesAcrossFirst{0,  1,  2,  3,  4,  5,  6,  7,  8,  9,
                                                                        10, 11, 16, 17, 18, 19, 12, 13, 14, 15};
inline constexpr std::array<std::int8_t, 15> wedgeEdgesAcrossFirst{0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 13, 14, 9, 10, 11};

inline constexpr std::size_t mostNodesPerCell = 27;

/// Null if there is no such kind.
constexpr const CellOrder* findOrder(std::span<const CellOrder> orders, long long number)
{
    for (const CellOrder& order : orders)
    {
        if (order.number == number)
        {
            return &order;
        }
    }
    return nullptr;
}

/// Adds the nodes of an element, in the order of the cell, to a list.
template <typename Number, typename List>
void addInOrder(const CellOrder& order, std::span<const Number> nodes, List& list)
{
    if (order.order.empty())
    {
        list.insert(list.end(), nodes.begin(), nodes.end());
        return;
    }
    for (const std::int8_t place : order.order)
    {
        list.push_back(nodes[static_cast<std::size_t>(place)]);
    }
}

} // namespace veltrane

#endif
