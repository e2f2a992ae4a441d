/// Type 7, the 3-node triangle on xi, eta >= 0, xi + eta <= 1: a surface, whose nodes can be targets.
///
/// Nodes: 1 (0,0), 2 (1,0), 3 (0,1).
#ifndef VELTRANE_LINEAR_TRIANGLE_H
#define VELTRANE_LINEAR_TRIANGLE_H

#include "ReferenceElement.h"

struct LinearTriangle
{
    static constexpr int typeCode = 7;
    static constexpr std::string_view name = "triangle";
    static constexpr std::string_view plural = "triangles";
    static constexpr int dimension = 2;
    static constexpr int nbNodes = 3;
    static constexpr int nbCorners = 3;
    static constexpr int nbGaussPoints = 3;

    static constexpr std::array<Vector3, nbNodes> nodes{{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}};
    static constexpr std::array faces{faceOf(3, 0, 1, 2)};
    static constexpr std::array<VtkCell<nbNodes>, 1> vtkCells{{{5, inOrder<nbNodes>()}}};
};

#endif
