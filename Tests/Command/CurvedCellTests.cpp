// Cells of second order through the command: from Exodus files, and with either set of Gauss points.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellArray.h>
#include <vtkCellType.h>
#include <vtkExodusIIWriter.h>
#include <vtkFieldData.h>
#include <vtkIdList.h>
#include <vtkNew.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace
{

double quadratic(const Point& p)
{
    return linear(p) + p[0] * p[0] - 2 * p[1] * p[1] + 3 * p[2] * p[2] + p[0] * p[1] - 2 * p[1] * p[2];
}

class CurvedCells : public testing::TestWithParam<int>
{
protected:
    CommandRunner runner;
};

/// VTK's writer leaves nodes in VTK's order, its reader takes them to be in that of Exodus, where the upright edges
/// come before the upper ones.
void putInExodusOrder(vtkUnstructuredGrid& grid)
{
    const std::map<int, int> firstUpper{{VTK_QUADRATIC_WEDGE, 9}, {VTK_QUADRATIC_HEXAHEDRON, 12}};
    const vtkNew<vtkIdList> nodes;
    for (vtkIdType cell = 0; cell < grid.GetNumberOfCells(); ++cell)
    {
        const auto found = firstUpper.find(grid.GetCellType(cell));
        if (found != firstUpper.end())
        {
            grid.GetCellPoints(cell, nodes);
            vtkIdType* upper = nodes->begin() + found->second;
            std::rotate(upper, upper + found->second / 3, upper + 2 * (found->second / 3));
            grid.GetCells()->ReplaceCellAtId(cell, nodes);
        }
    }
}

TEST_P(CurvedCells, ComeFromExodusFiles)
{
    const auto source = makeGrid(GetParam(), 2);
    putInExodusOrder(*source);
    addDoubles(*source, "T", quadratic);
    addCellNumbers(*source, "block", [](vtkIdType) { return 1; });
    const vtkNew<vtkExodusIIWriter> writer;
    writer->SetInputData(source);
    writer->SetBlockIdArrayName("block");
    writer->SetFileName(runner.file("source.e").c_str());
    ASSERT_EQ(writer->Write(), 1);
    const auto target = makeGrid(VTK_TETRA, 5);
    writeGrid(*target, runner.file("target.vtu"));
    const CommandResult result = runner.run({"transfer", "source.e", "target.vtu", "-o", "out.vtu"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    const auto out = readGrid(runner.file("out.vtu"));
    const std::vector<double> values = valuesOf(*out, "T");
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        EXPECT_NEAR(values[i], quadratic(pointOf(*out, static_cast<vtkIdType>(i))), 1e-12);
    }
}

INSTANTIATE_TEST_SUITE_P(AllKinds, CurvedCells,
                         testing::Values(VTK_QUADRATIC_HEXAHEDRON, VTK_QUADRATIC_WEDGE, VTK_QUADRATIC_PYRAMID));

TEST(GaussRule, IsThatOfTheOptionOnATargetAndToldFromTheValuesOfASource)
{
    const CommandRunner runner;
    const auto source = makeGrid(VTK_HEXAHEDRON, 3);
    addDoubles(*source, "T", linear);
    writeGrid(*source, runner.file("source.vtu"));
    writeGrid(*makeGrid(VTK_QUADRATIC_HEXAHEDRON, 2), runner.file("target.vtu"));
    writeGrid(*makeGrid(VTK_TETRA, 3, 0.1, 0.8), runner.file("nodes.vtu"));
    for (const auto& [rule, count] : {std::pair{"full", 8 * 27}, {"reduced", 8 * 8}})
    {
        ASSERT_EQ(
            runner.run({"transfer", "source.vtu", "target.vtu", "-o", "gauss.vtu", "--gauss", "--gauss-rule", rule})
                .status,
            0);
        const auto grid = readGrid(runner.file("gauss.vtu"));
        EXPECT_EQ(grid->GetFieldData()->GetArray("T")->GetNumberOfTuples(), count);
        const CommandResult result =
            runner.run({"transfer", "gauss.vtu", "nodes.vtu", "-o", "out.vtu", "--field", "T"});
        ASSERT_EQ(result.status, 0) << result.errors;
        const auto out = readGrid(runner.file("out.vtu"));
        const std::vector<double> values = valuesOf(*out, "T");
        for (std::size_t i = 0; i < values.size(); ++i)
        {
            EXPECT_NEAR(values[i], linear(pointOf(*out, static_cast<vtkIdType>(i))), 1e-12) << rule;
        }
    }
}

TEST(GaussRule, IsRefusedWhereNothingGoesToGaussPoints)
{
    const CommandRunner runner;
    writeGrid(*makeGrid(VTK_HEXAHEDRON, 1), runner.file("mesh.vtu"));
    const CommandResult result =
        runner.run({"transfer", "mesh.vtu", "mesh.vtu", "-o", "out.vtu", "--gauss-rule", "reduced"});
    EXPECT_EQ(result.status, 64);
    EXPECT_THAT(result.errors, testing::HasSubstr("--gauss-rule requires --gauss"));
}

} // namespace
