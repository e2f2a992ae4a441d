/// The mesh of a MED file.
#ifndef VELTRANE_HOST_MED_MESH_H
#define VELTRANE_HOST_MED_MESH_H

#include "FileFormat.h"
#include "MedFile.h"

#include <vtkSmartPointer.h>
#include <vtkType.h>

#include <map>
#include <string>

class vtkUnstructuredGrid;

namespace veltrane
{

struct MedCell;

/// Where the cells of a type are.
struct MedCellRange
{
    const MedCell* cell;
    vtkIdType begin;
    vtkIdType count;
};

/// The first mesh of a file.
struct MedMesh
{
    std::string name{};
    vtkSmartPointer<vtkUnstructuredGrid> grid{}; ///< cells type after type; families as cell data `material`
    std::vector<MedCellRange> ranges{};
};

/// What cannot be a part of the grid is added to `leftOut`. Throws BadFile and MedFailure.
MedMesh readMedMesh(const MedFile& file, const std::filesystem::path& path, LeftOut& leftOut);

} // namespace veltrane

#endif
