#include "SeriesReport.h"

#include "CommandLine.h"
#include "FileErrors.h"
#include "Html.h"
#include "Markup.h"
#include "Report.h"
#include "Requirements.h"
#include "Text.h"
#include "VersionText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>

namespace veltrane
{
namespace
{

using Json = nlohmann::ordered_json;

struct SeriesVerdict
{
    bool isGood;
    std::string text;
};

bool isGood(const Json& step)
{
    return step["report"]["verdict"]["good"].get<bool>();
}

std::string textOf(const Json& step)
{
    return step["report"]["verdict"]["text"].get<std::string>();
}

SeriesVerdict judge(const Json& steps)
{
    const auto doubtful = std::ranges::count_if(steps, [](const Json& step) { return !isGood(step); });
    if (doubtful == 0)
    {
        return {true, text("good: all ", oneOrMore(std::ssize(steps), "step", "steps"), "; in step 1 ",
                           textOf(steps.front()).substr(std::string_view("good: ").size()))};
    }
    const auto first = std::ranges::find_if(steps, [](const Json& step) { return !isGood(step); });
    return {false, text("doubtful: ", doubtful, " of ", oneOrMore(std::ssize(steps), "step", "steps"), "; step ",
                        first - steps.begin() + 1, ": ", textOf(*first).substr(std::string_view("doubtful: ").size()))};
}

HtmlCell figureCell(const Json& rule)
{
    HtmlCell cell = HtmlCell::number(rule["figure"].is_null() ? std::nan("") : rule["figure"].get<double>(), 3);
    if (!rule["kept"].get<bool>())
    {
        cell.markup = "<strong>" + cell.markup + "</strong>";
    }
    return cell;
}

std::string page(const Json& steps)
{
    HtmlRow head{"step", "time", "output"};
    std::ranges::for_each(ruleKeys, [&](const RuleKey& rule) { head.emplace_back(std::string(rule.key)); });
    head.emplace_back("verdict");
    std::vector<HtmlRow> rows;
    for (const Json& step : steps)
    {
        HtmlRow row{text(rows.size() + 1),
                    HtmlCell::number(step["time"].is_null() ? std::nan("") : step["time"].get<double>(), 6),
                    step["output"].get<std::string>()};
        std::ranges::for_each(step["report"]["verdict"]["rules"],
                              [&](const Json& rule) { row.push_back(figureCell(rule)); });
        row.emplace_back(textOf(step));
        rows.push_back(std::move(row));
    }
    const Json& first = steps.front()["report"];
    std::vector<HtmlRow> meanings;
    for (const RuleKey& key : ruleKeys)
    {
        meanings.push_back({std::string(key.key), text(key.limit), std::string(key.meaning)});
    }
    const SeriesVerdict verdict = judge(steps);
    return htmlPage(
        text("Transfer of ", steps.size(), " steps: ", verdict.isGood ? "good" : "doubtful"), verdict.text,
        verdict.isGood,
        text(htmlParagraph(text("To ", first["target"]["file"].get<std::string>(), ".")),
             htmlSection("Steps", htmlTable("Steps, with the figures of the verdict", head, rows)),
             htmlSection("Rules", htmlTable("Figures and their usual limits", {"rule", "limit", "figure"}, meanings)),
             htmlSection("To repeat it",
                         text("<pre>", escaped(commandLine()), "</pre>\n<pre>", escaped(versionText()), "</pre>\n"))));
}

Json describe(const Json& steps)
{
    const SeriesVerdict verdict = judge(steps);
    return {{"format", "veltrane series report"},
            {"formatVersion", 1},
            {"program", versionText()},
            {"command", commandLine()},
            {"verdict", {{"good", verdict.isGood}, {"text", verdict.text}}},
            {"steps", steps}};
}

} // namespace

void writeSeriesReport(const std::vector<StepReport>& steps, const std::filesystem::path& name,
                       const std::filesystem::path& path)
{
    Json described = Json::array();
    for (const StepReport& step : steps)
    {
        described.push_back({{"output", step.output},
                             {"time", step.time ? Json(*step.time) : Json()},
                             {"report", Json::parse(step.report)}});
    }
    std::ofstream stream(path, std::ios::binary);
    if (name.extension() == ".json")
    {
        constexpr int indent = 2;
        stream << describe(described).dump(indent, ' ', false, Json::error_handler_t::replace) << '\n';
    }
    else
    {
        stream << page(described);
    }
    stream.flush();
    if (!stream)
    {
        throw CannotWrite(std::strerror(errno));
    }
}

} // namespace veltrane
