/// The volume elements of a mesh.
#ifndef VELTRANE_HOST_VOLUME_ELEMENTS_H
#define VELTRANE_HOST_VOLUME_ELEMENTS_H

#include "Mesh.h"

#include <optional>
#include <string_view>

namespace veltrane
{

bool hasVolumeElements(const Mesh& mesh);

/// A mesh of volume elements only: the given one, to which it refers, or else what is left of it without its surfaces.
/// The nodes stay as they are.
class VolumeElements
{
public:
    /// Throws InvalidData if there is none.
    ///
    /// \param side  whose they are, for the message: "target"
    VolumeElements(const Mesh& mesh, std::string_view side);

    const Mesh& mesh() const { return extracted_ ? *extracted_ : whole_; }

private:
    const Mesh& whole_;
    std::optional<Mesh> extracted_;
};

} // namespace veltrane

#endif
