#include "HtmlReport.h"

#include "CommandLine.h"
#include "FieldStatistics.h"
#include "Html.h"
#include "HtmlPictures.h"
#include "LoadArguments.h"
#include "Markup.h"
#include "Report.h"
#include "Sha256.h"
#include "Text.h"
#include "TransferSummary.h"
#include "Validation.h"
#include "Verdict.h"
#include "VersionText.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>

namespace veltrane
{
namespace
{

std::string percent(double part)
{
    return text(inDigits(3, 100 * part), " %");
}

HtmlCell percentCell(double part)
{
    HtmlCell cell(std::isnan(part) ? "–" : percent(part));
    cell.isNumber = true;
    return cell;
}

std::filesystem::path targetPath(const TransferRecord& record)
{
    return record.targetPoints() != nullptr ? record.targetPoints()->path() : record.targetMesh()->path();
}

std::string targetDescription(const TransferRecord& record)
{
    return record.targetPoints() != nullptr ? oneOrMore(record.targetPoints()->points().pointCount(), "point", "points")
                                            : describe(*record.targetMesh());
}

std::string introduction(const TransferRecord& record)
{
    std::vector<std::string> names;
    std::ranges::for_each(record.sourceFields, [&](const Field& field) { names.push_back(field.name()); });
    std::ranges::for_each(record.loads, [&](const DistributedLoads& loads) { names.push_back(loads.atTarget.name()); });
    return htmlParagraph(text(joined(names), " from ", record.source.path().string(), " (", describe(record.source),
                              ") to ", targetPath(record).string(), " (", targetDescription(record), ")."));
}

std::string rulesTable(const Verdict& verdict)
{
    std::vector<HtmlRow> rows;
    for (const RuleResult& result : verdict.rules)
    {
        HtmlCell state(!result.isApplied ? "not judged" : result.isKept() ? "kept" : "not kept");
        if (!result.isKept())
        {
            state.markup = "<strong>" + state.markup + "</strong>";
        }
        rows.push_back(
            {std::string(ruleKeys[static_cast<std::size_t>(result.rule.rule)].key),
             result.figure ? HtmlCell::number(*result.figure) : HtmlCell::number(std::nan("")),
             text(relationText(result.rule.relation), " ", result.rule.limit, result.isRequired ? ", required" : ""),
             state, result.finding});
    }
    std::vector<HtmlRow> meanings;
    for (const RuleKey& key : ruleKeys)
    {
        meanings.push_back({std::string(key.key), text(key.limit), std::string(key.meaning)});
    }
    return htmlTable("Rules of the verdict", {"rule", "figure", "limit", "", "finding"}, rows) +
           htmlDetails("What the rules are",
                       htmlTable("Figures and their usual limits", {"rule", "limit", "figure"}, meanings));
}

std::string countsTable(const TransferRecord& record)
{
    std::vector<HtmlRow> rows;
    const auto add = [&](const char* name, long long count, const std::string& remark = "") {
        rows.push_back({name, HtmlCell::count(count), remark});
    };
    const auto addNear = [&](long long count, const NearDistances& near)
    {
        add("near", count,
            count == 0 ? "" : text(inDigits(3, near.mean), " away on average, at most ", inDigits(3, near.largest)));
    };
    if (record.targetPoints() != nullptr)
    {
        const PointCounts points = countPoints(record);
        add("points", points.all);
        add("inside the source", points.inside);
        addNear(points.near, points.nearDistances);
        add("outside", points.outside, "hold the default value");
        add("not mapped", points.notMapped);
    }
    else if (const std::optional<NodeCounts> nodes = countNodes(record))
    {
        add("nodes", nodes->all);
        add("inside the source", nodes->inside);
        addNear(nodes->near, nodes->nearDistances);
        add("far", nodes->far,
            nodes->farOfMissingMaterial > 0 ? text(nodes->farOfMissingMaterial, " of a material that the source lacks")
                                            : "");
        add("not mapped", nodes->notMapped + nodes->inNoCell);
    }
    else if (record.result.statistics.gaussPoints)
    {
        const OutsideCounts& outside = *record.result.statistics.gaussPoints;
        add("Gauss points", std::ssize(record.result.gaussPointFindings));
        addNear(outside.near, nearDistances(record.result.gaussPointFindings, record.result.gaussPointDistances));
        add("far", outside.far);
    }
    const TransferResult& result = record.result;
    const Histogram distances = result.findings.empty()
                                    ? histogramOfDistances(result.gaussPointFindings, result.gaussPointDistances)
                                    : histogramOfDistances(result.findings, result.distances);
    return htmlTable("Where the target's locations lie", {"target", "count", ""}, rows) +
           htmlHistogram("How far near ones are from the places whose values they take", "distance", distances);
}

std::string fieldsTable(const TransferRecord& record)
{
    std::vector<HtmlRow> rows;
    for (std::size_t i = 0; i < record.sourceFields.size(); ++i)
    {
        const Field& source = record.sourceFields[i];
        const Field& target = record.result.fields[i];
        for (int component = 0; component < source.componentCount(); ++component)
        {
            const ComponentStatistics before = statisticsOf(source, component);
            const ComponentStatistics after = statisticsOf(target, component, hasSourceValue(record, target));
            rows.push_back({componentName(source, component), HtmlCell::number(before.min), HtmlCell::number(after.min),
                            HtmlCell::number(before.mean), HtmlCell::number(after.mean), HtmlCell::number(before.max),
                            HtmlCell::number(after.max)});
        }
    }
    return htmlTable("Values of source and target",
                     {"component", "minimum, source", "target", "mean, source", "target", "maximum, source", "target"},
                     rows);
}

/// Nothing of loads alone.
std::string valuesSections(const TransferRecord& record)
{
    return record.sourceFields.empty()
               ? ""
               : htmlSection("Places", countsTable(record)) + htmlSection("Values", fieldsTable(record));
}

std::string coverageTable(const Validation& validation)
{
    std::vector<HtmlRow> rows;
    const auto add = [&](const char* side, const Coverage& coverage)
    {
        rows.push_back({side, percentCell(coverage.nodeShare()), percentCell(coverage.elementShare()),
                        percentCell(coverage.volumeShare()), HtmlCell::number(coverage.volume),
                        HtmlCell::count(static_cast<long long>(coverage.nearNodes)),
                        HtmlCell::number(coverage.largestNearDistance)});
    };
    add("of the source", validation.source);
    add("of the target", validation.target);
    return htmlTable("Mapped on both sides",
                     {"", "nodes", "cells", "volume", "volume in all", "near nodes", "largest distance"}, rows);
}

std::string roundTripTable(const TransferRecord& record)
{
    std::vector<HtmlRow> rows;
    for (const FieldRoundTrip& field : record.validation->fields)
    {
        const FieldComparison& comparison = field.comparison;
        rows.push_back({field.returned.name(), percentCell(comparison.relativeDifference),
                        HtmlCell::number(comparison.rootMeanSquareDifference),
                        HtmlCell::number(comparison.largestDifference),
                        HtmlCell::number(comparison.largestReferenceMagnitude),
                        HtmlCell::count(static_cast<long long>(comparison.unusableInField))});
    }
    return htmlTable("Fields mapped back onto the source",
                     {"field", "relative L2 difference", "RMS difference", "largest difference",
                      "largest value of the source", "not returned"},
                     rows);
}

std::string worstTable(const TransferRecord& record, std::size_t index)
{
    const FieldRoundTrip& field = record.validation->fields[index];
    const bool isAtNodes = field.returned.location() == Location::nodes;
    const Mesh& mesh = record.source.mesh();
    std::vector<HtmlRow> rows;
    for (const WorstPlace& place : worstPlaces(field, record.sourceFields[index], mesh))
    {
        HtmlRow row{text(place.location + 1)};
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            row.push_back(isAtNodes ? HtmlCell::number(double{mesh.nodePosition(place.location)[axis]})
                                    : HtmlCell::number(std::nan("")));
        }
        row.push_back(place.element < 0 ? HtmlCell::number(std::nan(""))
                                        : HtmlCell::count(record.source.cellOf(place.element) + 1));
        row.push_back(HtmlCell::number(place.source));
        row.push_back(HtmlCell::number(place.returned));
        row.push_back(HtmlCell::number(place.difference));
        rows.push_back(std::move(row));
    }
    return htmlTable(text("Where ", field.returned.name(), " differs most"),
                     {isAtNodes ? "node" : "Gauss point", "x", "y", "z", "cell", "source", "mapped back", "difference"},
                     rows);
}

/// One part for each field, of which one is shown at a time.
std::string perField(const TransferRecord& record)
{
    std::string list;
    std::string parts;
    for (std::size_t i = 0; i < record.validation->fields.size(); ++i)
    {
        const FieldRoundTrip& field = record.validation->fields[i];
        const std::string name = escaped(field.returned.name());
        list += text("<option value=\"", i, "\">", name, "</option>");
        parts += text("<div data-of=\"validation\" data-field=\"", i, "\">\n",
                      htmlHistogram(text("Differences of ", field.returned.name()),
                                    "difference as part of the largest magnitude",
                                    histogramOfDifferences(field, record.sourceFields[i])),
                      worstTable(record, i), "</div>\n");
    }
    return text("<fieldset class=\"choice\" data-choice=\"validation\" hidden><label>Field <select name=\"field\">",
                list, "</select></label></fieldset>\n", parts);
}

void addIntegralRows(std::vector<HtmlRow>& rows, const std::string& part, const Field& field,
                     const FieldIntegral& source, const FieldIntegral& target)
{
    for (std::size_t i = 0; i < source.components.size(); ++i)
    {
        const double difference = target.components[i] - source.components[i];
        rows.push_back({text(componentName(field, static_cast<int>(i)), part), HtmlCell::number(source.components[i]),
                        HtmlCell::number(target.components[i]), HtmlCell::number(difference),
                        percentCell(difference == 0 ? 0 : difference / source.magnitude)});
    }
}

std::string integralsTable(const TransferRecord& record)
{
    const HtmlRow head{"integral", "source", "target", "difference", "of the integral of magnitudes"};
    const std::vector<Material>& source = record.source.mesh().materials();
    const std::vector<Material>& target = record.targetMesh()->mesh().materials();
    std::vector<HtmlRow> all;
    std::vector<HtmlRow> parts;
    for (const FieldRoundTrip& field : record.validation->fields)
    {
        addIntegralRows(all, "", field.returned, field.atSource.all, field.atTarget.all);
        for (std::size_t i = 0; i < source.size(); ++i)
        {
            const auto same = std::ranges::find(target, source[i].name, &Material::name);
            constexpr std::size_t mostRows = 2000; // the report for machines has all of them
            if (source.size() > 1 && parts.size() < mostRows && same != target.end())
            {
                addIntegralRows(parts, text(", material ", source[i].name), field.returned, field.atSource.materials[i],
                                field.atTarget.materials[static_cast<std::size_t>(same - target.begin())]);
            }
        }
    }
    return htmlTable("Integrals over all materials", head, all) +
           (parts.empty() ? "" : htmlDetails("Per material", htmlTable("Integrals per material", head, parts)));
}

std::string validationSections(const TransferRecord& record)
{
    if (record.validation == nullptr)
    {
        return "";
    }
    return htmlSection("Mapped back", coverageTable(*record.validation) + roundTripTable(record) + perField(record)) +
           htmlSection("Integrals", integralsTable(record));
}

std::string loadsSection(const TransferRecord& record)
{
    constexpr int digits = 7;
    std::vector<HtmlRow> rows;
    for (const DistributedLoads& loads : record.loads)
    {
        for (const LoadRow& row : rowsOf(loads))
        {
            rows.push_back({row.name, HtmlCell::number(row.source, digits), HtmlCell::number(row.target, digits),
                            HtmlCell::number(row.outside, digits)});
        }
    }
    return rows.empty() ? ""
                        : htmlSection("Loads", htmlTable("Sums of loads, and moments about the middle of the source",
                                                         {"sum", "source", "target", "left out"}, rows));
}

std::string searchSection(const TransferRecord& record)
{
    const TransferStatistics& statistics = record.result.statistics;
    std::vector<HtmlRow> figures{
        {"buckets", HtmlCell::count(statistics.bucketCount)},
        {"in use", HtmlCell::count(statistics.usedBucketCount)},
        {"elements per bucket in use", HtmlCell::number(double{statistics.meanElementsPerUsedBucket})},
        {"located points", HtmlCell::count(statistics.interpolatedPointCount)},
        {"iterations per point", HtmlCell::number(double{statistics.meanIterations})},
        {"not converged", HtmlCell::count(statistics.unconvergedPointCount)},
        {"singular elements left out", HtmlCell::count(statistics.singularElementCount)}};
    std::vector<HtmlRow> times;
    for (const StageTime& stage : record.times.times())
    {
        times.push_back({stage.name, HtmlCell::number(stage.seconds, 3)});
    }
    times.push_back({"in all", HtmlCell::number(record.times.total(), 3)});
    return htmlSection("Search and times", htmlTable("Search", {"figure", "value"}, figures) +
                                               htmlTable("Times", {"stage", "seconds"}, times));
}

std::string repeatSection(const TransferRecord& record)
{
    std::vector<HtmlRow> inputs;
    for (const std::filesystem::path& file : {record.source.path(), targetPath(record)})
    {
        HtmlCell checksum(sha256OfFile(file));
        checksum.markup = "<code>" + checksum.markup + "</code>";
        inputs.push_back({file.string(), checksum});
    }
    return htmlSection("To repeat it", text("<pre>", escaped(commandLine()), "</pre>\n",
                                            htmlTable("Inputs", {"file", "SHA-256"}, inputs), "<pre>",
                                            escaped(versionText()), "</pre>\n"));
}

} // namespace

void writeHtmlReport(const TransferRecord& record, const PictureArguments& pictures, const std::filesystem::path& path)
{
    const Verdict& verdict = *record.verdict;
    const std::string drawn = htmlPictures(record, pictures);
    const std::string page = htmlPage(
        text("Transfer to ", targetPath(record).filename().string(), ": ", verdict.isGood ? "good" : "doubtful"),
        verdict.text, verdict.isGood,
        text(introduction(record), drawn.empty() ? "" : htmlSection("Cuts", drawn),
             htmlSection("Rules", rulesTable(verdict)), valuesSections(record), loadsSection(record),
             validationSections(record), searchSection(record), repeatSection(record)));
    std::ofstream stream(path, std::ios::binary);
    stream << page << std::flush;
    if (!stream)
    {
        throw CannotWrite(std::strerror(errno));
    }
}

} // namespace veltrane
