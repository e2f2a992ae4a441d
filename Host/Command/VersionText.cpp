#include "VersionText.h"

#include "Text.h"

#include <Veltrane.h>

namespace veltrane
{

std::string versionText()
{
    constexpr int kind = 0;
    constexpr int version = 1;
    constexpr int build = 2;
    return text("veltrane " VELTRANE_VERSION "\nlibrary: ", Veltrane_get_module_info(kind), ", version ",
                Veltrane_get_module_info(version), "\n", Veltrane_get_module_info(build));
}

} // namespace veltrane
