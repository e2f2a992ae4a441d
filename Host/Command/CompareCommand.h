/// veltrane compare
#ifndef VELTRANE_COMMAND_COMPARE_COMMAND_H
#define VELTRANE_COMMAND_COMPARE_COMMAND_H

#include "Comparison.h"
#include "ExitStatus.h"
#include "MeshFile.h"

#include <CLI/CLI.hpp>

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

struct NamedComparison
{
    std::string name;
    int componentCount;
    Location location;
    FieldComparison figures;
};

/// Says how far the point data, and Gauss-point fields, of two files on the same mesh are from each other, or those of
/// a file from formulas.
class CompareCommand
{
public:
    /// Adds the subcommand.
    explicit CompareCommand(CLI::App& app);
    CompareCommand(const CompareCommand&) = delete;
    CompareCommand& operator=(const CompareCommand&) = delete;

    bool isChosen() const { return command_->parsed(); }

    /// Throws what the host side throws.
    ExitStatus run() const;

private:
    std::vector<NamedComparison> compareWithFile(const MeshFile& file, const MeshFile& reference,
                                                 std::ostream& stream) const;
    std::vector<NamedComparison> compareWithFormulas(const MeshFile& file, std::ostream& stream) const;

    ExitStatus compareLoads(std::ostream& stream) const;

    CLI::App* command_;
    std::vector<std::string> loads_;
    std::string file_;
    std::string reference_;
    std::vector<std::string> exact_;
    std::vector<std::string> fields_;
    std::optional<double> tolerance_;
};

} // namespace veltrane

#endif
