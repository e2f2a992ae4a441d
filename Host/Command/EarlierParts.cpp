#include "EarlierParts.h"

#include "Collection.h"
#include "FileFormat.h"
#include "Text.h"

#include <algorithm>
#include <charconv>
#include <iomanip>
#include <system_error>

namespace veltrane
{
namespace
{

bool isPartName(const std::filesystem::path& collection, const std::filesystem::path& name)
{
    const std::string stem = name.stem().string();
    const std::size_t digits = std::min(collection.stem().string().size() + 1, stem.size());
    std::size_t number = 0;
    std::from_chars(stem.data() + digits, stem.data() + stem.size(), number); // 0 if there is none
    return isPointOutput(formatOf(name)) && number > 0 &&
           name == partName(collection, number - 1, name.extension().string());
}

std::vector<Step> earlierSteps(const std::filesystem::path& collection)
{
    try
    {
        return readSteps(collection);
    }
    catch (const Error&)
    {
        return {}; // nothing stands there, or nothing that lists files
    }
}

} // namespace

std::filesystem::path partPlace(const std::filesystem::path& collection)
{
    return collection.parent_path() / collection.stem();
}

std::string partName(const std::filesystem::path& collection, std::size_t index, const std::string& ending)
{
    return text(collection.stem().string(), "_", std::setfill('0'), std::setw(4), index + 1, ending);
}

std::vector<std::filesystem::path> findEarlierParts(const std::filesystem::path& collection)
{
    std::vector<std::filesystem::path> parts;
    for (const Step& step : earlierSteps(collection))
    {
        std::error_code ignored; // a file that is not there need not go
        if (isPartName(collection, step.file.filename()) &&
            std::filesystem::equivalent(step.file.parent_path(), partPlace(collection), ignored) &&
            std::filesystem::symlink_status(step.file, ignored).type() == std::filesystem::file_type::regular)
        {
            parts.push_back(step.file);
        }
    }
    return parts;
}

} // namespace veltrane
