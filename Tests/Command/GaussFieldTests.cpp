// Gauss-point fields in files, by VTK's convention, and what VTK's own filters make of them.
#include "CommandRunner.h"
#include "GaussPoints.h"
#include "MeshFile.h"
#include "TestGrids.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDataArray.h>
#include <vtkFieldData.h>
#include <vtkFloatArray.h>
#include <vtkIdTypeArray.h>
#include <vtkInformation.h>
#include <vtkInformationQuadratureSchemeDefinitionVectorKey.h>
#include <vtkInformationStringKey.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>
#include <vtkQuadraturePointsGenerator.h>
#include <vtkQuadratureSchemeDefinition.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <utility>
#include <vector>

#include <algorithm>
#include <numeric>

namespace
{

using testing::HasSubstr;
using veltrane::ElementKind;

TEST(GaussPoints, WeightsSumUpToTheVolumeOfTheReferenceElement)
{
    const std::map<ElementKind, double> volumes{{ElementKind::hexahedron, 8},
                                                {ElementKind::tetrahedron, 1.0 / 6},
                                                {ElementKind::wedge, 1},
                                                {ElementKind::quadraticTetrahedron, 1.0 / 6},
                                                {ElementKind::pyramid, 4.0 / 3},
                                                {ElementKind::quadraticHexahedron, 8},
                                                {ElementKind::triquadraticHexahedron, 8},
                                                {ElementKind::quadraticWedge, 1},
                                                {ElementKind::biquadraticWedge, 1},
                                                {ElementKind::quadraticPyramid, 4.0 / 3}};
    for (const auto& [kind, volume] : volumes)
    {
        const veltrane::GaussRule rule = veltrane::gaussRuleOf(kind);
        const veltrane::ElementKindInfo& info = *veltrane::findElementKind(kind);
        EXPECT_EQ(rule.weights.size(), static_cast<std::size_t>(info.gaussPointCount)) << info.name;
        EXPECT_NEAR(std::accumulate(rule.weights.begin(), rule.weights.end(), 0.0), volume, 1e-12) << info.name;
        for (const std::vector<double>& values : rule.shapeValues)
        {
            EXPECT_EQ(values.size(), static_cast<std::size_t>(info.nodeCount)) << info.name;
            EXPECT_NEAR(std::accumulate(values.begin(), values.end(), 0.0), 1, 1e-12) << info.name;
        }
    }
    EXPECT_TRUE(veltrane::gaussRuleOf(ElementKind::triangle).weights.empty());
}

/// The places of the Gauss points with the values there, as VTK's filter finds them.
vtkSmartPointer<vtkPolyData> vtkGaussPoints(vtkUnstructuredGrid& grid)
{
    vtkNew<vtkQuadraturePointsGenerator> generator;
    generator->SetInputData(&grid);
    generator->SetInputArrayToProcess(0, 0, 0, vtkDataObject::FIELD_ASSOCIATION_CELLS, "QuadratureOffset");
    generator->Update();
    return vtkPolyData::SafeDownCast(generator->GetOutput());
}

class GaussFields : public testing::Test
{
protected:
    GaussFields()
    {
        const auto source = makeGrid(VTK_TETRA, 2);
        addDoubles(*source, "T", linear);
        addFloats(*source, "u", {linear, [](const Point& p) { return p[1]; }});
        writeGrid(*source, runner.file("source.vtu"));
    }

    CommandResult transfer(const std::string& from, const std::string& to, const std::string& output,
                           std::vector<std::string> options = {}) const
    {
        options.insert(options.begin(), {"transfer", from, to, "-o", output});
        return runner.run(options);
    }

    CommandRunner runner;
};

class GaussFieldsOfKind : public GaussFields, public testing::WithParamInterface<int>
{
};

TEST_P(GaussFieldsOfKind, AreTakenByTheFiltersOfVtk)
{
    const auto target = makeGrid(GetParam(), 2, 0.1, 0.8);
    target->InsertNextCell(VTK_LINE, 2, std::array<vtkIdType, 2>{0, 1}.data());
    writeGrid(*target, runner.file("target.vtu"));
    const CommandResult result = transfer("source.vtu", "target.vtu", "out.vtu", {"--gauss"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr("target Gauss points"));

    const auto grid = readGrid(runner.file("out.vtu"));
    EXPECT_NE(vtkArrayDownCast<vtkFloatArray>(grid->GetFieldData()->GetArray("u")), nullptr);
    EXPECT_EQ(grid->GetPointData()->GetNumberOfArrays(), 0);
    const auto points = vtkGaussPoints(*grid);
    vtkDataArray* values = points->GetPointData()->GetArray("T");
    ASSERT_NE(values, nullptr);
    ASSERT_GT(points->GetNumberOfPoints(), 0);
    ASSERT_EQ(values->GetNumberOfTuples(), points->GetNumberOfPoints());
    for (vtkIdType i = 0; i < points->GetNumberOfPoints(); ++i)
    {
        Point place;
        points->GetPoint(i, place.data());
        EXPECT_NEAR(values->GetComponent(i, 0), linear(place), 1e-5) << i;
    }
}

TEST_P(GaussFieldsOfKind, AreReadAsTheyWereWritten)
{
    writeGrid(*makeGrid(GetParam(), 1, 0.1, 0.8), runner.file("target.vtu"));
    ASSERT_EQ(transfer("source.vtu", "target.vtu", "out.vtu", {"--gauss"}).status, 0);
    const veltrane::MeshFile file(runner.file("out.vtu"), veltrane::MeshRole::source);
    EXPECT_THAT(file.gaussFields(), testing::ElementsAre("T", "u", "ValidGaussPointMask"));
    const veltrane::Field field = file.field("u", "v");
    EXPECT_EQ(field.name(), "v");
    EXPECT_EQ(field.location(), veltrane::Location::gaussPoints);
    EXPECT_EQ(field.componentCount(), 2);
    EXPECT_EQ(field.locationCount(), file.mesh().gaussPointCount());

    // Element by element, at the places that the elements' own rule gives.
    const auto& values = std::get<std::vector<float>>(field.values());
    std::size_t row = 0;
    for (int element = 0; element < file.mesh().elementCount(); ++element)
    {
        const auto nodes = file.mesh().nodesOf(element);
        for (const std::vector<double>& shapeValues :
             veltrane::gaussRuleOf(file.mesh().kindOf(element).kind).shapeValues)
        {
            double y = 0;
            for (std::size_t node = 0; node < nodes.size(); ++node)
            {
                y += shapeValues[node] * double{file.mesh().nodePosition(nodes[node])[1]};
            }
            EXPECT_NEAR(values[2 * row + 1], y, 1e-5) << "Gauss point " << row;
            ++row;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(AllKinds, GaussFieldsOfKind,
                         testing::Values(VTK_TETRA, VTK_HEXAHEDRON, VTK_VOXEL, VTK_WEDGE, VTK_PYRAMID,
                                         VTK_QUADRATIC_TETRA, VTK_QUADRATIC_HEXAHEDRON, VTK_TRIQUADRATIC_HEXAHEDRON,
                                         VTK_QUADRATIC_WEDGE, VTK_BIQUADRATIC_QUADRATIC_WEDGE, VTK_QUADRATIC_PYRAMID));

TEST_F(GaussFields, AreSourcesIfPresent)
{
    const auto flat = makeGrid(VTK_HEXAHEDRON, 2);
    addDoubles(*flat, "T", [](const Point&) { return 4; });
    writeGrid(*flat, runner.file("source.vtu"));
    writeGrid(*makeGrid(VTK_HEXAHEDRON, 2), runner.file("middle.vtu"));
    writeGrid(*makeGrid(VTK_TETRA, 2), runner.file("target.vtu"));
    ASSERT_EQ(transfer("source.vtu", "middle.vtu", "gauss.vtu", {"--gauss"}).status, 0);
    const CommandResult result = transfer("gauss.vtu", "target.vtu", "out.vtu", {"--field", "T=again"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(valuesOf(*readGrid(runner.file("out.vtu")), "again"), testing::Each(testing::DoubleNear(4, 1e-5)));
    EXPECT_EQ(transfer("gauss.vtu", "target.vtu", "all.vtu").status, 0); // without being asked for, too
    EXPECT_EQ(valuesOf(*readGrid(runner.file("all.vtu")), "T").size(), 27U);
}

TEST_F(GaussFields, AreCompared)
{
    for (const auto& [name, value] : std::vector<std::pair<std::string, double>>{{"a", 4}, {"b", 5}})
    {
        const auto flat = makeGrid(VTK_HEXAHEDRON, 2);
        addDoubles(*flat, "T", [value = value](const Point&) { return value; });
        writeGrid(*flat, runner.file(name + ".vtu"));
        const auto target = makeGrid(VTK_HEXAHEDRON, 1);
        target->InsertNextCell(VTK_QUAD, 4, std::array<vtkIdType, 4>{0, 1, 3, 2}.data()); // has no Gauss points
        writeGrid(*target, runner.file("target.vtu"));
        ASSERT_EQ(transfer(name + ".vtu", "target.vtu", name + "_gauss.vtu", {"--gauss"}).status, 0);
    }
    const CommandResult same = runner.run({"compare", "a_gauss.vtu", "a_gauss.vtu", "--tolerance", "0"});
    EXPECT_EQ(same.status, 0) << same.errors;
    const CommandResult result = runner.run({"compare", "a_gauss.vtu", "b_gauss.vtu", "--tolerance", "0.1"});
    EXPECT_EQ(result.status, 1) << result.errors;
    EXPECT_THAT(result.output, testing::ContainsRegex("\nT \\(1\\) +5 +1 +0.2 +1 +Gauss point [1-8] +- +- +-\n"));
    EXPECT_EQ(runner.run({"compare", "a_gauss.vtu", "b_gauss.vtu", "--field", "T"}).status, 0);
}

/// One hexahedron whose scheme numbers its points backwards.
///
/// \param shift  of the first shape value at the first point
vtkSmartPointer<vtkUnstructuredGrid> backwards(int pointCount, double shift = 0)
{
    GridBuilder builder;
    builder.addCube(VTK_HEXAHEDRON, {0, 0, 0}, 1);
    veltrane::GaussRule rule = veltrane::gaussRuleOf(ElementKind::hexahedron);
    std::ranges::reverse(rule.shapeValues);
    std::vector<double> weights;
    for (const std::vector<double>& values : rule.shapeValues)
    {
        weights.insert(weights.end(), values.begin(), values.end());
    }
    weights.front() += shift;
    vtkNew<vtkQuadratureSchemeDefinition> scheme;
    scheme->Initialize(VTK_HEXAHEDRON, 8, pointCount, weights.data());
    vtkNew<vtkIdTypeArray> offsets;
    offsets->SetName("offsets");
    offsets->InsertNextValue(1); // the first row belongs to nobody
    vtkQuadratureSchemeDefinition::DICTIONARY()->Set(offsets->GetInformation(), scheme, VTK_HEXAHEDRON);
    builder.grid()->GetCellData()->AddArray(offsets);
    vtkNew<vtkFloatArray> values;
    values->SetName("G");
    for (int row = 0; row < 9; ++row)
    {
        values->InsertNextValue(static_cast<float>(row));
    }
    values->GetInformation()->Set(vtkQuadratureSchemeDefinition::QUADRATURE_OFFSET_ARRAY_NAME(), "offsets");
    builder.grid()->GetFieldData()->AddArray(values);
    return builder.grid();
}

TEST_F(GaussFields, MayBeInAnyOrderThatTheSchemeTells)
{
    writeGrid(*backwards(8), runner.file("gauss.vtu"));
    const veltrane::MeshFile file(runner.file("gauss.vtu"), veltrane::MeshRole::source);
    EXPECT_THAT(std::get<std::vector<float>>(file.field("G").values()), testing::ElementsAre(8, 7, 6, 5, 4, 3, 2, 1));
}

TEST_F(GaussFields, MustBeAtTheGaussPointsOfTheElements)
{
    const std::vector<std::string> arguments{"transfer", "gauss.vtu", "source.vtu", "-o", "out.vtu", "--quiet"};
    const std::string array = "'gauss.vtu': Gauss-point array 'G' ";
    writeGrid(*backwards(7), runner.file("gauss.vtu"));
    expectFailure(runner, 65, array + "has other Gauss points than can be used in hexahedra", arguments);

    // The points of another rule with as many of them may lie almost there.
    writeGrid(*backwards(8, 0.002), runner.file("gauss.vtu"));
    expectFailure(runner, 65, array + "has other Gauss points than can be used in hexahedra", arguments);

    auto grid = backwards(8);
    grid->GetCellData()->GetArray("offsets")->SetComponent(0, 0, 2);
    writeGrid(*grid, runner.file("gauss.vtu"));
    expectFailure(runner, 65, array + "has 9 rows, but cell 0 needs row 9, counted from 0", arguments);

    grid = backwards(8);
    grid->GetCellData()->RemoveArray("offsets");
    writeGrid(*grid, runner.file("gauss.vtu"));
    expectFailure(runner, 65,
                  array + "names the offsets 'offsets', but there is no such cell-data array with quadrature schemes",
                  arguments);

    grid = backwards(8);
    grid->InsertNextCell(VTK_TETRA, 4, std::array<vtkIdType, 4>{0, 1, 2, 4}.data());
    vtkIdTypeArray::SafeDownCast(grid->GetCellData()->GetArray("offsets"))->InsertNextValue(0);
    writeGrid(*grid, runner.file("gauss.vtu"));
    expectFailure(runner, 65, array + "has no quadrature scheme for tetrahedra", arguments);
}

TEST_F(GaussFields, NeedAFormatThatHasThem)
{
    writeGrid(*makeGrid(VTK_TETRA, 2), runner.file("target.vtu"));
    expectFailure(runner, 64, "the output 'out.vtk' of --gauss is not named .vtu, .med, .rmed or .mmed",
                  {"transfer", "source.vtu", "target.vtu", "-o", "out.vtk", "--gauss"});
}

TEST_F(GaussFields, OfABundledTarget)
{
    const std::string meshes = VELTRANE_EXAMPLE_MESHES;
    const CommandResult result = transfer(meshes + "/flange_tetrahedra_coarse.vtu", meshes + "/flange_mixed_coarse.vtu",
                                          "out.vtu", {"--gauss", "--field", "von_mises"});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output,
                testing::ContainsRegex("target Gauss points +43808\n")); // 8 * 2272 + 6 * 2352 + 8 * 1440
    const auto points = vtkGaussPoints(*readGrid(runner.file("out.vtu")));
    EXPECT_EQ(points->GetNumberOfPoints(), 43808);
}

} // namespace
