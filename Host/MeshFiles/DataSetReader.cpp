#include "DataSetReader.h"

#include "AppendedData.h"
#include "ExodusReader.h"
#include "FileFormat.h"
#include "LegacyScanner.h"
#include "LegacyStructure.h"
#include "PointTable.h"
#include "ReadingGuard.h"
#include "TableText.h"
#include "Text.h"
#include "VtkMessages.h"
#include "VtuAhead.h"
#include "VtuFile.h"
#include "XmlStructure.h"

#include <vtkNew.h>
#include <vtkPolyData.h>
#include <vtkPolyDataReader.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGrid.h>
#include <vtkUnstructuredGridReader.h>
#include <vtkXMLDataElement.h>
#include <vtkXMLDataParser.h>
#include <vtkXMLPUnstructuredGridReader.h>
#include <vtkXMLPolyDataReader.h>
#include <vtkXMLUnstructuredGridReader.h>

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

void throwIfFailed(const VtkMessages& messages, unsigned long errorCode, const std::filesystem::path& path)
{
    if (const auto reason = messages.failureReason(errorCode))
    {
        throw BadFile(text("cannot read ", quoted(path), ": ", *reason));
    }
}

template <typename Reader> auto readXml(const std::filesystem::path& path)
{
    const VtkMessages messages;
    vtkNew<Reader> reader;
    reader->SetFileName(path.c_str());
    reader->UpdateInformation();
    vtkXMLDataParser* parser = reader->GetXMLParser();
    if (parser != nullptr && parser->GetRootElement() != nullptr)
    {
        checkStructure(*parser->GetRootElement(), path);
        checkAppendedData(*parser, path);
    }
    throwIfFailed(messages, reader->GetErrorCode(), path);
    reader->Update();
    throwIfFailed(messages, reader->GetErrorCode(), path);
    return vtkSmartPointer(reader->GetOutput());
}

template <typename Reader> auto readLegacy(const std::filesystem::path& path)
{
    checkLegacyStructure(path);
    const VtkMessages messages;
    vtkNew<Reader> reader;
    reader->SetFileName(path.c_str());
    // Of each sort the reader takes but the first one unless told otherwise.
    reader->ReadAllScalarsOn();
    reader->ReadAllVectorsOn();
    reader->ReadAllNormalsOn();
    reader->ReadAllTensorsOn();
    reader->ReadAllColorScalarsOn();
    reader->ReadAllTCoordsOn();
    reader->ReadAllFieldsOn();
    reader->Update();
    throwIfFailed(messages, reader->GetErrorCode(), path);
    return vtkSmartPointer(reader->GetOutput());
}

/// Whether a legacy file has points with lines and polygons instead of cells of all sorts.
bool isLegacyPolyData(const std::filesystem::path& path)
{
    try
    {
        LegacyScanner scanner(path);
        return scanner.keyword() == "dataset" && scanner.keyword() == "polydata";
    }
    catch (const LegacyScanner::Lost&)
    {
        return false;
    }
}

std::optional<FileFormat> checkedFormat(const std::filesystem::path& path, bool (*isWanted)(std::optional<FileFormat>),
                                        std::string_view what, std::string_view endings)
{
    if (path == standardStream)
    {
        throw NoInput("a mesh cannot come from standard input, only the points of sample, as a table");
    }
    checkReadable(path);
    const std::optional<FileFormat> format = formatOf(path);
    if (!isWanted(format))
    {
        throw BadFile(text(quoted(path), " is not named as a ", what, " file is: ", endings));
    }
    return format;
}

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

/// The same for a function that may not survive.
template <typename Function> auto guarded(const std::filesystem::path& path, const Function& function)
{
    const ReadingGuard guard(path);
    return throwingTooLarge(path, function);
}

vtkSmartPointer<vtkUnstructuredGrid> readByVtk(const std::filesystem::path& path, FileFormat format,
                                               std::optional<int> step)
{
    switch (format)
    {
    case FileFormat::legacyUnstructuredGrid: return readLegacy<vtkUnstructuredGridReader>(path);
    case FileFormat::parallelUnstructuredGrid: return readXml<vtkXMLPUnstructuredGridReader>(path);
    case FileFormat::exodus: return readExodus(path, step);
    default: return readXml<vtkXMLUnstructuredGridReader>(path);
    }
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

void checkReadable(const std::filesystem::path& path)
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
    if (std::filesystem::file_size(path, failure) == 0)
    {
        throw BadFile(text(quoted(path), " is empty"));
    }
}

MeshContents readMesh(const std::filesystem::path& path, std::optional<int> step, int threads, VtuAhead* ahead)
{
    const std::optional<FileFormat> format = checkedFormat(path, isMeshInput, "mesh", meshInputEndings);
    if (format == FileFormat::unstructuredGrid)
    {
        auto contents =
            throwingTooLarge(path, [&] { return ahead != nullptr ? ahead->take() : readVtu(path, threads); });
        if (contents)
        {
            return {std::move(contents->grid), std::move(contents->types), std::move(contents->cells)};
        }
    }
    const vtkSmartPointer<vtkUnstructuredGrid> grid = guarded(path, [&] { return readByVtk(path, *format, step); });
    return {grid, grid->GetCellTypesArray(), std::nullopt};
}

vtkSmartPointer<vtkPointSet> readPoints(const std::filesystem::path& path, int threads)
{
    if (path == standardStream)
    {
        return guarded(path, [&]() -> vtkSmartPointer<vtkPointSet> { return readPointTable(path); });
    }
    const std::optional<FileFormat> format = checkedFormat(path, isPointInput, "point", pointInputEndings);
    switch (*format)
    {
    case FileFormat::polyData: return guarded(path, [&] { return readXml<vtkXMLPolyDataReader>(path); });
    case FileFormat::table: return guarded(path, [&] { return readPointTable(path); });
    case FileFormat::legacyUnstructuredGrid:
        if (isLegacyPolyData(path))
        {
            return guarded(path, [&] { return readLegacy<vtkPolyDataReader>(path); });
        }
        break;
    default: break;
    }
    const MeshContents contents = readMesh(path, std::nullopt, threads, nullptr);
    if (contents.cells)
    {
        setCells(*contents.grid, *contents.types, viewOf(*contents.cells));
    }
    return contents.grid;
}

std::vector<double> readStepTimes(const std::filesystem::path& path)
{
    checkReadable(path);
    return formatOf(path) == FileFormat::exodus ? guarded(path, [&] { return readExodusTimes(path); })
                                                : std::vector<double>();
}

} // namespace veltrane
