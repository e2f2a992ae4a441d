// libFuzzer target: maps between models of any geometry, built and applied by one worker and by three, which come to
// the same bits or to the same refusal.
#include "FuzzedModels.h"

#include "Errors.h"
#include "Map/TransferMap.h"
#include "ThreadWorkers.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace
{
/// What the C++ interface lets through to the engine.
bool hasVolumesOnly(const FuzzedMesh& mesh)
{
    return std::ranges::all_of(mesh.types, hasShapeFunctions);
}

ModelClass& initialised(ModelClass& model, FuzzedMesh& mesh, bool isCloud, const std::vector<int>& matlPerPoint)
{
    model.init(isCloud ? ModelKind::pointCloud : ModelKind::mesh, isCloud ? 0 : mesh.nbElts(), mesh.nbNodes(),
               mesh.nodeCoords(), isCloud ? nullptr : mesh.connectivity.data(), isCloud ? nullptr : mesh.types.data(),
               static_cast<int>(mesh.matlStates.size()), isCloud ? matlPerPoint.data() : mesh.matlPerElt.data(),
               mesh.matlStates.data());
    return model;
}

MapSettings settingsFrom(FuzzedBytes& bytes, bool isExported, bool isCloud)
{
    MapSettings settings;
    settings.rules = isExported ? asExported() : withoutLimits();
    settings.rules.cloudsHaveNoNearMisses = isExported || bytes.oneIn(2);
    settings.farPoints = static_cast<FarPoints>(bytes.between(0, isCloud ? 1 : 2));
    settings.atGaussPoints = !isCloud && bytes.oneIn(2);
    settings.atNodes = !settings.atGaussPoints || bytes.oneIn(2);
    settings.fromGaussPoints = bytes.oneIn(2);
    if (bytes.oneIn(4))
    {
        settings.nearLimit = bytes.number();
    }
    settings.tuning.maxNbBuckets = bytes.between(1, 60000);
    settings.isDouble = bytes.oneIn(2);
    return settings;
}

struct Result
{
    std::string refusal;
    std::vector<std::byte> map;
    std::vector<std::uint32_t> values; ///< bit patterns
};

std::vector<std::uint32_t> appliedTo(const TransferMap& map, FuzzedBytes bytes, Workers& workers)
{
    std::vector<std::uint32_t> bits;
    const int nbComponents = bytes.between(1, 9);
    const bool isClassOneOnly = bytes.oneIn(3);
    const float slope = bytes.number();
    const auto rule = static_cast<GaussRuleChoice>(bytes.between(0, 1));
    for (const Location target : {atNodes, atGaussPoints})
    {
        const std::int64_t nbTargets = target == atNodes ? map.nbNodes() : map.nbGaussPoints();
        for (const Location source : {atNodes, atGaussPoints})
        {
            const std::int64_t nbSources = source == atNodes ? map.nbSourceNodes() : map.nbSourceGaussPoints(rule);
            if (nbTargets == 0 || (source == atGaussPoints && !map.mapsFromGaussPoints()))
            {
                continue;
            }
            std::vector<float> sources(static_cast<std::size_t>(nbSources * nbComponents) + 1);
            for (std::size_t i = 0; i < sources.size(); ++i)
            {
                sources[i] = slope * static_cast<float>(i);
            }
            std::vector<float> targets(static_cast<std::size_t>(nbTargets * nbComponents), 0.5F);
            const MapField field{.sourceLocation = source,
                                 .sourceRule = rule,
                                 .sourceFloats = sources.data(),
                                 .targetLocation = target,
                                 .targetFloats = targets.data(),
                                 .nbComponents = nbComponents,
                                 .isClassOneOnly = isClassOneOnly,
                                 .defaultValue = 3.0F};
            std::vector<std::byte> workspace(static_cast<std::size_t>(map.workspaceSize({&field, 1})));
            if (map.apply({&field, 1}, workspace, workers) != nullptr)
            {
                std::abort();
            }
            std::ranges::transform(targets, std::back_inserter(bits),
                                   [](float value) { return std::bit_cast<std::uint32_t>(value); });
        }
    }
    return bits;
}

Result run(const ModelClass& source, const ModelClass& target, const FuzzedMesh& flags, const MapSettings& settings,
           const FuzzedBytes& bytes, int threads)
{
    veltrane::ThreadWorkers workers(threads);
    TransferMap map;
    try
    {
        if (const MapFailure failure = map.build(source, target, flags.matlFlags.data(), settings, workers))
        {
            return {failure.text, {}, {}};
        }
    }
    catch (const veltrane::TransferError& fault)
    {
        return {fault.what(), {}, {}};
    }
    std::vector<std::byte> stored(static_cast<std::size_t>(map.storedSize()));
    map.store(stored.data());
    TransferMap restored;
    if (restored.restore(stored) != nullptr)
    {
        std::abort();
    }
    return {"", std::move(stored), appliedTo(threads == 1 ? map : restored, bytes, workers)};
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedBytes bytes({data, size});
    const bool isExported = bytes.oneIn(2);
    const bool isCloud = bytes.oneIn(3);
    FuzzedMesh source(bytes, !isExported);
    FuzzedMesh other(bytes, !isExported);
    FuzzedMesh& target = bytes.oneIn(3) ? source : other;
    std::vector<int> matlPerPoint(target.coords.size());
    for (int& matl : matlPerPoint)
    {
        matl = bytes.between(0, static_cast<int>(target.matlStates.size()) - 1);
    }
    const MapSettings settings = settingsFrom(bytes, isExported, isCloud);
    if (!isExported && (!hasVolumesOnly(source) || (settings.atGaussPoints && !hasVolumesOnly(target))))
    {
        return 0;
    }
    ModelClass sourceModel;
    ModelClass targetModel;
    initialised(sourceModel, source, false, {});
    initialised(targetModel, target, isCloud, matlPerPoint);
    sourceModel.itsAdmitsAllKinds = !isExported;
    targetModel.itsAdmitsAllKinds = !isExported;
    targetModel.itsGaussRule = static_cast<GaussRuleChoice>(bytes.between(0, 1));
    const Result alone = run(sourceModel, targetModel, target, settings, bytes, 1);
    const Result together = run(sourceModel, targetModel, target, settings, bytes, 3);
    if (alone.refusal != together.refusal || alone.map != together.map || alone.values != together.values)
    {
        std::abort();
    }
    return 0;
}
