/// Grids as Exodus files.
#ifndef VELTRANE_HOST_EXODUS_WRITING_H
#define VELTRANE_HOST_EXODUS_WRITING_H

#include "FileFormat.h"

namespace veltrane
{

/// Writes cells of one material and type as a block, which has the number of the material unless another one has it,
/// and arrays of points and cells in double precision: those of up to three components as X, Y and Z, those of six as
/// _XX, _YY, _ZZ, _XY, _YZ and _XZ, others as _1, _2 ... Throws CannotWrite with nothing but the reason.
LeftOut writeExodus(vtkPointSet& dataSet, const std::filesystem::path& path, const FileWriting& writing);

} // namespace veltrane

#endif
