/// How the command ends.
#ifndef VELTRANE_COMMAND_EXIT_STATUS_H
#define VELTRANE_COMMAND_EXIT_STATUS_H

namespace veltrane
{

/// Usage, data, input and output errors have the customary numbers of <sysexits.h>, a cancellation the shell's for the
/// signal.
enum class ExitStatus : int
{
    done = 0,
    failed = 1,
    toleranceExceeded = 1, ///< as diff ends if there are differences
    targetOutside = 2,
    propagationWarning = 3,
    requirementMissed = 4,
    usage = 64,
    badData = 65,
    noInput = 66,
    cannotCreate = 73,
    cancelled = 130
};

/// For the help texts.
inline constexpr const char* exitStatusHelp =
    "Exit statuses:\n"
    "    0  done\n"
    "    1  failed, or a difference larger than the tolerance (compare)\n"
    "    2  parts of the target are outside the source (--outside error)\n"
    "    3  done, but parts of the target could not be reached by propagation and hold 0\n"
    "    4  done, but a rule of --require is not kept\n"
    "   64  wrong usage\n"
    "   65  unsuitable data in a file\n"
    "   66  an input file is missing or cannot be opened\n"
    "   73  the output cannot be created\n"
    "  130  cancelled\n";

} // namespace veltrane

#endif
