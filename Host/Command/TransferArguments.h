/// What transfers to meshes and to points can be told alike.
#ifndef VELTRANE_COMMAND_TRANSFER_ARGUMENTS_H
#define VELTRANE_COMMAND_TRANSFER_ARGUMENTS_H

#include "FieldChoice.h"
#include "MeshFile.h"
#include "Transfer.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace veltrane
{

/// The options themselves, with their addition to a subcommand.
struct TransferArguments
{
    std::vector<std::string> fields{};
    bool cellsAsNodes = false;
    std::vector<std::string> classOneOnly{};
    bool atGaussPoints = false;
    std::string outside = "error";
    std::vector<std::string> defaults{};
    Tuning tuning{};
    bool pointsMayBeNear = false;
    std::optional<float> nearLimit{};
    bool writesDistances = false;
    std::string precision = "double";

    /// \param points       what receives the values: "nodes"
    /// \param canPropagate whether these have neighbours
    /// \param isAsked      whether they may be near the source only if that is asked for
    void addFields(CLI::App& command);
    void addGauss(CLI::App& command);
    void addOutside(CLI::App& command, const std::string& points, bool canPropagate);
    void addNear(CLI::App& command, const std::string& points, bool isAsked);
    void addTuning(CLI::App& command);

    /// All but what is said of single fields. Throws InvalidOption if the options contradict each other.
    ///
    /// \param hasStates  whether materials are given state codes
    TransferOptions options(bool hasStates) const;

    /// Where near ends: where that is said, or else by the largest element of the source.
    void limitNearPoints(TransferOptions& options, const Mesh& source) const;

    /// The fields of the source that are to be transferred, and what is said of each of them. Throws BadFile if a name
    /// is not that of a field.
    /// `loads` are not among them unless they are asked for; if nothing else is there, none is.
    std::vector<ChosenField> chooseFields(const MeshFile& source, const std::vector<ChosenField>& loads = {}) const;
    std::vector<FieldOptions> fieldOptions(const std::vector<ChosenField>& chosen) const;
};

/// The fields under their new names. Throws BadFile.
std::vector<Field> readFields(const MeshFile& source, const std::vector<ChosenField>& chosen);

/// Warns of materials that the target has and the source lacks, if there is a sentence about them; throws it as BadFile
/// if points outside the source are an error.
void reportMissingMaterials(const std::optional<std::string>& sentence, OutsideMode mode);

/// Does the transfer. If points are outside the source and that is an error, says how many, and what may help.
///
/// \param describeOutside  gives the sentence about them
/// \param outsideAdvice    what the mode can do for them
TransferResult explainingFailures(const std::function<TransferResult()>& transfer,
                                  const std::function<std::string()>& describeOutside, const std::string& outsideAdvice,
                                  const Box& source, const Box& target);

/// For the help texts.
inline constexpr const char* validPointMaskHelp =
    "The point array vtkValidPointMask of the output is 1 in an element of the source, 3 near one, whose\n"
    "values are taken, 2 where neighbours have given the values, -1 where they are default values, and 0\n"
    "where there are none: at points of no cell or of materials that are not mapped, which hold the\n"
    "default value, and at those that propagation could not reach, which hold 0. Gauss points have an\n"
    "array ValidGaussPointMask of this kind.\n\n";

/// Writes the statistics of the search. Throws CannotWrite with nothing but the reason.
void writeLog(const TransferResult& result, const std::filesystem::path& path);

} // namespace veltrane

#endif
