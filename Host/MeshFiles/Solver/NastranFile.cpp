#include "NastranFile.h"

#include "CellOrders.h"
#include "NastranCards.h"
#include "NastranSystems.h"
#include "NodeNumbers.h"
#include "NumberText.h"

#include <vtkCellType.h>

#include <algorithm>
#include <limits>

namespace veltrane
{
namespace
{

/// A kind of elements, without and with nodes within its edges.
struct Kind
{
    std::string_view card;
    CellOrder linear;
    CellOrder quadratic;
};

constexpr std::array kinds{
    Kind{"CTETRA", {0, VTK_TETRA, 4}, {0, VTK_QUADRATIC_TETRA, 10}},
    Kind{"CHEXA", {0, VTK_HEXAHEDRON, 8}, {0, VTK_QUADRATIC_HEXAHEDRON, 20, hexahedronEdgesAcrossFirst}},
    Kind{"CPENTA", {0, VTK_WEDGE, 6}, {0, VTK_QUADRATIC_WEDGE, 15, wedgeEdgesAcrossFirst}},
    Kind{"CPYRAM", {0, VTK_PYRAMID, 5}, {0, VTK_QUADRATIC_PYRAMID, 13}},
    Kind{"CPYRA", {0, VTK_PYRAMID, 5}, {0, VTK_QUADRATIC_PYRAMID, 13}},
};

class NastranParser
{
public:
    NastranParser(const SourceText& source, FileOpener open) : source_(source), cards_(source, open) {}

    ParsedMesh run()
    {
        while (const NastranCard* card = cards_.next())
        {
            take(*card);
        }
        if (mesh_.nodeNumbers.empty())
        {
            source_.fail("it has no GRID cards");
        }
        connect();
        place();
        return std::move(mesh_);
    }

private:
    void take(const NastranCard& card)
    {
        if (card.name == "GRID")
        {
            takeNode(card);
            return;
        }
        if (!card.name.starts_with('C') && !card.name.starts_with('G'))
        {
            return;
        }
        for (const Kind& kind : kinds)
        {
            if (card.name == kind.card)
            {
                takeElement(card, kind);
                return;
            }
        }
        if (NastranSystems::isDefinition(card.name))
        {
            systems_.add(card, cards_);
        }
        else if (card.name == "GRDSET")
        {
            defaultSystem_ = integer(card, 1, 0, "a coordinate system");
        }
        else if (card.name.starts_with("CORD"))
        {
            cards_.fail(card.place, "has a coordinate system of the kind ", shown(card.name), ", which cannot be read");
        }
    }

    long long integer(const NastranCard& card, std::size_t i, long long otherwise, std::string_view what) const
    {
        long long value = otherwise;
        const std::string_view field = card.field(i);
        if (!field.empty() && !isInteger(field, value))
        {
            cards_.fail(card.place, "has ", shown(field), " where ", what, " should be");
        }
        return value;
    }

    long long number(const NastranCard& card, std::size_t i, std::string_view what) const
    {
        const long long value = integer(card, i, 0, what);
        if (value < 1 || value > NodeNumbers::highest)
        {
            cards_.fail(card.place, "has ", shown(card.field(i)), " where ", what, " should be");
        }
        return value;
    }

    void takeNode(const NastranCard& card)
    {
        mesh_.nodeNumbers.push_back(number(card, 0, "the number of a node"));
        nodeSystems_.push_back(integer(card, 1, unset, "a coordinate system"));
        nodePlaces_.push_back(card.place);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            double value = 0;
            if (!isNastranReal(card.field(2 + axis), value))
            {
                cards_.fail(card.place, "has ", shown(card.field(2 + axis)), " where a coordinate should be");
            }
            mesh_.coordinates.push_back(value);
        }
    }

    static bool isGiven(std::string_view field) { return !field.empty() && field != "0"; }

    void takeElement(const NastranCard& card, const Kind& kind)
    {
        constexpr std::size_t firstNode = 2;
        const long long element = number(card, 0, "the number of an element");
        const long long property = integer(card, 1, element, "the number of a property");
        if (property < 0 || property > std::numeric_limits<int>::max())
        {
            cards_.fail(card.place, "has ", shown(card.field(1)), " where the number of a property should be");
        }
        const auto corners = static_cast<std::size_t>(kind.linear.nodeCount);
        const auto all = static_cast<std::size_t>(kind.quadratic.nodeCount);
        std::size_t given = 0;
        for (std::size_t i = corners; i < all; ++i)
        {
            given += isGiven(card.field(firstNode + i)) ? std::size_t{1} : std::size_t{0};
        }
        if (given != 0 && given != all - corners)
        {
            cards_.fail(card.place, "has a ", kind.card, " with ", given, " of ", all - corners,
                        " nodes within its edges; it can have all or none");
        }
        const CellOrder& order = given == 0 ? kind.linear : kind.quadratic;
        std::array<std::int64_t, mostNodesPerCell> nodes{};
        const auto nodeCount = static_cast<std::size_t>(order.nodeCount);
        for (std::size_t i = 0; i < nodeCount; ++i)
        {
            nodes[i] = number(card, firstNode + i, "a node of an element");
        }
        addInOrder(order, std::span<const std::int64_t>(nodes.data(), nodeCount), mesh_.connectivity);
        mesh_.offsets.push_back(static_cast<std::int64_t>(mesh_.connectivity.size()));
        mesh_.cellTypes.push_back(order.cellType);
        mesh_.cellNumbers.push_back(element);
        mesh_.materials.push_back(static_cast<int>(property));
        elementPlaces_.push_back(card.place);
    }

    /// From numbers of nodes to their places, once all are known.
    void connect()
    {
        nodes_ = NodeNumbers(mesh_.nodeNumbers);
        for (std::size_t cell = 0; cell < mesh_.cellTypes.size(); ++cell)
        {
            for (auto i = static_cast<std::size_t>(mesh_.offsets[cell]);
                 i < static_cast<std::size_t>(mesh_.offsets[cell + 1]); ++i)
            {
                const std::int64_t place = nodes_.placeOf(mesh_.connectivity[i]);
                if (place == NodeNumbers::missing)
                {
                    cards_.fail(elementPlaces_[cell], "has element ", mesh_.cellNumbers[cell], " with node ",
                                mesh_.connectivity[i], ", which is not there");
                }
                mesh_.connectivity[i] = place;
            }
        }
    }

    NastranSystems::Node nodeAt(std::size_t place) const
    {
        const double* position = mesh_.coordinates.data() + 3 * place;
        const long long own = nodeSystems_[place];
        return {own == unset ? defaultSystem_ : own, {position[0], position[1], position[2]}};
    }

    /// From the coordinate systems of nodes to the basic one.
    void place()
    {
        const auto isBasic = [&](long long system) { return system == 0 || (system == unset && defaultSystem_ == 0); };
        if (std::ranges::all_of(nodeSystems_, isBasic))
        {
            return;
        }
        NastranSystems::Node asked{};
        const NastranSystems::NodeOf nodeOf = [&](long long wanted) -> const NastranSystems::Node*
        {
            const std::int64_t found = nodes_.placeOf(wanted);
            if (found == NodeNumbers::missing)
            {
                return nullptr;
            }
            asked = nodeAt(static_cast<std::size_t>(found));
            return &asked;
        };
        std::vector<double> basic = mesh_.coordinates;
        for (std::size_t i = 0; i < mesh_.nodeNumbers.size(); ++i)
        {
            const NastranSystems::Node node = nodeAt(i);
            if (node.system != 0)
            {
                const Position position = systems_.basic(node, nodeOf, cards_, nodePlaces_[i]);
                std::ranges::copy(position, basic.begin() + static_cast<std::ptrdiff_t>(3 * i));
            }
        }
        mesh_.coordinates = std::move(basic);
    }

    static constexpr long long unset = std::numeric_limits<long long>::min();

    const SourceText& source_;
    NastranCards cards_;
    NastranSystems systems_{};
    long long defaultSystem_ = 0;
    ParsedMesh mesh_{};
    NodeNumbers nodes_{};
    std::vector<long long> nodeSystems_{};
    std::vector<const char*> nodePlaces_{};
    std::vector<const char*> elementPlaces_{};
};

} // namespace

ParsedMesh parseNastran(const SourceText& source, FileOpener open)
{
    return NastranParser(source, open).run();
}

} // namespace veltrane
