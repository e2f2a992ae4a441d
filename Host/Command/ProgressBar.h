/// A bar that grows with the progress.
#ifndef VELTRANE_COMMAND_PROGRESS_BAR_H
#define VELTRANE_COMMAND_PROGRESS_BAR_H

#include "Transfer.h"

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

    void show(const Progress& progress);

private:
    bool isShown_;
    int shownPercent_ = -1;
};

} // namespace veltrane

#endif
