/// The shapes of the random problems: sources, targets and point clouds that lie in a body in common.
#ifndef RANDOM_GEOMETRY_H
#define RANDOM_GEOMETRY_H

#include "RandomMeshes.h"

#include <array>
#include <functional>
#include <vector>

namespace random_models
{

/// The material state codes that are drawn from: both classes, and the one that also means "not assigned".
inline const std::vector<int> stateCodes = {0, 1, 2, 3, 5, 7, 8, 9, -1};

/// The box that a source fills.
struct Body
{
    std::array<double, 3> origin{};
    std::array<double, 3> size{};
    std::array<double, 2> shear{};
};

enum class SourceStyle
{
    ordinary,
    withHole,
    fine
};

/// How a target mesh relates to its source.
struct TargetStyle
{
    bool inside = true;     ///< well within the source's box, or reaching over it a little
    bool isSkin = false;    ///< flat: quadrilaterals and triangles in one plane
    bool isFine = false;    ///< many more cells than the source
    double foreign = 0.05;  ///< share of materials without a partner
    double detached = 0.15; ///< chance of separate nodes per material
};

Body randomBody(Random& random);

std::vector<int> randomStates(Random& random, int count);

/// Materials in layers along an axis, in random cells, or one for all.
std::function<int(int, int, int)> randomMaterials(Random& random, int nbMatls, const std::array<int, 3>& cells);

/// A source before it has materials.
Cutting randomSource(Random& random, const Body& body, SourceStyle style);

Mesh randomSourceMesh(Random& random, const Body& body, SourceStyle style);

Mesh randomTargetMesh(Random& random, const Mesh& source, const Body& body, const TargetStyle& style);

Mesh randomPointCloud(Random& random, const Mesh& source, const Body& body, double outside);

/// A lattice of unit cells with a hole, and a target with nodes in its symmetry planes: many source elements lie at
/// equal distances from a target node.
void makeLattice(Random& random, Mesh& source, Mesh& target);

} // namespace random_models

#endif
