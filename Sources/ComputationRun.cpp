#include "ComputationRun.h"

#include "MappingClass.h"

#include <cstdarg>

namespace
{
void copyText(char (&target)[256], const char* text)
{
    std::snprintf(target, sizeof target, "%s", text);
}
} // namespace

bool ComputationRun::start()
{
    copyText(itsMapping.itsTitle, itsTexts.title);
    return enterStage("Pretreatment", 0);
}

bool ComputationRun::enterStage(const char* stage, int progress)
{
    copyText(itsMapping.itsStage, stage);
    itsMapping.itsProgress = progress;
    return callBack();
}

bool ComputationRun::advance(ProgressCounter& progress)
{
    if (!progress.advance())
    {
        return true;
    }
    itsMapping.itsProgress = progress.percent();
    return callBack();
}

void ComputationRun::terminate()
{
    itsMapping.itsProgress = 100;
    copyText(itsMapping.itsStage, itsTexts.terminated);
    if (itsMapping.itsCallback != nullptr)
    {
        itsMapping.itsCallback(itsMapping.itsProgress, itsMapping.itsTitle, itsMapping.itsStage, 1);
    }
}

bool ComputationRun::fail(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(itsBuffer.text(), messageCapacity, format, arguments);
    va_end(arguments);
    itsMapping.adoptErrorText(itsBuffer.release(), failure);
    return false;
}

/// Reports title, stage and progress as they are. If the host answers 0, sets the outcome of a cancellation, notifies
/// the host of it and returns false.
bool ComputationRun::callBack()
{
    if (itsMapping.itsCallback == nullptr ||
        itsMapping.itsCallback(itsMapping.itsProgress, itsMapping.itsTitle, itsMapping.itsStage, 1) != 0)
    {
        return true;
    }
    itsMapping.itsCancelled = 1;
    formatMessage(itsBuffer.text(), "%s", itsTexts.cancelled);
    copyText(itsMapping.itsStage, itsBuffer.text());
    itsMapping.adoptErrorText(itsBuffer.release(), cancelledOrWarned);
    itsMapping.itsCallback(0, itsMapping.itsTitle, itsMapping.itsStage, 0);
    return false;
}
