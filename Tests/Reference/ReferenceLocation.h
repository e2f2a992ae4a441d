/// Which source element holds a point.
#ifndef REFERENCE_LOCATION_H
#define REFERENCE_LOCATION_H

#include "ReferenceElements.h"
#include "ReferenceGrid.h"
#include "ReferenceTypes.h"

#include <vector>

namespace reference
{

/// A source mesh made ready for point location.
struct SearchableMesh
{
    MeshArrays mesh;
    std::vector<Box> boxes;
    Grid grid;
    float precision = 0.001F;

    int stateOf(int element) const { return mesh.matlTypes[mesh.matlIdPerElt[element]]; }
};

/// An element, or -1, with the inversion of the point in it.
struct Location
{
    int element = -1;
    Inversion inversion;
};

/// The first element of the point's bucket with that material state code that contains the point.
Location locate(const SearchableMesh& source, const Vec3& point, int matlState);

/// Of the elements of the point's bucket with that material state code, the one with the nearest centre; among equal
/// distances the last. -1 when there is none.
int nearestElement(const SearchableMesh& source, const Vec3& point, int matlState);

} // namespace reference

#endif
