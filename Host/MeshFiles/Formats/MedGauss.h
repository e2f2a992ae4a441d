/// The Gauss points of MED files, which are places in reference elements of each file's own.
#ifndef VELTRANE_HOST_MED_GAUSS_H
#define VELTRANE_HOST_MED_GAUSS_H

#include "GaussArrays.h"
#include "MedFile.h"

#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

struct MedCell;

/// A localization of a file as a scheme. Nothing if the cells are no elements, or the file's reference element cannot
/// be mapped to the library's by an affine map. Throws MedFailure.
std::optional<GaussScheme> readMedScheme(const MedFile& file, const std::string& localization, const MedCell& cell);

/// Writes a scheme in the library's reference element. Throws MedFailure.
///
/// \pre the cells are elements
void writeMedScheme(const MedFile& file, const std::string& localization, const MedCell& cell,
                    const GaussScheme& scheme);

} // namespace veltrane

#endif
