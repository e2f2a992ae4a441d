// The map beside the exported call: building and applying once, applying again and again, on one thread and on several.
//
//   map_benchmark --mesh hexahedra --target nodes --points 1000000 --runs 5
//
// Ratios are medians over runs that alternate between the two sides. On one thread processor times are compared, with
// threads the time on the clock: then nothing else should run.
#include "Map.h"
#include "Table.h"
#include "TemporaryDirectory.h"
#include "TransferCase.h"

#include "Search/Prefetch.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>
#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <vector>

namespace
{
using namespace benchmarks;

double processorSeconds()
{
    std::timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double clockSeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double secondsOf(double (*now)(), const std::function<void()>& work)
{
    const double start = now();
    work();
    return now() - start;
}

double median(std::vector<double> values)
{
    std::ranges::sort(values);
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : 0.5 * (values[middle - 1] + values[middle]);
}

/// A generated mesh as the C++ interface takes it.
veltrane::Mesh meshOf(const GeneratedMesh& mesh)
{
    veltrane::MeshData data{.coordinates = mesh.coords,
                            .offsets = {0},
                            .connectivity = mesh.connectivity,
                            .materialPerElement = mesh.matlIdPerElt};
    for (const int type : mesh.eltTypes)
    {
        const auto kind = static_cast<veltrane::ElementKind>(type);
        data.kinds.push_back(kind);
        data.offsets.push_back(data.offsets.back() +
                               static_cast<std::size_t>(veltrane::findElementKind(kind)->nodeCount));
    }
    for (const int state : mesh.matlStates)
    {
        data.materials.push_back({"", state});
    }
    return veltrane::Mesh(std::move(data));
}

/// A case, and the map's side of it.
class Comparison
{
public:
    explicit Comparison(const CaseOptions& options)
        : transfer_(options), source_(meshOf(transfer_.source)), result_(static_cast<std::size_t>(transfer_.nbPoints()))
    {
        if (options.target == TargetKind::cloud)
        {
            const auto points = transfer_.points();
            points_.emplace(std::vector<float>(points.begin(), points.end()), std::vector<int>(points.size() / 3, 0),
                            std::vector<veltrane::Material>{{"", 1}});
        }
        else
        {
            target_.emplace(meshOf(transfer_.target));
        }
    }

    const TransferCase& transfer() const { return transfer_; }
    double exportedSeconds() const { return veltraneEngines(transfer_)[1].measure().total; }

    veltrane::Map build(int threads, bool inDoublePrecision = false) const
    {
        veltrane::MapOptions options{.mode = veltrane::OutsideMode::defaultValue,
                                     // As in transfer(), which builds a map for one use.
                                     .takesChecksums = false,
                                     .rules = veltrane::asExported(),
                                     .threads = threads};
        options.rules.inDoublePrecision = inDoublePrecision;
        return points_ ? veltrane::Map(source_, *points_, options) : veltrane::Map(source_, *target_, options);
    }

    void apply(const veltrane::Map& map, int threads)
    {
        const auto fields = views();
        workspace_.resize(map.workspaceSize(fields));
        map.apply(fields, workspace_, threads);
    }

    /// Whether the values are right that apply() has left.
    bool isRight() const
    {
        Measurement measurement;
        transfer_.assess(result_, measurement);
        return measurement.largestError <= transfer_.errorLimit();
    }

    std::span<const double> scalar() const { return transfer_.sourceFields.scalar; }

private:
    std::array<veltrane::FieldView, 2> views()
    {
        std::array<veltrane::FieldView, 2> fields;
        fields[0].source = std::span<const double>(transfer_.sourceFields.scalar);
        fields[0].target = std::span<double>(result_.scalar);
        fields[1].source = std::span<const double>(transfer_.sourceFields.vector);
        fields[1].target = std::span<double>(result_.vector);
        fields[1].componentCount = 3;
        for (veltrane::FieldView& field : fields)
        {
            field.defaultValue = TransferCase::notComputed;
        }
        return fields;
    }

    TransferCase transfer_;
    veltrane::Mesh source_;
    std::optional<veltrane::Mesh> target_;
    std::optional<veltrane::PointCloud> points_;
    FieldValues result_;
    std::vector<std::byte> workspace_;
};

/// What no application can do without: stored nodes and weights, and a sum over them, with the values of locations that
/// come soon on their way. One component in single precision.
class BareLoop
{
public:
    explicit BareLoop(const veltrane::Map& map) : matrix_(map.matrix()), values_(map.sourceNodeCount(), 1.0F)
    {
        weights_.assign(matrix_.values.begin(), matrix_.values.end());
        result_.resize(static_cast<std::size_t>(matrix_.rowCount));
    }

    void run()
    {
        constexpr std::int64_t ahead = 12;
        for (std::int64_t row = 0; row < matrix_.rowCount; ++row)
        {
            if (row + ahead < matrix_.rowCount)
            {
                for (std::int64_t i = start(row + ahead); i < start(row + ahead + 1); ++i)
                {
                    prefetch(values_.data() + matrix_.columns[static_cast<std::size_t>(i)]);
                }
            }
            float sum = 0;
            for (std::int64_t i = start(row); i < start(row + 1); ++i)
            {
                sum += weights_[static_cast<std::size_t>(i)] *
                       values_[static_cast<std::size_t>(matrix_.columns[static_cast<std::size_t>(i)])];
            }
            result_[static_cast<std::size_t>(row)] = sum;
        }
    }

    /// The same by the map.
    void apply(const veltrane::Map& map)
    {
        veltrane::FieldView field;
        field.source = std::span<const float>(values_);
        field.target = std::span<float>(result_);
        workspace_.resize(map.workspaceSize(std::span(&field, 1)));
        map.apply(std::span(&field, 1), workspace_);
    }

private:
    std::int64_t start(std::int64_t row) const { return matrix_.rowStarts[static_cast<std::size_t>(row)]; }

    veltrane::SparseMatrix matrix_;
    std::vector<float> weights_;
    std::vector<float> values_;
    std::vector<float> result_;
    std::vector<std::byte> workspace_;
};

/// The medians of what was measured, by name.
class Figures
{
public:
    void add(const std::string& name, double value) { values_[name].push_back(value); }
    double of(const std::string& name) const { return median(values_.at(name)); }

private:
    std::map<std::string, std::vector<double>> values_;
};

void measureOnce(Comparison& comparison, int threads, Figures& figures)
{
    const double exported = comparison.exportedSeconds();
    std::optional<veltrane::Map> map;
    const double built = secondsOf(processorSeconds, [&] { map.emplace(comparison.build(1)); });
    const double applied = secondsOf(processorSeconds, [&] { comparison.apply(*map, 1); });
    const double again = secondsOf(processorSeconds, [&] { comparison.apply(*map, 1); });
    figures.add("once", (built + applied) / exported);
    figures.add("apply", again / exported);
    constexpr double nbSteps = 20;
    figures.add("steps", (built + applied + (nbSteps - 1) * again) / (nbSteps * exported));
    figures.add("exported seconds", exported);
    std::optional<veltrane::Map> exactMap;
    const double exactlyBuilt = secondsOf(processorSeconds, [&] { exactMap.emplace(comparison.build(1, true)); });
    const double exactlyApplied = secondsOf(processorSeconds, [&] { comparison.apply(*exactMap, 1); });
    figures.add("double", (exactlyBuilt + exactlyApplied) / (built + applied));
    exactMap.reset();
    if (comparison.transfer().options.target == TargetKind::cloud)
    {
        BareLoop loop(*map);
        loop.apply(*map);
        loop.run();
        const double bare = secondsOf(processorSeconds, [&] { loop.run(); });
        figures.add("loop", secondsOf(processorSeconds, [&] { loop.apply(*map); }) / bare);
    }
    if (threads > 1)
    {
        const double one = secondsOf(clockSeconds, [&] { comparison.build(1); });
        figures.add("threads map", secondsOf(clockSeconds, [&] { comparison.build(threads); }) / one);
        const double applyOne = secondsOf(clockSeconds, [&] { comparison.apply(*map, 1); });
        figures.add("threads apply", secondsOf(clockSeconds, [&] { comparison.apply(*map, threads); }) / applyOne);
    }
}

bool measure(const CaseOptions& options, int nbRuns, int threads, Table& table)
{
    Comparison comparison(options);
    Figures figures;
    for (int run = 0; run < nbRuns; ++run)
    {
        measureOnce(comparison, threads, figures);
    }
    const bool isCloud = options.target == TargetKind::cloud;
    table.addRow({comparison.transfer().title(), fixed(figures.of("exported seconds"), 3), fixed(figures.of("once"), 3),
                  fixed(1 / figures.of("apply"), 1), fixed(1 / figures.of("steps"), 1),
                  isCloud ? fixed(figures.of("loop"), 2) : "–", fixed(figures.of("double"), 3),
                  threads > 1 ? fixed(1 / figures.of("threads map"), 2) : "–",
                  threads > 1 ? fixed(1 / figures.of("threads apply"), 2) : "–"});
    if (!comparison.isRight())
    {
        std::cerr << comparison.transfer().title() << ": the values are wrong\n";
    }
    return comparison.isRight();
}

int run(int argc, char** argv)
{
    CLI::App app("The map beside the exported call");
    const std::map<std::string, MeshKind> kinds{{"tetrahedra", MeshKind::tetrahedra},
                                                {"hexahedra", MeshKind::hexahedra}};
    const std::map<std::string, TargetKind> targets{{"nodes", TargetKind::nodes}, {"cloud", TargetKind::cloud}};
    std::vector<std::string> chosenKinds{"hexahedra", "tetrahedra"};
    std::vector<std::string> chosenTargets{"nodes", "cloud"};
    std::int64_t nbPoints = 1'000'000;
    std::int64_t nbElts = 300'000;
    int nbRuns = 5;
    int threads = 2;
    std::uint32_t seed = 2;
    bool isSmoke = false;
    app.add_option("--mesh", chosenKinds, "tetrahedra, hexahedra (both)");
    app.add_option("--target", chosenTargets, "nodes, cloud (both)");
    app.add_option("--points", nbPoints, "target points (1000000)");
    app.add_option("--elements", nbElts, "source elements (300000)");
    app.add_option("--runs", nbRuns, "runs of each (5)");
    app.add_option("--threads", threads, "threads beside one (2)");
    app.add_option("--seed", seed, "of all random numbers (2)");
    app.add_flag("--smoke", isSmoke, "small sizes, one run: to see that it works");
    CLI11_PARSE(app, argc, argv);
    if (isSmoke)
    {
        nbPoints = 2000;
        nbElts = 2000;
        nbRuns = 1;
    }
    const WorkingDirectory directory; // where the library leaves its log
    Table table({"case", "exported call, s", "map and apply / exported", "exported / apply", "20 exported / 20 steps",
                 "apply / bare loop", "double / single", "map, 1 thread / N", "apply, 1 thread / N"},
                1);
    bool isGood = true;
    for (const std::string& kind : chosenKinds)
    {
        for (const std::string& target : chosenTargets)
        {
            CaseOptions options;
            options.mesh = kinds.at(kind);
            options.target = targets.at(target);
            options.nbSourceElts = nbElts;
            options.nbPoints = nbPoints;
            options.seed = seed;
            isGood = measure(options, nbRuns, threads, table) && isGood;
        }
    }
    table.printMarkdown(std::cout);
    return isGood ? 0 : 1;
}
} // namespace

int main(int argc, char** argv)
{
    try
    {
        return run(argc, argv);
    }
    catch (const std::exception& error)
    {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
