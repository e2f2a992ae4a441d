// The command veltrane.
#include "CompareCommand.h"
#include "ExitStatus.h"
#include "Failures.h"
#include "FileErrors.h"
#include "InfoCommand.h"
#include "Interruption.h"
#include "MatchCommand.h"
#include "MeshFile.h"
#include "SampleCommand.h"
#include "Text.h"
#include "TransferCommand.h"
#include "VersionText.h"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstring>
#include <iostream>

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

} // namespace

int main(int argc, char** argv)
{
    using veltrane::ExitStatus;
    veltrane::catchInterruptions();
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

    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& error)
    {
        const int code = app.exit(error);
        return code == 0 ? 0 : static_cast<int>(ExitStatus::usage);
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
