/// Grids of cells, written and read through VTK.
#ifndef VELTRANE_TESTS_TEST_GRIDS_H
#define VELTRANE_TESTS_TEST_GRIDS_H

#include <vtkSmartPointer.h>
#include <vtkUnstructuredGrid.h>

#include <array>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

using Point = std::array<double, 3>;
using PointFunction = std::function<double(const Point&)>;

/// Puts a grid together from cubes of cells. Points at the same place are one point within a block; a new block begins
/// with points of its own.
class GridBuilder
{
public:
    GridBuilder();

    /// Cuts the cube with this lower corner and edge into cells of a type of VTK; plane cells cover its lower side.
    void addCube(int cellType, const Point& corner, double edge);

    /// Cuts the cube between two corners (x, x, x) and (y, y, y) into n * n * n cubes and these into cells.
    void addGrid(int cellType, int n, double from, double to);

    void addCell(int cellType, const std::vector<Point>& points);
    void startBlock() { points_.clear(); }

    vtkSmartPointer<vtkUnstructuredGrid> grid() const { return grid_; }

private:
    vtkSmartPointer<vtkUnstructuredGrid> grid_;
    std::map<Point, vtkIdType> points_;
};

vtkSmartPointer<vtkUnstructuredGrid> makeGrid(int cellType, int n, double from = 0, double to = 1);

/// Moves the points within the unit cube by up to some way, each differently and always the same, and leaves its sides
/// as they are.
void distort(vtkUnstructuredGrid& grid, double way);

/// Puts the nodes of cells of second order back into the middles of their edges, faces and cells.
void straighten(vtkUnstructuredGrid& grid);

Point pointOf(vtkUnstructuredGrid& grid, vtkIdType point);

void addDoubles(vtkUnstructuredGrid& grid, const std::string& name, const PointFunction& function);
void addFloats(vtkUnstructuredGrid& grid, const std::string& name, const std::vector<PointFunction>& components);

/// One number per cell, found from the cell's number.
void addCellNumbers(vtkUnstructuredGrid& grid, const std::string& name, const std::function<int(vtkIdType)>& number);

/// 1 + 2 x - 3 y + 5 z
double linear(const Point& point);

/// Cubes of edge 1 along the x axis and along the y axis up to 10, with the double array "constant", 4 everywhere.
vtkSmartPointer<vtkUnstructuredGrid> angle();

/// Cubes of edge 0.5 on the diagonal of the angle's box, from the corner of the angle to places far from it; in one
/// chain, or the far ones apart.
vtkSmartPointer<vtkUnstructuredGrid> diagonal(bool isChain);

/// The values of a point-data array, in double precision whatever theirs is.
std::vector<double> valuesOf(vtkUnstructuredGrid& grid, const std::string& name);

void writeGrid(vtkUnstructuredGrid& grid, const std::filesystem::path& path, bool asText = false);
vtkSmartPointer<vtkUnstructuredGrid> readGrid(const std::filesystem::path& path);

#endif
