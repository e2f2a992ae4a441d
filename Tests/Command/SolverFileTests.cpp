// Files of Gmsh, CalculiX, Abaqus and Nastran, made by these programs where there is one: kinds of elements, materials,
// fields, steps, includes.
#include "CellIntegrals.h"
#include "CommandRunner.h"
#include "DataSetReader.h"
#include "GroupNames.h"
#include "TestGrids.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkIdList.h>
#include <vtkPointData.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

std::filesystem::path bundled(const std::string& name)
{
    return std::filesystem::path(VELTRANE_SOLVER_FILES) / name;
}

vtkSmartPointer<vtkUnstructuredGrid> readSolverFile(const std::filesystem::path& path, std::optional<int> step = {})
{
    return veltrane::readMesh(path, {.step = step}, nullptr).grid;
}

vtkSmartPointer<vtkUnstructuredGrid> readText(const std::string& name, const std::string& content)
{
    const TemporaryDirectory directory;
    writeFile(directory / name, content);
    return readSolverFile(directory / name);
}

std::vector<int> typesOf(vtkUnstructuredGrid& grid)
{
    std::vector<int> types;
    for (vtkIdType cell = 0; cell < grid.GetNumberOfCells(); ++cell)
    {
        types.push_back(grid.GetCellType(cell));
    }
    return types;
}

std::vector<int> materialsOf(vtkUnstructuredGrid& grid)
{
    std::vector<int> materials;
    vtkDataArray* array = grid.GetCellData()->GetArray("material");
    for (vtkIdType cell = 0; array != nullptr && cell < grid.GetNumberOfCells(); ++cell)
    {
        materials.push_back(static_cast<int>(array->GetComponent(cell, 0)));
    }
    return materials;
}

/// Cubes of edge 1 and what is cut from them, with plane sides.
double volumeOfType(int cellType)
{
    switch (cellType)
    {
    case VTK_TETRA:
    case VTK_QUADRATIC_TETRA: return 1.0 / 6;
    case VTK_WEDGE:
    case VTK_QUADRATIC_WEDGE:
    case VTK_BIQUADRATIC_QUADRATIC_WEDGE: return 1.0 / 2;
    case VTK_PYRAMID:
    case VTK_QUADRATIC_PYRAMID:
    case VTK_LAGRANGE_PYRAMID: return 1.0 / 3;
    default: return 1;
    }
}

/// Whether VTK's shape functions of the cell have all quadratic fields; those of its pyramids do not.
bool isQuadratic(int cellType)
{
    const std::vector<int> types{VTK_QUADRATIC_TETRA, VTK_QUADRATIC_HEXAHEDRON, VTK_QUADRATIC_WEDGE,
                                 VTK_BIQUADRATIC_QUADRATIC_WEDGE, VTK_TRIQUADRATIC_HEXAHEDRON};
    return std::ranges::find(types, cellType) != types.end();
}

void expectOrders(vtkUnstructuredGrid& grid)
{
    for (vtkIdType cell = 0; cell < grid.GetNumberOfCells(); ++cell)
    {
        const int type = grid.GetCellType(cell);
        EXPECT_NEAR(volumeOf(grid, cell), volumeOfType(type), 1e-5) << "cell type " << type;
        EXPECT_LT(middleErrorOf(grid, cell), 1e-4) << "cell type " << type;
        if (isQuadratic(type))
        {
            EXPECT_LT(quadraticErrorOf(grid, cell), 1e-4) << "cell type " << type;
        }
    }
}

struct KindsFile
{
    std::string name;
    std::vector<int> types;
};

class SolverFileKinds : public testing::TestWithParam<KindsFile>
{
};

TEST_P(SolverFileKinds, HaveTheirNodesInTheOrderOfTheirCells)
{
    const auto grid = readSolverFile(bundled(GetParam().name));
    EXPECT_EQ(typesOf(*grid), GetParam().types);
    expectOrders(*grid);
}

const std::vector<int> complete{VTK_TRIQUADRATIC_HEXAHEDRON, VTK_BIQUADRATIC_QUADRATIC_WEDGE, VTK_QUADRATIC_TETRA,
                                VTK_LAGRANGE_PYRAMID};
const std::vector<int> incomplete{VTK_QUADRATIC_HEXAHEDRON, VTK_QUADRATIC_WEDGE, VTK_QUADRATIC_TETRA,
                                  VTK_QUADRATIC_PYRAMID};
const std::vector<int> byKind{VTK_QUADRATIC_TETRA, VTK_QUADRATIC_HEXAHEDRON, VTK_QUADRATIC_WEDGE,
                              VTK_QUADRATIC_PYRAMID};
const std::vector<int> solved{VTK_QUADRATIC_HEXAHEDRON, VTK_QUADRATIC_WEDGE, VTK_QUADRATIC_TETRA};

INSTANTIATE_TEST_SUITE_P(
    AllFormats, SolverFileKinds,
    testing::Values(KindsFile{"kinds_complete.msh", complete}, KindsFile{"kinds_binary.msh", complete},
                    KindsFile{"kinds_version2.msh", byKind}, KindsFile{"kinds_version2_binary.msh", byKind},
                    KindsFile{"kinds.bdf", incomplete}, KindsFile{"kinds.inp", solved}, KindsFile{"solved.inp", solved},
                    KindsFile{"solved.frd", solved}, KindsFile{"solved_binary.frd", solved}),
    [](const auto& tested)
    {
        std::string name = tested.param.name;
        std::ranges::replace(name, '.', '_');
        return name;
    });

TEST(GmshFile, HasPhysicalGroupsAsMaterials)
{
    for (const std::string name :
         {"kinds_complete.msh", "kinds_binary.msh", "kinds_version2.msh", "kinds_version2_binary.msh"})
    {
        const auto grid = readSolverFile(bundled(name));
        for (vtkIdType cell = 0; cell < grid->GetNumberOfCells(); ++cell)
        {
            double box[6];
            grid->GetCellBounds(cell, box);
            const int material = box[0] < 5 ? 7 : 4; // the hexahedron and the wedge come first along x
            EXPECT_EQ(grid->GetCellData()->GetArray("material")->GetComponent(cell, 0), material) << name;
        }
        EXPECT_THAT(veltrane::groupNames(*grid), ElementsAre(Pair(4, "others"), Pair(7, "hexahedron and wedge")));
    }
}

/// Two tetrahedra with a triangle between them, which comes first and is of a group of its own.
const std::string twoTetrahedra = "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n"
                                  "$Nodes\n5\n10 0 0 0\n20 1 0 0\n30 0 1 0\n40 0 0 1\n50 0 0 -1\n$EndNodes\n"
                                  "$Elements\n4\n1 2 2 1 1 10 20 30\n2 4 2 5 1 10 20 30 40\n"
                                  "3 4 2 6 1 10 20 30 50\n4 4 2 8 1 10 20 30 50\n$EndElements\n";

TEST(GmshFile, VolumesComeFirstAndOnceAndNodesKeepTheirNumbers)
{
    const auto grid = readText("mesh.msh", twoTetrahedra);
    EXPECT_THAT(typesOf(*grid), ElementsAre(VTK_TETRA, VTK_TETRA, VTK_TRIANGLE));
    EXPECT_THAT(materialsOf(*grid), ElementsAre(5, 6, 5)); // the triangle is along the first tetrahedron
    EXPECT_EQ(grid->GetCellData()->GetArray("group")->GetComponent(2, 0), 1);
    EXPECT_THAT(valuesOf(*grid, "node_number"), ElementsAre(10, 20, 30, 40, 50));
}

TEST(GmshFile, HasFieldsOfItsLastStepOrAnother)
{
    const auto data = [](const std::string& place, const std::string& name, int step, const std::string& values)
    {
        return "$" + place + "Data\n1\n\"" + name + "\"\n1\n" + std::to_string(0.5 * step) + "\n3\n" +
               std::to_string(step) + "\n1\n" + values + "$End" + place + "Data\n";
    };
    const std::string fields = data("Node", "T", 1, "3\n10 1\n20 2\n50 5\n") + data("Node", "T", 2, "1\n20 7\n") +
                               data("Element", "density", 2, "2\n3 30\n2 20\n") +
                               data("ElementNode", "stress", 2, "1\n2 4 1 2 3 4\n");
    const TemporaryDirectory directory;
    writeFile(directory / "mesh.msh", twoTetrahedra + fields);
    EXPECT_THAT(veltrane::readStepTimes(directory / "mesh.msh"), ElementsAre(0.5, 1));
    const auto first = readSolverFile(directory / "mesh.msh", 0);
    EXPECT_THAT(valuesOf(*first, "T"), ElementsAre(1, 2, testing::IsNan(), testing::IsNan(), 5));
    const veltrane::MeshContents last = veltrane::readMesh(directory / "mesh.msh", {}, nullptr);
    EXPECT_EQ(valuesOf(*last.grid, "T")[1], 7);
    vtkDataArray* density = last.grid->GetCellData()->GetArray("density");
    ASSERT_NE(density, nullptr);
    EXPECT_EQ(density->GetComponent(0, 0), 20);
    EXPECT_EQ(density->GetComponent(1, 0), 30);
    EXPECT_THAT(last.leftOut, ElementsAre("the field 'stress' at the nodes of elements"));
}

TEST(CalculixResult, HasStepsFieldsAndMaterials)
{
    for (const std::string name : {"solved.frd", "solved_binary.frd"})
    {
        EXPECT_THAT(veltrane::readStepTimes(bundled(name)), ElementsAre(1, 2));
        const auto first = readSolverFile(bundled(name), 0);
        const auto last = readSolverFile(bundled(name));
        EXPECT_EQ(valuesOf(*first, "NDTEMP"), std::vector<double>(45, 100));
        EXPECT_EQ(valuesOf(*last, "NDTEMP"), std::vector<double>(45, 200));
        EXPECT_EQ(last->GetPointData()->GetArray("STRESS")->GetNumberOfComponents(), 6);
        EXPECT_THAT(materialsOf(*last), ElementsAre(1, 2, 2));
        EXPECT_THAT(veltrane::groupNames(*last), ElementsAre(Pair(1, "STEEL"), Pair(2, "ALU")));
        // Free expansion by 1e-5 and 2e-5 per degree, from the first corner of each element on.
        const std::vector<double> displacements = valuesOf(*first, "DISP");
        ASSERT_EQ(displacements.size(), 3 * 45U);
        for (vtkIdType point = 0; point < 45; ++point)
        {
            const Point place = pointOf(*first, point);
            const double origin = place[0] < 2 ? 0 : place[0] < 8 ? 5 : 10;
            const double strain = place[0] < 2 ? 1e-3 : 2e-3;
            EXPECT_NEAR(displacements[static_cast<std::size_t>(3 * point)], strain * (place[0] - origin), 1e-8);
            EXPECT_NEAR(displacements[static_cast<std::size_t>(3 * point + 2)], strain * place[2], 1e-8);
        }
    }
}

TEST(AbaqusDeck, HasTheMaterialsOfItsSectionsAsTheSolverNumbersThem)
{
    const auto grid = readSolverFile(bundled("solved.inp"));
    EXPECT_THAT(materialsOf(*grid), ElementsAre(1, 2, 2));
    EXPECT_THAT(veltrane::groupNames(*grid), ElementsAre(Pair(1, "STEEL"), Pair(2, "ALU")));
}

TEST(AbaqusDeck, WithoutSectionsHasItsElementSetsAsMaterials)
{
    const auto grid = readSolverFile(bundled("kinds.inp"));
    EXPECT_THAT(materialsOf(*grid), ElementsAre(1, 1, 2));
    EXPECT_THAT(veltrane::groupNames(*grid), ElementsAre(Pair(1, "HEXAHEDRON_AND_WEDGE"), Pair(2, "OTHERS")));
}

const std::string fourTetrahedra = "*heading\n a title, with *commas\n** a comment\n"
                                   "*Node, nset=all\n 1,0,0,0\n2, 1.D0,0.,\n3,,1\n4, 0, 0, +1e0\n5,0,0,-1.\n"
                                   "*ELEMENT ,type=c3d4\n1, 1,2,3,4\n2,1,2,\n3,5\n3,1,2,4,5\n** between\n4,1,3,4,5\n";

TEST(AbaqusDeck, IsReadWhateverItsSpelling)
{
    const auto grid = readText("deck.inp", fourTetrahedra);
    EXPECT_EQ(grid->GetNumberOfCells(), 4);
    EXPECT_EQ(pointOf(*grid, 1), (Point{1, 0, 0}));
    EXPECT_EQ(pointOf(*grid, 2), (Point{0, 1, 0}));
    EXPECT_EQ(pointOf(*grid, 3), (Point{0, 0, 1}));
    EXPECT_EQ(materialsOf(*grid).size(), 0U);
}

TEST(AbaqusDeck, SetsMayBeRangesListsAndOtherSets)
{
    const auto grid = readText("deck.inp", fourTetrahedra + "*ELSET, ELSET=odd, GENERATE\n1, 2000000000, 2\n"
                                                            "*ELSET, ELSET=rest\n4,\n*ELSET,ELSET=even\n2, rest\n"
                                                            "*SOLID SECTION, ELSET=Even, MATERIAL=first\n"
                                                            "*SOLID SECTION,\nELSET=ODD, MATERIAL = Second\n");
    EXPECT_THAT(materialsOf(*grid), ElementsAre(2, 1, 2, 1));
    EXPECT_THAT(veltrane::groupNames(*grid), ElementsAre(Pair(1, "FIRST"), Pair(2, "SECOND")));
}

TEST(AbaqusDeck, FollowsIncludesFromWhereTheyAre)
{
    const TemporaryDirectory directory;
    std::filesystem::create_directory(directory / "parts");
    writeFile(directory / "deck.inp", "*INCLUDE, INPUT=parts/mesh.inc\n*ELEMENT, TYPE=C3D4\n1,1,2,3,4\n");
    writeFile(directory / "parts" / "mesh.inc", "*NODE\n1,0,0,0\n2,1,0,0\n3,0,1,0\n*INCLUDE,INPUT=Last.inc\n");
    writeFile(directory / "parts" / "Last.inc", "*NODE\n4,0,0,1\n");
    const auto grid = readSolverFile(directory / "deck.inp");
    EXPECT_EQ(grid->GetNumberOfCells(), 1);
    expectOrders(*grid);
}

TEST(AbaqusDeck, PartsStandWhereTheirInstancesAre)
{
    const auto grid = readText("deck.inp", "*PART, NAME=Block\n*NODE\n1,0,0,0\n2,1,0,0\n3,0,1,0\n4,0,0,1\n"
                                           "*ELEMENT, TYPE=C3D4\n1,1,2,3,4\n*END PART\n*ASSEMBLY, NAME=A\n"
                                           "*INSTANCE, NAME=Left, PART=BLOCK\n*END INSTANCE\n"
                                           "*INSTANCE, NAME=Right, PART=Block\n10,0,0\n10,0,0,10,0,1,90\n"
                                           "*END INSTANCE\n*END ASSEMBLY\n");
    ASSERT_EQ(grid->GetNumberOfPoints(), 8);
    EXPECT_EQ(pointOf(*grid, 1), (Point{1, 0, 0}));
    const std::vector<Point> turned{{10, 0, 0}, {10, 1, 0}, {9, 0, 0}, {10, 0, 1}};
    for (std::size_t i = 0; i < turned.size(); ++i)
    {
        const Point place = pointOf(*grid, static_cast<vtkIdType>(4 + i));
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            EXPECT_NEAR(place[axis], turned[i][axis], 1e-15);
        }
    }
}

TEST(AbaqusDeck, HasPyramidsSurfacesAndBeams)
{
    const auto grid = readText(
        "deck.inp", "*NODE\n1,0,0,0\n2,1,0,0\n3,1,1,0\n4,0,1,0\n5,0.5,0.5,1\n*ELEMENT,TYPE=S4R\n9,1,2,3,4\n"
                    "*ELEMENT,TYPE=B31\n8,1,5\n*ELEMENT,TYPE=SPRINGA\n7,1,5\n*ELEMENT,TYPE=C3D5\n1,1,2,3,4,5\n");
    EXPECT_THAT(typesOf(*grid), ElementsAre(VTK_PYRAMID, VTK_QUAD, VTK_LINE));
    EXPECT_NEAR(volumeOf(*grid, 0), 1.0 / 3, 1e-12);
}

TEST(NastranFile, HasPropertiesAsMaterials)
{
    EXPECT_THAT(materialsOf(*readSolverFile(bundled("kinds.bdf"))), ElementsAre(1, 1, 2, 2));
}

TEST(NastranFile, IsReadInFieldsOfAllWidths)
{
    const auto grid = readText("mesh.nas", "SOL 101\nCEND\nBEGIN BULK\n$ a comment\n"
                                           "GRID    1               0.      .0      0.0     \n"
                                           "grid,2,,1.0,,-0.+0 $ behind\n"
                                           "GRID*                  3                              0.              1.\n"
                                           "*                     0.\n"
                                           "GRID\t4\t\t0.0\t0.0\t1.0\n"
                                           "GRID,5,,10.-1,1.D0,+1.0\n"
                                           "CTETRA  1       6       1       2       3       4\n"
                                           "CTETRA,2,7,2,3,4,5\nCQUAD4,3,8,1,2,3,4\nENDDATA\nrubbish\n");
    ASSERT_EQ(grid->GetNumberOfPoints(), 5);
    EXPECT_EQ(pointOf(*grid, 1), (Point{1, 0, 0}));
    EXPECT_EQ(pointOf(*grid, 2), (Point{0, 1, 0}));
    EXPECT_EQ(pointOf(*grid, 3), (Point{0, 0, 1}));
    EXPECT_EQ(pointOf(*grid, 4), (Point{1, 1, 1}));
    EXPECT_THAT(materialsOf(*grid), ElementsAre(6, 7));
}

TEST(NastranFile, NodesMayBeInCoordinateSystems)
{
    const auto grid = readText("mesh.bdf", "GRID,1,0,10.,0.,0.\nGRID,2,0,10.,0.,1.\nGRID,3,0,10.,1.,0.\n"
                                           "CORD1R,5,1,2,3\n" // there x is y, and y is -x
                                           "CORD2C,6,5,0.,0.,0.,0.,0.,1.\n,1.,0.,0.\n"
                                           "CORD2S,7,,0.,0.,0.,0.,0.,1.,+\n+,1.,0.,0.\n"
                                           "GRID,4,5,2.,3.,4.\nGRID,5,6,2.,90.,1.\nGRID,6,7,2.,90.,90.\n"
                                           "GRDSET,,5\nGRID,7,,1.,0.,0.\nGRID,8,0,1.,0.,0.\n");
    const std::vector<Point> places{{10, 0, 0}, {10, 0, 1}, {10, 1, 0}, {7, 2, 4},
                                    {8, 0, 1},  {0, 2, 0},  {10, 1, 0}, {1, 0, 0}};
    ASSERT_EQ(grid->GetNumberOfPoints(), 8);
    for (std::size_t i = 0; i < places.size(); ++i)
    {
        const Point place = pointOf(*grid, static_cast<vtkIdType>(i));
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            EXPECT_NEAR(place[axis], places[i][axis], 1e-14) << i;
        }
    }
}

TEST(NastranFile, FollowsIncludes)
{
    const TemporaryDirectory directory;
    writeFile(directory / "model.bdf", "BEGIN BULK\nINCLUDE 'nodes\n.bdf'\nCTETRA,1,1,1,2,3,4\nENDDATA\n");
    writeFile(directory / "nodes.bdf", "GRID,1,,0.,0.,0.\nGRID,2,,1.,0.,0.\nGRID,3,,0.,1.,0.\nGRID,4,,0.,0.,1.\n");
    expectOrders(*readSolverFile(directory / "model.bdf"));
}

TEST(SolverFile, NodesAreNamedByTheirOwnNumbers)
{
    const CommandRunner runner;
    writeFile(runner.file("a.msh"), twoTetrahedra);
    writeFile(runner.file("b.msh"), std::string(twoTetrahedra).replace(twoTetrahedra.find("40 0 0 1"), 8, "40 0 0 2"));
    const CommandResult result = runner.run({"match", "nodes", "a.msh", "b.msh", "-o", "out.csv"});
    EXPECT_THAT(result.errors, HasSubstr("node 40 at (0, 0, 2)"));
}

TEST(SolverFile, IsASourceAndATarget)
{
    const CommandRunner runner;
    for (const std::string name : {"solved.frd", "solved.inp", "kinds_complete.msh", "kinds.bdf"})
    {
        std::filesystem::copy(bundled(name), runner.file(name));
        const CommandResult info = runner.run({"info", name});
        EXPECT_EQ(info.status, 0) << info.errors;
    }
    const auto source = makeGrid(VTK_TETRA, 2, -1, 12);
    addDoubles(*source, "T", linear);
    writeGrid(*source, runner.file("source.vtu"));
    for (const std::string target : {"solved.frd", "solved.inp", "kinds_complete.msh", "kinds.bdf"})
    {
        const CommandResult result =
            runner.run({"transfer", "source.vtu", target, "-o", "out.vtu", "--field", "T", "--quiet"});
        ASSERT_EQ(result.status, 0) << target << result.errors;
        const auto grid = readGrid(runner.file("out.vtu"));
        for (vtkIdType point = 0; point < grid->GetNumberOfPoints(); ++point)
        {
            EXPECT_NEAR(grid->GetPointData()->GetArray("T")->GetComponent(point, 0), linear(pointOf(*grid, point)),
                        1e-5);
        }
    }
}

} // namespace
