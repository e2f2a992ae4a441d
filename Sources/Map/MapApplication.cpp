// The application of a map: weighted sums of source values, and what becomes of far locations.
//
// The values of as many fields as go together are first copied side by side, in the precision of the map, so that a
// node's values come with one access, unless they stand like that; on the way it is seen whether any is undefined. Sums
// are those of Evaluation.h.
#include "FieldSpreading.h"
#include "GaussPointAveraging.h"
#include "TransferMap.h"
#include "ValueLanes.h"

#include "../Search/Prefetch.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <memory>

namespace
{
constexpr Stage applicationStage{"Computation", 0, 100};

/// Rows that are evaluated before their values are written field by field.
constexpr std::int64_t blockSize = 128;

} // namespace

/// An application in the precision of `Real`.
template <class Real> class MapApplication
{
public:
    MapApplication(const TransferMap& map, std::span<const MapField> fields, Real* workspace, Workers& workers)
        : itsMap(map), itsTable(map.itsTable), itsFields(fields), itsWorkspace(workspace), itsWorkers(workers)
    {
    }

    /// How many numbers the workspace holds.
    static std::int64_t workspaceSize(const TransferMap& map, std::span<const MapField> fields)
    {
        std::int64_t nbComponents = 0;
        for (const MapField& field : fields)
        {
            nbComponents += field.nbComponents;
        }
        const auto nbLanes =
            std::bit_ceil(static_cast<std::uint64_t>(std::clamp<std::int64_t>(nbComponents, 1, maxNbLanes)));
        return averagesSize(map, fields) + map.itsNbSourceNodes * static_cast<std::int64_t>(nbLanes);
    }

    static std::int64_t averagesSize(const TransferMap& map, std::span<const MapField> fields)
    {
        std::int64_t size = 0;
        for (const MapField& field : fields)
        {
            size += field.sourceLocation == atGaussPoints ? map.itsNbSourceNodes * field.nbComponents : 0;
        }
        return size;
    }

    void apply()
    {
        averageAll();
        if (applyTo(atNodes) && applyTo(atGaussPoints))
        {
            return;
        }
    }

private:
    void averageAll();
    void average(const MapField& field, Real* nodeValues) const;
    bool applyTo(Location location);
    bool applyGroup(const Group<Real>& group, Location location);
    template <int nbLanes>
    bool evaluate(const Group<Real>& group, Location location, const Real* values, bool areDefined);
    template <int nbLanes, bool mayBeUndefined, int knownCount>
    void evaluatePiece(const Group<Real>& group, std::int64_t firstRow, std::int64_t end, std::int64_t base,
                       const Real* values) const;
    void writeBlock(const Column<Real>& column, const Real* values, int nbLanes, std::int64_t firstRow,
                    std::int64_t end, std::int64_t base, bool areAllMapped) const;
    template <int knownCount> void prefetchRow(std::int64_t row, const Real* values, int nbLanes) const;
    void fillFar(Location location) const;
    void fillRow(const MapField& field, std::int64_t index, Real value) const;

    const TransferMap& itsMap;
    const MapTable& itsTable;
    std::span<const MapField> itsFields;
    Real* itsWorkspace;
    Workers& itsWorkers;
};

std::int64_t TransferMap::workspaceSize(std::span<const MapField> fields) const
{
    const auto nbBytes = [](std::int64_t count, std::size_t size)
    {
        // Wherever the bytes begin, the numbers are aligned among them.
        return (count + 1) * static_cast<std::int64_t>(size);
    };
    return itsTable.isDouble ? nbBytes(MapApplication<double>::workspaceSize(*this, fields), sizeof(double))
                             : nbBytes(MapApplication<float>::workspaceSize(*this, fields), sizeof(float));
}

const char* TransferMap::apply(std::span<const MapField> fields, std::span<std::byte> workspace, Workers& workers) const
{
    for (const MapField& field : fields)
    {
        if (field.nbComponents < 1 || (field.sourceFloats == nullptr) == (field.sourceDoubles == nullptr) ||
            (field.targetFloats == nullptr) == (field.targetDoubles == nullptr))
        {
            return "A field of an application needs components, one source array and one target array.";
        }
        if (field.sourceLocation == atGaussPoints ? !mapsFromGaussPoints() : field.sourceLocation != atNodes)
        {
            return "The map is not made for source values at such locations.";
        }
        if (field.targetLocation != atNodes && field.targetLocation != atGaussPoints)
        {
            return "The map gives values to nodes and Gauss points only.";
        }
    }
    if (static_cast<std::int64_t>(workspace.size()) < workspaceSize(fields))
    {
        return "The workspace of an application is too small.";
    }
    void* numbers = workspace.data();
    std::size_t size = workspace.size();
    if (itsTable.isDouble)
    {
        std::align(alignof(double), 0, numbers, size);
        MapApplication(*this, fields, static_cast<double*>(numbers), workers).apply();
    }
    else
    {
        std::align(alignof(float), 0, numbers, size);
        MapApplication(*this, fields, static_cast<float*>(numbers), workers).apply();
    }
    return nullptr;
}

std::int64_t TransferMap::nbSourceGaussPoints(GaussRuleChoice rule) const
{
    if (rule == GaussRuleChoice::full || !mapsFromGaussPoints())
    {
        return itsNbSourceGaussPoints;
    }
    std::int64_t count = 0;
    for (std::int64_t elt = 0; elt < itsAveraging.nbElts; ++elt)
    {
        count += nbGaussPointsOfKind(itsAveraging.eltTypes[elt], rule);
    }
    return count;
}

/// Gives the fields at Gauss points their averages at nodes, one after another in the workspace.
template <class Real> void MapApplication<Real>::averageAll()
{
    Real* nodeValues = itsWorkspace;
    for (const MapField& field : itsFields)
    {
        if (field.sourceLocation == atGaussPoints)
        {
            average(field, nodeValues);
            nodeValues += itsMap.itsNbSourceNodes * field.nbComponents;
        }
    }
}

/// In the order of the elements, as for the single sums at nodes that it is made of.
template <class Real> void MapApplication<Real>::average(const MapField& field, Real* nodeValues) const
{
    const AveragingTable& averaging = itsMap.itsAveraging;
    const std::int64_t nbNodes = itsMap.itsNbSourceNodes;
    std::fill_n(nodeValues, nbNodes * field.nbComponents, Real{0});
    std::int64_t firstGaussPoint = 0;
    for (std::int64_t elt = 0; elt < averaging.nbElts; ++elt)
    {
        const auto value = [&](std::size_t gaussPoint, int component)
        {
            const std::int64_t index =
                (firstGaussPoint + static_cast<std::int64_t>(gaussPoint)) * field.nbComponents + component;
            return field.sourceFloats != nullptr ? static_cast<Real>(field.sourceFloats[index])
                                                 : static_cast<Real>(field.sourceDoubles[index]);
        };
        const int type = averaging.eltTypes[elt];
        addGaussPointsToNodes(type, field.sourceRule, averaging.nodes.get() + averaging.firstNodes[elt],
                              field.nbComponents, value, nodeValues);
        firstGaussPoint += nbGaussPointsOfKind(type, field.sourceRule);
    }
    for (std::int64_t node = 0; node < nbNodes; ++node)
    {
        const auto nbElts = static_cast<Real>(averaging.nbEltsPerNode[node]);
        for (int component = 0; component < field.nbComponents; ++component)
        {
            nodeValues[node * field.nbComponents + component] /= nbElts;
        }
    }
}

/// The fields at one kind of target location, group by group; false if the workers were stopped.
template <class Real> bool MapApplication<Real>::applyTo(Location location)
{
    Group<Real> group;
    const Real* averages = itsWorkspace;
    for (const MapField& field : itsFields)
    {
        const bool isAtGaussPoints = field.sourceLocation == atGaussPoints;
        for (int component = 0; field.targetLocation == location && component < field.nbComponents; ++component)
        {
            group.columns[static_cast<std::size_t>(group.nbColumns++)] = {&field, isAtGaussPoints ? averages : nullptr,
                                                                          component};
            if (group.nbColumns == maxNbLanes)
            {
                if (!applyGroup(group, location))
                {
                    return false;
                }
                group.nbColumns = 0;
            }
        }
        averages += isAtGaussPoints ? itsMap.itsNbSourceNodes * field.nbComponents : 0;
    }
    if (group.nbColumns > 0 && !applyGroup(group, location))
    {
        return false;
    }
    fillFar(location);
    return true;
}

template <class Real> bool MapApplication<Real>::applyGroup(const Group<Real>& group, Location location)
{
    const int nbLanes = group.nbLanes();
    const Real* inPlace = valuesInPlace(group);
    Real* copy = itsWorkspace + averagesSize(itsMap, itsFields);
    std::atomic<bool> isUndefined = false;
    const Pieces pieces = piecesFor(itsWorkers, itsMap.itsNbSourceNodes);
    const auto preparePiece = [&](std::int64_t piece, int)
    {
        const std::int64_t first = pieces.first(piece);
        const std::int64_t end = pieces.end(piece);
        const bool isPieceUndefined = inPlace != nullptr
                                          ? areUndefined(inPlace + first * nbLanes, inPlace + end * nbLanes)
                                          : copySideBySide(group, first, end, copy);
        if (isPieceUndefined)
        {
            isUndefined.store(true, std::memory_order_relaxed);
        }
    };
    if (!itsWorkers.run(applicationStage, pieces.count(), preparePiece))
    {
        return false;
    }
    const Real* values = inPlace != nullptr ? inPlace : copy;
    switch (nbLanes)
    {
    case 1: return evaluate<1>(group, location, values, !isUndefined);
    case 2: return evaluate<2>(group, location, values, !isUndefined);
    case 4: return evaluate<4>(group, location, values, !isUndefined);
    default: return evaluate<maxNbLanes>(group, location, values, !isUndefined);
    }
}

template <class Real>
template <int nbLanes>
bool MapApplication<Real>::evaluate(const Group<Real>& group, Location location, const Real* values, bool areDefined)
{
    const std::int64_t base = location == atNodes ? 0 : itsTable.nbNodes;
    const Pieces pieces = piecesFor(itsWorkers, location == atNodes ? itsTable.nbNodes : itsTable.nbGaussPoints);
    const auto evaluateRows = [&](std::int64_t piece, int)
    {
        const std::int64_t first = base + pieces.first(piece);
        const std::int64_t end = base + pieces.end(piece);
        if (!areDefined)
        {
            evaluatePiece<nbLanes, true, 0>(group, first, end, base, values);
            return;
        }
        switch (itsTable.commonCount)
        {
        case 4: evaluatePiece<nbLanes, false, 4>(group, first, end, base, values); break;
        case 8: evaluatePiece<nbLanes, false, 8>(group, first, end, base, values); break;
        default: evaluatePiece<nbLanes, false, 0>(group, first, end, base, values);
        }
    };
    return itsWorkers.run(applicationStage, pieces.count(), evaluateRows);
}

template <class Real>
template <int nbLanes, bool mayBeUndefined, int knownCount>
void MapApplication<Real>::evaluatePiece(const Group<Real>& group, std::int64_t firstRow, std::int64_t end,
                                         std::int64_t base, const Real* values) const
{
    alignas(64) std::array<Real, blockSize * nbLanes> block;
    for (std::int64_t first = firstRow; first < end; first += blockSize)
    {
        const std::int64_t blockEnd = std::min(first + blockSize, end);
        bool areAllMapped = true;
        for (std::int64_t row = first; row < blockEnd; ++row)
        {
            if (itsMap.itsIsJumping)
            {
                prefetchRow<knownCount>(row, values, nbLanes);
            }
            areAllMapped &= knownCount > 0 || itsTable.hasWeights(row);
            interpolateTogether<nbLanes, mayBeUndefined, knownCount>(
                values, block.data() + (row - first) * nbLanes, nbLanes,
                itsTable.template weightsOf<Real, knownCount>(row));
        }
        for (int lane = 0; lane < group.nbColumns; ++lane)
        {
            writeBlock(group.columns[static_cast<std::size_t>(lane)], block.data() + lane, nbLanes, first, blockEnd,
                       base, areAllMapped);
        }
    }
}

/// Asks for the values of a row that comes soon.
template <class Real>
template <int knownCount>
void MapApplication<Real>::prefetchRow(std::int64_t row, const Real* values, int nbLanes) const
{
    constexpr std::int64_t rowsAhead = 12;
    const std::int64_t ahead = row + rowsAhead;
    if (ahead < itsTable.nbRows())
    {
        const auto at = itsTable.template weightsOf<Real, knownCount>(ahead);
        for (int i = 0; i < (knownCount > 0 ? knownCount : at.count); ++i)
        {
            prefetch(values + static_cast<std::int64_t>(at.nodes[i]) * nbLanes);
        }
    }
}

template <class Real>
void MapApplication<Real>::writeBlock(const Column<Real>& column, const Real* values, int nbLanes,
                                      std::int64_t firstRow, std::int64_t end, std::int64_t base,
                                      bool areAllMapped) const
{
    const MapField& field = *column.field;
    const int stride = field.nbComponents;
    const std::int64_t first = (firstRow - base) * stride + column.component;
    if (areAllMapped && !field.isClassOneOnly)
    {
        if (field.targetFloats != nullptr)
        {
            writeLane(field.targetFloats + first, stride, values, nbLanes, end - firstRow);
        }
        else
        {
            writeLane(field.targetDoubles + first, stride, values, nbLanes, end - firstRow);
        }
        return;
    }
    for (std::int64_t row = firstRow; row < end; ++row)
    {
        if (itsTable.hasWeights(row) && existsOn(field, itsTable.matlStateClass(row)))
        {
            setTargetValue(field, first + (row - firstRow) * stride, values[(row - firstRow) * nbLanes]);
        }
    }
}

template <class Real> void MapApplication<Real>::fillRow(const MapField& field, std::int64_t index, Real value) const
{
    for (int component = 0; component < field.nbComponents; ++component)
    {
        setTargetValue(field, index * field.nbComponents + component, value);
    }
}

/// Far nodes take the default value, or what propagation gives them; far Gauss points, and nodes that propagation does
/// not reach, become 0.
template <class Real> void MapApplication<Real>::fillFar(Location location) const
{
    const MapStatistics& statistics = itsMap.itsStatistics;
    if ((location == atNodes ? statistics.nbFarNodes : statistics.nbFarGaussPoints) == 0)
    {
        return;
    }
    const bool isPropagating = location == atNodes && itsMap.itsFarPoints == FarPoints::propagate;
    if (isPropagating)
    {
        spreadFields<Real>(itsMap.itsPropagation, itsFields);
    }
    const std::int64_t base = location == atNodes ? 0 : itsTable.nbNodes;
    const std::int64_t nbRows = location == atNodes ? itsTable.nbNodes : itsTable.nbGaussPoints;
    for (std::int64_t index = 0; index < nbRows; ++index)
    {
        if (itsTable.finding(base + index) != Finding::far)
        {
            continue;
        }
        for (const MapField& field : itsFields)
        {
            if (field.targetLocation == location && existsOn(field, itsTable.matlStateClass(base + index)))
            {
                fillRow(field, index, location == atNodes && !isPropagating ? Real{field.defaultValue} : Real{0});
            }
        }
    }
}

template <class Value>
void TransferMap::applyTransposed(Location location, const Value* values, int nbComponents, double* atSourceNodes,
                                  double* left) const
{
    const std::int64_t base = location == atNodes ? 0 : itsTable.nbNodes;
    const std::int64_t nbRows = location == atNodes ? itsTable.nbNodes : itsTable.nbGaussPoints;
    for (std::int64_t index = 0; index < nbRows; ++index)
    {
        const Value* row = values + index * nbComponents;
        const auto distribute = [&](const auto& at)
        {
            for (int component = 0; component < nbComponents; ++component)
            {
                const auto value = static_cast<double>(row[component]);
                if (at.count == 0)
                {
                    left[component] += value;
                }
                for (int i = 0; i < at.count; ++i)
                {
                    atSourceNodes[static_cast<std::int64_t>(at.nodes[i]) * nbComponents + component] +=
                        static_cast<double>(at.weights[i]) * value;
                }
            }
        };
        itsTable.withWeightsOf(base + index, distribute);
    }
}

template void TransferMap::applyTransposed(Location, const float*, int, double*, double*) const;
template void TransferMap::applyTransposed(Location, const double*, int, double*, double*) const;
