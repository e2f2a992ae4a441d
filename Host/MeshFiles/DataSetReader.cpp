#include "DataSetReader.h"

#include "Collection.h"
#include "FormatList.h"
#include "PointTable.h"
#include "TableText.h"
#include "Text.h"
#include "VtuAhead.h"
#include "VtuFile.h"

#include <vtkPolyData.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGrid.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <new>
#include <stdexcept>
#include <system_error>

namespace veltrane
{
namespace
{

[[noreturn]] void throwTooLarge(const std::filesystem::path& path)
{
    throw BadFile(text("cannot read ", quoted(path), ": it says that it has more data than memory can hold"));
}

/// Calls a function that reads a file; what the file says about its own size need not be true.
template <typename Function> auto throwingTooLarge(const std::filesystem::path& path, const Function& function)
{
    try
    {
        return function();
    }
    catch (const std::bad_alloc&)
    {
        throwTooLarge(path);
    }
    catch (const std::length_error&)
    {
        throwTooLarge(path);
    }
}

const FileFormat& checkedFormat(const std::filesystem::path& path, bool (*isWanted)(const FileFormat*),
                                std::string_view what)
{
    if (path == standardStream)
    {
        throw NoInput("a mesh cannot come from standard input, only the points of sample, as a table");
    }
    const FileFormat* format = formatOf(path);
    checkReadable(path, format != nullptr && format->mayBeEmpty);
    if (format != nullptr && !format->refusal.empty())
    {
        throw BadFile(text("cannot read ", quoted(path), ": ", format->refusal));
    }
    if (!isWanted(format))
    {
        throw BadFile(text(quoted(path), " is not named as a ", what, " file is: ", endingsOf(isWanted)));
    }
    return *format;
}

} // namespace

std::string quoted(const std::filesystem::path& path)
{
    return text("'", path.string(), "'");
}

void throwTwoArrays(const std::filesystem::path& path, std::string_view kind, std::string_view name)
{
    throw BadFile(text(quoted(path), " has two ", kind, "-data arrays of the name '", name, "'"));
}

void checkReadable(const std::filesystem::path& path, bool mayBeEmpty)
{
    std::error_code failure;
    const std::filesystem::file_status status = std::filesystem::status(path, failure);
    if (status.type() == std::filesystem::file_type::not_found)
    {
        throw NoInput(text("there is no file ", quoted(path)));
    }
    if (failure)
    {
        throw NoInput(text("cannot open ", quoted(path), ": ", failure.message()));
    }
    if (status.type() == std::filesystem::file_type::directory)
    {
        throw NoInput(text(quoted(path), " is a directory, not a mesh file"));
    }
    if (status.type() != std::filesystem::file_type::regular)
    {
        throw NoInput(text(quoted(path), " is not a regular file"));
    }
    if (!std::ifstream(path))
    {
        throw NoInput(text("cannot open ", quoted(path), ": ", std::strerror(errno)));
    }
    if (!mayBeEmpty && std::filesystem::file_size(path, failure) == 0)
    {
        throw BadFile(text(quoted(path), " is empty"));
    }
}

MeshContents readMesh(const std::filesystem::path& path, const FileReading& reading, VtuAhead* ahead)
{
    const FileFormat& format = checkedFormat(path, isMeshInput, "mesh");
    if (&format == &formats::unstructuredGrid)
    {
        auto contents =
            throwingTooLarge(path, [&] { return ahead != nullptr ? ahead->take() : readVtu(path, reading.threads); });
        if (contents)
        {
            return {std::move(contents->grid), std::move(contents->types), std::move(contents->cells),
                    std::move(contents->stored)};
        }
    }
    FileData data = throwingTooLarge(path, [&] { return format.read(path, reading); });
    const vtkSmartPointer<vtkUnstructuredGrid> grid = vtkUnstructuredGrid::SafeDownCast(data.dataSet);
    if (grid == nullptr)
    {
        throw BadFile(text(quoted(path), " has points, lines and polygons, which are no mesh"));
    }
    return {grid, grid->GetCellTypesArray(), std::nullopt, StoredArrays(), std::move(data.leftOut)};
}

FileData readPoints(const std::filesystem::path& path, int threads, VtuAhead* ahead)
{
    if (path == standardStream)
    {
        return throwingTooLarge(path, [&] { return FileData{readPointTable(path)}; });
    }
    const FileFormat& format = checkedFormat(path, isPointInput, "point");
    const FileReading reading{.threads = threads};
    if (&format != &formats::unstructuredGrid)
    {
        return throwingTooLarge(path, [&] { return format.read(path, reading); });
    }
    const MeshContents contents = readMesh(path, reading, ahead);
    if (contents.cells)
    {
        setCells(*contents.grid, *contents.types, viewOf(*contents.cells));
    }
    return {contents.grid};
}

std::vector<double> readStepTimes(const std::filesystem::path& path)
{
    const FileFormat* format = formatOf(path);
    checkReadable(path, format != nullptr && format->mayBeEmpty);
    return format == nullptr || format->times == nullptr ? std::vector<double>()
                                                         : throwingTooLarge(path, [&] { return format->times(path); });
}

std::vector<Step> readSteps(const std::filesystem::path& path)
{
    const FileFormat* format = formatOf(path);
    checkReadable(path, format != nullptr && format->mayBeEmpty);
    std::vector<Step> steps;
    if (isCollection(format))
    {
        steps = throwingTooLarge(path, [&] { return format->steps(path); });
    }
    else if (format == nullptr || format->times == nullptr)
    {
        steps.push_back({path, std::nullopt, 0});
    }
    else
    {
        const std::vector<double> times = readStepTimes(path);
        for (std::size_t i = 0; i < times.size(); ++i)
        {
            steps.push_back({path, static_cast<int>(i), times[i]});
        }
    }
    if (steps.empty())
    {
        throw BadFile(text(quoted(path), " has no steps"));
    }
    return steps;
}

} // namespace veltrane
