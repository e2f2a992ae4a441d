#ifndef VELTRANE_COMMAND_VERSION_TEXT_H
#define VELTRANE_COMMAND_VERSION_TEXT_H

#include <string>

namespace veltrane
{

/// The command's version and what the library says about itself.
std::string versionText();

} // namespace veltrane

#endif
