#include "Mesh.h"

#include "Errors.h"
#include "Text.h"
#include "ThreadWorkers.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace veltrane
{
namespace
{

constexpr int notAssigned = -1;

/// The library counts in int.
void checkCount(std::size_t count, std::string_view what)
{
    if (count > static_cast<std::size_t>(INT_MAX))
    {
        throw InvalidData(text("there are ", count, " ", what, "s, more than the ", INT_MAX, " that can be counted"));
    }
}

void checkCoordinates(const std::vector<float>& coordinates, std::string_view what)
{
    if (coordinates.size() % 3 != 0)
    {
        throw InvalidData(text(coordinates.size(), " coordinates do not make whole ", what, "s of three"));
    }
    checkCount(coordinates.size() / 3, what);
    for (std::size_t i = 0; i < coordinates.size(); ++i)
    {
        if (!std::isfinite(coordinates[i]))
        {
            throw InvalidData(text("coordinate ", "xyz"[i % 3], " of ", what, " ", i / 3,
                                   " is not a finite single-precision number"));
        }
    }
}

/// Makes the coordinates in single precision if only those in double are given, which are dropped where they say no
/// more.
void roundCoordinates(std::vector<float>& coordinates, std::vector<double>& exact)
{
    if (coordinates.empty())
    {
        coordinates.reserve(exact.size());
        for (const double coordinate : exact)
        {
            // Beyond the largest single there is no conversion that is defined.
            const bool fits = std::abs(coordinate) <= double{std::numeric_limits<float>::max()};
            coordinates.push_back(fits ? static_cast<float>(coordinate) : std::numeric_limits<float>::infinity());
        }
    }
    if (!exact.empty() && exact.size() != coordinates.size())
    {
        throw InvalidData(text("there are ", coordinates.size(), " coordinates in single precision, but ", exact.size(),
                               " in double"));
    }
    if (std::ranges::equal(exact, coordinates, [](double x, float rounded) { return x == double{rounded}; }))
    {
        exact = {};
    }
}

void checkStateCode(const Material& material)
{
    if (material.stateCode == notAssigned)
    {
        throw InvalidData(text("material ", material.name, " has the state code -1, which stands for no material"));
    }
}

std::vector<Material> withStateCodes(std::vector<Material> materials, std::span<const int> codes)
{
    if (codes.size() != materials.size())
    {
        throw InvalidData(text("there are ", materials.size(), " materials, but ", codes.size(), " state codes"));
    }
    for (std::size_t i = 0; i < codes.size(); ++i)
    {
        materials[i].stateCode = codes[i];
    }
    std::ranges::for_each(materials, checkStateCode);
    return materials;
}

void checkMaterials(const std::vector<Material>& materials, const std::vector<int>& materialPerItem,
                    std::size_t itemCount, std::string_view what)
{
    if (materials.empty())
    {
        throw InvalidData("there is no material");
    }
    checkCount(materials.size(), "material");
    std::ranges::for_each(materials, checkStateCode);
    if (materialPerItem.size() != itemCount)
    {
        throw InvalidData(
            text("there are ", itemCount, " ", what, "s, but ", materialPerItem.size(), " material numbers for them"));
    }
    for (std::size_t item = 0; item < itemCount; ++item)
    {
        const int material = materialPerItem[item];
        if (material < 0 || static_cast<std::size_t>(material) >= materials.size())
        {
            throw InvalidData(text(what, " ", item, " has material number ", material, ", but there are ",
                                   materials.size(), " materials, counted from 0"));
        }
    }
}

/// Checks that the offsets cut the connectivity into as many nodes per element as its kind has.
void checkElements(const MeshData& data, Extent extent)
{
    const std::size_t elementCount = data.kinds.size();
    if (elementCount == 0 && extent == Extent::whole)
    {
        throw InvalidData("there is no element");
    }
    checkCount(elementCount, "element");
    if (data.offsets.size() != elementCount + 1)
    {
        throw InvalidData(text("there are ", elementCount, " elements, but ", data.offsets.size(),
                               " offsets instead of one more than elements"));
    }
    if (data.offsets.front() != 0)
    {
        throw InvalidData(text("the offsets begin with ", data.offsets.front(), " instead of 0"));
    }
    for (std::size_t element = 0; element < elementCount; ++element)
    {
        const ElementKindInfo* kind = findElementKind(data.kinds[element]);
        if (kind == nullptr)
        {
            throw InvalidData(
                text("element ", element, " has the unknown type code ", static_cast<int>(data.kinds[element])));
        }
        const std::size_t begin = data.offsets[element];
        const std::size_t end = data.offsets[element + 1];
        if (end < begin || end > data.connectivity.size())
        {
            throw InvalidData(text("the offsets ", begin, " and ", end, " of element ", element,
                                   " do not delimit a part of the connectivity, which has ", data.connectivity.size(),
                                   " entries"));
        }
        if (end - begin != static_cast<std::size_t>(kind->nodeCount))
        {
            throw InvalidData(text("element ", element, " is a ", kind->name, " of ", end - begin, " nodes instead of ",
                                   kind->nodeCount));
        }
    }
    if (data.offsets.back() != data.connectivity.size())
    {
        throw InvalidData(text("the elements have ", data.offsets.back(), " nodes in all, but the connectivity has ",
                               data.connectivity.size(), " entries"));
    }
}

void checkNodeNumbers(const MeshData& data)
{
    const std::size_t nodeCount = data.coordinates.size() / 3;
    for (std::size_t element = 0; element < data.kinds.size(); ++element)
    {
        for (std::size_t i = data.offsets[element]; i < data.offsets[element + 1]; ++i)
        {
            const int node = data.connectivity[i];
            if (node < 0 || static_cast<std::size_t>(node) >= nodeCount)
            {
                throw InvalidData(text("element ", element, " refers to node ", node, ", but there are ", nodeCount,
                                       " nodes, counted from 0"));
            }
        }
    }
}

constexpr Stage stage{"checking", 0, 100};

bool isElementSound(const MeshData& data, std::size_t element)
{
    const ElementKindInfo* kind = findElementKind(data.kinds[element]);
    const std::size_t begin = data.offsets[element];
    const std::size_t end = data.offsets[element + 1];
    const auto isBelow = [](int number, std::size_t count)
    { return number >= 0 && static_cast<std::size_t>(number) < count; };
    if (kind == nullptr || end < begin || end > data.connectivity.size() ||
        end - begin != static_cast<std::size_t>(kind->nodeCount) ||
        !isBelow(data.materialPerElement[element], data.materials.size()))
    {
        return false;
    }
    const std::size_t nodeCount = data.coordinates.size() / 3;
    return std::all_of(data.connectivity.begin() + static_cast<std::ptrdiff_t>(begin),
                       data.connectivity.begin() + static_cast<std::ptrdiff_t>(end),
                       [&](int node) { return isBelow(node, nodeCount); });
}

/// Whether the checks above would let coordinates, elements and their materials pass.
bool isSound(const MeshData& data, ThreadWorkers& workers)
{
    const std::size_t elementCount = data.kinds.size();
    if (elementCount == 0 || elementCount > static_cast<std::size_t>(INT_MAX) ||
        data.coordinates.size() / 3 > static_cast<std::size_t>(INT_MAX) || data.coordinates.size() % 3 != 0 ||
        data.offsets.size() != elementCount + 1 || data.offsets.front() != 0 ||
        data.offsets.back() != data.connectivity.size() || data.materialPerElement.size() != elementCount ||
        std::ranges::find(data.materials, notAssigned, &Material::stateCode) != data.materials.end())
    {
        return false;
    }
    std::atomic<bool> areSound = true;
    const auto noteFault = [&](bool isSound)
    {
        if (!isSound)
        {
            areSound = false;
        }
    };
    forEachItem(workers, stage, static_cast<std::int64_t>(data.coordinates.size()),
                [&](std::int64_t i) { noteFault(std::isfinite(data.coordinates[static_cast<std::size_t>(i)])); });
    forEachItem(workers, stage, static_cast<std::int64_t>(elementCount),
                [&](std::int64_t element) { noteFault(isElementSound(data, static_cast<std::size_t>(element))); });
    return areSound;
}

} // namespace

void Box::add(const Box& box)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        min[axis] = std::min(min[axis], box.min[axis]);
        max[axis] = std::max(max[axis], box.max[axis]);
    }
}

float Box::size() const
{
    return std::max({max[0] - min[0], max[1] - min[1], max[2] - min[2]});
}

Mesh::Mesh(MeshData data, int threads, Extent extent) : data_(std::move(data))
{
    ThreadWorkers workers(threads);
    roundCoordinates(data_.coordinates, data_.exactCoordinates);
    if (!isSound(data_, workers))
    {
        checkCoordinates(data_.coordinates, "node");
        checkElements(data_, extent);
        checkNodeNumbers(data_);
        checkMaterials(data_.materials, data_.materialPerElement, data_.kinds.size(), "element");
    }
    nodesPerElement_.resize(data_.offsets.size());
    forEachItem(workers, stage, static_cast<std::int64_t>(nodesPerElement_.size()),
                [&](std::int64_t number)
                {
                    const auto i = static_cast<std::size_t>(number);
                    nodesPerElement_[i] = data_.connectivity.data() + data_.offsets[i];
                });
    data_.offsets = {};
}

Mesh::Mesh(const Mesh& other) : data_(other.data_), gaussPointRule_(other.gaussPointRule_)
{
    nodesPerElement_.reserve(other.nodesPerElement_.size());
    for (const int* nodes : other.nodesPerElement_)
    {
        nodesPerElement_.push_back(data_.connectivity.data() + (nodes - other.data_.connectivity.data()));
    }
}

Mesh& Mesh::operator=(Mesh other) noexcept
{
    std::swap(data_, other.data_);
    std::swap(nodesPerElement_, other.nodesPerElement_);
    std::swap(gaussPointRule_, other.gaussPointRule_);
    return *this;
}

const ElementKindInfo& Mesh::kindOf(int element) const
{
    return *findElementKind(data_.kinds[static_cast<std::size_t>(element)]);
}

std::size_t Mesh::gaussPointCount(GaussPointRule rule) const
{
    std::size_t count = 0;
    for (int element = 0; element < elementCount(); ++element)
    {
        count += static_cast<std::size_t>(kindOf(element).gaussPointCountOf(rule));
    }
    return count;
}

Box Mesh::boundingBox(const std::vector<bool>& selection, int threads) const
{
    ThreadWorkers workers(threads);
    const Pieces pieces = piecesFor(workers, elementCount());
    std::vector<Box> boxes(static_cast<std::size_t>(pieces.count()));
    const auto addPiece = [&](std::int64_t piece, int)
    {
        Box box;
        for (std::int64_t number = pieces.first(piece); number < pieces.end(piece); ++number)
        {
            const auto element = static_cast<int>(number);
            if (selection.empty() || selection[static_cast<std::size_t>(materialOf(element))])
            {
                for (const int node : nodesOf(element))
                {
                    box.add(nodePosition(node));
                }
            }
        }
        boxes[static_cast<std::size_t>(piece)] = box;
    };
    workers.run(stage, pieces.count(), addPiece);
    Box whole;
    for (const Box& box : boxes)
    {
        whole.add(box);
    }
    return whole;
}

void Mesh::setStateCodes(std::span<const int> codes)
{
    data_.materials = withStateCodes(data_.materials, codes);
}

void Mesh::setMaterials(std::vector<Material> materials, std::vector<int> materialPerElement)
{
    checkMaterials(materials, materialPerElement, data_.kinds.size(), "element");
    data_.materials = std::move(materials);
    data_.materialPerElement = std::move(materialPerElement);
}

PointCloud::PointCloud(std::vector<float> coordinates, std::vector<int> materialPerPoint,
                       std::vector<Material> materials)
    : PointCloud(std::move(coordinates), {}, std::move(materialPerPoint), std::move(materials))
{
}

PointCloud::PointCloud(std::vector<float> coordinates, std::vector<double> exactCoordinates,
                       std::vector<int> materialPerPoint, std::vector<Material> materials, Extent extent)
    : coordinates_(std::move(coordinates)), exactCoordinates_(std::move(exactCoordinates)),
      materialPerPoint_(std::move(materialPerPoint)), materials_(std::move(materials))
{
    roundCoordinates(coordinates_, exactCoordinates_);
    if (coordinates_.empty() && extent == Extent::whole)
    {
        throw InvalidData("there is no point");
    }
    checkCoordinates(coordinates_, "point");
    checkMaterials(materials_, materialPerPoint_, coordinates_.size() / 3, "point");
}

Box PointCloud::boundingBox() const
{
    Box box;
    for (std::size_t i = 0; i < coordinates_.size(); i += 3)
    {
        box.add(std::span(coordinates_).subspan(i).first<3>());
    }
    return box;
}

void PointCloud::setStateCodes(std::span<const int> codes)
{
    materials_ = withStateCodes(materials_, codes);
}

} // namespace veltrane
