// A source in another system of coordinates.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCellType.h>
#include <vtkDataArray.h>
#include <vtkPointData.h>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace
{

constexpr double singlePrecision = 1e-5;

class Placements : public testing::Test
{
protected:
    /// A unit cube with a linear field of each number of components that turns.
    Placements()
    {
        const auto grid = makeGrid(VTK_HEXAHEDRON, 2);
        addDoubles(*grid, "T", linear);
        const auto constant = [](double value) { return [=](const Point&) { return value; }; };
        addFloats(*grid, "vector", {constant(1), constant(2), linear});
        addFloats(*grid, "tensor", {constant(1), constant(2), constant(3), constant(4), constant(5), constant(6)});
        addFloats(*grid, "full",
                  {constant(1), constant(2), constant(3), constant(4), constant(5), constant(6), constant(7),
                   constant(8), constant(9)});
        addFloats(*grid, "triple", {constant(1), constant(2), constant(3)});
        writeGrid(*grid, runner.file("source.vtu"));
    }

    CommandResult transfer(const std::vector<std::string>& options) const
    {
        std::vector<std::string> arguments{"transfer", "source.vtu", "target.vtu", "-o", "out.vtu"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runner.run(arguments);
    }

    /// Of the first point.
    std::vector<double> components(const std::string& name) const
    {
        const auto grid = readGrid(runner.file("out.vtu"));
        vtkDataArray& array = *grid->GetPointData()->GetArray(name.c_str());
        std::vector<double> values(static_cast<std::size_t>(array.GetNumberOfComponents()));
        array.GetTuple(0, values.data());
        return values;
    }

    static auto near(const std::vector<double>& values)
    {
        return testing::Pointwise(testing::DoubleNear(singlePrecision), values);
    }

    CommandRunner runner;
};

/// From metres to millimetres, a quarter turn about z, and 5 along x: (x, y, z) comes to (5 - 1000 y, 1000 x, 1000 z).
TEST_F(Placements, ScaleThenTurnThenMove)
{
    const auto target = makeGrid(VTK_TETRA, 1, 0, 1000);
    for (vtkIdType i = 0; i < target->GetNumberOfPoints(); ++i)
    {
        const Point p = pointOf(*target, i);
        target->GetPoints()->SetPoint(i, 5 - p[0], p[1], p[2]);
    }
    writeGrid(*target, runner.file("target.vtu"));
    const CommandResult result =
        transfer({"--translate", "5,0,0", "--rotate", "z,90", "--scale", "1000", "--report", "report.json"});
    ASSERT_EQ(result.status, 0) << result.errors;
    const auto out = readGrid(runner.file("out.vtu"));
    const std::vector<double> values = valuesOf(*out, "T");
    for (vtkIdType i = 0; i < out->GetNumberOfPoints(); ++i)
    {
        const Point p = pointOf(*out, i);
        EXPECT_NEAR(values[static_cast<std::size_t>(i)], linear({p[1] / 1000, (5 - p[0]) / 1000, p[2] / 1000}), 1e-4);
    }
    // The first point is where (0, 0, 0) has come to. A quarter turn takes x to y and y to -x.
    EXPECT_THAT(components("vector"), near({-2, 1, 1}));
    EXPECT_THAT(components("tensor"), near({2, 1, 3, -4, 6, -5}));
    EXPECT_THAT(components("full"), near({5, -4, -6, -2, 1, 3, -8, 7, 9}));
    EXPECT_THAT(result.output, testing::HasSubstr("scaled by 1000, turned, moved by 5, 0, 0\n"));
    const auto report = nlohmann::json::parse(contentsOf(runner.file("report.json")));
    EXPECT_EQ(report["options"]["placement"]["scale"], 1000);
    EXPECT_EQ(report["options"]["placement"]["rotation"], nlohmann::json({{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}));
    EXPECT_EQ(report["options"]["placement"]["translation"], nlohmann::json({5, 0, 0}));
}

/// A turn of 90 degrees about x and then one about z take z to -y, and that to x; in the other order z goes to -y.
TEST_F(Placements, TurnsAreDoneInTheirOrder)
{
    writeGrid(*makeGrid(VTK_HEXAHEDRON, 1, 0, 1), runner.file("target.vtu"));
    ASSERT_EQ(transfer({"--rotate", "x,90", "--rotate", "z,90", "--translate", "0,0,0", "--outside", "default"}).status,
              0);
    const auto out = readGrid(runner.file("out.vtu"));
    const std::vector<double> values = valuesOf(*out, "T");
    for (vtkIdType i = 0; i < out->GetNumberOfPoints(); ++i)
    {
        // (x, y, z) has come to (z, x, y)
        const Point p = pointOf(*out, i);
        EXPECT_NEAR(values[static_cast<std::size_t>(i)], linear({p[1], p[2], p[0]}), singlePrecision);
    }
}

TEST_F(Placements, AVectorTurnsByAnyAngle)
{
    const auto target = makeGrid(VTK_HEXAHEDRON, 1, 0, 0.25);
    for (vtkIdType i = 0; i < target->GetNumberOfPoints(); ++i)
    {
        const Point p = pointOf(*target, i);
        target->GetPoints()->SetPoint(i, p[0], p[1] + 0.5, p[2]);
    }
    writeGrid(*target, runner.file("target.vtu"));
    ASSERT_EQ(transfer({"--rotate", "z,30", "--unturned", "triple"}).status, 0);
    const double half = 0.5;
    const double cosine = std::sqrt(3.0) / 2;
    const std::vector<double> vector = components("vector");
    EXPECT_NEAR(vector[0], cosine * 1 - half * 2, singlePrecision);
    EXPECT_NEAR(vector[1], half * 1 + cosine * 2, singlePrecision);
    EXPECT_THAT(components("triple"), near({1, 2, 3}));
}

TEST_F(Placements, OptionsMustFit)
{
    writeGrid(*makeGrid(VTK_HEXAHEDRON, 1), runner.file("target.vtu"));
    const auto expect = [&](const std::string& sentence, std::vector<std::string> options)
    {
        options.insert(options.begin(), {"transfer", "source.vtu", "target.vtu", "-o", "out.vtu", "--quiet"});
        expectFailure(runner, 64, sentence, options);
    };
    for (const std::string translation : {"1,2", "1,2,3,4", "1,,3", "a,2,3", "1,2,inf"})
    {
        expect("--translate " + translation + " is not X,Y,Z, three numbers separated by commas",
               {"--translate", translation});
    }
    for (const std::string rotation : {"z", "z,", "w,90", "90,z", "z,90,1"})
    {
        expect("--rotate " + rotation + " is not AXIS,ANGLE, such as z,90 with x, y or z and degrees",
               {"--rotate", rotation});
    }
    expect("--scale 0 is not a number above 0", {"--scale", "0"});
    expect("--scale -1 is not a number above 0", {"--scale", "-1"});
    expect("--unturned has an effect only together with --rotate", {"--unturned", "triple"});
    expect("--unturned: there is no field 'other' among those to be transferred",
           {"--rotate", "z,360", "--unturned", "other"});
}

} // namespace
