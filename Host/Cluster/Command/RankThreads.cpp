#include "RankThreads.h"

#include "CallSettings.h"

#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace veltrane
{
namespace
{

struct Cores
{
    std::array<char, 256> host{};
    cpu_set_t allowed{};
};

} // namespace

int threadsOfRank(const Communicator& ranks)
{
    Cores own;
    gethostname(own.host.data(), own.host.size() - 1);
    CPU_ZERO(&own.allowed);
    sched_getaffinity(0, sizeof(own.allowed), &own.allowed);
    const std::vector<Cores> all = ranks.gathered(own);
    const auto sharers = std::ranges::count_if(
        all, [&](const Cores& other) { return other.host == own.host && CPU_EQUAL(&other.allowed, &own.allowed); });
    return std::max(1, usableThreadCount() / static_cast<int>(sharers));
}

} // namespace veltrane
