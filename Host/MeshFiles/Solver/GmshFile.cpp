#include "GmshFile.h"

#include "GmshCells.h"
#include "GmshFields.h"
#include "GmshGroups.h"
#include "GmshNumbers.h"
#include "NodeNumbers.h"

#include <bit>
#include <cstdlib>
#include <utility>

namespace veltrane
{
namespace
{

static_assert(std::endian::native == std::endian::little);

class GmshParser
{
public:
    explicit GmshParser(const SourceText& source) : source_(source), numbers_(source) {}

    ParsedMesh run(std::optional<int> step)
    {
        takeFormat();
        while (takeSection())
        {
        }
        if (mesh_.nodeNumbers.empty())
        {
            source_.fail("it has no nodes");
        }
        if (mesh_.cellTypes.empty())
        {
            source_.fail("it has no elements");
        }
        if (!hasGroups_)
        {
            mesh_.materials.clear();
        }
        nameMaterials();
        takeGmshFields(sections_, numbers_, nodes_, step, mesh_);
        return std::move(mesh_);
    }

private:
    // Sections

    void takeFormat()
    {
        constexpr std::string_view first = "$MeshFormat";
        while (!numbers_.atEnd() && trimmed(source_.bytes().substr(offset())).starts_with("$Comments"))
        {
            numbers_.skipBehind("$EndComments", "$Comments");
        }
        if (numbers_.word() != first)
        {
            source_.fail("it is no mesh file of Gmsh, which begins with $MeshFormat");
        }
        const char* place = numbers_.place();
        const double version = numbers_.realOfText("the version of the format");
        isVersion4_ = version == 4.1;
        if (!isVersion4_ && !(version >= 2.0 && version < 3.0))
        {
            numbers_.fail(place, "tells of version ", version, "; save the mesh in version 4.1 or 2.2");
        }
        place = numbers_.place();
        const long long fileType = numbers_.integerOfText("the type of the file");
        const long long size = numbers_.integerOfText("the size of numbers");
        if (fileType < 0 || fileType > 1 || size != 8)
        {
            numbers_.fail(place, "tells of the type ", fileType, " and numbers of ", size,
                          " bytes, but there are types 0 and 1 and numbers of 8");
        }
        if (fileType == 1)
        {
            numbers_.skipLine();
            numbers_.setBinary();
            place = numbers_.place();
            if (numbers_.integer("the mark of the order of bytes") != 1)
            {
                numbers_.fail(place, "has numbers with the highest byte first, which cannot be read; "
                                     "save the mesh on this machine, or as text");
            }
        }
        numbers_.skipBehind("$EndMeshFormat", first);
    }

    std::size_t offset() const { return static_cast<std::size_t>(numbers_.place() - source_.begin()); }

    bool takeSection()
    {
        numbers_.skipBlanks();
        if (numbers_.atEnd())
        {
            return false;
        }
        const char* place = numbers_.place();
        const std::string name(numbers_.word());
        if (!name.starts_with('$') || name.starts_with("$End") || name.size() == 1)
        {
            source_.failAtLine(place, "has ", shown(name), " where a section should begin");
        }
        numbers_.skipLine();
        if (name == "$PhysicalNames")
        {
            groups_.takeNames();
        }
        else if (name == "$Entities" && isVersion4_)
        {
            groups_.takeEntities();
        }
        else if (name == "$PartitionedEntities" && isVersion4_)
        {
            groups_.takePartitionedEntities();
        }
        else if (name == "$Nodes")
        {
            isVersion4_ ? takeNodeBlocks() : takeNodes();
        }
        else if (name == "$Elements")
        {
            isVersion4_ ? takeElementBlocks() : takeElements();
        }
        else
        {
            sections_.push_back({name, numbers_.place()}); // fields are for later, others for nobody
            numbers_.skipBehind("$End" + name.substr(1), name);
            return true;
        }
        place = numbers_.place();
        const std::string_view end = numbers_.word();
        if (end.empty())
        {
            source_.fail(text("it ends within the section '", name, "'"));
        }
        if (end != "$End" + name.substr(1))
        {
            numbers_.fail(place, "has ", shown(end), " where the section '", name, "' should end");
        }
        return true;
    }

    /// Groups of volumes are the materials; those of surfaces have numbers of their own.
    void nameMaterials()
    {
        for (const auto& [group, name] : groups_.names())
        {
            if (group.first == dimension_)
            {
                mesh_.materialNames[group.second] = name;
            }
            else if (group.first < dimension_)
            {
                mesh_.lowerGroupNames[group] = name;
            }
        }
    }

    // Nodes

    void takePosition()
    {
        for (int axis = 0; axis < 3; ++axis)
        {
            mesh_.coordinates.push_back(numbers_.real("a coordinate"));
        }
    }

    void startNodes()
    {
        if (!mesh_.nodeNumbers.empty())
        {
            numbers_.fail(numbers_.place(), "begins a second section of nodes");
        }
    }

    void endNodes()
    {
        nodes_ = NodeNumbers(mesh_.nodeNumbers);
        if (nodes_.hasRepeated())
        {
            numbers_.fail(numbers_.place(), "ends a section in which two nodes have the same number");
        }
    }

    void takeNodes()
    {
        startNodes();
        const std::size_t count = numbers_.countOfText("the number of nodes", 4);
        if (numbers_.isBinary())
        {
            numbers_.skipLine();
        }
        mesh_.nodeNumbers.reserve(count);
        mesh_.coordinates.reserve(3 * count);
        for (std::size_t i = 0; i < count; ++i)
        {
            mesh_.nodeNumbers.push_back(numberOfNode(false));
            takePosition();
        }
        endNodes();
    }

    long long numberOfNode(bool isSize)
    {
        const char* place = numbers_.place();
        const long long number =
            isSize ? numbers_.size("the number of a node") : numbers_.integer("the number of a node");
        constexpr long long highest = 1LL << 60;
        if (number < 0 || number > highest)
        {
            numbers_.fail(place, "has the number ", number, " for a node");
        }
        return number;
    }

    void takeNodeBlocks()
    {
        startNodes();
        const std::size_t blockCount = numbers_.count("the number of blocks of nodes", true, 4);
        const std::size_t nodeCount = numbers_.count("the number of nodes", true, 4);
        numbers_.size("the lowest number of a node");
        numbers_.size("the highest number of a node");
        mesh_.nodeNumbers.reserve(nodeCount);
        mesh_.coordinates.reserve(3 * nodeCount);
        for (std::size_t block = 0; block < blockCount; ++block)
        {
            const long long dimension = numbers_.integer("the dimension of an entity");
            numbers_.integer("the number of an entity");
            const bool hasParameters = numbers_.integer("whether there are parameters") != 0;
            const std::size_t count = numbers_.count("the number of nodes in a block", true, 4);
            for (std::size_t i = 0; i < count; ++i)
            {
                mesh_.nodeNumbers.push_back(numberOfNode(true));
            }
            for (std::size_t i = 0; i < count; ++i)
            {
                takePosition();
                for (long long parameter = 0; hasParameters && parameter < std::min(dimension, 3LL); ++parameter)
                {
                    numbers_.real("a parameter of a node");
                }
            }
        }
        endNodes();
    }

    // Elements

    const CellOrder& orderOf(long long type, const char* place) const
    {
        const CellOrder* order = findOrder(gmsh::cellOrders, type);
        if (order == nullptr)
        {
            numbers_.fail(place, "tells of elements of type ", type,
                          ", which cannot be read; there are those of first and second order");
        }
        return *order;
    }

    void takeCell(const CellOrder& order, long long number, int dimension, int group, bool areSizes)
    {
        std::int64_t nodes[mostNodesPerCell];
        const auto nodeCount = static_cast<std::size_t>(order.nodeCount);
        for (std::size_t i = 0; i < nodeCount; ++i)
        {
            const char* place = numbers_.place();
            const long long node =
                areSizes ? numbers_.size("a node of an element") : numbers_.integer("a node of an element");
            nodes[i] = nodes_.placeOf(node);
            if (nodes[i] == NodeNumbers::missing)
            {
                numbers_.fail(place, "has node ", node, " of element ", number, ", which is not in the file");
            }
        }
        addInOrder(order, std::span<const std::int64_t>(nodes, nodeCount), mesh_.connectivity);
        if (isRepeated(order))
        {
            mesh_.connectivity.resize(static_cast<std::size_t>(mesh_.offsets.back()));
            return;
        }
        mesh_.offsets.push_back(static_cast<std::int64_t>(mesh_.connectivity.size()));
        mesh_.cellTypes.push_back(order.cellType);
        mesh_.cellNumbers.push_back(number);
        mesh_.materials.push_back(group);
        hasGroups_ = hasGroups_ || group != 0;
        dimension_ = std::max(dimension_, dimension);
    }

    /// Version 2 has an element once for each of its groups, one after the other.
    bool isRepeated(const CellOrder& order) const
    {
        if (isVersion4_ || mesh_.cellTypes.empty() || mesh_.cellTypes.back() != order.cellType)
        {
            return false;
        }
        const auto added = mesh_.connectivity.end() - order.nodeCount;
        return std::equal(added, mesh_.connectivity.end(), added - order.nodeCount);
    }

    void takeElementBlocks()
    {
        const std::size_t blockCount = numbers_.count("the number of blocks of elements", true, 4);
        const std::size_t elementCount = numbers_.count("the number of elements", true, 2);
        numbers_.size("the lowest number of an element");
        numbers_.size("the highest number of an element");
        reserve(elementCount);
        for (std::size_t block = 0; block < blockCount; ++block)
        {
            const int dimension = numbers_.tag("the dimension of an entity");
            const int entity = numbers_.tag("the number of an entity");
            const char* place = numbers_.place();
            const CellOrder& order = orderOf(numbers_.integer("the type of elements"), place);
            const auto numbersEach = static_cast<std::size_t>(order.nodeCount) + 1;
            const std::size_t count = numbers_.count("the number of elements in a block", true, numbersEach);
            const int group = groups_.groupOf({dimension, entity});
            for (std::size_t i = 0; i < count; ++i)
            {
                const long long number = numbers_.size("the number of an element");
                takeCell(order, number, dimension, group, true);
            }
        }
    }

    void takeElements()
    {
        const std::size_t count = numbers_.countOfText("the number of elements", 4);
        reserve(count);
        if (!numbers_.isBinary())
        {
            for (std::size_t i = 0; i < count; ++i)
            {
                const long long number = numbers_.integer("the number of an element");
                const char* place = numbers_.place();
                const CellOrder& order = orderOf(numbers_.integer("the type of an element"), place);
                const std::size_t tagCount = numbers_.count("the number of tags", false);
                takeTagsAndCell(order, number, tagCount);
            }
            return;
        }
        numbers_.skipLine();
        for (std::size_t done = 0; done < count;)
        {
            const char* place = numbers_.place();
            const CellOrder& order = orderOf(numbers_.integer("the type of elements"), place);
            const std::size_t blockSize = numbers_.count("the number of elements in a block", false, 2);
            const std::size_t tagCount = numbers_.count("the number of tags", false);
            if (blockSize == 0 || blockSize > count - done)
            {
                numbers_.fail(place, "begins ", blockSize, " elements, but there should be 1 to ", count - done);
            }
            for (std::size_t i = 0; i < blockSize; ++i)
            {
                const long long number = numbers_.integer("the number of an element");
                takeTagsAndCell(order, number, tagCount);
            }
            done += blockSize;
        }
    }

    /// The first tag is the group.
    void takeTagsAndCell(const CellOrder& order, long long number, std::size_t tagCount)
    {
        int group = 0;
        for (std::size_t tag = 0; tag < tagCount; ++tag)
        {
            const int value = numbers_.tag("a tag of an element");
            group = tag == 0 ? std::abs(value) : group;
        }
        takeCell(order, number, dimensionOf(order.cellType), group, false);
    }

    static int dimensionOf(unsigned char cellType)
    {
        switch (cellType)
        {
        case VTK_VERTEX: return 0;
        case VTK_LINE:
        case VTK_QUADRATIC_EDGE: return 1;
        case VTK_TRIANGLE:
        case VTK_QUAD:
        case VTK_QUADRATIC_TRIANGLE:
        case VTK_QUADRATIC_QUAD:
        case VTK_BIQUADRATIC_QUAD: return 2;
        default: return 3;
        }
    }

    void reserve(std::size_t count)
    {
        mesh_.cellTypes.reserve(count);
        mesh_.offsets.reserve(count + 1);
        mesh_.cellNumbers.reserve(count);
        mesh_.materials.reserve(count);
    }

    const SourceText& source_;
    GmshNumbers numbers_;
    bool isVersion4_ = false;
    ParsedMesh mesh_{};
    NodeNumbers nodes_{};
    GmshGroups groups_{numbers_};
    bool hasGroups_ = false;
    int dimension_ = 0; ///< the highest of an element
    std::vector<GmshSection> sections_{};
};

} // namespace

ParsedMesh parseGmsh(const SourceText& source, std::optional<int> step)
{
    return GmshParser(source).run(step);
}

} // namespace veltrane
