#include "WholeModels.h"

#include "Agreement.h"
#include "Text.h"

#include <algorithm>

namespace veltrane
{
namespace
{

veltrane::Box joined(const Communicator& ranks, const veltrane::Box& part)
{
    veltrane::Box whole;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        whole.min[axis] = ranks.smallest(part.min[axis]);
        whole.max[axis] = ranks.largest(part.max[axis]);
    }
    return whole;
}

} // namespace

Origin wholeOrigin(const Communicator& ranks, const Mesh& source, std::span<const float> targetCoordinates,
                   float tolerance)
{
    const float farthest =
        ranks.largest(std::max(farthestCoordinate(source.coordinates()), farthestCoordinate(targetCoordinates)));
    const bool isMoved = ranks.isAnywhere(hasVolumeElementBelow(source, smallestTellableSide(farthest, tolerance)));
    return isMoved ? middleOf(joined(ranks, source.boundingBox())) : noOrigin;
}

RunningBox wholeBox(const Communicator& ranks, const RunningBox& part)
{
    veltrane::Box box;
    if (!part.isEmpty())
    {
        box = {part.box().low, part.box().high};
    }
    box = joined(ranks, box);
    RunningBox whole;
    if (box.min[0] <= box.max[0])
    {
        whole.add({box.min, box.max});
    }
    return whole;
}

void checkMaterials(const Communicator& ranks, const std::vector<Material>& materials, std::string_view side)
{
    std::string list;
    for (const Material& material : materials)
    {
        list += text(material.name, " = ", material.stateCode, "\n");
    }
    const std::string firstList = ranks.told(list, 0);
    agree(ranks,
          [&]
          {
              if (list != firstList)
              {
                  throw InvalidData(text("the ", side, " has other materials on rank ", ranks.rank(),
                                         " than on rank 0; all ranks need the same list"));
              }
          });
}

} // namespace veltrane
