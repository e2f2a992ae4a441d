/// Cells in a compact form, and as VTK has them.
#ifndef VELTRANE_HOST_CELL_TABLE_H
#define VELTRANE_HOST_CELL_TABLE_H

#include <cstddef>
#include <filesystem>
#include <span>
#include <vector>

class vtkUnsignedCharArray;
class vtkUnstructuredGrid;

namespace veltrane
{

/// The points of cells, cell after cell.
struct CellTable
{
    std::vector<int> connectivity{};
    std::vector<std::size_t> offsets{}; ///< where each cell's points begin, and the end: one more entry than cells
    int numberType = 0;                 ///< of VTK: in which files have these numbers
};

/// The same, borrowed.
struct CellView
{
    std::span<const int> connectivity;
    int numberType;
    std::span<const std::size_t> offsets{};   ///< either these
    std::span<const int* const> beginnings{}; ///< or these: the same as places in the connectivity

    std::size_t cellCount() const { return (beginnings.empty() ? offsets.size() : beginnings.size()) - 1; }

    /// Where a cell's points begin, or the end if there is no cell of this number.
    std::size_t offset(std::size_t cell) const
    {
        return beginnings.empty() ? offsets[cell] : static_cast<std::size_t>(beginnings[cell] - connectivity.data());
    }
};

CellView viewOf(const CellTable& cells);

/// The cells of a grid, none of one without any. Throws BadFile, naming the file, if there are more points than can be
/// counted, or the offsets do not hold together.
CellTable copyCells(vtkUnstructuredGrid& grid, const std::filesystem::path& path);

/// Gives the grid cells, of these types.
void setCells(vtkUnstructuredGrid& grid, vtkUnsignedCharArray& types, const CellView& cells);

} // namespace veltrane

#endif
