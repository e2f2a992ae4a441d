/// Inversions of several points at once, each in an element of its own, all of one kind: what invertPoint() does, lane
/// by lane.
#ifndef VELTRANE_PACKED_INVERSION_H
#define VELTRANE_PACKED_INVERSION_H

#include <cstddef>
#include <cstdint>

inline constexpr std::size_t maxPackSize = 16;

/// What is to be inverted. Every lane must hold a valid problem; one without a point of its own repeats another.
struct PackedProblem
{
    const float (*nodeCoords)[3];        ///< of the mesh
    const int* nodeNumbers[maxPackSize]; ///< per lane, of its element
    const float* points[maxPackSize];    ///< per lane, three coordinates
    float precisionFactor;               ///< half the margin of reference coordinates
    float tolerances[maxPackSize];       ///< per lane, the squared distance at which it has converged
};

/// What came of it, per lane. Bit i of a set is lane i.
struct PackedSolution
{
    std::uint32_t singular;                ///< met a Jacobian with a determinant of exactly 0
    std::uint32_t unconverged;             ///< iterated in vain
    std::uint32_t inside;                  ///< converged inside its element, margins included
    float referenceCoords[3][maxPackSize]; ///< where inside
    float nbIterations[maxPackSize];       ///< where inside; a small whole number
};

/// Inverts as many lanes as it is made for; the type code must have shape functions.
using InvertPack = void (*)(int typeCode, const PackedProblem& problem, PackedSolution& solution);

#endif
