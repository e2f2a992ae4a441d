#include "Failures.h"

#include "FileErrors.h"

#include <iostream>
#include <new>

namespace veltrane
{

Failure failureOf(const std::exception_ptr& thrown)
{
    try
    {
        std::rethrow_exception(thrown);
    }
    catch (const InvalidOption& error)
    {
        return {ExitStatus::usage, error.what()};
    }
    catch (const NoInput& error)
    {
        return {ExitStatus::noInput, error.what()};
    }
    catch (const BadFile& error)
    {
        return {ExitStatus::badData, error.what()};
    }
    catch (const InvalidData& error)
    {
        return {ExitStatus::badData, error.what()};
    }
    catch (const CannotWrite& error)
    {
        return {ExitStatus::cannotCreate, error.what()};
    }
    catch (const TargetOutside& error)
    {
        return {ExitStatus::targetOutside, error.what()};
    }
    catch (const Cancelled&)
    {
        return {ExitStatus::cancelled, "cancelled"};
    }
    catch (const std::bad_alloc&)
    {
        return {ExitStatus::failed, "there is not enough memory"};
    }
    catch (const std::exception& error)
    {
        return {ExitStatus::failed, error.what()};
    }
}

ExitStatus runReportingFailures(const std::function<ExitStatus()>& work, CancellationReport cancellation)
{
    try
    {
        return work();
    }
    catch (const std::exception&)
    {
        const Failure failure = failureOf(std::current_exception());
        if (failure.status != ExitStatus::cancelled || cancellation == CancellationReport::message)
        {
            std::cerr << "veltrane: " << failure.sentence << '\n';
        }
        return failure.status;
    }
}

} // namespace veltrane
