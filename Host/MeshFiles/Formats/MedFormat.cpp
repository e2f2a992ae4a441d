// MED files (.med, .rmed), with the library made for them. Families of groups are materials.
#include "DataSetReader.h"
#include "FormatList.h"
#include "MedCells.h"
#include "MedFields.h"
#include "MedFile.h"
#include "MedMesh.h"
#include "MedWriting.h"
#include "ReadingGuard.h"
#include "SilentStandardError.h"
#include "Text.h"
#include "VtkWriting.h"

#include <vtkUnstructuredGrid.h>

#include <array>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 3> endings{".med", ".rmed", ".mmed"};
constexpr FormatContents writtenContents{
    .cells = true, .materials = true, .nodalFields = true, .cellFields = true, .gaussFields = true};
constexpr FormatContents readContents{
    .cells = true, .materials = true, .nodalFields = true, .cellFields = true, .gaussFields = true, .steps = true};

/// Calls a function that reads from a file; what the library cannot read becomes a sentence.
template <typename Function> auto readingFrom(const std::filesystem::path& path, const Function& function)
{
    const SilentStandardError silence;
    try
    {
        return guarded(path, [&] { return function(MedFile::toRead(path)); });
    }
    catch (const MedFailure& failure)
    {
        throw BadFile(text("cannot read ", quoted(path), ": the MED library cannot read ", failure.subject,
                           ", so the file is damaged"));
    }
}

FileData read(const std::filesystem::path& path, const FileReading& reading)
{
    return readingFrom(
        path,
        [&](const MedFile& file) -> FileData
        {
            const std::vector<MedStep> steps = readMedSteps(file);
            const auto chosen = chosenStep(reading, steps.size(), path);
            LeftOut leftOut;
            const MedMesh mesh = readMedMesh(file, path, leftOut);
            readMedFields(file, mesh, chosen ? std::optional(steps[static_cast<std::size_t>(*chosen)]) : std::nullopt,
                          leftOut);
            return {mesh.grid, std::move(leftOut)};
        });
}

LeftOut write(vtkPointSet& dataSet, const std::filesystem::path& path, const FileWriting&)
{
    const SilentStandardError silence;
    LeftOut leftOut;
    const auto isOfMed = [](int cellType) { return findMedCell(cellType) != nullptr; };
    const vtkSmartPointer<vtkUnstructuredGrid> grid = asGridOf(dataSet, isOfMed, leftOut);
    try
    {
        MedFile file = MedFile::toWrite(path);
        writeMed(file, *grid, leftOut);
        file.close();
        return leftOut;
    }
    catch (const MedFailure& failure)
    {
        throw CannotWrite(text("the MED library cannot write ", failure.subject));
    }
}

std::vector<double> readTimes(const std::filesystem::path& path)
{
    return readingFrom(path,
                       [](const MedFile& file)
                       {
                           std::vector<double> times;
                           for (const MedStep& step : readMedSteps(file))
                           {
                               times.push_back(step.time);
                           }
                           return times;
                       });
}

} // namespace

constinit const FileFormat formats::med{.name = "MED",
                                        .endings = endings,
                                        .reads = readContents,
                                        .writes = writtenContents,
                                        .read = read,
                                        .times = readTimes,
                                        .write = write};

} // namespace veltrane
