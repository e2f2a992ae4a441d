// Values as exact as the files, wherever the meshes lie.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellType.h>
#include <vtkPoints.h>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace
{
/// A distorted grid with its linear field, in double precision, moved along all axes.
vtkSmartPointer<vtkUnstructuredGrid> movedGrid(int cellType, int n, double from, double to, double distance)
{
    const auto grid = makeGrid(cellType, n, from, to);
    distort(*grid, 0.1 / n);
    straighten(*grid);
    const vtkNew<vtkPoints> points;
    points->SetDataTypeToDouble();
    for (vtkIdType point = 0; point < grid->GetNumberOfPoints(); ++point)
    {
        const Point p = pointOf(*grid, point);
        points->InsertNextPoint(p[0] / 3 + distance, p[1] / 3 + distance, p[2] / 3 + distance);
    }
    grid->SetPoints(points);
    addDoubles(*grid, "T", [=](const Point& p) { return linear({p[0] - distance, p[1] - distance, p[2] - distance}); });
    return grid;
}

class Precision : public testing::TestWithParam<int>
{
protected:
    /// The largest error of the values of a linear field, relative to its range of about 1, and the report.
    double largestError(double distance, const std::vector<std::string>& options)
    {
        const auto target = movedGrid(VTK_TETRA, 7, 0.2, 0.8, distance);
        writeGrid(*movedGrid(GetParam(), 4, 0, 1, distance), runner_.file("source.vtu"));
        const std::vector<double> expected = valuesOf(*target, "T");
        writeGrid(*target, runner_.file("target.vtu"));
        std::vector<std::string> arguments{"transfer", "source.vtu", "target.vtu", "-o",         "out.vtu",
                                           "--field",  "T=result",   "--report",   "report.json"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const CommandResult result = runner_.run(arguments);
        EXPECT_EQ(result.status, 0) << result.errors;
        report = nlohmann::json::parse(contentsOf(runner_.file("report.json")));
        summary = result.output;
        double largest = 0;
        const auto values = valuesOf(*readGrid(runner_.file("out.vtu")), "result");
        for (std::size_t i = 0; i < values.size(); ++i)
        {
            largest = std::max(largest, std::abs(values[i] - expected[i]));
        }
        return largest;
    }

    nlohmann::json report;
    std::string summary;

private:
    CommandRunner runner_;
};

TEST_P(Precision, IsThatOfTheFiles)
{
    EXPECT_LE(largestError(0, {}), 1e-13);
    EXPECT_EQ(report["options"]["precision"], "double");
    EXPECT_EQ(report["search"]["origin"], nlohmann::json({0, 0, 0}));
}

TEST_P(Precision, CanBeSingle)
{
    EXPECT_GE(largestError(0, {"--precision", "single"}), 1e-8);
    EXPECT_EQ(report["options"]["precision"], "single");
}

TEST_P(Precision, StaysFarFromTheOrigin)
{
    EXPECT_LE(largestError(1e6, {}), 1e-9);
    EXPECT_EQ(report["points"]["inside"], report["points"]["nodes"]);
    for (const auto& coordinate : report["search"]["origin"])
    {
        EXPECT_NEAR(coordinate.get<double>(), 1e6, 1);
    }
    EXPECT_THAT(summary, testing::HasSubstr("\norigin "));
}

INSTANTIATE_TEST_SUITE_P(Cells, Precision,
                         testing::Values(VTK_HEXAHEDRON, VTK_TETRA, VTK_WEDGE, VTK_QUADRATIC_TETRA,
                                         VTK_QUADRATIC_HEXAHEDRON));
} // namespace
