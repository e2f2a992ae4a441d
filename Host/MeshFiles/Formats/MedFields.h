/// The fields of MED files.
#ifndef VELTRANE_HOST_MED_FIELDS_H
#define VELTRANE_HOST_MED_FIELDS_H

#include "FileFormat.h"
#include "MedFile.h"
#include "MedMesh.h"

#include <compare>
#include <optional>
#include <vector>

namespace veltrane
{

/// A step of a result. Steps of the same time are told apart by how many are before them in each field.
struct MedStep
{
    double time;
    int repetition;

    auto operator<=>(const MedStep&) const = default;
};

/// The steps of all fields, in rising order; fields that hold at all times have none. Throws MedFailure.
std::vector<MedStep> readMedSteps(const MedFile& file);

/// Adds the fields of a step, and those that hold at all times, to the grid of the mesh. What cannot be a part of it is
/// added to `leftOut`. Throws MedFailure.
void readMedFields(const MedFile& file, const MedMesh& mesh, const std::optional<MedStep>& step, LeftOut& leftOut);

} // namespace veltrane

#endif
