/// From a physical point to reference coordinates: Newton iteration on the map x(xi) = sum of N_i(xi) x_i.
///
/// Everything here works on the node coordinates of one element, gathered once, with the element kind known at compile
/// time.
#ifndef VELTRANE_REFERENCE_COORDINATES_H
#define VELTRANE_REFERENCE_COORDINATES_H

#include "../DenseMatrix.h"
#include "../Elements/ElementKinds.h"

#include <algorithm>
#include <array>
#include <type_traits>
#include <utility>

/// What the search for a point's reference coordinates in one element found.
struct Inversion
{
    enum Result
    {
        singular = -2,     ///< a Jacobian with a determinant of exactly 0, on which the computation is to be left
        notConverged = -1, ///< or no element at all
        outside = 0,
        inside = 1
    };
    Result result = notConverged;
    int nbIterations = 0; ///< 0 unless converged
    Vector3 referenceCoords{};
};

template <class Kind, class Number = float> using ElementNodes = std::array<std::array<Number, 3>, Kind::nbNodes>;

/// Gathers the coordinates of an element's nodes from float[nbNodes][3].
template <class Kind> ElementNodes<Kind> gatherNodes(const int* nodeNumbers, const float (*nodeCoords)[3])
{
    ElementNodes<Kind> nodes;
    for (std::size_t i = 0; i < Kind::nbNodes; ++i)
    {
        const float(&coords)[3] = nodeCoords[nodeNumbers[i]];
        nodes[i] = {coords[0], coords[1], coords[2]};
    }
    return nodes;
}

/// The sum of nodes times weights, in node order.
template <class Number, class Weight, std::size_t nbNodes>
std::array<Number, 3> weightedSum(const std::array<std::array<Number, 3>, nbNodes>& nodes,
                                  const std::array<Weight, nbNodes>& weights)
{
    std::array<Number, 3> sum{};
    for (std::size_t n = 0; n < nbNodes; ++n)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            sum[axis] += Number(weights[n]) * nodes[n][axis];
        }
    }
    return sum;
}

/// x(xi).
template <class Kind, class Number>
std::array<Number, 3> physicalPosition(const ElementNodes<Kind, Number>& nodes,
                                       const std::array<Number, 3>& referenceCoords)
{
    return weightedSum(nodes, shapeFunctionsAt<Kind>(referenceCoords));
}

/// jacobian[i][j] = dx_i / dxi_j, summed in node order. Terms whose derivative is 0 everywhere may be left out if the
/// nodes are finite: they add zeros, which change neither a number nor the positive zero that a sum starts from.
template <class Kind, bool withoutZeros = false, class Number, class Derivative>
void jacobianMatrix(const ElementNodes<Kind, Number>& nodes,
                    const NodeGradients<Kind::nbNodes, Derivative>& derivatives, Number (&jacobian)[3][3])
{
    // Nine sums side by side do not wait for each other.
    Number sums[3][3]{};
    const auto addNode = [&]<std::size_t n>(std::integral_constant<std::size_t, n>)
    {
        for (std::size_t i = 0; i < 3; ++i)
        {
            for (std::size_t j = 0; j < 3; ++j)
            {
                if (!withoutZeros || !Kind::isConstantAlong(n, j))
                {
                    sums[i][j] += Number(derivatives[n][j]) * nodes[n][i];
                }
            }
        }
    };
    [&]<std::size_t... n>(std::index_sequence<n...>)
    {
        (addNode(std::integral_constant<std::size_t, n>()), ...);
    }
    (std::make_index_sequence<Kind::nbNodes>());
    for (std::size_t i = 0; i < 3; ++i)
    {
        std::copy_n(sums[i], 3, jacobian[i]);
    }
}

/// Leaves the computation with the text of a failed matrix inversion, because of a source element.
[[noreturn]] void leaveOnSingularJacobian(int elt);

inline constexpr int maxNbInversionIterations = 100;

/// The squared distance at which an inversion in the element of this box, minimum then maximum, has converged.
inline float squaredInversionTolerance(const float* box, float precisionFactor)
{
    const float extent = std::min({box[3] - box[0], box[4] - box[1], box[5] - box[2]});
    return power(precisionFactor * extent, 2);
}

/// Searches the reference coordinates of `point` in an element.
///
/// `box` is the element's inflated box, minimum then maximum; the search has converged when the squared distance to the
/// point is at most (precisionFactor * smallest box extent)^2. A converged point is inside if it lies in the reference
/// domain widened by 2 * precisionFactor.
template <class Kind>
Inversion invertPoint(const ElementNodes<Kind>& nodes, const float* box, const Vector3& point, float precisionFactor)
{
    constexpr int maxNbIterations = maxNbInversionIterations;
    const float tolerance = squaredInversionTolerance(box, precisionFactor);

    Inversion inversion;
    Vector3& xi = inversion.referenceCoords;
    xi = Kind::initialGuess;
    Vector3 position = physicalPosition<Kind>(nodes, xi);
    float squaredError = 2.0F * tolerance;
    int nbIterations = 0;
    while (nbIterations < maxNbIterations && squaredError > tolerance)
    {
        float jacobian[3][3];
        float inverse[3][3];
        jacobianMatrix<Kind>(nodes, derivativesAt<Kind>(xi), jacobian);
        if (!invertMatrix33(jacobian, inverse))
        {
            inversion.result = Inversion::singular;
            return inversion;
        }
        const Vector3 residual{point[0] - position[0], point[1] - position[1], point[2] - position[2]};
        const Vector3 step = matrixTimesVector(inverse, residual);
        xi = {xi[0] + step[0], xi[1] + step[1], xi[2] + step[2]};
        position = physicalPosition<Kind>(nodes, xi);
        squaredError = squaredDistance(position, point);
        ++nbIterations;
    }
    if (nbIterations == maxNbIterations && squaredError > tolerance)
    {
        return inversion;
    }
    inversion.nbIterations = nbIterations;
    inversion.result = Kind::contains(xi, 2.0 * precisionFactor) ? Inversion::inside : Inversion::outside;
    return inversion;
}

#endif
