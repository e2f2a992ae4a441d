#include "Match.h"

#include "ElementChecks.h"
#include "EngineModel.h"
#include "EngineTuning.h"
#include "Errors.h"
#include "Text.h"
#include "ThreadWorkers.h"

#include "Map/MeshMatching.h"

#include <utility>

namespace veltrane
{
namespace
{

/// The texts that distinguish one correspondence from the other.
struct Texts
{
    const char* title;
    const char* cancelled;
    const char* terminated;
};

constexpr Texts nodeTexts{"Node to node correspondence computation",
                          "Node to node correspondence computation cancelled.",
                          "Node to node correspondence computation terminated successfully."};
constexpr Texts gaussPointTexts{"Gauss point to Gauss point correspondence computation",
                                "Gauss point to Gauss point correspondence computation cancelled.",
                                "Gauss point to Gauss point correspondence computation terminated successfully."};

/// Runs match(meshes, rules, tuning, workers) with its progress reported and its failures thrown.
template <typename Matching>
void run(const Mesh& source, const Mesh& target, const std::vector<int>& flags, const MatchOptions& options,
         const Texts& texts, Matching match)
{
    const SearchTuning tuning = engineTuning(options.tuning);
    ThreadWorkers workers(options.threads, options.progress, texts.title);
    if (!workers.report(0, "Pretreatment"))
    {
        workers.throwStopped(texts.cancelled);
    }
    const Origin origin = options.rules.movesOrigin
                              ? commonOrigin(source, target.coordinates(), tuning.refCoordTolerance, options.threads)
                              : noOrigin;
    const EngineModel sourceModel(source, origin);
    const EngineModel targetModel(target, origin);
    const MapFailure failure = match(MeshPair{sourceModel.model(), targetModel.model(), flags.data()},
                                     engineRules(options.rules), tuning, workers);
    if (workers.isStopped() || (!failure && !workers.report(100, texts.terminated)))
    {
        workers.throwStopped(texts.cancelled);
    }
    if (failure)
    {
        throw TransferError(oneLine(failure.text), failure.reason);
    }
}

/// The engine counts from 1, with 0 for no partner.
std::vector<int> fromZero(std::vector<int> numbers)
{
    for (int& number : numbers)
    {
        number = number == 0 ? noPartner : number - 1;
    }
    return numbers;
}

} // namespace

NodeMatch matchNodes(const Mesh& source, const Mesh& target, const MatchOptions& options)
{
    const std::vector<int> flags = mappingFlags(options.targetMapping, target.materials().size());
    checkSourceKinds(source);
    std::vector<int> partners(static_cast<std::size_t>(target.nodeCount()), 0);
    run(source, target, flags, options, nodeTexts,
        [&](const MeshPair& meshes, const EngineRules& rules, const SearchTuning& tuning, Workers& workers)
        { return ::matchNodes(meshes, rules, tuning, workers, partners.data()); });
    return {fromZero(std::move(partners))};
}

GaussPointMatch matchGaussPoints(const Mesh& source, const Mesh& target, const MatchOptions& options)
{
    const std::vector<int> flags = mappingFlags(options.targetMapping, target.materials().size());
    checkSourceElements(source);
    checkVolumeElements(target, "target", "only Gauss points of volume elements can be matched", flags);
    std::vector<int> elements(target.gaussPointCount(), 0);
    std::vector<int> gaussPoints(target.gaussPointCount(), 0);
    run(source, target, flags, options, gaussPointTexts,
        [&](const MeshPair& meshes, const EngineRules& rules, const SearchTuning& tuning, Workers& workers)
        { return ::matchGaussPoints(meshes, rules, tuning, workers, elements.data(), gaussPoints.data()); });
    return {fromZero(std::move(elements)), fromZero(std::move(gaussPoints))};
}

} // namespace veltrane
