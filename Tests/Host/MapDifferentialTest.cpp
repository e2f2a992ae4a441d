// The map and the C++ interface beside the exported functions, on the random problems of the differential test: with
// the rules of the exported functions and any number of threads they give the same bits, the same figures and the same
// refusals.
#include "Comparison.h"
#include "Errors.h"
#include "LibraryCalls.h"
#include "LibraryHost.h"
#include "RandomModels.h"
#include "ThreadWorkers.h"
#include "Transfer.h"

#include "Map/TransferMap.h"
#include "ModelClass.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>

namespace
{
using namespace random_models;
using comparison::differenceOfFields;
using library_host::CallDirectory;

constexpr std::uint64_t firstSeed = 1;

/// How many problems a test compares at most: the usual number, among which all situations occur, or what the
/// environment says.
struct CaseCount
{
    static constexpr int usual = 700;
    const char* asked = std::getenv("VELTRANE_RANDOM_CASES");
    int count = asked == nullptr ? usual : std::atoi(asked);
    bool coversAll() const { return count >= usual; }
};

struct Exported
{
    bool hasEnded = false; ///< the process
    int code = 0;
    std::string message;
    std::optional<std::string> log;
    std::vector<FieldModel> fields;
};

/// The problem in the library, without a host's callback.
Exported callLibrary(const TransferProblem& problem)
{
    TransferProblem copy = problem;
    copy.surroundings.callback.present = false;
    CallDirectory directory(copy.surroundings, library_host::tuningFileOfTransfers);
    library_host::Result result;
    const ChildsEnd ending = endOfCallInChild(
        [&]
        {
            library_host::Result inChild;
            TransferProblem again = copy;
            library_host::callTransfer(again, inChild);
        });
    if (!ending.returned)
    {
        return {true, 0, ending.printed, std::nullopt, {}};
    }
    library_host::callTransfer(copy, result);
    return {false, result.errorCode, result.text(), directory.takeLog(), copy.targetFields};
}

ModelClass* initialised(ModelClass& model, MeshPointers& pointers, Mesh& mesh, bool isCloud)
{
    const reference::MeshArrays a = pointers.arrays();
    model.init(isCloud ? ModelKind::pointCloud : ModelKind::mesh, isCloud ? 0 : a.nbElts, a.nbNodes, a.nodeCoords,
               isCloud ? nullptr : a.connectivity, isCloud ? nullptr : a.eltTypes, a.nbMatls, mesh.matlIds.data(),
               mesh.matlStates.data());
    return &model;
}

/// Whether a problem is about the map at all, not about the records of its fields: a map knows fields in pairs that
/// have the same components on both sides.
bool isAboutMaps(const TransferProblem& problem)
{
    if (problem.refFields.size() != problem.targetFields.size())
    {
        return false;
    }
    for (std::size_t i = 0; i < problem.refFields.size(); ++i)
    {
        if (problem.refFields[i].nbComponents != problem.targetFields[i].nbComponents)
        {
            return false;
        }
    }
    const auto isUsual = [](const FieldModel& field)
    { return (field.location == 1 || field.location == 2) && (field.precision == 1 || field.precision == 2); };
    return !problem.announcedRefFields && !problem.announcedTargetFields && !problem.target.matlStates.empty() &&
           !problem.source.matlStates.empty() && problem.interpoMode >= 0 &&
           problem.interpoMode <= (problem.toPointCloud ? 1 : 2) && std::ranges::all_of(problem.refFields, isUsual) &&
           std::ranges::all_of(problem.targetFields, isUsual);
}

bool hasFieldAt(const std::vector<FieldModel>& fields, int location)
{
    return std::ranges::any_of(fields, [&](const FieldModel& field) { return field.location == location; });
}

MapSettings settingsOf(const TransferProblem& problem)
{
    MapSettings settings;
    settings.rules = ::asExported();
    settings.farPoints = static_cast<FarPoints>(problem.interpoMode);
    settings.atNodes = hasFieldAt(problem.targetFields, 1);
    settings.atGaussPoints = hasFieldAt(problem.targetFields, 2);
    settings.fromGaussPoints = hasFieldAt(problem.refFields, 2);
    settings.tuning.bucketFactor = problem.surroundings.tuning.bucketFactor;
    settings.tuning.refCoordTolerance = problem.surroundings.tuning.refCoordTolerance;
    settings.tuning.maxNbBuckets = problem.surroundings.tuning.maxNbBuckets;
    return settings;
}

std::vector<MapField> fieldsOf(TransferProblem& problem)
{
    std::vector<MapField> fields;
    for (std::size_t i = 0; i < std::min(problem.refFields.size(), problem.targetFields.size()); ++i)
    {
        FieldModel& source = problem.refFields[i];
        FieldModel& target = problem.targetFields[i];
        MapField field;
        field.sourceLocation = source.location == 1 ? atNodes : atGaussPoints;
        field.targetLocation = target.location == 1 ? atNodes : atGaussPoints;
        (source.precision == 1 ? field.sourceFloats = source.floats.data() : nullptr);
        (source.precision == 2 ? field.sourceDoubles = source.doubles.data() : nullptr);
        (target.precision == 1 ? field.targetFloats = target.floats.data() : nullptr);
        (target.precision == 2 ? field.targetDoubles = target.doubles.data() : nullptr);
        field.nbComponents = source.nbComponents;
        field.isClassOneOnly = target.matlStateFlag == 1;
        field.defaultValue = target.precision == 1 ? target.defaultValueFloat : target.defaultValueDouble;
        fields.push_back(field);
    }
    return fields;
}

/// The figures of a log in their order, as they stand there.
std::vector<std::string> figuresOf(const std::string& log)
{
    std::vector<std::string> figures;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);)
    {
        const std::size_t equals = line.find(" = ");
        if (equals != std::string::npos)
        {
            figures.push_back(line.substr(equals + 3));
        }
    }
    return figures;
}

std::string differenceOfFigures(const MapStatistics& figures, const std::string& log, bool isCloud, bool isWarned)
{
    const std::vector<std::string> logged = figuresOf(log);
    const auto number = [](double value)
    {
        std::ostringstream stream;
        stream << std::fixed;
        stream.precision(6);
        stream << value;
        return comparison::withoutSignsOfNaN(stream.str());
    };
    std::vector<std::string> expected{std::to_string(figures.nbBuckets),
                                      std::to_string(figures.nbInterpolatedPoints),
                                      number(static_cast<double>(figures.meanIterations)),
                                      std::to_string(figures.nbUsedBuckets),
                                      std::to_string(figures.nbUnusedBuckets),
                                      number(static_cast<double>(figures.meanItemsPerUsedBucket))};
    if (!isCloud)
    {
        for (const auto& [near, far] : {std::pair(figures.nbNearNodes, figures.nbFarNodes),
                                        std::pair(figures.nbNearGaussPoints, figures.nbFarGaussPoints)})
        {
            expected.push_back(std::to_string(near + far));
            expected.push_back(std::to_string(near));
            expected.push_back(std::to_string(far));
        }
    }
    for (std::size_t i = 0; i < expected.size(); ++i)
    {
        // After the propagation warning the log has the sum of the iterations in the place of their mean.
        const bool isSum = isWarned && i == 2;
        if (i >= logged.size() || (!isSum && comparison::withoutSignsOfNaN(logged[i]) != expected[i]))
        {
            return "figure " + std::to_string(i) + " is " + expected[i] + ", logged " +
                   (i < logged.size() ? logged[i] : "none");
        }
    }
    return "";
}

/// What differs between the exported call and the map with so many threads; what was seen is noted.
std::string differenceOfMap(const TransferProblem& problem, const Exported& exported, int threads,
                            std::set<std::string>& seen)
{
    TransferProblem mine = problem;
    MeshPointers source(mine.source);
    MeshPointers target(mine.target);
    ModelClass sourceModel;
    ModelClass targetModel;
    initialised(sourceModel, source, mine.source, false);
    initialised(targetModel, target, mine.target, mine.toPointCloud);
    veltrane::ThreadWorkers workers(threads);
    TransferMap map;
    MapFailure failure;
    try
    {
        failure = map.build(sourceModel, targetModel, mine.mappingFlags.data(), settingsOf(problem), workers);
    }
    catch (const veltrane::TransferError& fault)
    {
        seen.insert("fault");
        return exported.hasEnded ? "" : std::string("a fault that the library does not have: ") + fault.what();
    }
    if (exported.hasEnded)
    {
        return "the library ends with: " + exported.message;
    }
    if (failure)
    {
        seen.insert(failure.reason == MapFailure::outside ? "outside" : "refused");
        return exported.code == failure.reason && exported.message == failure.text
                   ? ""
                   : std::string("refused: ") + failure.text + ", exported: " + exported.message;
    }
    if (exported.code > 0)
    {
        return "exported refuses: " + exported.message;
    }
    const std::vector<MapField> fields = fieldsOf(mine);
    std::vector<std::byte> workspace(static_cast<std::size_t>(map.workspaceSize(fields)));
    if (const char* text = map.apply(fields, workspace, workers))
    {
        return text;
    }
    const bool isWarned = !map.propagation().isComplete;
    seen.insert(isWarned ? "warned" : "done");
    seen.insert(problem.toPointCloud ? "cloud" : "mesh");
    const MapStatistics& figures = map.statistics();
    const auto noteIf = [&](bool condition, const char* what)
    {
        if (condition)
        {
            seen.insert(what);
        }
    };
    noteIf(figures.nbNearNodes > 0, "near nodes");
    noteIf(figures.nbFarNodes > 0 && problem.interpoMode == 2, "propagation");
    noteIf(figures.nbFarGaussPoints > 0, "far Gauss points");
    noteIf(map.mapsFromGaussPoints(), "from Gauss points");
    if (isWarned != (exported.code == -1))
    {
        return "a warning on one side only";
    }
    const std::string difference = differenceOfFields("target", exported.fields, mine.targetFields);
    return difference.empty() && exported.log
               ? differenceOfFigures(figures, *exported.log, problem.toPointCloud, isWarned)
               : difference;
}

/// The mesh for the C++ interface, or nothing if it does not take such a mesh.
std::optional<veltrane::Mesh> meshOf(const Mesh& model)
{
    veltrane::MeshData data;
    for (const auto& node : model.nodes)
    {
        data.coordinates.insert(data.coordinates.end(), node.begin(), node.end());
    }
    data.offsets.push_back(0);
    for (std::size_t elt = 0; elt < model.types.size(); ++elt)
    {
        data.kinds.push_back(static_cast<veltrane::ElementKind>(model.types[elt]));
        data.connectivity.insert(data.connectivity.end(), model.connectivity[elt].begin(),
                                 model.connectivity[elt].end());
        data.offsets.push_back(data.connectivity.size());
    }
    data.materialPerElement = model.matlIds;
    for (const int state : model.matlStates)
    {
        data.materials.push_back({"", state});
    }
    try
    {
        return veltrane::Mesh(std::move(data));
    }
    catch (const veltrane::InvalidData&)
    {
        return std::nullopt;
    }
}

/// The same through veltrane::transfer(); nothing if the interface does not take the arguments.
std::optional<std::string> differenceOfTransfer(const TransferProblem& problem, const Exported& exported, int threads)
{
    const auto source = meshOf(problem.source);
    const auto target = meshOf(problem.target);
    if (problem.toPointCloud || !source || !target || exported.hasEnded ||
        problem.refFields.size() != problem.targetFields.size())
    {
        return std::nullopt;
    }
    veltrane::TransferOptions options;
    options.mode = static_cast<veltrane::OutsideMode>(problem.interpoMode);
    options.rules = veltrane::asExported();
    options.threads = threads;
    options.tuning = {problem.surroundings.tuning.refCoordTolerance, problem.surroundings.tuning.bucketFactor,
                      problem.surroundings.tuning.maxNbBuckets};
    for (const int flag : problem.mappingFlags)
    {
        options.targetMapping.push_back(flag == 1);
    }
    std::vector<veltrane::Field> fields;
    std::vector<FieldModel> results = problem.targetFields;
    for (std::size_t i = 0; i < problem.refFields.size(); ++i)
    {
        const FieldModel& field = problem.refFields[i];
        const FieldModel& targetField = problem.targetFields[i];
        if (field.precision != targetField.precision || field.nbComponents > veltrane::maxComponentCount)
        {
            return std::nullopt;
        }
        const veltrane::Location location =
            field.location == 1 ? veltrane::Location::nodes : veltrane::Location::gaussPoints;
        const std::size_t count = static_cast<std::size_t>(field.nbComponents) *
                                  (location == veltrane::Location::nodes ? static_cast<std::size_t>(source->nodeCount())
                                                                         : source->gaussPointCount());
        auto floats = field.floats;
        auto doubles = field.doubles;
        floats.resize(field.precision == 1 ? count : 0);
        doubles.resize(field.precision == 2 ? count : 0);
        fields.emplace_back("field", location, field.nbComponents,
                            field.precision == 1 ? veltrane::FieldValues(floats) : veltrane::FieldValues(doubles));
        options.targetLocations.push_back(targetField.location == 1 ? veltrane::Location::nodes
                                                                    : veltrane::Location::gaussPoints);
        options.fieldOptions.push_back(
            {targetField.precision == 1 ? targetField.defaultValueFloat : targetField.defaultValueDouble,
             targetField.matlStateFlag == 1});
    }
    try
    {
        const veltrane::TransferResult result = veltrane::transfer(*source, fields, *target, options);
        if (exported.code > 0)
        {
            return "exported refuses: " + exported.message;
        }
        // Values that neither side writes are what each found there.
        const veltrane::Map map(*source, *target, veltrane::mapOptions(fields, options));
        for (std::size_t i = 0; i < result.fields.size(); ++i)
        {
            const veltrane::Places places = map.places(result.fields[i].location());
            for (std::size_t place = 0; place < places.findings.size(); ++place)
            {
                if (places.findings[place] != veltrane::Finding::inside &&
                    places.findings[place] != veltrane::Finding::near)
                {
                    continue;
                }
                const bool isKept = options.fieldOptions[i].isClassOneOnly;
                for (std::size_t c = 0; !isKept && c < static_cast<std::size_t>(results[i].nbComponents); ++c)
                {
                    const std::size_t at = place * static_cast<std::size_t>(results[i].nbComponents) + c;
                    const bool isSame =
                        results[i].precision == 1
                            ? comparison::isSame(std::get<std::vector<float>>(result.fields[i].values())[at],
                                                 exported.fields[i].floats[at])
                            : comparison::isSame(std::get<std::vector<double>>(result.fields[i].values())[at],
                                                 exported.fields[i].doubles[at]);
                    if (!isSame)
                    {
                        std::ostringstream text;
                        text.precision(17);
                        text << "value " << at << " of field " << i << " is "
                             << (results[i].precision == 1
                                     ? double{std::get<std::vector<float>>(result.fields[i].values())[at]}
                                     : std::get<std::vector<double>>(result.fields[i].values())[at])
                             << ", exported "
                             << (results[i].precision == 1 ? double{exported.fields[i].floats[at]}
                                                           : exported.fields[i].doubles[at]);
                        return text.str();
                    }
                }
            }
        }
        return "";
    }
    catch (const veltrane::TransferError& error)
    {
        return exported.code == error.code() ? "" : std::string("refused: ") + error.what();
    }
    catch (const veltrane::Error&)
    {
        return std::nullopt; // arguments that the interface does not take
    }
}

class MapBesideLibrary : public testing::Test
{
protected:
    template <class Problem> static void compare(Problem problemOf, int count, const std::set<std::string>& expected)
    {
        std::set<std::string> seen;
        int nbTransfers = 0;
        const CaseCount cases;
        for (int i = 0; i < std::min(count, cases.count); ++i)
        {
            const std::uint64_t seed = firstSeed + static_cast<std::uint64_t>(i);
            const TransferProblem problem = problemOf(seed);
            if (!isAboutMaps(problem))
            {
                continue;
            }
            const Exported exported = callLibrary(problem);
            for (const int threads : {1, 2, 3, 8})
            {
                ASSERT_EQ(differenceOfMap(problem, exported, threads, seen), "")
                    << "seed " << seed << ", " << threads << " threads";
            }
            if (const auto difference = differenceOfTransfer(problem, exported, 1 + i % 3))
            {
                ++nbTransfers;
                ASSERT_EQ(*difference, "") << "seed " << seed;
            }
        }
        for (const std::string& situation : expected)
        {
            EXPECT_TRUE(!cases.coversAll() || seen.contains(situation)) << situation << " did not occur";
        }
        testing::Test::RecordProperty("transfers", nbTransfers);
    }
};

TEST_F(MapBesideLibrary, GivesTheSameBitsOnMeshes)
{
    compare(randomMeshTransfer, CaseCount::usual,
            {"mesh", "done", "warned", "refused", "outside", "fault", "near nodes", "propagation", "far Gauss points",
             "from Gauss points"});
}

TEST_F(MapBesideLibrary, GivesTheSameBitsOnPoints)
{
    compare(randomPointCloudTransfer, CaseCount::usual / 2,
            {"cloud", "done", "refused", "outside", "from Gauss points"});
}

} // namespace
