/// Physical groups in Gmsh's files: their names, and which entities of the geometry belong to them.
#ifndef VELTRANE_HOST_GMSH_GROUPS_H
#define VELTRANE_HOST_GMSH_GROUPS_H

#include "GmshNumbers.h"

#include <cstdlib>
#include <map>
#include <string>
#include <utility>

namespace veltrane
{

class GmshGroups
{
public:
    /// Of an entity or a group: its dimension and its number.
    using Item = std::pair<int, int>;

    explicit GmshGroups(GmshNumbers& numbers) : numbers_(numbers) {}

    const std::map<Item, std::string>& names() const { return names_; }

    /// The first group of an entity; 0 if it is in none.
    int groupOf(const Item& entity) const
    {
        const auto found = groups_.find(entity);
        return found == groups_.end() ? 0 : found->second;
    }

    /// Text even in binary files.
    void takeNames()
    {
        const std::size_t count = numbers_.countOfText("the number of names", 3);
        for (std::size_t i = 0; i < count; ++i)
        {
            const long long dimension = numbers_.integerOfText("the dimension of a group");
            const long long number = numbers_.integerOfText("the number of a group");
            names_[{static_cast<int>(dimension), static_cast<int>(number)}] = numbers_.quotedText();
        }
    }

    void takeEntities()
    {
        std::size_t counts[4];
        for (std::size_t& count : counts)
        {
            count = numbers_.count("the number of entities", true, 4);
        }
        for (int dimension = 0; dimension < 4; ++dimension)
        {
            for (std::size_t i = 0; i < counts[dimension]; ++i)
            {
                const int number = numbers_.tag("the number of an entity");
                takeEntity({dimension, number}, dimension == 0 ? 3 : 6);
            }
        }
    }

    void takePartitionedEntities()
    {
        numbers_.size("the number of parts");
        const std::size_t ghosts = numbers_.count("the number of ghost entities", true, 2);
        for (std::size_t i = 0; i < 2 * ghosts; ++i)
        {
            numbers_.integer("the number of a ghost entity");
        }
        std::size_t counts[4];
        for (std::size_t& count : counts)
        {
            count = numbers_.count("the number of entities", true, 6);
        }
        for (int dimension = 0; dimension < 4; ++dimension)
        {
            for (std::size_t i = 0; i < counts[dimension]; ++i)
            {
                const int number = numbers_.tag("the number of an entity");
                numbers_.integer("the dimension of an entity");
                numbers_.integer("the number of an entity");
                skipIntegers(numbers_.count("the number of parts of an entity", true));
                takeEntity({dimension, number}, dimension == 0 ? 3 : 6);
            }
        }
    }

private:
    void takeEntity(const Item& entity, int coordinateCount)
    {
        for (int i = 0; i < coordinateCount; ++i)
        {
            numbers_.real("a coordinate of an entity");
        }
        const std::size_t groupCount = numbers_.count("the number of groups of an entity", true);
        for (std::size_t i = 0; i < groupCount; ++i)
        {
            const int group = numbers_.tag("the number of a group");
            groups_.try_emplace(entity,
                                std::abs(group)); // the first one, of several; negative for the other orientation
        }
        if (entity.first > 0)
        {
            skipIntegers(numbers_.count("the number of entities around one", true));
        }
    }

    void skipIntegers(std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            numbers_.integer("a number of an entity");
        }
    }

    GmshNumbers& numbers_;
    std::map<Item, int> groups_{}; ///< of the entities
    std::map<Item, std::string> names_{};
};

} // namespace veltrane

#endif
