#include "TransferFindings.h"

#include "MeshPair.h"
#include "NearPoints.h"
#include "Report.h"
#include "Text.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <optional>
#include <utility>
#include <variant>

namespace veltrane
{
namespace
{

/// With this value at all components of the far locations.
Field withFarValue(const Field& field, const std::vector<Finding>& findings, float value)
{
    FieldValues values = field.values();
    const auto componentCount = static_cast<std::size_t>(field.componentCount());
    std::visit(
        [&](auto& numbers)
        {
            for (std::size_t i = 0; i < numbers.size(); ++i)
            {
                if (findings[i / componentCount] == Finding::far)
                {
                    numbers[i] = value;
                }
            }
        },
        values);
    return Field(field.name(), field.location(), field.componentCount(), std::move(values));
}

} // namespace

void warnOfFindings(const MeshFile& source, const TransferResult& result, const Box& sourceBox, const Box& targetBox,
                    const std::string& points)
{
    if (const std::string hint = unitHint(sourceBox, targetBox); !hint.empty())
    {
        warn(hint.substr(2), "units");
    }
    warnOfNearPoints(source.mesh(), result.findings, result.distances, points);
    warnOfNearPoints(source.mesh(), result.gaussPointFindings, result.gaussPointDistances, "Gauss points");
    if (const auto count = static_cast<long long>(result.singularElements.size()); count > 0)
    {
        warn(text(oneOrMore(count, "cell of the source was", "cells of the source were"), " left out for some ", points,
                  ", on the way to which the Jacobian becomes singular: ", cellList(source, result.singularElements)),
             "singular cells");
    }
    const OverlapCounts& overlap = result.statistics.overlap;
    if (overlap.foundCount > 0)
    {
        warn(text("the source overlaps itself: of ", overlap.triedCount, " ", points, " tried ",
                  oneOrMore(overlap.foundCount, "lies", "lie"),
                  " in two cells of the same material, the first in cells ", source.cellOf(overlap.element), " and ",
                  source.cellOf(overlap.otherElement), "; each takes the values of one of them"),
             "overlap");
    }
}

int maskValue(Finding finding, OutsideMode mode)
{
    switch (finding)
    {
    case Finding::inside: return 1;
    case Finding::near: return 3;
    case Finding::reached: return 2;
    case Finding::far: return mode == OutsideMode::propagate ? 0 : -1;
    case Finding::notMapped: break;
    }
    return 0;
}

IntegerArray validPointMask(const std::vector<Finding>& findings, OutsideMode mode)
{
    IntegerArray mask{"vtkValidPointMask", ArrayPlace::points, 1, {}};
    std::ranges::transform(findings, std::back_inserter(mask.values),
                           [&](Finding finding) { return maskValue(finding, mode); });
    return mask;
}

void completeForOutput(TransferResult& result, const TransferOptions& options, bool withDistances)
{
    for (std::size_t i = 0; i < result.fields.size(); ++i)
    {
        const auto ownDefault =
            options.fieldOptions.empty() ? std::optional<float>() : options.fieldOptions[i].defaultValue;
        const float value = options.mode == OutsideMode::defaultValue ? ownDefault.value_or(options.defaultValue)
                                                                      : std::numeric_limits<float>::quiet_NaN();
        if (result.fields[i].location() == Location::gaussPoints)
        {
            result.fields[i] = withFarValue(result.fields[i], result.gaussPointFindings, value);
        }
    }
    if (!result.gaussPointFindings.empty())
    {
        std::vector<float> mask;
        std::ranges::transform(result.gaussPointFindings, std::back_inserter(mask),
                               [&](Finding finding) { return static_cast<float>(maskValue(finding, options.mode)); });
        result.fields.emplace_back(gaussPointMaskName, Location::gaussPoints, 1, std::move(mask));
    }
    if (withDistances && !result.findings.empty())
    {
        result.fields.push_back(distanceField(result.findings, result.distances, Location::nodes));
    }
    if (withDistances && !result.gaussPointFindings.empty())
    {
        result.fields.push_back(
            distanceField(result.gaussPointFindings, result.gaussPointDistances, Location::gaussPoints));
    }
}

} // namespace veltrane
