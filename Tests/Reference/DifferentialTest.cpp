/// Runs random problems through the built library and through the reference implementation and compares everything that
/// a host can observe, byte for byte.
///
/// VELTRANE_LIBRARY_PATH names another library than the one of this build, VELTRANE_DIFFERENTIAL_CASES the number of
/// problems, VELTRANE_DIFFERENTIAL_SEED the first seed. A reported seed with VELTRANE_DIFFERENTIAL_CASES=1 repeats one
/// problem.
#include "Comparison.h"
#include "LibraryCalls.h"
#include "RandomModels.h"
#include "ReferenceCorrespondence.h"
#include "ReferenceTransfer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <functional>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace
{

using namespace comparison;
using namespace random_models;
using library_host::CallDirectory;
using library_host::CorrespondenceTables;
using library_host::IntegerTable;
using library_host::Result;
using reference::index;
using reference::Observations;
using reference::Outcome;

constexpr int defaultNbCases = 2000;

int numberFromEnvironment(const char* name, int otherwise)
{
    const char* text = std::getenv(name);
    return text != nullptr ? std::atoi(text) : otherwise;
}

std::string differenceOfResults(const Result& result, const Outcome& expected, CallDirectory& directory)
{
    return firstOf({result.errorCode == expected.errorCode ? ""
                                                           : "the error code is " + std::to_string(result.errorCode) +
                                                                 ", expected " + std::to_string(expected.errorCode),
                    differenceOfTexts("the message", result.text(), expected.message),
                    differenceOfTranscripts(library_host::receivedCalls(), expected.transcript),
                    differenceOfLogs(directory.takeLog(), expected.log), directory.disturbance()});
}

/// One problem in both implementations. `referenceCall` may throw a FatalFault.
template <typename ReferenceCall, typename LibraryCall, typename CompareOutputs>
std::string differenceOfCalls(const std::string& name, const Surroundings& surroundings, const std::string& tuningFile,
                              ReferenceCall referenceCall, LibraryCall libraryCall, CompareOutputs compareOutputs,
                              std::set<std::string>& seen, std::function<void(const Outcome&)> observe)
{
    CallDirectory directory(surroundings, tuningFile);
    Result result;
    Outcome expected;
    try
    {
        expected = referenceCall();
    }
    catch (const reference::FatalFault& fault)
    {
        const std::string line = fault.what();
        seen.insert("process ended: " + line.substr(0, line.find_first_of("\n:")));
        return firstOf({library_host::differenceOfFatalCall([&] { libraryCall(result); }, line),
                        directory.takeLog() ? "the log of an earlier call is still there" : "",
                        directory.disturbance()});
    }
    printedByReturningCall(name, [&] { libraryCall(result); });
    observe(expected);
    if (!surroundings.callback.present)
    {
        seen.insert("no callback");
    }
    return firstOf({differenceOfResults(result, expected, directory), compareOutputs()});
}

void observeOutcome(const Outcome& outcome, std::set<std::string>& seen)
{
    const Observations& o = outcome.seen;
    const auto note = [&seen](bool condition, const char* text)
    {
        if (condition)
        {
            seen.insert(text);
        }
    };
    note(outcome.errorCode == 0, "success");
    note(o.cancelled, "cancelled");
    note(o.cancelled && outcome.transcript.size() > 5, "cancelled while computing");
    note(outcome.errorCode == -1 && !o.cancelled, "propagation warning");
    note(outcome.errorCode == 0 && o.propagationSweeps > 0, "propagated");
    note(o.propagationSweeps > 1, "several propagation sweeps");
    note(outcome.errorCode == 2, "outside in mode 0");
    note(o.nodesOutside > o.nodesFar || o.gaussPointsOutside > o.gaussPointsFar, "near misses");
    note(o.nodesFar > 0, "far nodes");
    note(o.gaussPointsFar > 0, "far Gauss points");
    note(o.gridDoublings > 0, "doubled grid");
    note(o.bucketsOfEnlargedPass > 0, "buckets of the enlarged pass");
    note(o.inversionsWithoutConvergence > 0, "no convergence in the nearest element");
    note(o.undefinedValues > 0, "undefined values");
    note(o.defaultFilledValues > 0, "default fill after a failure");
    if (outcome.errorCode == 1)
    {
        seen.insert("refused: " + outcome.message.substr(0, std::min<std::size_t>(60, outcome.message.find('\n'))));
    }
}

std::string differenceOfTransfer(const std::string& name, const TransferProblem& problem, std::set<std::string>& seen)
{
    TransferProblem mine = problem;
    TransferProblem theirs = problem;

    MeshPointers mySource(mine.source);
    MeshPointers myTarget(mine.target);
    FieldsSet myRefFields(mine.refFields, mine.announcedRefFields);
    FieldsSet myTargetFields(mine.targetFields, mine.announcedTargetFields);
    reference::TransferRequest request;
    request.interpoMode = mine.interpoMode;
    request.defaultValue = mine.defaultValue;
    request.source = mySource.arrays();
    request.target = myTarget.arrays();
    request.targetMatlMappingFlags = mine.mappingFlags.data();
    request.refFields = myRefFields.record();
    request.targetFields = myTargetFields.record();
    request.tuning = mine.surroundings.tuning;
    request.callback = mine.surroundings.callback;

    const auto compare = [&]() -> std::string
    {
        const bool isInputIntact = theirs.source == problem.source && theirs.target == problem.target &&
                                   theirs.mappingFlags == problem.mappingFlags;
        return firstOf({differenceOfFields("target", theirs.targetFields, mine.targetFields),
                        damageOfGuards(theirs.targetFields),
                        differenceOfFields("source", theirs.refFields, problem.refFields),
                        isInputIntact ? "" : "an input array has been written"});
    };
    const auto observe = [&](const Outcome& outcome)
    {
        observeOutcome(outcome, seen);
        const bool isDone = outcome.errorCode == 0;
        if (isDone && outcome.seen.nodesFar > 0 && problem.interpoMode == 1)
        {
            seen.insert(problem.toPointCloud ? "far points with defaults" : "far nodes with defaults");
        }
        if (isDone && problem.targetFields.size() > problem.refFields.size())
        {
            seen.insert("more target fields than source fields");
        }
        for (const int type : problem.target.types)
        {
            if (isDone && (type == 6 || type == 7))
            {
                seen.insert("skin elements as targets");
            }
        }
        for (const int type : problem.source.types)
        {
            if (isDone)
            {
                seen.insert("source elements of type " + std::to_string(type));
            }
        }
    };
    return differenceOfCalls(
        name, problem.surroundings, library_host::tuningFileOfTransfers,
        [&]
        {
            return problem.toPointCloud ? reference::transferMeshToPointCloud(request)
                                        : reference::transferMeshToMesh(request);
        },
        [&](Result& result) { library_host::callTransfer(theirs, result); }, compare, seen, observe);
}

std::string differenceOfTables(const std::string& what, const IntegerTable& actual, const IntegerTable& expected)
{
    for (std::size_t row = 0; row < expected.rows.size(); ++row)
    {
        std::string difference =
            differenceOfArrays(what + ", row " + std::to_string(row), actual.rows[row], expected.rows[row]);
        if (difference.empty() && !isGuardIntact(expected.rows[row]))
        {
            difference = what + ", row " + std::to_string(row) + ": values behind it have been written";
        }
        if (!difference.empty())
        {
            return difference;
        }
    }
    return "";
}

std::string differenceOfCorrespondence(const std::string& name, const CorrespondenceProblem& problem, bool ofNodes,
                                       std::set<std::string>& seen)
{
    CorrespondenceProblem mine = problem;
    CorrespondenceProblem theirs = problem;
    MeshPointers mySource(mine.source);
    MeshPointers myTarget(mine.target);
    const reference::CorrespondenceRequest request = {mySource.arrays(), myTarget.arrays(), mine.mappingFlags.data(),
                                                      mine.surroundings.tuning, mine.surroundings.callback};
    CorrespondenceTables myTables(mine.target, ofNodes);
    CorrespondenceTables theirTables(theirs.target, ofNodes);

    const auto compare = [&]() -> std::string
    {
        const bool isInputIntact = theirs.source == problem.source && theirs.target == problem.target &&
                                   theirs.mappingFlags == problem.mappingFlags;
        return firstOf({differenceOfTables("first table", theirTables.first, myTables.first),
                        differenceOfTables("second table", theirTables.second, myTables.second),
                        isInputIntact ? "" : "an input array has been written"});
    };
    return differenceOfCalls(
        name, problem.surroundings, library_host::tuningFileOfCorrespondence(ofNodes),
        [&]
        {
            return ofNodes ? reference::matchNodes(request, myTables.first.pointers.front())
                           : reference::matchGaussPoints(request, myTables.first.pointers.data(),
                                                         myTables.second.pointers.data());
        },
        [&](Result& result) { library_host::callCorrespondence(theirs, ofNodes, theirTables, result); }, compare, seen,
        [&](const Outcome& outcome) { observeOutcome(outcome, seen); });
}

class Differential : public testing::Test
{
protected:
    /// Runs one in so many of all cases and, in a run of full length, insists that the expected situations occurred.
    template <typename Difference>
    void runCases(const std::string& name, double share, const std::vector<std::string>& situations,
                  Difference difference)
    {
        const int nbAllCases = numberFromEnvironment("VELTRANE_DIFFERENTIAL_CASES", defaultNbCases);
        const int firstSeed = numberFromEnvironment("VELTRANE_DIFFERENTIAL_SEED", 1);
        const int nbCases = std::max(1, static_cast<int>(share * nbAllCases));
        std::map<std::string, int> tally;
        int nbDifferences = 0;
        for (int seed = firstSeed; seed < firstSeed + nbCases; ++seed)
        {
            std::set<std::string> seen;
            std::string found;
            try
            {
                found = difference(name + "_" + std::to_string(seed), static_cast<std::uint64_t>(seed), seen);
            }
            catch (const std::exception& exception)
            {
                found = std::string("an exception came out: ") + exception.what();
            }
            for (const std::string& situation : seen)
            {
                ++tally[situation];
            }
            if (!found.empty())
            {
                ++nbDifferences;
                ADD_FAILURE() << name << ", seed " << seed << ": " << found;
            }
            if (nbDifferences == 10)
            {
                ADD_FAILURE() << name << ": stopped after 10 differing cases";
                return;
            }
        }
        std::cout << name << ": " << nbCases << " cases\n";
        for (const auto& [situation, count] : tally)
        {
            std::cout << "  " << count << "\t" << situation << '\n';
        }
        if (nbAllCases >= defaultNbCases)
        {
            for (const std::string& situation : situations)
            {
                EXPECT_GT(tally[situation], 0) << "no case covers: " << situation;
            }
        }
    }
};

TEST_F(Differential, MeshToMesh)
{
    runCases("mesh_to_mesh", 0.5,
             {"success",
              "cancelled",
              "cancelled while computing",
              "propagation warning",
              "propagated",
              "several propagation sweeps",
              "outside in mode 0",
              "near misses",
              "no convergence in the nearest element",
              "far nodes",
              "far Gauss points",
              "far nodes with defaults",
              "doubled grid",
              "buckets of the enlarged pass",
              "undefined values",
              "default fill after a failure",
              "more target fields than source fields",
              "skin elements as targets",
              "no callback",
              "source elements of type 1",
              "source elements of type 2",
              "source elements of type 3",
              "source elements of type 10",
              "source elements of type 12",
              "refused: Error: please select at least one domain in the target model",
              "refused: Error: the target mesh is not included in the source mesh.",
              "refused: There is no target point where fields should be interpolated",
              "process ended: A 3*3 Matrix is not inversable in invMatrix33() function."},
             [](const std::string& name, std::uint64_t seed, std::set<std::string>& seen)
             { return differenceOfTransfer(name, randomMeshTransfer(seed), seen); });
}

TEST_F(Differential, MeshToPointCloud)
{
    runCases("mesh_to_point_cloud", 0.2,
             {"success", "cancelled", "outside in mode 0", "far points with defaults", "doubled grid",
              "undefined values", "default fill after a failure", "no callback"},
             [](const std::string& name, std::uint64_t seed, std::set<std::string>& seen)
             { return differenceOfTransfer(name, randomPointCloudTransfer(seed), seen); });
}

TEST_F(Differential, NodeToNode)
{
    runCases("node_to_node", 0.15,
             {"success", "cancelled", "no callback", "doubled grid", "refused: There is no target node.",
              "refused: At least one node of the target mesh does not correspond to ",
              "refused: Extract operation is failed due to following reasons. Please"},
             [](const std::string& name, std::uint64_t seed, std::set<std::string>& seen)
             { return differenceOfCorrespondence(name, randomCorrespondence(seed), true, seen); });
}

TEST_F(Differential, GaussPoints)
{
    runCases("gauss_points", 0.15,
             {"success", "cancelled", "no callback", "doubled grid",
              "refused: At least one gauss point of the target mesh does not corresp"},
             [](const std::string& name, std::uint64_t seed, std::set<std::string>& seen)
             { return differenceOfCorrespondence(name, randomCorrespondence(seed), false, seen); });
}

} // namespace
