/// Prints one line per random problem: its name, how the call ended, and a digest of everything that a host observes of
/// it. Two builds of the library give the same bits when they give the same lines.
///
///   result_digests [CASES]     VELTRANE_LIBRARY_PATH names another library than the one of this build
#include "Comparison.h"
#include "Digest.h"
#include "LibraryCalls.h"
#include "RandomModels.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

namespace
{

using namespace library_host;
using namespace random_models;

constexpr int defaultNbCases = 600;

void addCall(Digest& digest, const Result& result, CallDirectory& directory)
{
    digest.add(result.errorCode);
    digest.add(result.message);
    for (const Report& call : transcript())
    {
        digest.add(call.progress);
        digest.add(call.title);
        digest.add(call.text);
        digest.add(call.kind);
    }
    digest.add(comparison::withoutSignsOfNaN(directory.takeLog().value_or("no log")));
    digest.add(directory.disturbance());
}

/// Runs a call in a child first: it may end its process. If it returns there, it is made again here, where what it
/// hands back can be seen.
void printDigest(const std::string& name, const Surroundings& surroundings, const std::string& tuningFile,
                 const std::function<void(Result&)>& call, const std::function<void(Digest&)>& addOutputs)
{
    CallDirectory directory(surroundings, tuningFile);
    Result result;
    const ChildsEnd ending = endOfCallInChild([&] { call(result); });
    Digest digest;
    digest.add(ending.printed);
    std::string end = "ended the process, status " + std::to_string(ending.exitStatus);
    if (ending.returned)
    {
        printedByReturningCall(name, [&] { call(result); });
        addCall(digest, result, directory);
        addOutputs(digest);
        end = "code " + std::to_string(result.errorCode);
    }
    std::printf("%-24s %016" PRIx64 "  %s\n", name.c_str(), digest.number(), end.c_str());
}

void printTransfer(const std::string& name, TransferProblem problem)
{
    printDigest(
        name, problem.surroundings, tuningFileOfTransfers, [&](Result& result) { callTransfer(problem, result); },
        [&](Digest& digest)
        {
            for (const FieldModel& field : problem.targetFields)
            {
                digest.add(field.floats);
                digest.add(field.doubles);
            }
        });
}

void printCorrespondence(const std::string& name, CorrespondenceProblem problem, bool ofNodes)
{
    CorrespondenceTables tables(problem.target, ofNodes);
    printDigest(
        name, problem.surroundings, tuningFileOfCorrespondence(ofNodes),
        [&](Result& result) { callCorrespondence(problem, ofNodes, tables, result); },
        [&](Digest& digest)
        {
            for (const IntegerTable* table : {&tables.first, &tables.second})
            {
                for (const std::vector<int>& row : table->rows)
                {
                    digest.add(row);
                }
            }
        });
}

/// Half of the problems are transfers to a mesh, a sixth each belongs to the other computations.
void printCase(int number)
{
    const auto seed = static_cast<std::uint64_t>(number);
    const auto named = [number](std::string computation)
    { return computation.append("_").append(std::to_string(number)); };
    switch (number % 6)
    {
    case 0: printTransfer(named("mesh_to_point_cloud"), randomPointCloudTransfer(seed)); break;
    case 1: printCorrespondence(named("node_to_node"), randomCorrespondence(seed), true); break;
    case 2: printCorrespondence(named("gauss_points"), randomCorrespondence(seed), false); break;
    default: printTransfer(named("mesh_to_mesh"), randomMeshTransfer(seed)); break;
    }
}

} // namespace

int main(int argc, char** argv)
{
    const int nbCases = argc > 1 ? std::atoi(argv[1]) : defaultNbCases;
    for (int number = 1; number <= nbCases; ++number)
    {
        printCase(number);
    }
    return EXIT_SUCCESS;
}
