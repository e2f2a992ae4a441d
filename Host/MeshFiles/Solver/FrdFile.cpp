#include "FrdFile.h"

#include "CellOrders.h"
#include "NodeNumbers.h"
#include "NumberText.h"

#include <vtkCellType.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace veltrane
{
namespace
{

static_assert(std::endian::native == std::endian::little, "blocks of binary numbers have the lowest byte first");

constexpr std::array<std::int8_t, 3> straight3{0, 1, 2};
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
    CellOrder{12, VTK_QUADRATIC_EDGE, 3, straight3},
};

/// Of the numbers in a block.
enum class Storage
{
    shortText = 0, ///< numbers of nodes and elements in 5 columns
    longText = 1,  ///< in 10 columns
    floats = 2,
    doubles = 3
};

bool isText(Storage storage)
{
    return storage == Storage::shortText || storage == Storage::longText;
}

std::size_t numberWidth(Storage storage)
{
    return storage == Storage::shortText ? 5 : 10;
}

constexpr std::size_t keyWidth = 3; ///< of " -1" in front of a line of values
constexpr std::size_t realWidth = 12;
constexpr std::size_t realsPerLine = 6;

/// A block of results.
struct Block
{
    const char* heading;
    Storage storage;
    long long rowCount;
    std::string name;
    int componentCount; ///< of those that are stored
    bool isAtNodes;
    const char* values; ///< where they begin
};

struct StepBlocks
{
    long long number;
    double time;
    std::vector<Block> blocks;
};

class FrdParser
{
public:
    explicit FrdParser(const SourceText& source) : source_(source), at_(source.begin()) {}

    ParsedMesh run(std::optional<int> step)
    {
        takeRecords();
        if (mesh_.nodeNumbers.empty())
        {
            source_.fail("it has no block of nodes");
        }
        for (const StepBlocks& blocks : steps_)
        {
            mesh_.times.push_back(blocks.time);
        }
        const int last = static_cast<int>(steps_.size()) - 1;
        const int wanted = step.value_or(last);
        if (wanted >= 0 && wanted <= last)
        {
            for (const Block& block : steps_[static_cast<std::size_t>(wanted)].blocks)
            {
                takeField(block);
            }
        }
        tidyMaterials();
        return std::move(mesh_);
    }

private:
    // Lines

    bool atEnd() const { return at_ == source_.end(); }

    std::string_view peekLine() const
    {
        const auto rest = static_cast<std::size_t>(source_.end() - at_);
        const auto* end = static_cast<const char*>(std::memchr(at_, '\n', rest));
        std::size_t length = end == nullptr ? rest : static_cast<std::size_t>(end - at_);
        if (length > 0 && at_[length - 1] == '\r')
        {
            --length;
        }
        return {at_, length};
    }

    void skip(std::string_view line)
    {
        at_ = line.data() + line.size();
        at_ += at_ != source_.end() && *at_ == '\r' ? 1 : 0;
        at_ += at_ != source_.end() ? 1 : 0;
    }

    static std::string_view columns(std::string_view line, std::size_t begin, std::size_t width)
    {
        return begin < line.size() ? line.substr(begin, width) : std::string_view();
    }

    long long integerAt(std::string_view line, std::size_t begin, std::size_t width, std::string_view what) const
    {
        const std::string_view piece = columns(line, begin, width);
        const char* at = piece.data();
        const char* end = at + piece.size();
        while (at != end && *at == ' ')
        {
            ++at;
        }
        long long value = 0;
        if (!takeInteger(at, end, value) || (at != end && !trimmed({at, end}).empty()))
        {
            source_.failAtLine(line.data(), "has ", shown(piece), " where ", what, " should be");
        }
        return value;
    }

    double realAt(std::string_view line, std::size_t begin, std::string_view what) const
    {
        const std::string_view piece = columns(line, begin, realWidth);
        const char* at = piece.data();
        const char* end = at + piece.size();
        while (at != end && *at == ' ')
        {
            ++at;
        }
        double value = 0;
        if (!takeReal(at, end, value) || (at != end && !trimmed({at, end}).empty()))
        {
            source_.failAtLine(line.data(), "has ", shown(piece), " where ", what, " should be");
        }
        return value;
    }

    /// A number of a node or an element, within what can be counted.
    long long numberAt(std::string_view line, std::size_t begin, std::size_t width, std::string_view what) const
    {
        return integerAt(line, begin, width, what); // of ten digits at most
    }

    // Records

    void takeRecords()
    {
        while (!atEnd())
        {
            const std::string_view line = peekLine();
            const std::string_view key = trimmed(columns(line, 0, 6));
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
                takeResults(line);
            }
            else if (key.starts_with("1"))
            {
                takeRemark(line);
            }
            else
            {
                source_.failAtLine(at_, "begins with ", shown(key), ", which no part of a result file does");
            }
        }
        if (steps_.empty() && mesh_.nodeNumbers.empty())
        {
            return;
        }
        source_.fail("it ends without its last line, 9999");
    }

    /// Names of materials are among the remarks.
    void takeRemark(std::string_view line)
    {
        const std::string_view word = trimmed(columns(line, 0, 10));
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
        skip(line);
    }

    struct Heading
    {
        long long count;
        Storage storage;
    };

    Heading headingOf(std::string_view line, std::size_t storageColumn, std::string_view what) const
    {
        const long long count = integerAt(line, 24, 12, text("the number of ", what));
        const long long storage = integerAt(line, storageColumn, 2, "the format of a block");
        if (storage < 0 || storage > 3)
        {
            source_.failAtLine(line.data(), "tells of a format ", storage, ", but there are the formats 0 to 3");
        }
        const auto rest = source_.end() - at_;
        if (count < 0 || count > rest / 8)
        {
            source_.failAtLine(line.data(), "tells of ", count, " ", what, ", more than the file has room for");
        }
        return {count, static_cast<Storage>(storage)};
    }

    /// Whether a line of a block follows, and not its end.
    bool takesRow(std::string_view line, std::string_view what)
    {
        if (line.starts_with(" -1"))
        {
            return true;
        }
        if (line.starts_with(" -3"))
        {
            skip(line);
            return false;
        }
        if (atEnd())
        {
            source_.fail(text("it ends within the ", what));
        }
        source_.failAtLine(at_, "begins with ", shown(columns(line, 0, keyWidth)), " among the ", what);
    }

    void checkCount(long long found, long long announced, const char* heading, std::string_view what) const
    {
        if (found != announced)
        {
            source_.failAtLine(heading, "tells of ", announced, " ", what, ", but ", found, " follow");
        }
    }

    /// A value of a binary block, whose bytes have been counted.
    template <typename Number> Number takeBinary()
    {
        Number value{};
        std::memcpy(&value, at_, sizeof value);
        at_ += sizeof value;
        return value;
    }

    double takeBinaryReal(Storage storage)
    {
        return storage == Storage::floats ? static_cast<double>(takeBinary<float>()) : takeBinary<double>();
    }

    void checkBytes(long long count, std::size_t each, std::string_view what) const
    {
        const auto rest = static_cast<unsigned long long>(source_.end() - at_);
        if (static_cast<unsigned long long>(count) > rest / each)
        {
            source_.failAtByte(at_, "begins ", count, " ", what, ", but the file ends before them");
        }
    }

    // The mesh

    void takeNodes(std::string_view line)
    {
        const auto [count, storage] = headingOf(line, 73, "nodes");
        const char* heading = line.data();
        if (!mesh_.nodeNumbers.empty())
        {
            source_.failAtLine(heading, "begins a second block of nodes");
        }
        skip(line);
        mesh_.nodeNumbers.reserve(static_cast<std::size_t>(count));
        mesh_.coordinates.reserve(3 * static_cast<std::size_t>(count));
        if (isText(storage))
        {
            const std::size_t width = numberWidth(storage);
            for (line = peekLine(); takesRow(line, "nodes"); line = peekLine())
            {
                mesh_.nodeNumbers.push_back(numberAt(line, keyWidth, width, "the number of a node"));
                for (std::size_t axis = 0; axis < 3; ++axis)
                {
                    mesh_.coordinates.push_back(realAt(line, keyWidth + width + axis * realWidth, "a coordinate"));
                }
                skip(line);
            }
        }
        else
        {
            checkBytes(count, sizeof(std::int32_t) + 3 * (storage == Storage::floats ? 4 : 8), "nodes");
            for (long long i = 0; i < count; ++i)
            {
                mesh_.nodeNumbers.push_back(takeBinary<std::int32_t>());
                for (int axis = 0; axis < 3; ++axis)
                {
                    mesh_.coordinates.push_back(takeBinaryReal(storage));
                }
            }
        }
        checkCount(static_cast<long long>(mesh_.nodeNumbers.size()), count, heading, "nodes");
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
        const auto [count, storage] = headingOf(line, 73, "elements");
        const char* heading = line.data();
        skip(line);
        const std::size_t before = mesh_.cellTypes.size();
        if (isText(storage))
        {
            for (line = peekLine(); takesRow(line, "elements"); line = peekLine())
            {
                takeElement(line, numberWidth(storage));
            }
        }
        else
        {
            takeBinaryElements(count);
        }
        checkCount(static_cast<long long>(mesh_.cellTypes.size() - before), count, heading, "elements");
    }

    void takeElement(std::string_view line, std::size_t width)
    {
        constexpr std::size_t tagWidth = 5;
        const long long number = numberAt(line, keyWidth, width, "the number of an element");
        const std::size_t tags = keyWidth + width;
        const CellOrder& order = orderOf(integerAt(line, tags, tagWidth, "the type of an element"), line.data());
        const long long material = integerAt(line, tags + 2 * tagWidth, tagWidth, "the material of an element");
        skip(line);
        const std::size_t perLine = width == 5 ? 15 : 10;
        std::array<std::int64_t, mostNodesPerCell> nodes{};
        const auto nodeCount = static_cast<std::size_t>(order.nodeCount);
        for (std::size_t i = 0; i < nodeCount; ++i)
        {
            if (i % perLine == 0)
            {
                if (i > 0)
                {
                    skip(line);
                }
                line = peekLine();
                if (!line.starts_with(" -2"))
                {
                    source_.failAtLine(at_, "should have nodes of element ", number, " and begin with -2");
                }
            }
            const long long node = numberAt(line, keyWidth + i % perLine * width, width, "the number of a node");
            nodes[i] = nodes_.placeOf(node);
            if (nodes[i] == NodeNumbers::missing)
            {
                source_.failAtLine(line.data(), "has node ", node, " of element ", number, ", which is not in the file");
            }
        }
        skip(line);
        addCell(order, number, material, {nodes.data(), nodeCount});
    }

    void takeBinaryElements(long long count)
    {
        for (long long i = 0; i < count; ++i)
        {
            checkBytes(4, sizeof(std::int32_t), "numbers of an element");
            const char* place = at_;
            const auto number = takeBinary<std::int32_t>();
            const auto type = takeBinary<std::int32_t>();
            takeBinary<std::int32_t>();
            const auto material = takeBinary<std::int32_t>();
            const CellOrder* order = findOrder(cellOrders, type);
            if (order == nullptr)
            {
                source_.failAtByte(place, "begins an element of type ", type, ", but there are the types 1 to 12");
            }
            checkBytes(order->nodeCount, sizeof(std::int32_t), "nodes of an element");
            std::array<std::int64_t, mostNodesPerCell> nodes{};
            const auto nodeCount = static_cast<std::size_t>(order->nodeCount);
            for (std::size_t k = 0; k < nodeCount; ++k)
            {
                const auto node = takeBinary<std::int32_t>();
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

    // Results

    void takeResults(std::string_view line)
    {
        const auto [count, storage] = headingOf(line, 73, "rows of results");
        const char* heading = line.data();
        const double time = realAt(line, 12, "the time of a step");
        const long long number = integerAt(line, 58, 5, "the number of a step");
        if (steps_.empty() || steps_.back().number != number || steps_.back().time != time)
        {
            steps_.push_back({number, time, {}});
        }
        skip(line);
        Block block{heading, storage, count, "", 0, true, nullptr};
        takeBlockHeading(block);
        block.values = at_;
        skipValues(block);
        steps_.back().blocks.push_back(std::move(block));
    }

    /// The lines -4 and -5, which tell of a field and its components.
    void takeBlockHeading(Block& block)
    {
        constexpr std::size_t nameWidth = 8;
        std::string_view line = peekLine();
        if (!line.starts_with(" -4"))
        {
            source_.failAtLine(at_, "should name a field and begin with -4");
        }
        block.name = trimmed(columns(line, 5, nameWidth));
        const long long announced = integerAt(line, 13, 5, "the number of components");
        const long long place = integerAt(line, 18, 5, "the place of the values");
        block.isAtNodes = place == 1 || place == 2;
        constexpr long long mostComponents = 1000;
        if (announced < 1 || announced > mostComponents)
        {
            source_.failAtLine(at_, "tells of ", announced, " components of '", block.name, "'");
        }
        skip(line);
        for (long long i = 0; i < announced; ++i)
        {
            line = peekLine();
            if (!line.starts_with(" -5"))
            {
                source_.failAtLine(at_, "should name a component of '", block.name, "' and begin with -5");
            }
            const std::string_view isComputed = trimmed(columns(line, 33, 5));
            block.componentCount += isComputed.empty() || isComputed == "0" ? 1 : 0; // else made of the others
            skip(line);
        }
        if (block.componentCount == 0)
        {
            source_.failAtLine(block.heading, "begins values of '", block.name, "', of which none is stored");
        }
    }

    void skipValues(const Block& block)
    {
        if (!isText(block.storage))
        {
            const std::size_t realSize = block.storage == Storage::floats ? 4 : 8;
            const std::size_t rowSize =
                sizeof(std::int32_t) + static_cast<std::size_t>(block.componentCount) * realSize;
            checkBytes(block.rowCount, rowSize, "rows of values");
            at_ += static_cast<std::ptrdiff_t>(static_cast<std::size_t>(block.rowCount) * rowSize);
            return;
        }
        const auto begin = static_cast<std::size_t>(at_ - source_.begin());
        // The end may come at once, behind the line break before it.
        const std::size_t end = source_.bytes().find("\n -3", begin > 0 ? begin - 1 : 0);
        if (end == std::string_view::npos)
        {
            source_.fail(text("it ends within the values of '", block.name, "'"));
        }
        at_ = source_.begin() + end + 1;
        skip(peekLine());
    }

    ParsedField& fieldOf(const Block& block)
    {
        for (ParsedField& field : mesh_.fields)
        {
            if (field.name == block.name && field.componentCount == block.componentCount)
            {
                return field;
            }
        }
        const std::size_t size = mesh_.nodeNumbers.size() * static_cast<std::size_t>(block.componentCount);
        mesh_.fields.push_back({block.name, block.componentCount,
                                std::vector<double>(size, std::numeric_limits<double>::quiet_NaN())});
        return mesh_.fields.back();
    }

    void takeField(const Block& block)
    {
        if (!block.isAtNodes)
        {
            mesh_.leftOut.push_back(text("the field '", block.name, "' at the nodes of elements"));
            return;
        }
        const auto size = static_cast<unsigned long long>(mesh_.nodeNumbers.size()) *
                          static_cast<unsigned long long>(block.componentCount);
        if (size > source_.bytes().size() && block.rowCount > 0 && !mesh_.nodeNumbers.empty() &&
            static_cast<unsigned long long>(block.componentCount) > 100)
        {
            source_.failAtLine(block.heading, "begins values of ", block.componentCount, " components");
        }
        ParsedField& field = fieldOf(block);
        at_ = block.values;
        if (isText(block.storage))
        {
            takeTextValues(block, field);
        }
        else
        {
            takeBinaryValues(block, field);
        }
    }

    double* rowOf(long long node, std::size_t& next, ParsedField& field) const
    {
        // Nodes mostly come in the order of the mesh.
        const bool isNext = next < mesh_.nodeNumbers.size() && mesh_.nodeNumbers[next] == node;
        const std::int64_t place = isNext ? static_cast<std::int64_t>(next) : nodes_.placeOf(node);
        if (place == NodeNumbers::missing)
        {
            return nullptr;
        }
        next = static_cast<std::size_t>(place) + 1;
        return field.values.data() + static_cast<std::size_t>(place) * static_cast<std::size_t>(field.componentCount);
    }

    void takeTextValues(const Block& block, ParsedField& field)
    {
        const std::size_t width = numberWidth(block.storage);
        const std::size_t first = keyWidth + width;
        const auto count = static_cast<std::size_t>(block.componentCount);
        const std::string what = text("values of '", block.name, "'");
        const std::string value = text("a value of '", block.name, "'");
        long long rowCount = 0;
        std::size_t next = 0;
        for (std::string_view line = peekLine(); takesRow(line, what); line = peekLine(), ++rowCount)
        {
            const long long node = numberAt(line, keyWidth, width, "the number of a node");
            double* row = rowOf(node, next, field);
            if (row == nullptr)
            {
                source_.failAtLine(at_, "has values at node ", node, ", which is not in the file");
            }
            for (std::size_t i = 0; i < count; ++i)
            {
                if (i > 0 && i % realsPerLine == 0)
                {
                    skip(line);
                    line = peekLine();
                    if (!line.starts_with(" -2"))
                    {
                        source_.failAtLine(at_, "should have more ", what, " and begin with -2");
                    }
                }
                row[i] = realAt(line, first + i % realsPerLine * realWidth, value);
            }
            skip(line);
        }
        checkCount(rowCount, block.rowCount, block.heading, "rows of results");
    }

    void takeBinaryValues(const Block& block, ParsedField& field)
    {
        std::size_t next = 0;
        for (long long i = 0; i < block.rowCount; ++i)
        {
            const char* place = at_;
            const auto node = takeBinary<std::int32_t>();
            double* row = rowOf(node, next, field);
            if (row == nullptr)
            {
                source_.failAtByte(place, "begins values at node ", node, ", which is not in the file");
            }
            for (int component = 0; component < block.componentCount; ++component)
            {
                row[component] = takeBinaryReal(block.storage);
            }
        }
    }

    const SourceText& source_;
    const char* at_;
    ParsedMesh mesh_{};
    NodeNumbers nodes_{};
    std::vector<StepBlocks> steps_{};
};

} // namespace

ParsedMesh parseFrd(const SourceText& source, std::optional<int> step)
{
    return FrdParser(source).run(step);
}

} // namespace veltrane
