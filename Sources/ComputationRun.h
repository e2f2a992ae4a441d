/// One run of a computation of the mapping object, as its host sees it: texts, progress, cancellation, failure.
#ifndef VELTRANE_COMPUTATION_RUN_H
#define VELTRANE_COMPUTATION_RUN_H

#include "MappingStringUtilities.h"

#include <algorithm>
#include <cstdint>

class MappingClass;

/// The texts that distinguish one computation from another.
struct ComputationTexts
{
    const char* name; ///< qualified name, for the message buffer
    const char* title;
    const char* cancelled;
    const char* terminated;
};

/// When progress is due: about once per percent of the points.
class ProgressCounter
{
public:
    /// How the percentage is formed. Hosts know the Gauss-point correspondence to compute it in 32 bits, so that beyond
    /// 21 million points it starts again.
    enum class Arithmetic
    {
        wide,
        wrapping32Bit
    };

    explicit ProgressCounter(std::int64_t total, Arithmetic arithmetic = Arithmetic::wide)
        : itsTotal(total), itsStep(std::max<std::int64_t>(total / 100, 1)), itsArithmetic(arithmetic)
    {
    }

    std::int64_t total() const { return itsTotal; }

    /// Counts one point; true if a report is due after it.
    bool advance() { return ++itsDone % itsStep == 0; }

    /// Percent done, never below the 5 that the preparation counts for.
    int percent() const
    {
        const std::int64_t hundredfold = itsArithmetic == Arithmetic::wrapping32Bit
                                             ? static_cast<std::int32_t>(static_cast<std::uint32_t>(itsDone) * 100U)
                                             : itsDone * 100;
        return std::max(static_cast<int>(hundredfold / itsTotal), 5);
    }

private:
    std::int64_t itsTotal;
    std::int64_t itsStep;
    std::int64_t itsDone = 0;
    Arithmetic itsArithmetic;
};

class ComputationRun
{
public:
    ComputationRun(MappingClass& mapping, const ComputationTexts& texts)
        : itsMapping(mapping), itsTexts(texts), itsBuffer(texts.name)
    {
    }

    /// Sets the title and enters the first stage; false if the host cancels.
    bool start();

    /// Enters a stage; false if the host cancels.
    bool enterStage(const char* stage, int progress);

    /// Counts one point, and reports if it is time; false if the host cancels.
    bool advance(ProgressCounter& progress);

    /// Reports the end of a run that succeeded.
    void terminate();

    /// Ends the run with a text, formatted as by printf; always false.
    [[gnu::format(printf, 2, 3)]] bool fail(const char* format, ...);

private:
    bool callBack();

    MappingClass& itsMapping;
    const ComputationTexts& itsTexts;
    MessageBuffer itsBuffer;
};

#endif
