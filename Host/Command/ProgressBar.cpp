#include "ProgressBar.h"

#include "Interruption.h"
#include "Text.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <utility>

namespace veltrane
{
namespace
{

constexpr int width = 40;
constexpr std::string_view clearLine = "\r\033[K";

// Before that an estimate says nothing.
constexpr std::chrono::duration<double> firstEstimate = std::chrono::seconds(1);

// Between the lines of one stage in a file.
constexpr auto lineInterval = std::chrono::seconds(10);

bool isTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

bool isOnTerminal = false; ///< a bar, on standard error

/// When the library ends the process, the bar is not destroyed.
void clearAtExit()
{
    if (isOnTerminal)
    {
        std::cerr << clearLine << std::flush;
    }
}

std::string durationText(double seconds)
{
    const auto whole = static_cast<long long>(std::ceil(seconds));
    if (whole < 60)
    {
        return text(whole, " s");
    }
    if (whole < 3600)
    {
        return text(whole / 60, " min ", whole % 60, " s");
    }
    return text(whole / 3600, " h ", whole % 3600 / 60, " min");
}

std::string barText(int percent)
{
    const auto filled = static_cast<std::size_t>(percent * width / 100);
    return text("[", std::string(filled, '#'), std::string(width - filled, ' '), "] ", std::setw(3), percent, " %");
}

} // namespace

ProgressOutlet ProgressOutlet::standard(bool isWanted)
{
    const Kind kind = !isWanted ? Kind::none : isTerminal() ? Kind::terminal : Kind::lines;
    return {.kind = kind, .stream = std::cerr};
}

void ProgressBar::beginStage(std::string_view name)
{
    const auto now = outlet_.now();
    times_.begin(name, now);
    stage_ = name;
    stageBegin_ = now;
    lastLine_ = now;
    firstPercent_ = 0;
    shownPercent_ = -1;
    draw(text(stage_, " ..."));
}

ProgressCallback ProgressBar::callback(std::string computation)
{
    return [this, computation = std::move(computation)](const Progress& progress)
    {
        show(progress, computation);
        return !isInterrupted();
    };
}

void ProgressBar::finish()
{
    times_.end(outlet_.now());
    if (isDrawn_)
    {
        outlet_.stream << clearLine << std::flush;
        isDrawn_ = false;
        isOnTerminal = false;
    }
}

/// The library reports its preparation, then the computation, and at the end a sentence in the place of the stage.
void ProgressBar::show(const Progress& progress, const std::string& computation)
{
    // From within the computation, so that it comes before what else is to be done at the end then.
    static const bool isRegistered = std::atexit(clearAtExit) == 0;
    isOnTerminal = isRegistered && outlet_.kind == ProgressOutlet::Kind::terminal && &outlet_.stream == &std::cerr;
    const int percent = std::clamp(progress.percent, 0, 100);
    const std::string_view stage =
        progress.stage == "Pretreatment" ? "preparing search" : std::string_view(computation);
    if (percent < 100 && stage != stage_)
    {
        beginStage(stage);
        firstPercent_ = percent;
    }
    if (percent != shownPercent_)
    {
        showPercent(percent);
        shownPercent_ = percent;
    }
}

void ProgressBar::showPercent(int percent)
{
    if (outlet_.kind == ProgressOutlet::Kind::terminal)
    {
        draw(text(barText(percent), "  ", stage_, remainingText(percent)));
        return;
    }
    const auto now = outlet_.now();
    if (now - lastLine_ >= lineInterval)
    {
        lastLine_ = now;
        draw(text(stage_, " ... ", percent, " %", remainingText(percent)));
    }
}

/// As much time for each percent to come as for each so far.
std::string ProgressBar::remainingText(int percent) const
{
    const std::chrono::duration<double> elapsed = outlet_.now() - stageBegin_;
    if (elapsed < firstEstimate || percent <= firstPercent_ || percent == 100)
    {
        return "";
    }
    const double perPercent = elapsed.count() / (percent - firstPercent_);
    return text(", ", durationText(perPercent * (100 - percent)), " left");
}

void ProgressBar::draw(const std::string& line)
{
    switch (outlet_.kind)
    {
    case ProgressOutlet::Kind::none: return;
    case ProgressOutlet::Kind::terminal:
        outlet_.stream << clearLine << line << std::flush;
        isDrawn_ = true;
        return;
    case ProgressOutlet::Kind::lines: outlet_.stream << line << '\n' << std::flush; return;
    }
}

void clearTerminalLine(std::ostream& stream)
{
    if (isTerminal())
    {
        stream << clearLine;
    }
}

} // namespace veltrane
