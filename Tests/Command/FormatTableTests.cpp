// The table of formats in the documentation says what the formats themselves say, and a model of all kinds of elements
// comes back from each format that is written as the table promises.
#include "FileFormat.h"
#include "FormatChecks.h"
#include "FormatList.h"
#include "GaussPoints.h"
#include "GroupNames.h"
#include "MeshFile.h"
#include "TemporaryDirectory.h"
#include "TestGrids.h"
#include "Text.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDoubleArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace
{

using veltrane::Field;
using veltrane::FileFormat;
using veltrane::FormatContents;
using veltrane::Location;
using veltrane::MeshFile;
using veltrane::MeshRole;

std::string readDocument()
{
    std::ifstream in(VELTRANE_FORMATS_DOCUMENT);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

/// "r | rw | - |"
std::string cellsOf(const FileFormat& format)
{
    std::string cells;
    for (bool FormatContents::*part :
         {&FormatContents::cells, &FormatContents::materials, &FormatContents::nodalFields, &FormatContents::cellFields,
          &FormatContents::gaussFields, &FormatContents::steps})
    {
        const std::string letters = veltrane::text(format.reads.*part ? "r" : "", format.writes.*part ? "w" : "");
        cells += veltrane::text(" ", letters.empty() ? "-" : letters, " |");
    }
    return cells;
}

TEST(FormatTable, SaysWhatFormatsSay)
{
    const std::string document = readDocument();
    for (const FileFormat* format : veltrane::allFormats())
    {
        if (!format->refusal.empty())
        {
            continue;
        }
        const std::size_t begin = document.find(veltrane::text("\n| ", format->name, " |"));
        ASSERT_NE(begin, std::string::npos) << format->name;
        const std::string row = document.substr(begin + 1, document.find('\n', begin + 1) - begin - 1);
        EXPECT_THAT(row, testing::EndsWith(veltrane::text(" |", cellsOf(*format))));
        for (const std::string_view ending : format->endings)
        {
            EXPECT_THAT(row, testing::HasSubstr(veltrane::text("`", ending, "`")));
        }
    }
}

TEST(FormatTable, TellsWhatToDoWithFilesThatAreRefused)
{
    const std::string document = readDocument();
    for (const FileFormat* format : veltrane::allFormats())
    {
        for (const std::string_view ending : format->endings)
        {
            EXPECT_THAT(document, testing::HasSubstr(veltrane::text("`", ending, "`")));
        }
    }
}

std::vector<std::string> writtenEndings()
{
    std::vector<std::string> endings;
    for (const FileFormat* format : veltrane::allFormats())
    {
        if (veltrane::isMeshOutput(format) && format->writes.cells)
        {
            endings.emplace_back(format->endings.front());
        }
    }
    return endings;
}

/// Cells of all kinds in two groups, of which one has a name, with fields everywhere.
class FormatRoundTrip : public testing::TestWithParam<std::string>
{
protected:
    FormatRoundTrip() : grid_(makeModel()), format_(*veltrane::formatOf(veltrane::text("x", GetParam())))
    {
        writeGrid(*grid_, directory_ / "in.vtu");
        const MeshFile file(directory_ / "in.vtu", MeshRole::source);
        leftOut_ = file.writeWith(std::vector{gaussField(file.mesh())}, {}, path());
    }

    static vtkSmartPointer<vtkUnstructuredGrid> makeModel()
    {
        GridBuilder builder;
        double place = 0;
        std::vector<int> cellTypes{
            VTK_TETRA,           VTK_HEXAHEDRON, VTK_WEDGE, VTK_PYRAMID, VTK_QUADRATIC_TETRA, VTK_QUADRATIC_HEXAHEDRON,
            VTK_QUADRATIC_WEDGE, VTK_TRIANGLE,   VTK_QUAD,  VTK_VOXEL};
        if (GetParam() != ".e") // of which the writer does not have them
        {
            cellTypes.insert(cellTypes.end(),
                             {VTK_TRIQUADRATIC_HEXAHEDRON, VTK_BIQUADRATIC_QUADRATIC_WEDGE, VTK_QUADRATIC_PYRAMID});
        }
        for (const int cellType : cellTypes)
        {
            builder.addCube(cellType, {place, 0, 0}, 1);
            place += 1;
        }
        const auto grid = builder.grid();
        addDoubles(*grid, "T", [](const Point& p) { return quadratic(p[0], p[1], p[2]); });
        addFloats(*grid, "u", {linear, [](const Point& p) { return p[1]; }, [](const Point& p) { return p[2]; }});
        std::vector<PointFunction> components;
        for (int component = 0; component < 6; ++component)
        {
            components.push_back([component](const Point& p) { return 10 * component + p[0]; });
        }
        addFloats(*grid, "stress", components);
        addCellNumbers(*grid, "material", [&](vtkIdType cell) { return materialAt(*grid, cell); });
        vtkNew<vtkDoubleArray> damage;
        damage->SetName("damage");
        for (vtkIdType cell = 0; cell < grid->GetNumberOfCells(); ++cell)
        {
            damage->InsertNextValue(damageAt(*grid, cell));
        }
        grid->GetCellData()->AddArray(damage);
        veltrane::setGroupNames(*grid, {{7, "rubber part"}});
        return grid;
    }

    static double middleOf(vtkUnstructuredGrid& grid, vtkIdType cell)
    {
        std::array<double, 6> box{};
        grid.GetCellBounds(cell, box.data());
        return (box[0] + box[1]) / 2;
    }
    static int materialAt(vtkUnstructuredGrid& grid, vtkIdType cell) { return middleOf(grid, cell) < 2 ? 3 : 7; }
    static double damageAt(vtkUnstructuredGrid& grid, vtkIdType cell) { return 0.25 * middleOf(grid, cell); }

    /// The value of linear() at all Gauss points.
    static Field gaussField(const veltrane::Mesh& mesh) { return {"S", Location::gaussPoints, 1, gaussValues(mesh)}; }

    static std::vector<double> gaussValues(const veltrane::Mesh& mesh)
    {
        std::vector<double> values;
        for (int element = 0; element < mesh.elementCount(); ++element)
        {
            const auto nodes = mesh.nodesOf(element);
            for (const auto& shapeValues :
                 veltrane::gaussRuleOf(mesh.kinds()[static_cast<std::size_t>(element)]).shapeValues)
            {
                double value = 0;
                for (std::size_t node = 0; node < shapeValues.size(); ++node)
                {
                    const float* at = mesh.coordinates().data() + 3 * nodes[node];
                    value += shapeValues[node] * linear({at[0], at[1], at[2]});
                }
                values.push_back(value);
            }
        }
        return values;
    }

    std::filesystem::path path() const { return directory_ / veltrane::text("out", GetParam()); }

    const TemporaryDirectory directory_;
    vtkSmartPointer<vtkUnstructuredGrid> grid_;
    const FileFormat& format_;
    veltrane::LeftOut leftOut_;
};

TEST_P(FormatRoundTrip, KeepsNodesCellsAndTheOrderOfTheirNodes)
{
    const auto back = readByFormat(path());
    ASSERT_EQ(back->GetNumberOfPoints(), grid_->GetNumberOfPoints());
    for (vtkIdType point = 0; point < grid_->GetNumberOfPoints(); ++point)
    {
        EXPECT_EQ(pointOf(*back, point), pointOf(*grid_, point));
    }
    std::map<int, int> counts;
    std::map<int, int> expected;
    for (vtkIdType cell = 0; cell < grid_->GetNumberOfCells(); ++cell)
    {
        ++expected[grid_->GetCellType(cell) == VTK_VOXEL ? VTK_HEXAHEDRON : grid_->GetCellType(cell)];
        ++counts[back->GetCellType(cell) == VTK_VOXEL ? VTK_HEXAHEDRON : back->GetCellType(cell)];
    }
    EXPECT_EQ(back->GetNumberOfCells(), grid_->GetNumberOfCells());
    EXPECT_EQ(counts, expected);
    expectNodesInOrder(*back, "T");
    const MeshFile file(path(), MeshRole::source);
    EXPECT_EQ(file.mesh().elementCount(), MeshFile(directory_ / "in.vtu", MeshRole::source).mesh().elementCount());
}

TEST_P(FormatRoundTrip, KeepsFieldsAtNodes)
{
    ASSERT_TRUE(format_.writes.nodalFields);
    const auto back = readByFormat(path());
    const auto valueOf = [&](const std::string& name, const char* suffix, int component, vtkIdType point)
    {
        vtkDataArray* whole = back->GetPointData()->GetArray(name.c_str());
        vtkDataArray* part = back->GetPointData()->GetArray((name + suffix).c_str());
        EXPECT_TRUE(whole != nullptr || part != nullptr) << name;
        return whole != nullptr  ? whole->GetComponent(point, component)
               : part != nullptr ? part->GetComponent(point, 0)
                                 : 0;
    };
    for (vtkIdType point = 0; point < grid_->GetNumberOfPoints(); ++point)
    {
        const Point p = pointOf(*grid_, point);
        EXPECT_EQ(valueOf("T", "", 0, point), quadratic(p[0], p[1], p[2]));
        EXPECT_EQ(valueOf("u", "", 1, point), static_cast<float>(p[1]));
        EXPECT_EQ(valueOf("stress", "_YZ", 4, point), static_cast<float>(40 + p[0]));
        EXPECT_EQ(valueOf("stress", "_XZ", 5, point), static_cast<float>(50 + p[0]));
    }
}

TEST_P(FormatRoundTrip, KeepsGroupsAndFieldsOfCells)
{
    const auto back = readByFormat(path());
    const MeshFile file(path(), MeshRole::target);
    ASSERT_TRUE(file.materialArray().has_value());
    vtkDataArray* materials = back->GetCellData()->GetArray(file.materialArray()->c_str());
    vtkDataArray* damage = back->GetCellData()->GetArray("damage");
    ASSERT_NE(materials, nullptr);
    ASSERT_NE(damage, nullptr);
    for (vtkIdType cell = 0; cell < back->GetNumberOfCells(); ++cell)
    {
        EXPECT_EQ(materials->GetComponent(cell, 0), materialAt(*back, cell)) << cell;
        EXPECT_EQ(damage->GetComponent(cell, 0), damageAt(*back, cell)) << cell;
    }
}

TEST_P(FormatRoundTrip, KeepsFieldsAtGaussPointsOrNamesThem)
{
    if (!format_.writes.gaussFields)
    {
        EXPECT_THAT(leftOut_, testing::Contains(testing::HasSubstr("'S'")));
        return;
    }
    EXPECT_THAT(leftOut_, testing::Not(testing::Contains(testing::HasSubstr("'S'"))));
    const MeshFile file(path(), MeshRole::source);
    const Field field = file.field("S");
    EXPECT_EQ(field.location(), Location::gaussPoints);
    const auto& values = std::get<std::vector<double>>(field.values());
    const std::vector<double> expected = gaussValues(file.mesh());
    ASSERT_EQ(values.size(), expected.size());
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        EXPECT_NEAR(values[i], expected[i], 1e-9) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Written, FormatRoundTrip, testing::ValuesIn(writtenEndings()),
                         [](const auto& parameter) { return parameter.param.substr(1); });

} // namespace
