/// Sampling at points as a picture.
#ifndef VELTRANE_HOST_POINT_PICTURE_H
#define VELTRANE_HOST_POINT_PICTURE_H

#include "Field.h"
#include "Mesh.h"
#include "Transfer.h"
#include "TransferPicture.h"

#include <span>
#include <string>

namespace veltrane
{

/// The points as they are shown.
struct PicturePoints
{
    std::string name; ///< of their file
    const PointCloud& points;
    const Field& field;                   ///< at the points
    std::span<const ValueOrigin> origins; ///< of the points' values
};

/// A cut through the source and, beside it, the points in the same colour scale as they are seen along the axis across
/// the cut; those without a value from an element of the source are rings. Without a plane the cut goes through the
/// point of the largest value. Otherwise as for transfers between meshes.
Drawing drawSampling(DrawingFormat format, const PictureSide& source, const PicturePoints& target,
                     const PictureChoice& choice);

} // namespace veltrane

#endif
