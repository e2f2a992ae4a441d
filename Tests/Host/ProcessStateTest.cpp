// What calls leave alone in the process that makes them, and what they find out about it.
#include "Errors.h"
#include "HostMeshes.h"
#include "Map.h"
#include "Match.h"
#include "OutputFile.h"
#include "Transfer.h"

#include "TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <clocale>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <locale>
#include <sched.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
using namespace host_meshes;
using veltrane::Map;

/// Everything of a process that libraries are known to change.
std::string stateOfProcess()
{
    std::string state = std::filesystem::current_path().string() + '\n';
    state += std::string(std::setlocale(LC_ALL, nullptr)) + '\n' + std::locale().name() + '\n';
    state += "rounding " + std::to_string(std::fegetround()) + '\n';
    const mode_t mask = umask(0);
    umask(mask);
    state += "umask " + std::to_string(mask) + '\n';
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    for (int number = 1; number < 32; ++number)
    {
        struct sigaction action = {};
        sigaction(number, nullptr, &action);
        std::uintptr_t handler = 0;
        std::memcpy(&handler, &action.sa_handler, sizeof handler);
        state += std::to_string(number) + ' ' + std::to_string(handler) + ' ' + std::to_string(action.sa_flags) + ' ' +
                 std::to_string(sigismember(&blocked, number)) + '\n';
    }
    for (int descriptor = 0; descriptor < 64; ++descriptor)
    {
        state += fcntl(descriptor, F_GETFD) >= 0 ? "open " : "";
    }
    return state;
}

template <class Exception> void expectThrown(const std::function<void()>& act)
{
    EXPECT_THROW(act(), Exception);
}

/// Calls of all sorts and with all endings.
void callEverything()
{
    const veltrane::Mesh source = cubesOfAllKinds();
    const veltrane::Mesh target = block({9, 2, 3}, {0.05F, 0.04F, 0.03F}, {4.96F, 0.97F, 1.2F});
    const veltrane::Mesh outside = block({1, 1, 1}, {50, 50, 50}, {51, 51, 51});
    const auto field = fieldOf(nodePositions(source), veltrane::Location::nodes, 1, linear);
    const Map map(source, target, {.toGaussPoints = true, .fromGaussPoints = true, .threads = 3});
    map.apply(std::span(&field, 1), {.threads = 3});
    map.matrix();
    map.places();
    Map::fromBytes(map.bytes());
    veltrane::transfer(source, std::span(&field, 1), target, {.rules = {}, .threads = 2});
    veltrane::sample(source, std::span(&field, 1), cloud({0.5F, 0.5F, 0.5F}));
    veltrane::matchNodes(target, target);
    expectThrown<veltrane::TargetOutside>([&] { const Map refused(source, outside); });
    expectThrown<veltrane::TransferError>([&]
                                          { const Map refused(source, outside, {.rules = veltrane::asExported()}); });
    expectThrown<veltrane::Cancelled>(
        [&] { const Map refused(source, target, {.threads = 2, .progress = [](const auto&) { return false; }}); });
    expectThrown<veltrane::Error>([&] { Map::fromBytes({}); });
    expectThrown<veltrane::Error>([&] { Map::load("there is no such file"); });
}

TEST(Process, KeepsItsDirectoryOutputLocaleAndSignals)
{
    const WorkingDirectory directory;
    const TemporaryDirectory elsewhere;
    const std::string before = stateOfProcess();
    {
        const OutputFile output(STDOUT_FILENO, elsewhere / "output");
        const OutputFile errors(STDERR_FILENO, elsewhere / "output");
        callEverything();
    }
    EXPECT_EQ(contentsOf(elsewhere / "output"), "");
    EXPECT_EQ(stateOfProcess(), before);
    EXPECT_TRUE(directory.names().empty());
}

TEST(Process, MayHaveASmallNumberOfProcessorsOnly)
{
    EXPECT_GE(veltrane::usableThreadCount(), 1);
    cpu_set_t usable;
    CPU_ZERO(&usable);
    ASSERT_EQ(sched_getaffinity(0, sizeof usable, &usable), 0);
    EXPECT_LE(veltrane::usableThreadCount(), CPU_COUNT(&usable));
    const pid_t child = fork();
    if (child == 0)
    {
        int first = 0;
        while (!CPU_ISSET(first, &usable))
        {
            ++first;
        }
        CPU_ZERO(&usable);
        CPU_SET(first, &usable);
        const bool isSet = sched_setaffinity(0, sizeof usable, &usable) == 0;
        _exit(isSet ? veltrane::usableThreadCount() : 99);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);
}
} // namespace
