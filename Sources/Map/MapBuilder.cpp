// The building of a map: what a transfer does before it reads a value, in pieces that can be run side by side.
#include "Admission.h"
#include "BucketUse.h"
#include "NearestElement.h"
#include "PerWorker.h"
#include "Polishing.h"
#include "Propagation.h"
#include "Survey.h"
#include "TransferMap.h"
#include "Weights.h"

#include "../Fault.h"
#include "../Search/PointBatch.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <optional>

namespace
{
constexpr Stage locationStage{"Computation", 5, 90};
constexpr Stage weightStage{"Computation", 90, 100};

/// What ends the building, at the first location in order where it happens: pieces may come upon several.
enum class Event : int
{
    singularInSearch,
    singularNearby,
    outside,
    withoutWeights,
    none
};

class FirstEvent
{
public:
    /// Any thread.
    void note(std::int64_t row, Event event)
    {
        const std::int64_t key = row * nbEvents + static_cast<int>(event);
        std::int64_t first = itsFirst.load(std::memory_order_relaxed);
        while (key < first && !itsFirst.compare_exchange_weak(first, key, std::memory_order_relaxed))
        {
        }
    }

    Event event() const { return itsFirst == none ? Event::none : static_cast<Event>(itsFirst % nbEvents); }
    std::int64_t row() const { return itsFirst / nbEvents; }

private:
    static constexpr std::int64_t nbEvents = static_cast<int>(Event::none);
    static constexpr std::int64_t none = std::numeric_limits<std::int64_t>::max();
    std::atomic<std::int64_t> itsFirst = none;
};

/// A point that lies in no element, and what becomes of it.
struct OutsidePoint
{
    TargetPoint point;
    float distance; ///< of a near one to the place that its weights give, else notNear
};
constexpr float notNear = -1.0F;

template <class T> bool allocateFilled(OwnedArray<T>& array, std::int64_t count, T value)
{
    if (!array.allocate(count))
    {
        return false;
    }
    std::fill_n(array.get(), count, value);
    return true;
}

float distanceToWeights(const ModelClass& source, const LocatedPoint& located, const ShapeValues& shape,
                        const Vector3& point)
{
    const int* nodes = source.itsConnectivity[located.elt];
    std::array<double, 3> place{};
    for (int i = 0; i < shape.nbNodes; ++i)
    {
        const Vector3 node = source.nodePosition(nodes[i]);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            place[axis] += static_cast<double>(shape.values[i]) * static_cast<double>(node[axis]);
        }
    }
    const std::array<double, 3> position{point[0], point[1], point[2]};
    return single(std::sqrt(squaredDistance(place, position)));
}
} // namespace

class MapBuilder
{
public:
    MapBuilder(TransferMap& map, const ModelClass& source, const ModelClass& target, const int* flags,
               const MapSettings& settings, Workers& workers)
        : itsMap(map), itsTable(map.itsTable), itsSource(source), itsTarget{target, flags, {}}, itsSettings(settings),
          itsWorkers(workers)
    {
    }

    MapFailure build()
    {
        MapFailure failure = prepare();
        if (!failure && itsSettings.atNodes)
        {
            failure = locateSection(0, itsNodePieces);
        }
        if (!failure && itsSettings.farPoints == FarPoints::propagate && itsSettings.part == nullptr &&
            itsMap.itsStatistics.nbFarNodes > 0)
        {
            failure = planPropagation();
        }
        const bool isStopping = itsSettings.rules.stopsAtUnreachedNodes && !itsMap.itsPropagation.isComplete;
        if (!failure && itsSettings.atGaussPoints && !isStopping)
        {
            failure = locateSection(itsTable.nbNodes, itsGaussPieces);
        }
        if (!failure && itsSettings.looksForOverlap)
        {
            lookForOverlap();
        }
        return failure ? failure : finish();
    }

private:
    /// A piece of the target: nodes, or elements and the number of their first Gauss point.
    struct TargetPiece
    {
        std::int64_t first;
        std::int64_t end;
        std::int64_t firstGaussPoint;
    };
    using TargetPieces = OwnedArray<TargetPiece>;
    struct PieceList
    {
        TargetPieces pieces;
        std::int64_t count = 0;
        std::int64_t mostPoints = 0; ///< in any piece
        bool areNodes = true;
    };

    MapFailure prepare();
    MapFailure fillBuckets(const SurveyedBoxes& surveyed, float sizeSum);
    bool allocateTable();
    bool assignMaterials();
    bool makePieces();
    template <class Use> void withCursor(const TargetPiece& piece, bool areNodes, Use use) const;
    MapFailure locateSection(std::int64_t firstRow, const PieceList& list);
    std::int64_t locatePoints(const TargetPiece& piece, bool areNodes, std::int64_t firstRow, PointBatch& batch);
    void note(std::int64_t row, const TargetPoint& point, const LocatedPoint& located);
    void noteElement(std::int64_t row, const LocatedPoint& located, Finding finding);
    bool mayBeNear() const;
    MapFailure treatOutsidePoints(std::int64_t firstRow, const PieceList& list, std::int64_t nbOutside);
    void listOutsidePoints(std::int64_t firstRow, const PieceList& list, std::int64_t nbOutside,
                           OutsidePoint* points) const;
    void treat(OutsidePoint& outside, std::int64_t firstRow, const NearestElement& nearest);
    bool keepNearMisses(std::span<const OutsidePoint> points, std::int64_t firstRow);
    MapFailure failureOfEvent(std::int64_t firstRow, const PieceList& list, const NearestElement& nearest) const;
    void leaveAt(std::int64_t index, const PieceList& list, const NearestElement& nearest) const;
    MapFailure planPropagation();
    void lookForOverlap();
    MapFailure finish();
    bool allocateWeights();
    void computeWeights(std::int64_t row);
    bool polishRows();
    bool listSingularElements();
    bool makeAveraging();

    TransferMap& itsMap;
    MapTable& itsTable;
    const ModelClass& itsSource;
    Target itsTarget;
    const MapSettings& itsSettings;
    Workers& itsWorkers;

    OwnedArray<int> itsMatlIds;
    OwnedArray<int> itsMatlStates;
    OwnedArray<int> itsMappingFlags;
    PieceList itsNodePieces;
    PieceList itsGaussPieces;
    /// Where elements lie: what is needed until all locations have been found.
    struct Search
    {
        BoxTable boxes;
        BucketSpaceClass space;
    };
    std::optional<Search> itsSearch{std::in_place};
    std::optional<PointLocator> itsLocator;
    OwnedArray<unsigned char> itsSingularFlags;
    OwnedArray<unsigned char> itsIterations; ///< per row with weights
    FirstEvent itsEvent;
    std::atomic<std::int64_t> itsNbJumping = 0;
};

MapFailure TransferMap::build(const ModelClass& source, const ModelClass& target, const int* targetMatlMappingFlags,
                              const MapSettings& settings, Workers& workers)
{
    TransferMap map;
    MapFailure failure = MapBuilder(map, source, target, targetMatlMappingFlags, settings, workers).build();
    if (!failure)
    {
        *this = std::move(map);
    }
    return failure;
}

/// Everything up to the grid.
MapFailure MapBuilder::prepare()
{
    const ModelClass& target = itsTarget.model;
    if (const char* text = itsSettings.rules.admitsTypeCodesOnly ? interpolationRefusal(itsSource, target) : nullptr)
    {
        return {MapFailure::refused, text};
    }
    itsMap.itsFarPoints = itsSettings.farPoints;
    itsMap.itsNbSourceNodes = itsSource.itsNbNodes;
    itsMap.itsStatistics.origin = itsSettings.origin;
    for (int elt = 0; elt < itsSource.itsNbElts; ++elt)
    {
        // By the full rule of every kind: values by the other rule are told from their number.
        itsMap.itsNbSourceGaussPoints +=
            itsSource.hasShapeFunctionsOfElt(elt) ? nbGaussPointsOfKind(itsSource.itsEltTypes[elt]) : 0;
    }
    SurveyedBoxes surveyed;
    if (itsSearch->boxes.allocate(itsSource.itsNbElts, 2, 3) != TableBlock::none)
    {
        return noMemoryFailure();
    }
    float sizeSum = 0.0F;
    if (!surveySource(itsSource, itsSettings.tuning.boxMarginRatio, itsSearch->boxes, surveyed, sizeSum, itsWorkers))
    {
        return cancelledFailure();
    }
    if (!assignMaterials() || !makePieces() || !allocateTable() ||
        !allocateFilled<unsigned char>(itsSingularFlags, itsSource.itsNbElts, 0))
    {
        return noMemoryFailure();
    }
    const PartOfWhole* part = itsSettings.part;
    if (part != nullptr)
    {
        surveyed = part->boxes;
        itsSearch->space.setWindow(part->window);
        itsSearch->space.itsFurtherNeeded = part->furtherNeeded;
    }
    else if (!itsTarget.isCloud() && !surveyTarget(itsTarget, surveyed, itsWorkers))
    {
        return cancelledFailure();
    }
    if (MapFailure failure = fillBuckets(surveyed, sizeSum))
    {
        return failure;
    }
    const std::int64_t nbPoints = (itsSettings.atNodes ? itsTarget.nbMappedNodes() : 0) +
                                  (itsSettings.atGaussPoints ? itsTarget.nbSelectedGaussPoints() : 0);
    if (nbPoints == 0 && part == nullptr)
    {
        return {MapFailure::refused, "There is no target point where fields should be interpolated.\n"};
    }
    itsLocator.emplace(itsSource, itsSearch->boxes, itsSearch->space, itsSettings.tuning.refCoordTolerance,
                       itsSettings.rules.singularElements, itsSingularFlags.get());
    return {};
}

/// Enters the source's elements into the buckets that the target needs.
MapFailure MapBuilder::fillBuckets(const SurveyedBoxes& surveyed, float sizeSum)
{
    itsSearch->space.itsRefusesOverhang = itsSettings.rules.refusesOverhang;
    itsSearch->space.itsMaxNbBuckets = itsSettings.tuning.maxNbBuckets;
    itsSearch->space.itsWorkers = itsWorkers.nbWorkers() > 1 ? &itsWorkers : nullptr;
    const PartOfWhole* part = itsSettings.part;
    const float meanSize = part != nullptr ? part->meanSize : meanElementSize(sizeSum, itsSource.itsNbElts);
    char* errorText = itsSearch->space.build(
        BucketSpaceClass::elementBuckets, itsTarget.model, itsSource, itsSearch->boxes, {}, itsTarget.matlMappingFlags,
        meanSize, itsSettings.tuning.boxMarginRatio, itsSettings.tuning.bucketFactor, &surveyed);
    if (errorText != nullptr)
    {
        const MapFailure failure(MapFailure::refused, errorText);
        releaseString(errorText);
        return failure;
    }
    return {};
}

bool MapBuilder::assignMaterials()
{
    if (itsTarget.isCloud() || !itsSettings.atNodes)
    {
        return true;
    }
    const std::int64_t nbNodes = itsTarget.model.itsNbNodes;
    if (!itsMatlIds.allocate(nbNodes) || !itsMatlStates.allocate(nbNodes) || !itsMappingFlags.allocate(nbNodes))
    {
        return false;
    }
    itsTarget.nodes = {itsMatlIds.get(), itsMatlStates.get(), itsMappingFlags.get()};
    if (itsSettings.part != nullptr)
    {
        takeMaterialsOfNodes(itsTarget.model, itsTarget.matlMappingFlags, itsSettings.part->matlIdPerNode,
                             itsTarget.nodes);
        return true;
    }
    assignMaterialsToNodes(itsTarget.model, itsTarget.matlMappingFlags, itsTarget.nodes, itsWorkers);
    return true;
}

/// Cuts the nodes and the Gauss points of the target into pieces of at most a batch.
bool MapBuilder::makePieces()
{
    const ModelClass& target = itsTarget.model;
    if (itsSettings.atNodes)
    {
        const Pieces pieces = piecesFor(itsWorkers, target.itsNbNodes, batchCapacity);
        itsTable.nbNodes = target.itsNbNodes;
        itsNodePieces.count = pieces.count();
        itsNodePieces.mostPoints = pieces.size;
        if (!itsNodePieces.pieces.allocate(pieces.count()))
        {
            return false;
        }
        for (std::int64_t i = 0; i < pieces.count(); ++i)
        {
            itsNodePieces.pieces[i] = {pieces.first(i), pieces.end(i), 0};
        }
    }
    if (!itsSettings.atGaussPoints || itsTarget.isCloud())
    {
        return true;
    }
    int mostGaussPoints = maxNbGaussPointsOfTypeCode;
    for (int elt = 0; elt < target.itsNbElts; ++elt)
    {
        mostGaussPoints = std::max(mostGaussPoints, target.nbGaussPointsOfElt(elt));
    }
    const std::int64_t eltsPerPiece =
        std::max<std::int64_t>(1, piecesFor(itsWorkers, target.itsNbElts, batchCapacity).size / mostGaussPoints);
    const Pieces pieces{target.itsNbElts, eltsPerPiece};
    itsGaussPieces.count = pieces.count();
    itsGaussPieces.mostPoints = eltsPerPiece * mostGaussPoints;
    itsGaussPieces.areNodes = false;
    if (!itsGaussPieces.pieces.allocate(pieces.count()))
    {
        return false;
    }
    for (std::int64_t i = 0; i < pieces.count(); ++i)
    {
        itsGaussPieces.pieces[i] = {pieces.first(i), pieces.end(i), itsTable.nbGaussPoints};
        for (std::int64_t elt = pieces.first(i); elt < pieces.end(i); ++elt)
        {
            itsTable.nbGaussPoints += target.nbGaussPointsOfElt(static_cast<int>(elt));
        }
    }
    return true;
}

/// Rows that no point is found for stay not mapped.
bool MapBuilder::allocateTable()
{
    const std::int64_t nbRows = itsTable.nbRows();
    return allocateFilled<unsigned char>(itsTable.findings, nbRows, 0) &&
           allocateFilled(itsTable.elements, nbRows, noElement) && itsTable.referenceCoords.allocate(nbRows) &&
           itsTable.firstWeights.allocate(nbRows + 1) && itsIterations.allocate(nbRows);
}

/// Searches the points of one section of the table, then the elements near those that are in none.
MapFailure MapBuilder::locateSection(std::int64_t firstRow, const PieceList& list)
{
    PerWorker<PointBatch> batches;
    if (!batches.allocate(itsWorkers.nbWorkers()))
    {
        return noMemoryFailure();
    }
    std::atomic<std::int64_t> nbOutside = 0;
    std::atomic<bool> hasMemory = true;
    const auto locatePiece = [&](std::int64_t i, int worker)
    {
        PointBatch& batch = batches[worker];
        if (batch.hasRoom() || batch.allocate(list.mostPoints))
        {
            nbOutside += locatePoints(list.pieces[i], list.areNodes, firstRow, batch);
        }
        else
        {
            hasMemory = false;
        }
    };
    if (!itsWorkers.run(locationStage, list.count, locatePiece))
    {
        return cancelledFailure();
    }
    return hasMemory ? treatOutsidePoints(firstRow, list, nbOutside) : noMemoryFailure();
}

/// Calls use(cursor) with a cursor over the points of a piece.
template <class Use> void MapBuilder::withCursor(const TargetPiece& piece, bool areNodes, Use use) const
{
    if (areNodes)
    {
        NodeCursor cursor(itsTarget, piece.first, piece.end);
        use(cursor);
    }
    else
    {
        GaussPointCursor cursor(itsTarget, static_cast<int>(piece.first), static_cast<int>(piece.end),
                                piece.firstGaussPoint);
        use(cursor);
    }
}

/// Returns how many of the points of a piece are in no element.
std::int64_t MapBuilder::locatePoints(const TargetPiece& piece, bool areNodes, std::int64_t firstRow, PointBatch& batch)
{
    std::int64_t nbOutside = 0;
    const auto locateAll = [&](auto& cursor)
    {
        while (batch.fill(cursor))
        {
            batch.locate(*itsLocator);
            itsNbJumping += batch.isJumping() ? 1 : -1;
            for (std::size_t i = 0; i < batch.size(); ++i)
            {
                note(firstRow + batch.point(i).index, batch.point(i), batch.located(i));
                nbOutside += batch.located(i).elt == noElement ? 1 : 0;
            }
        }
    };
    withCursor(piece, areNodes, locateAll);
    return nbOutside;
}

void MapBuilder::note(std::int64_t row, const TargetPoint& point, const LocatedPoint& located)
{
    itsTable.findings[row] = static_cast<unsigned char>((point.matlStateClass == 2 ? MapTable::classTwo : 0) |
                                                        (located.isUnconverged ? MapTable::unconverged : 0));
    if (located.isSingular)
    {
        itsEvent.note(row, Event::singularInSearch);
    }
    if (located.elt != noElement)
    {
        noteElement(row, located, Finding::inside);
    }
    else
    {
        itsTable.setFinding(row, Finding::far);
    }
}

void MapBuilder::noteElement(std::int64_t row, const LocatedPoint& located, Finding finding)
{
    itsTable.setFinding(row, finding);
    itsTable.elements[row] = located.elt;
    itsTable.referenceCoords[row] = located.referenceCoords;
    itsIterations[row] = static_cast<unsigned char>(located.nbIterations);
}

/// Takes the points of a section that are in no element to near ones, if they may be, or leaves them far.
MapFailure MapBuilder::treatOutsidePoints(std::int64_t firstRow, const PieceList& list, std::int64_t nbOutside)
{
    OwnedArray<OutsidePoint> points;
    OwnedArray<float> centres;
    // Centres are worth a table if many points ask for them.
    constexpr std::int64_t eltsPerPoint = 32;
    const std::int64_t nbCentres =
        mayBeNear() && nbOutside > itsSource.itsNbElts / eltsPerPoint ? itsSource.itsNbElts : 0;
    if (!points.allocate(nbOutside) || (nbCentres > 0 && !centres.allocate(3 * nbCentres)))
    {
        return noMemoryFailure();
    }
    listOutsidePoints(firstRow, list, nbOutside, points.get());
    const auto computeCentres = [&](std::int64_t elt)
    { computeCentre(itsSource, static_cast<int>(elt), centres.get() + 3 * elt); };
    const NearestElement nearest(itsSource, itsSearch->boxes, itsSearch->space, itsSettings.tuning.refCoordTolerance,
                                 centres.get(), itsSettings.rules.singularElements, itsSingularFlags.get());
    const auto treatPoint = [&](std::int64_t i) { treat(points[i], firstRow, nearest); };
    if (!forEachItem(itsWorkers, locationStage, nbCentres, computeCentres) ||
        !forEachItem(itsWorkers, locationStage, nbOutside, treatPoint))
    {
        return cancelledFailure();
    }
    const MapFailure failure = failureOfEvent(firstRow, list, nearest);
    if (!failure && !keepNearMisses({points.get(), static_cast<std::size_t>(nbOutside)}, firstRow))
    {
        return noMemoryFailure();
    }
    return failure;
}

void MapBuilder::listOutsidePoints(std::int64_t firstRow, const PieceList& list, std::int64_t nbOutside,
                                   OutsidePoint* points) const
{
    std::int64_t nbListed = 0;
    const auto listAll = [&](auto& cursor)
    {
        TargetPoint point;
        while (nbListed < nbOutside && cursor.next(point))
        {
            if (itsTable.elements[firstRow + point.index] == noElement)
            {
                points[nbListed++] = {.point = point, .distance = notNear};
            }
        }
    };
    for (std::int64_t i = 0; nbListed < nbOutside && i < list.count; ++i)
    {
        withCursor(list.pieces[i], list.areNodes, listAll);
    }
}

bool MapBuilder::mayBeNear() const
{
    return !itsTarget.isCloud() || !itsSettings.rules.cloudsHaveNoNearMisses;
}

void MapBuilder::treat(OutsidePoint& outside, std::int64_t firstRow, const NearestElement& nearest)
{
    const TargetPoint& point = outside.point;
    const std::int64_t row = firstRow + point.index;
    const LocatedPoint located = mayBeNear() ? nearest.find(point.position, point.matlState) : LocatedPoint{};
    if (located.isSingular)
    {
        itsEvent.note(row, Event::singularNearby);
        return;
    }
    if (located.elt != noElement)
    {
        ShapeValues shape = shapeValuesAt(itsSource, located);
        if (!bringIntoElement(itsSource, located, shape))
        {
            itsEvent.note(row, Event::withoutWeights);
            return;
        }
        const float distance = distanceToWeights(itsSource, located, shape, point.position);
        if (!(distance > itsSettings.nearLimit))
        {
            outside.distance = distance;
            noteElement(row, located, Finding::near);
            return;
        }
    }
    if (itsSettings.farPoints == FarPoints::refuse)
    {
        itsEvent.note(row, Event::outside);
    }
}

/// Appends the near ones among the points, and counts both sorts.
bool MapBuilder::keepNearMisses(std::span<const OutsidePoint> points, std::int64_t firstRow)
{
    const auto isNear = [](const OutsidePoint& outside) { return outside.distance != notNear; };
    const auto nbNear = std::ranges::count_if(points, isNear);
    const std::int64_t nbFar = static_cast<std::int64_t>(points.size()) - nbNear;
    MapStatistics& statistics = itsMap.itsStatistics;
    const bool areNodes = firstRow == 0 && itsSettings.atNodes;
    (areNodes ? statistics.nbNearNodes : statistics.nbNearGaussPoints) = nbNear;
    (areNodes ? statistics.nbFarNodes : statistics.nbFarGaussPoints) = nbFar;
    OwnedArray<NearMiss> nearMisses;
    if (!nearMisses.allocate(itsMap.itsNbNearMisses + nbNear))
    {
        return false;
    }
    std::int64_t nbKept = 0;
    for (; nbKept < itsMap.itsNbNearMisses; ++nbKept)
    {
        nearMisses[nbKept] = itsMap.itsNearMisses[nbKept];
    }
    for (const OutsidePoint& outside : points)
    {
        const std::int64_t row = firstRow + outside.point.index;
        if (isNear(outside))
        {
            nearMisses[nbKept++] = {row, outside.distance};
        }
        statistics.nbUnconvergedPoints += (itsTable.findings[row] & MapTable::unconverged) != 0 ? 1 : 0;
    }
    itsMap.itsNearMisses = std::move(nearMisses);
    itsMap.itsNbNearMisses = nbKept;
    return true;
}

/// What the first event, if there was one, leads to.
MapFailure MapBuilder::failureOfEvent(std::int64_t firstRow, const PieceList& list, const NearestElement& nearest) const
{
    switch (itsEvent.event())
    {
    case Event::none: return {};
    case Event::outside:
        return {MapFailure::outside, itsTarget.isCloud()
                                         ? "Some points of the points cloud target model are outside the source model."
                                         : "Some regions of the target model are outside the source model."};
    case Event::withoutWeights:
        return {MapFailure::refused, "Error in MappingClass file at line 1937: division by zero ."};
    case Event::singularInSearch:
    case Event::singularNearby: leaveAt(itsEvent.row() - firstRow, list, nearest);
    }
    return {};
}

/// Searches a point once more whose search leaves the computation.
void MapBuilder::leaveAt(std::int64_t index, const PieceList& list, const NearestElement& nearest) const
{
    const auto search = [&](auto& cursor)
    {
        TargetPoint point;
        while (cursor.next(point))
        {
            if (point.index == index)
            {
                itsLocator->search(point.position, point.matlState); // may leave
                leaveOnSingularJacobian(nearest.find(point.position, point.matlState).elt);
            }
        }
    };
    for (std::int64_t i = 0; i < list.count; ++i)
    {
        withCursor(list.pieces[i], list.areNodes, search);
    }
}

/// Finds out in which order values spread to the far nodes, and which of them they do not reach.
MapFailure MapBuilder::planPropagation()
{
    const std::int64_t nbNodes = itsTable.nbNodes;
    OwnedArray<unsigned char> isFar;
    if (!isFar.allocate(nbNodes))
    {
        return noMemoryFailure();
    }
    for (std::int64_t node = 0; node < nbNodes; ++node)
    {
        isFar[node] = itsTable.finding(node) == Finding::far ? 1 : 0;
    }
    if (!planSpreading(itsTarget, isFar.get(), itsMap.itsPropagation))
    {
        return noMemoryFailure();
    }
    for (std::int64_t node = 0; node < nbNodes; ++node)
    {
        if (itsTable.finding(node) == Finding::far)
        {
            itsTable.setFinding(node, isFar[node] == 1 ? Finding::far : Finding::reached);
        }
    }
    return {};
}

/// Tries nodes or points at even distances in their order, or else Gauss points.
void MapBuilder::lookForOverlap()
{
    constexpr std::int64_t mostPoints = 10000;
    OverlapSearch search(itsSource, itsSearch->boxes, itsSearch->space, itsSettings.tuning.refCoordTolerance);
    const auto lookAtAll = [&](auto cursor, std::int64_t firstRow)
    {
        TargetPoint point;
        while (cursor.next(point))
        {
            const std::int64_t row = firstRow + point.index;
            if (itsTable.finding(row) == Finding::inside)
            {
                search.look(point, itsTable.elements[row], itsTable.referenceCoords[row]);
            }
        }
    };
    const auto stepFor = [](std::int64_t nbPoints) { return 1 + (nbPoints - 1) / mostPoints; };
    const std::int64_t nodeStep = stepFor(itsTable.nbNodes);
    for (std::int64_t node = 0; node < itsTable.nbNodes; node += nodeStep)
    {
        lookAtAll(NodeCursor(itsTarget, node, node + 1), 0);
    }
    if (itsTable.nbNodes == 0)
    {
        const std::int64_t step = stepFor(itsTable.nbGaussPoints);
        std::int64_t firstGaussPoint = 0;
        for (int elt = 0; elt < itsTarget.model.itsNbElts; ++elt)
        {
            if (elt % step == 0)
            {
                lookAtAll(GaussPointCursor(itsTarget, elt, elt + 1, firstGaussPoint), 0);
            }
            firstGaussPoint += itsTarget.model.nbGaussPointsOfElt(elt);
        }
    }
    itsMap.itsStatistics.overlap = search.figures();
}

/// The weights, the figures, and what the map keeps of the source.
MapFailure MapBuilder::finish()
{
    itsMap.itsIsJumping = itsNbJumping > 0;
    const BucketUse use(itsSearch->space);
    MapStatistics& statistics = itsMap.itsStatistics;
    statistics.nbBuckets = itsSearch->space.nbBuckets();
    statistics.nbUsedBuckets = use.nbUsed;
    statistics.nbUnusedBuckets = use.nbUnused;
    statistics.meanItemsPerUsedBucket = use.meanItems();
    itsLocator.reset();
    itsSearch.reset(); // before the weights take their memory
    if (!allocateWeights())
    {
        return noMemoryFailure();
    }
    const auto computeRow = [&](std::int64_t row) { computeWeights(row); };
    const bool isWhole =
        itsSettings.isDouble ? polishRows() : forEachItem(itsWorkers, weightStage, itsTable.nbRows(), computeRow);
    if (!isWhole)
    {
        return cancelledFailure();
    }
    if (!listSingularElements() || (itsSettings.fromGaussPoints && !makeAveraging()))
    {
        return noMemoryFailure();
    }
    if (itsSettings.takesChecksums)
    {
        itsMap.itsSourceChecksum = checksumOf(itsSource, itsSettings.exactSourceCoords, itsWorkers);
        itsMap.itsTargetChecksum = checksumOf(itsTarget.model, itsSettings.exactTargetCoords, itsWorkers);
    }
    return {};
}

/// Counts weights and iterations; the sum of these is a single-precision one, in the order of the points.
bool MapBuilder::allocateWeights()
{
    const int* types = itsSource.itsEltTypes;
    const int nbElts = itsSource.itsNbElts;
    const bool hasOneKind =
        nbElts > 0 && std::all_of(types, types + nbElts, [&](int type) { return type == types[0]; });
    const int nbNodesOfAll = hasOneKind ? itsSource.nbNodesOfElt(0) : 0;
    std::int64_t nbWeights = 0;
    float nbIterations = 0.0F;
    int nbPoints = 0;
    for (std::int64_t row = 0; row < itsTable.nbRows(); ++row)
    {
        itsTable.firstWeights[row] = nbWeights;
        if (itsTable.hasWeights(row))
        {
            nbWeights += hasOneKind ? nbNodesOfAll : itsSource.nbNodesOfElt(itsTable.elements[row]);
            nbIterations += static_cast<float>(itsIterations[row]);
            ++nbPoints;
        }
    }
    itsTable.firstWeights[itsTable.nbRows()] = nbWeights;
    itsMap.itsStatistics.nbInterpolatedPoints = nbPoints;
    itsMap.itsStatistics.meanIterations = nbIterations / static_cast<float>(nbPoints);
    itsIterations.release();
    itsTable.isDouble = itsSettings.isDouble;
    itsTable.findCommonCount();
    return itsTable.allocateWeights(nbWeights);
}

void MapBuilder::computeWeights(std::int64_t row)
{
    if (!itsTable.hasWeights(row))
    {
        itsTable.referenceCoords[row] = {};
        return;
    }
    const int elt = itsTable.elements[row];
    const int* nodes = itsSource.itsConnectivity[elt];
    const std::int64_t first = itsTable.firstWeights[row];
    visitElementKind(itsSource.itsEltTypes[elt],
                     [&]<class Kind>(Kind)
                     {
                         auto values = shapeFunctionsAt<Kind>(itsTable.referenceCoords[row]);
                         if (itsTable.finding(row) == Finding::near)
                         {
                             bringIntoElement<Kind>(itsTable.referenceCoords[row], std::span<float>(values));
                         }
                         std::copy_n(nodes, values.size(), itsTable.nodes.get() + first);
                         std::copy_n(values.data(), values.size(), itsTable.weights.get() + first);
                     });
}

/// The same in double precision, piece by piece; false if the workers were stopped.
bool MapBuilder::polishRows()
{
    const ExactPositions sources{itsSource.itsNodeCoords, itsSettings.exactSourceCoords, itsSettings.origin};
    const ExactPositions targets{itsTarget.model.itsNodeCoords, itsSettings.exactTargetCoords, itsSettings.origin};
    const auto polish = [&](RowPolisher& polisher, std::int64_t row, auto positionOf)
    {
        if (itsTable.hasWeights(row))
        {
            polisher.add(row, positionOf());
        }
        else
        {
            itsTable.referenceCoords[row] = {};
        }
    };
    const auto polishNodes = [&](std::int64_t i, int)
    {
        RowPolisher polisher(itsSource, sources, itsTable);
        for (std::int64_t node = itsNodePieces.pieces[i].first; node < itsNodePieces.pieces[i].end; ++node)
        {
            polish(polisher, node, [&] { return targets[node]; });
        }
        polisher.finish();
    };
    const auto polishGaussPoints = [&](std::int64_t i, int)
    {
        RowPolisher polisher(itsSource, sources, itsTable);
        std::int64_t row = itsTable.nbNodes + itsGaussPieces.pieces[i].firstGaussPoint;
        for (auto elt = itsGaussPieces.pieces[i].first; elt < itsGaussPieces.pieces[i].end; ++elt)
        {
            const int element = static_cast<int>(elt);
            for (int point = 0; point < itsTarget.model.nbGaussPointsOfElt(element); ++point, ++row)
            {
                polish(polisher, row,
                       [&] { return exactGaussPointPosition(itsTarget.model, targets, element, point); });
            }
        }
        polisher.finish();
    };
    return itsWorkers.run(weightStage, itsNodePieces.count, polishNodes) &&
           itsWorkers.run(weightStage, itsGaussPieces.count, polishGaussPoints);
}

bool MapBuilder::listSingularElements()
{
    const unsigned char* flags = itsSingularFlags.get();
    itsMap.itsStatistics.nbSingularElts = std::count(flags, flags + itsSource.itsNbElts, 1);
    if (!itsMap.itsSingularElts.allocate(itsMap.itsStatistics.nbSingularElts))
    {
        return false;
    }
    int* next = itsMap.itsSingularElts.get();
    for (int elt = 0; elt < itsSource.itsNbElts; ++elt)
    {
        if (flags[elt] != 0)
        {
            *next++ = elt;
        }
    }
    return true;
}

/// Keeps what it takes to average values at Gauss points to nodes.
bool MapBuilder::makeAveraging()
{
    AveragingTable& averaging = itsMap.itsAveraging;
    const std::int64_t nbElts = itsSource.itsNbElts;
    averaging.nbElts = nbElts;
    averaging.nbGaussPoints = itsMap.itsNbSourceGaussPoints;
    if (!averaging.eltTypes.allocate(nbElts) || !averaging.firstNodes.allocate(nbElts + 1) ||
        !allocateFilled(averaging.nbEltsPerNode, itsSource.itsNbNodes, 0))
    {
        return false;
    }
    std::copy_n(itsSource.itsEltTypes, nbElts, averaging.eltTypes.get());
    std::int64_t nbNodes = 0;
    for (int elt = 0; elt < nbElts; ++elt)
    {
        averaging.firstNodes[elt] = nbNodes;
        nbNodes += itsSource.nbNodesOfElt(elt);
    }
    averaging.firstNodes[nbElts] = nbNodes;
    if (!averaging.nodes.allocate(nbNodes))
    {
        return false;
    }
    int* next = averaging.nodes.get();
    for (int elt = 0; elt < nbElts; ++elt)
    {
        for (const int node : nodesOfElt(itsSource, elt))
        {
            *next++ = node;
            ++averaging.nbEltsPerNode[node];
        }
    }
    return true;
}
