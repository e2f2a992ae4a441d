/// One report for all steps of a series.
#ifndef VELTRANE_COMMAND_SERIES_REPORT_H
#define VELTRANE_COMMAND_SERIES_REPORT_H

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

/// A step, and the report that its transfer has written.
struct StepReport
{
    std::string output; ///< as the collection names it
    std::optional<double> time;
    std::string report; ///< JSON
};

/// Writes a page with a row for each step, or, if the name ends in .json, what Documentation/report.schema.json says of
/// series. Throws CannotWrite with nothing but the reason.
void writeSeriesReport(const std::vector<StepReport>& steps, const std::filesystem::path& name,
                       const std::filesystem::path& path);

} // namespace veltrane

#endif
