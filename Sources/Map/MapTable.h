/// What a map knows of its target locations: where each lies in the source, how it was found, and whose values make up
/// its own.
#ifndef VELTRANE_MAP_TABLE_H
#define VELTRANE_MAP_TABLE_H

#include "../Allocation.h"
#include "../VectorHelpers.h"
#include "Evaluation.h"

#include <concepts>
#include <cstdint>
#include <span>

/// How a target location was found.
enum class Finding : unsigned char
{
    notMapped = 0, ///< it is part of no element, or its material is not to receive values
    inside = 1,    ///< in a source element, margins included
    near = 2,      ///< in none; taken to the element with the nearest centre
    far = 3,       ///< too far from the source
    reached = 4    ///< far, but values spread to it from its neighbours
};

/// One row per target location: first the nodes of a mesh or the points of a cloud, then the Gauss points of all
/// elements, each kind if the map has it. 25 bytes per location, and 8 per weight in single precision or 12 in double.
struct MapTable
{
    std::int64_t nbNodes = 0;              ///< rows of nodes
    std::int64_t nbGaussPoints = 0;        ///< rows of Gauss points
    OwnedArray<unsigned char> findings;    ///< Finding, classTwo, unconverged
    OwnedArray<int> elements;              ///< source element, or -1
    OwnedArray<Vector3> referenceCoords;   ///< in this element
    OwnedArray<std::int64_t> firstWeights; ///< one more than rows: where a row's weights begin and end
    OwnedArray<int> nodes;                 ///< per weight its source node
    OwnedArray<float> weights;             ///< in single precision, or
    OwnedArray<double> exactWeights;       ///< in double
    bool isDouble = false;                 ///< which of them
    int commonCount = 0;                   ///< of weights in every row, if all have as many and any; else 0

    /// Set for locations whose material is of state class 2.
    static constexpr unsigned char classTwo = 8;
    /// Set for locations in no element, but in the box of one in which the iteration did not converge.
    static constexpr unsigned char unconverged = 16;

    std::int64_t nbRows() const { return nbNodes + nbGaussPoints; }
    std::int64_t nbWeights() const { return firstWeights ? firstWeights[nbRows()] : 0; }
    Finding finding(std::int64_t row) const { return static_cast<Finding>(findings[row] % classTwo); }
    int matlStateClass(std::int64_t row) const { return (findings[row] & classTwo) != 0 ? 2 : 1; }
    bool hasWeights(std::int64_t row) const { return finding(row) == Finding::inside || finding(row) == Finding::near; }
    /// Of the precision that the table has; a common count that is known at compile time spares looking for the row.
    template <class Weight = float, int knownCount = 0> WeightedNodesOf<Weight> weightsOf(std::int64_t row) const
    {
        const std::int64_t first = knownCount > 0 ? row * knownCount : firstWeights[row];
        const auto count = knownCount > 0 ? knownCount : static_cast<int>(firstWeights[row + 1] - first);
        if constexpr (std::same_as<Weight, double>)
        {
            return {nodes.get() + first, exactWeights.get() + first, count};
        }
        else
        {
            return {nodes.get() + first, weights.get() + first, count};
        }
    }
    /// Calls use(weights) with those of a row, in the precision that the table has.
    template <class Use> void withWeightsOf(std::int64_t row, Use use) const
    {
        if (isDouble)
        {
            use(weightsOf<double>(row));
        }
        else
        {
            use(weightsOf<float>(row));
        }
    }
    void findCommonCount()
    {
        const std::int64_t count = nbRows() > 0 ? firstWeights[1] : 0;
        bool isCommon = count > 0;
        for (std::int64_t row = 0; isCommon && row < nbRows(); ++row)
        {
            isCommon = firstWeights[row + 1] == (row + 1) * count;
        }
        commonCount = isCommon ? static_cast<int>(count) : 0;
    }
    bool allocateWeights(std::int64_t count)
    {
        return nodes.allocate(count) && (isDouble ? exactWeights.allocate(count) : weights.allocate(count));
    }
    /// Leaves the other marks as they are.
    void setFinding(std::int64_t row, Finding found)
    {
        findings[row] =
            static_cast<unsigned char>(findings[row] / classTwo * classTwo + static_cast<unsigned char>(found));
    }
};

/// How values spread to far nodes, step by step.
struct PropagationPlan
{
    OwnedArray<int> steps; ///< per step state class, numbers of filled and of far nodes, the filled nodes, the far ones
    std::int64_t size = 0; ///< of steps
    int nbUnreached = 0;   ///< far nodes that no step fills; they become 0
    bool isComplete = true; ///< whether as many nodes were counted as filled as were far

    /// Calls visit(state class, filled nodes, far nodes) for each step in order.
    template <class Visit> void forEachStep(Visit visit) const
    {
        for (std::int64_t i = 0; i < size;)
        {
            const int* step = steps.get() + i;
            const std::span<const int> filled(step + headerSize, static_cast<std::size_t>(step[1]));
            const std::span<const int> far(step + headerSize + step[1], static_cast<std::size_t>(step[2]));
            visit(step[0], filled, far);
            i += headerSize + step[1] + step[2];
        }
    }

    static constexpr int headerSize = 3;
};

/// What it takes to average source values at Gauss points to nodes.
struct AveragingTable
{
    std::int64_t nbElts = 0;
    std::int64_t nbGaussPoints = 0;
    OwnedArray<int> eltTypes;
    OwnedArray<std::int64_t> firstNodes; ///< one more than elements
    OwnedArray<int> nodes;               ///< element after element
    OwnedArray<int> nbEltsPerNode;
};

/// A location that was taken to a near element.
struct NearMiss
{
    std::int64_t row;
    double distance; ///< from the point to the place that its weights give
};

#endif
