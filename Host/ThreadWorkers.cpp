#include "ThreadWorkers.h"

#include "Errors.h"
#include "Text.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace veltrane
{
namespace
{

constexpr int mostThreads = 1024;

int workerCountFor(int threads)
{
    if (threads < 0 || threads > mostThreads)
    {
        throw InvalidOption(text("the number of threads ", threads, " is not between 0 and ", mostThreads));
    }
    return threads == 0 ? usableThreadCount() : threads;
}

/// The pieces of one run, handed out one after another.
class PieceQueue
{
public:
    PieceQueue(std::int64_t count, PieceOfWork piece) : count_(count), piece_(piece) {}

    /// Runs the next piece on a worker; false if there is none any more.
    bool runNext(int worker) noexcept
    {
        const std::int64_t next = next_++;
        if (next >= count_ || isStopped_)
        {
            return false;
        }
        try
        {
            piece_(next, worker);
        }
        catch (...)
        {
            keepFailure(next, std::current_exception());
        }
        ++doneCount_;
        return true;
    }

    void stop() { isStopped_ = true; }
    std::int64_t doneCount() const { return doneCount_; }

    /// Pieces are handed out in order, so the first one that fails is always among those that were run.
    void rethrowFailure() const
    {
        if (failure_)
        {
            std::rethrow_exception(failure_);
        }
    }

private:
    void keepFailure(std::int64_t piece, std::exception_ptr failure)
    {
        stop();
        const std::lock_guard lock(mutex_);
        if (piece < failedPiece_)
        {
            failedPiece_ = piece;
            failure_ = std::move(failure);
        }
    }

    std::int64_t count_;
    PieceOfWork piece_;
    std::atomic<std::int64_t> next_ = 0;
    std::atomic<std::int64_t> doneCount_ = 0;
    std::atomic<bool> isStopped_ = false;
    std::mutex mutex_;
    std::int64_t failedPiece_ = std::numeric_limits<std::int64_t>::max();
    std::exception_ptr failure_;
};

} // namespace

ThreadWorkers::ThreadWorkers(int threads, ProgressCallback progress, std::string title)
    : workerCount_(workerCountFor(threads)), progress_(std::move(progress)), title_(std::move(title))
{
}

bool ThreadWorkers::report(int percent, const char* stage)
{
    if (isStopped_ || !progress_ || (percent == lastPercent_ && stage == lastStage_))
    {
        return !isStopped_;
    }
    lastPercent_ = percent;
    lastStage_ = stage;
    try
    {
        isStopped_ = !progress_(Progress{percent, title_, stage});
    }
    catch (...)
    {
        isStopped_ = true;
        failure_ = std::current_exception();
    }
    return !isStopped_;
}

bool ThreadWorkers::run(const Stage& stage, std::int64_t pieceCount, PieceOfWork piece)
{
    if (!report(std::max(stage.from, lastPercent_), stage.name))
    {
        return false;
    }
    PieceQueue queue(pieceCount, piece);
    {
        std::vector<std::jthread> threads;
        const auto threadCount = std::min<std::int64_t>(workerCount_, pieceCount);
        for (int worker = 1; worker < threadCount; ++worker)
        {
            try
            {
                threads.emplace_back(
                    [&queue, worker]
                    {
                        while (queue.runNext(worker))
                        {
                        }
                    });
            }
            catch (const std::system_error&)
            {
                break; // the others, at least the caller's thread, do its share
            }
        }
        while (queue.runNext(0))
        {
            const auto done = static_cast<int>((stage.to - stage.from) * queue.doneCount() / pieceCount);
            if (!report(std::max(stage.from + done, lastPercent_), stage.name))
            {
                queue.stop();
            }
        }
    }
    queue.rethrowFailure();
    return !isStopped_;
}

void ThreadWorkers::throwStopped(const std::string& sentence) const
{
    if (failure_)
    {
        std::rethrow_exception(failure_);
    }
    throw Cancelled(sentence);
}

} // namespace veltrane
