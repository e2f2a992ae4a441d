#include "MeshArguments.h"

#include "Errors.h"
#include "Text.h"

#include <algorithm>
#include <iterator>

namespace veltrane
{
namespace
{

float (*rowsOfThree(const std::vector<float>& coordinates))[3]
{
    return reinterpret_cast<float(*)[3]>(const_cast<float*>(coordinates.data()));
}

int* borrowed(const std::vector<int>& numbers)
{
    return const_cast<int*>(numbers.data());
}

std::vector<int> stateCodes(const std::vector<Material>& materials)
{
    std::vector<int> codes;
    codes.reserve(materials.size());
    std::ranges::transform(materials, std::back_inserter(codes), &Material::stateCode);
    return codes;
}

} // namespace

MeshArguments::MeshArguments(const Mesh& mesh) : mesh_(mesh), stateCodes_(stateCodes(mesh.materials()))
{
    const auto elementCount = static_cast<std::size_t>(mesh.elementCount());
    nodesPerElement_.reserve(elementCount);
    typeCodes_.reserve(elementCount);
    for (int element = 0; element < mesh.elementCount(); ++element)
    {
        nodesPerElement_.push_back(const_cast<int*>(mesh.nodesOf(element).data()));
        typeCodes_.push_back(static_cast<int>(mesh.kindOf(element).kind));
    }
}

std::tuple<int, int, float (*)[3], int**, int*, int, int*, int*> MeshArguments::list()
{
    return {mesh_.elementCount(),
            mesh_.nodeCount(),
            rowsOfThree(mesh_.coordinates()),
            nodesPerElement_.data(),
            typeCodes_.data(),
            static_cast<int>(stateCodes_.size()),
            borrowed(mesh_.materialPerElement()),
            stateCodes_.data()};
}

PointCloudArguments::PointCloudArguments(const PointCloud& points)
    : points_(points), stateCodes_(stateCodes(points.materials()))
{
}

std::tuple<int, float (*)[3], int, int*, int*> PointCloudArguments::list()
{
    return {points_.pointCount(), rowsOfThree(points_.coordinates()), static_cast<int>(stateCodes_.size()),
            borrowed(points_.materialPerPoint()), stateCodes_.data()};
}

std::vector<int> mappingFlags(const std::vector<bool>& selection, std::size_t materialCount)
{
    if (selection.empty())
    {
        return std::vector<int>(materialCount, 1);
    }
    if (selection.size() != materialCount)
    {
        throw InvalidOption(
            text("there are ", selection.size(), " mapping flags for ", materialCount, " target materials"));
    }
    return {selection.begin(), selection.end()};
}

} // namespace veltrane
