/// Arrangements of meshes and fields that several test files share.
#ifndef VELTRANE_TESTS_SCENES_H
#define VELTRANE_TESTS_SCENES_H

#include "Host.h"

#include <array>
#include <functional>
#include <utility>

/// A field that the linear elements reproduce exactly.
inline double linear(const Point& p)
{
    return 1.0 + 2.0 * static_cast<double>(p[0]) + 3.0 * static_cast<double>(p[1]) - 4.0 * static_cast<double>(p[2]);
}

inline Field nodal(const Mesh& mesh, const std::function<double(const Point&)>& function)
{
    return {.values = atNodes(mesh, function)};
}

inline Field atGaussPoints()
{
    return {.location = atGaussPointsLocation};
}

/// A transfer of one field, given at the nodes, to the nodes or points of the target.
inline Transfer transferOf(const std::function<double(const Point&)>& function, Mesh source, Mesh target)
{
    Transfer transfer;
    transfer.sourceFields = {nodal(source, function)};
    transfer.source = std::move(source);
    transfer.target = std::move(target);
    return transfer;
}

/// A source of eight hexahedra that fills the box from 0 to 4, with some room around the targets of most tests.
inline Mesh roomySource()
{
    return box(element::hexahedron, {0, 0, 0}, {4, 4, 4}, {2, 2, 2});
}

inline Mesh unitHexahedron(Point minimum)
{
    return box(element::hexahedron, minimum, minimum + Point{1, 1, 1});
}

/// Two source blocks with a gap between x = 2 and x = 7, both two hexahedra long. No bucket of a target that runs from
/// x = 0.5 to x = 8.5 and lies between x = 2.46 and x = 6.54 lists a source element.
inline Mesh sourceWithGap()
{
    return reordered(box(element::hexahedron, {0, 0, 0}, {9, 1, 1}, {9, 1, 1}), {0, 1, 7, 8});
}

/// A chain of eight hexahedra across the gap. Its planes of nodes lie at the x of `planesAcrossGap`: the third and the
/// seventh are outside the source but within reach, the three between them are far outside.
inline constexpr std::array<float, 9> planesAcrossGap = {0.5F, 1.5F, 2.3F, 3.5F, 4.5F, 5.5F, 6.7F, 7.5F, 8.5F};

inline Mesh chainAcrossGap()
{
    Mesh chain = box(element::hexahedron, {0, 0.25F, 0.25F}, {8, 0.75F, 0.75F}, {8, 1, 1});
    for (std::size_t i = 0; i < chain.nodes.size(); ++i)
    {
        chain.nodes[i][0] = planesAcrossGap[i % planesAcrossGap.size()];
    }
    return chain;
}

/// A source element from x = 0 to x = 1 and a target whose last node lies at x = 1.343. Buckets are 1.02 wide, and the
/// second begins at x = 1.05: the box of the element ends before it, at 1.01, and reaches it only when widened by a
/// tenth of itself, to 1.112. Another source element, of another material, makes room for the target without coming
/// near it.
inline Transfer reachedByWideningOnly()
{
    const Mesh source = joined(unitHexahedron({0, 0, 0}), withStateCode(unitHexahedron({1, 3, 0}), 99));
    const Mesh target = single(
        element::tetrahedron, {{0.043F, 0.5F, 0.5F}, {0.043F, 0.6F, 0.5F}, {0.043F, 0.5F, 0.6F}, {1.343F, 0.5F, 0.5F}});
    return transferOf([](const Point&) { return 6.0; }, source, target);
}

/// A quadratic tetrahedron whose edges along x are bent: x = 1 - (1 - xi)^2, y = eta, z = zeta.
inline Mesh bentElement()
{
    return single(element::quadraticTetrahedron, {{1, 0, 0},
                                                  {0, 1, 0},
                                                  {0, 0, 0},
                                                  {0, 0, 1},
                                                  {0.75F, 0.5F, 0},
                                                  {0, 0.5F, 0},
                                                  {0.75F, 0, 0},
                                                  {0.75F, 0, 0.5F},
                                                  {0, 0.5F, 0.5F},
                                                  {0, 0, 0.5F}});
}

/// The reference coordinate xi at its nodes.
inline std::vector<double> xiInBentElement()
{
    return {1, 0, 0, 0, 0.5, 0, 0.5, 0.5, 0, 0};
}

/// Checks every value of a field. An expected value that is `untouched` must be so exactly.
inline void expectNear(const std::vector<double>& values, const std::vector<double>& expected, double tolerance)
{
    ASSERT_EQ(values.size(), expected.size());
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        if (expected[i] == untouched)
        {
            EXPECT_EQ(values[i], untouched) << "value " << i;
        }
        else
        {
            EXPECT_NEAR(values[i], expected[i], tolerance) << "value " << i;
        }
    }
}

#endif
