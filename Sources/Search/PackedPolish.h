/// Reference coordinates of several points at once, made exact in double precision: Newton steps from where the search
/// in single precision has left them.
#ifndef VELTRANE_PACKED_POLISH_H
#define VELTRANE_PACKED_POLISH_H

#include "PackedInversion.h"

/// Most nodes of an element with shape functions.
inline constexpr std::size_t maxNbPolishedNodes = 27;

/// What is to be polished, points in elements all of one kind. Every lane must hold a valid problem; one without a
/// point of its own repeats another.
struct PolishProblem
{
    const float (*nodeCoords)[3];        ///< of the mesh
    const double (*exactNodeCoords)[3];  ///< the same in double precision before the origin was taken off, or null
    double origin[3];                    ///< of nodeCoords and points, in exactNodeCoords
    const int* nodeNumbers[maxPackSize]; ///< per lane, of its element
    double points[3][maxPackSize];
    float referenceCoords[3][maxPackSize]; ///< where the search has ended
};

/// What came of it, per lane. Where the steps do not become small, the reference coordinates are the given ones.
struct PolishSolution
{
    double referenceCoords[3][maxPackSize];
    double weights[maxNbPolishedNodes][maxPackSize]; ///< the shape functions there
};

/// Polishes as many lanes as it is made for; the type code must have shape functions.
using PolishPack = void (*)(int typeCode, const PolishProblem& problem, PolishSolution& solution);

#endif
