// EnSight cases (.case), which name the files of geometry and variables. Parts are materials.
#include "BlockJoining.h"
#include "FormatList.h"
#include "VtkReading.h"

#include <vtkCellArray.h>
#include <vtkCellType.h>
#include <vtkGenericEnSightReader.h>
#include <vtkIdList.h>
#include <vtkMath.h>
#include <vtkMultiBlockDataSet.h>
#include <vtkUnstructuredGrid.h>

#include <array>
#include <vector>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 1> endings{".case"};

void open(vtkGenericEnSightReader& reader, const VtkMessages& messages, const std::filesystem::path& path)
{
    if (guarded(path, [&] { return vtkGenericEnSightReader::IsEnSightFile(path.c_str()); }))
    {
        reader.SetCaseFileName(path.c_str());
        reader.ReadAllVariablesOn();
        guarded(path, [&] { reader.UpdateInformation(); });
        throwIfFailed(messages, reader.GetErrorCode(), path);
        return;
    }
    throw BadFile(text("cannot read ", quoted(path), ": it is not an EnSight case"));
}

double wedgeVolume(vtkUnstructuredGrid& grid, vtkIdList& points)
{
    std::array<std::array<double, 3>, 4> at{};
    for (std::size_t i = 0; i < at.size(); ++i)
    {
        grid.GetPoint(points.GetId(static_cast<vtkIdType>(i)), at[i].data());
    }
    for (std::size_t i = 1; i < at.size(); ++i)
    {
        vtkMath::Subtract(at[i].data(), at[0].data(), at[i].data());
    }
    return vtkMath::Determinant3x3(at[1].data(), at[2].data(), at[3].data());
}

/// Some releases of the reader turn wedges inside out.
void turnWedges(vtkUnstructuredGrid& grid)
{
    constexpr std::array<vtkIdType, 15> turned{0, 2, 1, 3, 5, 4, 8, 7, 6, 11, 10, 9, 12, 14, 13};
    const vtkNew<vtkIdList> points;
    for (vtkIdType cell = 0; cell < grid.GetNumberOfCells(); ++cell)
    {
        const int cellType = grid.GetCellType(cell);
        if (cellType != VTK_WEDGE && cellType != VTK_QUADRATIC_WEDGE)
        {
            continue;
        }
        grid.GetCellPoints(cell, points);
        if (wedgeVolume(grid, *points) < 0)
        {
            const std::vector<vtkIdType> before(points->begin(), points->end());
            for (std::size_t i = 0; i < before.size(); ++i)
            {
                points->SetId(static_cast<vtkIdType>(i), before[static_cast<std::size_t>(turned[i])]);
            }
            grid.GetCells()->ReplaceCellAtId(cell, points);
        }
    }
}

FileData read(const std::filesystem::path& path, const FileReading& reading)
{
    const VtkMessages messages;
    const vtkNew<vtkGenericEnSightReader> reader;
    open(*reader, messages, path);
    FileData data = readBlocks(*reader, messages, reading, path);
    turnWedges(*vtkUnstructuredGrid::SafeDownCast(data.dataSet));
    return data;
}

std::vector<double> readTimes(const std::filesystem::path& path)
{
    const VtkMessages messages;
    const vtkNew<vtkGenericEnSightReader> reader;
    open(*reader, messages, path);
    return timesOf(*reader);
}

} // namespace

constinit const FileFormat formats::enSight{
    .name = "EnSight case",
    .endings = endings,
    .reads = {.cells = true, .materials = true, .nodalFields = true, .cellFields = true, .steps = true},
    .read = read,
    .times = readTimes};

} // namespace veltrane
