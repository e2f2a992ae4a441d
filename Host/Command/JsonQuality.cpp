#include "JsonQuality.h"

#include "Loads.h"
#include "QualityFigures.h"
#include "Verdict.h"

#include <nlohmann/json.hpp>

#include <string>

namespace veltrane
{
namespace
{

using Json = nlohmann::ordered_json;

Json describeCoverage(const Coverage& coverage)
{
    return {{"nodes", coverage.nodes},
            {"mappedNodes", coverage.mappedNodes},
            {"nearNodes", coverage.nearNodes},
            {"nearDistance", coverage.nearNodes == 0 ? Json()
                                                     : Json{{"mean", coverage.meanNearDistance},
                                                            {"largest", coverage.largestNearDistance}}},
            {"elements", coverage.elements},
            {"mappedElements", coverage.mappedElements},
            {"volume", coverage.volume},
            {"mappedVolume", coverage.mappedVolume}};
}

Json describeHistogram(const Histogram& histogram)
{
    return histogram.counts.empty() ? Json() : Json{{"edges", histogram.edges}, {"counts", histogram.counts}};
}

Json describeIntegral(const FieldIntegral& integral)
{
    return {{"components", integral.components}, {"magnitude", integral.magnitude}, {"volume", integral.volume}};
}

Json describeIntegrals(const FieldIntegrals& integrals, const Mesh& mesh)
{
    Json materials = Json::array();
    for (std::size_t i = 0; i < integrals.materials.size() && integrals.materials.size() > 1; ++i)
    {
        Json material{{"material", mesh.materials()[i].name}};
        material.update(describeIntegral(integrals.materials[i]));
        materials.push_back(material);
    }
    Json described = describeIntegral(integrals.all);
    described["materials"] = materials;
    return described;
}

Json describePlace(const WorstPlace& place, const TransferRecord& record, Location location)
{
    const Mesh& mesh = record.source.mesh();
    const bool isNode = location == Location::nodes;
    return {{isNode ? "node" : "gaussPoint", place.location + 1},
            {"place", isNode ? Json(mesh.nodePosition(place.location)) : Json()},
            {"cell", place.element < 0 ? Json() : Json(record.source.cellOf(place.element) + 1)},
            {"source", place.source},
            {"returned", place.returned},
            {"difference", place.difference}};
}

Json describeRoundTrip(const FieldRoundTrip& field, const Field& source, const TransferRecord& record)
{
    const FieldComparison& comparison = field.comparison;
    Json worst = Json::array();
    for (const WorstPlace& place : worstPlaces(field, source, record.source.mesh()))
    {
        worst.push_back(describePlace(place, record, source.location()));
    }
    return {{"name", source.name()},
            {"compared", comparison.comparedNodeCount},
            {"notReturned", comparison.unusableInField},
            {"relativeDifference", comparison.relativeDifference},
            {"rootMeanSquareDifference", comparison.rootMeanSquareDifference},
            {"largestDifference", comparison.largestDifference},
            {"largestSourceMagnitude", comparison.largestReferenceMagnitude},
            {"worst", worst},
            {"histogram", describeHistogram(histogramOfDifferences(field, source))},
            {"integral",
             {{"difference", field.integralDifference()},
              {"source", describeIntegrals(field.atSource, record.source.mesh())},
              {"target", describeIntegrals(field.atTarget, record.targetMesh()->mesh())}}}};
}

} // namespace

Json describeVerdict(const Verdict& verdict)
{
    Json rules = Json::array();
    for (const RuleResult& result : verdict.rules)
    {
        rules.push_back({{"key", ruleKeys[static_cast<std::size_t>(result.rule.rule)].key},
                         {"figure", result.figure ? Json(*result.figure) : Json()},
                         {"relation", relationText(result.rule.relation)},
                         {"limit", result.rule.limit},
                         {"required", result.isRequired},
                         {"judged", result.isApplied},
                         {"kept", result.isKept()},
                         {"text", result.finding}});
    }
    return {{"good", verdict.isGood}, {"text", verdict.text}, {"rules", rules}};
}

Json describeValidation(const TransferRecord& record)
{
    if (record.validation == nullptr)
    {
        return nullptr;
    }
    Json fields = Json::array();
    for (std::size_t i = 0; i < record.validation->fields.size(); ++i)
    {
        fields.push_back(describeRoundTrip(record.validation->fields[i], record.sourceFields[i], record));
    }
    return {{"source", describeCoverage(record.validation->source)},
            {"target", describeCoverage(record.validation->target)},
            {"fields", fields}};
}

Json describeLoads(const TransferRecord& record)
{
    const auto describe = [](const LoadSums& sums) { return Json{{"sum", sums.sum}, {"moment", sums.moment}}; };
    Json described = Json::array();
    for (const DistributedLoads& loads : record.loads)
    {
        described.push_back({{"name", loads.atTarget.name()},
                             {"about", loads.about},
                             {"source", describe(loads.source)},
                             {"target", describe(loads.target)},
                             {"outside", describe(loads.outside)},
                             {"loadedNodes", loads.loadedNodes},
                             {"nearNodes", loads.nearNodes},
                             {"largestNearDistance", loads.largestNearDistance},
                             {"outsideNodes", loads.outsideNodes}});
    }
    return described;
}

Json describeNearHistogram(const TransferRecord& record)
{
    const TransferResult& result = record.result;
    return describeHistogram(result.findings.empty()
                                 ? histogramOfDistances(result.gaussPointFindings, result.gaussPointDistances)
                                 : histogramOfDistances(result.findings, result.distances));
}

} // namespace veltrane
