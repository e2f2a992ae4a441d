#include "AbaqusFile.h"

#include "AbaqusAssembly.h"
#include "AbaqusCells.h"
#include "AbaqusPart.h"
#include "NodeNumbers.h"
#include "NumberText.h"

#include <algorithm>
#include <deque>
#include <set>

namespace veltrane
{
namespace
{

/// Keywords that make nodes or elements of others, or say what coordinates mean.
constexpr std::string_view generators[] = {"NGEN", "NFILL", "NCOPY", "NMAP", "ELGEN", "ELCOPY", "SYSTEM"};

class AbaqusParser
{
public:
    AbaqusParser(const SourceText& source, FileOpener open) : source_(source), lines_(source, open)
    {
        parts_.push_back({});
        part_ = &parts_.back();
    }

    ParsedMesh run()
    {
        while (const std::optional<Keyword> keyword = lines_.keyword())
        {
            take(*keyword);
        }
        deck_.loose = &parts_.front();
        ParsedMesh mesh = assemble(deck_, lines_);
        if (mesh.nodeNumbers.empty())
        {
            source_.fail("it has no nodes");
        }
        for (const std::string& type : unknownTypes_)
        {
            mesh.leftOut.push_back(text("elements of type ", type));
        }
        return mesh;
    }

private:
    void take(const Keyword& keyword)
    {
        const std::string& name = keyword.name;
        if (name == "NODE")
        {
            takeNodes(keyword);
        }
        else if (name == "ELEMENT")
        {
            takeElements(keyword);
        }
        else if (name == "ELSET")
        {
            takeSet(keyword);
        }
        else if (name == "MATERIAL")
        {
            deck_.materials.push_back(keyword.value("NAME"));
        }
        else if (name.ends_with(" SECTION") && keyword.has("ELSET"))
        {
            const std::string set = keyword.value("ELSET");
            part_->sections.push_back({set, keyword.has("MATERIAL") ? keyword.value("MATERIAL") : set, keyword.place});
        }
        else if (name == "INCLUDE")
        {
            lines_.include(keyword, keyword.valueAsWritten("INPUT"));
        }
        else if (std::ranges::find(generators, name) != std::end(generators))
        {
            lines_.fail(keyword.place, "has *", name,
                        ", which cannot be read; let a program write all nodes and "
                        "elements one by one");
        }
        else
        {
            takeStructure(keyword);
        }
    }

    void takeStructure(const Keyword& keyword)
    {
        const std::string& name = keyword.name;
        if (name == "PART")
        {
            const std::string partName = keyword.value("NAME");
            if (deck_.parts.contains(partName))
            {
                lines_.fail(keyword.place, "begins a second part ", shown(partName));
            }
            parts_.push_back({});
            part_ = &parts_.back();
            deck_.parts[partName] = part_;
        }
        else if (name == "INSTANCE")
        {
            takeInstance(keyword);
        }
        else if (name == "END PART" || name == "END INSTANCE")
        {
            part_ = &parts_.front();
        }
    }

    // Numbers of a line, with commas between them

    struct Scanner
    {
        const char* at;
        const char* end;

        void skipBlanks()
        {
            while (at != end && (*at == ' ' || *at == '\t' || *at == '\r'))
            {
                ++at;
            }
        }

        /// Whether there is something before the next comma; behind one that is passed over.
        bool isAtValue()
        {
            skipBlanks();
            return at != end && *at != ',';
        }

        bool skipComma()
        {
            skipBlanks();
            const bool isComma = at != end && *at == ',';
            at += isComma ? 1 : 0;
            return isComma || at == end;
        }
    };

    static Scanner scannerOf(std::string_view line) { return {line.data(), line.data() + line.size()}; }

    [[noreturn]] void failWithWord(const Scanner& scanner, std::string_view what) const
    {
        const char* end = std::find(scanner.at, scanner.end, ',');
        lines_.fail(scanner.at, "has ", shown({scanner.at, end}), " where ", what, " should be");
    }

    /// 0 where nothing is between two commas.
    double real(Scanner& scanner, std::string_view what) const
    {
        double value = 0;
        if (!scanner.isAtValue())
        {
            scanner.skipComma();
            return value;
        }
        const Scanner begin = scanner;
        if (!takeReal(scanner.at, scanner.end, value) || !scanner.skipComma())
        {
            failWithWord(begin, what);
        }
        return value;
    }

    long long number(Scanner& scanner, std::string_view what) const
    {
        long long value = 0;
        scanner.skipBlanks();
        const Scanner begin = scanner;
        if (!takeInteger(scanner.at, scanner.end, value) || !scanner.skipComma() || value < 1 ||
            value > NodeNumbers::highest)
        {
            failWithWord(begin, what);
        }
        return value;
    }

    // The mesh

    void followInput(const Keyword& keyword)
    {
        if (keyword.has("INPUT"))
        {
            lines_.include(keyword, keyword.valueAsWritten("INPUT"));
        }
    }

    void takeNodes(const Keyword& keyword)
    {
        if (keyword.has("SYSTEM") && keyword.value("SYSTEM") != "R")
        {
            lines_.fail(keyword.place, "has nodes in a coordinate system ", shown(keyword.value("SYSTEM")),
                        ", which cannot be read; let a program write them in x, y and z");
        }
        followInput(keyword);
        while (const std::optional<std::string_view> line = lines_.data())
        {
            if (trimmed(*line).empty())
            {
                continue;
            }
            Scanner scanner = scannerOf(*line);
            part_->nodeNumbers.push_back(number(scanner, "the number of a node"));
            for (int axis = 0; axis < 3; ++axis)
            {
                part_->coordinates.push_back(real(scanner, "a coordinate"));
            }
        }
    }

    void takeElements(const Keyword& keyword)
    {
        const std::string type = keyword.value("TYPE");
        if (type.empty())
        {
            lines_.fail(keyword.place, "has elements without a type");
        }
        const AbaqusKind kind = abaqusKindOf(type);
        if (kind.order == nullptr)
        {
            if (kind.isVolume)
            {
                lines_.fail(keyword.place, "has elements of the type ", shown(type), ", which is not known");
            }
            unknownTypes_.insert(type);
            return;
        }
        followInput(keyword);
        part_->blocks.push_back({kind.order, keyword.value("ELSET"), part_->elementNumbers.size()});
        const auto nodeCount = static_cast<std::size_t>(kind.order->nodeCount);
        while (std::optional<std::string_view> line = lines_.data())
        {
            if (trimmed(*line).empty())
            {
                continue;
            }
            Scanner scanner = scannerOf(*line);
            part_->elementPlaces.push_back(scanner.at);
            part_->elementNumbers.push_back(number(scanner, "the number of an element"));
            for (std::size_t node = 0; node < nodeCount; ++node)
            {
                if (!scanner.isAtValue())
                {
                    line = lines_.data();
                    if (!line)
                    {
                        lines_.fail(part_->elementPlaces.back(), "begins element ", part_->elementNumbers.back(),
                                    ", which has ", node, " nodes instead of ", nodeCount);
                    }
                    scanner = scannerOf(*line);
                }
                part_->connectivity.push_back(number(scanner, "the number of a node"));
            }
            if (scanner.isAtValue())
            {
                lines_.fail(scanner.at, "has more than the ", nodeCount, " nodes of element ",
                            part_->elementNumbers.back());
            }
        }
    }

    void takeSet(const Keyword& keyword)
    {
        const std::string name = keyword.value("ELSET");
        if (keyword.has("INSTANCE"))
        {
            return; // of the assembly, of which only the sets of its parts are materials
        }
        const auto [place, isNew] = part_->sets.try_emplace(name);
        if (isNew)
        {
            part_->setOrder.push_back(name);
        }
        ElementSet& set = place->second;
        const bool isGenerated = keyword.has("GENERATE");
        while (const std::optional<std::string_view> line = lines_.data())
        {
            Scanner scanner = scannerOf(*line);
            if (isGenerated && scanner.isAtValue())
            {
                takeRange(scanner, set);
            }
            while (!isGenerated && scanner.at != scanner.end)
            {
                takeMember(scanner, set);
            }
        }
    }

    void takeRange(Scanner& scanner, ElementSet& set) const
    {
        const char* place = scanner.at;
        NumberRange range{number(scanner, "the first element of a range"), 0, 1};
        range.last = scanner.isAtValue() ? number(scanner, "the last element of a range") : range.first;
        range.step = scanner.isAtValue() ? number(scanner, "the step of a range") : 1;
        if (range.last < range.first)
        {
            lines_.fail(place, "has a range of elements that ends with ", range.last, " before it begins with ",
                        range.first);
        }
        set.ranges.push_back(range);
    }

    /// An element or a set of them.
    void takeMember(Scanner& scanner, ElementSet& set) const
    {
        if (!scanner.isAtValue())
        {
            scanner.skipComma();
            return;
        }
        if (*scanner.at >= '0' && *scanner.at <= '9')
        {
            const long long element = number(scanner, "the number of an element");
            set.ranges.push_back({element, element, 1});
            return;
        }
        const char* end = std::find(scanner.at, scanner.end, ',');
        set.sets.push_back(oneLine(inCapitals(trimmed({scanner.at, end}))));
        scanner.at = end;
        scanner.skipComma();
    }

    void takeInstance(const Keyword& keyword)
    {
        Instance instance;
        instance.name = keyword.value("NAME");
        instance.part = keyword.value("PART");
        instance.place = keyword.place;
        std::vector<double> numbers;
        // The first line moves, the second turns.
        for (const std::size_t wanted : {std::size_t{3}, std::size_t{10}})
        {
            const std::optional<std::string_view> line = lines_.data();
            if (!line)
            {
                break;
            }
            Scanner scanner = scannerOf(*line);
            while (numbers.size() < wanted)
            {
                numbers.push_back(real(scanner, "a number of an instance's position"));
            }
        }
        numbers.resize(10);
        std::copy_n(numbers.begin(), 3, instance.translation.begin());
        std::copy_n(numbers.begin() + 3, 3, instance.axisBegin.begin());
        std::copy_n(numbers.begin() + 6, 3, instance.axisEnd.begin());
        instance.angle = numbers[9];
        deck_.instances.push_back(instance);
        // Nodes and elements that stand within the instance are a part of their own.
        parts_.push_back({});
        part_ = &parts_.back();
        deck_.ownParts.push_back(part_);
    }

    const SourceText& source_;
    DeckLines lines_;
    std::deque<AbaqusPart> parts_{}; ///< the first has what is in no part
    AbaqusPart* part_ = nullptr;     ///< that is being read
    AbaqusDeck deck_{};
    std::set<std::string> unknownTypes_{};
};

} // namespace

ParsedMesh parseAbaqus(const SourceText& source, FileOpener open)
{
    return AbaqusParser(source, open).run();
}

} // namespace veltrane
