#include "LibraryCall.h"

#include "Errors.h"
#include "PrivateSurroundings.h"
#include "Text.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace veltrane
{
namespace
{

constexpr std::size_t messageSize = 1000;
constexpr const char* logName = "interpoLog.txt";

/// The text in one line, without blanks at its ends.
std::string oneLine(const std::string& lines)
{
    std::string line;
    bool gap = false;
    for (const char character : lines)
    {
        if (character == '\n' || character == ' ')
        {
            gap = !line.empty();
            continue;
        }
        if (gap)
        {
            line += ' ';
            gap = false;
        }
        line += character;
    }
    return line;
}

std::optional<std::string> readFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
    {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

void checkTuning(const Tuning& tuning)
{
    // Written so that "not a number" fails too.
    if (tuning.tolerance && !(*tuning.tolerance > 0 && *tuning.tolerance < 1))
    {
        throw InvalidOption(text("the tolerance ", *tuning.tolerance, " is not between 0 and 1"));
    }
    if (tuning.bucketFactor && !(*tuning.bucketFactor >= 0 && *tuning.bucketFactor <= 1000))
    {
        throw InvalidOption(text("the bucket factor ", *tuning.bucketFactor, " is not between 0 and 1000"));
    }
    if (tuning.maxBuckets && *tuning.maxBuckets < 1)
    {
        throw InvalidOption(text("the number of buckets cannot be limited to ", *tuning.maxBuckets));
    }
}

/// The library reads three numbers and leaves the settings as they are from the first one on that it cannot read.
void writeTuning(const std::filesystem::path& path, const Tuning& tuning)
{
    if (!tuning.tolerance && !tuning.bucketFactor && !tuning.maxBuckets)
    {
        return;
    }
    // Through the C library, so that the library reads the numbers in the locale that they are written in.
    std::FILE* file = std::fopen(path.c_str(), "w");
    const bool written =
        file != nullptr &&
        std::fprintf(file, "%.9g %.9g %lld\n", static_cast<double>(tuning.bucketFactor.value_or(0.1F)),
                     static_cast<double>(tuning.tolerance.value_or(0.001F)), tuning.maxBuckets.value_or(10000000)) > 0;
    const bool closed = file != nullptr && std::fclose(file) == 0;
    if (!written || !closed)
    {
        throw Error(text("cannot write '", path.string(), "'"));
    }
}

/// The call in progress. The library's callback carries no pointer of the host's, so there is one at a time.
class CallInProgress
{
public:
    CallInProgress(PrivateSurroundings& surroundings, const ProgressCallback& progress);
    ~CallInProgress();
    CallInProgress(const CallInProgress&) = delete;
    CallInProgress& operator=(const CallInProgress&) = delete;

    static int forward(int percent, char* title, char* stage, int kind);
    bool wasStopped() const { return stopped_; }

    /// Throws what the progress callback has thrown.
    void rethrowFailure() const
    {
        if (failure_)
        {
            std::rethrow_exception(failure_);
        }
    }

private:
    static void endWithLibrary();
    bool report(const Progress& progress) noexcept;

    PrivateSurroundings& surroundings_;
    const ProgressCallback& progress_;
    bool stopped_ = false;
    std::exception_ptr failure_;

    static CallInProgress* current;
    static std::atomic<std::thread::id> thread; ///< of the call; none if there is no call
    static std::atomic<bool> isInLibrary;       ///< false while a progress callback runs
};

CallInProgress* CallInProgress::current = nullptr;
std::atomic<std::thread::id> CallInProgress::thread{};
std::atomic<bool> CallInProgress::isInLibrary{false};

CallInProgress::CallInProgress(PrivateSurroundings& surroundings, const ProgressCallback& progress)
    : surroundings_(surroundings), progress_(progress)
{
    static const bool registered = std::atexit(endWithLibrary) == 0;
    if (!registered)
    {
        throw Error("cannot guard the process against its end within the library");
    }
    surroundings_.enter();
    current = this;
    isInLibrary = true;
    thread = std::this_thread::get_id();
}

CallInProgress::~CallInProgress()
{
    thread = std::thread::id();
    isInLibrary = false;
    current = nullptr;
    surroundings_.leave();
}

/// On a fault in its data the library prints a line and calls exit(0). When the process gets here on the thread of the
/// call from within the library, that has happened: whoever waits for this process must not take it for success.
void CallInProgress::endWithLibrary()
{
    if (thread.load() != std::this_thread::get_id())
    {
        return;
    }
    PrivateSurroundings& surroundings = current->surroundings_;
    if (!isInLibrary)
    {
        surroundings.removeDirectory(); // a progress callback ends the process, as it may
        return;
    }
    surroundings.leave();
    const std::string line = oneLine(surroundings.capturedOutput());
    surroundings.removeDirectory();
    std::fprintf(stderr, "veltrane: the library ended the computation: %s\n",
                 line.empty() ? "it gave no reason" : line.c_str());
    std::_Exit(EXIT_FAILURE);
}

int CallInProgress::forward(int percent, char* title, char* stage, int kind)
{
    constexpr int progressReport = 1;
    if (kind != progressReport)
    {
        return 1;
    }
    if (current->report(Progress{percent, title, stage}))
    {
        return 1;
    }
    current->stopped_ = true;
    return 0;
}

/// The callback belongs to the user: it sees the user's directory and standard output, and may end the process.
bool CallInProgress::report(const Progress& progress) noexcept
{
    bool goOn = false;
    isInLibrary = false;
    surroundings_.leave();
    try
    {
        goOn = progress_(progress);
    }
    catch (...)
    {
        failure_ = std::current_exception();
    }
    try
    {
        surroundings_.enter();
    }
    catch (...)
    {
        failure_ = std::current_exception();
        goOn = false;
    }
    isInLibrary = true;
    return goOn;
}

/// Lets one call pass at a time, and none from within another.
class Turn
{
public:
    Turn()
    {
        if (holder.load() == std::this_thread::get_id())
        {
            throw Error("a progress callback cannot start another computation");
        }
        mutex.lock();
        holder = std::this_thread::get_id();
    }
    ~Turn()
    {
        holder = std::thread::id();
        mutex.unlock();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    static std::mutex mutex;
    static std::atomic<std::thread::id> holder;
};

std::mutex Turn::mutex;
std::atomic<std::thread::id> Turn::holder{};

} // namespace

LibraryOutcome callLibrary(const char* tuningFileName, const Tuning& tuning, const ProgressCallback& progress,
                           const Computation& computation)
{
    checkTuning(tuning);
    const Turn turn;
    PrivateSurroundings surroundings;
    writeTuning(surroundings.file(tuningFileName), tuning);

    std::vector<char> message(messageSize + 1, '\0');
    LibraryOutcome outcome{};
    bool stopped = false;
    {
        const CallInProgress call(surroundings, progress);
        computation(message.data(), &outcome.code, progress ? CallInProgress::forward : nullptr);
        call.rethrowFailure();
        stopped = call.wasStopped();
    }
    outcome.message = oneLine(message.data());
    outcome.log = readFile(surroundings.file(logName));
    outcome.output = surroundings.capturedOutput();

    // A code of -1 is a cancellation or a warning. After the report that the callback has answered with "stop" the
    // library gives no warning any more.
    if (outcome.code < 0 && stopped)
    {
        throw Cancelled(outcome.message);
    }
    if (outcome.code == 2)
    {
        throw TargetOutside(outcome.message);
    }
    if (outcome.code > 0)
    {
        throw TransferError(outcome.message, outcome.code);
    }
    return outcome;
}

} // namespace veltrane
