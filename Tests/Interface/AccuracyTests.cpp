// Linear fields are reproduced on distorted meshes, as closely as the tolerance of the reference coordinates promises.
#include "Scenes.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr float side = 10.0F;
/// Length of the gradient of `linear`.
const double slope = std::sqrt(2.0 * 2.0 + 3.0 * 3.0 + 4.0 * 4.0);
/// Room for single-precision sums of values up to a hundred.
constexpr double rounding = 1e-4;

class Accuracy : public Host
{
protected:
    /// Moves everything out of line with the axes.
    static Point sheared(const Point& p) { return {p[0] + 0.3F * p[1] + 0.1F * p[2], p[1] - 0.2F * p[2], p[2]}; }

    /// A box of distorted elements without gaps or overlaps.
    static Mesh distortedSource(int type)
    {
        const std::array<int, 3> cells = {4, 4, 4};
        const Mesh regular = box(type, {0, 0, 0}, {side, side, side}, cells);
        // Edges bend only so far before a quadratic element folds over.
        const float amount = type == element::quadraticTetrahedron ? 0.1F : 0.3F;
        Mesh mesh = distorted(regular, {0, 0, 0}, {side, side, side}, amount);
        if (type == element::pyramid)
        {
            // The faces of these pyramids only fit together over parallelograms: of their nodes only the tips move.
            constexpr std::size_t nbCorners = 5 * 5 * 5;
            std::copy_n(regular.nodes.begin(), nbCorners, mesh.nodes.begin());
        }
        std::ranges::transform(mesh.nodes, mesh.nodes.begin(), sheared);
        return mesh;
    }

    static std::vector<Point> scatteredPoints(int nbPoints)
    {
        std::vector<Point> points;
        for (int i = 1; i <= nbPoints; ++i)
        {
            const auto along = [&](double step)
            { return 0.3F + (side - 0.6F) * static_cast<float>(std::fmod(static_cast<double>(i) * step, 1.0)); };
            points.push_back(sheared({along(0.7548776662), along(0.5698402910), along(0.8191725134)}));
        }
        return points;
    }

    /// A point is accepted when its image is off by at most the tolerance times the smallest extent of the element's
    /// box. The box is inflated by a fiftieth of its largest extent, less than a tenth of the smallest here.
    static double bound(const Mesh& source, double tolerance)
    {
        float largest = 0.0F;
        for (const std::vector<int>& nodes : source.connectivity)
        {
            float smallest = 1e30F;
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                const auto coordinate = [&](int node) { return source.nodes[static_cast<std::size_t>(node)][axis]; };
                const auto [low, high] = std::ranges::minmax(nodes, {}, coordinate);
                smallest = std::min(smallest, coordinate(high) - coordinate(low));
            }
            largest = std::max(largest, smallest);
        }
        return slope * tolerance * 1.1 * static_cast<double>(largest) + rounding;
    }

    static constexpr double defaultTolerance = 0.001;
};

TEST_F(Accuracy, ofLinearTetrahedraIsThatOfSinglePrecision)
{
    const Transfer transfer = transferOf(linear, distortedSource(element::tetrahedron), cloud(scatteredPoints(2000)));
    const Outcome outcome = run(transfer);
    EXPECT_EQ(outcome.code, 0);
    expectNear(outcome.fields[0], atNodes(transfer.target, linear), rounding);
}

TEST_F(Accuracy, ofEveryElementIsWithinTheToleranceAtCloudPoints)
{
    for (const int type : element::volumes)
    {
        const Transfer transfer = transferOf(linear, distortedSource(type), cloud(scatteredPoints(2000)));
        const Outcome outcome = run(transfer);
        EXPECT_EQ(outcome.code, 0) << "type " << type;
        expectNear(outcome.fields[0], atNodes(transfer.target, linear), bound(transfer.source, defaultTolerance));
    }
}

TEST_F(Accuracy, followsTheToleranceOfTheTuningFile)
{
    for (const int type : element::volumes)
    {
        const Transfer transfer = transferOf(linear, distortedSource(type), cloud(scatteredPoints(2000)));
        const Outcome outcome = run(transfer, {.files = {{"mappingInputs.txt", "0.1 0.00002"}}});
        EXPECT_EQ(outcome.code, 0) << "type " << type;
        expectNear(outcome.fields[0], atNodes(transfer.target, linear), bound(transfer.source, 0.00002));
    }
}

TEST_F(Accuracy, holdsAtNodesAndGaussPointsOfADistortedTarget)
{
    Mesh target = distorted(box(element::tetrahedron, {1, 1, 1}, {side - 1, side - 1, side - 1}, {5, 5, 5}), {1, 1, 1},
                            {side - 1, side - 1, side - 1}, 0.3F);
    std::ranges::transform(target.nodes, target.nodes.begin(), sheared);
    // A tetrahedron's Gauss point is the mean of its nodes, and so is a linear field's value there.
    const std::vector<double> atTargetNodes = atNodes(target, linear);
    std::vector<double> atTargetGaussPoints;
    for (const std::vector<int>& nodes : target.connectivity)
    {
        double sum = 0.0;
        for (const int node : nodes)
        {
            sum += atTargetNodes[static_cast<std::size_t>(node)];
        }
        atTargetGaussPoints.push_back(sum / 4.0);
    }
    for (const int type : element::volumes)
    {
        Transfer transfer = transferOf(linear, distortedSource(type), target);
        transfer.sourceFields = std::vector<Field>(4, Field(transfer.sourceFields[0]));
        transfer.sourceFields[2].precision = doublePrecision;
        transfer.sourceFields[3].precision = doublePrecision;
        transfer.targetFields = {{},
                                 {.location = atGaussPointsLocation},
                                 {.precision = doublePrecision},
                                 {.location = atGaussPointsLocation, .precision = doublePrecision}};
        const Outcome outcome = run(transfer);
        EXPECT_EQ(outcome.code, 0) << "type " << type;
        const double tolerance = bound(transfer.source, defaultTolerance);
        for (const std::size_t field : {0U, 2U})
        {
            expectNear(outcome.fields[field], atTargetNodes, tolerance);
            expectNear(outcome.fields[field + 1], atTargetGaussPoints, tolerance);
        }
    }
}

TEST_F(Accuracy, holdsForUpToNineComponents)
{
    for (const int type : element::volumes)
    {
        for (const int precision : {singlePrecision, doublePrecision})
        {
            Transfer transfer = transferOf(linear, distortedSource(type), cloud(scatteredPoints(100)));
            transfer.sourceFields.clear();
            transfer.targetFields.clear();
            std::vector<std::vector<double>> expected;
            for (int components = 1; components <= 9; ++components)
            {
                const auto rows = [&](const Mesh& mesh)
                {
                    std::vector<double> values;
                    for (const Point& p : mesh.nodes)
                    {
                        for (int c = 0; c < components; ++c)
                        {
                            values.push_back(linear(p) + static_cast<double>(c));
                        }
                    }
                    return values;
                };
                transfer.sourceFields.push_back(
                    {.components = components, .precision = precision, .values = rows(transfer.source)});
                transfer.targetFields.push_back({.components = components, .precision = precision});
                expected.push_back(rows(transfer.target));
            }
            const Outcome outcome = run(transfer);
            EXPECT_EQ(outcome.code, 0);
            for (std::size_t field = 0; field < expected.size(); ++field)
            {
                expectNear(outcome.fields[field], expected[field], bound(transfer.source, defaultTolerance));
            }
        }
    }
}

TEST_F(Accuracy, aQuadraticFieldIsReproducedByStraightQuadraticTetrahedra)
{
    const auto quadratic = [](const Point& p)
    {
        const auto x = static_cast<double>(p[0]);
        const auto y = static_cast<double>(p[1]);
        const auto z = static_cast<double>(p[2]);
        return x * x - 0.5 * y * z + 0.25 * x * y + z;
    };
    const Transfer transfer =
        transferOf(quadratic, box(element::quadraticTetrahedron, {0, 0, 0}, {4, 4, 4}, {2, 2, 2}),
                   cloud({{0.3F, 0.7F, 1.1F}, {3.3F, 0.2F, 2.9F}, {1.7F, 1.9F, 3.1F}, {2.2F, 2.4F, 2.6F}}));
    expectNear(run(transfer).fields[0], atNodes(transfer.target, quadratic), 1e-4);
}
} // namespace
