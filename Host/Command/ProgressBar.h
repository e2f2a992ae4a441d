/// A bar that grows with the progress.
#ifndef VELTRANE_COMMAND_PROGRESS_BAR_H
#define VELTRANE_COMMAND_PROGRESS_BAR_H

#include "CallSettings.h"

namespace veltrane
{

/// One line on standard error, gone at the end of its life.
class ProgressBar
{
public:
    /// \param isWanted  if false, nothing is ever shown; nor is it if standard error is not a terminal
    explicit ProgressBar(bool isWanted);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Shows progress while the bar lives, and cancels if the command is interrupted.
    ProgressCallback callback();

private:
    void show(const Progress& progress);

    bool isShown_;
    int shownPercent_ = -1;
};

} // namespace veltrane

#endif
