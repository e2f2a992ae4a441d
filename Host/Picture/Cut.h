/// Plane cuts through meshes.
#ifndef VELTRANE_HOST_CUT_H
#define VELTRANE_HOST_CUT_H

#include "Mesh.h"

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace veltrane
{

/// A plane across a coordinate axis.
struct CutPlane
{
    std::size_t axis;
    double position;

    /// The axes to the right and upwards when one looks at the plane.
    std::size_t right() const { return axis == 0 ? 1 : 0; }
    std::size_t up() const { return axis == 2 ? 1 : 2; }
};

using PlanePoint = std::array<double, 2>;
using PlaneEdge = std::array<std::size_t, 2>;

/// Where a plane meets a mesh. Numbers are those of the cut's points.
struct Cut
{
    std::vector<PlanePoint> points;                    ///< to the right and upwards
    std::vector<double> values;                        ///< of the points; NaN where there is no usable value
    std::vector<std::array<std::size_t, 3>> triangles; ///< of volume elements
    std::vector<PlaneEdge> lines;                      ///< of surface elements
    std::vector<PlaneEdge> elementEdges;               ///< between the volume elements and around them
};

/// The cut of a mesh with a value at each node. Only elements that the plane goes through are looked at closely.
Cut cutThrough(const Mesh& mesh, std::span<const double> values, const CutPlane& plane);

} // namespace veltrane

#endif
