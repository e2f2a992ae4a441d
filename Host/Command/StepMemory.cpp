#include "StepMemory.h"

#include "VtuAhead.h"

#include <utility>
#include <vector>

namespace veltrane
{

MeshFile& StepMemory::target(const std::function<MeshFile()>& read)
{
    if (target_)
    {
        target_->resetMaterials();
    }
    else
    {
        target_.emplace(read());
    }
    return *target_;
}

PointFile& StepMemory::points(const std::function<PointFile()>& read)
{
    if (points_)
    {
        PointCloud& cloud = points_->points();
        cloud.setStateCodes(std::vector<int>(cloud.materials().size(), 0));
    }
    else
    {
        points_.emplace(read());
    }
    return *points_;
}

void StepMemory::setNextSource(const std::filesystem::path* path)
{
    next_ = path == nullptr ? std::nullopt : std::optional(*path);
}

void StepMemory::readNextSource(int threads)
{
    if (next_)
    {
        aheadPath_ = *std::exchange(next_, std::nullopt);
        ahead_ = VtuAhead::begin(aheadPath_, threads);
    }
}

std::shared_ptr<VtuAhead> StepMemory::takeSource(const std::filesystem::path& path)
{
    std::shared_ptr<VtuAhead> ahead = std::exchange(ahead_, nullptr);
    return path == aheadPath_ ? ahead : nullptr;
}

} // namespace veltrane
