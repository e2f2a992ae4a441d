// What an implementation of the same algorithm can hardly undercut.
//
// Set-up: element boxes and the grid of buckets in the fewest passes over memory. Evaluation: the element of every
// point is known beforehand, so that only the search of its reference coordinates, the shape functions and the sums are
// left, in single precision on the host's arrays. No checks, no materials, no messages, no progress.
#include "TransferCase.h"

#include "Search/ReferenceCoordinates.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <optional>

namespace benchmarks
{
namespace
{
constexpr float boxMarginRatio = 0.01F;
constexpr float precisionFactor = 0.001F;
constexpr std::int64_t maxNbBuckets = 10000000;

template <class T> std::unique_ptr<T[]> uninitialised(std::size_t count)
{
    return std::make_unique_for_overwrite<T[]>(count);
}

/// Calls visit(Kind{}, elt) for every element. In a mesh of one kind the kind is looked up once.
template <class Visitor> void forEachElement(const GeneratedMesh& mesh, Visitor visit)
{
    const std::size_t nbElts = mesh.eltTypes.size();
    const bool hasOneType = std::ranges::adjacent_find(mesh.eltTypes, std::not_equal_to{}) == mesh.eltTypes.end();
    if (hasOneType && nbElts > 0)
    {
        visitElementKind(mesh.eltTypes.front(),
                         [&](auto kind)
                         {
                             for (std::size_t elt = 0; elt < nbElts; ++elt)
                             {
                                 visit(kind, elt);
                             }
                         });
        return;
    }
    for (std::size_t elt = 0; elt < nbElts; ++elt)
    {
        visitElementKind(mesh.eltTypes[elt], [&](auto kind) { visit(kind, elt); });
    }
}

/// Minimum x, y, z, then maximum x, y, z.
struct EltBox
{
    float values[6];

    float low(std::size_t axis) const { return values[axis]; }
    float high(std::size_t axis) const { return values[axis + 3]; }
    bool contains(const Vector3& point) const
    {
        return low(0) <= point[0] && point[0] <= high(0) && low(1) <= point[1] && point[1] <= high(1) &&
               low(2) <= point[2] && point[2] <= high(2);
    }
};

template <class Kind> EltBox inflatedBox(const int* nodeNumbers, const float (*nodeCoords)[3])
{
    const auto nodes = gatherNodes<Kind>(nodeNumbers, nodeCoords);
    Vector3 low = nodes[0];
    Vector3 high = nodes[0];
    for (std::size_t node = 1; node < nodes.size(); ++node)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            low[axis] = std::min(low[axis], nodes[node][axis]);
            high[axis] = std::max(high[axis], nodes[node][axis]);
        }
    }
    const float margin = boxMarginRatio * std::max({high[0] - low[0], high[1] - low[1], high[2] - low[2]});
    return {{low[0] - margin, low[1] - margin, low[2] - margin, high[0] + margin, high[1] + margin, high[2] + margin}};
}

/// The buckets that a box touches; 16 bits are enough for ten million buckets in a cube-like domain.
struct Range
{
    std::uint16_t low[3];
    std::uint16_t high[3];
};
constexpr Range outsideGrid{{1, 1, 1}, {0, 0, 0}};

class Grid
{
public:
    explicit Grid(const TransferCase& transfer)
    {
        computeSourceBoxes(transfer.source);
        layOver(transfer);
        markNeeded(transfer);
        countEntries(transfer.source.eltTypes.size());
        fillEntries(transfer.source.eltTypes.size());
    }

    const EltBox& box(std::size_t elt) const { return itsBoxes[elt]; }

    /// The source elements near a point; none outside the grid.
    std::span<const int> candidates(const Vector3& point) const
    {
        std::array<std::size_t, 3> index;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            const float position = (point[axis] - itsOrigin[axis]) * itsInverseSize;
            if (!(position > -1.0F && position < static_cast<float>(itsCounts[axis])))
            {
                return {};
            }
            index[axis] = static_cast<std::size_t>(position);
        }
        const std::size_t bucket = position(index[0], index[1], index[2]);
        return {entry(itsFirstEntry[bucket]), entry(itsFirstEntry[bucket + 1])};
    }

private:
    const int* entry(int number) const { return itsEntries.get() + number; }

    std::size_t position(std::size_t i, std::size_t j, std::size_t k) const
    {
        return (i * itsCounts[1] + j) * itsCounts[2] + k;
    }

    /// The one pass over the source mesh.
    void computeSourceBoxes(const GeneratedMesh& source)
    {
        itsBoxes = uninitialised<EltBox>(source.eltTypes.size());
        float sum = 0.0F;
        forEachElement(source,
                       [&](auto kind, std::size_t elt)
                       {
                           const EltBox box = inflatedBox<decltype(kind)>(source.eltNodes[elt], source.nodeCoords());
                           itsBoxes[elt] = box;
                           for (std::size_t axis = 0; axis < 3; ++axis)
                           {
                               sum += box.high(axis) - box.low(axis);
                           }
                       });
        itsSize = sum / (3.0F * static_cast<float>(source.eltTypes.size()));
    }

    void layOver(const TransferCase& transfer)
    {
        const std::span<const float> coords =
            transfer.nbTargetElts() > 0 ? std::span<const float>(transfer.target.coords) : transfer.points();
        Vector3 low{coords[0], coords[1], coords[2]};
        Vector3 high = low;
        for (std::size_t i = 3; i < coords.size(); i += 3)
        {
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                low[axis] = std::min(low[axis], coords[i + axis]);
                high[axis] = std::max(high[axis], coords[i + axis]);
            }
        }
        Vector3 extents;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            const float margin = boxMarginRatio * (high[axis] - low[axis]);
            itsOrigin[axis] = low[axis] - margin;
            extents[axis] = high[axis] + margin - itsOrigin[axis];
        }
        countBuckets(extents);
        while (static_cast<std::int64_t>(nbBuckets()) > maxNbBuckets)
        {
            itsSize *= 2.0F;
            countBuckets(extents);
        }
    }

    void countBuckets(const Vector3& extents)
    {
        itsInverseSize = 1.0F / itsSize;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            itsCounts[axis] = static_cast<std::size_t>(extents[axis] * itsInverseSize) + 1;
        }
    }

    std::size_t nbBuckets() const { return itsCounts[0] * itsCounts[1] * itsCounts[2]; }

    /// The one pass over the target: its boxes are used at once and not kept.
    void markNeeded(const TransferCase& transfer)
    {
        itsIsNeeded = std::make_unique<unsigned char[]>(nbBuckets());
        const auto mark = [&](const EltBox& box)
        { forEachBucket(rangeOf(box), [&](std::size_t bucket) { itsIsNeeded[bucket] = 1; }); };
        if (transfer.nbTargetElts() > 0)
        {
            const GeneratedMesh& target = transfer.target;
            forEachElement(target, [&](auto kind, std::size_t elt)
                           { mark(inflatedBox<decltype(kind)>(target.eltNodes[elt], target.nodeCoords())); });
            return;
        }
        const float reach = boxMarginRatio * itsSize;
        const std::span<const float> points = transfer.points();
        for (std::size_t i = 0; i < points.size(); i += 3)
        {
            const float* p = &points[i];
            mark({{p[0] - reach, p[1] - reach, p[2] - reach, p[0] + reach, p[1] + reach, p[2] + reach}});
        }
    }

    Range rangeOf(const EltBox& box) const
    {
        Range range;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            const float low = (box.low(axis) - itsOrigin[axis]) * itsInverseSize;
            const float high = (box.high(axis) - itsOrigin[axis]) * itsInverseSize;
            const auto last = static_cast<float>(itsCounts[axis] - 1);
            if (high < 0.0F || low >= last + 1.0F)
            {
                return outsideGrid;
            }
            range.low[axis] = static_cast<std::uint16_t>(std::max(low, 0.0F));
            range.high[axis] = static_cast<std::uint16_t>(std::min(high, last));
        }
        return range;
    }

    template <class Visitor> void forEachBucket(const Range& range, Visitor visit) const
    {
        for (std::size_t i = range.low[0]; i <= range.high[0]; ++i)
        {
            for (std::size_t j = range.low[1]; j <= range.high[1]; ++j)
            {
                for (std::size_t k = range.low[2]; k <= range.high[2]; ++k)
                {
                    visit(position(i, j, k));
                }
            }
        }
    }

    void countEntries(std::size_t nbElts)
    {
        itsRanges = uninitialised<Range>(nbElts);
        itsFirstEntry = std::make_unique<int[]>(nbBuckets() + 1);
        for (std::size_t elt = 0; elt < nbElts; ++elt)
        {
            itsRanges[elt] = rangeOf(itsBoxes[elt]);
            forEachBucket(itsRanges[elt], [&](std::size_t bucket) { itsFirstEntry[bucket] += itsIsNeeded[bucket]; });
        }
    }

    void fillEntries(std::size_t nbElts)
    {
        // Ends of the runs first; filling from the last element backwards turns them into beginnings.
        int nbEntries = 0;
        for (std::size_t bucket = 0; bucket <= nbBuckets(); ++bucket)
        {
            nbEntries += itsFirstEntry[bucket];
            itsFirstEntry[bucket] = nbEntries;
        }
        itsEntries = uninitialised<int>(static_cast<std::size_t>(nbEntries) + 1);
        for (std::size_t elt = nbElts; elt-- > 0;)
        {
            forEachBucket(itsRanges[elt],
                          [&](std::size_t bucket)
                          {
                              if (itsIsNeeded[bucket] != 0)
                              {
                                  itsEntries[static_cast<std::size_t>(--itsFirstEntry[bucket])] = static_cast<int>(elt);
                              }
                          });
        }
    }

    std::unique_ptr<EltBox[]> itsBoxes;
    float itsSize = 0.0F;
    float itsInverseSize = 0.0F;
    Vector3 itsOrigin{};
    std::array<std::size_t, 3> itsCounts{};
    std::unique_ptr<unsigned char[]> itsIsNeeded;
    std::unique_ptr<Range[]> itsRanges;
    std::unique_ptr<int[]> itsFirstEntry; ///< per bucket, and the end
    std::unique_ptr<int[]> itsEntries;
};

/// Where a point lies: an element, or the nearest one, or none.
struct KnownElement
{
    static constexpr int none = -1;

    int elt = none;
    bool isNearMiss = false;
};

Vector3 pointAt(std::span<const float> points, std::size_t i)
{
    return {points[3 * i], points[3 * i + 1], points[3 * i + 2]};
}

/// What the evaluation may take as known.
class KnownElements
{
public:
    KnownElements(const TransferCase& transfer, const Grid& grid) : itsSource(transfer.source), itsGrid(grid)
    {
        const std::span<const float> points = transfer.points();
        itsElements.resize(points.size() / 3);
        for (std::size_t i = 0; i < itsElements.size(); ++i)
        {
            if (transfer.hasNoPartner.empty() || transfer.hasNoPartner[i] == 0)
            {
                itsElements[i] = locate(pointAt(points, i), transfer.options.target != TargetKind::cloud);
            }
        }
    }

    std::size_t size() const { return itsElements.size(); }
    const KnownElement& operator[](std::size_t point) const { return itsElements[point]; }

private:
    KnownElement locate(const Vector3& point, bool takesNearest) const
    {
        const auto candidates = itsGrid.candidates(point);
        for (const int elt : candidates)
        {
            if (itsGrid.box(static_cast<std::size_t>(elt)).contains(point) && isInside(elt, point))
            {
                return {elt, false};
            }
        }
        int nearest = KnownElement::none;
        float nearestDistance = 0.0F;
        for (const int elt : candidates)
        {
            const float distance = squaredDistance(point, centre(elt));
            if (takesNearest && (nearest == KnownElement::none || distance <= nearestDistance))
            {
                nearest = elt;
                nearestDistance = distance;
            }
        }
        return {nearest, true};
    }

    template <class Visitor> void visitElement(int elt, Visitor visit) const
    {
        const auto number = static_cast<std::size_t>(elt);
        visitElementKind(
            itsSource.eltTypes[number], [&](auto kind)
            { visit(kind, gatherNodes<decltype(kind)>(itsSource.eltNodes[number], itsSource.nodeCoords())); });
    }

    bool isInside(int elt, const Vector3& point) const
    {
        bool isAccepted = false;
        visitElement(elt,
                     [&](auto kind, const auto& nodes)
                     {
                         const float* box = itsGrid.box(static_cast<std::size_t>(elt)).values;
                         isAccepted = invertPoint<decltype(kind)>(nodes, box, point, precisionFactor).result ==
                                      Inversion::inside;
                     });
        return isAccepted;
    }

    Vector3 centre(int elt) const
    {
        Vector3 sum{};
        visitElement(elt,
                     [&](auto, const auto& nodes)
                     {
                         for (const Vector3& node : nodes)
                         {
                             for (std::size_t axis = 0; axis < 3; ++axis)
                             {
                                 sum[axis] += node[axis] / static_cast<float>(nodes.size());
                             }
                         }
                     });
        return sum;
    }

    const GeneratedMesh& itsSource;
    const Grid& itsGrid;
    std::vector<KnownElement> itsElements;
};

class Evaluation
{
public:
    Evaluation(const TransferCase& transfer, const KnownElements& known, const Grid& grid, FieldValues& result)
        : itsTransfer(transfer), itsKnown(known), itsGrid(grid), itsResult(result)
    {
    }

    void run()
    {
        const std::vector<int>& types = itsTransfer.source.eltTypes;
        const bool hasOneType = std::ranges::adjacent_find(types, std::not_equal_to{}) == types.end();
        if (hasOneType)
        {
            visitElementKind(
                types.front(), [&](auto kind)
                { forEachKnown([&](std::size_t point, std::size_t elt) { evaluate<decltype(kind)>(point, elt); }); });
            return;
        }
        forEachKnown([&](std::size_t point, std::size_t elt)
                     { visitElementKind(types[elt], [&](auto kind) { evaluate<decltype(kind)>(point, elt); }); });
    }

private:
    template <class Visitor> void forEachKnown(Visitor visit)
    {
        for (std::size_t point = 0; point < itsKnown.size(); ++point)
        {
            const int elt = itsKnown[point].elt;
            if (elt != KnownElement::none)
            {
                visit(point, static_cast<std::size_t>(elt));
            }
        }
    }

    template <class Kind> void evaluate(std::size_t point, std::size_t elt)
    {
        const int* nodeNumbers = itsTransfer.source.eltNodes[elt];
        const auto nodes = gatherNodes<Kind>(nodeNumbers, itsTransfer.source.nodeCoords());
        const Inversion inversion =
            invertPoint<Kind>(nodes, itsGrid.box(elt).values, pointAt(itsTransfer.points(), point), precisionFactor);
        NodeValues<Kind::nbNodes> shape;
        Kind::shapeFunctions(inversion.referenceCoords, shape);
        if (itsKnown[point].isNearMiss)
        {
            normalise(shape);
        }
        const double* scalar = itsTransfer.sourceFields.scalar.data();
        const double* vector = itsTransfer.sourceFields.vector.data();
        float scalarSum = 0.0F;
        Vector3 vectorSum{};
        for (std::size_t i = 0; i < Kind::nbNodes; ++i)
        {
            const auto node = static_cast<std::size_t>(nodeNumbers[i]);
            scalarSum += shape[i] * static_cast<float>(scalar[node]);
            for (std::size_t component = 0; component < 3; ++component)
            {
                vectorSum[component] += shape[i] * static_cast<float>(vector[3 * node + component]);
            }
        }
        itsResult.scalar[point] = static_cast<double>(scalarSum);
        std::ranges::copy(vectorSum, &itsResult.vector[3 * point]);
    }

    template <std::size_t nbNodes> static void normalise(std::array<float, nbNodes>& shape)
    {
        float sum = 0.0F;
        for (float& value : shape)
        {
            value = std::clamp(value, 0.0F, 1.0F);
            sum += value;
        }
        for (float& value : shape)
        {
            value /= sum;
        }
    }

    const TransferCase& itsTransfer;
    const KnownElements& itsKnown;
    const Grid& itsGrid;
    FieldValues& itsResult;
};

Measurement measureLimit(const TransferCase& transfer, const KnownElements& known)
{
    FieldValues result(known.size());
    Meter meter;
    const Grid grid(transfer);
    meter.endSetUp();
    Evaluation(transfer, known, grid, result).run();
    Measurement measurement = meter.stop();
    transfer.assess(result, measurement);
    return measurement;
}
} // namespace

std::vector<Engine> limitEngines(const TransferCase& transfer)
{
    const auto grid = std::make_shared<const Grid>(transfer);
    const auto known = std::make_shared<const KnownElements>(transfer, *grid);
    return {{"limit", [&transfer, grid, known] { return measureLimit(transfer, *known); }}};
}
} // namespace benchmarks
