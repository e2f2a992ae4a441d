// Target nodes far outside the source, in the mode that spreads values into them from their neighbours.
#include "Scenes.h"

#include <algorithm>

namespace
{
constexpr const char* warning = "Warning: propagation is not possible for nodes located in a region\n"
                                "that is not connected to an already interpolated region.\n"
                                "Fields are set to zero in these regions.\n";

/// Chains of unit hexahedra along x. The nodes of the chain lie in planes x = 0, 1, 2, ...; an element of the chain is
/// interpolated or far according to its material: only materials with the source's state code are found.
class Propagation : public Host
{
protected:
    static double places(const Point& p)
    {
        return static_cast<double>(p[0]) + 10.0 * static_cast<double>(p[1]) + 100.0 * static_cast<double>(p[2]);
    }

    /// `order` lists the places of the elements along the chain. `materials` go by place.
    static Transfer alongChain(const std::vector<int>& materials, const std::vector<int>& stateCodes,
                               const std::vector<int>& order)
    {
        const int length = static_cast<int>(materials.size());
        const auto end = static_cast<float>(length);
        Mesh chain = box(element::hexahedron, {0, 0, 0}, {end, 1, 1}, {length, 1, 1});
        chain = reordered(withMaterials(chain, materials, stateCodes), order);
        Transfer transfer = transferOf(places, box(element::hexahedron, {-1, -1, -1}, {end + 1, 2, 2}), chain);
        transfer.mode = 2;
        transfer.flags = std::vector<int>(stateCodes.size(), 1);
        return transfer;
    }

    /// Node values of a chain, given one value per plane; `nearValue` stands for the interpolated values of a plane.
    static constexpr double nearValue = -1.0e300;

    static std::vector<double> byPlanes(const Transfer& transfer, const std::vector<double>& planes)
    {
        std::vector<double> expected;
        for (std::size_t node = 0; node < transfer.target.nodes.size(); ++node)
        {
            const double plane = planes[node % planes.size()];
            expected.push_back(plane == nearValue ? places(transfer.target.nodes[node]) : plane);
        }
        return expected;
    }

    // Means of the four corners (y, z = 0 or 1) of the planes x = 1 and x = 4.
    static constexpr double meanOfPlane1 = 1.0 + 5.0 + 50.0;
    static constexpr double meanOfPlane4 = 4.0 + 5.0 + 50.0;
};

TEST_F(Propagation, aFarNodeTakesTheMeanOfTheFilledNodesOfItsElement)
{
    const Transfer transfer = alongChain({0, 1}, {1, 4}, {0, 1});
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.message, meshTermination);
    expectNear(outcome.fields[0], byPlanes(transfer, {nearValue, nearValue, meanOfPlane1}), 1e-4);
    EXPECT_EQ(outcome.transcript, successfulTranscript(meshTitle, interpolationSuccess, 12));
}

TEST_F(Propagation, theFrontFollowsTheElementOrder)
{
    const std::vector<int> materials = {0, 1, 1, 1, 0};
    // The first element of the order that has a node decides whether it is far.
    struct Case
    {
        std::vector<int> order;
        std::vector<double> planes;
    };
    const double left = meanOfPlane1;
    const double right = meanOfPlane4;
    const std::vector<Case> cases = {
        {{0, 4, 1, 2, 3}, {nearValue, nearValue, left, left, nearValue, nearValue}},
        {{0, 4, 3, 2, 1}, {nearValue, nearValue, right, right, nearValue, nearValue}},
        {{0, 4, 2, 1, 3}, {nearValue, nearValue, left, right, nearValue, nearValue}},
        {{0, 4, 2, 3, 1}, {nearValue, nearValue, left, right, nearValue, nearValue}},
        {{0, 1, 2, 3, 4}, {nearValue, nearValue, left, left, left, nearValue}},
    };
    for (const Case& oneCase : cases)
    {
        const Transfer transfer = alongChain(materials, {1, 4}, oneCase.order);
        const Outcome outcome = run(transfer);
        EXPECT_EQ(outcome.code, 0);
        expectNear(outcome.fields[0], byPlanes(transfer, oneCase.planes), 1e-4);
    }
}

TEST_F(Propagation, anOrderAgainstTheFrontOnlyTakesMoreSweeps)
{
    for (const std::vector<int>& order : std::vector<std::vector<int>>{{0, 1, 2, 3, 4, 5}, {0, 5, 4, 3, 2, 1}})
    {
        const Transfer transfer = alongChain({0, 1, 1, 1, 1, 1}, {1, 4}, order);
        const Outcome outcome = run(transfer);
        EXPECT_EQ(outcome.code, 0);
        const double m = meanOfPlane1;
        expectNear(outcome.fields[0], byPlanes(transfer, {nearValue, nearValue, m, m, m, m, m}), 1e-4);
    }
}

TEST_F(Propagation, elementsWithDifferentNumbersOfFilledNodes)
{
    // A tetrahedron in the source, one on two of its nodes, one on one of that one's nodes.
    Mesh target;
    target.nodes = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {2, 0, 0}, {2, 2, 0}, {3, 0, 0}, {3, 1, 0}, {3, 0, 1}};
    target.connectivity = {{0, 1, 2, 3}, {1, 4, 2, 5}, {6, 7, 8, 4}};
    target.types = std::vector<int>(3, element::tetrahedron);
    target = withMaterials(target, {0, 1, 1}, {1, 4});
    Transfer transfer = transferOf(places, box(element::hexahedron, {-1, -1, -1}, {4, 4, 4}), target);
    transfer.mode = 2;
    transfer.flags = {1, 1};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    const double mean = (1.0 + 10.0) / 2.0;
    expectNear(outcome.fields[0], {0.0, 1.0, 10.0, 100.0, mean, mean, mean, mean, mean}, 1e-4);
}

TEST_F(Propagation, acrossAGapTheLowerNumberedSideWins)
{
    Transfer transfer = transferOf(linear, sourceWithGap(), chainAcrossGap());
    transfer.mode = 2;
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    // The third plane took the values of the face x = 2; their mean is the value in the middle of that face.
    const double mean = linear({2, 0.5F, 0.5F});
    for (std::size_t node = 0; node < 36; ++node)
    {
        if (node % 9 >= 3 && node % 9 <= 5)
        {
            EXPECT_NEAR(outcome.fields[0][node], mean, 1e-4);
        }
    }
}

TEST_F(Propagation, spreadsAllComponentsOfAllNodeFields)
{
    Transfer transfer = alongChain({0, 1}, {1, 4}, {0, 1});
    std::vector<double> pairs;
    for (const double value : transfer.sourceFields[0].values)
    {
        pairs.push_back(value);
        pairs.push_back(-2.0 * value);
    }
    transfer.sourceFields.push_back({.components = 2, .values = pairs});
    transfer.targetFields = {{.precision = doublePrecision}, {.components = 2}};
    const Outcome outcome = run(transfer);
    expectNear(outcome.fields[0], byPlanes(transfer, {nearValue, nearValue, meanOfPlane1}), 1e-4);
    for (const std::size_t node : {2U, 5U, 8U, 11U})
    {
        EXPECT_NEAR(outcome.fields[1][2 * node], meanOfPlane1, 1e-4);
        EXPECT_NEAR(outcome.fields[1][2 * node + 1], -2.0 * meanOfPlane1, 1e-4);
    }
}

TEST_F(Propagation, nodesOfUnselectedMaterialsCountAsFilledWithWhatTheyHold)
{
    // The first element is not selected; it owns the plane x = 1, on which the host's values stand. Means of doubles
    // are formed in single precision: the small part is lost.
    Transfer transfer = alongChain({0, 1}, {1, 4}, {0, 1});
    transfer.flags = {0, 1};
    transfer.targetFields[0].precision = doublePrecision;
    transfer.targetFields[0].values = constant(12, 1.0 + 1.0 / 1099511627776.0);
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    std::vector<double> expected = transfer.targetFields[0].values;
    for (const std::size_t node : {2U, 5U, 8U, 11U})
    {
        expected[node] = 1.0;
    }
    EXPECT_EQ(outcome.fields[0], expected);
}

TEST_F(Propagation, passesByFieldsOfStateClassOneInMaterialsOfClassTwo)
{
    // Class 2 next to the interpolated element, then class 1 (code 7).
    Transfer transfer = alongChain({0, 1, 2}, {1, 4, 7}, {0, 1, 2});
    transfer.sourceFields = {transfer.sourceFields[0], transfer.sourceFields[0]};
    transfer.targetFields = {Field{}, {.stateFlag = 1, .values = constant(16, 1000.0)}};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    expectNear(outcome.fields[0], byPlanes(transfer, {nearValue, nearValue, meanOfPlane1, meanOfPlane1}), 1e-4);
    // The plane x = 2 keeps what the host put there, and hands that on to the plane x = 3.
    expectNear(outcome.fields[1], byPlanes(transfer, {nearValue, nearValue, 1000.0, 1000.0}), 1e-4);
}

TEST_F(Propagation, farGaussPointsBecomeZeroAfterwards)
{
    Transfer transfer = alongChain({0, 1}, {1, 4}, {0, 1});
    transfer.sourceFields = {transfer.sourceFields[0], {.values = constant(8, 3.0)}};
    transfer.targetFields = {Field{}, atGaussPoints()};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    std::vector<double> expected = constant(16, 3.0);
    std::fill(expected.begin() + 8, expected.end(), 0.0);
    expectNear(outcome.fields[1], expected, 1e-5);
}

TEST_F(Propagation, aTargetFieldWithoutSourceFieldIsPropagatedFromItsOwnValues)
{
    Transfer transfer = alongChain({0, 1}, {1, 4}, {0, 1});
    transfer.targetFields = {Field{}, {.values = constant(12, 8.0)}};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.fields[1], constant(12, 8.0));
}

/// The middle element of three is not selected and comes last, so that the planes on both its sides belong to its
/// neighbours: the far one cannot be reached.
class UnreachableRegion : public Propagation
{
protected:
    static Transfer behindAnUnselectedElement()
    {
        Transfer transfer = alongChain({0, 1, 2}, {1, 1, 4}, {0, 2, 1});
        transfer.flags = {1, 0, 1};
        return transfer;
    }
};

TEST_F(UnreachableRegion, isZeroedWithAWarning)
{
    const Transfer transfer = behindAnUnselectedElement();
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, -1);
    EXPECT_EQ(outcome.message, warning);
    expectNear(outcome.fields[0], byPlanes(transfer, {nearValue, nearValue, 0.0, 0.0}), 1e-4);
    EXPECT_EQ(outcome.fields[0][2], 0.0);
}

TEST_F(UnreachableRegion, endsTheTransferBeforeTheGaussPoints)
{
    Transfer transfer = behindAnUnselectedElement();
    transfer.sourceFields = {transfer.sourceFields[0], transfer.sourceFields[0]};
    transfer.targetFields = {Field{}, atGaussPoints()};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, -1);
    EXPECT_EQ(outcome.fields[1], constant(24, untouched));
    // 16 nodes of 32 points were processed; there is no report of success.
    std::vector<Report> expected = successfulTranscript(meshTitle, interpolationSuccess, 16 + 16);
    expected.erase(expected.begin() + 2 + 16, expected.end() - 1);
    EXPECT_EQ(outcome.transcript, expected);
    EXPECT_EQ(outcome.transcript[17].progress, 50);
}

TEST_F(UnreachableRegion, keepsWhatWasReachedElsewhere)
{
    // A far element next to the interpolated one, and a far element behind the one that is not selected.
    Transfer transfer = alongChain({0, 1, 2, 1}, {1, 4, 9}, {0, 1, 3, 2});
    transfer.flags = {1, 1, 0};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, -1);
    expectNear(outcome.fields[0], byPlanes(transfer, {nearValue, nearValue, meanOfPlane1, 0.0, 0.0}), 1e-4);
}

TEST_F(UnreachableRegion, isZeroedInAllComponentsAndBothPrecisions)
{
    Transfer transfer = behindAnUnselectedElement();
    transfer.sourceFields = {{.components = 2, .values = constant(16, 3.0)}};
    transfer.targetFields = {{.components = 2, .precision = doublePrecision}};
    const Outcome outcome = run(transfer);
    std::vector<double> expected;
    for (std::size_t node = 0; node < 16; ++node)
    {
        expected.insert(expected.end(), 2, node % 4 < 2 ? 3.0 : 0.0);
    }
    expectNear(outcome.fields[0], expected, 1e-5);
}

TEST_F(UnreachableRegion, keepsFieldsOfStateClassOneInMaterialsOfClassTwo)
{
    Transfer transfer = behindAnUnselectedElement();
    transfer.targetFields[0].stateFlag = 1;
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, -1);
    expectNear(outcome.fields[0], byPlanes(transfer, {nearValue, nearValue, untouched, untouched}), 1e-4);
}

TEST_F(UnreachableRegion, mayBeTheWholeTarget)
{
    const Transfer transfer = alongChain({0, 0}, {4}, {0, 1});
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, -1);
    EXPECT_EQ(outcome.message, warning);
    EXPECT_EQ(outcome.fields[0], constant(12, 0.0));
}

TEST_F(UnreachableRegion, isReportedInTheLogWithTheSumOfIterations)
{
    const Outcome outcome = run(behindAnUnselectedElement());
    ASSERT_TRUE(outcome.hasLog());
    // Eight nodes were found, each after one iteration; the sum has not been divided.
    EXPECT_NE(outcome.log().find("number of target points where interpolation was done = 8\n\n"
                                 "Average number of iterations for calculating reference coordinates at each target "
                                 "point = 8.000000\n\n\n"),
              std::string::npos)
        << outcome.log();
    EXPECT_NE(outcome.log().find("Number of target nodes far from the source mesh for which fields are set to the "
                                 "default value or are propagated = 8\n\n\n"),
              std::string::npos)
        << outcome.log();
}
} // namespace
