/// Files read by VTK's readers.
#ifndef VELTRANE_HOST_VTK_READING_H
#define VELTRANE_HOST_VTK_READING_H

#include "AppendedData.h"
#include "DataSetReader.h"
#include "ReadingGuard.h"
#include "Text.h"
#include "VtkMessages.h"
#include "XmlStructure.h"

#include <vtkAlgorithm.h>
#include <vtkInformation.h>
#include <vtkNew.h>
#include <vtkStreamingDemandDrivenPipeline.h>
#include <vtkXMLDataElement.h>
#include <vtkXMLDataParser.h>

#include <filesystem>
#include <vector>

namespace veltrane
{

/// Throws BadFile if VTK has told of a failure.
inline void throwIfFailed(const VtkMessages& messages, unsigned long errorCode, const std::filesystem::path& path)
{
    if (const auto reason = messages.failureReason(errorCode))
    {
        throw BadFile(text("cannot read ", quoted(path), ": ", *reason));
    }
}

/// The times of the steps that a reader has found.
inline std::vector<double> timesOf(vtkAlgorithm& reader)
{
    vtkInformation& information = *reader.GetOutputInformation(0);
    vtkInformationDoubleVectorKey* key = vtkStreamingDemandDrivenPipeline::TIME_STEPS();
    const double* times = information.Has(key) == 0 ? nullptr : information.Get(key);
    return times == nullptr ? std::vector<double>() : std::vector(times, times + information.Length(key));
}

/// Lets a reader, which has found its steps, read the one that is wanted. Throws BadFile.
inline void readStep(vtkAlgorithm& reader, const VtkMessages& messages, const FileReading& reading,
                     const std::filesystem::path& path)
{
    throwIfFailed(messages, reader.GetErrorCode(), path);
    const std::vector<double> times = timesOf(reader);
    if (const auto step = chosenStep(reading, times.size(), path))
    {
        guarded(path, [&] { reader.UpdateTimeStep(times[static_cast<std::size_t>(*step)]); });
    }
    else
    {
        guarded(path, [&] { reader.Update(); });
    }
    throwIfFailed(messages, reader.GetErrorCode(), path);
}

/// By one of the readers of XML files, after a check of what they do not check themselves.
template <typename Reader> auto readXml(const std::filesystem::path& path, const FileReading& reading = {})
{
    const VtkMessages messages;
    const GuardedObject<Reader> reader(vtkSmartPointer<Reader>::New(), path);
    reader->SetFileName(path.c_str());
    guarded(path, [&] { reader->UpdateInformation(); });
    vtkXMLDataParser* parser = reader->GetXMLParser();
    if (parser != nullptr && parser->GetRootElement() != nullptr)
    {
        checkStructure(*parser->GetRootElement(), path);
        checkAppendedData(*parser, path);
    }
    throwIfFailed(messages, reader->GetErrorCode(), path);
    guarded(path, [&] { reader->UpdatePiece(reading.piece, reading.pieceCount, 0); });
    throwIfFailed(messages, reader->GetErrorCode(), path);
    return vtkSmartPointer(reader->GetOutput());
}

} // namespace veltrane

#endif
