// The command veltrane as one of several processes, which it becomes after it has found its arguments in order.
#include "Agreement.h"
#include "ClusterTransfer.h"

#include "Failures.h"
#include "Interruption.h"
#include "OutputFile.h"
#include "TransferCommand.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <chrono>
#include <iostream>
#include <optional>
#include <thread>

namespace
{

using veltrane::ExitStatus;

/// A launcher leaves its processes little time between a first and a last signal, and they wait for each other: so
/// whoever is interrupted ends at once, and leaves nothing behind.
void endWhenInterrupted(bool isSpeaking)
{
    const auto watch = [isSpeaking]
    {
        constexpr std::chrono::milliseconds pause(50);
        while (!veltrane::isInterrupted())
        {
            std::this_thread::sleep_for(pause);
        }
        veltrane::removePendingOutputs();
        if (isSpeaking)
        {
            std::cerr << "veltrane: cancelled\n" << std::flush;
        }
        ::_exit(static_cast<int>(ExitStatus::cancelled));
    };
    std::thread(watch).detach();
}

struct Ending
{
    ExitStatus status = ExitStatus::done;
    bool hasReason = false; ///< a sentence of its own
};

/// One rank tells why all end.
ExitStatus endTogether(const veltrane::Communicator& ranks)
{
    const std::exception_ptr thrown = std::current_exception();
    const veltrane::Failure failure = veltrane::failureOf(thrown);
    Ending ending{failure.status, true};
    try
    {
        std::rethrow_exception(thrown);
    }
    catch (const veltrane::FailedElsewhere&)
    {
        ending.hasReason = false;
    }
    catch (...)
    {
    }
    if (!veltrane::hasFailedTogether())
    {
        std::cerr << "veltrane: " << failure.sentence << '\n' << std::flush;
        veltrane::removePendingOutputs();
        MPI_Abort(ranks.comm(), static_cast<int>(failure.status));
    }
    const std::vector<Ending> endings = ranks.gathered(ending);
    for (std::size_t rank = 0; rank < endings.size(); ++rank)
    {
        if (endings[rank].hasReason)
        {
            if (static_cast<int>(rank) == ranks.rank())
            {
                std::cerr << "veltrane: " << failure.sentence << '\n';
            }
            return endings[rank].status;
        }
    }
    return failure.status;
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Transfers results between finite-element meshes.", "veltrane");
    const veltrane::TransferCommand transfer(app);
    CLI11_PARSE(app, argc, argv); // they are known to be in order
    int threads = 0;
    MPI_Init_thread(nullptr, nullptr, MPI_THREAD_FUNNELED, &threads);
    ExitStatus status = ExitStatus::done;
    {
        const veltrane::Communicator ranks(MPI_COMM_WORLD);
        veltrane::catchInterruptions();
        endWhenInterrupted(ranks.rank() == 0);
        try
        {
            status = veltrane::transferOnAllRanks(ranks, transfer.choices());
        }
        catch (const std::exception&)
        {
            status = endTogether(ranks);
        }
    }
    MPI_Finalize();
    return static_cast<int>(status);
}
