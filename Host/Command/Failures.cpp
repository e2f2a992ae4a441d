#include "Failures.h"

#include "FileErrors.h"

#include <iostream>
#include <new>

namespace veltrane
{
namespace
{

ExitStatus fail(const std::exception& error, ExitStatus status)
{
    std::cerr << "veltrane: " << error.what() << '\n';
    return status;
}

} // namespace

ExitStatus runReportingFailures(const std::function<ExitStatus()>& work, CancellationReport cancellation)
{
    try
    {
        return work();
    }
    catch (const InvalidOption& error)
    {
        return fail(error, ExitStatus::usage);
    }
    catch (const NoInput& error)
    {
        return fail(error, ExitStatus::noInput);
    }
    catch (const BadFile& error)
    {
        return fail(error, ExitStatus::badData);
    }
    catch (const InvalidData& error)
    {
        return fail(error, ExitStatus::badData);
    }
    catch (const CannotWrite& error)
    {
        return fail(error, ExitStatus::cannotCreate);
    }
    catch (const TargetOutside& error)
    {
        return fail(error, ExitStatus::targetOutside);
    }
    catch (const Cancelled&)
    {
        std::cerr << (cancellation == CancellationReport::message ? "veltrane: cancelled\n" : "");
        return ExitStatus::cancelled;
    }
    catch (const std::bad_alloc&)
    {
        std::cerr << "veltrane: there is not enough memory\n";
        return ExitStatus::failed;
    }
    catch (const std::exception& error)
    {
        return fail(error, ExitStatus::failed);
    }
}

} // namespace veltrane
