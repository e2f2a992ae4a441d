#include "OutsideText.h"

#include "Text.h"

#include <vtkMath.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkStaticPointLocator.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace veltrane
{
namespace
{

using Place = std::array<float, 3>;

Place placeOf(std::span<const float> coordinates, std::size_t point)
{
    return {coordinates[3 * point], coordinates[3 * point + 1], coordinates[3 * point + 2]};
}

/// The nodes that elements have.
vtkSmartPointer<vtkPolyData> nodesOf(const Mesh& mesh)
{
    std::vector<bool> isUsed(static_cast<std::size_t>(mesh.nodeCount()));
    vtkNew<vtkPoints> points;
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        for (const int node : mesh.nodesOf(element))
        {
            if (!isUsed[static_cast<std::size_t>(node)])
            {
                isUsed[static_cast<std::size_t>(node)] = true;
                points->InsertNextPoint(mesh.nodePosition(node).data());
            }
        }
    }
    vtkNew<vtkPolyData> nodes;
    nodes->SetPoints(points);
    return nodes;
}

struct Farthest
{
    Place place{};
    double distance = -1;
};

Farthest findFarthest(const Mesh& source, const std::vector<Finding>& findings, std::span<const float> coordinates)
{
    const auto nodes = nodesOf(source);
    vtkNew<vtkStaticPointLocator> locator;
    locator->SetDataSet(nodes);
    locator->BuildLocator();
    Farthest farthest;
    for (std::size_t point = 0; point < findings.size(); ++point)
    {
        if (findings[point] != Finding::far)
        {
            continue;
        }
        const Place place = placeOf(coordinates, point);
        const std::array<double, 3> position{place[0], place[1], place[2]};
        std::array<double, 3> nearest{};
        nodes->GetPoint(locator->FindClosestPoint(position.data()), nearest.data());
        const double distance = std::sqrt(vtkMath::Distance2BetweenPoints(position.data(), nearest.data()));
        if (distance > farthest.distance)
        {
            farthest = {place, distance};
        }
    }
    return farthest;
}

std::string countText(const std::vector<Finding>& findings, const std::string& points)
{
    const auto farCount = std::ranges::count(findings, Finding::far);
    const auto mappedCount =
        static_cast<std::ptrdiff_t>(findings.size()) - std::ranges::count(findings, Finding::notMapped);
    return text(farCount, " of ", mappedCount, " ", points, farCount == 1 ? " is" : " are", " outside the source");
}

} // namespace

std::string outsideText(const Mesh& source, const TransferResult& result, std::span<const float> coordinates,
                        const std::string& points)
{
    if (result.findings.empty())
    {
        return countText(result.gaussPointFindings, "Gauss points");
    }
    const Farthest farthest = findFarthest(source, result.findings, coordinates);
    return text(countText(result.findings, points), "; the farthest, at ",
                placeText(std::span<const float, 3>(farthest.place)), ", is ", farthest.distance,
                " from the nearest node of the source");
}

} // namespace veltrane
