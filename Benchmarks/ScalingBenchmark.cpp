// Cost and memory of the exported calls against the size of the meshes.
#include "EngineRuns.h"
#include "Table.h"
#include "TransferCase.h"

#include <CLI/CLI.hpp>

#include <algorithm>
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

struct Arguments
{
    std::vector<std::int64_t> sizes{10000, 30000, 100000, 300000, 1000000};
    std::int64_t nbPoints = 0;
    int nbRuns = 3;
    bool isWithoutCorrespondences = false;
    std::string csvPath;
    bool isSmoke = false;
};

/// One row: a series is a curve of the picture.
struct Point
{
    std::string series;
    std::int64_t nbSourceElts;
    std::int64_t nbPoints;
    Spread total;
    std::int64_t extraBytes;

    double nanosecondsPerPoint() const { return 1e9 * total.median / static_cast<double>(nbPoints); }
    double bytesPerElement() const { return static_cast<double>(extraBytes) / static_cast<double>(nbSourceElts); }
};

void declareOptions(CLI::App& app, Arguments& arguments)
{
    app.add_option("--sizes", arguments.sizes, "Source elements of the transfers and nodes of the correspondences")
        ->check(CLI::Range(100, 20000000))
        ->delimiter(',')
        ->capture_default_str();
    app.add_option("--points", arguments.nbPoints, "Target points of every transfer; 0: as many as source elements")
        ->check(CLI::Range(0, 20000000))
        ->capture_default_str();
    app.add_option("--runs", arguments.nbRuns, "Runs of each call")->check(CLI::Range(1, 1000))->capture_default_str();
    app.add_flag("--without-correspondences", arguments.isWithoutCorrespondences, "Measure transfers only");
    app.add_option("--csv", arguments.csvPath, "Also write the table to this file, for plot_scaling.py");
    app.add_flag("--smoke", arguments.isSmoke, "Tiny sizes, to see that everything runs");
}

/// Measures the chosen engines of one case; false if a result is wrong.
bool measure(const CaseOptions& options, const std::vector<std::string>& names, int nbRuns, std::vector<Point>& points)
{
    const TransferCase transfer(options);
    std::vector<Engine> engines = veltraneEngines(transfer);
    std::erase_if(engines, [&](const Engine& engine) { return std::ranges::find(names, engine.name) == names.end(); });
    const std::vector<EngineRuns> all = measureInTurn(engines, nbRuns);
    for (const EngineRuns& engine : all)
    {
        const std::string call = engine.name == "veltrane" ? "transfer" : engine.name;
        points.push_back({std::string(nameOf(options.mesh)) + " " + call, transfer.source.nbElts(),
                          engine.runs.front().nbPoints, spread(engine.runs, &Measurement::total),
                          leastExtraBytes(engine.runs)});
    }
    return areRight(transfer, all);
}

bool measureAll(const Arguments& arguments, std::vector<Point>& points)
{
    bool isGood = true;
    for (const MeshKind mesh : {MeshKind::tetrahedra, MeshKind::hexahedra})
    {
        for (const std::int64_t size : arguments.sizes)
        {
            const std::int64_t nbPoints = arguments.nbPoints > 0 ? arguments.nbPoints : size;
            isGood = measure({.mesh = mesh, .target = TargetKind::nodes, .nbSourceElts = size, .nbPoints = nbPoints},
                             {"veltrane"}, arguments.nbRuns, points) &&
                     isGood;
            if (!arguments.isWithoutCorrespondences)
            {
                isGood = measure({.mesh = mesh, .target = TargetKind::renumbered, .nbPoints = size},
                                 {"node-correspondence", "gauss-point-correspondence"}, arguments.nbRuns, points) &&
                         isGood;
            }
        }
    }
    std::ranges::stable_sort(points, {}, &Point::series);
    return isGood;
}

Table resultTable(const std::vector<Point>& points)
{
    Table table({"call", "source elements", "points", "total min s", "total median s", "ns per point",
                 "extra memory MB", "B per source element"},
                1);
    for (const Point& point : points)
    {
        table.addRow({point.series, grouped(point.nbSourceElts), grouped(point.nbPoints), fixed(point.total.minimum, 4),
                      fixed(point.total.median, 4), fixed(point.nanosecondsPerPoint(), 0), megabytes(point.extraBytes),
                      fixed(point.bytesPerElement(), 1)});
    }
    return table;
}

Table csvTable(const std::vector<Point>& points)
{
    Table table({"series", "source_elements", "points", "total_min", "total_median", "ns_per_point", "extra_bytes",
                 "bytes_per_element"},
                1);
    for (const Point& point : points)
    {
        table.addRow({point.series, std::to_string(point.nbSourceElts), std::to_string(point.nbPoints),
                      fixed(point.total.minimum, 6), fixed(point.total.median, 6),
                      fixed(point.nanosecondsPerPoint(), 2), std::to_string(point.extraBytes),
                      fixed(point.bytesPerElement(), 2)});
    }
    return table;
}

/// How flat each curve is, over the sizes at which fixed costs no longer count.
Table flatnessTable(const std::vector<Point>& points)
{
    constexpr std::int64_t fewestPoints = 90000;
    std::map<std::string, std::pair<double, double>> extremes;
    for (const Point& point : points)
    {
        if (point.nbPoints >= fewestPoints)
        {
            const double cost = point.nanosecondsPerPoint();
            auto& [lowest, highest] = extremes.try_emplace(point.series, cost, cost).first->second;
            lowest = std::min(lowest, cost);
            highest = std::max(highest, cost);
        }
    }
    Table table({"call", "dearest / cheapest point from 100 000 points on"}, 1);
    for (const auto& [series, extreme] : extremes)
    {
        table.addRow({series, fixed(extreme.second / extreme.first, 2)});
    }
    return table;
}

bool run(const Arguments& arguments)
{
    std::vector<Point> points;
    const bool isGood = measureAll(arguments, points);
    resultTable(points).printMarkdown(std::cout);
    std::cout << '\n';
    flatnessTable(points).printMarkdown(std::cout);
    if (!arguments.csvPath.empty())
    {
        std::ofstream csv(arguments.csvPath);
        csvTable(points).printCsv(csv, true);
        if (!csv.flush())
        {
            throw std::runtime_error("cannot write " + arguments.csvPath);
        }
    }
    return isGood;
}
} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Times this library's calls on meshes of growing size");
    Arguments arguments;
    declareOptions(app, arguments);
    CLI11_PARSE(app, argc, argv);
    if (arguments.isSmoke)
    {
        arguments.sizes = {1000, 3000};
        arguments.nbRuns = 1;
    }
    try
    {
        return run(arguments) ? 0 : 1;
    }
    catch (const std::exception& error)
    {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
