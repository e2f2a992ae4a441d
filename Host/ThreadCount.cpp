#include "CallSettings.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <string>
#include <thread>

#include <sched.h>

namespace veltrane
{
namespace
{

constexpr double unlimited = std::numeric_limits<double>::infinity();

/// The processors that a control group grants, by "quota period" in its file, or "max period".
double grantedBy(const std::string& directory)
{
    std::ifstream file(directory + "/cpu.max");
    double quota = 0;
    double period = 0;
    return file >> quota >> period && quota > 0 && period > 0 ? quota / period : unlimited;
}

/// The same in the older form, of two files; a quota of -1 is none.
double grantedByOlderForm(const std::string& directory)
{
    std::ifstream quotaFile(directory + "/cpu.cfs_quota_us");
    std::ifstream periodFile(directory + "/cpu.cfs_period_us");
    double quota = 0;
    double period = 0;
    return quotaFile >> quota && periodFile >> period && quota > 0 && period > 0 ? quota / period : unlimited;
}

/// The least that any of the process's control groups, or one above it, grants. A line of the list is
/// "number:controllers:path"; no controllers stand for the newer form.
double grantedByControlGroups()
{
    double granted = std::min(grantedBy("/sys/fs/cgroup"), grantedByOlderForm("/sys/fs/cgroup/cpu"));
    std::ifstream list("/proc/self/cgroup");
    for (std::string line; std::getline(list, line);)
    {
        const std::size_t first = line.find(':');
        const std::size_t second = line.find(':', first + 1);
        if (first == std::string::npos || second == std::string::npos)
        {
            continue;
        }
        const bool isNewer = second == first + 1;
        for (std::string path = line.substr(second + 1); path.size() > 1; path.resize(path.rfind('/')))
        {
            granted = std::min(granted, isNewer ? grantedBy("/sys/fs/cgroup" + path)
                                                : grantedByOlderForm("/sys/fs/cgroup/cpu" + path));
        }
    }
    return granted;
}

/// The processors that the scheduler may put the process on. The standard library counts those that the machine has.
int countByAffinity()
{
    cpu_set_t usable;
    CPU_ZERO(&usable);
    // Fails on machines with more processors than the set has room for.
    return sched_getaffinity(0, sizeof usable, &usable) == 0 ? CPU_COUNT(&usable)
                                                             : static_cast<int>(std::thread::hardware_concurrency());
}

} // namespace

int usableThreadCount()
{
    const int byAffinity = countByAffinity();
    const double granted = std::ceil(grantedByControlGroups());
    return std::max(1, granted < byAffinity ? static_cast<int>(granted) : byAffinity);
}

} // namespace veltrane
