/// Reference coordinates and weights of located points in double precision.
#ifndef VELTRANE_POLISHING_H
#define VELTRANE_POLISHING_H

#include "../ModelClass.h"
#include "../Search/PackedSearch.h"
#include "MapTable.h"

#include <array>

/// Positions in double precision, as far as those of a model do not say it all.
struct ExactPositions
{
    const float (*coords)[3];       ///< of the model
    const double (*exactCoords)[3]; ///< the origin not taken off, or null
    std::array<double, 3> origin;

    std::array<double, 3> operator[](std::int64_t node) const
    {
        std::array<double, 3> position{};
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            position[axis] = exactCoords != nullptr ? exactCoords[node][axis] - origin[axis]
                                                    : static_cast<double>(coords[node][axis]);
        }
        return position;
    }
};

/// Fills rows of a table whose elements and reference coordinates are known, in packs of points in elements of one
/// kind. What comes into a row does not depend on the others.
class RowPolisher
{
public:
    /// The objects are borrowed.
    RowPolisher(const ModelClass& source, const ExactPositions& positions, MapTable& table)
        : itsSource(source), itsPositions(positions), itsTable(table)
    {
    }

    /// The row is filled now or by finish().
    void add(std::int64_t row, const std::array<double, 3>& point);
    void finish();

private:
    struct Entry
    {
        std::int64_t row;
        std::array<double, 3> point;
    };
    struct Waiting
    {
        int typeCode = 0;
        std::size_t size = 0;
        std::array<Entry, maxPackSize> entries;
    };
    void polish(Waiting& waiting);
    void write(std::int64_t row, const PolishSolution& solution, std::size_t lane);

    const ModelClass& itsSource;
    ExactPositions itsPositions;
    MapTable& itsTable;
    PackedSearch itsPackedSearch = widestPackedSearch();
    std::array<Waiting, VolumeElementKinds::size> itsWaiting;
};

/// The position of a Gauss point of an element with shape functions.
std::array<double, 3> exactGaussPointPosition(const ModelClass& model, const ExactPositions& positions, int elt,
                                              int gaussPoint);

#endif
