/// What is measured of one call, and how: processor time and memory of a process that does nothing else.
#ifndef VELTRANE_BENCHMARKS_MEASUREMENT_H
#define VELTRANE_BENCHMARKS_MEASUREMENT_H

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <type_traits>

namespace benchmarks
{
/// One run of one engine. Times are processor seconds, user and system together; a NaN or -1 was not measured.
struct Measurement
{
    double setUp = std::numeric_limits<double>::quiet_NaN();
    double evaluation = std::numeric_limits<double>::quiet_NaN();
    double total = std::numeric_limits<double>::quiet_NaN();
    std::int64_t extraBytes = -1;   ///< peak of the resident memory above what was resident before the call
    std::int64_t nbPoints = 0;      ///< points, or entries of a correspondence
    std::int64_t nbNotFound = 0;    ///< points without a value, or wrong entries
    std::int64_t nbNearMisses = -1; ///< points outside every element that took the nearest one
    std::int64_t nbBuckets = -1;    ///< of the library's grid
    double largestError = std::numeric_limits<double>::quiet_NaN();
};
static_assert(std::is_trivially_copyable_v<Measurement>, "crosses a pipe between processes");

/// Measures from its construction to stop(). Construct it after everything that belongs to the host is allocated and
/// touched.
class Meter
{
public:
    Meter();

    /// The set-up ends here.
    void endSetUp();
    /// The call ends here; gives the times and the memory.
    Measurement stop() const;

private:
    std::int64_t itsBytesBefore;
    double itsStart;
    double itsEndOfSetUp = std::numeric_limits<double>::quiet_NaN();
};

/// One way to do a case. `measure` is called in a process of its own.
struct Engine
{
    std::string name;
    std::function<Measurement()> measure;
};

/// Runs an engine in a child process, whose working directory is empty and goes away with it. Throws
/// std::runtime_error if the child ends without a result.
Measurement measureInChild(const Engine& engine);
} // namespace benchmarks

#endif
