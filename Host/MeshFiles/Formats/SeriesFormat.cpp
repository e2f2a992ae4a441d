// ParaView's lists of files of one step each (.vtu.series, .vtm.series ...), in JSON.
#include "DataSetReader.h"
#include "FormatList.h"
#include "Text.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cmath>
#include <fstream>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 1> endings{".series"};

std::vector<Step> readSeries(const std::filesystem::path& path)
{
    std::ifstream in(path);
    const auto series = nlohmann::json::parse(in, nullptr, false);
    if (!series.is_object() || !series.contains("files") || !series["files"].is_array())
    {
        throw BadFile(text("cannot read ", quoted(path), ": it is not a list of files in JSON"));
    }
    std::vector<Step> steps;
    for (const nlohmann::json& entry : series["files"])
    {
        const bool isNamed = entry.is_object() && entry.contains("name") && entry["name"].is_string();
        const auto number = steps.size() + 1;
        if (!isNamed)
        {
            throw BadFile(text("cannot read ", quoted(path), ": entry ", number, " names no file"));
        }
        if (!entry.contains("time") || !entry["time"].is_number())
        {
            throw BadFile(text("cannot read ", quoted(path), ": entry ", number, " has no time"));
        }
        steps.push_back(
            {path.parent_path() / entry["name"].get<std::string>(), std::nullopt, entry["time"].get<double>()});
    }
    return steps;
}

} // namespace

constinit const FileFormat formats::series{
    .name = "ParaView series", .endings = endings, .reads = {.steps = true}, .steps = readSeries};

} // namespace veltrane
