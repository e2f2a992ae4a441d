#include "AbaqusPart.h"

#include "NodeNumbers.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>

namespace veltrane
{
namespace
{

/// Marks elements of a part with the name of a material.
class Marker
{
public:
    explicit Marker(const AbaqusPart& part)
        : part_(part), places_(part.elementNumbers), names_(part.elementNumbers.size())
    {
        for (std::size_t block = 0; block < part.blocks.size(); ++block)
        {
            blocks_[part.blocks[block].set].push_back(block);
        }
    }

    /// The elements of a set that have none yet, and those of the sets in it.
    void mark(const std::string& set, const std::string& name)
    {
        std::set<std::string> seen{set};
        std::vector<std::string> pending{set};
        while (!pending.empty())
        {
            const std::string next = std::move(pending.back());
            pending.pop_back();
            markListed(next, name);
            const auto found = part_.sets.find(next);
            if (found == part_.sets.end())
            {
                continue;
            }
            for (const std::string& inner : found->second.sets)
            {
                if (seen.insert(inner).second)
                {
                    pending.push_back(inner);
                }
            }
        }
    }

    std::vector<std::string> result() && { return std::move(names_); }

private:
    /// The elements of a set, not those of the sets in it.
    void markListed(const std::string& set, const std::string& name)
    {
        if (const auto blocks = blocks_.find(set); blocks != blocks_.end())
        {
            for (const std::size_t block : blocks->second)
            {
                markBlock(block, name);
            }
        }
        if (const auto found = part_.sets.find(set); found != part_.sets.end())
        {
            for (const NumberRange& range : found->second.ranges)
            {
                mark(range, name);
            }
        }
    }

    void markBlock(std::size_t block, const std::string& name)
    {
        const bool isLast = block + 1 == part_.blocks.size();
        const std::size_t end = isLast ? part_.elementNumbers.size() : part_.blocks[block + 1].first;
        for (std::size_t element = part_.blocks[block].first; element < end; ++element)
        {
            mark(element, name);
        }
    }

    /// A range may be far longer than there are elements.
    void mark(const NumberRange& range, const std::string& name)
    {
        const auto count = static_cast<unsigned long long>((range.last - range.first) / range.step) + 1;
        if (count > part_.elementNumbers.size())
        {
            for (std::size_t element = 0; element < part_.elementNumbers.size(); ++element)
            {
                if (range.contains(part_.elementNumbers[element]))
                {
                    mark(element, name);
                }
            }
            return;
        }
        for (unsigned long long i = 0; i < count; ++i)
        {
            const std::int64_t place = places_.placeOf(range.first + static_cast<long long>(i) * range.step);
            if (place != NodeNumbers::missing)
            {
                mark(static_cast<std::size_t>(place), name);
            }
        }
    }

    void mark(std::size_t element, const std::string& name)
    {
        if (names_[element].empty())
        {
            names_[element] = name;
        }
    }

    const AbaqusPart& part_;
    NodeNumbers places_;
    std::map<std::string, std::vector<std::size_t>> blocks_{}; ///< by the name of their set
    std::vector<std::string> names_;
};

/// Whether a set that the deck lists has all elements of the part.
bool containsAll(const AbaqusPart& part, const std::string& set)
{
    const ElementSet& members = part.sets.at(set);
    unsigned long long atMost = 0;
    for (const NumberRange& range : members.ranges)
    {
        atMost += static_cast<unsigned long long>((range.last - range.first) / range.step) + 1;
    }
    if (members.sets.empty() && atMost < part.elementNumbers.size())
    {
        return false;
    }
    Marker marker(part);
    marker.mark(set, set);
    const std::vector<std::string> names = std::move(marker).result();
    return std::ranges::none_of(names, &std::string::empty);
}

std::array<double, 3> cross(const std::array<double, 3>& a, const std::array<double, 3>& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

} // namespace

std::array<double, 3> Instance::operator()(const std::array<double, 3>& position) const
{
    std::array<double, 3> moved{};
    std::array<double, 3> axis{};
    for (std::size_t i = 0; i < 3; ++i)
    {
        moved[i] = position[i] + translation[i];
        axis[i] = axisEnd[i] - axisBegin[i];
    }
    const double length = std::hypot(axis[0], axis[1], axis[2]);
    if (angle == 0 || length == 0)
    {
        return moved;
    }
    // Rodrigues' formula, about the axis through its beginning.
    std::array<double, 3> arm{};
    double along = 0;
    for (std::size_t i = 0; i < 3; ++i)
    {
        axis[i] /= length;
        arm[i] = moved[i] - axisBegin[i];
        along += axis[i] * arm[i];
    }
    const double radians = angle * std::numbers::pi / 180;
    const double cosine = std::cos(radians);
    const double sine = std::sin(radians);
    const std::array<double, 3> across = cross(axis, arm);
    for (std::size_t i = 0; i < 3; ++i)
    {
        moved[i] = axisBegin[i] + cosine * arm[i] + sine * across[i] + (1 - cosine) * along * axis[i];
    }
    return moved;
}

std::vector<std::string> materialsOf(const AbaqusPart& part, bool hasSections)
{
    Marker marker(part);
    if (hasSections)
    {
        for (const Section& section : part.sections)
        {
            marker.mark(section.set, section.material);
        }
        return std::move(marker).result();
    }
    // Sets of everything tell nothing apart; they name what is in no other.
    std::vector<std::string> wholes;
    for (const std::string& set : part.setOrder)
    {
        if (containsAll(part, set))
        {
            wholes.push_back(set);
        }
        else
        {
            marker.mark(set, set);
        }
    }
    std::set<std::string> marked;
    for (const ElementBlock& block : part.blocks)
    {
        if (!block.set.empty() && marked.insert(block.set).second)
        {
            marker.mark(block.set, block.set);
        }
    }
    for (const std::string& set : wholes)
    {
        marker.mark(set, set);
    }
    return std::move(marker).result();
}

} // namespace veltrane
