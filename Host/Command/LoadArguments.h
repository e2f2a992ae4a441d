/// Loads that a transfer distributes.
#ifndef VELTRANE_COMMAND_LOAD_ARGUMENTS_H
#define VELTRANE_COMMAND_LOAD_ARGUMENTS_H

#include "FieldChoice.h"
#include "Loads.h"
#include "MeshFile.h"
#include "TransferArguments.h"

#include <CLI/CLI.hpp>

#include <iosfwd>
#include <span>
#include <string>
#include <vector>

namespace veltrane
{

struct LoadArguments
{
    std::vector<std::string> loads{};

    void addTo(CLI::App& command);

    /// The arrays of the source that are loads, and their names in the output. Throws BadFile if there is none of a
    /// name.
    std::vector<ChosenField> choose(const MeshFile& source) const;

    /// Throws InvalidOption if loads outside are to be propagated.
    void check(OutsideMode mode) const;
};

/// Distributes all of them; warns of what is left out. Throws TargetOutside, with what may help.
std::vector<DistributedLoads> distributeAll(std::span<const Field> loads, const Mesh& source, const Mesh& target,
                                            const TransferOptions& options, const std::optional<float>& nearLimit);

/// One figure of loads on both sides.
struct LoadRow
{
    std::string name; ///< "force x", "force, moment about x"
    double source;
    double target;
    double outside; ///< what was left out
};

/// Sums, then moments about the middle of the source.
std::vector<LoadRow> rowsOf(const DistributedLoads& loads);

/// The same for two meshes that hold the same loads.
std::vector<LoadRow> rowsOf(const Field& loads, const LoadSums& source, const LoadSums& target);

void printLoads(std::ostream& stream, std::span<const DistributedLoads> loads);

} // namespace veltrane

#endif
