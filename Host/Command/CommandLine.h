/// The command as it was given, so that a colleague can repeat it.
#ifndef VELTRANE_COMMAND_COMMAND_LINE_H
#define VELTRANE_COMMAND_COMMAND_LINE_H

#include <string>

namespace veltrane
{

/// To be called once, before anything else asks.
void rememberCommandLine(int count, const char* const* words);

/// With the words quoted that a shell would change; "veltrane" in the place of the program's path.
const std::string& commandLine();

/// A word as a shell takes it.
std::string quotedForShell(const std::string& word);

} // namespace veltrane

#endif
