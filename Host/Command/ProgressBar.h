/// What the command shows while it works.
#ifndef VELTRANE_COMMAND_PROGRESS_BAR_H
#define VELTRANE_COMMAND_PROGRESS_BAR_H

#include "CallSettings.h"
#include "StageTimes.h"

#include <chrono>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

namespace veltrane
{

/// Where progress is shown, and when. What is there by default is what the command uses.
struct ProgressOutlet
{
    enum class Kind
    {
        none,
        terminal, ///< one line that is drawn again and again, gone at the end
        lines     ///< a line for each stage, and one now and then while a stage goes on
    };

    Kind kind;
    std::ostream& stream;
    std::function<StageTimes::Clock::time_point()> now = StageTimes::Clock::now;

    /// Standard error.
    static ProgressOutlet standard(bool isWanted);
};

/// Shows the stages of the work and, within a computation, how far it is and how long it will take. Keeps their times.
class ProgressBar
{
public:
    explicit ProgressBar(bool isWanted) : ProgressBar(ProgressOutlet::standard(isWanted)) {}
    explicit ProgressBar(ProgressOutlet outlet) : outlet_(std::move(outlet)) {}
    ~ProgressBar() { finish(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// "reading source"
    void beginStage(std::string_view name);

    /// Shows a computation, named as stages are, while the bar lives; cancels it if the command is interrupted.
    ProgressCallback callback(std::string computation);

    /// Ends the last stage and takes the bar away.
    void finish();

    const StageTimes& times() const { return times_; }

private:
    void show(const Progress& progress, const std::string& computation);
    void showPercent(int percent);
    std::string remainingText(int percent) const;
    void draw(const std::string& line);

    ProgressOutlet outlet_;
    StageTimes times_;
    std::string stage_;
    StageTimes::Clock::time_point stageBegin_{};
    StageTimes::Clock::time_point lastLine_{};
    int firstPercent_ = 0;  ///< where the stage began
    int shownPercent_ = -1; ///< -1: none in this stage so far
    bool isDrawn_ = false;
};

/// Takes the bar of a terminal away, so that a message has the line for itself.
void clearTerminalLine(std::ostream& stream);

} // namespace veltrane

#endif
