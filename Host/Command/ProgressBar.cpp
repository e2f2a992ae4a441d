#include "ProgressBar.h"

#include "Interruption.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <string>

namespace veltrane
{
namespace
{

constexpr int width = 40;

} // namespace

ProgressBar::ProgressBar(bool isWanted) : isShown_(isWanted && ::isatty(STDERR_FILENO) == 1) {}

ProgressBar::~ProgressBar()
{
    if (isShown_ && shownPercent_ >= 0)
    {
        std::cerr << "\r\033[K" << std::flush;
    }
}

ProgressCallback ProgressBar::callback()
{
    return [this](const Progress& progress)
    {
        show(progress);
        return !isInterrupted();
    };
}

void ProgressBar::show(const Progress& progress)
{
    const int percent = std::clamp(progress.percent, 0, 100);
    if (!isShown_ || percent == shownPercent_)
    {
        return;
    }
    const auto filled = static_cast<std::size_t>(percent * width / 100);
    std::cerr << "\r[" << std::string(filled, '#') << std::string(width - filled, ' ') << "] " << percent << " %"
              << std::flush;
    shownPercent_ = percent;
}

} // namespace veltrane
