#include "Agreement.h"

#include <algorithm>
#include <new>
#include <string>

namespace veltrane
{
namespace
{

bool hasThrown = false;

enum class Fault : int
{
    none,
    invalidData,
    invalidOption,
    targetOutside,
    transferError,
    cancelled,
    other
};

struct Report
{
    Fault fault = Fault::none;
    int code = 0;
};

/// What it is, and its sentence.
Report reportOf(const std::exception_ptr& thrown, std::string& sentence)
{
    try
    {
        std::rethrow_exception(thrown);
    }
    catch (const InvalidData& error)
    {
        sentence = error.what();
        return {Fault::invalidData, 0};
    }
    catch (const InvalidOption& error)
    {
        sentence = error.what();
        return {Fault::invalidOption, 0};
    }
    catch (const TargetOutside& error)
    {
        sentence = error.what();
        return {Fault::targetOutside, error.code()};
    }
    catch (const TransferError& error)
    {
        sentence = error.what();
        return {Fault::transferError, error.code()};
    }
    catch (const Cancelled& error)
    {
        sentence = error.what();
        return {Fault::cancelled, 0};
    }
    catch (const std::bad_alloc&)
    {
        sentence = "there is not enough memory";
    }
    catch (const std::exception& error)
    {
        sentence = error.what();
    }
    catch (...)
    {
        sentence = "something failed";
    }
    return {Fault::other, 0};
}

[[noreturn]] void throwAsReported(const Report& report, const std::string& sentence)
{
    switch (report.fault)
    {
    case Fault::invalidData: throw InvalidData(sentence);
    case Fault::invalidOption: throw InvalidOption(sentence);
    case Fault::targetOutside: throw TargetOutside(sentence);
    case Fault::transferError: throw TransferError(sentence, report.code);
    case Fault::cancelled: throw Cancelled(sentence);
    case Fault::none:
    case Fault::other: break;
    }
    throw FailedElsewhere(sentence);
}

} // namespace

void agree(const Communicator& ranks, const std::function<void()>& work)
{
    std::exception_ptr thrown;
    Report own;
    std::string sentence;
    try
    {
        work();
    }
    catch (...)
    {
        thrown = std::current_exception();
        own = reportOf(thrown, sentence);
    }
    const std::vector<Report> reports = ranks.gathered(own);
    const auto first = std::ranges::find_if(reports, [](const Report& report) { return report.fault != Fault::none; });
    if (first == reports.end())
    {
        return;
    }
    hasThrown = true;
    const auto rank = static_cast<int>(first - reports.begin());
    sentence = ranks.told(sentence, rank);
    if (rank == ranks.rank())
    {
        std::rethrow_exception(thrown);
    }
    throwAsReported(*first, sentence);
}

bool hasFailedTogether()
{
    return hasThrown;
}

} // namespace veltrane
