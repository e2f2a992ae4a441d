/// Areas of a cut, by their borders.
#ifndef VELTRANE_HOST_REGIONS_H
#define VELTRANE_HOST_REGIONS_H

#include "Cut.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace veltrane
{

/// A closed border; what it encloses is at its left hand.
using Loop = std::vector<PlanePoint>;
using Loops = std::vector<Loop>;

/// The triangles of a cut, from whose neighbourhood the borders of areas follow: only triangles that a border goes
/// through have a part in it, however many there are.
class CutRegions
{
public:
    /// Refers to the cut.
    explicit CutRegions(const Cut& cut);

    /// All of the cut.
    Loops covered() const { return trace(Part::all, 0); }

    /// Where there are values.
    Loops withValues() const { return trace(Part::withValues, 0); }

    /// Where values are at or above a level.
    Loops above(double level) const { return trace(Part::above, level); }

private:
    enum class Part
    {
        all,
        withValues,
        above
    };

    struct Triangle
    {
        std::array<std::size_t, 3> points;                    ///< counter-clockwise
        std::array<std::optional<std::size_t>, 3> neighbours; ///< across the side from each point to the next
        bool hasValues;
    };

    void connect();
    Loops trace(Part part, double level) const;

    const Cut& cut_;
    std::vector<Triangle> triangles_;
};

/// Without points that lie on the line between others but for a tolerance; loops that vanish are left out.
Loops simplified(const Loops& loops, double tolerance);

} // namespace veltrane

#endif
