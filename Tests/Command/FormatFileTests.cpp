// Files that other programs have written, of every format that is read: nodes in order, groups, fields, steps, and what
// is left out. How the bundled ones were made: Files/make_*.
#include "CommandRunner.h"
#include "DataSetReader.h"
#include "FormatChecks.h"
#include "FormatList.h"
#include "GroupNames.h"
#include "MeshFile.h"
#include "TestGrids.h"
#include "Text.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDataArray.h>
#include <vtkFieldData.h>
#include <vtkPointData.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>

namespace
{

using testing::HasSubstr;
using veltrane::GroupNames;
using veltrane::MeshFile;
using veltrane::MeshRole;

std::filesystem::path bundled(const std::string& name)
{
    return std::filesystem::path(VELTRANE_FORMAT_FILES) / name;
}

/// A file of cells of all kinds, or of some.
struct FormatFile
{
    std::string name;
    std::vector<double> times;
    std::string nodalArray; ///< quadratic(), at the second step twice that
    std::string cellArray;  ///< 10 times the number of the cell; empty: none
    GroupNames groups;
    int cellCount;
    std::string leftOut; ///< a part of what is told of it
};

void PrintTo(const FormatFile& file, std::ostream* stream)
{
    *stream << file.name;
}

const FormatFile files[] = {
    {"all_kinds.med",
     {0.5, 2},
     "T",
     "damage",
     {{2, "steel"}, {3, "rubber part"}, {4, "steel, top"}},
     10,
     "at_nodes_of_cells"},
    {"all_kinds.cgns",
     {0},
     "T",
     "damage",
     {{1, "tetrahedron"},
      {2, "hexahedron"},
      {3, "wedge"},
      {4, "pyramid"},
      {5, "curved tetrahedron"},
      {6, "curved hexahedron"},
      {7, "curved wedge"},
      {8, "curved pyramid"}},
     8,
     "cells of types that VTK's reader does not know: 1"},
    {"steps.cgns", {0.5, 2}, "T", "", {}, 1, ""},
    {"all_kinds.0.case", {0, 1}, "T_n", "damage_c", {{1, "VTK Part"}, {2, "VTK Part"}}, 6, ""},
    {"all_kinds.vtkhdf", {}, "T", "damage", {}, 6, ""},
};

class FormatFiles : public testing::TestWithParam<FormatFile>
{
protected:
    std::filesystem::path path() const { return bundled(GetParam().name); }
};

TEST_P(FormatFiles, HaveTheirNodesInOrderAndFieldsAtAllSteps)
{
    const std::vector<double> times = veltrane::readStepTimes(path());
    EXPECT_EQ(times, GetParam().times);
    for (std::size_t step = 0; step < std::max<std::size_t>(times.size(), 1); ++step)
    {
        const bool hasSteps = !times.empty();
        const auto grid =
            readByFormat(path(), {.step = hasSteps ? std::optional(static_cast<int>(step)) : std::nullopt});
        EXPECT_EQ(grid->GetNumberOfCells(), GetParam().cellCount);
        expectNodesInOrder(*grid, GetParam().nodalArray, static_cast<double>(step + 1));
    }
}

TEST_P(FormatFiles, HaveFieldsInCellsAndGroups)
{
    const auto grid = readByFormat(path(), {.step = GetParam().times.empty() ? std::nullopt : std::optional(0)});
    EXPECT_EQ(veltrane::groupNames(*grid), GetParam().groups);
    vtkDataArray* values = grid->GetCellData()->GetArray(GetParam().cellArray.c_str());
    for (vtkIdType cell = 0; values != nullptr && cell < grid->GetNumberOfCells(); ++cell)
    {
        EXPECT_EQ(values->GetComponent(cell, 0), 10.0 * static_cast<double>(cell));
    }
    EXPECT_EQ(values != nullptr, !GetParam().cellArray.empty());
}

TEST_P(FormatFiles, AreToldOfByInfo)
{
    const CommandRunner runner;
    const CommandResult result = runner.run({"info", path().string()});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr(veltrane::text("format            ", veltrane::formatOf(path())->name, "\n")));
    EXPECT_THAT(result.output, HasSubstr(GetParam().leftOut.empty() ? "" : "\nleft out          "));
    EXPECT_THAT(result.output, HasSubstr(GetParam().leftOut));
    for (const auto& [number, name] : GetParam().groups)
    {
        EXPECT_THAT(result.output, HasSubstr(veltrane::text(number, " ", name)));
    }
}

TEST_P(FormatFiles, AreRefusedWithASentenceWhereverTheyAreCutOff)
{
    const CommandRunner runner;
    const std::string name = veltrane::text("cut", path().extension().string());
    const auto size = std::filesystem::file_size(path());
    for (const std::uintmax_t part : {1U, 4U, 7U})
    {
        std::filesystem::copy_file(path(), runner.file(name), std::filesystem::copy_options::overwrite_existing);
        std::filesystem::resize_file(runner.file(name), size * part / 8);
        const CommandResult result = runner.run({"info", name});
        EXPECT_THAT(result.status, testing::AnyOf(65, 66)) << part;
        EXPECT_THAT(result.errors, testing::MatchesRegex("veltrane: [^\n]+\n")) << part;
    }
}

INSTANTIATE_TEST_SUITE_P(Bundled, FormatFiles, testing::ValuesIn(files),
                         [](const auto& parameter)
                         {
                             std::string name = parameter.param.name;
                             std::erase_if(name, [](char letter) { return letter == '.' || letter == '_'; });
                             return name;
                         });

TEST(MedFiles, HaveSymmetricTensorsInVtksOrder)
{
    const auto grid = readByFormat(bundled("all_kinds.med"));
    vtkDataArray* stress = grid->GetCellData()->GetArray("stress");
    ASSERT_NE(stress, nullptr);
    const std::vector<double> expected{1, 2, 3, 12, 23, 13};
    for (int component = 0; component < 6; ++component)
    {
        EXPECT_EQ(stress->GetComponent(0, component), expected[static_cast<std::size_t>(component)]);
    }
    EXPECT_STREQ(stress->GetComponentName(4), "SIYZ");
}

TEST(MedFiles, HaveValuesAtGaussPointsInReferenceElementsOfTheirOwn)
{
    const MeshFile file(bundled("gauss.med"), MeshRole::source);
    const veltrane::Field field = file.field("S");
    const auto& values = std::get<std::vector<double>>(field.values());
    const double a = 0.5 / std::sqrt(3.0);
    std::vector<double> expected{linear({0.25, 0.25, 0.25})}; // the centre of the tetrahedron
    for (const double x : {2.5 - a, 2.5 + a})
    {
        for (const double y : {0.5 - a, 0.5 + a})
        {
            expected.push_back(linear({x, y, 0.5 - a}));
            expected.push_back(linear({x, y, 0.5 + a}));
        }
    }
    std::vector<testing::Matcher<double>> matchers;
    for (const double value : expected)
    {
        matchers.push_back(testing::DoubleNear(value, 1e-9));
    }
    EXPECT_THAT(values, testing::UnorderedElementsAreArray(matchers));
}

TEST(RefusedFormats, TellWhatToDo)
{
    const CommandRunner runner;
    std::ofstream(runner.file("result.xdmf")) << "<Xdmf/>";
    expectFailure(
        runner, 65,
        "cannot read 'result.xdmf': XDMF files are not read; ParaView saves them as .vtu, and so does 'meshio "
        "convert IN.xdmf OUT.vtu'",
        {"info", "result.xdmf"});
    std::ofstream(runner.file("mesh.unv")) << "    -1\n";
    expectFailure(runner, 65,
                  "cannot read 'mesh.unv': universal files are not read; 'gmsh IN.unv -save -format msh41 -o OUT.msh' "
                  "converts their meshes",
                  {"info", "mesh.unv"});
    std::filesystem::copy_file(bundled("newer.vtkhdf"), runner.file("newer.vtkhdf"));
    expectFailure(runner, 65,
                  "cannot read 'newer.vtkhdf': it is a VTKHDF file of version 2.2, and only those up to 1.0 can be "
                  "read; ParaView saves it as .vtu",
                  {"info", "newer.vtkhdf"});
}

} // namespace
