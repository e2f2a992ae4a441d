#include "MedFieldHead.h"

#include "Text.h"

#include <algorithm>
#include <array>
#include <map>
#include <numeric>

namespace veltrane
{
namespace
{

std::size_t byteCount(med_field_type type)
{
    switch (type)
    {
    case MED_FLOAT64: return sizeof(double);
    case MED_FLOAT32: return sizeof(float);
    case MED_INT32: return 4;
    case MED_INT64: return 8;
    default: return sizeof(med_int);
    }
}

std::size_t profileCount(const MedFile& file, const MedFieldHead& field, const MedFieldStep& step,
                         med_entity_type entity, med_geometry_type type)
{
    std::array<char, MED_NAME_SIZE + 1> profile{};
    std::array<char, MED_NAME_SIZE + 1> localization{};
    return static_cast<std::size_t>(checked(MEDfieldnProfile(file.id(), field.name.c_str(), step.number, step.iteration,
                                                             entity, type, profile.data(), localization.data()),
                                            text("the field '", field.name, "'")));
}

/// The items that a profile is about; all of them if it has no name.
std::vector<std::size_t> readItems(const MedFile& file, const std::string& profile, std::size_t size,
                                   std::size_t itemCount)
{
    std::vector<std::size_t> items;
    if (profile.empty())
    {
        items.resize(itemCount);
        std::iota(items.begin(), items.end(), std::size_t{0});
        return items;
    }
    std::vector<med_int> numbers(size);
    const std::string subject = text("the profile '", profile, "'");
    checked(MEDprofileRd(file.id(), profile.c_str(), numbers.data()), subject);
    for (const med_int number : numbers)
    {
        if (number < 1 || static_cast<std::size_t>(number) > itemCount)
        {
            throw MedFailure{subject};
        }
        items.push_back(static_cast<std::size_t>(number) - 1);
    }
    return items;
}

MedFieldHead readHead(const MedFile& file, int number)
{
    const auto componentCount =
        static_cast<std::size_t>(checked(MEDfieldnComponent(file.id(), number), "the components of a field"));
    std::array<char, MED_NAME_SIZE + 1> name{};
    std::array<char, MED_NAME_SIZE + 1> meshName{};
    std::array<char, MED_SNAME_SIZE + 1> timeUnit{};
    std::vector<char> components(componentCount * MED_SNAME_SIZE + 1);
    std::vector<char> units(componentCount * MED_SNAME_SIZE + 1);
    med_bool isLocal{};
    med_int stepCount = 0;
    MedFieldHead head;
    checked(MEDfieldInfo(file.id(), number, name.data(), meshName.data(), &isLocal, &head.type, components.data(),
                         units.data(), timeUnit.data(), &stepCount),
            "a field");
    head.name = name.data();
    head.meshName = meshName.data();
    for (std::size_t component = 0; component < componentCount; ++component)
    {
        head.components.push_back(medName(components.data(), component, MED_SNAME_SIZE));
    }
    std::map<double, int> counts;
    for (int i = 1; i <= static_cast<int>(stepCount); ++i)
    {
        MedFieldStep step{};
        checked(
            MEDfieldComputingStepInfo(file.id(), head.name.c_str(), i, &step.number, &step.iteration, &step.step.time),
            text("the steps of the field '", head.name, "'"));
        step.isForAllTimes = step.number == MED_NO_DT;
        step.step.repetition = counts[step.step.time]++;
        head.steps.push_back(step);
    }
    return head;
}

} // namespace

std::optional<MedFieldStep> MedFieldHead::at(const std::optional<MedStep>& step) const
{
    for (const MedFieldStep& own : steps)
    {
        if (own.isForAllTimes || own.step == step)
        {
            return own;
        }
    }
    return std::nullopt;
}

std::vector<MedFieldHead> readMedFieldHeads(const MedFile& file)
{
    std::vector<MedFieldHead> heads;
    const auto count = static_cast<int>(checked(MEDnField(file.id()), "the fields"));
    for (int number = 1; number <= count; ++number)
    {
        heads.push_back(readHead(file, number));
    }
    return heads;
}

std::vector<MedValues> readMedValues(const MedFile& file, const MedFieldHead& field, const MedFieldStep& step,
                                     med_entity_type entity, med_geometry_type type, std::size_t itemCount)
{
    const std::string subject = text("the values of the field '", field.name, "'");
    std::vector<MedValues> all;
    const std::size_t count = profileCount(file, field, step, entity, type);
    for (std::size_t i = 1; i <= count; ++i)
    {
        std::array<char, MED_NAME_SIZE + 1> profile{};
        std::array<char, MED_NAME_SIZE + 1> localization{};
        med_int profileSize = 0;
        med_int pointCount = 1;
        const auto valueCount = static_cast<std::size_t>(
            checked(MEDfieldnValueWithProfile(file.id(), field.name.c_str(), step.number, step.iteration, entity, type,
                                              static_cast<int>(i), MED_COMPACT_STMODE, profile.data(), &profileSize,
                                              localization.data(), &pointCount),
                    subject));
        if (valueCount == 0)
        {
            continue;
        }
        MedValues values{.items = readItems(file, profile.data(), static_cast<std::size_t>(profileSize), itemCount),
                         .localization = localization.data(),
                         .pointCount = static_cast<std::size_t>(std::max<med_int>(pointCount, 1))};
        if (valueCount != values.items.size())
        {
            throw MedFailure{subject};
        }
        values.bytes.resize(valueCount * values.pointCount * field.components.size() * byteCount(field.type));
        checked(MEDfieldValueWithProfileRd(file.id(), field.name.c_str(), step.number, step.iteration, entity, type,
                                           MED_COMPACT_STMODE, profile.data(), MED_FULL_INTERLACE, MED_ALL_CONSTITUENT,
                                           values.bytes.data()),
                subject);
        all.push_back(std::move(values));
    }
    return all;
}

bool hasMedValues(const MedFile& file, const MedFieldHead& field, const MedFieldStep& step, med_entity_type entity,
                  med_geometry_type type)
{
    return profileCount(file, field, step, entity, type) > 0;
}

} // namespace veltrane
