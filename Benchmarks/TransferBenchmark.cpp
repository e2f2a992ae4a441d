// Whole transfers: this library, VTK and the limit, side by side.
#include "EngineRuns.h"
#include "Table.h"
#include "TransferCase.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{
using namespace benchmarks;

const std::vector<MeshKind> meshKinds{MeshKind::tetrahedra, MeshKind::hexahedra,           MeshKind::wedges,
                                      MeshKind::pyramids,   MeshKind::quadraticTetrahedra, MeshKind::mix};
const std::vector<TargetKind> targetKinds{TargetKind::nodes,    TargetKind::gaussPoints, TargetKind::cloud,
                                          TargetKind::nearMiss, TargetKind::propagation, TargetKind::renumbered};
const std::vector<std::string> engineNames{"veltrane",
                                           "veltrane-without-callback",
                                           "veltrane-without-propagation",
                                           "veltrane-at-gauss-points",
                                           "node-correspondence",
                                           "gauss-point-correspondence",
                                           "vtk-loop",
                                           "vtk-probe",
                                           "limit"};

struct Arguments
{
    std::vector<MeshKind> meshes = meshKinds;
    std::vector<TargetKind> targets{TargetKind::nodes};
    std::vector<std::string> engines = engineNames;
    std::int64_t nbSourceElts = 300000;
    std::int64_t nbPoints = 1000000;
    int nbRuns = 5;
    double distortion = 0.15;
    std::uint32_t seed = 2;
    std::string csvPath;
    bool isSmoke = false;

    bool has(const std::string& engine) const { return std::ranges::find(engines, engine) != engines.end(); }
    bool hasAny(const std::string& prefix) const
    {
        return std::ranges::any_of(engines, [&](const std::string& name) { return name.starts_with(prefix); });
    }
};

template <class Kind> std::map<std::string, Kind> namesOf(const std::vector<Kind>& kinds)
{
    std::map<std::string, Kind> names;
    for (const Kind kind : kinds)
    {
        names.emplace(nameOf(kind), kind);
    }
    return names;
}

/// Declares the options, and says in one sentence each what they mean.
void declareOptions(CLI::App& app, Arguments& arguments)
{
    app.add_option("--case", arguments.meshes, "Element kinds of source and target (default: all)")
        ->transform(CLI::CheckedTransformer(namesOf(meshKinds)))
        ->delimiter(',');
    app.add_option("--target", arguments.targets, "Kinds of target (default: nodes; with --smoke all)")
        ->transform(CLI::CheckedTransformer(namesOf(targetKinds)))
        ->delimiter(',');
    app.add_option("--engines", arguments.engines, "Engines to measure (default: all that are built)")
        ->check(CLI::IsMember(engineNames))
        ->delimiter(',');
    app.add_option("--source-elements", arguments.nbSourceElts, "Source elements, about")
        ->check(CLI::Range(100, 20000000))
        ->capture_default_str();
    app.add_option("--points", arguments.nbPoints, "Target points, about")
        ->check(CLI::Range(100, 20000000))
        ->capture_default_str();
    app.add_option("--runs", arguments.nbRuns, "Runs of each engine")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    app.add_option("--distortion", arguments.distortion, "Largest movement of inner nodes, in cell sizes")
        ->check(CLI::Range(0.0, 0.15))
        ->capture_default_str();
    app.add_option("--seed", arguments.seed, "Seed of all random numbers")->capture_default_str();
    app.add_option("--csv", arguments.csvPath, "Also write the results to this file, as comma-separated values");
    app.add_flag("--smoke", arguments.isSmoke, "Check that the engines agree, on tiny cases, in a few seconds");
}

std::vector<Engine> enginesFor(const TransferCase& transfer, const Arguments& arguments)
{
    const TargetKind target = transfer.options.target;
    std::vector<Engine> engines = veltraneEngines(transfer);
    const auto append = [&](std::vector<Engine> more)
    { std::move(more.begin(), more.end(), std::back_inserter(engines)); };
    // Propagation is the library's own; for correspondences the yardstick is the library's interpolation.
    const bool hasCounterparts = target != TargetKind::propagation && target != TargetKind::renumbered;
    if (hasCounterparts && arguments.hasAny("vtk"))
    {
        append(vtkEngines(transfer));
    }
    if (hasCounterparts && arguments.hasAny("limit"))
    {
        append(limitEngines(transfer));
    }
    std::erase_if(engines, [&](const Engine& engine) { return !arguments.has(engine.name); });
    return engines;
}

double totalMedian(const EngineRuns& engine)
{
    return spread(engine.runs, &Measurement::total).median;
}

std::string ratio(double value)
{
    return value < 1.0 ? fixed(value, 3) + " (1/" + fixed(1.0 / value, 2) + ")" : fixed(value, 2);
}

std::string perItem(std::int64_t bytes, std::int64_t nbItems)
{
    return nbItems == 0 ? fixed(std::nan(""), 0) : fixed(static_cast<double>(bytes) / static_cast<double>(nbItems), 1);
}

Table resultTable(const TransferCase& transfer, const std::vector<EngineRuns>& engines)
{
    Table table({"engine", "set-up min s", "set-up median s", "evaluation min s", "evaluation median s", "total min s",
                 "total median s", "total ns per point", "extra memory MB", "B per source element",
                 "B per target element", "not found", "near misses", "largest error"},
                1);
    for (const EngineRuns& engine : engines)
    {
        const Spread setUp = spread(engine.runs, &Measurement::setUp);
        const Spread evaluation = spread(engine.runs, &Measurement::evaluation);
        const Spread total = spread(engine.runs, &Measurement::total);
        const std::int64_t bytes = leastExtraBytes(engine.runs);
        const Measurement& any = engine.runs.front();
        table.addRow({engine.name, fixed(setUp.minimum, 3), fixed(setUp.median, 3), fixed(evaluation.minimum, 3),
                      fixed(evaluation.median, 3), fixed(total.minimum, 3), fixed(total.median, 3),
                      fixed(1e9 * total.median / static_cast<double>(any.nbPoints), 0), megabytes(bytes),
                      perItem(bytes, transfer.source.nbElts()), perItem(bytes, transfer.nbTargetElts()),
                      grouped(any.nbNotFound), grouped(any.nbNearMisses), scientific(any.largestError)});
    }
    return table;
}

/// Memory that the library may add: so much per source element, target element and bucket.
double memoryAllowance(const TransferCase& transfer, std::int64_t nbBuckets)
{
    return 120.0 * transfer.source.nbElts() + 60.0 * transfer.nbTargetElts() + 40.0 * static_cast<double>(nbBuckets);
}

Table ratioTable(const TransferCase& transfer, const std::vector<EngineRuns>& engines)
{
    Table table({"ratio of medians", ""}, 1);
    const EngineRuns* veltrane = find(engines, "veltrane");
    if (veltrane == nullptr)
    {
        return table;
    }
    const double total = totalMedian(*veltrane);
    const auto bytes = static_cast<double>(leastExtraBytes(veltrane->runs));
    for (const char* name : {"vtk-loop", "vtk-probe", "veltrane-without-callback", "veltrane-without-propagation"})
    {
        if (const EngineRuns* other = find(engines, name))
        {
            table.addRow({std::string("veltrane total / ") + name + " total", ratio(total / totalMedian(*other))});
        }
    }
    if (const EngineRuns* limit = find(engines, "limit"))
    {
        for (const auto& [part, value] : {std::pair{"set-up", &Measurement::setUp},
                                          {"evaluation", &Measurement::evaluation},
                                          {"total", &Measurement::total}})
        {
            table.addRow({std::string("veltrane ") + part + " / limit " + part,
                          ratio(spread(veltrane->runs, value).median / spread(limit->runs, value).median)});
        }
    }
    for (const auto& [name, yardstick] :
         {std::pair{"node-correspondence", "veltrane"}, {"gauss-point-correspondence", "veltrane-at-gauss-points"}})
    {
        const EngineRuns* correspondence = find(engines, name);
        const EngineRuns* interpolation = find(engines, yardstick);
        if (correspondence != nullptr && interpolation != nullptr)
        {
            table.addRow({std::string(name) + " total / " + yardstick + " total",
                          ratio(totalMedian(*correspondence) / totalMedian(*interpolation))});
        }
    }
    const EngineRuns* loop = find(engines, "vtk-loop");
    if (loop != nullptr && transfer.options.target == TargetKind::cloud)
    {
        table.addRow({"veltrane extra memory / vtk-loop extra memory",
                      ratio(bytes / static_cast<double>(leastExtraBytes(loop->runs)))});
    }
    const std::int64_t nbBuckets = veltrane->runs.front().nbBuckets;
    if (nbBuckets > 0)
    {
        table.addRow({"veltrane extra memory / (120 B per source element + 60 B per target element + 40 B per bucket)",
                      ratio(bytes / memoryAllowance(transfer, nbBuckets))});
    }
    return table;
}

Table csvTable(const TransferCase& transfer, const std::vector<EngineRuns>& engines)
{
    Table table({"case", "target", "engine", "source_elements", "target_elements", "points", "buckets", "setup_min",
                 "setup_median", "evaluation_min", "evaluation_median", "total_min", "total_median", "extra_bytes",
                 "not_found", "near_misses", "largest_error"},
                3);
    for (const EngineRuns& engine : engines)
    {
        const Spread setUp = spread(engine.runs, &Measurement::setUp);
        const Spread evaluation = spread(engine.runs, &Measurement::evaluation);
        const Spread total = spread(engine.runs, &Measurement::total);
        const Measurement& any = engine.runs.front();
        table.addRow({std::string(nameOf(transfer.options.mesh)), std::string(nameOf(transfer.options.target)),
                      engine.name, std::to_string(transfer.source.nbElts()), std::to_string(transfer.nbTargetElts()),
                      std::to_string(any.nbPoints), std::to_string(any.nbBuckets), fixed(setUp.minimum, 6),
                      fixed(setUp.median, 6), fixed(evaluation.minimum, 6), fixed(evaluation.median, 6),
                      fixed(total.minimum, 6), fixed(total.median, 6), std::to_string(leastExtraBytes(engine.runs)),
                      std::to_string(any.nbNotFound), std::to_string(any.nbNearMisses), scientific(any.largestError)});
    }
    return table;
}

void printResults(const TransferCase& transfer, const std::vector<EngineRuns>& engines, int nbRuns, bool isGood)
{
    std::cout << "### " << transfer.title() << "\n\n"
              << grouped(transfer.source.nbElts()) << " source elements, " << grouped(transfer.nbPoints())
              << " points, " << grouped(transfer.nbTargetElts()) << " target elements; " << nbRuns
              << (nbRuns == 1 ? " run" : " runs") << "\n\n";
    resultTable(transfer, engines).printMarkdown(std::cout);
    std::cout << '\n';
    if (isGood)
    {
        ratioTable(transfer, engines).printMarkdown(std::cout);
    }
    else
    {
        std::cout << "The results are not right, so the times are not compared.\n";
    }
    std::cout << std::endl;
}

/// Measures one case and prints it; false if an engine's results are wrong.
bool runCase(const CaseOptions& options, const Arguments& arguments, std::ostream* csv, bool isFirst)
{
    const TransferCase transfer(options);
    const std::vector<EngineRuns> engines = measureInTurn(enginesFor(transfer, arguments), arguments.nbRuns);
    const bool isGood = areRight(transfer, engines);
    if (arguments.isSmoke)
    {
        std::cout << (isGood ? "right: " : "WRONG: ") << transfer.title() << std::endl;
    }
    else
    {
        printResults(transfer, engines, arguments.nbRuns, isGood);
    }
    if (csv != nullptr)
    {
        csvTable(transfer, engines).printCsv(*csv, isFirst);
        csv->flush();
    }
    return isGood;
}

bool runAll(const Arguments& arguments)
{
    std::ofstream csv;
    if (!arguments.csvPath.empty())
    {
        csv.open(arguments.csvPath);
        if (!csv)
        {
            throw std::runtime_error("cannot write " + arguments.csvPath);
        }
    }
    bool isGood = true;
    bool isFirst = true;
    for (const MeshKind mesh : arguments.meshes)
    {
        for (const TargetKind target : arguments.targets)
        {
            const CaseOptions options{.mesh = mesh,
                                      .target = target,
                                      .nbSourceElts = arguments.nbSourceElts,
                                      .nbPoints = arguments.nbPoints,
                                      .distortion = arguments.distortion,
                                      .seed = arguments.seed};
            isGood = runCase(options, arguments, csv.is_open() ? &csv : nullptr, isFirst) && isGood;
            isFirst = false;
        }
    }
    return isGood;
}
} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Times whole transfers: this library, VTK and the limit of the method, side by side");
    Arguments arguments;
    declareOptions(app, arguments);
    CLI11_PARSE(app, argc, argv);
    if (arguments.isSmoke)
    {
        arguments.nbSourceElts = 3000;
        arguments.nbPoints = 4000;
        arguments.nbRuns = 1;
        if (app.count("--target") == 0)
        {
            arguments.targets = targetKinds;
        }
    }
    try
    {
        return runAll(arguments) ? 0 : 1;
    }
    catch (const std::exception& error)
    {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
