/// The inversion of a pack, for packs of any size.
#ifndef VELTRANE_PACKED_INVERSION_KERNEL_H
#define VELTRANE_PACKED_INVERSION_KERNEL_H

#include "Pack.h"
#include "PackedInversion.h"
#include "ReferenceCoordinates.h"

template <class Kind, std::size_t Size> using NodePacks = ElementNodes<Kind, FloatPack<Size>>;

template <class Kind, std::size_t Size> NodePacks<Kind, Size> gatherNodePacks(const PackedProblem& problem)
{
    NodePacks<Kind, Size> nodes;
    for (std::size_t n = 0; n < Kind::nbNodes; ++n)
    {
        FloatPack<Size> coords[3];
        loadTriples<Size>([&](std::size_t lane) { return problem.nodeCoords[problem.nodeNumbers[lane][n]]; }, coords);
        nodes[n] = {coords[0], coords[1], coords[2]};
    }
    return nodes;
}

template <class Kind, std::size_t Size> void invertPack(const PackedProblem& problem, PackedSolution& solution)
{
    using Float = FloatPack<Size>;
    using Mask = PackMask<Size>;
    constexpr Vector3 guess = Kind::initialGuess;

    const NodePacks<Kind, Size> nodes = gatherNodePacks<Kind, Size>(problem);
    const Float tolerances = Float::ofEach([&](std::size_t lane) { return problem.tolerances[lane]; });
    std::array<Float, 3> points;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        points[axis] = Float::ofEach([&](std::size_t lane) { return problem.points[lane][axis]; });
    }
    std::array<Float, 3> xi{Float(guess[0]), Float(guess[1]), Float(guess[2])};
    // What depends on the guess alone is known at compile time. Terms of the Jacobian may be left out because a node
    // that is not finite gives the same without them: the determinant is not finite and so not 0, the first step leads
    // to reference coordinates that are no numbers, and the point is outside.
    constexpr auto shapeAtGuess = shapeFunctionsAt<Kind>(guess);
    constexpr auto derivativesAtGuess = derivativesAt<Kind>(guess);
    std::array<Float, 3> position = weightedSum(nodes, shapeAtGuess);
    Float jacobian[3][3];
    jacobianMatrix<Kind, true>(nodes, derivativesAtGuess, jacobian);
    Float nbIterations{};
    Mask isSingular{};
    Mask isOpen = Float(2.0F) * tolerances > tolerances;
    for (int i = 0; i < maxNbInversionIterations && isOpen.bits() != 0; ++i)
    {
        if (i > 0)
        {
            jacobianMatrix<Kind, true>(nodes, derivativesAt<Kind>(xi), jacobian);
        }
        Float inverse[3][3];
        const Float determinant = adjugate33(jacobian, inverse);
        const Mask isZero = determinant == Float{};
        isSingular = isSingular | (isOpen & isZero);
        isOpen = isOpen & ~isZero;
        divideAdjugate33(inverse, determinant);
        const std::array<Float, 3> residual{points[0] - position[0], points[1] - position[1], points[2] - position[2]};
        const std::array<Float, 3> step = matrixTimesVector(inverse, residual);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            xi[axis] = select(isOpen, xi[axis] + step[axis], xi[axis]);
        }
        position = physicalPosition<Kind>(nodes, xi);
        nbIterations = select(isOpen, nbIterations + Float(1.0F), nbIterations);
        isOpen = isOpen & (squaredDistance(position, points) > tolerances);
    }
    solution.singular = isSingular.bits();
    solution.unconverged = isOpen.bits();
    const Mask isConverged = ~isOpen & ~isSingular;
    solution.inside = (isConverged & Kind::contains(xi, 2.0 * problem.precisionFactor)).bits();
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        xi[axis].store(solution.referenceCoords[axis]);
    }
    nbIterations.store(solution.nbIterations);
}

template <std::size_t Size> void invertPack(int typeCode, const PackedProblem& problem, PackedSolution& solution)
{
    visitElementKind(typeCode, [&]<class Kind>(Kind) { invertPack<Kind, Size>(problem, solution); });
}

#endif
