// Which source element a target point takes its values from.
#include "Scenes.h"

#include <algorithm>
#include <limits>

namespace
{
class Location : public Host
{
protected:
    /// Adds a source block that only widens the source's box: its state code matches nothing else.
    static Mesh widened(const Mesh& source, Point minimum, Point maximum)
    {
        return joined(source, withStateCode(box(element::hexahedron, minimum, maximum), 99));
    }

    /// A target whose last node is the point in question; its three other nodes only stretch the grid.
    static Mesh tetrahedronTo(Point p, Point a, Point b, Point c) { return single(element::tetrahedron, {a, b, c, p}); }

    static Outcome runAtPoints(const Mesh& source, const std::vector<double>& values, const std::vector<Point>& points,
                               float farValue = -1.0F)
    {
        Transfer transfer;
        transfer.mode = 1;
        transfer.source = source;
        transfer.sourceFields = {{.values = values}};
        transfer.target = cloud(points);
        transfer.targetFields = {{.defaultValue = farValue}};
        return run(transfer);
    }
};

TEST_F(Location, aPointAtANodeTakesTheNodesValue)
{
    for (const int type : element::volumes)
    {
        const Mesh source = referenceElement(type);
        std::vector<double> values;
        for (std::size_t i = 0; i < source.nodes.size(); ++i)
        {
            values.push_back(10.0 * static_cast<double>(i + 1));
        }
        const Outcome outcome = runAtPoints(source, values, source.nodes);
        EXPECT_EQ(outcome.code, 0);
        expectNear(outcome.fields[0], values, 1e-3);
    }
}

TEST_F(Location, shapeFunctionsWeightTheNodesOfTheElement)
{
    // One point per element kind, with the shape functions worked out by hand.
    struct Case
    {
        int type;
        Point point;
        std::vector<double> weights;
    };
    const std::vector<Case> cases = {
        {element::hexahedron,
         {0.5F, 0.0F, -0.5F},
         {0.09375, 0.28125, 0.28125, 0.09375, 0.03125, 0.09375, 0.09375, 0.03125}},
        {element::tetrahedron, {0.125F, 0.25F, 0.5F}, {0.125, 0.125, 0.25, 0.5}},
        {element::wedge, {0.25F, 0.5F, 0.5F}, {0.0625, 0.0625, 0.125, 0.1875, 0.1875, 0.375}},
        {element::quadraticTetrahedron,
         {0.25F, 0.25F, 0.25F},
         {-0.125, -0.125, -0.125, -0.125, 0.25, 0.25, 0.25, 0.25, 0.25, 0.25}},
        {element::pyramid, {0.25F, -0.25F, 0.5F}, {0.109375, 0.265625, 0.109375, 0.015625, 0.5}},
    };
    for (const Case& oneCase : cases)
    {
        const Mesh source = referenceElement(oneCase.type);
        for (std::size_t node = 0; node < oneCase.weights.size(); ++node)
        {
            std::vector<double> values = constant(source.nodes.size(), 0.0);
            values[node] = 1.0;
            expectNear(runAtPoints(source, values, {oneCase.point}).fields[0], {oneCase.weights[node]}, 1e-5);
        }
    }
}

TEST_F(Location, aPointOnASharedFaceBelongsToTheLowerNumberedElement)
{
    const Mesh left = box(element::hexahedron, {0, 0, 0}, {1, 1, 1});
    const Mesh right = box(element::hexahedron, {1, 0, 0}, {2, 1, 1});
    Mesh pair = joined(left, right);
    pair.matlStates = {1, 1};
    std::vector<double> values = constant(16, 10.0);
    std::fill(values.begin() + 8, values.end(), 20.0);
    const std::vector<Point> points = {{0.5F, 0.5F, 0.5F}, {1, 0.5F, 0.5F}, {1.5F, 0.5F, 0.5F}};
    expectNear(runAtPoints(pair, values, points).fields[0], {10.0, 10.0, 20.0}, 1e-5);
    expectNear(runAtPoints(reordered(pair, {1, 0}), values, points).fields[0], {10.0, 20.0, 20.0}, 1e-5);
}

TEST_F(Location, aPointIsInsideUpToTwoThousandthsOfAReferenceUnit)
{
    const Mesh source = referenceElement(element::tetrahedron);
    const std::vector<double> values = constant(4, 8.0);
    const Outcome outcome = runAtPoints(source, values,
                                        {{0.2F, 0.2F, -0.001F},
                                         {0.2F, 0.2F, -0.003F},
                                         {-0.001F, 0.2F, 0.2F},
                                         {-0.003F, 0.2F, 0.2F},
                                         {0.3F, 0.3F, 0.401F},
                                         {0.3F, 0.3F, 0.403F}});
    expectNear(outcome.fields[0], {8.0, -1.0, 8.0, -1.0, 8.0, -1.0}, 1e-5);
}

TEST_F(Location, aPointInTheMarginIsExtrapolatedNotClamped)
{
    const Mesh source = referenceElement(element::tetrahedron);
    const Outcome outcome = runAtPoints(source, {0.0, 0.0, 0.0, 1000.0}, {{0.2F, 0.2F, -0.001F}});
    expectNear(outcome.fields[0], {-1.0}, 1e-3);
}

TEST_F(Location, theMarginsOfTheOtherElements)
{
    struct Case
    {
        int type;
        Point inside;
        Point outside;
    };
    const std::vector<Case> cases = {
        {element::hexahedron, {1.001F, 0, 0}, {1.003F, 0, 0}},
        {element::hexahedron, {0, -1.001F, 0}, {0, -1.003F, 0}},
        {element::wedge, {-0.001F, 0.2F, 0}, {-0.003F, 0.2F, 0}},
        {element::wedge, {0.5F, 0.501F, 0}, {0.5F, 0.503F, 0}},
        {element::wedge, {0.2F, 0.2F, 1.001F}, {0.2F, 0.2F, 1.003F}},
        {element::quadraticTetrahedron, {0.2F, -0.001F, 0.2F}, {0.2F, -0.003F, 0.2F}},
        {element::pyramid, {0.1F, 0.1F, -0.001F}, {0.1F, 0.1F, -0.003F}},
        {element::pyramid, {0.501F, 0, 0.5F}, {0.503F, 0, 0.5F}},
        {element::pyramid, {0, -0.501F, 0.5F}, {0, -0.503F, 0.5F}},
    };
    for (const Case& oneCase : cases)
    {
        const Mesh source = referenceElement(oneCase.type);
        const Outcome outcome =
            runAtPoints(source, constant(source.nodes.size(), 8.0), {oneCase.inside, oneCase.outside});
        expectNear(outcome.fields[0], {8.0, -1.0}, 1e-4);
    }
}

TEST_F(Location, anElementWithoutExtentHoldsItsOwnPlaceWithTheMeanOfItsNodes)
{
    // All nodes of the first element lie at one place; no iteration runs there, and the first guess is the centre.
    const Mesh point = single(element::tetrahedron, {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}});
    Mesh source = joined(point, box(element::hexahedron, {0, 0, 0}, {2, 2, 2}));
    source.matlStates = {1, 1};
    std::vector<double> values = {1.0, 2.0, 3.0, 6.0};
    values.resize(12, 50.0);
    const Outcome outcome = runAtPoints(source, values, {{1, 1, 1}, {0.5F, 0.5F, 0.5F}});
    EXPECT_EQ(outcome.code, 0);
    expectNear(outcome.fields[0], {3.0, 50.0}, 1e-5);
}

TEST_F(Location, onlyElementsOfTheSameStateCodeAreConsidered)
{
    Mesh source =
        joined(box(element::hexahedron, {0, 0, 0}, {1, 1, 1}), box(element::hexahedron, {0, 0, 0}, {1, 1, 1}));
    source = withMaterials(source, {0, 1}, {1, 4});
    std::vector<double> values = constant(16, 10.0);
    std::fill(values.begin() + 8, values.end(), 20.0);
    Transfer transfer;
    transfer.mode = 1;
    transfer.source = source;
    transfer.sourceFields = {{.values = values}};
    // Codes 1 and 2 are of one class; only equal codes match.
    transfer.target =
        withMaterials(cloud({{0.5F, 0.5F, 0.5F}, {0.25F, 0.5F, 0.5F}, {0.75F, 0.5F, 0.5F}}), {1, 0, 2}, {1, 4, 2});
    transfer.flags = {1, 1, 1};
    transfer.targetFields = {{.defaultValue = -1.0F}};
    expectNear(run(transfer).fields[0], {20.0, 10.0, -1.0}, 1e-5);
}

/// Nothing of the bent element lies beyond x = 1, and the iteration for a point there wanders without end.
class PointThatTheInversionDoesNotReach : public Location
{
protected:
    /// At xi = 0.3, x is 1 - 0.7^2.
    static constexpr Point reached = {0.51F, 0.2F, 0.1F};
    static constexpr Point notReached = {1.007F, 0.002F, 0.001F};
};

TEST_F(PointThatTheInversionDoesNotReach, isFarInACloud)
{
    expectNear(runAtPoints(bentElement(), xiInBentElement(), {reached, notReached}).fields[0], {0.3, -1.0}, 2e-3);
}

TEST_F(PointThatTheInversionDoesNotReach, isFarInAMeshThoughAnElementIsNear)
{
    Transfer transfer;
    transfer.source = bentElement();
    transfer.sourceFields = {{.values = xiInBentElement()}};
    transfer.target = single(element::tetrahedron, {reached, {0.51F, 0.1F, 0.1F}, {0.51F, 0.1F, 0.2F}, notReached});
    transfer.targetFields = {{.defaultValue = -1.0F}};
    EXPECT_EQ(run(transfer).code, 2);
    transfer.mode = 1;
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    expectNear(outcome.fields[0], {0.3, 0.3, 0.3, -1.0}, 2e-3);
    EXPECT_NE(outcome.log().find("interpolation was done = 3\n\n"), std::string::npos);
    EXPECT_NE(outcome.log().find("or are propagated = 1\n\n\n"), std::string::npos);
}

TEST_F(Location, theElementAroundAPointIsFoundBehindAnyNumberOfOthers)
{
    // The boxes of all tetrahedra hold the point, but none of them does.
    Mesh source;
    for (int i = 0; i < 100; ++i)
    {
        source =
            i == 0 ? referenceElement(element::tetrahedron) : joined(source, referenceElement(element::tetrahedron));
    }
    source = joined(source, unitHexahedron({0, 0, 0}));
    std::ranges::fill(source.matlIds, 0);
    std::vector<double> values = constant(400, 1.0);
    values.resize(408, 2.0);
    const std::vector<Point> points = {{0.9F, 0.9F, 0.9F}, {0.1F, 0.1F, 0.1F}};
    expectNear(runAtPoints(source, values, points).fields[0], {2.0, 1.0}, 1e-5);
    // The same among elements of several materials.
    source.matlIds.back() = 1;
    source.matlIds[50] = 2;
    source.matlStates = {1, 1, 4};
    expectNear(runAtPoints(source, values, points).fields[0], {2.0, 1.0}, 1e-5);
}

TEST_F(Location, theOrderOfThePointsDoesNotMatter)
{
    // Many points in many buckets, of two materials, visited along the axes or scattered.
    Mesh source = box(element::hexahedron, {0, 0, 0}, {20, 20, 20}, {20, 20, 20});
    for (std::size_t e = 0; e < source.connectivity.size(); ++e)
    {
        source.matlIds[e] = static_cast<int>(e % 2);
    }
    source.matlStates = {1, 4};
    Transfer transfer = transferOf(linear, source, cloud({}));
    transfer.mode = 1;
    transfer.flags = {1, 1};
    transfer.targetFields = {{.defaultValue = -1.0F}};
    constexpr std::size_t nbPoints = 20011;
    constexpr std::size_t stride = 7919;
    const auto coordinate = [](std::size_t k) { return 20.0F * static_cast<float>(k) / 26.0F; };
    Mesh inOrder = cloud({});
    for (std::size_t i = 0; i < nbPoints; ++i)
    {
        inOrder.nodes.push_back({coordinate(i % 27), coordinate(i / 27 % 28), coordinate(i / 27 / 28)});
        inOrder.matlIds.push_back(static_cast<int>(i / 3 % 2));
    }
    inOrder.matlStates = {1, 4};
    Mesh scattered = inOrder;
    for (std::size_t i = 0; i < nbPoints; ++i)
    {
        scattered.nodes[i] = inOrder.nodes[i * stride % nbPoints];
        scattered.matlIds[i] = inOrder.matlIds[i * stride % nbPoints];
    }
    transfer.target = inOrder;
    const Outcome first = run(transfer);
    transfer.target = scattered;
    const Outcome second = run(transfer);
    EXPECT_EQ(first.code, 0);
    EXPECT_EQ(second.transcript, first.transcript);
    std::size_t nbDifferent = 0;
    std::size_t nbFar = 0;
    for (std::size_t i = 0; i < nbPoints; ++i)
    {
        nbDifferent += second.fields[0][i] != first.fields[0][i * stride % nbPoints] ? 1 : 0;
        nbFar += first.fields[0][i] == -1.0 ? 1 : 0;
    }
    EXPECT_EQ(nbDifferent, 0U);
    // About half of the points lie in elements of the other material only.
    EXPECT_GT(nbFar, nbPoints / 4);
    EXPECT_LT(nbFar, nbPoints * 3 / 4);
}

TEST_F(Location, aSourceWithoutElementsHoldsNoPoint)
{
    Mesh source = cloud({{0, 0, 0}});
    source.matlIds.clear();
    EXPECT_EQ(runAtPoints(source, {1.0}, {{0, 0, 0}, {1, 1, 1}}).fields[0], (std::vector<double>{-1.0, -1.0}));
    const Outcome onMesh = run(transferOf(linear, source, unitHexahedron({0, 0, 0})));
    EXPECT_EQ(onMesh.code, 1);
    EXPECT_EQ(onMesh.message, "Error: the target mesh is not included in the source mesh.\n");
}

TEST_F(Location, aSourceWithoutAnyExtentHoldsNoPoint)
{
    // The mean element size is 0: there is no grid to find its place in.
    const Mesh source = single(element::tetrahedron, {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}});
    EXPECT_EQ(runAtPoints(source, constant(4, 8.0), {{1, 1, 1}, {2, 2, 2}}).fields[0],
              (std::vector<double>{-1.0, -1.0}));
}

// ---------------------------------------------------------------------------------------------------------------------

class NearMiss : public Location
{
};

TEST_F(NearMiss, takesTheNearestElementWithClampedAndRenormalisedWeights)
{
    // At (0.25, 0.25, -0.03) the weights are 0.53, 0.25, 0.25 and -0.03; clamped they sum to 1.03.
    const Mesh target =
        tetrahedronTo({0.25F, 0.25F, -0.03F}, {0.2F, 0.2F, 0.2F}, {0.4F, 0.2F, 0.2F}, {0.2F, 0.4F, 0.2F});
    Transfer transfer = transferOf(linear, referenceElement(element::tetrahedron), target);
    transfer.sourceFields = {{.values = {10.0, 20.0, 40.0, 80.0}}};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    const double expected = (0.53 * 10.0 + 0.25 * 20.0 + 0.25 * 40.0) / 1.03;
    EXPECT_NEAR(outcome.fields[0][3], expected, 1e-4);
    EXPECT_NE(outcome.log().find("Total number of target nodes outside the source mesh = 1\n\n"
                                 "Number of target nodes outside the source mesh but close enough for interpolation "
                                 "= 1\n\n"),
              std::string::npos);
}

TEST_F(NearMiss, clampsWeightsAboveOneToo)
{
    // At (1.6, 1.6, 1.6) the weight of the corner (1, 1, 1) is 1.3^3 and counts as 1; its three neighbours have
    // -0.3 * 1.3^2, which counts as 0; the next three have 1.3 * 0.3^2 = 0.117; the opposite corner counts as 0.
    const Mesh source = widened(referenceElement(element::hexahedron), {-2, -2, -2}, {4, 4, 4});
    const Mesh target = tetrahedronTo({1.6F, 1.6F, 1.6F}, {0, 0, 0}, {0.5F, 0, 0}, {0, 0.5F, 0});
    Transfer transfer = transferOf(linear, source, target);
    transfer.sourceFields = {{.values = {0.0, 1.0, 0.0, 10.0, 100.0, 0.0, 1000.0, 0.0}}};
    transfer.sourceFields[0].values.resize(16, 1e6);
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_NEAR(outcome.fields[0][3], (1000.0 + 0.117 * (1.0 + 10.0 + 100.0)) / 1.351, 1e-2);
}

TEST_F(NearMiss, ofAGaussPoint)
{
    // The only Gauss point, the mean of the four nodes, lies at (0.25, 0.25, -0.03) again.
    const Mesh target =
        single(element::tetrahedron,
               {{0.2F, 0.2F, -0.01F}, {0.3F, 0.2F, -0.035F}, {0.2F, 0.3F, -0.035F}, {0.3F, 0.3F, -0.04F}});
    Transfer transfer = transferOf(linear, referenceElement(element::tetrahedron), target);
    transfer.sourceFields = {{.values = {10.0, 20.0, 40.0, 80.0}}};
    transfer.targetFields = {atGaussPoints()};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    expectNear(outcome.fields[0], {(0.53 * 10.0 + 0.25 * 20.0 + 0.25 * 40.0) / 1.03}, 1e-4);
    EXPECT_NE(outcome.log().find("Total number of target gauss points outside the source mesh = 1\n\n"
                                 "Number of target gauss points outside the source mesh but close enough for "
                                 "interpolation = 1\n\n"
                                 "Number of target gauss points far from the source mesh (set to zero) = 0\n\n\n"),
              std::string::npos);
}

/// Two blocks with a gap between x = 4 and x = 5, and a point in the middle of the gap.
class NearMissBetweenTwo : public NearMiss
{
protected:
    static Transfer between(float x)
    {
        Mesh source =
            joined(box(element::hexahedron, {0, 0, 0}, {4, 4, 4}), box(element::hexahedron, {5, 0, 0}, {9, 4, 4}));
        source.matlStates = {1, 1};
        // The target begins inside the first block, so that its only bucket lists both.
        const Mesh target = tetrahedronTo({x, 2, 2}, {3.9F, 2, 2}, {3.9F, 2.2F, 2}, {3.9F, 2, 2.2F});
        Transfer transfer = transferOf(linear, source, target);
        transfer.sourceFields[0].values = constant(8, 10.0);
        transfer.sourceFields[0].values.resize(16, 20.0);
        return transfer;
    }
};

TEST_F(NearMissBetweenTwo, theNearerCentreWins)
{
    EXPECT_NEAR(run(between(4.4F)).fields[0][3], 10.0, 1e-4);
    EXPECT_NEAR(run(between(4.6F)).fields[0][3], 20.0, 1e-4);
    Transfer transfer = between(4.4F);
    transfer.source = reordered(transfer.source, {1, 0});
    EXPECT_NEAR(run(transfer).fields[0][3], 10.0, 1e-4);
}

TEST_F(NearMissBetweenTwo, amongEquallyNearCentresTheLastWins)
{
    Transfer transfer = between(4.5F);
    EXPECT_NEAR(run(transfer).fields[0][3], 20.0, 1e-4);
    transfer.source = reordered(transfer.source, {1, 0});
    EXPECT_NEAR(run(transfer).fields[0][3], 10.0, 1e-4);
}

TEST_F(NearMissBetweenTwo, aNearerElementOfAnotherStateCodeIsPassedBy)
{
    Transfer transfer = between(4.6F);
    transfer.source = withMaterials(transfer.source, {0, 1}, {1, 2});
    EXPECT_NEAR(run(transfer).fields[0][3], 10.0, 1e-4);
}

TEST_F(NearMissBetweenTwo, withoutAnElementOfTheStateCodeThePointIsFar)
{
    Transfer transfer = between(4.5F);
    transfer.target.matlStates = {3};
    EXPECT_EQ(run(transfer).code, 2);
}

TEST_F(NearMiss, isSearchedInBucketsThatOnlyWidenedElementsReach)
{
    const Transfer transfer = reachedByWideningOnly();
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    expectNear(outcome.fields[0], constant(4, 6.0), 1e-4);
    // Points of a cloud have no such fallback.
    Transfer toCloud = transfer;
    toCloud.target = cloud(transfer.target.nodes);
    EXPECT_EQ(run(toCloud).code, 2);
}

// ---------------------------------------------------------------------------------------------------------------------

/// Source elements of several state codes fill the same box with different constants; targets show which one was used.
class MaterialOfANode : public Host
{
protected:
    /// Two target hexahedra that share the nodes 1, 4, 7 and 10.
    static Transfer twoHexahedra(const std::vector<int>& stateCodes, const std::vector<int>& flags)
    {
        Transfer transfer;
        std::vector<double> values;
        for (const auto& [code, value] : std::vector<std::pair<int, double>>{{1, 10.0}, {4, 20.0}, {-1, 30.0}})
        {
            const Mesh block = withStateCode(box(element::hexahedron, {0, 0, 0}, {4, 4, 4}), code);
            transfer.source = transfer.source.nodes.empty() ? block : joined(transfer.source, block);
            values.insert(values.end(), 8, value);
        }
        transfer.sourceFields = {{.values = values}};
        transfer.target = withMaterials(box(element::hexahedron, {1, 1, 1}, {3, 2, 2}, {2, 1, 1}), {0, 1}, stateCodes);
        transfer.flags = flags;
        return transfer;
    }

    /// Values per plane x = 1, 2, 3 of the target's nodes.
    static void expectPlanes(const Outcome& outcome, const std::vector<double>& planes)
    {
        std::vector<double> expected;
        for (std::size_t node = 0; node < 12; ++node)
        {
            expected.push_back(planes[node % 3]);
        }
        expectNear(outcome.fields[0], expected, 1e-4);
    }
};

TEST_F(MaterialOfANode, isThatOfTheLowestNumberedElement)
{
    Transfer transfer = twoHexahedra({1, 4}, {1, 1});
    expectPlanes(run(transfer), {10.0, 10.0, 20.0});
    transfer.target = reordered(transfer.target, {1, 0});
    expectPlanes(run(transfer), {10.0, 20.0, 20.0});
}

TEST_F(MaterialOfANode, decidesWhetherTheNodeIsSelected)
{
    Transfer transfer = twoHexahedra({1, 4}, {0, 1});
    expectPlanes(run(transfer), {untouched, untouched, 20.0});
    transfer.target = reordered(transfer.target, {1, 0});
    expectPlanes(run(transfer), {untouched, 20.0, 20.0});
}

TEST_F(MaterialOfANode, anyFlagButOneLeavesTheMaterialOut)
{
    for (const int flag : {0, 2, -1, 257})
    {
        expectPlanes(run(twoHexahedra({1, 4}, {flag, 1})), {untouched, untouched, 20.0});
    }
}

TEST_F(MaterialOfANode, stateCodeMinusOneLeavesItOpenForLaterElements)
{
    expectPlanes(run(twoHexahedra({-1, 1}, {1, 1})), {30.0, 10.0, 10.0});
    // The later element's flag counts as well.
    expectPlanes(run(twoHexahedra({-1, 1}, {1, 0})), {30.0, untouched, untouched});
    expectPlanes(run(twoHexahedra({-1, 1}, {0, 1})), {untouched, 10.0, 10.0});
    expectPlanes(run(twoHexahedra({1, -1}, {1, 1})), {10.0, 10.0, 30.0});
}

TEST_F(MaterialOfANode, aNodeInNoElementIsNeitherComputedNorCounted)
{
    Transfer transfer = twoHexahedra({1, 1}, {1, 1});
    transfer.target.nodes.push_back({2, 2, 2});
    const Outcome outcome = run(transfer);
    std::vector<double> expected = constant(12, 10.0);
    expected.push_back(untouched);
    expectNear(outcome.fields[0], expected, 1e-4);
    EXPECT_EQ(outcome.transcript, successfulTranscript(meshTitle, interpolationSuccess, 12));
}

TEST_F(MaterialOfANode, gaussPointsFollowTheirOwnElement)
{
    Transfer transfer = twoHexahedra({1, 4}, {0, 1});
    transfer.targetFields = {atGaussPoints()};
    std::vector<double> expected = constant(8, untouched);
    expected.resize(16, 20.0);
    expectNear(run(transfer).fields[0], expected, 1e-4);
}

TEST_F(MaterialOfANode, fieldsOfStateClassOneExistOnCodesOneTwoThreeSevenAndEight)
{
    for (const int code : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, -1, -2, 100})
    {
        const bool classOne = code == 1 || code == 2 || code == 3 || code == 7 || code == 8;
        Transfer transfer = transferOf([](const Point&) { return 5.0; }, withStateCode(roomySource(), code),
                                       withStateCode(unitHexahedron({1, 1, 1}), code));
        transfer.sourceFields = std::vector<Field>(3, Field(transfer.sourceFields[0]));
        transfer.targetFields = {
            {.stateFlag = 1}, {.stateFlag = 2}, {.location = atGaussPointsLocation, .stateFlag = 1}};
        const Outcome outcome = run(transfer);
        EXPECT_EQ(outcome.code, 0);
        expectNear(outcome.fields[0], constant(8, classOne ? 5.0 : untouched), 1e-5);
        expectNear(outcome.fields[1], constant(8, 5.0), 1e-5);
        expectNear(outcome.fields[2], constant(8, classOne ? 5.0 : untouched), 1e-5);

        transfer.target = withStateCode(cloud({{1, 1, 1}}), code);
        transfer.targetFields.pop_back();
        const Outcome onCloud = run(transfer);
        expectNear(onCloud.fields[0], {classOne ? 5.0 : untouched}, 1e-5);
        expectNear(onCloud.fields[1], {5.0}, 1e-5);
    }
}
} // namespace
