// Beside VTK's probe: on meshes of every kind the command finds at least the points that the probe finds. Each test
// prints a line of the table in Documentation/Verification.md, which Scripts/probe-comparison makes.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellType.h>
#include <vtkDataArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkProbeFilter.h>
#include <vtkStaticCellLocator.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <iostream>

namespace
{

struct ProbeCase
{
    const char* name;
    int cellType;
    double distortion; ///< as part of a cell
    double distance;   ///< of the mesh from the origin, along each axis
    int mostMissed = 0;
    double probeError = 1e-5; ///< where the probe's own iterations end, as part of the field's range
};

void PrintTo(const ProbeCase& probeCase, std::ostream* stream)
{
    *stream << probeCase.name;
}

constexpr int cellsPerEdge = 8;
constexpr int pointCount = 5000;

/// Numbers from 0 to 1 that are the same everywhere.
class Numbers
{
public:
    double next()
    {
        state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<double>(state_ >> 11) / static_cast<double>(std::uint64_t{1} << 53);
    }

private:
    std::uint64_t state_ = 1;
};

/// In the mesh's cube and up to a tenth beyond it.
vtkSmartPointer<vtkUnstructuredGrid> somePoints(double distance)
{
    Numbers numbers;
    vtkNew<vtkPoints> points;
    points->SetDataTypeToDouble();
    for (int i = 0; i < pointCount; ++i)
    {
        Point point{};
        for (double& coordinate : point)
        {
            coordinate = distance - 0.1 + 1.2 * numbers.next();
        }
        points->InsertNextPoint(point.data());
    }
    vtkNew<vtkUnstructuredGrid> grid;
    grid->SetPoints(points);
    return grid;
}

void move(vtkUnstructuredGrid& grid, double distance)
{
    for (vtkIdType i = 0; i < grid.GetNumberOfPoints(); ++i)
    {
        const Point p = pointOf(grid, i);
        grid.GetPoints()->SetPoint(i, p[0] + distance, p[1] + distance, p[2] + distance);
    }
}

/// The values at the points, and whether there are any.
struct Found
{
    std::vector<double> values;
    std::vector<double> areValid;
};

Found findByProbe(vtkUnstructuredGrid& source, vtkUnstructuredGrid& points)
{
    vtkNew<vtkProbeFilter> probe;
    probe->SetInputData(&points);
    probe->SetSourceData(&source);
    const vtkNew<vtkStaticCellLocator> locator;
    probe->SetCellLocatorPrototype(locator);
    probe->Update();
    auto& output = *vtkUnstructuredGrid::SafeDownCast(probe->GetOutput());
    return {valuesOf(output, "T"), valuesOf(output, "vtkValidPointMask")};
}

class ProbeComparison : public testing::TestWithParam<ProbeCase>
{
};

TEST_P(ProbeComparison, FindsAtLeastWhatTheProbeFinds)
{
    const ProbeCase& param = GetParam();
    const auto source = makeGrid(param.cellType, cellsPerEdge);
    distort(*source, param.distortion / cellsPerEdge);
    move(*source, param.distance);
    const auto exact = [&](const Point& p) {
        return linear({p[0] - param.distance, p[1] - param.distance, p[2] - param.distance});
    };
    addDoubles(*source, "T", exact);
    const double range = 10;
    const auto points = somePoints(param.distance);
    const CommandRunner runner;
    writeGrid(*source, runner.file("source.vtu"));
    writeGrid(*points, runner.file("points.vtu"));
    const CommandResult result =
        runner.run({"sample", "source.vtu", "points.vtu", "-o", "out.vtu", "--outside", "default", "--quiet"});
    ASSERT_EQ(result.status, 0) << result.errors;
    const auto out = readGrid(runner.file("out.vtu"));
    const Found own{valuesOf(*out, "T"), valuesOf(*out, "vtkValidPointMask")};
    const Found probed = findByProbe(*source, *points);
    int both = 0;
    int onlyProbed = 0;
    int missed = 0; // of the cube
    int onlyOwn = 0;
    double largestDifference = 0;
    double largestError = 0;
    for (std::size_t i = 0; i < pointCount; ++i)
    {
        const bool isOwn = own.areValid[i] > 0;
        const bool isProbed = probed.areValid[i] > 0;
        both += isOwn && isProbed ? 1 : 0;
        onlyProbed += isProbed && !isOwn ? 1 : 0;
        const auto isInCube = [&](const Point& p)
        {
            return std::ranges::all_of(p, [&](double coordinate)
                                       { return std::abs(coordinate - param.distance - 0.5) <= 0.5; });
        };
        missed += isProbed && !isOwn && isInCube(pointOf(*points, static_cast<vtkIdType>(i))) ? 1 : 0;
        onlyOwn += isOwn && !isProbed ? 1 : 0;
        if (isOwn && isProbed)
        {
            const double error = own.values[i] - exact(pointOf(*points, static_cast<vtkIdType>(i)));
            largestDifference = std::max(largestDifference, std::abs(own.values[i] - probed.values[i]) / range);
            largestError = std::max(largestError, std::abs(error) / range);
        }
    }
    std::cout << "| " << param.name << " | " << both << " | " << onlyProbed << " | " << onlyOwn << " | "
              << largestDifference << " | " << largestError << " |\n";
    EXPECT_GT(both, pointCount / 2);
    EXPECT_LE(missed, param.mostMissed);
    EXPECT_LE(largestDifference, param.probeError);
    EXPECT_LE(largestError, 1e-12);
}

constexpr int mostInGaps = 5; // between pyramids whose bases are not plane
constexpr double coarse = 2e-4;

INSTANTIATE_TEST_SUITE_P(
    Kinds, ProbeComparison,
    testing::Values(ProbeCase{"tetrahedra", VTK_TETRA, 0, 0}, ProbeCase{"tetrahedra, distorted", VTK_TETRA, 0.15, 0},
                    ProbeCase{"tetrahedra, 1000 away", VTK_TETRA, 0.15, 1000},
                    ProbeCase{"ten-node tetrahedra", VTK_QUADRATIC_TETRA, 0, 0},
                    ProbeCase{"ten-node tetrahedra, curved", VTK_QUADRATIC_TETRA, 0.03, 0},
                    ProbeCase{"20-node hexahedra", VTK_QUADRATIC_HEXAHEDRON, 0, 0, 0, coarse},
                    ProbeCase{"20-node hexahedra, curved", VTK_QUADRATIC_HEXAHEDRON, 0.03, 0, 0, coarse},
                    ProbeCase{"27-node hexahedra", VTK_TRIQUADRATIC_HEXAHEDRON, 0, 0, 0, coarse},
                    ProbeCase{"27-node hexahedra, curved", VTK_TRIQUADRATIC_HEXAHEDRON, 0.03, 0, 0, coarse},
                    ProbeCase{"15-node wedges", VTK_QUADRATIC_WEDGE, 0, 0, 0, coarse},
                    ProbeCase{"15-node wedges, curved", VTK_QUADRATIC_WEDGE, 0.03, 0, 0, coarse},
                    ProbeCase{"18-node wedges", VTK_BIQUADRATIC_QUADRATIC_WEDGE, 0, 0, 0, coarse},
                    ProbeCase{"18-node wedges, curved", VTK_BIQUADRATIC_QUADRATIC_WEDGE, 0.03, 0, 0, coarse},
                    ProbeCase{"13-node pyramids", VTK_QUADRATIC_PYRAMID, 0, 0, 0, coarse},
                    ProbeCase{"13-node pyramids, curved", VTK_QUADRATIC_PYRAMID, 0.03, 0, 0, coarse},
                    ProbeCase{"hexahedra", VTK_HEXAHEDRON, 0, 0},
                    ProbeCase{"hexahedra, distorted", VTK_HEXAHEDRON, 0.2, 0},
                    ProbeCase{"hexahedra, 1000 away", VTK_HEXAHEDRON, 0.2, 1000}, ProbeCase{"voxels", VTK_VOXEL, 0, 0},
                    ProbeCase{"wedges", VTK_WEDGE, 0, 0}, ProbeCase{"wedges, distorted", VTK_WEDGE, 0.15, 0},
                    ProbeCase{"pyramids", VTK_PYRAMID, 0, 0},
                    ProbeCase{"pyramids, distorted", VTK_PYRAMID, 0.1, 0, mostInGaps}),
    [](const auto& probeCase)
    {
        std::string name;
        for (const char letter : std::string(probeCase.param.name))
        {
            name += std::isalnum(static_cast<unsigned char>(letter)) != 0 ? std::string(1, letter) : "";
        }
        return name;
    });

} // namespace
