// The command veltrane.
#include "CommandLine.h"
#include "CompareCommand.h"
#include "ExitStatus.h"
#include "Failures.h"
#include "FileErrors.h"
#include "InfoCommand.h"
#include "Interruption.h"
#include "Launcher.h"
#include "MatchCommand.h"
#include "MeshFile.h"
#include "SampleCommand.h"
#include "Text.h"
#include "TransferCommand.h"
#include "VersionText.h"

#include <CLI/CLI.hpp>

#ifdef __GLIBC__
#    include <malloc.h>
#endif

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

/// What is told must arrive, on a full disk as well.
veltrane::ExitStatus afterFlush(veltrane::ExitStatus status)
{
    std::cout.flush();
    if (!std::cout)
    {
        throw veltrane::CannotWrite(veltrane::text("cannot write to standard output: ", std::strerror(errno)));
    }
    return status;
}

/// Large arrays go back to the system as soon as nobody needs them, so that the next ones find room.
void releaseMemoryEarly()
{
#ifdef __GLIBC__
    constexpr int large = 1 << 22;
    ::mallopt(M_MMAP_THRESHOLD, large);
#endif
}

/// Insertions, deletions and replacements of a letter that make one word of the other.
std::size_t distanceBetween(std::string_view first, std::string_view second)
{
    std::vector<std::size_t> distances(second.size() + 1);
    std::iota(distances.begin(), distances.end(), std::size_t{0});
    for (std::size_t i = 0; i < first.size(); ++i)
    {
        std::size_t diagonal = std::exchange(distances.front(), i + 1);
        for (std::size_t j = 0; j < second.size(); ++j)
        {
            const std::size_t replaced = diagonal + (first[i] == second[j] ? 0 : 1);
            diagonal = distances[j + 1];
            distances[j + 1] = std::min({replaced, distances[j] + 1, distances[j + 1] + 1});
        }
    }
    return distances.back();
}

/// "'transfer'", or all commands if none is like the word.
std::string suggestionFor(const std::string& word, const CLI::App& app)
{
    constexpr std::size_t farthest = 2;
    std::string all;
    std::pair<std::size_t, std::string> nearest{farthest + 1, ""};
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
    {
        const std::string& name = command->get_name();
        all += veltrane::text(all.empty() ? "" : ", ", name);
        const bool isBeginning = !word.empty() && name.starts_with(word);
        nearest = std::min(nearest, {isBeginning ? 0 : distanceBetween(word, name), veltrane::text("'", name, "'")});
    }
    return nearest.first <= farthest ? nearest.second : veltrane::text("one of ", all);
}

/// The first word is a command, unless it is an option. Of the parser nothing more can be had than that it does not
/// expect the word. Nothing if all is well.
std::string unknownCommandText(int argc, char** argv, const CLI::App& app)
{
    const std::string word = argc < 2 ? "-" : argv[1];
    const auto isWord = [&](const CLI::App* command) { return command->get_name() == word; };
    if (word.starts_with('-') || !app.get_subcommands(isWord).empty())
    {
        return "";
    }
    return veltrane::text("there is no command '", word, "'; did you mean ", suggestionFor(word, app), "?");
}

} // namespace

int main(int argc, char** argv)
{
    releaseMemoryEarly();
    using veltrane::ExitStatus;
    veltrane::catchInterruptions();
    veltrane::rememberCommandLine(argc, argv);
    CLI::App app("Transfers results between finite-element meshes.", "veltrane");
    app.require_subcommand(1);
    app.set_version_flag("--version", veltrane::versionText, "Print the versions of the command and of the library");
    app.footer(veltrane::text("Examples:\n"
                              "  veltrane transfer thermal.vtu structure.vtu -o loaded.vtu\n"
                              "  veltrane sample thermal.vtu sensors.csv -o readings.csv\n"
                              "  veltrane match nodes assembly.vtu part.vtu -o nodes.csv\n"
                              "  veltrane match gauss assembly.vtu part.vtu -o gauss.csv\n"
                              "  veltrane info thermal.vtu\n"
                              "  veltrane compare loaded.vtu solved.vtu\n\n",
                              veltrane::exitStatusHelp));
    app.failure_message([](const CLI::App*, const CLI::Error& error)
                        { return veltrane::text("veltrane: ", error.what(), " (see --help)\n"); });
    const veltrane::TransferCommand transfer(app);
    const veltrane::SampleCommand sample(app);
    const veltrane::MatchCommand match(app);
    const veltrane::InfoCommand info(app);
    const veltrane::CompareCommand compare(app);

    // Of several processes one speaks.
    const veltrane::Launch launch = veltrane::findLaunch();
    std::ostream nowhere(nullptr);
    std::ostream& out = launch.rank == 0 ? std::cout : nowhere;
    std::ostream& err = launch.rank == 0 ? std::cerr : nowhere;
    if (const std::string sentence = unknownCommandText(argc, argv, app); !sentence.empty())
    {
        err << "veltrane: " << sentence << '\n';
        return static_cast<int>(ExitStatus::usage);
    }
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& error)
    {
        const int code = app.exit(error, out, err);
        return code == 0 ? 0 : static_cast<int>(ExitStatus::usage);
    }
    if (launch.launcher == veltrane::Launcher::other)
    {
        err << "veltrane: this veltrane works in several processes with Open MPI only, and another launcher has "
               "started "
               "it; use mpirun of Open MPI\n";
        return static_cast<int>(ExitStatus::usage);
    }
    if (launch.launcher == veltrane::Launcher::openMpi)
    {
        if (transfer.isChosen())
        {
            const std::string reason = veltrane::joinOthers(argv);
            err << "veltrane: " << reason << '\n';
            return static_cast<int>(ExitStatus::usage);
        }
        if (launch.rank != 0)
        {
            return 0; // the first process does what is no work for several
        }
    }
    ExitStatus status = ExitStatus::usage;
    const auto runIfChosen = [&](const auto&... commands)
    {
        ((status = commands.isChosen() ? veltrane::runReportingFailures([&] { return afterFlush(commands.run()); })
                                       : status),
         ...);
    };
    runIfChosen(transfer, sample, match, info, compare);
    return static_cast<int>(status);
}
