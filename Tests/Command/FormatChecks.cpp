#include "FormatChecks.h"

#include "DataSetReader.h"

#include <vtkCellType.h>
#include <vtkGenericCell.h>
#include <vtkNew.h>
#include <vtkPointData.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <map>
#include <vector>

namespace
{

using Place = std::array<double, 3>;

/// The cell of the same corners without other nodes.
int cornerType(int cellType)
{
    const std::map<int, int> types{{VTK_QUADRATIC_EDGE, VTK_LINE},
                                   {VTK_QUADRATIC_TRIANGLE, VTK_TRIANGLE},
                                   {VTK_BIQUADRATIC_TRIANGLE, VTK_TRIANGLE},
                                   {VTK_QUADRATIC_QUAD, VTK_QUAD},
                                   {VTK_BIQUADRATIC_QUAD, VTK_QUAD},
                                   {VTK_QUADRATIC_TETRA, VTK_TETRA},
                                   {VTK_QUADRATIC_HEXAHEDRON, VTK_HEXAHEDRON},
                                   {VTK_TRIQUADRATIC_HEXAHEDRON, VTK_HEXAHEDRON},
                                   {VTK_QUADRATIC_WEDGE, VTK_WEDGE},
                                   {VTK_BIQUADRATIC_QUADRATIC_WEDGE, VTK_WEDGE},
                                   {VTK_QUADRATIC_PYRAMID, VTK_PYRAMID}};
    const auto found = types.find(cellType);
    return found == types.end() ? cellType : found->second;
}

/// A cell of a grid.
class CellCheck
{
public:
    CellCheck(vtkUnstructuredGrid& grid, vtkIdType cell) : type_(grid.GetCellType(cell))
    {
        grid.GetCell(cell, cell_);
        corners_->SetCellType(cornerType(type_));
    }

    /// Where the corners alone put a place of the reference cell.
    Place placeOf(const Place& reference)
    {
        std::vector<double> weights(static_cast<std::size_t>(corners_->GetNumberOfPoints()));
        corners_->InterpolateFunctions(reference.data(), weights.data());
        return weightedPlace(weights);
    }

    void expectMiddleNodesInPlace()
    {
        const double* reference = cell_->GetParametricCoords();
        for (vtkIdType node = 0; node < cell_->GetNumberOfPoints(); ++node)
        {
            const Place expected = placeOf({reference[3 * node], reference[3 * node + 1], reference[3 * node + 2]});
            Place actual{};
            cell_->GetPoints()->GetPoint(node, actual.data());
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                EXPECT_NEAR(actual[axis], expected[axis], 1e-6) << "type " << type_ << " node " << node;
            }
        }
    }

    void expectNotInsideOut()
    {
        if (cell_->GetCellDimension() < 3)
        {
            return;
        }
        constexpr double way = 1e-4;
        Place centre{};
        cell_->GetParametricCenter(centre.data());
        std::array<Place, 3> sides{};
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            Place beside = centre;
            beside[axis] += way;
            const Place from = placeOf(centre);
            const Place to = placeOf(beside);
            sides[axis] = {to[0] - from[0], to[1] - from[1], to[2] - from[2]};
        }
        const auto& [a, b, c] = sides;
        const double volume = a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0]) +
                              a[2] * (b[0] * c[1] - b[1] * c[0]);
        EXPECT_GT(volume, 0) << "type " << type_;
    }

    void expectQuadratic(vtkDataArray& values, double factor)
    {
        const std::size_t size = static_cast<std::size_t>(cell_->GetNumberOfPoints());
        const bool isCurved = cornerType(type_) != type_ && type_ != VTK_QUADRATIC_PYRAMID;
        if (!isCurved)
        {
            return;
        }
        for (const Place& reference : {Place{0.25, 0.2, 0.3}, Place{0.1, 0.6, 0.15}})
        {
            std::vector<double> weights(size);
            cell_->InterpolateFunctions(reference.data(), weights.data());
            double value = 0;
            for (std::size_t node = 0; node < size; ++node)
            {
                value += weights[node] * values.GetComponent(cell_->GetPointId(static_cast<int>(node)), 0);
            }
            const Place at = placeOf(reference);
            const double expected = factor * quadratic(at[0], at[1], at[2]);
            EXPECT_NEAR(value, expected, 1e-5 * (1 + std::abs(expected))) << "type " << type_;
        }
    }

private:
    Place weightedPlace(const std::vector<double>& weights)
    {
        Place place{};
        for (std::size_t node = 0; node < weights.size(); ++node)
        {
            Place corner{};
            cell_->GetPoints()->GetPoint(static_cast<vtkIdType>(node), corner.data());
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                place[axis] += weights[node] * corner[axis];
            }
        }
        return place;
    }

    int type_;
    vtkNew<vtkGenericCell> cell_;
    vtkNew<vtkGenericCell> corners_;
};

} // namespace

vtkSmartPointer<vtkUnstructuredGrid> readByFormat(const std::filesystem::path& path,
                                                  const veltrane::FileReading& reading)
{
    const veltrane::FileFormat* format = veltrane::formatOf(path);
    vtkSmartPointer<vtkUnstructuredGrid> grid = vtkUnstructuredGrid::SafeDownCast(format->read(path, reading).dataSet);
    EXPECT_NE(grid, nullptr) << path;
    return grid;
}

double quadratic(double x, double y, double z)
{
    return 1 + 2 * x - 3 * y + 5 * z + x * x - 2 * y * y + z * x;
}

void expectNodesInOrder(vtkUnstructuredGrid& grid, const std::string& array, double factor)
{
    vtkDataArray* values = grid.GetPointData()->GetArray(array.c_str());
    ASSERT_NE(values, nullptr) << array;
    for (vtkIdType point = 0; point < grid.GetNumberOfPoints(); ++point)
    {
        Place place{};
        grid.GetPoint(point, place.data());
        const double expected = factor * quadratic(place[0], place[1], place[2]);
        EXPECT_NEAR(values->GetComponent(point, 0), expected, 1e-5 * (1 + std::abs(expected)));
    }
    for (vtkIdType cell = 0; cell < grid.GetNumberOfCells(); ++cell)
    {
        if (grid.GetCellType(cell) == VTK_EMPTY_CELL)
        {
            continue;
        }
        CellCheck check(grid, cell);
        check.expectMiddleNodesInPlace();
        check.expectNotInsideOut();
        check.expectQuadratic(*values, factor);
    }
}
