/// The arrays of a grid as fields of a MED file.
#ifndef VELTRANE_HOST_MED_FIELD_WRITING_H
#define VELTRANE_HOST_MED_FIELD_WRITING_H

#include "FileFormat.h"
#include "MedFile.h"

#include <vtkType.h>

#include <vector>

class vtkUnstructuredGrid;

namespace veltrane
{

struct MedCell;

/// The mesh that is written.
inline constexpr const char* medMeshName = "mesh";

/// The cells of a type in the order of the file, by their numbers in the grid.
struct MedCellList
{
    const MedCell* cell;
    std::vector<vtkIdType> cells;
};

using MedCellLists = std::vector<MedCellList>;

/// Writes all arrays of numbers: those of points, of cells and of Gauss points. What cannot be written is added to
/// `leftOut`. Throws MedFailure.
void writeMedFields(const MedFile& file, vtkUnstructuredGrid& grid, const MedCellLists& lists, LeftOut& leftOut);

} // namespace veltrane

#endif
