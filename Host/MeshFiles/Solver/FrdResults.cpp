#include "FrdResults.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace veltrane
{
namespace
{

constexpr std::size_t realsPerLine = 6;

} // namespace

void FrdResults::findBlock(std::string_view line)
{
    const auto [count, storage] = lines_.headingOf(line, "rows of results");
    const double time = lines_.realAt(line, 12, "the time of a step");
    const long long number = lines_.integerAt(line, 58, 5, "the number of a step");
    if (steps_.empty() || steps_.back().number != number || steps_.back().time != time)
    {
        steps_.push_back({number, time, {}});
    }
    Block block{.heading = line.data(), .storage = storage, .rowCount = count};
    lines_.skip(line);
    takeBlockHeading(block);
    block.values = lines_.place();
    skipValues(block);
    steps_.back().blocks.push_back(std::move(block));
}

std::vector<double> FrdResults::times() const
{
    std::vector<double> times;
    std::ranges::transform(steps_, std::back_inserter(times), &Step::time);
    return times;
}

void FrdResults::take(std::size_t step, const NodeNumbers& nodes, ParsedMesh& mesh)
{
    nodes_ = &nodes;
    mesh_ = &mesh;
    for (const Block& block : steps_[step].blocks)
    {
        takeField(block);
    }
}

/// The lines -4 and -5, which tell of a field and its components.
void FrdResults::takeBlockHeading(Block& block)
{
    constexpr std::size_t nameWidth = 8;
    std::string_view line = lines_.peek();
    if (!line.starts_with(" -4"))
    {
        lines_.source().failAtLine(lines_.place(), "should name a field and begin with -4");
    }
    block.name = trimmed(FrdLines::columns(line, 5, nameWidth));
    const long long announced = lines_.integerAt(line, 13, 5, "the number of components");
    const long long place = lines_.integerAt(line, 18, 5, "the place of the values");
    block.isAtNodes = place == 1 || place == 2;
    constexpr long long mostComponents = 50;
    if (announced < 1 || announced > mostComponents)
    {
        lines_.source().failAtLine(lines_.place(), "tells of ", announced, " components of '", block.name, "'");
    }
    lines_.skip(line);
    for (long long i = 0; i < announced; ++i)
    {
        line = lines_.peek();
        if (!line.starts_with(" -5"))
        {
            lines_.source().failAtLine(lines_.place(), "should name a component of '", block.name,
                                       "' and begin with -5");
        }
        const std::string_view isComputed = trimmed(FrdLines::columns(line, 33, 5));
        block.componentCount += isComputed.empty() || isComputed == "0" ? 1 : 0; // else made of the others
        lines_.skip(line);
    }
    if (block.componentCount == 0)
    {
        lines_.source().failAtLine(block.heading, "begins values of '", block.name, "', of which none is stored");
    }
}

void FrdResults::skipValues(const Block& block)
{
    if (FrdLines::isText(block.storage))
    {
        lines_.skipBlock(text("values of '", block.name, "'"));
        return;
    }
    const std::size_t rowSize =
        sizeof(std::int32_t) + static_cast<std::size_t>(block.componentCount) * FrdLines::realSize(block.storage);
    lines_.checkBytes(block.rowCount, rowSize, "rows of values");
    lines_.goTo(lines_.place() + static_cast<std::size_t>(block.rowCount) * rowSize);
}

void FrdResults::takeField(const Block& block)
{
    if (!block.isAtNodes)
    {
        mesh_->leftOut.push_back(text("the field '", block.name, "' at the nodes of elements"));
        return;
    }
    ParsedField& field = fieldOf(block);
    lines_.goTo(block.values);
    if (FrdLines::isText(block.storage))
    {
        takeTextValues(block, field);
    }
    else
    {
        takeBinaryValues(block, field);
    }
}

/// Values at other nodes may follow in a block of their own.
ParsedField& FrdResults::fieldOf(const Block& block)
{
    for (ParsedField& field : mesh_->fields)
    {
        if (field.name == block.name && field.componentCount == block.componentCount)
        {
            return field;
        }
    }
    const std::size_t size = mesh_->nodeNumbers.size() * static_cast<std::size_t>(block.componentCount);
    mesh_->fields.push_back(
        {block.name, block.componentCount, std::vector<double>(size, std::numeric_limits<double>::quiet_NaN())});
    return mesh_->fields.back();
}

double* FrdResults::rowOf(long long node, std::size_t& next, ParsedField& field) const
{
    // Nodes mostly come in the order of the mesh.
    const bool isNext = next < mesh_->nodeNumbers.size() && mesh_->nodeNumbers[next] == node;
    const std::int64_t place = isNext ? static_cast<std::int64_t>(next) : nodes_->placeOf(node);
    if (place == NodeNumbers::missing)
    {
        return nullptr;
    }
    next = static_cast<std::size_t>(place) + 1;
    return field.values.data() + static_cast<std::size_t>(place) * static_cast<std::size_t>(field.componentCount);
}

void FrdResults::takeTextValues(const Block& block, ParsedField& field)
{
    const std::size_t width = FrdLines::numberWidth(block.storage);
    const std::size_t first = FrdLines::keyWidth + width;
    const auto count = static_cast<std::size_t>(block.componentCount);
    const std::string what = text("values of '", block.name, "'");
    const std::string value = text("a value of '", block.name, "'");
    long long rowCount = 0;
    std::size_t next = 0;
    for (std::string_view line = lines_.peek(); lines_.takesRow(line, what); line = lines_.peek(), ++rowCount)
    {
        const long long node = lines_.integerAt(line, FrdLines::keyWidth, width, "the number of a node");
        double* row = rowOf(node, next, field);
        if (row == nullptr)
        {
            lines_.source().failAtLine(lines_.place(), "has values at node ", node, ", which is not in the file");
        }
        for (std::size_t i = 0; i < count; ++i)
        {
            if (i > 0 && i % realsPerLine == 0)
            {
                lines_.skip(line);
                line = lines_.peek();
                if (!line.starts_with(" -2"))
                {
                    lines_.source().failAtLine(lines_.place(), "should have more ", what, " and begin with -2");
                }
            }
            row[i] = lines_.realAt(line, first + i % realsPerLine * FrdLines::realWidth, value);
        }
        lines_.skip(line);
    }
    lines_.checkCount(rowCount, block.rowCount, block.heading, "rows of results");
}

void FrdResults::takeBinaryValues(const Block& block, ParsedField& field)
{
    std::size_t next = 0;
    for (long long i = 0; i < block.rowCount; ++i)
    {
        const char* place = lines_.place();
        const auto node = lines_.takeBinary<std::int32_t>();
        double* row = rowOf(node, next, field);
        if (row == nullptr)
        {
            lines_.source().failAtByte(place, "begins values at node ", node, ", which is not in the file");
        }
        for (int component = 0; component < block.componentCount; ++component)
        {
            row[component] = lines_.takeBinaryReal(block.storage);
        }
    }
}

} // namespace veltrane
