// Tables of points as spreadsheets write them, and points in VTK's legacy format.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellType.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace
{

/// Points at (0.25, 0.5, 0.125), where the linear field is 0.625, and at (1, 1, 1), where it is 5.
class PointTables : public testing::Test
{
protected:
    PointTables()
    {
        const auto grid = makeGrid(VTK_HEXAHEDRON, 2);
        addDoubles(*grid, "T", linear);
        writeGrid(*grid, runner.file("source.vtu"));
    }

    void write(const std::string& content) const
    {
        std::ofstream(runner.file("points.csv"), std::ios::binary) << content;
    }

    void expectOutput(const std::string& output) const
    {
        const CommandResult result = runner.run({"sample", "source.vtu", "points.csv", "-o", "out.csv", "--quiet"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        EXPECT_EQ(contentsOf(runner.file("out.csv")), output);
    }

    CommandRunner runner;
};

TEST_F(PointTables, MayHaveAByteOrderMark)
{
    write("\xEF\xBB\xBFx,y,z\n0.25,0.5,0.125\n");
    expectOutput("x,y,z,T,vtkValidPointMask\n0.25,0.5,0.125,0.625,1\n");
}

TEST_F(PointTables, MayHaveSemicolonsAndDecimalCommas)
{
    const std::string expected = "x,y,z,name,T,vtkValidPointMask\n0.25,0.5,0.125,\"a, b\",0.625,1\n1,1,1,c,5,1\n";
    write("\xEF\xBB\xBFx;y;z;name\r\n0,25;5,0e-1;+0,125;a, b\r\n1;1,0;1;c\r\n;;;\r\n");
    expectOutput(expected);
    write("x;y;z;name\n 0.25 ;0.5;0.125;\"a, b\"\n1;1;1;c\n");
    expectOutput(expected);
    write("sep=;\r\nx;y;z;name\r\n0,25;0,5;0,125;a, b\r\n1;1;1;c");
    expectOutput(expected);
    write("x\ty\tz\tname\n0,25\t0,5\t0,125\ta, b\n1\t1\t1\tc\n");
    expectOutput(expected);
}

TEST_F(PointTables, KeepTextsWithCommas)
{
    write("x;y;z;name\n1;1;1;\"1,5; or not\"\n");
    expectOutput("x,y,z,name,T,vtkValidPointMask\n1,1,1,\"1,5; or not\",5,1\n");
}

TEST_F(PointTables, InUtf16AreRefused)
{
    write(std::string("\xFF\xFEx\0,\0y\0", 8));
    expectFailure(runner, 65, "cannot read 'points.csv': it is in UTF-16; save it as CSV in UTF-8",
                  {"sample", "source.vtu", "points.csv", "-o", "out.csv", "--quiet"});
}

TEST_F(PointTables, LegacyPolyDataArePointsToo)
{
    std::ofstream(runner.file("points.vtk"))
        << "# vtk DataFile Version 3.0\ntitle\nASCII\nDATASET POLYDATA\nPOINTS 2 double\n0.25 0.5 0.125 1 1 1\n"
           "LINES 1 3\n2 0 1\nPOINT_DATA 2\nSCALARS id int 1\nLOOKUP_TABLE default\n7 8\n";
    const CommandResult result = runner.run({"sample", "source.vtu", "points.vtk", "-o", "out.csv", "--quiet"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(contentsOf(runner.file("out.csv")),
              "x,y,z,id,T,vtkValidPointMask\n0.25,0.5,0.125,7,0.625,1\n1,1,1,8,5,1\n");
    EXPECT_THAT(runner.run({"info", "points.vtk"}).output, testing::HasSubstr("cells             1 line\n"));
}

/// The cells of the source are of two materials; the point lies in one of the other.
TEST_F(PointTables, NamesOfPhysicalGroupsAreMaterials)
{
    for (const std::string name : {"CellEntityIds", "medit:ref", "cell_tags", "PhysicalIds", "attribute"})
    {
        const auto grid = makeGrid(VTK_HEXAHEDRON, 2);
        addDoubles(*grid, "T", linear);
        addCellNumbers(*grid, name, [](vtkIdType cell) { return static_cast<int>(cell % 2); });
        writeGrid(*grid, runner.file("grouped.vtu"));
        EXPECT_THAT(runner.run({"info", "grouped.vtu"}).output,
                    testing::HasSubstr("materials         numbered by '" + name + "'\n"));
        const CommandResult result =
            runner.run({"transfer", "grouped.vtu", "grouped.vtu", "-o", "out.vtu", "--replace"});
        EXPECT_THAT(result.output, testing::HasSubstr("0, 1 in the source, 0, 1 in the target, matched by number"));
    }
}

} // namespace
