// Correspondences at the size of real models: a million nodes, shuffled.
#include "Host.h"
#include "LibraryUnderTest.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <gtest/gtest.h>
#include <numeric>
#include <random>
#include <span>
#include <vector>

namespace
{
/// A grid of hexahedra with inner nodes moved, whose arrays are as the library takes them.
struct LargeMesh : MeshSink
{
    std::vector<std::array<float, 3>> nodes;
    std::vector<std::array<int, 8>> elements;
    std::vector<int*> connectivity;
    std::vector<int> types;
    std::vector<int> matls;
    int matlState = 1;

    explicit LargeMesh(int nbNodesPerSide)
    {
        std::mt19937 generator(1);
        const auto moved = [&](int at)
        { return static_cast<double>(at) + 0.3 * (static_cast<double>(generator() >> 8) * 0x1p-24 - 0.5); };
        CellGrid grid;
        grid.cells = {nbNodesPerSide - 1, nbNodesPerSide - 1, nbNodesPerSide - 1};
        grid.corner = [&](int i, int j, int k)
        {
            const double x = moved(i);
            const double y = moved(j);
            return Position{x, y, moved(k)};
        };
        grid.filling = [](int, int, int) { return Filling::hexahedron; };
        cut(grid, *this);
        finish();
    }

    void addNode(const Position& p) override
    {
        nodes.push_back({static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2])});
    }
    void addElement(int, std::span<const int> nodeNumbers, int) override
    {
        std::ranges::copy(nodeNumbers, elements.emplace_back().begin());
    }

    /// Node i becomes node nodeOf[i], element i element eltOf[i].
    LargeMesh renumbered(const std::vector<int>& nodeOf, const std::vector<int>& eltOf) const
    {
        LargeMesh mesh = *this;
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            mesh.nodes[static_cast<std::size_t>(nodeOf[i])] = nodes[i];
        }
        for (std::size_t i = 0; i < elements.size(); ++i)
        {
            std::array<int, 8>& element = mesh.elements[static_cast<std::size_t>(eltOf[i])];
            std::transform(elements[i].begin(), elements[i].end(), element.begin(),
                           [&](int node) { return nodeOf[static_cast<std::size_t>(node)]; });
        }
        mesh.finish();
        return mesh;
    }

    int nbNodes() const { return static_cast<int>(nodes.size()); }
    int nbElts() const { return static_cast<int>(elements.size()); }
    float (*coords())[3] { return reinterpret_cast<float(*)[3]>(nodes.data()); }

private:
    void finish()
    {
        constexpr int hexahedron = 1;
        connectivity.clear();
        std::transform(elements.begin(), elements.end(), std::back_inserter(connectivity),
                       [](std::array<int, 8>& element) { return element.data(); });
        types.assign(elements.size(), hexahedron);
        matls.assign(elements.size(), 0);
    }
};

std::vector<int> shuffled(int count, unsigned seed)
{
    std::vector<int> numbers(static_cast<std::size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 0);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(seed));
    return numbers;
}

class LargeMeshes : public Host
{
};
} // namespace

TEST_F(LargeMeshes, aMillionShuffledNodesAreMatchedExactly)
{
    LargeMesh source(100);
    ASSERT_EQ(source.nbNodes(), 1000000);
    const std::vector<int> nodeOf = shuffled(source.nbNodes(), 2);
    LargeMesh target = source.renumbered(nodeOf, shuffled(source.nbElts(), 3));
    std::vector<int> partners(target.nodes.size(), -7);
    char message[1000];
    int code = -99;
    int flag = 1;
    libraryUnderTest().nodeToNode(source.nbElts(), source.nbNodes(), source.coords(), source.connectivity.data(),
                                  source.types.data(), 1, source.matls.data(), &source.matlState, target.nbElts(),
                                  target.nbNodes(), target.coords(), target.connectivity.data(), target.types.data(), 1,
                                  target.matls.data(), &target.matlState, &flag, partners.data(), message, &code,
                                  nullptr);
    ASSERT_EQ(code, 0) << message;
    std::size_t nbWrong = 0;
    for (std::size_t i = 0; i < nodeOf.size(); ++i)
    {
        nbWrong += partners[static_cast<std::size_t>(nodeOf[i])] != static_cast<int>(i) + 1 ? 1U : 0U;
    }
    EXPECT_EQ(nbWrong, 0U);
}

TEST_F(LargeMeshes, eightHundredThousandShuffledGaussPointsAreMatchedExactly)
{
    LargeMesh source(48);
    const std::vector<int> eltOf = shuffled(source.nbElts(), 4);
    LargeMesh target = source.renumbered(shuffled(source.nbNodes(), 5), eltOf);
    constexpr std::size_t nbGaussPoints = 8;
    std::vector<int> values(2 * nbGaussPoints * target.elements.size(), -7);
    std::vector<int*> elements;
    std::vector<int*> gaussPoints;
    for (std::size_t elt = 0; elt < target.elements.size(); ++elt)
    {
        elements.push_back(values.data() + 2 * nbGaussPoints * elt);
        gaussPoints.push_back(elements.back() + nbGaussPoints);
    }
    char message[1000];
    int code = -99;
    int flag = 1;
    libraryUnderTest().gaussPointToGaussPoint(
        source.nbElts(), source.nbNodes(), source.coords(), source.connectivity.data(), source.types.data(), 1,
        source.matls.data(), &source.matlState, target.nbElts(), target.nbNodes(), target.coords(),
        target.connectivity.data(), target.types.data(), 1, target.matls.data(), &target.matlState, &flag,
        elements.data(), gaussPoints.data(), message, &code, nullptr);
    ASSERT_EQ(code, 0) << message;
    std::size_t nbWrong = 0;
    for (std::size_t i = 0; i < eltOf.size(); ++i)
    {
        const auto elt = static_cast<std::size_t>(eltOf[i]);
        for (std::size_t g = 0; g < nbGaussPoints; ++g)
        {
            nbWrong += elements[elt][g] != static_cast<int>(i) + 1 ? 1U : 0U;
            nbWrong += gaussPoints[elt][g] != static_cast<int>(g) + 1 ? 1U : 0U;
        }
    }
    EXPECT_EQ(nbWrong, 0U);
}
