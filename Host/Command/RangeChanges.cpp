#include "RangeChanges.h"

#include "FieldStatistics.h"

namespace veltrane
{

std::vector<RangeChange> rangeChanges(const TransferRecord& record)
{
    const TransferResult& result = record.result;
    // Default values are none of the source's and say nothing of it.
    const auto isOfSource = [&](std::size_t location)
    {
        const std::vector<Finding>& findings = result.findings.empty() ? result.gaussPointFindings : result.findings;
        return findings[location] == Finding::inside || findings[location] == Finding::near;
    };
    std::vector<RangeChange> changes;
    for (std::size_t i = 0; i < record.sourceFields.size(); ++i)
    {
        const Field& field = record.sourceFields[i];
        for (int component = 0; component < field.componentCount(); ++component)
        {
            const ComponentStatistics source = statisticsOf(field, component);
            const ComponentStatistics target = statisticsOf(result.fields[i], component, isOfSource);
            const double range = source.max - source.min;
            if (range > 0)
            {
                const std::string name = componentName(field, component);
                changes.push_back({name, "minimum", (source.min - target.min) / range});
                changes.push_back({name, "maximum", (target.max - source.max) / range});
            }
        }
    }
    return changes;
}

} // namespace veltrane
