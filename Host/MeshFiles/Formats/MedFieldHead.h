/// What a MED file says about a field, without its values.
#ifndef VELTRANE_HOST_MED_FIELD_HEAD_H
#define VELTRANE_HOST_MED_FIELD_HEAD_H

#include "MedFields.h"
#include "MedFile.h"

#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

struct MedFieldStep
{
    MedStep step;
    med_int number;
    med_int iteration;
    bool isForAllTimes;
};

struct MedFieldHead
{
    std::string name{};
    std::string meshName{};
    med_field_type type{};
    std::vector<std::string> components{};
    std::vector<MedFieldStep> steps{};

    /// The one of the file's step, or the one that holds at all times.
    std::optional<MedFieldStep> at(const std::optional<MedStep>& step) const;
};

/// All fields of a file. Throws MedFailure.
std::vector<MedFieldHead> readMedFieldHeads(const MedFile& file);

/// Values of a field for some or all of the nodes or of the cells of a type.
struct MedValues
{
    std::vector<std::size_t> items{}; ///< from 0
    std::string localization{};       ///< of Gauss points; empty: one value per item
    std::size_t pointCount = 1;       ///< values per item
    std::vector<unsigned char> bytes{};
};

/// All values of a field at a step on the nodes (MED_NODE, MED_NONE) or cells of a type (MED_CELL). Throws MedFailure.
///
/// \param itemCount  how many nodes or cells of the type there are
std::vector<MedValues> readMedValues(const MedFile& file, const MedFieldHead& field, const MedFieldStep& step,
                                     med_entity_type entity, med_geometry_type type, std::size_t itemCount);

/// Whether there are values of the field. Throws MedFailure.
bool hasMedValues(const MedFile& file, const MedFieldHead& field, const MedFieldStep& step, med_entity_type entity,
                  med_geometry_type type);

} // namespace veltrane

#endif
