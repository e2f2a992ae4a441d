/// A transfer as a picture.
#ifndef VELTRANE_HOST_TRANSFER_PICTURE_H
#define VELTRANE_HOST_TRANSFER_PICTURE_H

#include "Field.h"
#include "Mesh.h"

#include <filesystem>
#include <string>

namespace veltrane
{

/// One side of what is shown.
struct PictureSide
{
    std::string name; ///< of its file
    const Mesh& mesh;
    const Field& field; ///< at the nodes
};

/// What stands above its panel.
std::string titleOf(const PictureSide& side);

/// Writes a PNG file with a cut through source and target in one colour scale, the one that shows most; where the
/// target leaves the source it is hatched. Vector and tensor fields are shown by their magnitudes. Needs no display.
/// Throws CannotWrite with nothing but the reason.
void writePicture(const PictureSide& source, const PictureSide& target, const std::filesystem::path& path);

} // namespace veltrane

#endif
