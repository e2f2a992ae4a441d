/// How the source is placed before anything else is done with it.
#ifndef VELTRANE_COMMAND_PLACEMENT_ARGUMENTS_H
#define VELTRANE_COMMAND_PLACEMENT_ARGUMENTS_H

#include "Placement.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace veltrane
{

struct PlacementArguments
{
    std::string translation{};
    double scale = 1;
    std::vector<std::string> rotations{};
    std::vector<std::string> unturned{};

    void addTo(CLI::App& command);

    /// Throws InvalidOption if an option cannot be understood.
    Placement placement() const;

    /// Turns those of the fields that are not to stay as they are. Throws InvalidOption if one that is to stay is not
    /// among them.
    void turn(std::vector<Field>& fields) const;
};

} // namespace veltrane

#endif
