/// Names that nothing else has.
#ifndef VELTRANE_COMMAND_UNIQUE_WORD_H
#define VELTRANE_COMMAND_UNIQUE_WORD_H

#include <string>

namespace veltrane
{

/// Twelve random letters and digits for the name of a temporary file: another one each time, in whatever process.
std::string uniqueWord();

} // namespace veltrane

#endif
