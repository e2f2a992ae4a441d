/// Type 6, the 4-node quadrilateral on the square [-1, 1]^2: a surface, whose nodes can be targets.
///
/// Nodes: 1 (-1,-1), 2 (1,-1), 3 (1,1), 4 (-1,1).
#ifndef VELTRANE_LINEAR_QUADRILATERAL_H
#define VELTRANE_LINEAR_QUADRILATERAL_H

#include "ReferenceElement.h"

struct LinearQuadrilateral
{
    static constexpr int typeCode = 6;
    static constexpr std::string_view name = "quadrilateral";
    static constexpr std::string_view plural = "quadrilaterals";
    static constexpr int dimension = 2;
    static constexpr int nbNodes = 4;
    static constexpr int nbCorners = 4;
    static constexpr int nbGaussPoints = 4;

    static constexpr std::array<Vector3, nbNodes> nodes{{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}}};
    static constexpr std::array faces{faceOf(4, 0, 1, 2, 3)};
    /// The second is the pixel, which counts its nodes row by row.
    static constexpr std::array<VtkCell<nbNodes>, 2> vtkCells{{{9, inOrder<nbNodes>()}, {8, {0, 1, 3, 2}}}};
};

#endif
