/// Threads for the engine: the pieces of work of a computation run side by side, its progress comes on the caller's
/// thread.
#ifndef VELTRANE_HOST_THREAD_WORKERS_H
#define VELTRANE_HOST_THREAD_WORKERS_H

#include "CallSettings.h"

#include "Map/Workers.h"

#include <exception>
#include <string>

namespace veltrane
{

class ThreadWorkers : public ::Workers
{
public:
    /// `threads` as in the options of a computation: 0 for all that there are. Throws InvalidOption.
    explicit ThreadWorkers(int threads, ProgressCallback progress = nullptr, std::string title = "");

    int nbWorkers() const override { return workerCount_; }

    /// The caller's thread takes part in the work. Throws what a piece has thrown, of several pieces the first. False
    /// when the progress callback wants to stop or has thrown.
    bool run(const Stage& stage, std::int64_t pieceCount, PieceOfWork piece) override;

    /// Tells the progress; false when the callback wants to stop or has thrown, now or before.
    bool report(int percent, const char* stage);

    bool isStopped() const { return isStopped_; }

    /// Throws what the progress callback has thrown, or else Cancelled with a sentence.
    [[noreturn]] void throwStopped(const std::string& sentence) const;

private:
    int workerCount_;
    ProgressCallback progress_;
    std::string title_;
    int lastPercent_ = -1;
    const char* lastStage_ = nullptr;
    bool isStopped_ = false;
    std::exception_ptr failure_;
};

} // namespace veltrane

#endif
