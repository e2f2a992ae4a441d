// veltrane match on files, where it succeeds.
#include "CommandRunner.h"
#include "TestGrids.h"

#include <vtkCell.h>
#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkIntArray.h>
#include <vtkPointData.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const std::string assembly = VELTRANE_EXAMPLE_MESHES "/assembly.vtu";
const std::string assemblyPart = VELTRANE_EXAMPLE_MESHES "/assembly_part.vtu";

using Row = std::vector<int>;

/// The rows below the header.
std::vector<Row> readCsv(const std::filesystem::path& path, const std::string& header)
{
    std::ifstream stream(path);
    std::string line;
    std::getline(stream, line);
    EXPECT_EQ(line, header);
    std::vector<Row> rows;
    while (std::getline(stream, line))
    {
        std::istringstream numbers(line);
        std::string number;
        rows.emplace_back();
        while (std::getline(numbers, number, ','))
        {
            rows.back().push_back(std::stoi(number));
        }
    }
    return rows;
}

const std::string nodeHeader = "target_node,source_node";
const std::string gaussHeader = "target_element,target_gauss_point,source_element,source_gauss_point";

/// An array of whole numbers, row by row.
std::vector<Row> rowsOf(vtkFieldData& data, const std::string& name)
{
    std::vector<Row> rows;
    auto* array = vtkArrayDownCast<vtkIntArray>(data.GetAbstractArray(name.c_str()));
    if (array == nullptr)
    {
        ADD_FAILURE() << "there is no array of whole numbers " << name;
        return rows;
    }
    for (vtkIdType i = 0; i < array->GetNumberOfTuples(); ++i)
    {
        Row row(static_cast<std::size_t>(array->GetNumberOfComponents()));
        array->GetTypedTuple(i, row.data());
        rows.push_back(row);
    }
    return rows;
}

double materialOf(vtkUnstructuredGrid& grid, vtkIdType cell)
{
    return grid.GetCellData()->GetArray("material")->GetComponent(cell, 0);
}

/// Where a Gauss point of a hexahedron or wedge is, counted from 0: 2 points along each axis, or the middles of the
/// triangle's edges in 2 layers.
Point gaussPointOf(vtkUnstructuredGrid& grid, vtkIdType cell, int gaussPoint)
{
    const double low = 0.5 - 0.5 / std::sqrt(3.0);
    const double high = 1 - low;
    const std::array<std::array<double, 2>, 4> inSquare{{{low, low}, {high, low}, {high, high}, {low, high}}};
    const std::array<std::array<double, 2>, 3> inTriangle{{{0.5, 0}, {0.5, 0.5}, {0, 0.5}}};
    const bool isWedge = grid.GetCellType(cell) == VTK_WEDGE;
    const int layerSize = isWedge ? 3 : 4;
    const auto place = static_cast<std::size_t>(gaussPoint % layerSize);
    const std::array<double, 2>& inPlane = isWedge ? inTriangle[place] : inSquare[place];
    const std::array<double, 3> parameters{inPlane[0], inPlane[1], gaussPoint < layerSize ? low : high};
    Point position;
    std::array<double, 8> weights;
    int subId = 0;
    grid.GetCell(cell)->EvaluateLocation(subId, parameters.data(), position.data(), weights.data());
    return position;
}

class MatchCommand : public testing::Test
{
protected:
    void write(const std::string& name, vtkUnstructuredGrid& grid) const { writeGrid(grid, runner.file(name)); }

    CommandResult match(const std::string& sort, const std::string& output,
                        const std::vector<std::string>& options = {}) const
    {
        std::vector<std::string> arguments{"match", sort, "source.vtu", "target.vtu", "-o", output};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runner.run(arguments);
    }

    std::vector<Row> matchedNodes(const std::vector<std::string>& options = {}) const
    {
        EXPECT_EQ(match("nodes", "out.csv", options).status, 0);
        return readCsv(runner.file("out.csv"), nodeHeader);
    }

    std::vector<Row> matchedGaussPoints(const std::vector<std::string>& options = {}) const
    {
        EXPECT_EQ(match("gauss", "out.csv", options).status, 0);
        return readCsv(runner.file("out.csv"), gaussHeader);
    }

    CommandRunner runner;
};

TEST_F(MatchCommand, FindsTheNodesOfAnExtractedPart)
{
    const CommandResult result = runner.run({"match", "nodes", assembly, assemblyPart, "-o", "out.csv"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output, "matched all 2435 nodes of '" + assemblyPart + "' with those of '" + assembly +
                                 "', materials by number\n");
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(runner.directory().names(), UnorderedElementsAre("out.csv"));
    EXPECT_THAT(runner.temporaryNames(), IsEmpty());

    const auto source = readGrid(assembly);
    const auto target = readGrid(assemblyPart);
    source->BuildLinks();
    const std::vector<Row> rows = readCsv(runner.file("out.csv"), nodeHeader);
    ASSERT_EQ(rows.size(), 2435U);
    std::set<int> sourceNodes;
    for (std::size_t i = 0; i < rows.size(); ++i)
    {
        ASSERT_EQ(rows[i].size(), 2U);
        EXPECT_EQ(rows[i][0], static_cast<int>(i) + 1);
        EXPECT_EQ(pointOf(*target, rows[i][0] - 1), pointOf(*source, rows[i][1] - 1)) << "row " << i;
        // Another part has a node at some of these places. The parts share none.
        vtkIdType cellCount = 0;
        vtkIdType* cells = nullptr;
        source->GetPointCells(rows[i][1] - 1, cellCount, cells);
        ASSERT_GT(cellCount, 0);
        EXPECT_EQ(materialOf(*source, cells[0]), 2) << "row " << i;
        sourceNodes.insert(rows[i][1]);
    }
    EXPECT_EQ(sourceNodes.size(), rows.size());
}

TEST_F(MatchCommand, FindsTheGaussPointsOfAnExtractedPart)
{
    const CommandResult result = runner.run({"match", "gauss", assembly, assemblyPart, "-o", "out.csv"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output, "matched all 16512 Gauss points of '" + assemblyPart + "' with those of '" + assembly +
                                 "', materials by number\n");
    const auto source = readGrid(assembly);
    const auto target = readGrid(assemblyPart);
    const std::vector<Row> rows = readCsv(runner.file("out.csv"), gaussHeader);
    ASSERT_EQ(rows.size(), 768U * 8 + 1728U * 6);
    std::size_t i = 0;
    std::set<std::pair<int, int>> sourcePoints;
    for (vtkIdType cell = 0; cell < target->GetNumberOfCells(); ++cell)
    {
        const int count = target->GetCellType(cell) == VTK_WEDGE ? 6 : 8;
        for (int gaussPoint = 0; gaussPoint < count; ++gaussPoint, ++i)
        {
            ASSERT_EQ(rows[i].size(), 4U);
            EXPECT_EQ(rows[i][0], cell + 1);
            EXPECT_EQ(rows[i][1], gaussPoint + 1);
            EXPECT_EQ(materialOf(*source, rows[i][2] - 1), 2);
            const Point there = gaussPointOf(*source, rows[i][2] - 1, rows[i][3] - 1);
            const Point here = gaussPointOf(*target, cell, gaussPoint);
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                EXPECT_NEAR(there[axis], here[axis], 1e-4) << "element " << cell + 1 << ", point " << gaussPoint + 1;
            }
            sourcePoints.insert({rows[i][2], rows[i][3]});
        }
    }
    EXPECT_EQ(sourcePoints.size(), rows.size());
}

TEST_F(MatchCommand, WritesTheSameNumbersIntoTheTargetsMeshFile)
{
    for (const std::string sort : {"nodes", "gauss"})
    {
        for (const char* ending : {".csv", ".vtu"})
        {
            ASSERT_EQ(runner.run({"match", sort, assembly, assemblyPart, "-o", sort + ending}).status, 0);
        }
    }
    const auto withNodes = readGrid(runner.file("nodes.vtu"));
    const std::vector<Row> sourceNodes = rowsOf(*withNodes->GetPointData(), "source_node");
    const std::vector<Row> nodeRows = readCsv(runner.file("nodes.csv"), nodeHeader);
    ASSERT_EQ(sourceNodes.size(), nodeRows.size());
    for (const Row& row : nodeRows)
    {
        EXPECT_THAT(sourceNodes[static_cast<std::size_t>(row[0]) - 1], ElementsAre(row[1]));
    }
    EXPECT_NE(withNodes->GetCellData()->GetArray("material"), nullptr);

    const auto withGaussPoints = readGrid(runner.file("gauss.vtu"));
    const std::vector<Row> sourceElements = rowsOf(*withGaussPoints->GetCellData(), "source_element");
    std::vector<Row> sourceGaussPoints = rowsOf(*withGaussPoints->GetCellData(), "source_gauss_point");
    ASSERT_EQ(sourceElements.size(), 2496U);
    ASSERT_EQ(sourceGaussPoints.size(), 2496U);
    for (const Row& row : readCsv(runner.file("gauss.csv"), gaussHeader))
    {
        const auto element = static_cast<std::size_t>(row[0]) - 1;
        EXPECT_THAT(sourceElements[element], ElementsAre(row[2]));
        int& sourceGaussPoint = sourceGaussPoints[element].at(static_cast<std::size_t>(row[1]) - 1);
        EXPECT_EQ(sourceGaussPoint, row[3]);
        sourceGaussPoint = 0;
    }
    EXPECT_THAT(sourceGaussPoints, testing::Each(ElementsAre(0, 0, 0, 0, 0, 0, 0, 0))); // wedges have no more than 6
}

class MatchKind : public MatchCommand, public testing::WithParamInterface<std::pair<int, int>>
{
};

TEST_P(MatchKind, MatchesAMeshWithItself)
{
    const auto [cellType, gaussPointCount] = GetParam();
    const auto grid = makeGrid(cellType, 2);
    distort(*grid, 0.05);
    write("source.vtu", *grid);
    write("target.vtu", *grid);
    const std::vector<Row> nodes = matchedNodes();
    ASSERT_EQ(nodes.size(), static_cast<std::size_t>(grid->GetNumberOfPoints()));
    for (const Row& row : nodes)
    {
        EXPECT_EQ(row[0], row[1]);
    }
    const std::vector<Row> gaussPoints = matchedGaussPoints();
    ASSERT_EQ(gaussPoints.size(), static_cast<std::size_t>(grid->GetNumberOfCells() * gaussPointCount));
    for (const Row& row : gaussPoints)
    {
        EXPECT_EQ(row[0], row[2]);
        EXPECT_EQ(row[1], row[3]);
    }
}

INSTANTIATE_TEST_SUITE_P(AllKinds, MatchKind,
                         testing::Values(std::pair{VTK_TETRA, 1}, std::pair{VTK_HEXAHEDRON, 8}, std::pair{VTK_VOXEL, 8},
                                         std::pair{VTK_WEDGE, 6}, std::pair{VTK_PYRAMID, 8},
                                         std::pair{VTK_QUADRATIC_TETRA, 5}, std::pair{VTK_QUADRATIC_HEXAHEDRON, 27},
                                         std::pair{VTK_BIQUADRATIC_QUADRATIC_WEDGE, 9},
                                         std::pair{VTK_QUADRATIC_PYRAMID, 8}));

const std::vector<Point> cubeCorners{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                     {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};

/// The same cube, its nodes counted from the next corner on.
vtkSmartPointer<vtkUnstructuredGrid> turnedCube()
{
    GridBuilder builder;
    std::vector<Point> points;
    for (const std::size_t corner : {1U, 2U, 3U, 0U, 5U, 6U, 7U, 4U})
    {
        points.push_back(cubeCorners[corner]);
    }
    builder.addCell(VTK_HEXAHEDRON, points);
    return builder.grid();
}

TEST_F(MatchCommand, FindsNodesAndGaussPointsInAnotherOrder)
{
    GridBuilder source;
    source.addCell(VTK_HEXAHEDRON, cubeCorners);
    write("source.vtu", *source.grid());
    write("target.vtu", *turnedCube());
    EXPECT_THAT(matchedNodes(),
                ElementsAre(Row{1, 2}, Row{2, 3}, Row{3, 4}, Row{4, 1}, Row{5, 6}, Row{6, 7}, Row{7, 8}, Row{8, 5}));
    EXPECT_THAT(matchedGaussPoints(), ElementsAre(Row{1, 1, 1, 2}, Row{1, 2, 1, 3}, Row{1, 3, 1, 4}, Row{1, 4, 1, 1},
                                                  Row{1, 5, 1, 6}, Row{1, 6, 1, 7}, Row{1, 7, 1, 8}, Row{1, 8, 1, 5}));
}

TEST_F(MatchCommand, NumbersElementsAsTheCellsOfTheFiles)
{
    GridBuilder source;
    source.addCell(VTK_TRIANGLE, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}});
    source.addCell(VTK_TETRA, {{0, 0, 0}, {0, -1, 0}, {1, 0, 0}, {0, 0, 1}});
    source.addCell(VTK_HEXAHEDRON, cubeCorners);
    write("source.vtu", *source.grid());
    GridBuilder target;
    target.addCell(VTK_HEXAHEDRON, cubeCorners);
    target.addCell(VTK_QUAD, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
    target.addCell(VTK_TETRA, {{0, 0, 0}, {0, -1, 0}, {1, 0, 0}, {0, 0, 1}});
    write("target.vtu", *target.grid());

    ASSERT_EQ(match("gauss", "out.vtu").status, 0);
    const auto grid = readGrid(runner.file("out.vtu"));
    EXPECT_THAT(rowsOf(*grid->GetCellData(), "source_element"), ElementsAre(Row{3}, Row{0}, Row{2}));
    EXPECT_THAT(rowsOf(*grid->GetCellData(), "source_gauss_point"),
                ElementsAre(Row{1, 2, 3, 4, 5, 6, 7, 8}, Row{0, 0, 0, 0, 0, 0, 0, 0}, Row{1, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_THAT(matchedGaussPoints().back(), ElementsAre(3, 1, 2, 1));
}

TEST_F(MatchCommand, FindsTheNodesOfASurfaceMesh)
{
    const auto source = makeGrid(VTK_HEXAHEDRON, 1);
    write("source.vtu", *source);
    const auto target = makeGrid(VTK_TRIANGLE, 1);
    write("target.vtu", *target);
    const std::vector<Row> rows = matchedNodes();
    ASSERT_EQ(rows.size(), 4U);
    for (const Row& row : rows)
    {
        EXPECT_EQ(pointOf(*target, row[0] - 1), pointOf(*source, row[1] - 1));
    }
}

/// Two cubes side by side with nodes of their own where they meet, of materials 1 and 2; or the second one first.
vtkSmartPointer<vtkUnstructuredGrid> twoCubes(bool isSecondFirst = false)
{
    GridBuilder builder;
    builder.addCube(VTK_HEXAHEDRON, {isSecondFirst ? 1.0 : 0.0, 0, 0}, 1);
    builder.startBlock();
    builder.addCube(VTK_HEXAHEDRON, {isSecondFirst ? 0.0 : 1.0, 0, 0}, 1);
    addCellNumbers(*builder.grid(), "material", [=](vtkIdType cell) { return (cell == 0) == isSecondFirst ? 2 : 1; });
    return builder.grid();
}

class MatchTwoMaterials : public MatchCommand
{
protected:
    MatchTwoMaterials()
    {
        write("source.vtu", *twoCubes());
        write("target.vtu", *twoCubes(true));
    }
};

TEST_F(MatchTwoMaterials, KeepsCoincidentNodesApartByTheirMaterials)
{
    std::vector<Row> expected;
    for (int node = 1; node <= 16; ++node)
    {
        expected.push_back({node, node <= 8 ? node + 8 : node - 8});
    }
    EXPECT_EQ(matchedNodes(), expected);
}

TEST_F(MatchTwoMaterials, MatchesOnlyTheMaterialsAskedFor)
{
    const CommandResult result = match("nodes", "out.vtu", {"--only", "1"});
    EXPECT_EQ(result.output, "matched 8 of 16 nodes of 'target.vtu' with those of 'source.vtu', materials by number\n");
    std::vector<Row> expected(8, Row{0});
    for (int node = 1; node <= 8; ++node)
    {
        expected.push_back({node});
    }
    EXPECT_EQ(rowsOf(*readGrid(runner.file("out.vtu"))->GetPointData(), "source_node"), expected);
    EXPECT_EQ(matchedNodes({"--only", "1"}).size(), 8U);
    EXPECT_EQ(matchedNodes({"--only", "1,2"}).size(), 16U);
    EXPECT_EQ(matchedNodes({"--only", "1", "--only", "2"}).size(), 16U);

    EXPECT_EQ(match("gauss", "out.vtu", {"--only=2"}).output,
              "matched 8 of 16 Gauss points of 'target.vtu' with those of 'source.vtu', materials by number\n");
    EXPECT_THAT(rowsOf(*readGrid(runner.file("out.vtu"))->GetCellData(), "source_element"),
                ElementsAre(Row{2}, Row{0}));
    EXPECT_THAT(matchedGaussPoints({"--only=2"}), testing::Each(ElementsAre(1, testing::_, 2, testing::_)));
}

TEST_F(MatchTwoMaterials, DoesNotLookAtMaterialsNotAskedFor)
{
    const auto target = twoCubes(true);
    target->GetPoints()->SetPoint(0, 1.2, 0.1, 0.1); // of the cube of material 2
    write("target.vtu", *target);
    EXPECT_EQ(match("nodes", "out.csv").status, 1);
    EXPECT_EQ(matchedNodes({"--only", "1"}).size(), 8U);
    EXPECT_EQ(match("gauss", "out.csv").status, 1);
    EXPECT_EQ(matchedGaussPoints({"--only", "1"}).size(), 8U);

    // Nor need the source have them.
    addCellNumbers(*target, "material", [](vtkIdType cell) { return cell == 0 ? 7 : 1; });
    write("target.vtu", *target);
    EXPECT_EQ(matchedNodes({"--only", "1"}).size(), 8U);
}

TEST_F(MatchTwoMaterials, DoesNotRegardMaterialsOfOneSideOnly)
{
    const auto target = twoCubes();
    target->GetCellData()->RemoveArray("material");
    write("target.vtu", *target);
    EXPECT_EQ(match("nodes", "out.csv").output,
              "matched all 16 nodes of 'target.vtu' with those of 'source.vtu', materials not regarded: only the "
              "source has them\n");
    // The nodes that both cubes have are those of the first one.
    const auto source = twoCubes();
    for (const Row& row : readCsv(runner.file("out.csv"), nodeHeader))
    {
        const bool isShared = pointOf(*source, row[0] - 1)[0] == 1;
        EXPECT_EQ(pointOf(*target, row[0] - 1), pointOf(*source, row[1] - 1));
        EXPECT_TRUE(isShared ? row[1] <= 8 : row[1] == row[0]) << row[0];
    }
}

TEST_F(MatchTwoMaterials, IsQuietOnRequest)
{
    const CommandResult result = match("nodes", "out.csv", {"--quiet"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "");
}

TEST_F(MatchTwoMaterials, ReplacesEarlierNumbersOnRequest)
{
    ASSERT_EQ(match("nodes", "out.vtu", {"--only", "1"}).status, 0);
    std::filesystem::rename(runner.file("out.vtu"), runner.file("target.vtu"));
    ASSERT_EQ(match("nodes", "out.vtu", {"--replace"}).status, 0);
    EXPECT_THAT(rowsOf(*readGrid(runner.file("out.vtu"))->GetPointData(), "source_node"),
                testing::Not(testing::Contains(Row{0})));
}

/// The mean extent of the source elements' boxes, each enlarged by a hundredth on both sides, is 0.51.
TEST_F(MatchCommand, PartnersMayBeApartByAThousandthOfTheMeanSourceElement)
{
    write("source.vtu", *makeGrid(VTK_HEXAHEDRON, 2));
    const auto moveAndMatch = [&](double way)
    {
        const auto target = makeGrid(VTK_HEXAHEDRON, 2);
        for (vtkIdType i = 0; i < target->GetNumberOfPoints(); ++i)
        {
            const Point point = pointOf(*target, i);
            target->GetPoints()->SetPoint(i, point[0] + way, point[1], point[2]);
        }
        write("target.vtu", *target);
        return std::pair{match("nodes", "out.csv").status, match("gauss", "out.csv").status};
    };
    EXPECT_EQ(moveAndMatch(0.000505), std::pair(0, 0));
    EXPECT_EQ(moveAndMatch(0.000515), std::pair(1, 1));
}

TEST_F(MatchCommand, CtrlCCancelsAndLeavesNothingBehind)
{
    write("source.vtu", *makeGrid(VTK_TETRA, 24));
    write("target.vtu", *makeGrid(VTK_TETRA, 24));
    for (const std::string sort : {"nodes", "gauss"})
    {
        expectCancellation(runner, {"match", sort, "source.vtu", "target.vtu", "-o", "out.csv"});
    }
}

TEST_F(MatchCommand, HelpsWithExamplesAndTheExitStatuses)
{
    for (const std::string sort : {"nodes", "gauss"})
    {
        const std::string example = "\n  veltrane match " + sort + " assembly.vtu part.vtu -o " + sort + ".";
        EXPECT_THAT(runner.run({"--help"}).output, testing::HasSubstr(example));
        EXPECT_THAT(runner.run({"match", "--help"}).output, testing::HasSubstr(example));
        const CommandResult result = runner.run({"match", sort, "--help"});
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(result.output, testing::HasSubstr("Example:" + example));
        EXPECT_THAT(result.output, testing::HasSubstr("  130  cancelled\n"));
    }
}

TEST(MatchCommandMaterials, OfBundledFilesAsTheOptionsWantThem)
{
    const CommandRunner runner;
    const std::string meshes = VELTRANE_EXAMPLE_MESHES;
    const auto match = [&](std::vector<std::string> options)
    {
        options.insert(options.begin(),
                       {"match", "nodes", meshes + "/assembly.vtu", meshes + "/assembly_part.vtu", "-o", "nodes.vtk"});
        return runner.run(options);
    };
    const CommandResult named = match({"--material-array", "material", "--only", "2"});
    EXPECT_EQ(named.status, 0) << named.errors;
    EXPECT_THAT(named.output, testing::StartsWith("matched all 2435 nodes of "));
    EXPECT_EQ(match({"--ignore-materials"}).status, 0);
    EXPECT_EQ(match({"--state", "2=1", "--state", "1=1"}).status, 0);
    const CommandResult apart = match({"--state", "9=1"});
    EXPECT_EQ(apart.status, 65);
    EXPECT_EQ(apart.errors.substr(apart.errors.find("veltrane: ")),
              "veltrane: --state: there is no material 9; the source has 1, 2, 3, 4, the target 2\n");
}

} // namespace
