/// What one step of a series leaves for the next.
#ifndef VELTRANE_COMMAND_STEP_MEMORY_H
#define VELTRANE_COMMAND_STEP_MEMORY_H

#include "MapCache.h"
#include "MeshFile.h"
#include "PointFile.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace veltrane
{

class VtuAhead;

/// The map, the target as it was read, and the source of the next step, which is read while this one is computed. All
/// steps are of one command, with the same target.
class StepMemory
{
public:
    /// \param areSteps  whether further steps may follow
    explicit StepMemory(bool areSteps) : maps(areSteps) {}

    /// The target as the file has it. `read` is called for the first step only.
    MeshFile& target(const std::function<MeshFile()>& read);
    PointFile& points(const std::function<PointFile()>& read);
    bool hasTarget() const { return target_ || points_; }

    /// Which source comes after this step's; null if none does.
    void setNextSource(const std::filesystem::path* path);

    /// Begins to read it, once that of this step has been read.
    void readNextSource(int threads);

    /// This step's source if it is being read; otherwise null.
    std::shared_ptr<VtuAhead> takeSource(const std::filesystem::path& path);

    MapCache maps;

private:
    std::optional<MeshFile> target_{};
    std::optional<PointFile> points_{};
    std::optional<std::filesystem::path> next_{};
    std::filesystem::path aheadPath_{};
    std::shared_ptr<VtuAhead> ahead_{};
};

} // namespace veltrane

#endif
