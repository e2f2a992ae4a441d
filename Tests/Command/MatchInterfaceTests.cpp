// The C++ interface to the exact correspondences, and the diagnosis of their failures.
#include "Errors.h"
#include "Match.h"
#include "MatchDiagnosis.h"
#include "TestMeshes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

namespace
{

using namespace veltrane;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Property;
using testing::StrEq;
using testing::Throws;

/// Separate cubes of edge 1 along the x axis, each of a material of its own.
Mesh cubesOfMaterials(const std::vector<int>& stateCodes)
{
    std::vector<Corner> corners;
    for (std::size_t i = 0; i < stateCodes.size(); ++i)
    {
        corners.push_back({2 * static_cast<float>(i), 0, 0});
    }
    const Mesh bare = cubes(corners, 1);
    MeshData data{.coordinates = bare.coordinates(), .kinds = bare.kinds(), .offsets = {0}};
    data.connectivity.resize(static_cast<std::size_t>(bare.nodeCount()));
    std::iota(data.connectivity.begin(), data.connectivity.end(), 0);
    for (std::size_t i = 0; i < stateCodes.size(); ++i)
    {
        data.offsets.push_back(8 * (i + 1));
        data.materialPerElement.push_back(static_cast<int>(i));
        data.materials.push_back({"material", stateCodes[i]});
    }
    return Mesh(std::move(data));
}

std::vector<int> numbersFrom(int first, std::size_t count)
{
    std::vector<int> numbers(count);
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

TEST(MatchNodes, CountsFromZero)
{
    const Mesh mesh = cubesOfMaterials({1, 2});
    const NodeMatch match = matchNodes(mesh, mesh);
    EXPECT_EQ(match.sourceNodes, numbersFrom(0, 16));
}

TEST(MatchGaussPoints, CountsFromZeroInEachElement)
{
    const Mesh mesh = cubesOfMaterials({1, 2});
    const GaussPointMatch match = matchGaussPoints(mesh, mesh);
    ASSERT_EQ(match.sourceElements.size(), 16U);
    for (std::size_t i = 0; i < 16; ++i)
    {
        EXPECT_EQ(match.sourceElements[i], static_cast<int>(i / 8));
        EXPECT_EQ(match.sourceGaussPoints[i], static_cast<int>(i % 8));
    }
}

TEST(Match, LeavesOutWhatIsNotSelected)
{
    const Mesh mesh = cubesOfMaterials({1, 2});
    const MatchOptions options{.targetMapping = {false, true}};
    const std::vector<int> nodes = matchNodes(mesh, mesh, options).sourceNodes;
    EXPECT_THAT(std::vector(nodes.begin(), nodes.begin() + 8), Each(noPartner));
    EXPECT_EQ(std::vector(nodes.begin() + 8, nodes.end()), numbersFrom(8, 8));
    const GaussPointMatch match = matchGaussPoints(mesh, mesh, options);
    EXPECT_THAT(std::vector(match.sourceElements.begin(), match.sourceElements.begin() + 8), Each(noPartner));
    EXPECT_THAT(std::vector(match.sourceElements.begin() + 8, match.sourceElements.end()), Each(1));
    EXPECT_THAT(std::vector(match.sourceGaussPoints.begin(), match.sourceGaussPoints.begin() + 8), Each(noPartner));
    EXPECT_EQ(std::vector(match.sourceGaussPoints.begin() + 8, match.sourceGaussPoints.end()), numbersFrom(0, 8));
}

TEST(Match, NeedsASelectedMaterial)
{
    const Mesh mesh = cubesOfMaterials({1, 2});
    const MatchOptions none{.targetMapping = {false, false}};
    const auto fails = Throws<TransferError>(testing::AllOf(
        Property(&TransferError::code, 1),
        Property(&TransferError::what, StrEq("Error: please select at least one domain in the target model."))));
    EXPECT_THAT([&] { matchNodes(mesh, mesh, none); }, fails);
    EXPECT_THAT([&] { matchGaussPoints(mesh, mesh, none); }, fails);
    const MatchOptions tooFew{.targetMapping = {true}};
    EXPECT_THROW(matchNodes(mesh, mesh, tooFew), InvalidOption);
    EXPECT_THROW(matchGaussPoints(mesh, mesh, tooFew), InvalidOption);
}

TEST(Match, NeedsASourceOfVolumeElements)
{
    const Mesh triangle = oneElement(ElementKind::triangle, {0, 0, 0, 1, 0, 0, 0, 1, 0});
    const auto fails = Throws<InvalidData>(
        Property(&InvalidData::what, StrEq("source element 0 is a triangle; only volume elements can be a source")));
    EXPECT_THAT([&] { matchNodes(triangle, triangle); }, fails);
    EXPECT_THAT([&] { matchGaussPoints(triangle, triangle); }, fails);
}

/// A cube, and on its lower side the flat tetrahedron of its corners.
TEST(MatchNodes, TakesSourceElementsWithoutVolumeButGaussPointsDoNot)
{
    const Mesh cube = cubes({{0, 0, 0}}, 1);
    MeshData data{.coordinates = cube.coordinates(),
                  .kinds = {ElementKind::hexahedron, ElementKind::tetrahedron},
                  .offsets = {0, 8, 12},
                  .connectivity = {0, 1, 2, 3, 4, 5, 6, 7, 0, 1, 2, 3},
                  .materialPerElement = {0, 0},
                  .materials = {{"steel", 1}}};
    const Mesh source(std::move(data));
    EXPECT_EQ(matchNodes(source, cube).sourceNodes, numbersFrom(0, 8));
    EXPECT_THROW(matchGaussPoints(source, cube), InvalidData);
}

TEST(MatchNodes, TakesATargetOfSurfaceElements)
{
    const Mesh triangle = oneElement(ElementKind::triangle, {1, 0, 0, 1, 1, 1, 0, 1, 0});
    EXPECT_THAT(matchNodes(cubes({{0, 0, 0}}, 1), triangle).sourceNodes, ElementsAre(1, 6, 3));
}

TEST(MatchGaussPoints, NeedsSelectedElementsOfVolume)
{
    const Mesh cube = cubes({{0, 0, 0}}, 1);
    MeshData data{.coordinates = cube.coordinates(),
                  .kinds = {ElementKind::triangle, ElementKind::hexahedron},
                  .offsets = {0, 3, 11},
                  .connectivity = {0, 1, 2, 0, 1, 2, 3, 4, 5, 6, 7},
                  .materialPerElement = {0, 1},
                  .materials = {{"skin", 1}, {"steel", 1}}};
    const Mesh target(std::move(data));
    EXPECT_THAT([&] { matchGaussPoints(cube, target); },
                Throws<InvalidData>(Property(
                    &InvalidData::what,
                    StrEq("target element 0 is a triangle; only Gauss points of volume elements can be matched"))));
    const GaussPointMatch match = matchGaussPoints(cube, target, {.targetMapping = {false, true}});
    ASSERT_EQ(match.sourceElements.size(), 11U);
    EXPECT_THAT(std::vector(match.sourceElements.begin(), match.sourceElements.begin() + 3), Each(noPartner));
    EXPECT_THAT(std::vector(match.sourceElements.begin() + 3, match.sourceElements.end()), Each(0));
    EXPECT_EQ(std::vector(match.sourceGaussPoints.begin() + 3, match.sourceGaussPoints.end()), numbersFrom(0, 8));
}

TEST(Match, TellsItsProgressAndIsCancelledByTheCallback)
{
    const Mesh mesh = cubeGrid(3);
    const auto run = [&](auto&& match, const char* title, const char* cancelled)
    {
        std::vector<int> percents;
        MatchOptions options;
        options.progress = [&](const Progress& progress)
        {
            EXPECT_EQ(progress.title, title);
            percents.push_back(progress.percent);
            return true;
        };
        match(mesh, mesh, options);
        EXPECT_TRUE(std::ranges::is_sorted(percents));
        EXPECT_EQ(percents.front(), 0);
        EXPECT_EQ(percents.back(), 100);
        options.progress = [](const Progress& progress) { return progress.percent < 50; };
        EXPECT_THAT([&] { match(mesh, mesh, options); },
                    Throws<Cancelled>(Property(&Cancelled::what, StrEq(cancelled))));
    };
    run(matchNodes, "Node to node correspondence computation", "Node to node correspondence computation cancelled.");
    run(matchGaussPoints, "Gauss point to Gauss point correspondence computation",
        "Gauss point to Gauss point correspondence computation cancelled.");
}

/// The mean extent of the enlarged boxes of cubes of edge 1 is 1.02.
TEST(MatchDiagnosis, FindsNodesWithoutPartners)
{
    const Mesh source = cubesOfMaterials({1, 2, 3});
    EXPECT_THAT(findUnmatchedNodes(source, source).nowhere, IsEmpty());
    EXPECT_THAT(findUnmatchedNodes(source, source).elsewhereOnly, IsEmpty());

    // The first cube is there in another material, the second one as it is, and of the third one half is there.
    const Mesh target = cubes({{0, 0, 0}, {2, 0, 0}, {4, 0, 1}}, 1);
    Unmatched unmatched = findUnmatchedNodes(source, target);
    EXPECT_FLOAT_EQ(unmatched.tolerance, 0.00102F);
    EXPECT_EQ(unmatched.selectedCount, 24);
    EXPECT_THAT(unmatched.nowhere, ElementsAre(20, 21, 22, 23));
    EXPECT_EQ(unmatched.elsewhereOnly.size(), 12U); // state code 1 is the first cube's: 8 to 15 and 16 to 19
    EXPECT_EQ(unmatched.elsewhereOnly, numbersFrom(8, 12));

    unmatched = findUnmatchedNodes(source, cubesOfMaterials({1, 9, 9}), {true, false, true});
    EXPECT_EQ(unmatched.selectedCount, 16);
    EXPECT_EQ(unmatched.elsewhereOnly, numbersFrom(16, 8));
    EXPECT_THAT(unmatched.nowhere, IsEmpty());
}

TEST(MatchDiagnosis, FindsElementsWithoutPartners)
{
    const Mesh source = cubesOfMaterials({1, 2, 3});
    EXPECT_THAT(findUnmatchedElements(source, source).nowhere, IsEmpty());
    Unmatched unmatched = findUnmatchedElements(source, cubes({{0, 0, 0}, {2, 0, 0}, {4, 0, 1}}, 1));
    EXPECT_FLOAT_EQ(unmatched.tolerance, 0.00102F);
    EXPECT_EQ(unmatched.selectedCount, 3);
    EXPECT_THAT(unmatched.nowhere, ElementsAre(2));
    EXPECT_THAT(unmatched.elsewhereOnly, ElementsAre(1));

    // The same centre, other nodes.
    EXPECT_THAT(findUnmatchedElements(source, cubes({{0.25F, 0.25F, 0.25F}}, 0.5F)).nowhere, ElementsAre(0));
}

/// The tetrahedron and its point reflection have the same centre, and so the same Gauss point.
TEST(MatchDiagnosis, TetrahedraOfTheSameCentreAreInTheSamePlace)
{
    const Mesh source = oneElement(ElementKind::tetrahedron, {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1});
    const Mesh target = oneElement(ElementKind::tetrahedron,
                                   {0.5F, 0.5F, 0.5F, -0.5F, 0.5F, 0.5F, 0.5F, -0.5F, 0.5F, 0.5F, 0.5F, -0.5F});
    EXPECT_THAT(findUnmatchedElements(source, target).nowhere, IsEmpty());
    EXPECT_THAT(findUnmatchedNodes(source, target).nowhere, ElementsAre(0, 1, 2, 3));
}

} // namespace
