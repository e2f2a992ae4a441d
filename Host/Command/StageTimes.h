/// How long the stages of a command take.
#ifndef VELTRANE_COMMAND_STAGE_TIMES_H
#define VELTRANE_COMMAND_STAGE_TIMES_H

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace veltrane
{

struct StageTime
{
    std::string name;
    double seconds;
};

/// A stage lasts until the next one begins. A name that comes again goes on where it stopped.
class StageTimes
{
public:
    using Clock = std::chrono::steady_clock;

    void begin(std::string_view name, Clock::time_point now = Clock::now());

    /// Ends the last stage.
    void end(Clock::time_point now = Clock::now());

    /// In the order of their first beginnings, the one that goes on without what it has lasted since.
    const std::vector<StageTime>& times() const { return times_; }

    double total() const;

private:
    StageTime* find(std::string_view name);

    std::vector<StageTime> times_;
    std::string current_; ///< empty between stages
    Clock::time_point begin_{};
};

} // namespace veltrane

#endif
