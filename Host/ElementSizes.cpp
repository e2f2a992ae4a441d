#include "ElementSizes.h"

#include "ThreadWorkers.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

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

float largestElementSize(const Mesh& mesh, int threads)
{
    ThreadWorkers workers(threads);
    const Pieces pieces = piecesFor(workers, mesh.elementCount());
    std::vector<float> largest(static_cast<std::size_t>(pieces.count()), 0.0F);
    const auto measurePiece = [&](std::int64_t piece, int)
    {
        float ofPiece = 0;
        for (std::int64_t element = pieces.first(piece); element < pieces.end(piece); ++element)
        {
            ofPiece = std::max(ofPiece, elementSize(mesh, static_cast<int>(element)));
        }
        largest[static_cast<std::size_t>(piece)] = ofPiece;
    };
    workers.run({"checking", 0, 100}, pieces.count(), measurePiece);
    return largest.empty() ? 0.0F : std::ranges::max(largest); // a part of a mesh may have no elements
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
