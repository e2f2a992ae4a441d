// What is written for Gmsh and for solvers.
#include "CommandRunner.h"
#include "DataSetReader.h"
#include "DataSetWriter.h"
#include "GroupNames.h"
#include "TestGrids.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDoubleArray.h>
#include <vtkIdList.h>
#include <vtkNew.h>
#include <vtkPointData.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

namespace
{

using testing::ElementsAre;

std::string contentOf(const std::filesystem::path& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

vtkSmartPointer<vtkUnstructuredGrid> readBack(const std::filesystem::path& path)
{
    return veltrane::readMesh(path, {}, nullptr).grid;
}

void addVectors(vtkUnstructuredGrid& grid, const std::string& name, int componentCount)
{
    vtkNew<vtkDoubleArray> array;
    array->SetName(name.c_str());
    array->SetNumberOfComponents(componentCount);
    for (vtkIdType i = 0; i < grid.GetNumberOfPoints() * componentCount; ++i)
    {
        array->InsertNextValue(1.0 / 3 + static_cast<double>(i));
    }
    grid.GetPointData()->AddArray(array);
}

TEST(GmshWriting, LosesNeitherNodesNorCellsNorValues)
{
    const TemporaryDirectory directory;
    for (const std::string name : {"kinds_complete.msh", "kinds_version2.msh"})
    {
        const auto grid = readBack(std::filesystem::path(VELTRANE_SOLVER_FILES) / name);
        addDoubles(*grid, "T", linear);
        addVectors(*grid, "u", 3);
        addVectors(*grid, "F", 9);
        addCellNumbers(*grid, "zone", [](vtkIdType cell) { return static_cast<int>(10 * cell); });
        EXPECT_THAT(veltrane::writeDataSet(*grid, directory / "out.msh"), ElementsAre());
        const auto back = readBack(directory / "out.msh");
        ASSERT_EQ(back->GetNumberOfPoints(), grid->GetNumberOfPoints());
        ASSERT_EQ(back->GetNumberOfCells(), grid->GetNumberOfCells());
        EXPECT_EQ(veltrane::groupNames(*back), veltrane::groupNames(*grid));
        for (const std::string field : {"T", "u", "F"})
        {
            EXPECT_EQ(valuesOf(*back, field), valuesOf(*grid, field));
        }
        // The cells come back by material and kind.
        std::map<int, vtkIdType> cellOfType;
        for (vtkIdType cell = 0; cell < grid->GetNumberOfCells(); ++cell)
        {
            cellOfType[grid->GetCellType(cell)] = cell;
        }
        for (vtkIdType cell = 0; cell < back->GetNumberOfCells(); ++cell)
        {
            const vtkIdType original = cellOfType.at(back->GetCellType(cell));
            vtkNew<vtkIdList> points;
            vtkNew<vtkIdList> expected;
            back->GetCellPoints(cell, points);
            grid->GetCellPoints(original, expected);
            EXPECT_TRUE(std::equal(points->begin(), points->end(), expected->begin(), expected->end()));
            for (const char* array : {"material", "zone"})
            {
                EXPECT_EQ(back->GetCellData()->GetArray(array)->GetComponent(cell, 0),
                          grid->GetCellData()->GetArray(array)->GetComponent(original, 0));
            }
        }
    }
}

TEST(GmshWriting, MakesSymmetricTensorsWholeAndLeavesOutWhatIsNoNumber)
{
    const TemporaryDirectory directory;
    const auto grid = makeGrid(VTK_TETRA, 1);
    addVectors(*grid, "stress", 6);
    addDoubles(*grid, "T", [](const Point& place) { return place[0] > 0 ? NAN : 4.0; });
    addVectors(*grid, "odd", 4);
    EXPECT_THAT(veltrane::writeDataSet(*grid, directory / "out.msh"), ElementsAre("the array 'odd'"));
    const auto back = readBack(directory / "out.msh");
    EXPECT_EQ(valuesOf(*back, "stress"), valuesOf(*grid, "stress"));
    EXPECT_THAT(contentOf(directory / "out.msh"), testing::HasSubstr("\"stress\"\n1\n0\n3\n0\n9\n8\n"));
    EXPECT_THAT(valuesOf(*back, "T"), testing::Pointwise(testing::NanSensitiveDoubleEq(), valuesOf(*grid, "T")));
}

/// A source around a target that numbers its nodes itself.
class SolverOutput : public testing::Test
{
protected:
    SolverOutput()
    {
        const auto source = makeGrid(VTK_HEXAHEDRON, 2, -1, 2);
        addDoubles(*source, "T", linear);
        addVectors(*source, "force", 3);
        addVectors(*source, "stress", 6);
        writeGrid(*source, runner.file("source.vtu"));
        writeFile(runner.file("deck.inp"), "*NODE\n70,0,0,0\n20,1,0,0\n30,0,1,0\n4,0,0,1\n"
                                           "*ELEMENT, TYPE=C3D4\n1,70,20,30,4\n");
    }

    CommandResult transfer(const std::string& output, const std::vector<std::string>& fields) const
    {
        std::vector<std::string> arguments{"transfer", "source.vtu", "deck.inp", "-o", output, "--quiet"};
        for (const std::string& field : fields)
        {
            arguments.insert(arguments.end(), {"--field", field});
        }
        return runner.run(arguments);
    }

    CommandRunner runner;
};

TEST_F(SolverOutput, HasTemperaturesByTheNumbersOfTheDeck)
{
    const CommandResult result = transfer("temperatures.inp", {"T"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(contentOf(runner.file("temperatures.inp")), "** T\n*TEMPERATURE\n70, 1\n20, 3\n30, -2\n4, 6\n");
}

TEST_F(SolverOutput, HasForcesByComponent)
{
    const CommandResult result = transfer("forces.inp", {"force"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(contentOf(runner.file("forces.inp")),
                testing::MatchesRegex("\\*\\* force\n\\*CLOAD\n70, 1, [0-9.]+\n70, 2, [0-9.]+\n70, 3, [0-9.]+\n"
                                      "20, 1, [^*]*"));
}

TEST_F(SolverOutput, HasOneFieldOfTemperatures)
{
    expectFailure(runner, 73,
                  "cannot write 'out.inp': there is no field of one component, as temperatures, or of three, as forces",
                  {"transfer", "source.vtu", "deck.inp", "-o", "out.inp", "--field", "stress", "--quiet"});
    const CommandResult result = runner.run(
        {"transfer", "source.vtu", "deck.inp", "-o", "out.inp", "--field", "T", "--field", "stress", "--quiet"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, testing::HasSubstr("the field 'stress' of 6 components"));
}

TEST_F(SolverOutput, NamesNodesOfInstances)
{
    writeFile(runner.file("deck.inp"), "*PART,NAME=P\n*NODE\n7,0,0,0\n2,1,0,0\n3,0,1,0\n4,0,0,1\n"
                                       "*ELEMENT, TYPE=C3D4\n1,7,2,3,4\n*END PART\n*ASSEMBLY\n"
                                       "*INSTANCE,NAME=A,PART=P\n*END INSTANCE\n*END ASSEMBLY\n");
    const CommandResult result = transfer("temperatures.inp", {"T"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(contentOf(runner.file("temperatures.inp")), "** T\n*TEMPERATURE\nA.7, 1\nA.2, 3\nA.3, -2\nA.4, 6\n");
}

TEST_F(SolverOutput, KeepsTheNumbersOfNodesInOtherFormatsToo)
{
    ASSERT_EQ(transfer("out.vtu", {"T"}).status, 0);
    ASSERT_EQ(transfer("out.msh", {"T"}).status, 0);
    for (const std::string name : {"out.vtu", "out.msh"})
    {
        const auto grid = readBack(runner.file(name));
        EXPECT_THAT(valuesOf(*grid, "node_number"), ElementsAre(70, 20, 30, 4)) << name;
    }
}

/// The heat of a bracket, solved on hexahedra, on a mesh of Gmsh and then in the deck for its stress.
TEST(ThermalExample, EndsInADeckWithTheTemperaturesThatTheSolverFound)
{
    const CommandRunner runner;
    const std::filesystem::path example = VELTRANE_THERMAL_EXAMPLE;
    for (const auto& file : {"heat.frd", "bracket.msh", "stress_mesh.inp"})
    {
        std::filesystem::copy(example / file, runner.file(file));
    }
    const CommandResult toGmsh =
        runner.run({"transfer", "heat.frd", "bracket.msh", "-o", "hot.msh", "--field", "NDTEMP=temperature"});
    ASSERT_EQ(toGmsh.status, 0) << toGmsh.errors;
    EXPECT_THAT(toGmsh.output, testing::HasSubstr("matched by name"));
    const CommandResult toDeck =
        runner.run({"transfer", "hot.msh", "stress_mesh.inp", "-o", "temperatures.inp", "--field", "temperature"});
    ASSERT_EQ(toDeck.status, 0) << toDeck.errors;

    const auto mesh = readBack(runner.file("stress_mesh.inp"));
    std::istringstream lines(contentOf(runner.file("temperatures.inp")));
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "** temperature");
    std::getline(lines, line);
    EXPECT_EQ(line, "*TEMPERATURE");
    vtkIdType count = 0;
    for (int node = 0; std::getline(lines, line) && std::sscanf(line.c_str(), "%d,", &node) == 1; ++count)
    {
        const double temperature = std::stod(line.substr(line.find(',') + 1));
        const Point place = pointOf(*mesh, node - 1);
        EXPECT_GE(temperature, 20 - 1e-3);
        EXPECT_LE(temperature, 200 + 1e-3);
        if (place[0] == 40 || place[2] == 40)
        {
            EXPECT_NEAR(temperature, place[0] == 40 ? 20 : 200, 1e-3); // as they are held
        }
    }
    EXPECT_EQ(count, mesh->GetNumberOfPoints());
}

} // namespace
