#include "LoadArguments.h"

#include "ElementSizes.h"
#include "MeshPair.h"
#include "Report.h"
#include "Text.h"
#include "TransferRecord.h"

#include <algorithm>
#include <ostream>

namespace veltrane
{
namespace
{

constexpr int digits = 7;

std::string sumText(const LoadSums& sums)
{
    std::vector<std::string> words;
    std::ranges::for_each(sums.sum, [&](double sum) { words.push_back(inDigits(4, sum)); });
    return joined(words);
}

void warnOfLoads(const DistributedLoads& loads, double cellSize)
{
    constexpr double notable = 0.02; // as part of a cell's length; rounding and curved sides stay below
    const std::string& name = loads.atTarget.name();
    if (loads.loadedNodes == 0)
    {
        warn(text("the loads '", name, "' are 0 everywhere"), text("no loads ", name));
    }
    if (loads.outsideNodes > 0)
    {
        warn(text("the loads '", name, "' at ", loads.outsideNodes, " of ", loads.loadedNodes,
                  " loaded nodes are outside the target and left out, with ", sumText(loads.outside), " in sum"),
             text("loads outside ", name));
    }
    if (loads.largestNearDistance > notable * cellSize)
    {
        warn(text("the loads '", name, "' at ", loads.nearNodes, " of ", loads.loadedNodes,
                  " loaded nodes are taken to the target from up to ", inDigits(3, loads.largestNearDistance),
                  " away, by which moments change"),
             text("loads near ", name));
    }
}

} // namespace

void LoadArguments::addTo(CLI::App& command)
{
    command
        .add_option("--loads", loads,
                    "a point-data array of forces, heat flows or other\n"
                    "amounts, which is not interpolated but distributed over\n"
                    "the target's cells, so that its sum is kept; may be\n"
                    "repeated")
        ->type_name("NAME[=NEWNAME]")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
}

std::vector<ChosenField> LoadArguments::choose(const MeshFile& source) const
{
    return loads.empty() ? std::vector<ChosenField>() : chooseAndRename(source, loads, "distributed");
}

void LoadArguments::check(OutsideMode mode) const
{
    checkRequestedFields(loads, "--loads");
    if (!loads.empty() && mode == OutsideMode::propagate)
    {
        throw InvalidOption("--loads: loads outside the target cannot be propagated; --outside default leaves them out "
                            "and sums them up");
    }
}

std::vector<DistributedLoads> distributeAll(std::span<const Field> loads, const Mesh& source, const Mesh& target,
                                            const TransferOptions& options, const std::optional<float>& nearLimit)
{
    std::vector<DistributedLoads> distributed;
    LoadOptions choices;
    choices.mode = options.mode;
    choices.rules.inDoublePrecision = options.rules.inDoublePrecision;
    choices.rules.nearLimit = nearLimit ? *nearLimit : largestElementSize(target);
    choices.tuning = options.tuning;
    choices.threads = options.threads;
    choices.progress = options.progress;
    for (const Field& field : loads)
    {
        try
        {
            distributed.push_back(distributeLoads(source, field, target, choices));
        }
        catch (const TargetOutside& error)
        {
            throw TargetOutside(text(bareMessage(error.what()),
                                     "; --outside default leaves them out and tells what they are in sum",
                                     unitHint(source.boundingBox(), target.boundingBox())));
        }
        warnOfLoads(distributed.back(), meanElementSize(target));
    }
    return distributed;
}

std::vector<LoadRow> rowsOf(const Field& loads, const LoadSums& source, const LoadSums& target)
{
    std::vector<LoadRow> rows;
    for (std::size_t i = 0; i < source.sum.size(); ++i)
    {
        rows.push_back({componentName(loads, static_cast<int>(i)), source.sum[i], target.sum[i], 0});
    }
    const char* moment = source.sum.size() == 1 ? ", times the way along " : ", moment about ";
    for (std::size_t i = 0; i < source.moment.size(); ++i)
    {
        rows.push_back({text(loads.name(), moment, "xyz"[i]), source.moment[i], target.moment[i], 0});
    }
    return rows;
}

std::vector<LoadRow> rowsOf(const DistributedLoads& loads)
{
    std::vector<LoadRow> rows = rowsOf(loads.atTarget, loads.source, loads.target);
    for (std::size_t i = 0; i < rows.size(); ++i)
    {
        const std::size_t count = loads.outside.sum.size();
        rows[i].outside = i < count ? loads.outside.sum[i] : loads.outside.moment[i - count];
    }
    return rows;
}

void printLoads(std::ostream& stream, std::span<const DistributedLoads> loads)
{
    TextTable table(12);
    table.addRow({"loads", "source", "target", "left out"});
    for (const DistributedLoads& distributed : loads)
    {
        for (const LoadRow& row : rowsOf(distributed))
        {
            table.addRow(
                {row.name, inDigits(digits, row.source), inDigits(digits, row.target), inDigits(digits, row.outside)});
        }
    }
    stream << '\n';
    table.print(stream);
}

} // namespace veltrane
