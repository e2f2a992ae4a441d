/// The polishing of a pack, for packs of any size.
#ifndef VELTRANE_PACKED_POLISH_KERNEL_H
#define VELTRANE_PACKED_POLISH_KERNEL_H

#include "Pack.h"
#include "PackedInversionKernel.h"
#include "PackedPolish.h"

template <class Kind, std::size_t Size>
ElementNodes<Kind, DoublePack<Size>> gatherExactNodes(const PolishProblem& problem)
{
    using Double = DoublePack<Size>;
    ElementNodes<Kind, Double> nodes;
    for (std::size_t n = 0; n < Kind::nbNodes; ++n)
    {
        if (problem.exactNodeCoords == nullptr)
        {
            FloatPack<Size> coords[3];
            loadTriples<Size>([&](std::size_t lane) { return problem.nodeCoords[problem.nodeNumbers[lane][n]]; },
                              coords);
            nodes[n] = {wide(coords[0]), wide(coords[1]), wide(coords[2])};
            continue;
        }
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            nodes[n][axis] = Double::ofEach([&](std::size_t lane)
                                            { return problem.exactNodeCoords[problem.nodeNumbers[lane][n]][axis]; }) -
                             problem.origin[axis];
        }
    }
    return nodes;
}

template <class Kind, std::size_t Size> void polishPack(const PolishProblem& problem, PolishSolution& solution)
{
    using Double = DoublePack<Size>;
    using Mask = PackMask<Size>;
    constexpr int mostSteps = 12;
    constexpr double smallStep = 1e-8;

    const ElementNodes<Kind, Double> nodes = gatherExactNodes<Kind, Size>(problem);
    std::array<Double, 3> points;
    std::array<Double, 3> start;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        points[axis] = Double::ofEach([&](std::size_t lane) { return problem.points[axis][lane]; });
        start[axis] =
            Double::ofEach([&](std::size_t lane) { return static_cast<double>(problem.referenceCoords[axis][lane]); });
    }
    std::array<Double, 3> xi = start;
    Mask isOpen = Double{} == 0.0;
    for (int i = 0; i < mostSteps && isOpen.bits() != 0; ++i)
    {
        Double jacobian[3][3];
        Double inverse[3][3];
        jacobianMatrix<Kind, true>(nodes, derivativesAt<Kind>(xi), jacobian);
        const Double determinant = adjugate33(jacobian, inverse);
        divideAdjugate33(inverse, determinant);
        const std::array<Double, 3> position = physicalPosition<Kind>(nodes, xi);
        const std::array<Double, 3> residual{points[0] - position[0], points[1] - position[1], points[2] - position[2]};
        const std::array<Double, 3> step = matrixTimesVector(inverse, residual);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            xi[axis] = select(isOpen, xi[axis] + step[axis], xi[axis]);
        }
        // A step that is no number, as from a singular Jacobian, is never small.
        const Double squaredStep = step[0] * step[0] + step[1] * step[1] + step[2] * step[2];
        isOpen = isOpen & ~(squaredStep <= smallStep * smallStep);
    }
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        xi[axis] = select(isOpen, start[axis], xi[axis]);
        xi[axis].store(solution.referenceCoords[axis]);
    }
    const auto weights = shapeFunctionsAt<Kind>(xi);
    for (std::size_t n = 0; n < Kind::nbNodes; ++n)
    {
        weights[n].store(solution.weights[n]);
    }
}

template <std::size_t Size> void polishPack(int typeCode, const PolishProblem& problem, PolishSolution& solution)
{
    visitElementKind(typeCode,
                     [&]<class Kind>(Kind)
                     {
                         static_assert(Kind::nbNodes <= maxNbPolishedNodes);
                         polishPack<Kind, Size>(problem, solution);
                     });
}

#endif
