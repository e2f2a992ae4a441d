#include "FrdFile.h"

#include "CellOrders.h"
#include "FrdLines.h"
#include "FrdResults.h"
#include "NodeNumbers.h"
#include "NumberText.h"

#include <vtkCellType.h>

#include <algorithm>
#include <array>
#include <functional>
#include <limits>

namespace veltrane
{
namespace
{

constexpr std::array cellOrders{
    CellOrder{1, VTK_HEXAHEDRON, 8},
    CellOrder{2, VTK_WEDGE, 6},
    CellOrder{3, VTK_TETRA, 4},
    CellOrder{4, VTK_QUADRATIC_HEXAHEDRON, 20, hexahedronEdgesAcrossFirst},
    CellOrder{5, VTK_QUADRATIC_WEDGE, 15, wedgeEdgesAcrossFirst},
    CellOrder{6, VTK_QUADRATIC_TETRA, 10},
    CellOrder{7, VTK_TRIANGLE, 3},
    CellOrder{8, VTK_QUADRATIC_TRIANGLE, 6},
    CellOrder{9, VTK_QUAD, 4},
    CellOrder{10, VTK_QUADRATIC_QUAD, 8},
    CellOrder{11, VTK_LINE, 2},
    CellOrder{12, VTK_QUADRATIC_EDGE, 3},
};

class FrdParser
{
public:
    explicit FrdParser(const SourceText& source) : source_(source), lines_(source) {}

    ParsedMesh run(std::optional<int> step)
    {
        takeRecords();
        if (mesh_.nodeNumbers.empty())
        {
            source_.fail("it has no block of nodes");
        }
        mesh_.times = results_.times();
        const int last = static_cast<int>(mesh_.times.size()) - 1;
        const int wanted = step.value_or(last);
        if (wanted >= 0 && wanted <= last)
        {
            results_.take(static_cast<std::size_t>(wanted), nodes_, mesh_);
        }
        tidyMaterials();
        return std::move(mesh_);
    }

private:
    // Records

    void takeRecords()
    {
        while (!lines_.atEnd())
        {
            const std::string_view line = lines_.peek();
            const std::string_view key = trimmed(FrdLines::columns(line, 0, 6));
            if (key == "9999")
            {
                return;
            }
            if (key == "2C")
            {
                takeNodes(line);
            }
            else if (key == "3C")
            {
                takeElements(line);
            }
            else if (key == "100C")
            {
                results_.findBlock(line);
            }
            else if (key.starts_with("1"))
            {
                takeRemark(line);
            }
            else
            {
                source_.failAtLine(lines_.place(), "begins with ", shown(key), ", which no part of a result file does");
            }
        }
        if (!mesh_.nodeNumbers.empty())
        {
            source_.fail("it ends without its last line, 9999");
        }
    }

    /// Names of materials are among the remarks.
    void takeRemark(std::string_view line)
    {
        const std::string_view word = trimmed(FrdLines::columns(line, 0, 10));
        if (word.starts_with("1UMAT") && line.size() > 15)
        {
            const std::string_view rest = trimmed(line.substr(9));
            const char* at = rest.data();
            const char* end = at + rest.size();
            long long number = 0;
            if (takeInteger(at, end, number) && number > 0 && number <= std::numeric_limits<int>::max())
            {
                mesh_.materialNames[static_cast<int>(number)] = trimmed({at, end});
            }
        }
        lines_.skip(line);
    }

    // The mesh

    void takeNodes(std::string_view line)
    {
        const auto [count, storage] = lines_.headingOf(line, "nodes");
        const char* heading = line.data();
        if (!mesh_.nodeNumbers.empty())
        {
            source_.failAtLine(heading, "begins a second block of nodes");
        }
        lines_.skip(line);
        mesh_.nodeNumbers.reserve(static_cast<std::size_t>(count));
        mesh_.coordinates.reserve(3 * static_cast<std::size_t>(count));
        if (FrdLines::isText(storage))
        {
            const std::size_t width = FrdLines::numberWidth(storage);
            for (line = lines_.peek(); lines_.takesRow(line, "nodes"); line = lines_.peek())
            {
                mesh_.nodeNumbers.push_back(lines_.integerAt(line, FrdLines::keyWidth, width, "the number of a node"));
                for (std::size_t axis = 0; axis < 3; ++axis)
                {
                    mesh_.coordinates.push_back(
                        lines_.realAt(line, FrdLines::keyWidth + width + axis * FrdLines::realWidth, "a coordinate"));
                }
                lines_.skip(line);
            }
        }
        else
        {
            lines_.checkBytes(count, sizeof(std::int32_t) + 3 * FrdLines::realSize(storage), "nodes");
            for (long long i = 0; i < count; ++i)
            {
                mesh_.nodeNumbers.push_back(lines_.takeBinary<std::int32_t>());
                for (int axis = 0; axis < 3; ++axis)
                {
                    mesh_.coordinates.push_back(lines_.takeBinaryReal(storage));
                }
            }
        }
        lines_.checkCount(static_cast<long long>(mesh_.nodeNumbers.size()), count, heading, "nodes");
        nodes_ = NodeNumbers(mesh_.nodeNumbers);
        if (nodes_.hasRepeated())
        {
            source_.failAtLine(heading, "begins a block in which two nodes have the same number");
        }
    }

    const CellOrder& orderOf(long long type, const char* place) const
    {
        const CellOrder* order = findOrder(cellOrders, type);
        if (order == nullptr)
        {
            source_.failAtLine(place, "tells of an element of type ", type, ", but there are the types 1 to 12");
        }
        return *order;
    }

    void takeElements(std::string_view line)
    {
        const auto [count, storage] = lines_.headingOf(line, "elements");
        const char* heading = line.data();
        lines_.skip(line);
        const std::size_t before = mesh_.cellTypes.size();
        if (FrdLines::isText(storage))
        {
            for (line = lines_.peek(); lines_.takesRow(line, "elements"); line = lines_.peek())
            {
                takeElement(line, FrdLines::numberWidth(storage));
            }
        }
        else
        {
            takeBinaryElements(count);
        }
        lines_.checkCount(static_cast<long long>(mesh_.cellTypes.size() - before), count, heading, "elements");
    }

    void takeElement(std::string_view line, std::size_t width)
    {
        constexpr std::size_t tagWidth = 5;
        const long long number = lines_.integerAt(line, FrdLines::keyWidth, width, "the number of an element");
        const std::size_t tags = FrdLines::keyWidth + width;
        const CellOrder& order = orderOf(lines_.integerAt(line, tags, tagWidth, "the type of an element"), line.data());
        const long long material = lines_.integerAt(line, tags + 2 * tagWidth, tagWidth, "the material of an element");
        lines_.skip(line);
        const std::size_t perLine = width == 5 ? 15 : 10;
        std::array<std::int64_t, mostNodesPerCell> nodes{};
        const auto nodeCount = static_cast<std::size_t>(order.nodeCount);
        for (std::size_t i = 0; i < nodeCount; ++i)
        {
            if (i % perLine == 0)
            {
                if (i > 0)
                {
                    lines_.skip(line);
                }
                line = lines_.peek();
                if (!line.starts_with(" -2"))
                {
                    source_.failAtLine(lines_.place(), "should have nodes of element ", number, " and begin with -2");
                }
            }
            const long long node =
                lines_.integerAt(line, FrdLines::keyWidth + i % perLine * width, width, "the number of a node");
            nodes[i] = nodes_.placeOf(node);
            if (nodes[i] == NodeNumbers::missing)
            {
                source_.failAtLine(line.data(), "has node ", node, " of element ", number,
                                   ", which is not in the file");
            }
        }
        lines_.skip(line);
        addCell(order, number, material, {nodes.data(), nodeCount});
    }

    void takeBinaryElements(long long count)
    {
        for (long long i = 0; i < count; ++i)
        {
            lines_.checkBytes(4, sizeof(std::int32_t), "numbers of an element");
            const char* place = lines_.place();
            const auto number = lines_.takeBinary<std::int32_t>();
            const auto type = lines_.takeBinary<std::int32_t>();
            lines_.takeBinary<std::int32_t>();
            const auto material = lines_.takeBinary<std::int32_t>();
            const CellOrder* order = findOrder(cellOrders, type);
            if (order == nullptr)
            {
                source_.failAtByte(place, "begins an element of type ", type, ", but there are the types 1 to 12");
            }
            lines_.checkBytes(order->nodeCount, sizeof(std::int32_t), "nodes of an element");
            std::array<std::int64_t, mostNodesPerCell> nodes{};
            const auto nodeCount = static_cast<std::size_t>(order->nodeCount);
            for (std::size_t k = 0; k < nodeCount; ++k)
            {
                const auto node = lines_.takeBinary<std::int32_t>();
                nodes[k] = nodes_.placeOf(node);
                if (nodes[k] == NodeNumbers::missing)
                {
                    source_.failAtByte(place, "begins element ", number, " with node ", node,
                                       ", which is not in the file");
                }
            }
            addCell(*order, number, material, {nodes.data(), nodeCount});
        }
    }

    void addCell(const CellOrder& order, long long number, long long material, std::span<const std::int64_t> nodes)
    {
        addInOrder(order, nodes, mesh_.connectivity);
        mesh_.offsets.push_back(static_cast<std::int64_t>(mesh_.connectivity.size()));
        mesh_.cellTypes.push_back(order.cellType);
        mesh_.cellNumbers.push_back(number);
        mesh_.materials.push_back(static_cast<int>(material));
    }

    /// Programs that do not tell materials apart write the same for all elements.
    void tidyMaterials()
    {
        const bool areNamed = !mesh_.materialNames.empty();
        const bool areAlike = std::ranges::adjacent_find(mesh_.materials, std::not_equal_to()) == mesh_.materials.end();
        if (areAlike && !areNamed)
        {
            mesh_.materials.clear();
        }
    }

    const SourceText& source_;
    FrdLines lines_;
    ParsedMesh mesh_{};
    NodeNumbers nodes_{};
    FrdResults results_{lines_};
};

} // namespace

ParsedMesh parseFrd(const SourceText& source, std::optional<int> step)
{
    return FrdParser(source).run(step);
}

} // namespace veltrane
