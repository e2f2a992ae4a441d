#include "ElementSizes.h"

#include <algorithm>

namespace veltrane
{
namespace
{

float elementSize(const Mesh& mesh, int element)
{
    Box box;
    for (const int node : mesh.nodesOf(element))
    {
        box.add(mesh.nodePosition(node));
    }
    return box.size();
}

} // namespace

float largestElementSize(const Mesh& mesh)
{
    float largest = 0;
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        largest = std::max(largest, elementSize(mesh, element));
    }
    return largest;
}

double meanElementSize(const Mesh& mesh)
{
    double sum = 0;
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        sum += double{elementSize(mesh, element)};
    }
    return sum / mesh.elementCount();
}

} // namespace veltrane
