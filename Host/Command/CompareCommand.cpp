#include "CompareCommand.h"

#include "Comparison.h"
#include "FieldChoice.h"
#include "Formula.h"
#include "Interruption.h"
#include "LoadArguments.h"
#include "MeshFile.h"
#include "Report.h"
#include "Text.h"
#include "TransferSummary.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <iterator>

namespace veltrane
{
namespace
{

bool contains(const std::vector<std::string>& names, const std::string& name)
{
    return std::ranges::find(names, name) != names.end();
}

/// Those of the names that are, or are not, among the others.
std::vector<std::string> namesAlsoIn(const std::vector<std::string>& others, const std::vector<std::string>& names,
                                     bool wanted = true)
{
    std::vector<std::string> result;
    std::ranges::copy_if(names, std::back_inserter(result),
                         [&](const auto& name) { return contains(others, name) == wanted; });
    return result;
}

void checkSameMesh(const MeshFile& file, const MeshFile& reference)
{
    const std::string difference = meshDifference(file.mesh(), reference.mesh());
    if (!difference.empty())
    {
        throw BadFile(text("the meshes of '", file.path().string(), "' and '", reference.path().string(),
                           "' are not the same: ", difference));
    }
}

std::string figure(double value)
{
    constexpr int digits = 4;
    return std::isnan(value) ? "-" : inDigits(digits, value);
}

/// A node with its coordinates, or the number of a Gauss point.
void addPlace(std::vector<std::string>& row, const Mesh& mesh, Location location, int index)
{
    if (location == Location::gaussPoints)
    {
        row.push_back(text("Gauss point ", index + 1));
        row.resize(row.size() + 3, "-");
        return;
    }
    row.push_back(text(index + 1));
    for (const float coordinate : mesh.nodePosition(index))
    {
        row.push_back(figure(double{coordinate}));
    }
}

/// The fields asked for, or else all of them, at nodes and at Gauss points.
std::vector<std::string> fieldNames(const MeshFile& file, const std::vector<std::string>& requested)
{
    std::vector<std::string> names;
    if (requested.empty())
    {
        std::ranges::transform(chooseAndRename(file, {}, "compared"), std::back_inserter(names), &ChosenField::name);
        return names;
    }
    std::ranges::copy_if(requested, std::back_inserter(names),
                         [&](const std::string& name)
                         { return !file.hasGaussField(name) || file.hasArray(ArrayPlace::points, name); });
    if (!names.empty())
    {
        chooseFields(file, names, "compared"); // throws if there is no such array
    }
    return requested;
}

void printTable(std::ostream& stream, const Mesh& mesh, const std::vector<NamedComparison>& comparisons)
{
    TextTable table(1);
    table.addRow({"", "largest", "RMS", "relative L2", "largest", "at", "", "", ""});
    table.addRow({"array (components)", "value in B", "difference", "difference", "difference", "node", "x", "y", "z"});
    for (const auto& [name, componentCount, location, figures] : comparisons)
    {
        std::vector<std::string> row{text(name, " (", componentCount, ")"), figure(figures.largestReferenceMagnitude),
                                     figure(figures.rootMeanSquareDifference), figure(figures.relativeDifference),
                                     figure(figures.largestDifference)};
        if (figures.largestDifference > 0)
        {
            addPlace(row, mesh, location, figures.largestDifferenceNode);
        }
        else
        {
            row.resize(row.size() + 4, "-");
        }
        table.addRow(std::move(row));
    }
    table.print(stream);
}

std::string placesOf(std::size_t count, Location location, std::string_view file)
{
    const bool areNodes = location == Location::nodes;
    return count == 0 ? ""
                      : text(oneOrMore(static_cast<long long>(count), areNodes ? "node" : "Gauss point",
                                       areNodes ? "nodes" : "Gauss points"),
                             " of ", file);
}

void printLeftOutPlaces(std::ostream& stream, const std::vector<NamedComparison>& comparisons)
{
    for (const auto& [name, componentCount, location, figures] : comparisons)
    {
        const std::string inA = placesOf(figures.unusableInField, location, "A");
        const std::string inB = placesOf(figures.unusableInReference, location, "B");
        if (!inA.empty() || !inB.empty())
        {
            printLine(stream, "left out",
                      text("'", name, "' is NaN, infinite or undefined at ", inA,
                           inA.empty() || inB.empty() ? "" : " and ", inB));
        }
    }
}

void printNames(std::ostream& stream, std::string_view label, const std::vector<std::string>& names)
{
    if (!names.empty())
    {
        printLine(stream, label, quotedNames(names));
    }
}

ExitStatus judge(const std::vector<std::string>& exceeding, double tolerance, std::ostream& stream)
{
    stream << '\n';
    printLine(stream, "tolerance",
              text(tolerance, exceeding.empty() ? ", kept by all" : ", not kept by ", quotedNames(exceeding)));
    return exceeding.empty() ? ExitStatus::done : ExitStatus::toleranceExceeded;
}

std::vector<std::string> exceedingNames(const std::vector<NamedComparison>& comparisons, double tolerance)
{
    std::vector<std::string> exceeding;
    for (const auto& [name, componentCount, location, figures] : comparisons)
    {
        if (figures.exceeds(tolerance))
        {
            exceeding.push_back(name);
        }
    }
    return exceeding;
}

} // namespace

CompareCommand::CompareCommand(CLI::App& app)
    : command_(app.add_subcommand(
          "compare", "Compares the point data of two files with the same mesh, or of a file with formulas"))
{
    command_->add_option("A", file_, "mesh file with fields")->required()->type_name("");
    command_->add_option("B", reference_, "mesh file with the fields to compare with, on the same mesh")->type_name("");
    command_
        ->add_option("--exact", exact_,
                     "compare with a formula instead of a file B, may be repeated:\n"
                     "'temperature=x*x + sin(y)', or with more components\n"
                     "'displacement=x*y, 0, z^2'")
        ->type_name("NAME=FORMULA")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
    command_
        ->add_option("--field", fields_,
                     "a point-data array to be compared, may be repeated;\n"
                     "all those of floating-point numbers in both files if none is given")
        ->type_name("NAME")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
    command_
        ->add_option("--loads", loads_,
                     "compare the sums and moments of a point-data array of\n"
                     "loads instead, on meshes that may differ; may be repeated")
        ->type_name("NAME")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
    command_
        ->add_option("--tolerance", tolerance_,
                     "end with status 1 if a relative L2 difference is larger than\n"
                     "this, or if a value is NaN, infinite or undefined")
        ->type_name("VALUE");
    command_->footer(text(
        "Example:\n"
        "  veltrane compare transferred.vtu solved.vtu --field temperature --tolerance 0.01\n"
        "  veltrane compare transferred.vtu --exact 'temperature=20 + 3*x'\n\n"
        "The meshes must have the same nodes and cells in the same order. For each array it prints:\n"
        "  largest value in B      the largest length of the values at a node, over all components\n"
        "  RMS difference          sqrt(mean |A - B|^2) over the nodes\n"
        "  relative L2 difference  sqrt(sum |A - B|^2 / sum |B|^2) over the nodes; inf if B is zero\n"
        "  largest difference      the largest |A - B|, with the number of the node, counted from 1,\n"
        "                          and its coordinates\n"
        "With --loads it prints the sums of loads and their moments about the middle of B; their differences count\n"
        "as parts of the sums of the loads' magnitudes, and of these times the distances.\n"
        "Nodes where A or B is NaN, infinite or undefined (-8.8e13 or less) are counted and left out.\n",
        formulaHelp, "\n", exitStatusHelp));
}

ExitStatus CompareCommand::run() const
{
    if (tolerance_ && !(*tolerance_ >= 0)) // written so that NaN fails too
    {
        throw InvalidOption(text("the tolerance ", *tolerance_, " is not 0 or more"));
    }
    checkRequestedFields(fields_);
    if (reference_.empty() == exact_.empty())
    {
        throw InvalidOption(exact_.empty() ? "there is nothing to compare with: neither a file B nor --exact is given"
                                           : "the file B and --exact exclude each other");
    }
    if (!exact_.empty() && !fields_.empty())
    {
        throw InvalidOption("--exact names the fields, so --field has no place beside it");
    }
    std::ostream& stream = std::cout;
    if (!loads_.empty())
    {
        checkRequestedFields(loads_, "--loads");
        if (reference_.empty() || !fields_.empty())
        {
            throw InvalidOption("--loads compares two files, and nothing but loads");
        }
        return compareLoads(stream);
    }
    MeshFile file(file_, MeshRole::target);
    throwIfInterrupted();
    std::vector<NamedComparison> comparisons;
    if (exact_.empty())
    {
        MeshFile reference(reference_, MeshRole::target);
        throwIfInterrupted();
        if (!file.gaussFields().empty() && !reference.gaussFields().empty())
        {
            file = MeshFile(file_, MeshRole::gaussPointTarget); // surfaces have no Gauss points
            reference = MeshFile(reference_, MeshRole::gaussPointTarget);
        }
        comparisons = compareWithFile(file, reference, stream);
    }
    else
    {
        comparisons = compareWithFormulas(file, stream);
    }
    printLeftOutPlaces(stream, comparisons);
    stream << '\n';
    printTable(stream, file.mesh(), comparisons);
    return tolerance_ ? judge(exceedingNames(comparisons, *tolerance_), *tolerance_, stream) : ExitStatus::done;
}

ExitStatus CompareCommand::compareLoads(std::ostream& stream) const
{
    const MeshFile file(file_, MeshRole::target);
    throwIfInterrupted();
    const MeshFile reference(reference_, MeshRole::target);
    throwIfInterrupted();
    chooseFields(file, loads_, "compared");
    chooseFields(reference, loads_, "compared");
    const auto about = middleOf(reference.mesh());
    constexpr int digits = 7;
    TextTable table(12);
    table.addRow({"loads", "A", "B", "difference"});
    std::vector<std::string> exceeding;
    for (const std::string& name : loads_)
    {
        const Field loads = reference.field(name);
        const LoadSums ofFile = loadSumsOf(file.field(name), file.mesh(), about);
        const LoadSums ofReference = loadSumsOf(loads, reference.mesh(), about);
        if (ofFile.sum.size() != ofReference.sum.size())
        {
            throw BadFile(text("'", name, "' has ", ofFile.sum.size(), " components in '", file_, "' and ",
                               ofReference.sum.size(), " in '", reference_, "'"));
        }
        for (const LoadRow& row : rowsOf(loads, ofFile, ofReference))
        {
            table.addRow({row.name, inDigits(digits, row.source), inDigits(digits, row.target),
                          inDigits(digits, row.source - row.target)});
        }
        if (tolerance_ && !(relativeDifference(ofFile, ofReference) <= *tolerance_))
        {
            exceeding.push_back(name);
        }
    }
    printLine(stream, "A", file_);
    printLine(stream, "", describe(file));
    printLine(stream, "B", reference_);
    printLine(stream, "", describe(reference));
    stream << '\n';
    table.print(stream);
    return tolerance_ ? judge(exceeding, *tolerance_, stream) : ExitStatus::done;
}

std::vector<NamedComparison> CompareCommand::compareWithFile(const MeshFile& file, const MeshFile& reference,
                                                             std::ostream& stream) const
{
    checkSameMesh(file, reference);

    const std::vector<std::string> names = fieldNames(file, fields_);
    const std::vector<std::string> referenceNames = fieldNames(reference, fields_);
    std::vector<NamedComparison> comparisons;
    for (const std::string& name : namesAlsoIn(referenceNames, names))
    {
        const Field field = file.field(name);
        comparisons.push_back({name, field.componentCount(), field.location(), compare(field, reference.field(name))});
        throwIfInterrupted();
    }
    if (comparisons.empty())
    {
        throw BadFile(text("'", file_, "' and '", reference_, "' have no floating-point point data of the same name"));
    }
    printLine(stream, "A", file_);
    printLine(stream, "B", reference_);
    printLine(stream, "mesh of both", describe(file));
    printNames(stream, "only in A", namesAlsoIn(referenceNames, names, false));
    printNames(stream, "only in B", namesAlsoIn(names, referenceNames, false));
    return comparisons;
}

std::vector<NamedComparison> CompareCommand::compareWithFormulas(const MeshFile& file, std::ostream& stream) const
{
    std::vector<Formula> formulas;
    std::vector<std::string> names;
    for (const std::string& exact : exact_)
    {
        names.push_back(formulas.emplace_back(exact).name);
    }
    checkRequestedFields(names, "--exact");
    chooseFields(file, names, "compared");
    std::vector<NamedComparison> comparisons;
    for (const Formula& formula : formulas)
    {
        const Field field = file.field(formula.name);
        comparisons.push_back(
            {formula.name, field.componentCount(), Location::nodes, compare(field, formula.at(file.mesh()))});
        throwIfInterrupted();
    }
    printLine(stream, "A", file_);
    for (const Formula& formula : formulas)
    {
        printLine(stream, "B", text(formula.name, " = ", formula.expression));
    }
    printLine(stream, "mesh", describe(file));
    return comparisons;
}

} // namespace veltrane
