// Structured grids in VTK's XML files (.vts, .vtr, .vti), as hexahedra.
#include "BlockJoining.h"
#include "FormatList.h"
#include "VtkReading.h"

#include <vtkImageData.h>
#include <vtkRectilinearGrid.h>
#include <vtkStructuredGrid.h>
#include <vtkUnstructuredGrid.h>
#include <vtkXMLImageDataReader.h>
#include <vtkXMLRectilinearGridReader.h>
#include <vtkXMLStructuredGridReader.h>

#include <array>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 1> structuredEndings{".vts"};
constexpr std::array<std::string_view, 1> rectilinearEndings{".vtr"};
constexpr std::array<std::string_view, 1> imageEndings{".vti"};
constexpr FormatContents contents{.cells = true, .materials = true, .nodalFields = true, .cellFields = true};

template <typename Reader> FileData read(const std::filesystem::path& path, const FileReading&)
{
    const auto dataSet = readXml<Reader>(path);
    return {toGrid(*dataSet)};
}

} // namespace

constinit const FileFormat formats::structuredGrid{.name = "VTK structured grid",
                                                   .endings = structuredEndings,
                                                   .reads = contents,
                                                   .read = read<vtkXMLStructuredGridReader>};

constinit const FileFormat formats::rectilinearGrid{.name = "VTK rectilinear grid",
                                                    .endings = rectilinearEndings,
                                                    .reads = contents,
                                                    .read = read<vtkXMLRectilinearGridReader>};

constinit const FileFormat formats::imageData{
    .name = "VTK image data", .endings = imageEndings, .reads = contents, .read = read<vtkXMLImageDataReader>};

} // namespace veltrane
