/// A transfer as a picture.
#ifndef VELTRANE_HOST_TRANSFER_PICTURE_H
#define VELTRANE_HOST_TRANSFER_PICTURE_H

#include "Field.h"
#include "Mesh.h"
#include "PicturePage.h"

#include <span>
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

/// A cut through source and target in one colour scale; where the target leaves the source it is hatched. Beside them,
/// if there are any, the differences at the source's nodes, in a scale of their own. Without a plane the cut goes
/// through the peak of the target's values. Needs no display. Throws InvalidOption if a plane that is chosen meets
/// neither mesh.
///
/// \param differences  per node of the source, or empty
Drawing drawTransfer(DrawingFormat format, const PictureSide& source, const PictureSide& target,
                     std::span<const double> differences, const PictureChoice& choice);

} // namespace veltrane

#endif
