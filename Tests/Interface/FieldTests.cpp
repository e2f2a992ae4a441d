// Precision, components, pairing and undefined values of fields; fields given at Gauss points.
#include "Scenes.h"

#include <cmath>
#include <limits>

namespace
{
class Fields : public Host
{
};

TEST_F(Fields, everyPairOfPrecisionsTransfers)
{
    for (const int sourcePrecision : {singlePrecision, doublePrecision})
    {
        for (const int targetPrecision : {singlePrecision, doublePrecision})
        {
            for (const Mesh& target : {unitHexahedron({1, 1, 1}), cloud({{1, 1, 1}, {1.5F, 2, 2.5F}})})
            {
                Transfer transfer = transferOf(linear, roomySource(), target);
                transfer.sourceFields[0].precision = sourcePrecision;
                transfer.targetFields[0].precision = targetPrecision;
                const Outcome outcome = run(transfer);
                EXPECT_EQ(outcome.code, 0);
                expectNear(outcome.fields[0], atNodes(target, linear), 1e-5);
            }
        }
    }
}

TEST_F(Fields, doubleSourceValuesAreReadInSinglePrecision)
{
    // The second part is lost in single precision; what is left is reproduced exactly at a node of the source.
    Transfer transfer = transferOf([](const Point&) { return 1.0 + 1e-9; }, roomySource(), cloud({{2, 2, 2}}));
    transfer.sourceFields[0].precision = doublePrecision;
    transfer.targetFields[0].precision = doublePrecision;
    EXPECT_EQ(run(transfer).fields[0][0], 1.0);
}

TEST_F(Fields, oneToNineComponents)
{
    const auto component = [](const Point& p, int c)
    { return linear(p) * static_cast<double>(c + 1) - 10.0 * static_cast<double>(c); };
    const auto rows = [&](const Mesh& mesh, int components)
    {
        std::vector<double> values;
        for (const Point& p : mesh.nodes)
        {
            for (int c = 0; c < components; ++c)
            {
                values.push_back(component(p, c));
            }
        }
        return values;
    };
    for (int components = 1; components <= 9; ++components)
    {
        for (const Mesh& target : {unitHexahedron({1, 1, 1}), cloud({{1, 1, 1}, {1.5F, 2, 2.5F}})})
        {
            Transfer transfer = transferOf(linear, roomySource(), target);
            transfer.sourceFields = {{.components = components, .values = rows(transfer.source, components)}};
            transfer.targetFields = {{.components = components}};
            expectNear(run(transfer).fields[0], rows(target, components), 1e-4);
        }
    }
}

TEST_F(Fields, arePairedByPositionWhateverTheirNames)
{
    Transfer transfer = transferOf(linear, roomySource(), cloud({{1, 1, 1}}));
    transfer.sourceFields = {nodal(transfer.source, [](const Point&) { return 1.0; }),
                             nodal(transfer.source, [](const Point&) { return 2.0; }),
                             nodal(transfer.source, [](const Point&) { return 3.0; })};
    transfer.targetFields = std::vector<Field>(3);
    transfer.sourceFields[0].name = "temperature";
    transfer.targetFields[2].name = "temperature";
    expectNear(run(transfer).fields[0], {1.0}, 1e-5);
    expectNear(run(transfer).fields[1], {2.0}, 1e-5);
    expectNear(run(transfer).fields[2], {3.0}, 1e-5);
}

TEST_F(Fields, aNameMayHaveNinetyNineCharacters)
{
    Transfer transfer = transferOf(linear, roomySource(), cloud({{1, 1, 1}}));
    transfer.sourceFields[0].name = std::string(99, 's');
    transfer.targetFields[0].name = std::string(99, 't');
    EXPECT_EQ(run(transfer).code, 0);
}

TEST_F(Fields, targetFieldsWithoutSourceFieldAreNotWrittenWhenAllGoesWell)
{
    Transfer transfer = transferOf(linear, roomySource(), unitHexahedron({1, 1, 1}));
    transfer.targetFields = {Field{}, Field{}, atGaussPoints()};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    expectNear(outcome.fields[0], atNodes(transfer.target, linear), 1e-5);
    EXPECT_EQ(outcome.fields[1], constant(8, untouched));
    EXPECT_EQ(outcome.fields[2], constant(8, untouched));
}

TEST_F(Fields, theSourceFieldGivesTheNumberOfComponentsThatAreWritten)
{
    Transfer transfer = transferOf(linear, roomySource(), cloud({{1, 1, 1}, {2, 2, 2}}));
    transfer.targetFields = {{.components = 3}};
    expectNear(run(transfer).fields[0],
               {linear({1, 1, 1}), linear({2, 2, 2}), untouched, untouched, untouched, untouched}, 1e-5);
}

TEST_F(Fields, nodeValuesServeGaussPointsAndGaussPointValuesServeNodes)
{
    Transfer transfer = transferOf(linear, roomySource(), unitHexahedron({1, 1, 1}));
    transfer.sourceFields.push_back({.location = atGaussPointsLocation, .values = constant(8 * 8, 4.0)});
    transfer.targetFields = {atGaussPoints(), Field{}};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    // The Gauss points of the unit hexahedron lie at 1/2 -+ 1/(2 sqrt 3) along each axis, in the order of its nodes.
    const auto low = static_cast<float>(1.5 - 0.5 / std::sqrt(3.0));
    const auto high = static_cast<float>(1.5 + 0.5 / std::sqrt(3.0));
    const std::vector<Point> points = {{low, low, low},  {high, low, low},  {high, high, low},  {low, high, low},
                                       {low, low, high}, {high, low, high}, {high, high, high}, {low, high, high}};
    std::vector<double> expected;
    for (const Point& p : points)
    {
        expected.push_back(linear(p));
    }
    expectNear(outcome.fields[0], expected, 1e-5);
    expectNear(outcome.fields[1], constant(8, 4.0), 1e-5);
}

TEST_F(Fields, gaussPointsOfVolumeElementsLieAtTheirPlaces)
{
    // The elements are in their reference positions, so that these are reference coordinates.
    const auto a = static_cast<float>(1.0 / std::sqrt(3.0));
    const float third = 1.0F / 3.0F;
    const float sixth = 0.5F * third;
    const std::vector<Point> hexahedron = {{-a, -a, -a}, {a, -a, -a}, {a, a, -a}, {-a, a, -a},
                                           {-a, -a, a},  {a, -a, a},  {a, a, a},  {-a, a, a}};
    std::vector<Point> pyramid;
    for (const float s : {0.455848155988F, 0.8774851773445F})
    {
        for (std::size_t i = 0; i < 4; ++i)
        {
            pyramid.push_back({s * hexahedron[i][0], s * hexahedron[i][1], 1.0F - s});
        }
    }
    const std::vector<std::pair<int, std::vector<Point>>> places = {
        {element::hexahedron, hexahedron},
        {element::tetrahedron, {{0.25F, 0.25F, 0.25F}}},
        {element::wedge, {{0.5F, 0, -a}, {0.5F, 0.5F, -a}, {0, 0.5F, -a}, {0.5F, 0, a}, {0.5F, 0.5F, a}, {0, 0.5F, a}}},
        {element::quadraticTetrahedron,
         {{0.25F, 0.25F, 0.25F},
          {0.5F, sixth, sixth},
          {sixth, 0.5F, sixth},
          {sixth, sixth, 0.5F},
          {sixth, sixth, sixth}}},
        {element::pyramid, pyramid}};
    const auto distinct = [](const Point& p)
    { return static_cast<double>(p[0]) + 10.0 * static_cast<double>(p[1]) + 100.0 * static_cast<double>(p[2]); };
    for (const auto& [type, points] : places)
    {
        Transfer transfer =
            transferOf(distinct, box(element::hexahedron, {-2, -2, -2}, {2, 2, 2}), referenceElement(type));
        transfer.targetFields = {atGaussPoints()};
        expectNear(run(transfer).fields[0], atNodes(cloud(points), distinct), 1e-4);
    }
}

TEST_F(Fields, gaussPointsOfTrianglesAndQuadrilateralsLieAtTheOrigin)
{
    // These elements have no shape functions in the library.
    const Mesh source = box(element::hexahedron, {-2, -2, -2}, {4, 4, 4}, {3, 3, 3});
    Transfer transfer = transferOf(linear, source,
                                   joined(referenceElement(element::triangle, 1.0F, {1, 1, 1}),
                                          referenceElement(element::quadrilateral, 0.5F, {-1, -1, 0.5F})));
    transfer.flags = {1, 1};
    transfer.targetFields = {atGaussPoints()};
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    expectNear(outcome.fields[0], constant(3 + 4, linear({0, 0, 0})), 1e-5);
}

// ---------------------------------------------------------------------------------------------------------------------

class UndefinedValues : public Host
{
protected:
    static constexpr double undefinedResult = -99990001156096.0;
    static constexpr double threshold = -88880002891776.0;

    /// The value at (0.5, 0.25, 0.125) of a tetrahedron whose last node has the given value and the others have 1.
    static double withLastNode(double value, int precision)
    {
        Transfer transfer;
        transfer.source = referenceElement(element::tetrahedron);
        transfer.sourceFields = {{.precision = precision, .values = {1.0, 1.0, 1.0, value}}};
        transfer.target = cloud({{0.5F, 0.25F, 0.125F}});
        return run(transfer).fields[0][0];
    }
};

TEST_F(UndefinedValues, oneUndefinedNodeMakesTheResultUndefined)
{
    for (const double value : {-1e14, -1e30, threshold, -8.888e13})
    {
        EXPECT_EQ(withLastNode(value, singlePrecision), undefinedResult) << value;
        EXPECT_EQ(withLastNode(value, doublePrecision), undefinedResult) << value;
    }
}

TEST_F(UndefinedValues, theNextSmallerMagnitudeIsAnOrdinaryValue)
{
    const double ordinary = static_cast<double>(std::nextafter(static_cast<float>(threshold), 0.0F));
    for (const int precision : {singlePrecision, doublePrecision})
    {
        EXPECT_NEAR(withLastNode(ordinary, precision), 0.125 * ordinary, 1e8);
    }
    EXPECT_NEAR(withLastNode(1e14, singlePrecision), 0.125e14, 1e8);
}

TEST_F(UndefinedValues, aNodeWithoutWeightCountsToo)
{
    Transfer transfer;
    transfer.source = referenceElement(element::tetrahedron);
    transfer.sourceFields = {{.values = {1.0, 1.0, 1.0, -1e14}}};
    transfer.target = cloud({{0.25F, 0.25F, 0.0F}});
    EXPECT_EQ(run(transfer).fields[0][0], undefinedResult);
}

TEST_F(UndefinedValues, otherComponentsAndOtherElementsAreNotAffected)
{
    const Mesh source = box(element::hexahedron, {0, 0, 0}, {2, 1, 1}, {2, 1, 1});
    std::vector<double> values = constant(24, 3.0);
    values[2 * 2 + 1] = -1e14; // second component of a node of the second element
    Transfer transfer;
    transfer.source = source;
    transfer.sourceFields = {{.components = 2, .values = values}};
    transfer.target = cloud({{0.5F, 0.5F, 0.5F}, {1.5F, 0.5F, 0.5F}});
    transfer.targetFields = {{.components = 2, .precision = doublePrecision}};
    expectNear(run(transfer).fields[0], {3.0, 3.0, 3.0, undefinedResult}, 1e-5);
}

TEST_F(UndefinedValues, ofGaussPointsAreSeenAfterAveraging)
{
    // Two hexahedra: the shared nodes have the mean of a defined and an undefined value, which is undefined here.
    const Mesh source = box(element::hexahedron, {0, 0, 0}, {2, 1, 1}, {2, 1, 1});
    std::vector<double> values = constant(16, 3.0);
    std::fill(values.begin() + 8, values.end(), -2e14);
    Transfer transfer;
    transfer.source = source;
    transfer.sourceFields = {{.location = atGaussPointsLocation, .values = values}};
    transfer.target = cloud({{0.5F, 0.5F, 0.5F}, {1.5F, 0.5F, 0.5F}});
    EXPECT_EQ(run(transfer).fields[0], (std::vector<double>{undefinedResult, undefinedResult}));
    // With -1e14 the mean, -5e13, is an ordinary value.
    std::fill(transfer.sourceFields[0].values.begin() + 8, transfer.sourceFields[0].values.end(), -1e14);
    const Outcome outcome = run(transfer);
    EXPECT_NEAR(outcome.fields[0][0], -2.5e13, 1e8);
    EXPECT_EQ(outcome.fields[0][1], undefinedResult);
}

// ---------------------------------------------------------------------------------------------------------------------

/// A field at the Gauss points of the source is averaged to its nodes; points of a cloud at the nodes show the result.
class GaussPointSource : public Host
{
protected:
    static std::vector<double> nodalAverages(const Mesh& source, const std::vector<double>& values,
                                             int precision = singlePrecision)
    {
        Transfer transfer;
        transfer.source = source;
        transfer.sourceFields = {{.location = atGaussPointsLocation, .precision = precision, .values = values}};
        transfer.target = cloud(source.nodes);
        transfer.targetFields = {{.precision = doublePrecision}};
        const Outcome outcome = run(transfer);
        EXPECT_EQ(outcome.code, 0);
        return outcome.fields[0];
    }
};

TEST_F(GaussPointSource, aHexahedronGivesEachNodeItsGaussPoint)
{
    const std::vector<double> values = {1, 2, 4, 8, 16, 32, 64, 128};
    expectNear(nodalAverages(referenceElement(element::hexahedron), values), values, 1e-4);
}

TEST_F(GaussPointSource, aTetrahedronGivesItsOneGaussPointToEveryNode)
{
    expectNear(nodalAverages(referenceElement(element::tetrahedron), {7.0}), constant(4, 7.0), 1e-5);
}

TEST_F(GaussPointSource, aWedgeGivesEachNodeTheMeanOfTheTwoNeighbouringGaussPoints)
{
    expectNear(nodalAverages(referenceElement(element::wedge), {1, 2, 4, 8, 16, 32}),
               {(1 + 4) / 2.0, (2 + 1) / 2.0, (4 + 2) / 2.0, (8 + 32) / 2.0, (16 + 8) / 2.0, (32 + 16) / 2.0}, 1e-4);
}

TEST_F(GaussPointSource, aPyramidGivesItsApexTheMeanOfTheUpperFour)
{
    expectNear(nodalAverages(referenceElement(element::pyramid), {1, 2, 4, 8, 16, 32, 64, 128}),
               {16, 32, 64, 128, (1 + 2 + 4 + 8) / 4.0}, 1e-4);
}

TEST_F(GaussPointSource, aQuadraticTetrahedronAssignsGaussPointsByNumber)
{
    // Corner k takes the Gauss point k + 1, a node in the middle of an edge the mean of its ends' and the first.
    const double g1 = 3;
    const double g2 = 6;
    const double g3 = 12;
    const double g4 = 24;
    const double g5 = 48;
    expectNear(nodalAverages(referenceElement(element::quadraticTetrahedron), {g1, g2, g3, g4, g5}),
               {g2, g3, g4, g5, (g2 + g3 + g1) / 3, (g3 + g4 + g1) / 3, (g4 + g2 + g1) / 3, (g2 + g5 + g1) / 3,
                (g3 + g5 + g1) / 3, (g4 + g5 + g1) / 3},
               1e-4);
}

TEST_F(GaussPointSource, aNodeTakesThePlainMeanOverTheElementsAroundIt)
{
    // A small and a large hexahedron share a face: its nodes take the mean, whatever the volumes.
    const Mesh source = []
    {
        Mesh mesh = box(element::hexahedron, {0, 0, 0}, {2, 1, 1}, {2, 1, 1});
        for (Point& node : mesh.nodes)
        {
            node[0] = node[0] > 1.5F ? 5.0F : node[0];
        }
        return mesh;
    }();
    std::vector<double> values = constant(16, 10.0);
    std::fill(values.begin() + 8, values.end(), 20.0);
    std::vector<double> expected;
    for (std::size_t node = 0; node < 12; ++node)
    {
        expected.push_back(std::vector<double>{10.0, 15.0, 20.0}[node % 3]);
    }
    expectNear(nodalAverages(source, values), expected, 1e-3);
}

TEST_F(GaussPointSource, averagesAcrossElementKindsAndMaterials)
{
    // A wedge and a hexahedron share the face of the nodes 0, 2, 3 and 5 of the wedge; their materials differ.
    Mesh source;
    source.nodes = {{0, 0, 0}, {1, -1, 0}, {1, 0, 0}, {0, 0, 1}, {1, -1, 1},
                    {1, 0, 1}, {1, 1, 0},  {0, 1, 0}, {1, 1, 1}, {0, 1, 1}};
    source.connectivity = {{0, 1, 2, 3, 4, 5}, {0, 2, 6, 7, 3, 5, 8, 9}};
    source.types = {element::wedge, element::hexahedron};
    source = withMaterials(source, {0, 1}, {1, 1});
    std::vector<double> values = constant(6, 2.0);
    values.insert(values.end(), {10, 20, 30, 40, 50, 60, 70, 80});
    expectNear(nodalAverages(source, values),
               {(2 + 10) / 2.0, 2, (2 + 20) / 2.0, (2 + 50) / 2.0, 2, (2 + 60) / 2.0, 30, 40, 70, 80}, 1e-3);
}

TEST_F(GaussPointSource, doubleValuesAreAveragedInSinglePrecision)
{
    const std::vector<double> averages =
        nodalAverages(referenceElement(element::tetrahedron), {1.0 + 1e-9}, doublePrecision);
    expectNear(averages, constant(4, 1.0), 1e-6);
    EXPECT_EQ(averages[0], static_cast<double>(static_cast<float>(averages[0])));
}

TEST_F(GaussPointSource, nineComponentsAreAveragedEachForItself)
{
    std::vector<double> values;
    for (int gaussPoint = 0; gaussPoint < 8; ++gaussPoint)
    {
        for (int component = 0; component < 9; ++component)
        {
            values.push_back(10.0 * gaussPoint + component);
        }
    }
    Transfer transfer;
    transfer.source = referenceElement(element::hexahedron);
    transfer.sourceFields = {{.location = atGaussPointsLocation, .components = 9, .values = values}};
    transfer.target = cloud(transfer.source.nodes);
    transfer.targetFields = {{.components = 9}};
    expectNear(run(transfer).fields[0], values, 1e-3);
}

TEST_F(GaussPointSource, anUnusedNodeDoesNotSpoilTheOthers)
{
    Mesh source = referenceElement(element::tetrahedron);
    source.nodes.push_back({5, 5, 5});
    Transfer transfer;
    transfer.source = source;
    transfer.sourceFields = {{.location = atGaussPointsLocation, .values = {7.0}}};
    transfer.target = cloud({{0.25F, 0.25F, 0.25F}});
    expectNear(run(transfer).fields[0], {7.0}, 1e-5);
}

TEST_F(GaussPointSource, severalFieldsShareTheCountOfElementsPerNode)
{
    Transfer transfer;
    transfer.source = box(element::hexahedron, {0, 0, 0}, {2, 1, 1}, {2, 1, 1});
    std::vector<double> values = constant(16, 10.0);
    std::fill(values.begin() + 8, values.end(), 20.0);
    transfer.sourceFields = {{.location = atGaussPointsLocation, .values = values},
                             {.location = atGaussPointsLocation, .precision = doublePrecision, .values = values}};
    transfer.target = cloud({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}});
    transfer.targetFields = std::vector<Field>(2);
    const Outcome outcome = run(transfer);
    expectNear(outcome.fields[0], {10.0, 15.0, 20.0}, 1e-4);
    expectNear(outcome.fields[1], {10.0, 15.0, 20.0}, 1e-4);
}
} // namespace
