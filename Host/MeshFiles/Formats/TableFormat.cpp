// Tables of points (.csv).
#include "FormatList.h"
#include "PointTable.h"

#include <vtkPolyData.h>

#include <array>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 1> endings{".csv"};

FileData read(const std::filesystem::path& path, const FileReading&)
{
    return {readPointTable(path)};
}

LeftOut write(vtkPointSet& dataSet, const std::filesystem::path& path, const FileWriting&)
{
    writePointTable(dataSet, path);
    return {};
}

} // namespace

constinit const FileFormat formats::table{.name = "table of points",
                                          .endings = endings,
                                          .reads = {.materials = true, .nodalFields = true},
                                          .writes = {.materials = true, .nodalFields = true},
                                          .read = read,
                                          .write = write};

} // namespace veltrane
