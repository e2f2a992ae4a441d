#include "Match.h"

#include "ElementChecks.h"
#include "LibraryCall.h"
#include "MeshArguments.h"

#include <tuple>
#include <utility>

namespace veltrane
{
namespace
{

constexpr const char* nodeTuningFileName = "nodToNodInputs.txt";
constexpr const char* gaussPointTuningFileName = "GPToGPInputs.txt";

/// Calls one of the two correspondence functions, which differ in the tables that they fill.
template <typename Function, typename... Tables>
LibraryOutcome run(const char* tuningFileName, Function function, const Mesh& source, const Mesh& target,
                   std::vector<int> flags, const MatchOptions& options, Tables... tables)
{
    MeshArguments sourceArguments(source);
    MeshArguments targetArguments(target);
    const auto computation = [&](char* message, int* errorCode, VeltraneCallback callback)
    {
        std::apply(function, std::tuple_cat(sourceArguments.list(), targetArguments.list(),
                                            std::tuple(flags.data(), tables..., message, errorCode, callback)));
    };
    return callLibrary(tuningFileName, options.tuning, options.progress, computation);
}

/// The library counts from 1, with 0 for no partner.
std::vector<int> fromZero(std::vector<int> numbers)
{
    for (int& number : numbers)
    {
        number = number == 0 ? noPartner : number - 1;
    }
    return numbers;
}

/// A table with a row per element and an entry per Gauss point.
class GaussPointTable
{
public:
    explicit GaussPointTable(const Mesh& mesh) : entries_(mesh.gaussPointCount(), 0)
    {
        rows_.reserve(static_cast<std::size_t>(mesh.elementCount()));
        int* row = entries_.data();
        for (int element = 0; element < mesh.elementCount(); ++element)
        {
            rows_.push_back(row);
            row += mesh.kindOf(element).gaussPointCount;
        }
    }

    int** rows() { return rows_.data(); }
    std::vector<int> takeEntries() { return std::move(entries_); }

private:
    std::vector<int> entries_;
    std::vector<int*> rows_;
};

} // namespace

NodeMatch matchNodes(const Mesh& source, const Mesh& target, const MatchOptions& options)
{
    std::vector<int> flags = mappingFlags(options.targetMapping, target.materials().size());
    checkSourceKinds(source);

    std::vector<int> numbers(static_cast<std::size_t>(target.nodeCount()), 0);
    LibraryOutcome outcome = run(nodeTuningFileName, FE3DMeshToFE3DMesh_NodeToNodeMapping, source, target,
                                 std::move(flags), options, numbers.data());
    return {fromZero(std::move(numbers)), std::move(outcome.message), std::move(outcome.output)};
}

GaussPointMatch matchGaussPoints(const Mesh& source, const Mesh& target, const MatchOptions& options)
{
    std::vector<int> flags = mappingFlags(options.targetMapping, target.materials().size());
    checkSourceElements(source);
    checkVolumeElements(target, "target", "only Gauss points of volume elements can be matched", flags);

    GaussPointTable elements(target);
    GaussPointTable gaussPoints(target);
    LibraryOutcome outcome = run(gaussPointTuningFileName, FE3DMeshToFE3DMesh_GPToGPMapping, source, target,
                                 std::move(flags), options, elements.rows(), gaussPoints.rows());
    return {fromZero(elements.takeEntries()), fromZero(gaussPoints.takeEntries()), std::move(outcome.message),
            std::move(outcome.output)};
}

} // namespace veltrane
