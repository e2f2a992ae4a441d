// What is found of elements that are flat, inside out or folded, on any number of threads.
#include "ElementChecks.h"
#include "ElementSizes.h"
#include "Errors.h"
#include "Mesh.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace
{
using namespace veltrane;
using testing::ElementsAre;
using testing::IsEmpty;

/// So many that several threads have a part each.
constexpr int elementCount = 10000;

/// Unit tetrahedra side by side, each with nodes of its own.
MeshData tetrahedra()
{
    MeshData data{.offsets = {0}, .materials = {{"all", 0}}};
    for (int element = 0; element < elementCount; ++element)
    {
        const auto x = static_cast<float>(2 * element);
        data.coordinates.insert(data.coordinates.end(), {x, 0, 0, x + 1, 0, 0, x, 1, 0, x, 0, 1});
        for (int node = 0; node < 4; ++node)
        {
            data.connectivity.push_back(4 * element + node);
        }
        data.kinds.push_back(ElementKind::tetrahedron);
        data.offsets.push_back(data.connectivity.size());
        data.materialPerElement.push_back(0);
    }
    return data;
}

TEST(ElementChecks, FindAllFlatElementsInTheirOrder)
{
    MeshData data = tetrahedra();
    for (const std::size_t element : {3000U, 3001U, 9500U})
    {
        data.coordinates[12 * element + 11] = 0; // the tip falls onto the base
    }
    const Mesh mesh(std::move(data));
    for (const int threads : {1, 3})
    {
        EXPECT_EQ(findElementFaults(mesh, threads).flat, (std::vector<int>{3000, 3001, 9500}));
    }
    EXPECT_TRUE(findElementFaults(Mesh(tetrahedra())).flat.empty());
}

TEST(ElementChecks, FindAllElementsThatAreInsideOut)
{
    MeshData data = tetrahedra();
    for (const std::size_t element : {10U, 11U, 4000U, 9999U})
    {
        std::swap(data.connectivity[4 * element], data.connectivity[4 * element + 1]);
    }
    const Mesh mesh(std::move(data));
    for (const int threads : {1, 3})
    {
        EXPECT_THAT(findElementFaults(mesh, threads).inverted, ElementsAre(10, 11, 4000, 9999));
    }
}

TEST(ElementChecks, LookAtEveryCorner)
{
    const std::vector<float> cube{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 1, 1, 1, 0, 1, 1};
    const auto withNodes = [](std::vector<float> coordinates)
    {
        return Mesh({.coordinates = std::move(coordinates),
                     .kinds = {ElementKind::hexahedron},
                     .offsets = {0, 8},
                     .connectivity = {0, 1, 2, 3, 4, 5, 6, 7},
                     .materialPerElement = {0},
                     .materials = {{"all", 0}}});
    };
    EXPECT_THAT(findElementFaults(withNodes(cube)).inverted, IsEmpty());
    for (std::size_t node = 0; node < 8; ++node)
    {
        std::vector<float> folded = cube;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            // Beyond the plane through the three corners beside it; the middle stays as it was inside.
            float& coordinate = folded[3 * node + axis];
            coordinate += (coordinate == 0 ? 0.45F : -0.45F);
        }
        EXPECT_THAT(findElementFaults(withNodes(folded)).inverted, ElementsAre(0)) << node;
    }
}

TEST(ElementChecks, TellTheLargestSize)
{
    MeshData data = tetrahedra();
    data.coordinates[12 * 5000 + 11] = 7;
    data.coordinates[12 * 9000 + 11] = 5;
    const Mesh mesh(std::move(data));
    for (const int threads : {1, 3})
    {
        EXPECT_EQ(largestElementSize(mesh, threads), 7);
    }
}

TEST(MeshOnThreads, IsCheckedAsOnOne)
{
    const auto refusalOf = [](const MeshData& data, int threads) -> std::string
    {
        try
        {
            Mesh(data, threads);
            return "";
        }
        catch (const InvalidData& error)
        {
            return error.what();
        }
    };
    MeshData data = tetrahedra();
    EXPECT_EQ(refusalOf(data, 3), "");
    data.connectivity[20000] = 4 * elementCount;
    EXPECT_EQ(refusalOf(data, 3), "element 5000 refers to node 40000, but there are 40000 nodes, counted from 0");
    EXPECT_EQ(refusalOf(data, 1), refusalOf(data, 3));
    data = tetrahedra();
    const Mesh mesh(data, 3);
    EXPECT_THAT(mesh.nodesOf(7000), ElementsAre(28000, 28001, 28002, 28003));
    EXPECT_THAT(mesh.boundingBox({}, 3).max, ElementsAre(2 * elementCount - 1, 1, 1));
    EXPECT_THAT(mesh.boundingBox({}, 3).min, ElementsAre(0, 0, 0));
}

} // namespace
