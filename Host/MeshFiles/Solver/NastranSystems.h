/// Coordinate systems of Nastran.
#ifndef VELTRANE_HOST_NASTRAN_SYSTEMS_H
#define VELTRANE_HOST_NASTRAN_SYSTEMS_H

#include "NastranCards.h"

#include <array>
#include <functional>
#include <map>
#include <unordered_map>

namespace veltrane
{

using Position = std::array<double, 3>;

class NastranSystems
{
public:
    /// Where a node is: in which system, and its coordinates there.
    struct Node
    {
        long long system;
        Position coordinates;
    };
    using NodeOf = std::function<const Node*(long long number)>;

    /// Whether a card defines systems.
    static bool isDefinition(std::string_view name);

    void add(const NastranCard& card, const NastranCards& cards);

    bool isEmpty() const { return definitions_.empty(); }

    /// In the basic system.
    ///
    /// \param place  of the card, for messages
    Position basic(const Node& node, const NodeOf& nodeOf, const NastranCards& cards, const char* place);

private:
    struct Definition
    {
        char shape = 'R';                 ///< or C for cylinders, S for spheres
        bool byNodes = false;             ///< the points are nodes
        long long reference = 0;          ///< the system of the points, if they are not
        std::array<Position, 3> points{}; ///< the origin, one on the third axis, one beside it
        std::array<long long, 3> nodes{};
        const char* place = nullptr;
    };

    struct System
    {
        char shape;
        Position origin;
        std::array<Position, 3> axes;
    };

    const System& system(long long number, const NodeOf& nodeOf, const NastranCards& cards, const char* place);

    std::map<long long, Definition> definitions_{};
    std::unordered_map<long long, System> systems_{}; ///< as far as they have been asked for
    int depth_ = 0;
};

} // namespace veltrane

#endif
