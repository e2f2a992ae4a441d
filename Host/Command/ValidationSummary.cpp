#include "ValidationSummary.h"

#include "Report.h"
#include "Text.h"
#include "Validation.h"

#include <cmath>
#include <ostream>

namespace veltrane
{
namespace
{

std::string figure(double value)
{
    constexpr int digits = 4;
    return std::isnan(value) ? "-" : inDigits(digits, value);
}

std::string percent(double part)
{
    return text(figure(100 * part), " %");
}

void printCoverage(std::ostream& stream, const Validation& validation)
{
    TextTable table(8);
    table.addRow({"mapped on both sides", "nodes", "cells", "volume", "near nodes", "mean distance", "largest"});
    const auto addRow = [&](const char* side, const Coverage& coverage)
    {
        table.addRow({side, percent(coverage.nodeShare()), percent(coverage.elementShare()),
                      percent(coverage.volumeShare()), text(coverage.nearNodes), figure(coverage.meanNearDistance),
                      figure(coverage.largestNearDistance)});
    };
    addRow("of the source", validation.source);
    addRow("of the target", validation.target);
    table.print(stream);
}

/// A node with its coordinates, or the number of a Gauss point.
void addPlace(std::vector<std::string>& row, const Mesh& mesh, Location location, int index)
{
    row.push_back(index < 0 ? "-" : text(location == Location::nodes ? "" : "Gauss point ", index + 1));
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        row.push_back(index < 0 || location == Location::gaussPoints ? "-"
                                                                     : figure(double{mesh.nodePosition(index)[axis]}));
    }
}

void printRoundTrips(std::ostream& stream, const TransferRecord& record)
{
    TextTable table(8);
    table.addRow({"mapped back", "relative L2", "largest", "at node", "x", "y", "z", "not returned"});
    for (const FieldRoundTrip& field : record.validation->fields)
    {
        const FieldComparison& comparison = field.comparison;
        std::vector<std::string> row{field.returned.name(), figure(comparison.relativeDifference),
                                     figure(comparison.largestDifference)};
        addPlace(row, record.source.mesh(), field.returned.location(), comparison.largestDifferenceNode);
        row.push_back(text(comparison.unusableInField));
        table.addRow(std::move(row));
    }
    table.print(stream);
}

void addIntegrals(TextTable& table, const FieldIntegral& source, const FieldIntegral& target, const Field& field)
{
    for (std::size_t i = 0; i < source.components.size(); ++i)
    {
        const double difference = target.components[i] - source.components[i];
        const double part = source.magnitude > 0 ? difference / source.magnitude : difference == 0 ? 0 : HUGE_VAL;
        table.addRow({componentName(field, static_cast<int>(i)), figure(source.components[i]),
                      figure(target.components[i]), percent(part)});
    }
}

void addVolumes(TextTable& table, const std::string& name, const FieldIntegral& source, const FieldIntegral& target)
{
    table.addRow({text("volume", name), figure(source.volume), figure(target.volume),
                  percent(source.volume > 0 ? target.volume / source.volume - 1 : 0)});
}

/// The materials that both meshes have.
template <typename Add> void forCommonMaterials(const TransferRecord& record, const Add& add)
{
    const std::vector<Material>& source = record.source.mesh().materials();
    const std::vector<Material>& target = record.targetMesh()->mesh().materials();
    if (source.size() < 2 || target.size() < 2)
    {
        return;
    }
    for (std::size_t i = 0; i < source.size(); ++i)
    {
        for (std::size_t j = 0; j < target.size(); ++j)
        {
            if (source[i].name == target[j].name)
            {
                add(i, j, text(", material ", source[i].name));
            }
        }
    }
}

void printIntegrals(std::ostream& stream, const TransferRecord& record)
{
    TextTable table(12);
    table.addRow({"integrals", "source", "target", "difference"});
    const auto& fields = record.validation->fields;
    if (!fields.empty())
    {
        const FieldRoundTrip& first = fields.front();
        addVolumes(table, "", first.atSource.all, first.atTarget.all);
        forCommonMaterials(record, [&](std::size_t i, std::size_t j, const std::string& name)
                           { addVolumes(table, name, first.atSource.materials[i], first.atTarget.materials[j]); });
    }
    for (const FieldRoundTrip& field : fields)
    {
        addIntegrals(table, field.atSource.all, field.atTarget.all, field.returned);
    }
    table.print(stream);
}

} // namespace

void printValidation(std::ostream& stream, const TransferRecord& record)
{
    stream << '\n';
    printCoverage(stream, *record.validation);
    stream << '\n';
    printRoundTrips(stream, record);
    stream << '\n';
    printIntegrals(stream, record);
}

} // namespace veltrane
