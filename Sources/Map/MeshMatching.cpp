#include "MeshMatching.h"

#include "Admission.h"
#include "Matching.h"
#include "Survey.h"

#include "../Fault.h"

#include "../Search/PointBatch.h"

#include <algorithm>
#include <atomic>
#include <limits>

namespace
{
constexpr Stage matchingStage{"Computation", 5, 100};
constexpr std::int64_t nowhere = std::numeric_limits<std::int64_t>::max();

/// The least number that any thread has noted.
class First
{
public:
    void note(std::int64_t number)
    {
        std::int64_t first = itsFirst.load(std::memory_order_relaxed);
        while (number < first && !itsFirst.compare_exchange_weak(first, number, std::memory_order_relaxed))
        {
        }
    }
    std::int64_t value() const { return itsFirst; }

private:
    std::atomic<std::int64_t> itsFirst = nowhere;
};

/// The boxes and the grid that a correspondence searches.
struct Index
{
    BoxTable boxes;
    BucketSpaceClass space;
    float meanSize = 0.0F;

    MapFailure build(BucketSpaceClass::Mode mode, const MeshPair& meshes, const Target& target,
                     const EngineRules& rules, const SearchTuning& tuning, Workers& workers)
    {
        if (boxes.allocate(meshes.source.itsNbElts, 2, 3) != TableBlock::none)
        {
            return noMemoryFailure();
        }
        SurveyedBoxes surveyed;
        float sum = 0.0F;
        if (!surveySource(meshes.source, tuning.boxMarginRatio, boxes, surveyed, sum, workers) ||
            !surveyTarget(target, surveyed, workers))
        {
            return cancelledFailure();
        }
        meanSize = sum / static_cast<float>(3 * static_cast<std::int64_t>(meshes.source.itsNbElts));
        space.itsRefusesOverhang = rules.refusesOverhang;
        space.itsMaxNbBuckets = tuning.maxNbBuckets;
        space.itsWorkers = workers.nbWorkers() > 1 ? &workers : nullptr;
        char* text = space.build(mode, meshes.target, meshes.source, boxes, {}, meshes.targetMatlMappingFlags, meanSize,
                                 tuning.boxMarginRatio, tuning.bucketFactor, &surveyed);
        if (text == nullptr)
        {
            return {};
        }
        const MapFailure failure(MapFailure::refused, text);
        releaseString(text);
        return failure;
    }
};
} // namespace

MapFailure matchNodes(const MeshPair& meshes, const EngineRules& rules, const SearchTuning& tuning, Workers& workers,
                      int* partners)
{
    const ModelClass& source = meshes.source;
    const ModelClass& target = meshes.target;
    if (const char* text = rules.admitsTypeCodesOnly ? nodeMatchingRefusal(source, target) : nullptr)
    {
        return {MapFailure::refused, text};
    }
    OwnedArray<int> sourceStates;
    OwnedArray<int> targetStates;
    OwnedArray<int> flags;
    if (!sourceStates.allocate(source.itsNbNodes) || !targetStates.allocate(target.itsNbNodes) ||
        !flags.allocate(target.itsNbNodes))
    {
        return noMemoryFailure();
    }
    assignMaterialsToNodes(source, nullptr, {nullptr, sourceStates.get(), nullptr});
    const NodeMaterials nodes{nullptr, targetStates.get(), flags.get()};
    assignMaterialsToNodes(target, meshes.targetMatlMappingFlags, nodes);
    Index index;
    if (const MapFailure failure = index.build(BucketSpaceClass::nodeBuckets, meshes,
                                               {target, meshes.targetMatlMappingFlags, nodes}, rules, tuning, workers))
    {
        return failure;
    }
    if (std::count(flags.get(), flags.get() + target.itsNbNodes, 1) == 0)
    {
        return {MapFailure::refused, "There is no target node.\n"};
    }
    const NodeMatcher matcher{source, sourceStates.get(), index.space, single(index.meanSize * 0.001)};
    First unmatched;
    const auto matchNode = [&](std::int64_t node)
    {
        if (flags[node] != 1)
        {
            return;
        }
        partners[node] = matcher.find(target.nodePosition(static_cast<int>(node)), targetStates[node]);
        if (partners[node] == 0)
        {
            unmatched.note(node);
        }
    };
    if (!forEachItem(workers, matchingStage, target.itsNbNodes, matchNode))
    {
        return cancelledFailure();
    }
    return unmatched.value() == nowhere
               ? MapFailure()
               : MapFailure(MapFailure::refused,
                            matcher.reasonFor(target.nodePosition(static_cast<int>(unmatched.value()))));
}

namespace
{
/// The matching of Gauss points, once there is an index.
class GaussPointMatching
{
public:
    GaussPointMatching(const MeshPair& meshes, const Index& index, Workers& workers, int* partnerElts,
                       int* partnerGaussPoints)
        : itsSource(meshes.source), itsTarget(meshes.target), itsIndex(index), itsWorkers(workers),
          itsPartnerElts(partnerElts), itsPartnerGaussPoints(partnerGaussPoints)
    {
    }

    MapFailure match(const Target& target, const EngineRules& rules, const SearchTuning& tuning)
    {
        OwnedArray<unsigned char> singularElts;
        PointBatch batch;
        if (!countGaussPoints() || !singularElts.allocate(itsSource.itsNbElts) || !batch.allocate(itsTarget.itsNbElts))
        {
            return noMemoryFailure();
        }
        const PointLocator locator(itsSource, itsIndex.boxes, itsIndex.space, tuning.refCoordTolerance,
                                   rules.singularElements, singularElts.get());
        CentreCursor centres(target);
        while (batch.fill(centres))
        {
            batch.locate(locator);
            First failing;
            const auto matchElt = [&](std::int64_t i)
            {
                if (!matchGaussPointsAt(batch, static_cast<std::size_t>(i)))
                {
                    failing.note(i);
                }
            };
            if (!forEachItem(itsWorkers, matchingStage, static_cast<std::int64_t>(batch.size()), matchElt))
            {
                return cancelledFailure();
            }
            if (failing.value() != nowhere)
            {
                const auto i = static_cast<std::size_t>(failing.value());
                if (batch.located(i).isSingular)
                {
                    locator.search(batch.point(i).position, batch.point(i).matlState); // leaves
                }
                return {MapFailure::refused, unmatchedGaussPointText};
            }
        }
        return {};
    }

private:
    bool countGaussPoints()
    {
        if (!itsFirstGaussPoints.allocate(itsTarget.itsNbElts))
        {
            return false;
        }
        std::int64_t nbGaussPoints = 0;
        for (int elt = 0; elt < itsTarget.itsNbElts; ++elt)
        {
            itsFirstGaussPoints[elt] = nbGaussPoints;
            nbGaussPoints += itsTarget.nbGaussPointsOfElt(elt);
        }
        return true;
    }

    /// Whether all Gauss points of the element of the batch's i-th centre have partners.
    bool matchGaussPointsAt(const PointBatch& batch, std::size_t i) const
    {
        const LocatedPoint& located = batch.located(i);
        const auto elt = static_cast<int>(batch.point(i).index);
        if (located.elt == noElement)
        {
            return false;
        }
        const float tolerance = itsIndex.meanSize * single(0.001);
        const int nbGaussPoints = itsTarget.nbGaussPointsOfElt(elt);
        bool areMatched = true;
        for (int gaussPoint = 0; gaussPoint < nbGaussPoints; ++gaussPoint)
        {
            const std::int64_t entry = itsFirstGaussPoints[elt] + gaussPoint;
            itsPartnerElts[entry] = located.elt + 1;
            itsPartnerGaussPoints[entry] =
                matchingGaussPoint(itsSource, located.elt, itsTarget.gaussPointPosition(elt, gaussPoint), tolerance);
            areMatched = areMatched && itsPartnerGaussPoints[entry] != 0;
        }
        return areMatched;
    }

    const ModelClass& itsSource;
    const ModelClass& itsTarget;
    const Index& itsIndex;
    Workers& itsWorkers;
    int* itsPartnerElts;
    int* itsPartnerGaussPoints;
    OwnedArray<std::int64_t> itsFirstGaussPoints; ///< per target element
};
} // namespace

MapFailure matchGaussPoints(const MeshPair& meshes, const EngineRules& rules, const SearchTuning& tuning,
                            Workers& workers, int* partnerElts, int* partnerGaussPoints)
{
    const char* text = rules.admitsTypeCodesOnly ? gaussPointMatchingRefusal(meshes.source, meshes.target) : nullptr;
    if (text != nullptr)
    {
        return {MapFailure::refused, text};
    }
    const Target target{meshes.target, meshes.targetMatlMappingFlags, {}};
    Index index;
    if (const MapFailure failure =
            index.build(BucketSpaceClass::elementBuckets, meshes, target, rules, tuning, workers))
    {
        return failure;
    }
    if (target.nbSelectedGaussPoints() == 0)
    {
        return {MapFailure::refused, "There is no target gauss point.\n"};
    }
    return GaussPointMatching(meshes, index, workers, partnerElts, partnerGaussPoints).match(target, rules, tuning);
}
