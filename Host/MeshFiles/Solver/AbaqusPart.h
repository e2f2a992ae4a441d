/// What a part of an input deck consists of.
#ifndef VELTRANE_HOST_ABAQUS_PART_H
#define VELTRANE_HOST_ABAQUS_PART_H

#include "CellOrders.h"

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace veltrane
{

/// Numbers of elements: those from one to another in equal steps.
struct NumberRange
{
    long long first;
    long long last;
    long long step;

    bool contains(long long number) const { return number >= first && number <= last && (number - first) % step == 0; }
};

struct ElementSet
{
    std::vector<NumberRange> ranges{};
    std::vector<std::string> sets{}; ///< that belong to it
};

/// Elements with one line *ELEMENT.
struct ElementBlock
{
    const CellOrder* order;
    std::string set;
    std::size_t first; ///< of its elements in the part
};

struct Section
{
    std::string set;
    std::string material;
    const char* place;
};

struct AbaqusPart
{
    std::vector<long long> nodeNumbers{};
    std::vector<double> coordinates{};
    std::vector<ElementBlock> blocks{};
    std::vector<long long> elementNumbers{};
    std::vector<const char*> elementPlaces{}; ///< in the text, for messages
    std::vector<long long> connectivity{};    ///< numbers of nodes, in the order of the file
    std::map<std::string, ElementSet> sets{};
    std::vector<std::string> setOrder{}; ///< as the deck has them
    std::vector<Section> sections{};
};

/// Where an instance of a part stands: it is moved, then turned.
struct Instance
{
    std::string name;
    std::string part;
    const char* place = nullptr;
    std::array<double, 3> translation{};
    std::array<double, 3> axisBegin{};
    std::array<double, 3> axisEnd{};
    double angle = 0; ///< degrees

    std::array<double, 3> operator()(const std::array<double, 3>& position) const;
};

/// The material of each element by the part's sections, or else by the sets that its elements are in; empty where there
/// is none.
std::vector<std::string> materialsOf(const AbaqusPart& part, bool hasSections);

} // namespace veltrane

#endif
