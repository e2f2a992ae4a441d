/// Whether veltrane was started by a launcher of parallel programs, which starts it several times.
#ifndef VELTRANE_COMMAND_LAUNCHER_H
#define VELTRANE_COMMAND_LAUNCHER_H

#include <string>

namespace veltrane
{

enum class Launcher
{
    none,
    openMpi,
    other
};

struct Launch
{
    Launcher launcher = Launcher::none;
    int rank = 0; ///< as the launcher counts its processes
};

/// As the environment tells; nothing else is touched.
Launch findLaunch();

/// Replaces this process by the one that works with the others of its launch, whose program lies beside this one.
/// Returns only if that cannot be done, and why.
std::string joinOthers(char** argv);

} // namespace veltrane

#endif
