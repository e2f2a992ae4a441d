/// Meshes for tests of the C++ interface whose geometry is known by heart.
#ifndef HOST_MESHES_H
#define HOST_MESHES_H

#include "Field.h"
#include "Mesh.h"

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace host_meshes
{
using Point = std::array<float, 3>;

/// A block of nx x ny x nz hexahedra from `low` to `high`. Elements and nodes run along z first, then y, then x. There
/// is one material of state code `stateCode`.
veltrane::Mesh block(std::array<int, 3> counts, Point low, Point high, int stateCode = 1);

/// Five unit cubes in a row along x, each with nodes of its own: a hexahedron, two wedges, five tetrahedra, five
/// quadratic tetrahedra, six pyramids.
veltrane::Mesh cubesOfAllKinds();

/// Points in one material of state code 1, repeatable, between `low` and `high`.
std::vector<float> scattered(int count, Point low, Point high, std::uint64_t seed = 1);
veltrane::PointCloud cloud(std::vector<float> coordinates, int stateCode = 1);

/// The position of every Gauss point of a mesh: sums of node positions with the rule's shape functions.
std::vector<Point> gaussPointPositions(const veltrane::Mesh& mesh);
std::vector<Point> nodePositions(const veltrane::Mesh& mesh);

/// 1 + 2x - 3y + z/2, which every element kind carries exactly, and its largest deviation by rounding for coordinates
/// of single digits.
inline double linear(const Point& p)
{
    return 1.0 + 2.0 * static_cast<double>(p[0]) - 3.0 * static_cast<double>(p[1]) + 0.5 * static_cast<double>(p[2]);
}
inline constexpr double linearTolerance = 5e-5;

/// A field in double precision whose component c is (c + 1) times the function of the position.
veltrane::Field fieldOf(const std::vector<Point>& positions, veltrane::Location location, int componentCount,
                        const std::function<double(const Point&)>& function);

std::span<const double> doublesOf(const veltrane::Field& field);
} // namespace host_meshes

#endif
