#include "EngineRuns.h"

#include "Table.h"

#include <algorithm>
#include <cmath>
#include <iostream>

namespace benchmarks
{
Spread spread(std::span<const Measurement> runs, double Measurement::*value)
{
    std::vector<double> values;
    for (const Measurement& run : runs)
    {
        values.push_back(run.*value);
    }
    if (std::ranges::any_of(values, [](double v) { return std::isnan(v); }))
    {
        return {std::nan(""), std::nan("")};
    }
    std::ranges::sort(values);
    const std::size_t middle = values.size() / 2;
    const bool isOdd = values.size() % 2 == 1;
    return {values.front(), isOdd ? values[middle] : 0.5 * (values[middle - 1] + values[middle])};
}

std::int64_t leastExtraBytes(std::span<const Measurement> runs)
{
    return std::ranges::min_element(runs, {}, &Measurement::extraBytes)->extraBytes;
}

std::vector<EngineRuns> measureInTurn(std::span<const Engine> engines, int nbRuns)
{
    std::vector<EngineRuns> all;
    for (const Engine& engine : engines)
    {
        all.push_back({engine.name, {}});
    }
    for (int run = 0; run < nbRuns; ++run)
    {
        for (std::size_t i = 0; i < engines.size(); ++i)
        {
            all[i].runs.push_back(measureInChild(engines[i]));
        }
    }
    return all;
}

const EngineRuns* find(std::span<const EngineRuns> all, const std::string& name)
{
    const auto found = std::ranges::find(all, name, &EngineRuns::name);
    return found == all.end() ? nullptr : &*found;
}

std::vector<std::string> faults(const TransferCase& transfer, const EngineRuns& engine)
{
    const bool isOwn = !engine.name.starts_with("vtk") && !engine.name.starts_with("limit");
    const bool mayMiss = isOwn ? !transfer.isEveryPointFound() : !transfer.isEveryPointInside();
    std::vector<std::string> sentences;
    for (const Measurement& run : engine.runs)
    {
        if (run.nbNotFound != 0 && !mayMiss)
        {
            sentences.push_back(std::to_string(run.nbNotFound) + " points not found or matched wrongly");
        }
        if (!std::isnan(run.largestError) && !(run.largestError <= transfer.errorLimit()))
        {
            sentences.push_back("the largest error is " + scientific(run.largestError) + ", more than " +
                                scientific(transfer.errorLimit()));
        }
    }
    return sentences;
}

bool areRight(const TransferCase& transfer, std::span<const EngineRuns> all)
{
    bool isGood = true;
    for (const EngineRuns& engine : all)
    {
        for (const std::string& fault : faults(transfer, engine))
        {
            std::cerr << transfer.title() << ", " << engine.name << ": " << fault << '\n';
            isGood = false;
        }
    }
    return isGood;
}
} // namespace benchmarks
