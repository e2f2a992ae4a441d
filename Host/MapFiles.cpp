// Maps as bytes and as files.
#include "Errors.h"
#include "Map.h"
#include "Text.h"

#include "Map/TransferMap.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <random>
#include <utility>

namespace veltrane
{

std::vector<std::byte> Map::bytes() const
{
    std::vector<std::byte> bytes(static_cast<std::size_t>(map_->storedSize()));
    map_->store(bytes.data());
    return bytes;
}

Map Map::fromBytes(std::span<const std::byte> bytes)
{
    auto map = std::make_shared<TransferMap>();
    if (const char* refusal = map->restore(bytes))
    {
        throw Error(refusal);
    }
    return Map(std::move(map));
}

void Map::save(const std::filesystem::path& path) const
{
    const std::vector<std::byte> content = bytes();
    // Beside it first, so that a map that is there stays whole if this one cannot be written. A link or a device is
    // written to as it is.
    const std::filesystem::file_type present = std::filesystem::symlink_status(path).type();
    const bool isReplaced =
        present == std::filesystem::file_type::regular || present == std::filesystem::file_type::not_found;
    const std::filesystem::path written =
        isReplaced ? path.parent_path() / text(".", path.filename().string(), ".", std::random_device()(), ".part")
                   : path;
    std::ofstream file(written, std::ios::binary);
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
    file.close();
    std::error_code failure(file ? 0 : errno, std::generic_category());
    if (isReplaced && !failure)
    {
        std::filesystem::rename(written, path, failure);
    }
    if (failure)
    {
        std::error_code ignored;
        std::filesystem::remove(isReplaced ? written : std::filesystem::path(), ignored);
        throw Error(text("cannot write '", path.string(), "': ", failure.message()));
    }
}

Map Map::load(const std::filesystem::path& path)
{
    // A folder can be opened and has an end, too, but no size.
    std::error_code failure;
    const std::uintmax_t size = std::filesystem::file_size(path, failure);
    if (failure)
    {
        throw Error(text("cannot open '", path.string(), "': ", failure.message()));
    }
    std::ifstream file(path, std::ios::binary);
    if (!file)
    {
        throw Error(text("cannot open '", path.string(), "': ", std::strerror(errno)));
    }
    std::vector<std::byte> content(size);
    if (!file.read(reinterpret_cast<char*>(content.data()), static_cast<std::streamsize>(content.size())))
    {
        throw Error(text("cannot read '", path.string(), "'"));
    }
    try
    {
        return fromBytes(content);
    }
    catch (const Error& error)
    {
        throw Error(text("'", path.string(), "': ", error.what()));
    }
}

} // namespace veltrane
