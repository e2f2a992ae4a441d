#include "AbaqusAssembly.h"

#include "CellNames.h"
#include "NodeNumbers.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>

namespace veltrane
{
namespace
{

class Assembler
{
public:
    Assembler(const AbaqusDeck& deck, const DeckLines& lines) : deck_(deck), lines_(lines) {}

    ParsedMesh run()
    {
        countSections();
        add(*deck_.loose, {});
        for (std::size_t i = 0; i < deck_.instances.size(); ++i)
        {
            const Instance& instance = deck_.instances[i];
            const AbaqusPart& own = *deck_.ownParts[i];
            if (!own.nodeNumbers.empty())
            {
                add(own, instance);
                continue;
            }
            const auto part = deck_.parts.find(instance.part);
            if (part == deck_.parts.end())
            {
                lines_.fail(instance.place, "has an instance of the part '", instance.part, "', which is not there");
            }
            add(*part->second, instance);
        }
        if (!hasSections_)
        {
            countVolumesFirst();
        }
        nameMaterials();
        return std::move(mesh_);
    }

private:
    /// Numbers materials as the deck defines them, or else as its sections name them.
    void countSections()
    {
        std::vector<const AbaqusPart*> parts{deck_.loose};
        for (const auto& [name, part] : deck_.parts)
        {
            parts.push_back(part);
        }
        parts.insert(parts.end(), deck_.ownParts.begin(), deck_.ownParts.end());
        hasSections_ = std::ranges::any_of(parts, [](const AbaqusPart* part) { return !part->sections.empty(); });
        if (!hasSections_)
        {
            return;
        }
        for (const std::string& material : deck_.materials)
        {
            numberOf(material);
        }
        for (const AbaqusPart* part : parts)
        {
            for (const Section& section : part->sections)
            {
                numberOf(section.material);
            }
        }
    }

    int numberOf(const std::string& material)
    {
        return material.empty() ? 0
                                : numbers_.try_emplace(material, static_cast<int>(numbers_.size()) + 1).first->second;
    }

    /// Sets of volumes get the numbers before those of surfaces and lines, which are no materials for most.
    void countVolumesFirst()
    {
        std::vector<bool> hasVolumes(numbers_.size() + 1);
        for (std::size_t cell = 0; cell < mesh_.cellTypes.size(); ++cell)
        {
            if (cellDimension(mesh_.cellTypes[cell]) == 3)
            {
                hasVolumes[static_cast<std::size_t>(mesh_.materials[cell])] = true;
            }
        }
        std::vector<int> renumbered(hasVolumes.size());
        int count = 0;
        for (const bool wanted : {true, false})
        {
            for (std::size_t number = 1; number < hasVolumes.size(); ++number)
            {
                renumbered[number] = hasVolumes[number] == wanted ? ++count : renumbered[number];
            }
        }
        const auto renumber = [&](int& number) { number = renumbered[static_cast<std::size_t>(number)]; };
        std::ranges::for_each(mesh_.materials, renumber);
        for (auto& [name, number] : numbers_)
        {
            renumber(number);
        }
    }

    void nameMaterials()
    {
        if (numbers_.empty())
        {
            mesh_.materials.clear();
        }
        for (const auto& [name, number] : numbers_)
        {
            mesh_.materialNames[number] = name;
        }
    }

    void add(const AbaqusPart& part, const Instance& instance)
    {
        if (!deck_.instances.empty())
        {
            mesh_.nodeInstances.insert(mesh_.nodeInstances.end(), part.nodeNumbers.size(),
                                       static_cast<int>(mesh_.instanceNames.size()));
            mesh_.instanceNames.push_back(instance.name);
        }
        const auto firstNode = static_cast<std::int64_t>(mesh_.nodeNumbers.size());
        if (mesh_.nodeNumbers.size() + part.nodeNumbers.size() >
            static_cast<std::size_t>(std::numeric_limits<int>::max()))
        {
            lines_.fail(instance.place, "has one more instance, with which there are more nodes than can be counted");
        }
        mesh_.nodeNumbers.insert(mesh_.nodeNumbers.end(), part.nodeNumbers.begin(), part.nodeNumbers.end());
        for (std::size_t i = 0; i < part.coordinates.size(); i += 3)
        {
            const auto position = instance({part.coordinates[i], part.coordinates[i + 1], part.coordinates[i + 2]});
            mesh_.coordinates.insert(mesh_.coordinates.end(), position.begin(), position.end());
        }
        addCells(part, firstNode);
        const std::vector<std::string> materials = materialsOf(part, hasSections_);
        std::ranges::transform(materials, std::back_inserter(mesh_.materials),
                               [&](const std::string& material) { return numberOf(material); });
    }

    void addCells(const AbaqusPart& part, std::int64_t firstNode)
    {
        const NodeNumbers nodes(part.nodeNumbers);
        std::array<std::int64_t, mostNodesPerCell> places{};
        std::size_t next = 0;
        for (std::size_t block = 0; block < part.blocks.size(); ++block)
        {
            const bool isLast = block + 1 == part.blocks.size();
            const std::size_t end = isLast ? part.elementNumbers.size() : part.blocks[block + 1].first;
            const CellOrder& order = *part.blocks[block].order;
            const auto nodeCount = static_cast<std::size_t>(order.nodeCount);
            for (std::size_t element = part.blocks[block].first; element < end; ++element)
            {
                for (std::size_t i = 0; i < nodeCount; ++i)
                {
                    const long long node = part.connectivity[next++];
                    const std::int64_t place = nodes.placeOf(node);
                    if (place == NodeNumbers::missing)
                    {
                        lines_.fail(part.elementPlaces[element], "begins element ", part.elementNumbers[element],
                                    " with node ", node, ", which is not there");
                    }
                    places[i] = firstNode + place;
                }
                addInOrder(order, std::span<const std::int64_t>(places.data(), nodeCount), mesh_.connectivity);
                mesh_.offsets.push_back(static_cast<std::int64_t>(mesh_.connectivity.size()));
                mesh_.cellTypes.push_back(order.cellType);
                mesh_.cellNumbers.push_back(part.elementNumbers[element]);
            }
        }
    }

    const AbaqusDeck& deck_;
    const DeckLines& lines_;
    bool hasSections_ = false;
    std::map<std::string, int> numbers_{}; ///< of materials
    ParsedMesh mesh_{};
};

} // namespace

ParsedMesh assemble(const AbaqusDeck& deck, const DeckLines& lines)
{
    return Assembler(deck, lines).run();
}

} // namespace veltrane
