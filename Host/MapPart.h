/// Maps between parts of a source and of a target that are larger than what is at hand.
#ifndef VELTRANE_HOST_MAP_PART_H
#define VELTRANE_HOST_MAP_PART_H

#include "CommonOrigin.h"
#include "Map.h"

#include "Map/TransferMap.h"

#include <memory>

namespace veltrane
{

/// What all parts have in common, and what the whole says of this one.
struct MapPart
{
    Origin origin = noOrigin;
    /// Any part has coordinates that are not singles.
    bool hasExactSource = false;
    bool hasExactTarget = false;
    PartOfWhole figures;
};

/// Throws what the constructors of Map throw. The parts are those that PartOfWhole asks for.
std::shared_ptr<const TransferMap> buildPart(const Mesh& source, const Mesh& target, const MapOptions& options,
                                             const MapPart& part);
std::shared_ptr<const TransferMap> buildPart(const Mesh& source, const PointCloud& points, const MapOptions& options,
                                             const MapPart& part);

} // namespace veltrane

#endif
