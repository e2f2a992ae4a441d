// Unstructured grids of several .vtu files (.pvtu).
#include "FormatList.h"
#include "VtkReading.h"

#include <vtkUnstructuredGrid.h>
#include <vtkXMLPUnstructuredGridReader.h>

#include <array>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 1> endings{".pvtu"};

FileData read(const std::filesystem::path& path, const FileReading& reading)
{
    return {readXml<vtkXMLPUnstructuredGridReader>(path, reading)};
}

} // namespace

constinit const FileFormat formats::parallelUnstructuredGrid{
    .name = "VTK unstructured grid in pieces",
    .endings = endings,
    .reads = {.cells = true, .materials = true, .nodalFields = true, .cellFields = true},
    .read = read};

} // namespace veltrane
