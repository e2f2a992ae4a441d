#include "InfoCommand.h"

#include "CollectionContents.h"
#include "FileContents.h"
#include "FileFormat.h"
#include "Interruption.h"
#include "Report.h"
#include "Text.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <iterator>
#include <sstream>
#include <utility>

namespace veltrane
{
namespace
{

constexpr int digits = 6;

std::string number(double value)
{
    return std::isnan(value) ? "-" : inDigits(digits, value);
}

using Arrays = std::vector<ArrayContents>;

bool hasNotANumbers(const Arrays& arrays)
{
    return std::ranges::any_of(arrays, [](const ArrayContents& array) { return array.notANumberCount > 0; });
}

void addRows(TextTable& table, std::string_view place, const Arrays& arrays, bool showsNotANumbers)
{
    for (const ArrayContents& array : arrays)
    {
        std::vector<std::string> row{array.name,        std::string(place),
                                     array.type,        std::to_string(array.componentCount),
                                     number(array.min), number(array.max)};
        if (showsNotANumbers)
        {
            row.push_back(std::to_string(array.notANumberCount));
        }
        table.addRow(std::move(row));
    }
}

void printArrays(std::ostream& stream, const FileContents& contents)
{
    if (contents.pointArrays.empty() && contents.cellArrays.empty() && contents.otherArrays.empty())
    {
        printLine(stream, "arrays", "none");
        return;
    }
    const bool showsNotANumbers = hasNotANumbers(contents.pointArrays) || hasNotANumbers(contents.cellArrays) ||
                                  hasNotANumbers(contents.otherArrays);
    std::vector<std::string> heading{"array", "of", "type", "components", "min", "max"};
    if (showsNotANumbers)
    {
        heading.push_back("NaN");
    }
    TextTable table(1);
    table.addRow(heading);
    addRows(table, "points", contents.pointArrays, showsNotANumbers);
    addRows(table, "cells", contents.cellArrays, showsNotANumbers);
    addRows(table, "file", contents.otherArrays, showsNotANumbers);
    table.print(stream);
}

std::string cellText(const FileContents& contents)
{
    std::vector<std::string> parts;
    for (const CellContents& cells : contents.cells)
    {
        parts.push_back(oneOrMore(cells.count, cells.name, cells.plural));
    }
    return joined(parts);
}

/// ": 1 steel, 2 rubber"
std::string namesText(const FileContents& contents)
{
    std::vector<std::string> names;
    for (const auto& [number, name] : contents.materialNames)
    {
        names.push_back(text(number, ' ', name));
    }
    return names.empty() ? "" : text(": ", joined(names));
}

void printSteps(std::ostream& stream, const std::vector<double>& times)
{
    if (!times.empty())
    {
        printLine(
            stream, "steps",
            text(times.size(), ", times ", inDigits(digits, times.front()), " to ", inDigits(digits, times.back())));
    }
}

void printFile(std::ostream& stream, const std::string& file, const FileContents& contents)
{
    printLine(stream, "file", file);
    if (!contents.format.empty())
    {
        printLine(stream, "format", contents.format);
    }
    printLine(stream, "points", std::to_string(contents.pointCount));
    printLine(stream, "cells", contents.cells.empty() ? "none" : cellText(contents));
    for (std::size_t axis = 0; axis < 3 && contents.pointCount > 0; ++axis)
    {
        printLine(stream, axis == 0 ? "box" : "",
                  text("xyz"[axis], " = ", inDigits(digits, contents.min[axis]), " to ",
                       inDigits(digits, contents.max[axis])));
    }
    if (contents.materialArray)
    {
        printLine(stream, "materials", text("numbered by '", *contents.materialArray, "'", namesText(contents)));
    }
    printSteps(stream, contents.stepTimes);
    for (const std::string& item : contents.leftOut)
    {
        printLine(stream, &item == &contents.leftOut.front() ? "left out" : "", item);
    }
    printArrays(stream, contents);
}

/// "not as in step 1: step 2 and 3 others"
std::string differenceText(const std::vector<std::size_t>& others)
{
    if (others.empty())
    {
        return "the same in all steps";
    }
    const auto more = static_cast<long long>(others.size()) - 1;
    return text("not as in step 1: step ", others.front() + 1,
                more == 0 ? "" : text(" and ", oneOrMore(more, "other", "others")));
}

void printCollection(std::ostream& stream, const std::string& file, const CollectionContents& contents)
{
    printLine(stream, "collection", file);
    std::vector<double> times;
    std::ranges::transform(contents.steps, std::back_inserter(times), &Step::time);
    printSteps(stream, times);
    printLine(stream, "meshes", differenceText(contents.otherMeshes));
    printLine(stream, "arrays", differenceText(contents.otherArrays));
    TextTable table(1);
    table.addRow({"file", "step", "time"});
    for (std::size_t i = 0; i < contents.steps.size(); ++i)
    {
        table.addRow({contents.steps[i].file.string(), std::to_string(i + 1), number(contents.steps[i].time)});
    }
    table.print(stream);
    stream << '\n';
    printFile(stream, contents.steps.front().file.string(), contents.first);
}

void print(std::ostream& stream, const std::string& file)
{
    if (isCollection(formatOf(file)))
    {
        const CollectionContents contents = readCollectionContents(file);
        throwIfInterrupted();
        printCollection(stream, file, contents);
        return;
    }
    const FileContents contents = readContents(file);
    throwIfInterrupted();
    printFile(stream, file, contents);
}

} // namespace

InfoCommand::InfoCommand(CLI::App& app) : command_(app.add_subcommand("info", "Tells what is in mesh and point files"))
{
    command_->add_option("FILE", files_, "files of any format that can be read")->required()->type_name("");
    command_->footer("Example:\n"
                     "  veltrane info thermal.vtu structure.exo\n\n"
                     "Of a file with steps it is the last one, of a collection (.pvd) the first one.\n");
}

ExitStatus InfoCommand::run() const
{
    for (std::size_t i = 0; i < files_.size(); ++i)
    {
        std::ostringstream stream;
        print(stream, files_[i]);
        std::cout << (i == 0 ? "" : "\n") << stream.str() << std::flush;
    }
    return ExitStatus::done;
}

} // namespace veltrane
