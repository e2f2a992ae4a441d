#include "Polishing.h"

#include "Weights.h"

#include <algorithm>

void RowPolisher::add(std::int64_t row, const std::array<double, 3>& point)
{
    const int typeCode = itsSource.itsEltTypes[itsTable.elements[row]];
    Waiting& waiting = itsWaiting[volumeIndexOf(typeCode)];
    waiting.typeCode = typeCode;
    waiting.entries[waiting.size++] = {row, point};
    if (waiting.size == itsPackedSearch.packSize)
    {
        polish(waiting);
    }
}

void RowPolisher::finish()
{
    for (Waiting& waiting : itsWaiting)
    {
        if (waiting.size > 0)
        {
            polish(waiting);
        }
    }
}

void RowPolisher::polish(Waiting& waiting)
{
    PolishProblem problem;
    problem.nodeCoords = itsPositions.coords;
    problem.exactNodeCoords = itsPositions.exactCoords;
    std::ranges::copy(itsPositions.origin, problem.origin);
    for (std::size_t lane = 0; lane < itsPackedSearch.packSize; ++lane)
    {
        // Lanes without a point of their own repeat the first.
        const Entry& entry = waiting.entries[lane < waiting.size ? lane : 0];
        problem.nodeNumbers[lane] = itsSource.itsConnectivity[itsTable.elements[entry.row]];
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            problem.points[axis][lane] = entry.point[axis];
            problem.referenceCoords[axis][lane] = itsTable.referenceCoords[entry.row][axis];
        }
    }
    PolishSolution solution;
    itsPackedSearch.polish(waiting.typeCode, problem, solution);
    for (std::size_t lane = 0; lane < waiting.size; ++lane)
    {
        write(waiting.entries[lane].row, solution, lane);
    }
    waiting.size = 0;
}

void RowPolisher::write(std::int64_t row, const PolishSolution& solution, std::size_t lane)
{
    const auto count = static_cast<std::size_t>(itsTable.firstWeights[row + 1] - itsTable.firstWeights[row]);
    const std::span weights(itsTable.exactWeights.get() + itsTable.firstWeights[row], count);
    for (std::size_t n = 0; n < count; ++n)
    {
        weights[n] = solution.weights[n][lane];
    }
    if (itsTable.finding(row) == Finding::near)
    {
        const std::array<double, 3> xi{solution.referenceCoords[0][lane], solution.referenceCoords[1][lane],
                                       solution.referenceCoords[2][lane]};
        visitElementKind(itsSource.itsEltTypes[itsTable.elements[row]],
                         [&]<class Kind>(Kind) { bringIntoElement<Kind>(xi, weights); });
    }
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        itsTable.referenceCoords[row][axis] = single(solution.referenceCoords[axis][lane]);
    }
    std::copy_n(itsSource.itsConnectivity[itsTable.elements[row]], count,
                itsTable.nodes.get() + itsTable.firstWeights[row]);
}

std::array<double, 3> exactGaussPointPosition(const ModelClass& model, const ExactPositions& positions, int elt,
                                              int gaussPoint)
{
    std::array<double, 3> sum{};
    const int* nodes = model.itsConnectivity[elt];
    visitElementKind(model.itsEltTypes[elt],
                     [&]<class Kind>(Kind)
                     {
                         const auto shape = shapeFunctionsAt<Kind>(gaussPointOf<Kind>(model.itsGaussRule, gaussPoint));
                         for (std::size_t n = 0; n < Kind::nbNodes; ++n)
                         {
                             const auto position = positions[nodes[n]];
                             for (std::size_t axis = 0; axis < 3; ++axis)
                             {
                                 sum[axis] += shape[n] * position[axis];
                             }
                         }
                     });
    return sum;
}
