#include "Verdict.h"

#include "ElementSizes.h"
#include "Loads.h"
#include "MeshPair.h"
#include "RangeChanges.h"
#include "Report.h"
#include "Text.h"
#include "Validation.h"

#include <algorithm>
#include <cmath>

namespace veltrane
{
namespace
{

constexpr int digits = 3;
constexpr double notableDistance = 0.02; // as part of a cell's length; rounding and curved sides stay below

std::string percent(double part)
{
    return text(inDigits(digits, 100 * part), " %");
}

/// What receives values, as it was found.
struct Receivers
{
    const std::vector<Finding>& findings;
    const std::vector<double>& distances;
    const char* name;

    long long count(Finding finding) const { return std::ranges::count(findings, finding); }
    long long all() const { return std::ssize(findings) - count(Finding::notMapped); }
    long long far() const { return count(Finding::far) + count(Finding::reached); }
    double share(long long part) const
    {
        return all() == 0 ? 0 : static_cast<double>(part) / static_cast<double>(all());
    }
};

Receivers receiversOf(const TransferRecord& record)
{
    const TransferResult& result = record.result;
    if (result.findings.empty())
    {
        return {result.gaussPointFindings, result.gaussPointDistances, "Gauss points"};
    }
    return {result.findings, result.distances, record.targetPoints() == nullptr ? "nodes" : "points"};
}

/// A figure in words.
struct Figure
{
    std::optional<double> figure;
    std::string words;
    bool isTelling = true; ///< whether it says something of the transfer's quality here
};

Figure farFinding(const TransferRecord& record, const Receivers& receivers)
{
    Figure found{receivers.share(receivers.far()), ""};
    std::vector<std::string> words;
    if (receivers.far() > 0)
    {
        words.push_back(text(receivers.far(), " of ", receivers.all(), " ", receivers.name, " (",
                             percent(receivers.share(receivers.far())), ") are far from the source"));
    }
    else if (receivers.all() > 0)
    {
        words.push_back(text("none of ", receivers.all(), " ", receivers.name, " is far from the source"));
    }
    for (const DistributedLoads& loads : record.loads)
    {
        const double part =
            static_cast<double>(loads.outsideNodes) / static_cast<double>(std::max(std::size_t{1}, loads.loadedNodes));
        found.figure = std::max(*found.figure, part);
        words.push_back(loads.outsideNodes == 0
                            ? text("all loads '", loads.atTarget.name(), "' are distributed")
                            : text("the loads '", loads.atTarget.name(), "' of ", loads.outsideNodes, " of ",
                                   loads.loadedNodes, " nodes are outside the target"));
    }
    found.words = joined(words);
    return found;
}

Figure nearFinding(const Receivers& receivers, double cellSize)
{
    long long beside = 0;
    double sum = 0;
    for (std::size_t i = 0; i < receivers.findings.size(); ++i)
    {
        if (receivers.findings[i] == Finding::near && receivers.distances[i] > notableDistance * cellSize)
        {
            ++beside;
            sum += receivers.distances[i];
        }
    }
    if (beside == 0)
    {
        return {0.0, text("no ", receivers.name, " lie notably beside the source")};
    }
    return {receivers.share(beside),
            text(beside, " of ", receivers.all(), " ", receivers.name, " (", percent(receivers.share(beside)),
                 ") lie beside the source, by ", inDigits(digits, sum / static_cast<double>(beside)), " on average")};
}

Figure distanceFinding(const Receivers& receivers, double cellSize)
{
    const double largest = nearDistances(receivers.findings, receivers.distances).largest;
    if (largest == 0)
    {
        return {0.0, "all values come from the places where they are taken to"};
    }
    return {largest / cellSize, text("values come from up to ", inDigits(digits, largest), " away, ",
                                     inDigits(digits, largest / cellSize), " of a source cell's length")};
}

/// How much farther apart the target's nodes are, if that may be why something is lost.
std::string coarsenessText(const Validation& validation)
{
    constexpr double notablyCoarser = 1.2;
    const Coverage& source = validation.source;
    const Coverage& target = validation.target;
    const double ratio = std::cbrt(target.volume / static_cast<double>(target.nodes) /
                                   (source.volume / static_cast<double>(source.nodes)));
    return ratio > notablyCoarser ? text(": the target is too coarse, its nodes are ", inDigits(2, ratio),
                                         " times as far apart as the source's")
                                  : "";
}

Figure validationFinding(const TransferRecord& record)
{
    if (record.validation == nullptr)
    {
        return {std::nullopt, "not validated"};
    }
    if (record.validation->fields.empty())
    {
        return {0.0, "no field was transferred"};
    }
    const auto worst = std::ranges::max_element(record.validation->fields, {},
                                                [](const FieldRoundTrip& field)
                                                {
                                                    const double difference = field.comparison.relativeDifference;
                                                    return std::isnan(difference) ? HUGE_VAL : difference;
                                                });
    const FieldComparison& comparison = worst->comparison;
    if (std::isnan(comparison.relativeDifference))
    {
        return {comparison.relativeDifference, text("mapped back, nothing is left of ", worst->returned.name())};
    }
    return {comparison.relativeDifference, text("mapped back, ", worst->returned.name(), " differs from the source by ",
                                                percent(comparison.relativeDifference))};
}

/// Whether both meshes are the same body, so that nothing of one is missing in the other.
bool coverEachOther(const Validation& validation)
{
    constexpr double almostAll = 0.99;
    return validation.source.volumeShare() >= almostAll && validation.target.volumeShare() >= almostAll;
}

std::string coverText(const Validation& validation)
{
    return text("the target covers ", percent(validation.source.volumeShare()), " of the source's volume, the source ",
                percent(validation.target.volumeShare()), " of the target's");
}

Figure integralFinding(const TransferRecord& record)
{
    if (record.validation == nullptr || record.validation->fields.empty())
    {
        return {std::nullopt, "not validated"};
    }
    const auto worst = std::ranges::max_element(record.validation->fields, {}, &FieldRoundTrip::integralDifference);
    const bool areSame = coverEachOther(*record.validation);
    return {worst->integralDifference(),
            text("the integral of ", worst->returned.name(), " changes by ", percent(worst->integralDifference()),
                 areSame ? "" : text(", and ", coverText(*record.validation))),
            areSame};
}

/// Looks through all values, so only if somebody asks.
Figure peakFinding(const TransferRecord& record, bool isRequired)
{
    if (record.validation == nullptr && !isRequired)
    {
        return {std::nullopt, "not validated"};
    }
    if (record.targetPoints() != nullptr)
    {
        return {std::nullopt, "points need not lie where the peaks are"};
    }
    const std::vector<RangeChange> changes = rangeChanges(record);
    const auto worst = std::ranges::min_element(changes, {}, &RangeChange::excess);
    const bool isTelling = record.validation != nullptr && coverEachOther(*record.validation);
    if (worst == changes.end() || !(worst->excess < 0))
    {
        return {0.0, "no peak is lost", isTelling};
    }
    return {-worst->excess,
            text("the ", worst->end, " of ", worst->name, " loses ", percent(-worst->excess), " of its range",
                 isTelling || record.validation == nullptr ? "" : text(", and ", coverText(*record.validation))),
            isTelling};
}

/// "the target lies as if the source was moved by 3, 0, 0", or nothing. Boxes of the same size tell it.
std::string offsetHint(const Box& source, const Box& target)
{
    constexpr double sameSize = 0.02;
    constexpr double notable = 0.002;
    const double size = double{source.size()};
    std::array<double, 3> offset{};
    double largest = 0;
    for (std::size_t i = 0; i < 3; ++i)
    {
        const double low = double{target.min[i]} - double{source.min[i]};
        const double high = double{target.max[i]} - double{source.max[i]};
        if (std::abs(high - low) > sameSize * size)
        {
            return "";
        }
        offset[i] = (low + high) / 2;
        offset[i] = std::abs(offset[i]) < notable * size ? 0 : offset[i];
        largest = std::max(largest, std::abs(offset[i]));
    }
    if (largest == 0)
    {
        return "";
    }
    return text("the target is as large as the source and lies ", inDigits(digits, offset[0]), ", ",
                inDigits(digits, offset[1]), ", ", inDigits(digits, offset[2]),
                " away from it: are both in the same place?");
}

std::string hintOf(const TransferRecord& record, bool liesElsewhere)
{
    const Box source = record.source.mesh().boundingBox();
    const Box target = record.targetPoints() != nullptr
                           ? record.targetPoints()->points().boundingBox()
                           : record.targetMesh()->mesh().boundingBox(record.options.targetMapping);
    if (const std::string units = unitHint(source, target); !units.empty())
    {
        return units.substr(2); // without its semicolon
    }
    return liesElsewhere ? offsetHint(source, target) : "";
}

RuleResult resultOf(const RuleKey& key, const Figure& finding, const std::vector<Requirement>& requirements)
{
    const auto required = std::ranges::find(requirements, key.rule, &Requirement::rule);
    const bool isRequired = required != requirements.end();
    return {.rule = isRequired ? *required : Requirement{key.rule, Relation::atMost, key.limit},
            .isRequired = isRequired,
            .isApplied = isRequired || (finding.figure && finding.isTelling),
            .figure = finding.figure,
            .finding = finding.words};
}

std::string goodText(const std::vector<RuleResult>& rules)
{
    std::vector<std::string> words;
    for (const RuleResult& result : rules)
    {
        const bool isTold = result.rule.rule == Rule::far || result.rule.rule == Rule::validation;
        if (isTold && result.isApplied)
        {
            words.push_back(result.finding);
        }
    }
    return text("good: ", joined(words, "; "));
}

} // namespace

std::string ruleText(const Requirement& rule)
{
    return text(ruleKeys[static_cast<std::size_t>(rule.rule)].key, " ", relationText(rule.relation), " ", rule.limit);
}

std::vector<std::string> Verdict::missedRequirements() const
{
    std::vector<std::string> missed;
    for (const RuleResult& result : rules)
    {
        if (result.isRequired && !result.isKept())
        {
            missed.push_back(veltrane::text("'", ruleText(result.rule), "' is not kept: ", result.finding));
        }
    }
    return missed;
}

Verdict judge(const TransferRecord& record, const std::vector<Requirement>& requirements)
{
    const double cellSize = meanElementSize(record.source.mesh());
    const Receivers receivers = receiversOf(record);
    const bool isPeakRequired = std::ranges::find(requirements, Rule::peak, &Requirement::rule) != requirements.end();
    const std::array<Figure, ruleCount> findings{
        farFinding(record, receivers), nearFinding(receivers, cellSize), distanceFinding(receivers, cellSize),
        validationFinding(record),     integralFinding(record),          peakFinding(record, isPeakRequired)};
    Verdict verdict{.isGood = true, .text = {}, .rules = {}};
    std::vector<std::string> wrong;
    bool liesElsewhere = false;
    bool isLossExplained = false;
    for (std::size_t i = 0; i < ruleCount; ++i)
    {
        const RuleResult& result = verdict.rules.emplace_back(resultOf(ruleKeys[i], findings[i], requirements));
        if (!result.isKept())
        {
            const bool isLoss = result.rule.rule >= Rule::validation;
            wrong.push_back(result.finding);
            if (isLoss && !isLossExplained && !liesElsewhere && record.validation != nullptr)
            {
                wrong.back() += coarsenessText(*record.validation);
                isLossExplained = true;
            }
            liesElsewhere = liesElsewhere || !isLoss;
        }
    }
    if (const std::string hint = hintOf(record, liesElsewhere); !hint.empty())
    {
        wrong.insert(wrong.begin(), hint);
    }
    verdict.isGood = wrong.empty();
    verdict.text = verdict.isGood ? goodText(verdict.rules) : text("doubtful: ", joined(wrong, "; "));
    return verdict;
}

} // namespace veltrane
