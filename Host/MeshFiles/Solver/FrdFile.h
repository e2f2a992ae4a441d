/// Results of CalculiX (.frd), as text and binary.
#ifndef VELTRANE_HOST_FRD_FILE_H
#define VELTRANE_HOST_FRD_FILE_H

#include "ParsedMesh.h"
#include "SourceText.h"

#include <optional>

namespace veltrane
{

/// The mesh, the times of all steps and the fields of one of them.
///
/// \param step  from 0; the last one if none is given. One that the file does not have has no fields.
///
/// Throws BadFile, naming the line, or the byte in blocks of binary numbers.
ParsedMesh parseFrd(const SourceText& source, std::optional<int> step);

} // namespace veltrane

#endif
