// Inversions in packs give the bits of inversions one by one, in every lane and for every element kind.
#include "Search/PackedSearch.h"

#include "Search/ReferenceCoordinates.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

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
    problem.nodes = Kind::nodes;
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
    if (generator() % 8 == 0)
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

/// Problems side by side, as the packed inversion takes them.
template <class Kind> class Pack
{
public:
    Pack(std::size_t size, Generator& generator, float precisionFactor) : itsPrecisionFactor(precisionFactor)
    {
        for (std::size_t lane = 0; lane < size; ++lane)
        {
            itsProblems[lane] = randomProblem<Kind>(generator);
            for (const Vector3& node : itsProblems[lane].nodes)
            {
                std::copy(node.begin(), node.end(), itsCoords[itsNbNodes]);
                itsNumbers[lane].push_back(static_cast<int>(itsNbNodes++));
            }
        }
    }

    PackedSolution solve(InvertPack invert, std::size_t size) const
    {
        PackedProblem problem{};
        problem.nodeCoords = itsCoords;
        problem.precisionFactor = itsPrecisionFactor;
        for (std::size_t lane = 0; lane < size; ++lane)
        {
            problem.nodeNumbers[lane] = itsNumbers[lane].data();
            problem.points[lane] = itsProblems[lane].point.data();
            problem.tolerances[lane] = squaredInversionTolerance(itsProblems[lane].box.data(), itsPrecisionFactor);
        }
        PackedSolution solution{};
        invert(Kind::typeCode, problem, solution);
        return solution;
    }

    Inversion solveAlone(std::size_t lane) const
    {
        const Problem<Kind>& problem = itsProblems[lane];
        return invertPoint<Kind>(problem.nodes, problem.box.data(), problem.point, itsPrecisionFactor);
    }

private:
    float itsPrecisionFactor;
    std::array<Problem<Kind>, maxPackSize> itsProblems;
    float itsCoords[maxPackSize * Kind::nbNodes][3];
    std::size_t itsNbNodes = 0;
    std::array<std::vector<int>, maxPackSize> itsNumbers;
};

bool isIn(std::uint32_t set, std::size_t lane)
{
    return (set >> lane & 1) != 0;
}

template <class Kind>
void comparePackWithSingles(const Pack<Kind>& pack, const PackedSearch& packed, std::array<int, 4>& nbPerResult)
{
    const PackedSolution together = pack.solve(packed.invert, packed.packSize);
    for (std::size_t lane = 0; lane < packed.packSize; ++lane)
    {
        const Inversion alone = pack.solveAlone(lane);
        ++nbPerResult[static_cast<std::size_t>(alone.result + 2)];
        ASSERT_EQ(isIn(together.inside, lane), alone.result == Inversion::inside) << "lane " << lane;
        ASSERT_EQ(isIn(together.singular, lane), alone.result == Inversion::singular) << "lane " << lane;
        if (alone.result != Inversion::inside)
        {
            continue;
        }
        ASSERT_EQ(static_cast<int>(together.nbIterations[lane]), alone.nbIterations) << "lane " << lane;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            ASSERT_EQ(std::bit_cast<std::uint32_t>(together.referenceCoords[axis][lane]),
                      std::bit_cast<std::uint32_t>(alone.referenceCoords[axis]))
                << "lane " << lane;
        }
    }
}

template <class Kind> class PackedInversionOf : public testing::Test
{
};

using Kinds = VolumeElementKinds::Into<testing::Types>;
TYPED_TEST_SUITE(PackedInversionOf, Kinds);
} // namespace

TYPED_TEST(PackedInversionOf, eachLaneIsTheInversionOfItsPointAlone)
{
    for (const std::size_t packSize : {4U, 8U, 16U})
    {
        const PackedSearch packed = packedSearch(packSize);
        if (packed.invert == nullptr)
        {
            continue; // not on this processor
        }
        Generator generator(packSize);
        std::array<int, 4> nbPerResult{};
        for (std::size_t i = 0; i < 40000 / packSize; ++i)
        {
            constexpr std::array factors{0.0F, 1e-6F, 0.001F, 0.05F, -0.001F, notANumber};
            const float factor = factors[generator() % 8 < 5 ? 2 : generator() % factors.size()];
            const Pack<TypeParam> pack(packSize, generator, factor);
            comparePackWithSingles(pack, packed, nbPerResult);
            ASSERT_FALSE(this->HasFatalFailure()) << "pack " << i << " of " << packSize;
        }
        EXPECT_GT(nbPerResult[0], 20) << "singular";
        EXPECT_GT(nbPerResult[1], 100) << "not converged";
        EXPECT_GT(nbPerResult[2], 1000) << "outside";
        EXPECT_GT(nbPerResult[3], 1000) << "inside";
    }
}

TEST(PackedInversion, isThereOnEveryProcessor)
{
    EXPECT_NE(packedSearch(4).invert, nullptr);
    EXPECT_EQ(packedSearch(5).invert, nullptr);
    EXPECT_NE(widestPackedSearch().invert, nullptr);
    EXPECT_LE(widestPackedSearch().packSize, maxPackSize);
}
