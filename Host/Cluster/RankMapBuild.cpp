// How the ranks build a map together.
#include "RankMap.h"

#include "Agreement.h"
#include "SharedNodes.h"
#include "SourceWindow.h"
#include "StrayPoints.h"
#include "WholeModels.h"

#include "ElementChecks.h"
#include "EngineModel.h"
#include "EngineTuning.h"
#include "Text.h"
#include "ThreadWorkers.h"

#include "Map/Survey.h"
#include "Search/ElementBoxes.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace veltrane
{
namespace
{

/// What must be the same on all ranks.
std::string signatureOf(const MapOptions& options)
{
    std::string flags;
    for (const bool flag : options.targetMapping)
    {
        flags += flag ? '1' : '0';
    }
    const Rules& rules = options.rules;
    return text(static_cast<int>(options.mode), options.toNodes, options.toGaussPoints, options.fromGaussPoints,
                rules.inDoublePrecision, rules.movesOrigin, rules.pointsMayBeNear, rules.nearLimit, " ", flags);
}

/// The box of what is selected in a part of the target.
void surveyPart(const ModelClass& model, const std::vector<int>& flags, SurveyedBoxes& boxes, Workers& workers)
{
    if (model.itsKind == ModelKind::mesh)
    {
        surveyTarget({model, flags.data(), {}}, boxes, workers);
        return;
    }
    for (int point = 0; point < model.itsNbNodes; ++point)
    {
        if (flags[sizeOf(model.itsMatlIdPerItem[point])] == 1)
        {
            boxes.selectedTarget.add(boxOfPoint(model.itsNodeCoords[point]));
        }
    }
}

/// The buckets that a part of the target touches; one of them if it touches none.
BucketRange windowOf(const ModelClass& model, const BucketSpaceClass& space, float marginRatio)
{
    const BucketRanges ranges = space.ranges();
    BucketRange window;
    for (int elt = 0; elt < model.itsNbElts; ++elt)
    {
        window = window.joinedWith(ranges(inflated(boxLanesOfElt(model, elt), marginRatio)));
    }
    const float reach = marginRatio * space.itsBucketSize;
    for (int point = 0; model.itsKind == ModelKind::pointCloud && point < model.itsNbNodes; ++point)
    {
        const ::Box box = BucketSpaceClass::boxAroundPoint(model.itsNodeCoords[point], reach);
        const std::array<float, 6> values{box.low[0], box.low[1], box.low[2], box.high[0], box.high[1], box.high[2]};
        window = window.joinedWith(ranges(values.data()));
    }
    if (window.isEmpty())
    {
        std::fill_n(window.high, 3, 0);
    }
    return window;
}

} // namespace

void RankMap::build(const MeshPart& source, const MeshPart& target, const MapOptions& options)
{
    checkSame(ranks_, signatureOf(options), "options");
    std::vector<int> flags;
    agree(ranks_,
          [&]
          {
              flags = mappingFlags(options.targetMapping, target.mesh.materials().size());
              if (options.toGaussPoints)
              {
                  checkVolumeElements(target.mesh, "target",
                                      "Gauss-point fields need a target of volume elements only");
              }
          });
    checkMaterials(ranks_, target.mesh.materials(), "target");
    targetOrder_ = elementOrder(ranks_, target.mesh.elementCount(), target.elementNumbers, "target");
    const ElementOrder sourceOrder = elementOrder(ranks_, source.mesh.elementCount(), source.elementNumbers, "source");
    findNodeMaterials(target);
    buildMap(source, sourceOrder, target.mesh, flags);
    settleFar(target, flags);
    settleAverages(source, sourceOrder, options);
    count(true);
    targetOrder_ = {};
}

void RankMap::build(const MeshPart& source, const PointCloud& points, const MapOptions& options)
{
    checkSame(ranks_, signatureOf(options), "options");
    std::vector<int> flags;
    agree(ranks_,
          [&]
          {
              flags = mappingFlags(options.targetMapping, points.materials().size());
              if (options.mode == OutsideMode::propagate)
              {
                  throw InvalidOption("values cannot be propagated to points, which have no neighbours");
              }
          });
    checkMaterials(ranks_, points.materials(), "target");
    const ElementOrder sourceOrder = elementOrder(ranks_, source.mesh.elementCount(), source.elementNumbers, "source");
    buildMap(source, sourceOrder, points, flags);
    settleAverages(source, sourceOrder, options);
    count(false);
}

void RankMap::findNodeMaterials(const MeshPart& target)
{
    const SharedNodes shared = findSharedNodes(ranks_, target.mesh, target.nodeNumbers, "target");
    targetNodes_ = settleTargetNodes(ranks_, target.mesh, targetOrder_, shared);
    part_.figures.matlIdPerNode = targetNodes_.materials.data();
}

template <class Target>
void RankMap::buildMap(const MeshPart& source, const ElementOrder& sourceOrder, const Target& target,
                       const std::vector<int>& flags)
{
    checkMaterials(ranks_, source.mesh.materials(), "source");
    checkSame(ranks_, text(static_cast<int>(source.mesh.gaussPointRule())), "Gauss points of the source");
    sourceNodeCount_ = static_cast<std::size_t>(source.mesh.nodeCount());
    sourceGaussPointCount_ = source.mesh.gaussPointCount();
    SearchTuning tuning;
    std::optional<ThreadWorkers> workers;
    agree(ranks_,
          [&]
          {
              checkSourceKinds(source.mesh);
              tuning = engineTuning(options_.tuning);
              workers.emplace(options_.threads);
          });
    if (options_.rules.movesOrigin)
    {
        part_.origin = wholeOrigin(ranks_, source.mesh, target.coordinates(), tuning.refCoordTolerance);
    }
    part_.hasExactSource = ranks_.isAnywhere(!source.mesh.exactCoordinates().empty());
    part_.hasExactTarget = ranks_.isAnywhere(!target.exactCoordinates().empty());

    PartOfWhole& figures = part_.figures;
    MovedMesh window;
    {
        std::optional<EngineModel> sourceModel;
        std::optional<EngineModel> targetModel;
        BoxTable boxes;
        agree(ranks_,
              [&]
              {
                  sourceModel.emplace(source.mesh, part_.origin);
                  targetModel.emplace(target, part_.origin);
                  if (boxes.allocate(source.mesh.elementCount(), 2, 3) != TableBlock::none)
                  {
                      throw std::bad_alloc();
                  }
                  float ownSum = 0;
                  surveySource(sourceModel->model(), tuning.boxMarginRatio, boxes, figures.boxes, ownSum, *workers);
                  surveyPart(targetModel->model(), flags, figures.boxes, *workers);
              });
        figures.boxes.source = wholeBox(ranks_, figures.boxes.source);
        figures.boxes.selectedTarget = wholeBox(ranks_, figures.boxes.selectedTarget);
        figures.boxes.areOfWhole = true;
        const auto extentsOf = [&](int element)
        {
            const Vector3 extents = boxOfElement(boxes, element).extents();
            return std::array<float, 3>{absoluteValue(extents[0]), absoluteValue(extents[1]),
                                        absoluteValue(extents[2])};
        };
        const float sum = sumInOrder(ranks_, sourceOrder, extentsOf);
        figures.meanSize = meanElementSize(sum, ranks_.sum(source.mesh.elementCount()));

        BucketSpaceClass space;
        space.itsMaxNbBuckets = tuning.maxNbBuckets;
        if (!figures.boxes.selectedTarget.isEmpty())
        {
            space.layOut(figures.boxes.selectedTarget.box(), figures.meanSize, tuning.boxMarginRatio);
            figures.window = windowOf(targetModel->model(), space, tuning.boxMarginRatio);
            if (options_.toGaussPoints)
            {
                strayBuckets_ = bucketsOfStrayPoints(ranks_, targetModel->model(), space, tuning.boxMarginRatio);
                figures.furtherNeeded = strayBuckets_;
            }
            for (const BucketRange& bucket : strayBuckets_)
            {
                figures.window = figures.window.joinedWith(bucket);
            }
        }
        else
        {
            std::fill_n(figures.window.high, 3, 0);
            std::fill_n(space.itsNbBuckets, 3, 1);
        }
        window = gatherSource(ranks_, {source.mesh, sourceOrder}, boxes, space.ranges(), figures.window,
                              tuning.bucketFactor, part_.hasExactSource);
    }
    agree(ranks_, [&] { map_.emplace(Map(buildPart(*window.mesh, target, options_, part_))); });
    nodes_ = std::move(window.nodes);
    windowElements_ = std::move(window.elementNumbers);
}

/// Gives far nodes a plan by which values come to them.
void RankMap::settleFar(const MeshPart& target, const std::vector<int>& flags)
{
    if (options_.mode != OutsideMode::propagate || !ranks_.isAnywhere(engineMap().statistics().nbFarNodes > 0))
    {
        return;
    }
    const MapTable& table = engineMap().table();
    agree(ranks_,
          [&]
          {
              for (std::int64_t node = 0; node < table.nbNodes; ++node)
              {
                  isUnreached_.push_back(table.finding(node) == ::Finding::far ? 1 : 0);
              }
          });
    far_.emplace(ranks_, TargetInParts{target.mesh, targetOrder_, target.nodeNumbers, flags}, isUnreached_);
}

void RankMap::settleAverages(const MeshPart& source, const ElementOrder& order, const MapOptions& options)
{
    if (options.fromGaussPoints)
    {
        const SharedNodes shared = findSharedNodes(ranks_, source.mesh, source.nodeNumbers, "source");
        averages_.emplace(ranks_, source.mesh, order, shared);
    }
}

void RankMap::count(bool isMesh)
{
    const MapTable& table = engineMap().table();
    std::array<std::int64_t, 6> counts{};
    std::int64_t mapped = 0;
    const auto countRow = [&](std::int64_t row, std::size_t first)
    {
        const ::Finding finding = table.finding(row);
        mapped += finding != ::Finding::notMapped ? 1 : 0;
        counts[0] += table.hasWeights(row) ? 1 : 0;
        counts[first] += finding == ::Finding::near ? 1 : 0;
        counts[first + 1] += finding == ::Finding::far || finding == ::Finding::reached ? 1 : 0;
        const bool isOutside = finding != ::Finding::inside && finding != ::Finding::notMapped;
        counts[5] += isOutside && (table.findings[row] & MapTable::unconverged) != 0 ? 1 : 0;
    };
    for (std::int64_t row = 0; row < table.nbRows(); ++row)
    {
        const bool isNode = row < table.nbNodes;
        if (!isNode || !isMesh || isOwn(row))
        {
            countRow(row, isNode ? 1 : 3);
        }
    }
    const std::int64_t mappedOfAll = ranks_.sum(mapped);
    agree(ranks_,
          [&]
          {
              if (mappedOfAll == 0)
              {
                  throw TransferError("There is no target point where fields should be interpolated.", 1);
              }
          });
    DistributedStatistics& statistics = statistics_;
    statistics.bucketCount = engineMap().statistics().nbBuckets;
    statistics.interpolatedPointCount = ranks_.sum(counts[0]);
    statistics.nearNodeCount = ranks_.sum(counts[1]);
    statistics.farNodeCount = ranks_.sum(counts[2]);
    statistics.nearGaussPointCount = ranks_.sum(counts[3]);
    statistics.farGaussPointCount = ranks_.sum(counts[4]);
    statistics.unconvergedPointCount = ranks_.sum(counts[5]);
    statistics.origin = part_.origin;
    statistics.windowElementCount = static_cast<std::int64_t>(windowElements_.size());
    std::vector<std::int64_t> singular;
    for (const int element : engineMap().singularElts())
    {
        singular.push_back(windowElements_[sizeOf(element)]);
    }
    // All tell all: there are few.
    std::vector<std::vector<std::int64_t>> lists(sizeOf(ranks_.size()), singular);
    statistics.singularElements = Exchange(ranks_, sizesOf(lists)).run(lists);
    std::ranges::sort(statistics.singularElements);
    statistics.singularElements.erase(
        std::unique(statistics.singularElements.begin(), statistics.singularElements.end()),
        statistics.singularElements.end());
    windowElements_ = {};
}

} // namespace veltrane
