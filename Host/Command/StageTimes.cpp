#include "StageTimes.h"

#include <algorithm>

namespace veltrane
{

void StageTimes::begin(std::string_view name, Clock::time_point now)
{
    end(now);
    current_ = name;
    begin_ = now;
    if (find(name) == nullptr)
    {
        times_.push_back({current_, 0});
    }
}

void StageTimes::end(Clock::time_point now)
{
    if (StageTime* stage = find(current_))
    {
        stage->seconds += std::chrono::duration<double>(now - begin_).count();
    }
    current_.clear();
}

StageTime* StageTimes::find(std::string_view name)
{
    const auto found = std::ranges::find(times_, name, &StageTime::name);
    return found == times_.end() ? nullptr : &*found;
}

double StageTimes::total() const
{
    double sum = 0;
    for (const StageTime& stage : times_)
    {
        sum += stage.seconds;
    }
    return sum;
}

} // namespace veltrane
