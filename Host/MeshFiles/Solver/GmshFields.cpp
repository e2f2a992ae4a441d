#include "GmshFields.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace veltrane
{
namespace
{

/// What a section of values says about them.
struct Heading
{
    std::string name;
    double time = 0;
    long long step = 0;
    int componentCount = 1;
    std::size_t rowCount = 0;
    bool isPerCell = false;
    const char* values = nullptr;

    bool isOfStepOf(const Heading& other) const { return step == other.step && time == other.time; }
};

bool hasValuesOf(const GmshSection& section)
{
    return section.name == "$NodeData" || section.name == "$ElementData" || section.name == "$ElementNodeData";
}

/// The tags are text even in binary files.
class HeadingReader
{
public:
    HeadingReader(GmshNumbers& numbers, ParsedMesh& mesh) : numbers_(numbers), mesh_(mesh) {}

    /// Nothing of fields that have no place in a mesh.
    std::optional<Heading> take(const GmshSection& section)
    {
        numbers_.goTo(section.begin);
        Heading heading;
        heading.isPerCell = section.name == "$ElementData";
        const std::size_t texts = numbers_.countOfText("the number of texts");
        for (std::size_t i = 0; i < texts; ++i)
        {
            const std::string_view value = numbers_.quotedText();
            heading.name = i == 0 ? std::string(value) : heading.name;
        }
        const std::size_t reals = numbers_.countOfText("the number of real tags");
        for (std::size_t i = 0; i < reals; ++i)
        {
            const double value = numbers_.realOfText("a real tag");
            heading.time = i == 0 ? value : heading.time;
        }
        const char* place = numbers_.place();
        const std::size_t integers = numbers_.countOfText("the number of whole tags");
        if (integers < 3)
        {
            numbers_.source().failAtLine(place, "should tell of at least 3 whole tags of '", heading.name, "'");
        }
        heading.step = numbers_.integerOfText("the number of a step");
        place = numbers_.place();
        const long long components = numbers_.integerOfText("the number of components");
        constexpr long long mostComponents = 9;
        if (components < 1 || components > mostComponents)
        {
            numbers_.source().failAtLine(place, "tells of ", components, " components of '", heading.name, "'");
        }
        heading.componentCount = static_cast<int>(components);
        heading.rowCount = numbers_.countOfText("the number of values", static_cast<std::size_t>(components));
        for (std::size_t i = 3; i < integers; ++i)
        {
            numbers_.integerOfText("a whole tag");
        }
        if (numbers_.isBinary())
        {
            numbers_.skipLine();
        }
        heading.values = numbers_.place();
        return hasPlace(section, heading, texts) ? std::optional(std::move(heading)) : std::nullopt;
    }

private:
    bool hasPlace(const GmshSection& section, const Heading& heading, std::size_t texts)
    {
        std::string reason;
        if (section.name == "$ElementNodeData")
        {
            reason = " at the nodes of elements";
        }
        else if (texts > 1)
        {
            reason = " with shape functions of its own";
        }
        if (!reason.empty())
        {
            const std::string sentence = text("the field '", heading.name, "'", reason);
            if (std::ranges::find(mesh_.leftOut, sentence) == mesh_.leftOut.end())
            {
                mesh_.leftOut.push_back(sentence);
            }
        }
        return reason.empty();
    }

    GmshNumbers& numbers_;
    ParsedMesh& mesh_;
};

class ValueReader
{
public:
    ValueReader(GmshNumbers& numbers, const NodeNumbers& nodes, ParsedMesh& mesh)
        : numbers_(numbers), nodes_(nodes), mesh_(mesh)
    {
    }

    void take(const Heading& heading)
    {
        if (heading.isPerCell && !cells_)
        {
            cells_.emplace(mesh_.cellNumbers);
        }
        const NodeNumbers& places = heading.isPerCell ? *cells_ : nodes_;
        const std::string value = text("a value of '", heading.name, "'");
        ParsedField& field = fieldOf(heading);
        const auto rowLength = static_cast<std::size_t>(heading.componentCount);
        numbers_.goTo(heading.values);
        for (std::size_t row = 0; row < heading.rowCount; ++row)
        {
            const char* begin = numbers_.place();
            const long long number = numbers_.integer("the number of a node or an element");
            const std::int64_t place = places.placeOf(number);
            if (place == NodeNumbers::missing && !heading.isPerCell)
            {
                numbers_.fail(begin, "has values of '", heading.name, "' at node ", number,
                              ", which is not in the file");
            }
            for (std::size_t i = 0; i < rowLength; ++i)
            {
                const double real = numbers_.real(value);
                if (place != NodeNumbers::missing) // elements may have been left out when the mesh was saved
                {
                    field.values[static_cast<std::size_t>(place) * rowLength + i] = real;
                }
            }
        }
    }

private:
    /// Parts of one field may stand in several sections.
    ParsedField& fieldOf(const Heading& heading)
    {
        for (ParsedField& field : mesh_.fields)
        {
            if (field.name == heading.name && field.isPerCell == heading.isPerCell &&
                field.componentCount == heading.componentCount)
            {
                return field;
            }
        }
        const std::size_t rows = heading.isPerCell ? mesh_.cellNumbers.size() : mesh_.nodeNumbers.size();
        std::vector<double> values(rows * static_cast<std::size_t>(heading.componentCount),
                                   std::numeric_limits<double>::quiet_NaN());
        mesh_.fields.push_back({heading.name, heading.componentCount, std::move(values), heading.isPerCell});
        return mesh_.fields.back();
    }

    GmshNumbers& numbers_;
    const NodeNumbers& nodes_;
    ParsedMesh& mesh_;
    std::optional<NodeNumbers> cells_{}; ///< once a field needs them
};

/// Tensors whose rows are all symmetric become their 6 components xx, yy, zz, xy, yz, xz.
void reduceSymmetric(ParsedField& field)
{
    constexpr std::size_t full = 9;
    if (field.componentCount != static_cast<int>(full))
    {
        return;
    }
    for (std::size_t row = 0; row < field.values.size(); row += full)
    {
        const double* t = field.values.data() + row;
        if (!std::isnan(t[0]) && (t[1] != t[3] || t[2] != t[6] || t[5] != t[7]))
        {
            return;
        }
    }
    std::vector<double> reduced;
    reduced.reserve(field.values.size() / full * 6);
    for (std::size_t row = 0; row < field.values.size(); row += full)
    {
        for (const std::size_t component : {0U, 4U, 8U, 1U, 5U, 2U})
        {
            reduced.push_back(field.values[row + component]);
        }
    }
    field.values = std::move(reduced);
    field.componentCount = 6;
}

} // namespace

void takeGmshFields(const std::vector<GmshSection>& sections, GmshNumbers& numbers, const NodeNumbers& nodes,
                    std::optional<int> step, ParsedMesh& mesh)
{
    std::vector<Heading> headings;
    std::vector<const Heading*> steps;
    HeadingReader reader(numbers, mesh);
    for (const GmshSection& section : sections)
    {
        if (hasValuesOf(section))
        {
            if (auto heading = reader.take(section))
            {
                headings.push_back(std::move(*heading));
            }
        }
    }
    for (const Heading& heading : headings)
    {
        const auto isKnown = [&](const Heading* known) { return known->isOfStepOf(heading); };
        if (std::ranges::none_of(steps, isKnown))
        {
            steps.push_back(&heading);
            mesh.times.push_back(heading.time);
        }
    }
    const int last = static_cast<int>(steps.size()) - 1;
    const int wanted = step.value_or(last);
    if (wanted < 0 || wanted > last)
    {
        return;
    }
    ValueReader values(numbers, nodes, mesh);
    for (const Heading& heading : headings)
    {
        if (heading.isOfStepOf(*steps[static_cast<std::size_t>(wanted)]))
        {
            values.take(heading);
        }
    }
    std::ranges::for_each(mesh.fields, reduceSymmetric);
}

} // namespace veltrane
