#include "Launcher.h"

#include "Text.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

namespace veltrane
{

Launch findLaunch()
{
    struct Sign
    {
        const char* variable; ///< with the number of the process
        Launcher launcher;
    };
    // Open MPI's own launcher, and what stands for it under a workload manager, before those of other MPIs.
    constexpr Sign signs[] = {{"OMPI_COMM_WORLD_RANK", Launcher::openMpi},
                              {"PMIX_RANK", Launcher::openMpi},
                              {"PMI_RANK", Launcher::other},
                              {"MPIRUN_RANK", Launcher::other},
                              {"MV2_COMM_WORLD_RANK", Launcher::other}};
    for (const Sign& sign : signs)
    {
        if (const char* rank = std::getenv(sign.variable))
        {
            return {sign.launcher, std::atoi(rank)};
        }
    }
    return {};
}

std::string joinOthers(char** argv)
{
    std::error_code failure;
    const std::filesystem::path own = std::filesystem::read_symlink("/proc/self/exe", failure);
    const std::string program = (own.parent_path() / "veltrane-mpi").string();
    ::execv(program.c_str(), argv);
    return text("this veltrane cannot work in several processes, since '", program,
                "' cannot be started: ", std::strerror(errno), "; start veltrane without mpirun");
}

} // namespace veltrane
