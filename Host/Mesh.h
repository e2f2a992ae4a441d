/// Owning meshes and point clouds, checked when they are built.
#ifndef VELTRANE_HOST_MESH_H
#define VELTRANE_HOST_MESH_H

#include "ElementKind.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace veltrane
{

/// A material of a mesh. Source and target are matched by state code: a target point takes values only from source
/// elements whose material has the code of its own material.
struct Material
{
    std::string name{}; ///< for messages and reports
    int stateCode = 0;  ///< any number but -1, which the library uses for "not assigned"
};

/// An axis-parallel box; empty, with its minimum above its maximum, until a point is added.
struct Box
{
    static constexpr float infinity = std::numeric_limits<float>::infinity();

    std::array<float, 3> min{infinity, infinity, infinity};
    std::array<float, 3> max{-infinity, -infinity, -infinity};

    /// Extends the box to a point.
    void add(std::span<const float, 3> point)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            min[axis] = std::min(min[axis], point[axis]);
            max[axis] = std::max(max[axis], point[axis]);
        }
    }
    void add(const Box& box);

    /// Its longest edge.
    float size() const;
};

/// What a mesh is made of. All numbers count from 0.
struct MeshData
{
    std::vector<float> coordinates{}; ///< x, y, z of each node, one node after another
    /// The same in double precision, instead of `coordinates` or along with them; empty where they are singles.
    std::vector<double> exactCoordinates{};
    std::vector<ElementKind> kinds{};   ///< one per element
    std::vector<std::size_t> offsets{}; ///< where each element's nodes begin in `connectivity`, and the end: one more
                                        ///< entry than there are elements
    std::vector<int> connectivity{};    ///< node numbers, element after element
    std::vector<int> materialPerElement{}; ///< one index into `materials` per element
    std::vector<Material> materials{};     ///< at least one
};

/// Whether a mesh or points are all that there is, and then not nothing, or part of something larger.
enum class Extent
{
    whole,
    part
};

/// A finite-element mesh in one piece that holds together: finite coordinates, known element kinds with as many nodes
/// as they need, node and material numbers in range. Only the materials and the rule of Gauss
/// points can change afterwards.
class Mesh
{
public:
    /// Throws InvalidData, naming what is wrong and where. The data are checked by so many threads; 0 are as many as
    /// usableThreadCount() tells.
    explicit Mesh(MeshData data, int threads = 1, Extent extent = Extent::whole);
    Mesh(MeshData data, Extent extent) : Mesh(std::move(data), 1, extent) {}
    Mesh(const Mesh& other);
    Mesh(Mesh&& other) noexcept = default;
    Mesh& operator=(Mesh other) noexcept;
    ~Mesh() = default;

    int nodeCount() const { return static_cast<int>(data_.coordinates.size() / 3); }
    int elementCount() const { return static_cast<int>(data_.kinds.size()); }

    const std::vector<float>& coordinates() const { return data_.coordinates; }
    /// In double precision; empty if coordinates() says it all.
    const std::vector<double>& exactCoordinates() const { return data_.exactCoordinates; }
    const std::vector<int>& connectivity() const { return data_.connectivity; }
    const std::vector<ElementKind>& kinds() const { return data_.kinds; }
    const std::vector<int>& materialPerElement() const { return data_.materialPerElement; }
    const std::vector<Material>& materials() const { return data_.materials; }

    const ElementKindInfo& kindOf(int element) const;
    std::span<const int> nodesOf(int element) const
    {
        const auto i = static_cast<std::size_t>(element);
        return {nodesPerElement_[i], nodesPerElement_[i + 1]};
    }
    /// Where each element's nodes begin in memory, and the end of all: one more entry than there are elements.
    const std::vector<const int*>& nodesPerElement() const { return nodesPerElement_; }
    std::span<const float, 3> nodePosition(int node) const
    {
        return std::span(data_.coordinates).subspan(static_cast<std::size_t>(node) * 3).first<3>();
    }

    /// An index into materials().
    int materialOf(int element) const { return data_.materialPerElement[static_cast<std::size_t>(element)]; }

    /// Gauss points of all elements: the number of rows of a Gauss-point field on this mesh. Fields on a source may be
    /// by either rule, which is told from their number of rows; those on a target are by the rule of its mesh.
    std::size_t gaussPointCount() const { return gaussPointCount(gaussPointRule_); }
    std::size_t gaussPointCount(GaussPointRule rule) const;
    GaussPointRule gaussPointRule() const { return gaussPointRule_; }
    void setGaussPointRule(GaussPointRule rule) { gaussPointRule_ = rule; }
    /// Gauss points of one element, by the mesh's rule.
    int gaussPointCountOf(int element) const { return kindOf(element).gaussPointCountOf(gaussPointRule_); }

    /// The box of the nodes that belong to elements, or to elements of the selected materials if there is a selection:
    /// one entry per material. Threads as above.
    Box boundingBox(const std::vector<bool>& selection = {}, int threads = 1) const;

    /// Gives every material its state code, in the order of the materials. Throws InvalidData.
    void setStateCodes(std::span<const int> codes);

    /// Divides the elements into other materials. Throws InvalidData.
    void setMaterials(std::vector<Material> materials, std::vector<int> materialPerElement);

private:
    MeshData data_; ///< without the offsets
    std::vector<const int*> nodesPerElement_;
    GaussPointRule gaussPointRule_ = GaussPointRule::full;
};

/// Points with materials, as a target. Points count from 0. Only the materials' state codes can change afterwards.
class PointCloud
{
public:
    /// Coordinates are x, y, z of each point. Throws InvalidData, naming what is wrong and where.
    PointCloud(std::vector<float> coordinates, std::vector<int> materialPerPoint, std::vector<Material> materials);
    /// Exact coordinates are as those of MeshData.
    PointCloud(std::vector<float> coordinates, std::vector<double> exactCoordinates, std::vector<int> materialPerPoint,
               std::vector<Material> materials, Extent extent = Extent::whole);

    int pointCount() const { return static_cast<int>(coordinates_.size() / 3); }
    const std::vector<float>& coordinates() const { return coordinates_; }
    /// In double precision; empty if coordinates() says it all.
    const std::vector<double>& exactCoordinates() const { return exactCoordinates_; }
    const std::vector<int>& materialPerPoint() const { return materialPerPoint_; }
    const std::vector<Material>& materials() const { return materials_; }

    Box boundingBox() const;

    /// As Mesh::setStateCodes().
    void setStateCodes(std::span<const int> codes);

private:
    std::vector<float> coordinates_;
    std::vector<double> exactCoordinates_;
    std::vector<int> materialPerPoint_;
    std::vector<Material> materials_;
};

} // namespace veltrane

#endif
