#include "Measurement.h"

#include "TemporaryDirectory.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace benchmarks
{
namespace
{
double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// A line of /proc/self/status that counts kilobytes.
std::int64_t statusBytes(const std::string& key)
{
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word)
    {
        if (word == key + ":")
        {
            std::int64_t kilobytes = 0;
            status >> kilobytes;
            return 1024 * kilobytes;
        }
    }
    throw std::runtime_error("/proc/self/status has no " + key);
}

/// The peak counts from here on. Where the system does not allow it, the peak of the process so far stays in.
void resetPeakMemory()
{
    std::ofstream("/proc/self/clear_refs") << "5";
}

/// What the child does; it never returns into the parent's code.
[[noreturn]] void runAsChild(const Engine& engine, const std::filesystem::path& folder, int resultEnd)
{
    try
    {
        std::filesystem::current_path(folder);
        const Measurement measurement = engine.measure();
        const bool isWritten = write(resultEnd, &measurement, sizeof measurement) == sizeof measurement;
        std::fflush(nullptr);
        _exit(isWritten ? 0 : 1);
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "%s: %s\n", engine.name.c_str(), error.what());
        _exit(1);
    }
}
} // namespace

Meter::Meter()
{
    // Blocks that were freed earlier must not serve the call unseen.
    malloc_trim(0);
    resetPeakMemory();
    itsBytesBefore = statusBytes("VmRSS");
    itsStart = processorSeconds();
}

void Meter::endSetUp()
{
    itsEndOfSetUp = processorSeconds();
}

Measurement Meter::stop() const
{
    const double end = processorSeconds();
    Measurement measurement;
    measurement.setUp = itsEndOfSetUp - itsStart;
    measurement.evaluation = end - itsEndOfSetUp;
    measurement.total = end - itsStart;
    measurement.extraBytes = statusBytes("VmHWM") - itsBytesBefore;
    return measurement;
}

Measurement measureInChild(const Engine& engine)
{
    const TemporaryDirectory folder;
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0)
    {
        throw std::runtime_error("cannot make a pipe");
    }
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0)
    {
        close(ends[0]);
        runAsChild(engine, folder.path(), ends[1]);
    }
    close(ends[1]);
    Measurement measurement;
    const bool isRead = child > 0 && read(ends[0], &measurement, sizeof measurement) == sizeof measurement;
    close(ends[0]);
    int status = 0;
    if (child > 0)
    {
        waitpid(child, &status, 0);
    }
    if (!isRead)
    {
        throw std::runtime_error("the engine " + engine.name + " ended without a result");
    }
    return measurement;
}
} // namespace benchmarks
