#include "JsonReport.h"

#include "CommandLine.h"
#include "FieldStatistics.h"
#include "JsonQuality.h"
#include "Sha256.h"
#include "VersionText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>

namespace veltrane
{
namespace
{

// Members in the order in which they are written here. Numbers that are not finite become null.
using Json = nlohmann::ordered_json;

// Counts up whenever a member changes its meaning or goes away.
constexpr int formatVersion = 2;

Json describeBox(const Box& box)
{
    return {{"min", box.min}, {"max", box.max}};
}

Json describeMaterials(const std::vector<Material>& materials, bool areNumbered)
{
    Json names = Json::array();
    for (const Material& material : materials)
    {
        if (areNumbered)
        {
            names.push_back(material.name);
        }
    }
    return names;
}

Json nameOrNull(const std::optional<std::string>& name)
{
    return name ? Json(*name) : Json();
}

Json checksumOf(const std::filesystem::path& file)
{
    const std::string checksum = sha256OfFile(file);
    return checksum.empty() ? Json() : Json(checksum);
}

Json describeMesh(const MeshFile& file)
{
    const Mesh& mesh = file.mesh();
    Json elements = Json::object();
    for (const auto& [name, count] : file.elementCounts())
    {
        elements[name.one] = count;
    }
    return {{"file", file.path().string()},
            {"sha256", checksumOf(file.path())},
            {"nodes", mesh.nodeCount()},
            {"elements", elements},
            {"leftOutCells", file.leftOutCellCount()},
            {"materialArray", nameOrNull(file.materialArray())},
            {"materials", describeMaterials(mesh.materials(), file.materialArray().has_value())},
            {"box", describeBox(mesh.boundingBox())}};
}

Json describePointFile(const PointFile& file)
{
    const PointCloud& points = file.points();
    return {{"file", file.path().string()},
            {"sha256", checksumOf(file.path())},
            {"points", points.pointCount()},
            {"materialArray", nameOrNull(file.materialArray())},
            {"materials", describeMaterials(points.materials(), file.materialArray().has_value())},
            {"box", describeBox(points.boundingBox())}};
}

Json describeTarget(const TransferRecord& record)
{
    const PointFile* points = record.targetPoints();
    return points != nullptr ? describePointFile(*points) : describeMesh(*record.targetMesh());
}

Json describeNear(const NearDistances& near)
{
    return near.count == 0 ? Json() : Json{{"mean", near.mean}, {"largest", near.largest}};
}

Json describePoints(const TransferRecord& record)
{
    if (record.targetPoints() != nullptr)
    {
        const PointCounts points = countPoints(record);
        return {{"points", points.all},
                {"notMapped", points.notMapped},
                {"inside", points.inside},
                {"near", points.near},
                {"nearDistance", describeNear(points.nearDistances)},
                {"outside", points.outside},
                {"outsideOfMissingMaterial", points.outsideOfMissingMaterial}};
    }
    const std::optional<NodeCounts> nodes = countNodes(record);
    if (!nodes)
    {
        return nullptr;
    }
    return {{"nodes", nodes->all},
            {"inNoCell", nodes->inNoCell},
            {"notMapped", nodes->notMapped},
            {"inside", nodes->inside},
            {"near", nodes->near},
            {"nearDistance", describeNear(nodes->nearDistances)},
            {"far", nodes->far},
            {"farOfMissingMaterial", nodes->farOfMissingMaterial},
            {"farReached", nodes->reached}};
}

Json describeGaussPoints(const TransferRecord& record)
{
    const bool areTargets = std::ranges::any_of(record.result.fields, [](const Field& field)
                                                { return field.location() == Location::gaussPoints; });
    if (!areTargets || !record.result.statistics.gaussPoints)
    {
        return nullptr;
    }
    const OutsideCounts& outside = *record.result.statistics.gaussPoints;
    const NearDistances near = nearDistances(record.result.gaussPointFindings, record.result.gaussPointDistances);
    return {{"all", record.targetMesh()->mesh().gaussPointCount()},
            {"near", outside.near},
            {"nearDistance", describeNear(near)},
            {"far", outside.far}};
}

std::string_view locationName(const Field& field)
{
    return field.location() == Location::nodes ? "nodes" : "Gauss points";
}

Json describeSearch(const TransferStatistics& statistics)
{
    return {{"buckets", statistics.bucketCount},
            {"usedBuckets", statistics.usedBucketCount},
            {"meanElementsPerUsedBucket", statistics.meanElementsPerUsedBucket},
            {"locatedPoints", statistics.interpolatedPointCount},
            {"meanIterations", statistics.meanIterations},
            {"unconvergedPoints", statistics.unconvergedPointCount},
            {"singularElements", statistics.singularElementCount},
            {"overlap", {{"tried", statistics.overlap.triedCount}, {"found", statistics.overlap.foundCount}}},
            {"origin", statistics.origin}};
}

Json describeStages(const StageTimes& times)
{
    Json stages = Json::array();
    for (const StageTime& stage : times.times())
    {
        stages.push_back({{"name", stage.name}, {"seconds", stage.seconds}});
    }
    return stages;
}

/// \param isCounted  as of statisticsOf()
Json describeValues(const Field& field, int component, const std::function<bool(std::size_t)>& isCounted = {})
{
    const ComponentStatistics figures = statisticsOf(field, component, isCounted);
    return {{"min", figures.min}, {"mean", figures.mean}, {"max", figures.max}, {"unusable", figures.unusableCount}};
}

Json describeFields(const TransferRecord& record)
{
    const bool arePoints = record.targetPoints() != nullptr;
    Json fields = Json::array();
    for (std::size_t i = 0; i < record.sourceFields.size(); ++i)
    {
        const Field& source = record.sourceFields[i];
        const Field& target = record.result.fields[i];
        Json components = Json::array();
        for (int component = 0; component < source.componentCount(); ++component)
        {
            components.push_back({{"name", componentName(target, component)},
                                  {"source", describeValues(source, component)},
                                  {"target", describeValues(target, component, hasSourceValue(record, target))}});
        }
        fields.push_back({{"name", target.name()},
                          {"sourceLocation", locationName(source)},
                          {"targetLocation", arePoints ? "points" : locationName(target)},
                          {"precision", source.isSinglePrecision() ? "single" : "double"},
                          {"components", components}});
    }
    return fields;
}

Json describePlacement(const Placement& placement)
{
    return {{"scale", placement.scale}, {"rotation", placement.rotation}, {"translation", placement.translation}};
}

Json describeOptions(const TransferOptions& options, const Placement& placement)
{
    Json described{{"mode", static_cast<int>(options.mode)},
                   {"defaultValue", options.defaultValue},
                   {"precision", options.rules.inDoublePrecision ? "double" : "single"}};
    if (options.tuning.tolerance)
    {
        described["tolerance"] = *options.tuning.tolerance;
    }
    if (!placement.isIdentity())
    {
        described["placement"] = describePlacement(placement);
    }
    return described;
}

Json describe(const TransferRecord& record)
{
    const bool isWarned = record.result.outcome == Outcome::propagationWarning;
    return {{"format", "veltrane transfer report"},
            {"formatVersion", formatVersion},
            {"program", versionText()},
            {"command", commandLine()},
            {"outcome", isWarned ? "propagation warning" : "done"},
            {"message", record.result.message},
            {"verdict", record.verdict == nullptr ? Json() : describeVerdict(*record.verdict)},
            {"options", describeOptions(record.options, record.placement)},
            {"source", describeMesh(record.source)},
            {"target", describeTarget(record)},
            {"points", describePoints(record)},
            {"gaussPoints", describeGaussPoints(record)},
            {"nearDistances", describeNearHistogram(record)},
            {"search", describeSearch(record.result.statistics)},
            {"stages", describeStages(record.times)},
            {"fields", describeFields(record)},
            {"loads", describeLoads(record)},
            {"validation", describeValidation(record)}};
}

} // namespace

void writeReport(const TransferRecord& record, const std::filesystem::path& path)
{
    constexpr int indent = 2;
    // File and array names may be no UTF-8; a replacement character is better than no report.
    const std::string report = describe(record).dump(indent, ' ', false, Json::error_handler_t::replace);
    std::ofstream stream(path, std::ios::binary);
    stream << report << '\n' << std::flush;
    if (!stream)
    {
        throw CannotWrite(std::strerror(errno));
    }
}

} // namespace veltrane
