/// What a picture is to show.
#ifndef VELTRANE_COMMAND_PICTURE_ARGUMENTS_H
#define VELTRANE_COMMAND_PICTURE_ARGUMENTS_H

#include "Field.h"
#include "PicturePage.h"

#include <CLI/CLI.hpp>

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace veltrane
{

/// A field, and what of it is drawn where.
struct PictureView
{
    std::size_t field; ///< among those that are transferred
    PictureChoice choice;
};

struct PictureArguments
{
    std::string plane{};
    std::string field{};
    std::string range{};

    void addTo(CLI::App& command);

    bool areGiven() const { return !plane.empty() || !field.empty() || !range.empty(); }

    /// Throws InvalidOption if one of them is none.
    void check() const;

    /// Of the fields at nodes the one that is asked for or, without one, the first of one component, or else the first;
    /// nothing if there is none at nodes. Throws InvalidOption if there is no such field or component.
    std::optional<PictureView> choose(std::span<const Field> fields) const;
};

} // namespace veltrane

#endif
