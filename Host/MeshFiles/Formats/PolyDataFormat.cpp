// Points, lines and polygons in VTK's XML files (.vtp), of which the points count.
#include "FormatList.h"
#include "VtkReading.h"
#include "VtkWriting.h"

#include <vtkPolyData.h>
#include <vtkXMLPolyDataReader.h>
#include <vtkXMLPolyDataWriter.h>

#include <array>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 1> endings{".vtp"};

FileData read(const std::filesystem::path& path, const FileReading&)
{
    return {readXml<vtkXMLPolyDataReader>(path)};
}

LeftOut write(vtkPointSet& dataSet, const std::filesystem::path& path, const FileWriting& writing)
{
    vtkNew<vtkXMLPolyDataWriter> writer;
    configure(*writer, writing.compression);
    writer->SetFileName(path.c_str());
    writer->SetInputData(asPolyData(dataSet));
    runWriter(*writer);
    return {};
}

} // namespace

constinit const FileFormat formats::polyData{.name = "VTK points, lines and polygons",
                                             .endings = endings,
                                             .reads = {.materials = true, .nodalFields = true},
                                             .writes = {.materials = true, .nodalFields = true},
                                             .isCompressed = true,
                                             .read = read,
                                             .write = write};

} // namespace veltrane
