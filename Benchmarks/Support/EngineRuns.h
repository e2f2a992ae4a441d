/// Several runs of several engines: taking turns, summing up, checking the results.
#ifndef VELTRANE_BENCHMARKS_ENGINE_RUNS_H
#define VELTRANE_BENCHMARKS_ENGINE_RUNS_H

#include "TransferCase.h"

#include <span>
#include <string>
#include <vector>

namespace benchmarks
{
/// The runs of one engine.
struct EngineRuns
{
    std::string name;
    std::vector<Measurement> runs;
};

struct Spread
{
    double minimum;
    double median;
};
Spread spread(std::span<const Measurement> runs, double Measurement::*value);

/// Peak memory is the same in every run but for the operating system's rounding; the least of the runs.
std::int64_t leastExtraBytes(std::span<const Measurement> runs);

/// Measures every engine `nbRuns` times, in turn, so that a disturbance of the machine meets all of them.
std::vector<EngineRuns> measureInTurn(std::span<const Engine> engines, int nbRuns);

/// The engine's runs, or null.
const EngineRuns* find(std::span<const EngineRuns> all, const std::string& name);

/// What is wrong with an engine's results, one sentence each.
std::vector<std::string> faults(const TransferCase& transfer, const EngineRuns& engine);
/// Reports the faults of all engines on the error output; true if there are none.
bool areRight(const TransferCase& transfer, std::span<const EngineRuns> all);
} // namespace benchmarks

#endif
