// Inversions in packs give the bits of inversions one by one, in every lane and for every element kind.
#include "PackedInversion.h"

#include <bit>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace
{
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

using Generator = std::mt19937_64;

float uniform(Generator& generator, float low, float high)
{
    return low + (high - low) * static_cast<float>(generator() >> 40) * 0x1p-24F;
}

/// One inversion's element, point and tolerance.
template <class Kind> struct Problem
{
    ElementNodes<Kind> nodes;
    Vector3 point;
    std::array<float, 6> box;
};

/// The reference positions of a kind's nodes: where its shape functions are 1.
template <class Kind> ElementNodes<Kind> referenceNodes()
{
    if constexpr (std::is_same_v<Kind, LinearHexahedron>)
    {
        return {{{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1}, {-1, -1, 1}, {1, -1, 1}, {1, 1, 1}, {-1, 1, 1}}};
    }
    else if constexpr (std::is_same_v<Kind, LinearTetrahedron>)
    {
        return {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    }
    else if constexpr (std::is_same_v<Kind, LinearWedge>)
    {
        return {{{0, 0, -1}, {1, 0, -1}, {0, 1, -1}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}}};
    }
    else if constexpr (std::is_same_v<Kind, LinearPyramid>)
    {
        return {{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}, {0, 0, 1}}};
    }
    else
    {
        return {{{1, 0, 0},
                 {0, 1, 0},
                 {0, 0, 0},
                 {0, 0, 1},
                 {0.5F, 0.5F, 0},
                 {0, 0.5F, 0},
                 {0.5F, 0, 0},
                 {0.5F, 0, 0.5F},
                 {0, 0.5F, 0.5F},
                 {0, 0, 0.5F}}};
    }
}

/// Distorted elements of all sizes, the smallest with Jacobians that underflow to 0; now and then a flat or a folded
/// one, or a coordinate that is no number.
template <class Kind> Problem<Kind> randomProblem(Generator& generator)
{
    Problem<Kind> problem;
    const float scale = std::pow(10.0F, uniform(generator, -17.0F, 9.0F));
    const float offset = generator() % 3 == 0 ? uniform(generator, -50.0F, 50.0F) : 0.0F;
    const float distortion = generator() % 8 == 0 ? 1.5F : 0.2F;
    const float height = generator() % 16 == 0 ? 0.0F : 1.0F;
    const bool isOnGrid = generator() % 4 == 0; // with zeros of both signs among the coordinates
    problem.nodes = referenceNodes<Kind>();
    for (auto& node : problem.nodes)
    {
        node[2] *= height;
        for (float& coordinate : node)
        {
            if (isOnGrid)
            {
                coordinate = generator() % 2 == 0 ? -coordinate * scale : coordinate * scale;
                continue;
            }
            coordinate = scale * (coordinate + offset + uniform(generator, -distortion, distortion) * height);
        }
    }
    if (generator() % 32 == 0)
    {
        constexpr std::array special{infinity, -infinity, notANumber, 0.0F, -0.0F, 3e38F};
        problem.nodes[generator() % Kind::nbNodes][generator() % 3] = special[generator() % special.size()];
    }
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        float low = problem.nodes[0][axis];
        float high = low;
        for (const auto& node : problem.nodes)
        {
            low = std::min(low, node[axis]);
            high = std::max(high, node[axis]);
        }
        problem.box[axis] = low;
        problem.box[axis + 3] = high;
        problem.point[axis] = uniform(generator, low, high);
    }
    return problem;
}

template <class Kind>
std::array<Inversion, packSize> invertTogether(const std::array<Problem<Kind>, packSize>& problems,
                                               float precisionFactor)
{
    ElementNodes<Kind, FloatPack> nodes;
    for (std::size_t n = 0; n < Kind::nbNodes; ++n)
    {
        nodes[n] = packOf(problems[0].nodes[n], problems[1].nodes[n], problems[2].nodes[n], problems[3].nodes[n]);
    }
    const auto tolerance = [&](std::size_t lane)
    { return squaredInversionTolerance(problems[lane].box.data(), precisionFactor); };
    const bool areFinite = std::all_of(
        problems.begin(), problems.end(),
        [](const auto& problem)
        {
            return std::all_of(problem.nodes.begin(), problem.nodes.end(),
                               [](const Vector3& node)
                               { return std::isfinite(node[0]) && std::isfinite(node[1]) && std::isfinite(node[2]); });
        });
    return invertPoints<Kind>(nodes, areFinite, FloatPack(tolerance(0), tolerance(1), tolerance(2), tolerance(3)),
                              packOf(problems[0].point, problems[1].point, problems[2].point, problems[3].point),
                              precisionFactor);
}

template <class Kind> void comparePacksWithSingles(std::uint64_t seed)
{
    Generator generator(seed);
    std::array<int, 4> nbPerResult{};
    for (int i = 0; i < 10000; ++i)
    {
        std::array<Problem<Kind>, packSize> problems;
        for (auto& problem : problems)
        {
            problem = randomProblem<Kind>(generator);
        }
        constexpr std::array factors{0.0F, 1e-6F, 0.001F, 0.05F, -0.001F, notANumber};
        const float factor = factors[generator() % 8 < 5 ? 2 : generator() % factors.size()];
        const auto together = invertTogether<Kind>(problems, factor);
        for (std::size_t lane = 0; lane < packSize; ++lane)
        {
            const Problem<Kind>& problem = problems[lane];
            const Inversion alone = invertPoint<Kind>(problem.nodes, problem.box.data(), problem.point, factor);
            ASSERT_EQ(together[lane].result, alone.result) << "pack " << i << ", lane " << lane;
            ASSERT_EQ(together[lane].nbIterations, alone.nbIterations) << "pack " << i << ", lane " << lane;
            using Bits = std::array<std::uint32_t, 3>;
            if (alone.result == Inversion::inside)
            {
                ASSERT_EQ(std::bit_cast<Bits>(together[lane].referenceCoords),
                          std::bit_cast<Bits>(alone.referenceCoords))
                    << "pack " << i << ", lane " << lane;
            }
            ++nbPerResult[static_cast<std::size_t>(alone.result + 2)];
        }
    }
    EXPECT_GT(nbPerResult[0], 20) << "singular";
    EXPECT_GT(nbPerResult[1], 100) << "not converged";
    EXPECT_GT(nbPerResult[2], 1000) << "outside";
    EXPECT_GT(nbPerResult[3], 1000) << "inside";
}
} // namespace

TEST(PackedInversion, isTheInversionOfEachLaneInHexahedra)
{
    comparePacksWithSingles<LinearHexahedron>(1);
}

TEST(PackedInversion, isTheInversionOfEachLaneInTetrahedra)
{
    comparePacksWithSingles<LinearTetrahedron>(2);
}

TEST(PackedInversion, isTheInversionOfEachLaneInWedges)
{
    comparePacksWithSingles<LinearWedge>(3);
}

TEST(PackedInversion, isTheInversionOfEachLaneInPyramids)
{
    comparePacksWithSingles<LinearPyramid>(4);
}

TEST(PackedInversion, isTheInversionOfEachLaneInQuadraticTetrahedra)
{
    comparePacksWithSingles<QuadraticTetrahedron>(5);
}
