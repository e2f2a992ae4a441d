// How the error of a transfer falls when the source is refined, measured with the command alone.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellType.h>
#include <vtkPoints.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <ostream>
#include <sstream>

namespace
{

struct ConvergenceCase
{
    int cellType;
    int order;
    double distortion = 0.1; ///< of the cells' size
};

void PrintTo(const ConvergenceCase& convergenceCase, std::ostream* stream)
{
    *stream << "cell type " << convergenceCase.cellType;
}

/// A grid of distorted cells with straight edges. Pyramids stay as they are: between distorted ones, whose bases are
/// not plane, a few points are in none and get the values of one nearby.
vtkSmartPointer<vtkUnstructuredGrid> makeDistortedGrid(const ConvergenceCase& kind, int n)
{
    const auto grid = makeGrid(kind.cellType, n);
    distort(*grid, kind.distortion / n);
    straighten(*grid);
    return grid;
}

/// Transfers to a mesh that stays the same, within the source and not aligned with it.
class Convergence : public testing::TestWithParam<ConvergenceCase>
{
protected:
    Convergence()
    {
        const auto target = makeGrid(VTK_TETRA, 9, 0.03, 0.98);
        writeGrid(*target, runner.file("target.vtu"));
    }

    void transferFrom(vtkUnstructuredGrid& source) const
    {
        writeGrid(source, runner.file("source.vtu"));
        const CommandResult result =
            runner.run({"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--tolerance", "1e-5", "--quiet"});
        ASSERT_EQ(result.status, 0) << result.errors;
    }

    /// The root mean square of the differences from a formula.
    double errorOf(const std::string& formula) const
    {
        const CommandResult result = runner.run({"compare", "out.vtu", "--exact", "T=" + formula});
        EXPECT_EQ(result.status, 0) << result.errors;
        std::istringstream row(result.output.substr(result.output.find("\nT (1)") + 6));
        double largestValue = 0;
        double rootMeanSquare = 0;
        row >> largestValue >> rootMeanSquare;
        EXPECT_FALSE(row.fail()) << result.output;
        return rootMeanSquare;
    }

    CommandRunner runner;
};

TEST_P(Convergence, HasTheOrderOfTheShapeFunctions)
{
    std::vector<double> errors;
    for (const int n : {4, 8, 16})
    {
        const auto source = makeDistortedGrid(GetParam(), n);
        addDoubles(*source, "T",
                   [](const Point& p) { return std::sin(3 * p[0]) * std::cos(2 * p[1]) + std::exp(p[2]); });
        transferFrom(*source);
        errors.push_back(errorOf("sin(3*x)*cos(2*y) + exp(z)"));
    }
    RecordProperty("errors", testing::PrintToString(errors)); // the documentation quotes them
    for (std::size_t i = 1; i < errors.size(); ++i)
    {
        EXPECT_NEAR(std::log2(errors[i - 1] / errors[i]), GetParam().order, 0.25) << testing::PrintToString(errors);
    }
}

/// Values up to 8, to rounding.
TEST_P(Convergence, LinearFieldsAreExact)
{
    const auto source = makeDistortedGrid(GetParam(), 4);
    addDoubles(*source, "T", linear);
    transferFrom(*source);
    EXPECT_LT(errorOf("1 + 2*x - 3*y + 5*z"), 1e-13);
}

INSTANTIATE_TEST_SUITE_P(AllKinds, Convergence,
                         testing::Values(ConvergenceCase{VTK_TETRA, 2}, ConvergenceCase{VTK_HEXAHEDRON, 2},
                                         ConvergenceCase{VTK_WEDGE, 2}, ConvergenceCase{VTK_PYRAMID, 2, 0},
                                         ConvergenceCase{VTK_QUADRATIC_TETRA, 3}));

/// Cells of second order whose edges follow a curve.
class ConvergenceOnCurvedMeshes : public Convergence
{
};

TEST_P(ConvergenceOnCurvedMeshes, HasTheOrderOfTheShapeFunctions)
{
    std::vector<double> errors;
    for (const int n : {4, 8})
    {
        const auto source = makeGrid(GetParam().cellType, n);
        for (vtkIdType i = 0; i < source->GetNumberOfPoints(); ++i)
        {
            // The surface of the cube stays where it is.
            Point p = pointOf(*source, i);
            constexpr double pi = 3.14159265358979;
            const double bulge = std::sin(pi * p[0]) * std::sin(pi * p[1]) * std::sin(pi * p[2]);
            p = {p[0] + 0.08 * bulge, p[1] - 0.06 * bulge, p[2] + 0.07 * bulge};
            source->GetPoints()->SetPoint(i, p.data());
        }
        addDoubles(*source, "T",
                   [](const Point& p) { return std::sin(3 * p[0]) * std::cos(2 * p[1]) + std::exp(p[2]); });
        transferFrom(*source);
        errors.push_back(errorOf("sin(3*x)*cos(2*y) + exp(z)"));
    }
    RecordProperty("errors", testing::PrintToString(errors));
    EXPECT_NEAR(std::log2(errors[0] / errors[1]), GetParam().order, 0.35) << testing::PrintToString(errors);
}

const auto curvedKinds =
    testing::Values(ConvergenceCase{VTK_QUADRATIC_HEXAHEDRON, 3}, ConvergenceCase{VTK_TRIQUADRATIC_HEXAHEDRON, 3},
                    ConvergenceCase{VTK_QUADRATIC_WEDGE, 3}, ConvergenceCase{VTK_BIQUADRATIC_QUADRATIC_WEDGE, 3},
                    ConvergenceCase{VTK_QUADRATIC_PYRAMID, 3});

INSTANTIATE_TEST_SUITE_P(CurvedKinds, ConvergenceOnCurvedMeshes, curvedKinds);

} // namespace
