// VTK's HDF files (.vtkhdf) of the versions that VTK's reader knows: unstructured grids, and image data as hexahedra.
#include "BlockJoining.h"
#include "FormatList.h"
#include "SilentStandardError.h"
#include "VtkReading.h"

#include <vtkDataSet.h>
#include <vtkHDFReader.h>
#include <vtkUnstructuredGrid.h>

#include <array>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 2> endings{".vtkhdf", ".hdf"};

/// The reader only warns of versions that it does not know, and reads what it understands of them.
void checkVersion(const VtkMessages& messages, const std::filesystem::path& path)
{
    constexpr std::string_view beginning = "File version: ";
    for (const std::string& warning : messages.warnings())
    {
        if (warning.starts_with(beginning))
        {
            const std::string rest = warning.substr(beginning.size());
            throw BadFile(text("cannot read ", quoted(path), ": it is a VTKHDF file of version ",
                               rest.substr(0, rest.find(' ')),
                               ", and only those up to 1.0 can be read; ParaView saves it as .vtu"));
        }
    }
}

FileData read(const std::filesystem::path& path, const FileReading&)
{
    const SilentStandardError silence;
    const VtkMessages messages;
    const vtkNew<vtkHDFReader> reader;
    if (guarded(path, [&] { return reader->CanReadFile(path.c_str()); }) == 0)
    {
        throw BadFile(text("cannot read ", quoted(path), ": it is not a VTKHDF file, or damaged or cut off"));
    }
    reader->SetFileName(path.c_str());
    guarded(path, [&] { reader->Update(); });
    checkVersion(messages, path);
    throwIfFailed(messages, reader->GetErrorCode(), path);
    vtkDataSet* dataSet = reader->GetOutputAsDataSet();
    if (dataSet == nullptr)
    {
        throw BadFile(text(quoted(path), " has neither an unstructured grid nor image data"));
    }
    return {toGrid(*dataSet)};
}

} // namespace

constinit const FileFormat formats::vtkHdf{
    .name = "VTKHDF",
    .endings = endings,
    .reads = {.cells = true, .materials = true, .nodalFields = true, .cellFields = true},
    .read = read};

} // namespace veltrane
