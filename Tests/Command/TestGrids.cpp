#include "TestGrids.h"

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDoubleArray.h>
#include <vtkFloatArray.h>
#include <vtkIdList.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkXMLUnstructuredGridReader.h>
#include <vtkXMLUnstructuredGridWriter.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace
{

/// The cube's corners count by bits: corner 5 = binary 101 lies at the upper end of x and z.
using Corners = std::vector<int>;

const std::vector<Corners> tetrahedra{{0, 1, 3, 7}, {0, 1, 7, 5}, {0, 5, 7, 4},
                                      {0, 3, 2, 7}, {0, 6, 4, 7}, {0, 2, 6, 7}};
const std::vector<Corners> wedges{{0, 1, 2, 4, 5, 6}, {1, 3, 2, 5, 7, 6}};
const std::vector<Corners> sides{{0, 2, 6, 4}, {1, 5, 7, 3}, {0, 4, 5, 1}, {2, 3, 7, 6}, {0, 1, 3, 2}, {4, 6, 7, 5}};

/// A cell of quadratic functions: its corners are those of a cell of another type, and its other nodes lie in the
/// middle of some of these.
struct QuadraticCell
{
    int cellType;
    int linearType;
    std::vector<Corners> middles;
};

const std::vector<Corners> edgesOfHexahedron{{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6},
                                             {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};
const std::vector<Corners> edgesOfWedge{{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}};

std::vector<Corners> joined(std::vector<Corners> first, const std::vector<Corners>& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

const std::vector<QuadraticCell> quadraticCells{
    {VTK_QUADRATIC_TETRA, VTK_TETRA, {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}}},
    {VTK_QUADRATIC_HEXAHEDRON, VTK_HEXAHEDRON, edgesOfHexahedron},
    {VTK_TRIQUADRATIC_HEXAHEDRON, VTK_HEXAHEDRON,
     joined(edgesOfHexahedron, {{0, 3, 7, 4},
                                {1, 2, 6, 5},
                                {0, 1, 5, 4},
                                {3, 2, 6, 7},
                                {0, 1, 2, 3},
                                {4, 5, 6, 7},
                                {0, 1, 2, 3, 4, 5, 6, 7}})},
    {VTK_QUADRATIC_WEDGE, VTK_WEDGE, edgesOfWedge},
    {VTK_BIQUADRATIC_QUADRATIC_WEDGE, VTK_WEDGE, joined(edgesOfWedge, {{0, 1, 4, 3}, {1, 2, 5, 4}, {2, 0, 3, 5}})},
    {VTK_QUADRATIC_PYRAMID, VTK_PYRAMID, {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}}}};

const QuadraticCell* findQuadraticCell(int cellType)
{
    const auto found = std::ranges::find(quadraticCells, cellType, &QuadraticCell::cellType);
    return found == quadraticCells.end() ? nullptr : &*found;
}

Point middle(const std::vector<Point>& points, const Corners& corners)
{
    Point sum{};
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        for (const int corner : corners)
        {
            sum[axis] += points[static_cast<std::size_t>(corner)][axis];
        }
        sum[axis] /= static_cast<double>(corners.size());
    }
    return sum;
}

Point middle(const Point& a, const Point& b)
{
    return {(a[0] + b[0]) / 2, (a[1] + b[1]) / 2, (a[2] + b[2]) / 2};
}

} // namespace

GridBuilder::GridBuilder() : grid_(vtkSmartPointer<vtkUnstructuredGrid>::New())
{
    vtkNew<vtkPoints> points;
    points->SetDataTypeToDouble();
    grid_->SetPoints(points);
}

void GridBuilder::addCell(int cellType, const std::vector<Point>& points)
{
    std::vector<vtkIdType> numbers;
    for (const Point& point : points)
    {
        const auto [found, isNew] = points_.try_emplace(point, grid_->GetNumberOfPoints());
        if (isNew)
        {
            grid_->GetPoints()->InsertNextPoint(point.data());
        }
        numbers.push_back(found->second);
    }
    grid_->InsertNextCell(cellType, static_cast<vtkIdType>(numbers.size()), numbers.data());
}

void GridBuilder::addCube(int cellType, const Point& corner, double edge)
{
    const auto at = [&](int number)
    {
        return Point{corner[0] + edge * (number & 1), corner[1] + edge * (number >> 1 & 1),
                     corner[2] + edge * (number >> 2)};
    };
    if (const QuadraticCell* quadratic = findQuadraticCell(cellType))
    {
        GridBuilder linear;
        linear.addCube(quadratic->linearType, corner, edge);
        for (vtkIdType cell = 0; cell < linear.grid()->GetNumberOfCells(); ++cell)
        {
            vtkNew<vtkIdList> nodes;
            linear.grid()->GetCellPoints(cell, nodes);
            std::vector<Point> points;
            for (vtkIdType i = 0; i < nodes->GetNumberOfIds(); ++i)
            {
                points.push_back(pointOf(*linear.grid(), nodes->GetId(i)));
            }
            const std::vector<Point> corners = points;
            for (const Corners& between : quadratic->middles)
            {
                points.push_back(middle(corners, between));
            }
            addCell(cellType, points);
        }
        return;
    }
    const auto add = [&](const Corners& corners)
    {
        std::vector<Point> points;
        for (const int number : corners)
        {
            points.push_back(at(number));
        }
        return points;
    };
    switch (cellType)
    {
    case VTK_HEXAHEDRON: addCell(cellType, add({0, 1, 3, 2, 4, 5, 7, 6})); return;
    case VTK_VOXEL: addCell(cellType, add({0, 1, 2, 3, 4, 5, 6, 7})); return;
    case VTK_TETRA:
        for (const Corners& corners : tetrahedra)
        {
            addCell(cellType, add(corners));
        }
        return;
    case VTK_WEDGE:
        for (const Corners& corners : wedges)
        {
            addCell(cellType, add(corners));
        }
        return;
    case VTK_PYRAMID:
        for (const Corners& corners : sides)
        {
            std::vector<Point> points = add(corners);
            points.push_back(middle(at(0), at(7)));
            addCell(cellType, points);
        }
        return;
    case VTK_TRIANGLE:
        addCell(cellType, add({0, 1, 3}));
        addCell(cellType, add({0, 3, 2}));
        return;
    case VTK_QUAD: addCell(cellType, add({0, 1, 3, 2})); return;
    case VTK_PIXEL: addCell(cellType, add({0, 1, 2, 3})); return;
    default: throw std::invalid_argument("no way to cut a cube into these cells");
    }
}

void GridBuilder::addGrid(int cellType, int n, double from, double to)
{
    const double edge = (to - from) / n;
    for (int k = 0; k < n; ++k)
    {
        for (int j = 0; j < n; ++j)
        {
            for (int i = 0; i < n; ++i)
            {
                addCube(cellType, {from + edge * i, from + edge * j, from + edge * k}, edge);
            }
        }
    }
}

vtkSmartPointer<vtkUnstructuredGrid> makeGrid(int cellType, int n, double from, double to)
{
    GridBuilder builder;
    builder.addGrid(cellType, n, from, to);
    return builder.grid();
}

void distort(vtkUnstructuredGrid& grid, double way)
{
    for (vtkIdType i = 0; i < grid.GetNumberOfPoints(); ++i)
    {
        Point point = pointOf(grid, i);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            if (point[axis] > 0 && point[axis] < 1)
            {
                point[axis] += way * std::sin(12.9898 * static_cast<double>(i) + 78.233 * static_cast<double>(axis));
            }
        }
        grid.GetPoints()->SetPoint(i, point.data());
    }
}

void straighten(vtkUnstructuredGrid& grid)
{
    for (vtkIdType cell = 0; cell < grid.GetNumberOfCells(); ++cell)
    {
        const QuadraticCell* quadratic = findQuadraticCell(grid.GetCellType(cell));
        if (quadratic == nullptr)
        {
            continue;
        }
        vtkNew<vtkIdList> nodes;
        grid.GetCellPoints(cell, nodes);
        std::vector<Point> points;
        for (vtkIdType i = 0; i < nodes->GetNumberOfIds(); ++i)
        {
            points.push_back(pointOf(grid, nodes->GetId(i)));
        }
        const auto cornerCount = static_cast<vtkIdType>(points.size() - quadratic->middles.size());
        for (std::size_t i = 0; i < quadratic->middles.size(); ++i)
        {
            const Point place = middle(points, quadratic->middles[i]);
            grid.GetPoints()->SetPoint(nodes->GetId(cornerCount + static_cast<vtkIdType>(i)), place.data());
        }
    }
}

Point pointOf(vtkUnstructuredGrid& grid, vtkIdType point)
{
    Point position;
    grid.GetPoint(point, position.data());
    return position;
}

void addDoubles(vtkUnstructuredGrid& grid, const std::string& name, const PointFunction& function)
{
    vtkNew<vtkDoubleArray> array;
    array->SetName(name.c_str());
    for (vtkIdType i = 0; i < grid.GetNumberOfPoints(); ++i)
    {
        array->InsertNextValue(function(pointOf(grid, i)));
    }
    grid.GetPointData()->AddArray(array);
}

void addFloats(vtkUnstructuredGrid& grid, const std::string& name, const std::vector<PointFunction>& components)
{
    vtkNew<vtkFloatArray> array;
    array->SetName(name.c_str());
    array->SetNumberOfComponents(static_cast<int>(components.size()));
    for (vtkIdType i = 0; i < grid.GetNumberOfPoints(); ++i)
    {
        for (const PointFunction& component : components)
        {
            array->InsertNextValue(static_cast<float>(component(pointOf(grid, i))));
        }
    }
    grid.GetPointData()->AddArray(array);
}

void addCellNumbers(vtkUnstructuredGrid& grid, const std::string& name, const std::function<int(vtkIdType)>& number)
{
    vtkNew<vtkIntArray> array;
    array->SetName(name.c_str());
    for (vtkIdType i = 0; i < grid.GetNumberOfCells(); ++i)
    {
        array->InsertNextValue(number(i));
    }
    grid.GetCellData()->AddArray(array);
}

double linear(const Point& point)
{
    return 1 + 2 * point[0] - 3 * point[1] + 5 * point[2];
}

vtkSmartPointer<vtkUnstructuredGrid> angle()
{
    GridBuilder builder;
    for (int i = 0; i < 10; ++i)
    {
        builder.addCube(VTK_HEXAHEDRON, {1.0 * i, 0, 0}, 1);
        if (i > 0)
        {
            builder.addCube(VTK_HEXAHEDRON, {0, 1.0 * i, 0}, 1);
        }
    }
    addDoubles(*builder.grid(), "constant", [](const Point&) { return 4; });
    return builder.grid();
}

vtkSmartPointer<vtkUnstructuredGrid> diagonal(bool isChain)
{
    GridBuilder builder;
    for (int i = 0; i < 18; ++i)
    {
        if (isChain || i < 1 || i > 15)
        {
            builder.addCube(VTK_HEXAHEDRON, {0.25 + 0.5 * i, 0.25 + 0.5 * i, 0.25}, 0.5);
        }
    }
    return builder.grid();
}

std::vector<double> valuesOf(vtkUnstructuredGrid& grid, const std::string& name)
{
    std::vector<double> values;
    vtkDataArray* array = grid.GetPointData()->GetArray(name.c_str());
    if (array == nullptr)
    {
        ADD_FAILURE() << "there is no array " << name;
        return values;
    }
    for (vtkIdType i = 0; i < array->GetNumberOfTuples(); ++i)
    {
        for (int component = 0; component < array->GetNumberOfComponents(); ++component)
        {
            values.push_back(array->GetComponent(i, component));
        }
    }
    return values;
}

void writeGrid(vtkUnstructuredGrid& grid, const std::filesystem::path& path, bool asText)
{
    vtkNew<vtkXMLUnstructuredGridWriter> writer;
    writer->SetFileName(path.c_str());
    writer->SetInputData(&grid);
    if (asText)
    {
        writer->SetDataModeToAscii();
    }
    if (writer->Write() == 0)
    {
        throw std::runtime_error("cannot write " + path.string());
    }
}

vtkSmartPointer<vtkUnstructuredGrid> readGrid(const std::filesystem::path& path)
{
    vtkNew<vtkXMLUnstructuredGridReader> reader;
    reader->SetFileName(path.c_str());
    reader->Update();
    return reader->GetOutput();
}
