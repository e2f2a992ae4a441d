#include "TransferArguments.h"

#include "ElementSizes.h"
#include "MeshPair.h"
#include "NearPoints.h"
#include "Report.h"
#include "Text.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <utility>
#include <variant>

namespace veltrane
{
namespace
{

/// A default value, of one field if it is named.
struct DefaultValue
{
    std::string field; ///< empty: of all fields
    float value;
};

std::optional<float> toNumber(std::string_view word)
{
    float number = 0;
    const auto [end, failure] = std::from_chars(word.data(), word.data() + word.size(), number);
    return failure == std::errc() && end == word.data() + word.size() ? std::optional(number) : std::nullopt;
}

DefaultValue parseDefault(const std::string& argument)
{
    if (const auto value = toNumber(argument))
    {
        return {"", *value};
    }
    const std::size_t sign = argument.rfind('=');
    if (sign != std::string::npos && sign > 0)
    {
        if (const auto value = toNumber(std::string_view(argument).substr(sign + 1)))
        {
            return {argument.substr(0, sign), *value};
        }
    }
    throw InvalidOption(text("--default ", argument, " is neither a number nor FIELD=NUMBER"));
}

OutsideMode parseMode(const std::string& word)
{
    if (word == "propagate" || word == "2")
    {
        return OutsideMode::propagate;
    }
    return word == "default" || word == "1" ? OutsideMode::defaultValue : OutsideMode::error;
}

/// The position of a field of this name in the source or in the output. Throws BadFile if there is none.
std::size_t find(const std::vector<ChosenField>& chosen, const std::string& name, const std::string& option)
{
    const auto found =
        std::ranges::find_if(chosen, [&](const auto& field) { return field.name == name || field.newName == name; });
    if (found == chosen.end())
    {
        std::vector<std::string> names;
        std::ranges::transform(chosen, std::back_inserter(names), &ChosenField::name);
        throw BadFile(
            text(option, ": there is no field '", name, "' among those to be transferred, ", quotedNames(names)));
    }
    return static_cast<std::size_t>(found - chosen.begin());
}

/// They are transferred like others, and spread to all points around them.
void warnOfUnusableValues(const Field& field, const std::string& name, const std::filesystem::path& path)
{
    const auto isUnusable = [](auto value) { return !(std::abs(value) <= std::numeric_limits<float>::max()); };
    std::visit(
        [&](const auto& values)
        {
            const auto count = std::ranges::count_if(values, isUnusable);
            if (count == 0)
            {
                return;
            }
            const auto first = std::ranges::find_if(values, isUnusable);
            const auto place = (first - values.begin()) / field.componentCount();
            warn(text("'", path.string(), "': field '", name, "' has ", oneOrMore(count, "value", "values"),
                      " beyond finite single-precision numbers; the first is ", *first, " at ",
                      field.location() == Location::nodes ? "point " : "Gauss point ", place, ", counted from 0"),
                 text("values of ", name));
        },
        field.values());
}

} // namespace

void TransferArguments::addFields(CLI::App& command)
{
    const auto addList =
        [&](const char* name, std::vector<std::string>& list, const char* type, const std::string& help)
    { command.add_option(name, list, help)->type_name(type)->expected(1)->take_all()->allow_extra_args(false); };
    addList("--field", fields, "NAME[=NEWNAME]",
            "a point-data array to be transferred, under a new name if\n"
            "one is given, may be repeated; all those of floating-point\n"
            "numbers if none is given");
    command.add_flag("--cells-as-nodes", cellsAsNodes,
                     "transfer the source's floating-point cell data, too,\n"
                     "averaged at each node over the cells around it");
    addList("--class1-only", classOneOnly, "FIELD",
            "a field that exists only in materials of the state codes\n"
            "1, 2, 3, 7 and 8 (see --state), may be repeated");
}

void TransferArguments::addGauss(CLI::App& command)
{
    command.add_flag("--gauss", atGaussPoints,
                     "give values to the Gauss points of the target's volume cells\ninstead of its nodes");
}

void TransferArguments::addOutside(CLI::App& command, const std::string& points, bool canPropagate)
{
    const std::vector<std::string> words =
        canPropagate ? std::vector<std::string>{"error", "default", "propagate", "0", "1", "2"}
                     : std::vector<std::string>{"error", "default", "0", "1"};
    command
        .add_option("--outside,--mode", outside,
                    text("what happens if ", points,
                         canPropagate ? " are far outside the source:\n" : " are in no cell of the source:\n",
                         "error (0): the transfer fails,\n"
                         "default (1): they get the default value",
                         canPropagate ? text(",\npropagate (2): they get the values of neighbouring ", points) : ""))
        ->check(CLI::IsMember(words))
        ->type_name("MODE")
        ->capture_default_str();
    command
        .add_option("--default", defaults,
                    "the value of '--outside default' (0), of all fields or,\n"
                    "if it is given as FIELD=VALUE, of one; may be repeated")
        ->type_name("VALUE")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
}

void TransferArguments::addNear(CLI::App& command, const std::string& points, bool isAsked)
{
    if (isAsked)
    {
        command.add_flag("--near", pointsMayBeNear,
                         text("let ", points, " in no cell take the values of a near one,\nas nodes of a mesh do"));
    }
    command
        .add_option("--near-limit", nearLimit,
                    text("how far from the source ", points,
                         " may be to take its\nvalues (the length of its largest cell); those beyond are\nfar"))
        ->type_name("LENGTH")
        ->check(CLI::NonNegativeNumber);
    command.add_flag(
        "--distances", writesDistances,
        text("add an array ", distanceFieldName, ": how far from the source\neach of the ", points, " is"));
}

void TransferArguments::addTuning(CLI::App& command)
{
    command
        .add_option("--tolerance", tuning.tolerance,
                    "how exactly points are located, as part of the size\nof an element (0.001)")
        ->type_name("VALUE");
    command
        .add_option("--bucket-factor", tuning.bucketFactor,
                    "how far around their boxes source elements are entered\n"
                    "into buckets without any, as part of their boxes (0.1)")
        ->type_name("VALUE");
    command.add_option("--max-buckets", tuning.maxBuckets, "most buckets of the search (10000000)")
        ->type_name("NUMBER");
    command
        .add_option("--precision", precision,
                    "double: values as exact as the files (default); single:\nas the library's functions compute them")
        ->type_name("WORD")
        ->check(CLI::IsMember({"double", "single"}));
}

TransferOptions TransferArguments::options(bool hasStates) const
{
    TransferOptions options{.mode = parseMode(outside),
                            .tellsOrigins = true,
                            .rules = {.pointsMayBeNear = pointsMayBeNear, .inDoublePrecision = precision == "double"},
                            .tuning = tuning};
    if (!defaults.empty() && options.mode != OutsideMode::defaultValue)
    {
        throw InvalidOption("--default has an effect only together with --outside default");
    }
    int commonCount = 0;
    for (const std::string& argument : defaults)
    {
        const DefaultValue value = parseDefault(argument);
        if (value.field.empty())
        {
            options.defaultValue = value.value;
            ++commonCount;
        }
    }
    if (commonCount > 1)
    {
        throw InvalidOption("--default is given twice for all fields");
    }
    if (!classOneOnly.empty() && !hasStates)
    {
        throw InvalidOption("--class1-only needs --state, which tells the materials of class 1 from others");
    }
    checkRequestedFields(fields);
    return options;
}

void TransferArguments::limitNearPoints(TransferOptions& options, const Mesh& source) const
{
    options.rules.nearLimit = nearLimit ? *nearLimit : largestElementSize(source, options.threads);
}

std::vector<ChosenField> TransferArguments::chooseFields(const MeshFile& source,
                                                         const std::vector<ChosenField>& loads) const
{
    const std::vector<std::string> cellArrays = source.floatingPointCellArrays();
    if (!cellsAsNodes && fields.empty() && !cellArrays.empty())
    {
        warn(text("cell data is not transferred: ", quotedNames(cellArrays), " of '", source.path().string(),
                  "'; --cells-as-nodes averages it at the nodes first"),
             "cell data");
    }
    std::vector<ChosenField> chosen = chooseAndRename(source, fields, "transferred");
    if (fields.empty())
    {
        std::erase_if(chosen, [&](const ChosenField& field)
                      { return std::ranges::find(loads, field.name, &ChosenField::name) != loads.end(); });
    }
    return chosen;
}

std::vector<FieldOptions> TransferArguments::fieldOptions(const std::vector<ChosenField>& chosen) const
{
    std::vector<FieldOptions> options(chosen.size());
    for (const std::string& argument : defaults)
    {
        const DefaultValue value = parseDefault(argument);
        if (!value.field.empty())
        {
            options[find(chosen, value.field, "--default")].defaultValue = value.value;
        }
    }
    for (const std::string& name : classOneOnly)
    {
        options[find(chosen, name, "--class1-only")].isClassOneOnly = true;
    }
    return options;
}

std::vector<Field> readFields(const MeshFile& source, const std::vector<ChosenField>& chosen)
{
    std::vector<Field> fields;
    for (const ChosenField& field : chosen)
    {
        fields.push_back(source.field(field.name, field.newName));
        warnOfUnusableValues(fields.back(), field.name, source.path());
    }
    return fields;
}

void reportMissingMaterials(const std::optional<std::string>& sentence, OutsideMode mode)
{
    if (!sentence)
    {
        return;
    }
    if (mode == OutsideMode::error)
    {
        throw BadFile(*sentence);
    }
    warn(*sentence, "materials");
}

TransferResult explainingFailures(const std::function<TransferResult()>& transfer,
                                  const std::function<std::string()>& describeOutside, const std::string& outsideAdvice,
                                  const Box& source, const Box& target)
{
    try
    {
        return transfer();
    }
    catch (const TargetOutside&)
    {
        throw TargetOutside(text(describeOutside(), "; ", outsideAdvice, unitHint(source, target)));
    }
    catch (const TransferError& error)
    {
        throw TransferError(text(bareMessage(error.what()), unitHint(source, target)), error.code());
    }
}

void writeLog(const TransferResult& result, const std::filesystem::path& path)
{
    std::ofstream stream(path);
    stream << statisticsText(result.statistics);
    stream.close();
    if (!stream)
    {
        throw CannotWrite(std::strerror(errno));
    }
}

} // namespace veltrane
