#include "Cut.h"

#include "VtkCells.h"

#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkCutter.h>
#include <vtkDoubleArray.h>
#include <vtkIdTypeArray.h>
#include <vtkImplicitSum.h>
#include <vtkNew.h>
#include <vtkPlane.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>
#include <vtkSmartPointer.h>
#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace veltrane
{
namespace
{

constexpr const char* valueName = "value";
constexpr const char* elementName = "element";

/// Those that have nodes on both sides of the plane, or in it.
std::vector<int> elementsAt(const CutPlane& plane, const Mesh& mesh)
{
    std::vector<signed char> sides(static_cast<std::size_t>(mesh.nodeCount()));
    for (std::size_t node = 0; node < sides.size(); ++node)
    {
        const double way = double{mesh.coordinates()[3 * node + plane.axis]} - plane.position;
        sides[node] = static_cast<signed char>(way < 0 ? -1 : way > 0 ? 1 : 0);
    }
    std::vector<int> elements;
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        const auto nodes = mesh.nodesOf(element);
        const int first = sides[static_cast<std::size_t>(nodes.front())];
        const bool isCut =
            first == 0 ||
            std::ranges::any_of(nodes, [&](int node) { return sides[static_cast<std::size_t>(node)] != first; });
        if (isCut)
        {
            elements.push_back(element);
        }
    }
    return elements;
}

/// Some elements of a mesh, with their nodes alone.
vtkSmartPointer<vtkUnstructuredGrid> gridOf(const Mesh& mesh, std::span<const double> values,
                                            const std::vector<int>& elements)
{
    const auto grid = vtkSmartPointer<vtkUnstructuredGrid>::New();
    vtkNew<vtkPoints> points;
    vtkNew<vtkDoubleArray> nodeValues;
    nodeValues->SetName(valueName);
    vtkNew<vtkIdTypeArray> numbers;
    numbers->SetName(elementName);
    grid->Allocate(static_cast<vtkIdType>(elements.size()));
    std::unordered_map<int, vtkIdType> pointOfNode;
    std::vector<vtkIdType> cellNodes;
    for (const int element : elements)
    {
        const VtkCellKind& kind = vtkCellKindOf(mesh.kindOf(element).kind);
        const std::span<const int> nodes = mesh.nodesOf(element);
        cellNodes.resize(nodes.size());
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            const auto [found, isNew] = pointOfNode.emplace(nodes[i], points->GetNumberOfPoints());
            if (isNew)
            {
                points->InsertNextPoint(mesh.nodePosition(nodes[i]).data());
                nodeValues->InsertNextValue(values[static_cast<std::size_t>(nodes[i])]);
            }
            cellNodes[static_cast<std::size_t>(kind.nodeOrder[i])] = found->second;
        }
        grid->InsertNextCell(kind.cellType, static_cast<vtkIdType>(nodes.size()), cellNodes.data());
        numbers->InsertNextValue(element);
    }
    grid->SetPoints(points);
    grid->GetPointData()->AddArray(nodeValues);
    grid->GetCellData()->AddArray(numbers);
    return grid;
}

PlaneEdge edgeBetween(std::size_t a, std::size_t b)
{
    return {std::min(a, b), std::max(a, b)};
}

/// An edge of a triangle of an element's.
using ElementEdge = std::pair<vtkIdType, PlaneEdge>;

/// Those around the elements, each once: edges within an element are those of two of its triangles.
std::vector<PlaneEdge> aroundElements(std::vector<ElementEdge> edges)
{
    std::ranges::sort(edges);
    std::vector<PlaneEdge> around;
    for (std::size_t i = 0; i < edges.size(); ++i)
    {
        const bool isFirst = i == 0 || edges[i - 1] != edges[i];
        const bool isLast = i + 1 == edges.size() || edges[i + 1] != edges[i];
        if (isFirst && isLast)
        {
            around.push_back(edges[i].second);
        }
    }
    std::ranges::sort(around);
    around.erase(std::unique(around.begin(), around.end()), around.end());
    return around;
}

/// Sorts the cells of a cut into triangles and lines, and finds the edges that matter: a volume element is cut into
/// several triangles, whose common edges are none of the element's.
void readCells(vtkPolyData& polygons, Cut& cut)
{
    const auto& elements = *vtkIdTypeArray::SafeDownCast(polygons.GetCellData()->GetArray(elementName));
    std::vector<ElementEdge> edgesOfElements;
    for (vtkIdType cell = 0; cell < polygons.GetNumberOfCells(); ++cell)
    {
        vtkIdType count = 0;
        const vtkIdType* points = nullptr;
        polygons.GetCellPoints(cell, count, points);
        const auto number = [&](vtkIdType i) { return static_cast<std::size_t>(points[i]); };
        if (count == 2)
        {
            cut.lines.push_back({number(0), number(1)});
        }
        if (count != 3)
        {
            continue;
        }
        cut.triangles.push_back({number(0), number(1), number(2)});
        for (vtkIdType i = 0; i < 3; ++i)
        {
            edgesOfElements.emplace_back(elements.GetValue(cell), edgeBetween(number(i), number((i + 1) % 3)));
        }
    }
    cut.elementEdges = aroundElements(std::move(edgesOfElements));
}

} // namespace

Cut cutThrough(const Mesh& mesh, std::span<const double> values, const CutPlane& plane)
{
    const vtkSmartPointer<vtkUnstructuredGrid> grid = gridOf(mesh, values, elementsAt(plane, mesh));
    std::array<double, 3> normal{};
    normal[plane.axis] = 1;
    std::array<double, 3> origin{};
    origin[plane.axis] = plane.position;
    vtkNew<vtkPlane> bare;
    bare->SetNormal(normal.data());
    bare->SetOrigin(origin.data());
    vtkNew<vtkImplicitSum> function; // for a bare plane the cutter takes a short cut that loses the elements' numbers
    function->AddFunction(bare);
    vtkNew<vtkCutter> cutter;
    cutter->SetCutFunction(function);
    cutter->GenerateTrianglesOn();
    cutter->SetInputData(grid);
    cutter->Update();
    vtkPolyData& polygons = *cutter->GetOutput();

    Cut cut;
    if (polygons.GetNumberOfCells() == 0)
    {
        return cut;
    }
    vtkDataArray& valuesOfPoints = *polygons.GetPointData()->GetArray(valueName);
    for (vtkIdType i = 0; i < polygons.GetNumberOfPoints(); ++i)
    {
        std::array<double, 3> place{};
        polygons.GetPoint(i, place.data());
        cut.points.push_back({place[plane.right()], place[plane.up()]});
        cut.values.push_back(valuesOfPoints.GetComponent(i, 0));
    }
    readCells(polygons, cut);
    return cut;
}

} // namespace veltrane
