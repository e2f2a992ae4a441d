// Exodus files, those of the later parts of a run that was continued (.e-s002) among them.
#include "ExodusReading.h"
#include "ExodusWriting.h"
#include "FormatList.h"

#include <algorithm>
#include <array>

namespace veltrane
{
namespace
{

constexpr std::array<std::string_view, 3> endings{".e", ".exo", ".ex2"};

FileData read(const std::filesystem::path& path, const FileReading& reading)
{
    return readExodus(path, reading);
}

/// "result.e-s0002"
bool isContinuation(std::string_view name)
{
    const std::size_t mark = name.rfind("-s");
    const auto isDigit = [](char letter) { return letter >= '0' && letter <= '9'; };
    return mark != std::string_view::npos && mark + 2 < name.size() &&
           std::ranges::all_of(name.substr(mark + 2), isDigit) &&
           std::ranges::any_of(endings, [&](std::string_view ending)
                               { return mark > ending.size() && name.substr(0, mark).ends_with(ending); });
}

} // namespace

constinit const FileFormat formats::exodus{
    .name = "Exodus",
    .endings = endings,
    .isNamed = isContinuation,
    .reads = {.cells = true, .materials = true, .nodalFields = true, .cellFields = true, .steps = true},
    .writes = {.cells = true, .materials = true, .nodalFields = true, .cellFields = true},
    .read = read,
    .times = readExodusTimes,
    .write = writeExodus};

} // namespace veltrane
