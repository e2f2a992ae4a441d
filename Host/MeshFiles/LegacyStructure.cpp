#include "LegacyStructure.h"

#include "DataSetReader.h"
#include "FileErrors.h"
#include "Text.h"

#include <cstdio>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

namespace veltrane
{
namespace
{

/// The whole numbers of a section: text, or binary with the highest byte first.
class Numbers
{
public:
    Numbers(std::istream& in, bool areBinary, int byteCount) : in_(in), areBinary_(areBinary), byteCount_(byteCount) {}

    /// None at the end of the file, or where there is something else.
    std::optional<long long> next()
    {
        long long value = 0;
        if (!areBinary_)
        {
            return in_ >> value ? std::optional(value) : std::nullopt;
        }
        for (int i = 0; i < byteCount_; ++i)
        {
            const int byte = in_.get();
            if (byte == std::char_traits<char>::eof())
            {
                return std::nullopt;
            }
            value = i == 0 && byte >= 128 ? byte - 256 : value * 256 + byte;
        }
        return value;
    }

    bool skip(long long count)
    {
        while (count > 0 && next())
        {
            --count;
        }
        return count == 0;
    }

private:
    std::istream& in_;
    bool areBinary_;
    int byteCount_;
};

/// What stands in the line that begins the section.
struct CellSection
{
    long long first;
    long long second;
};

std::optional<CellSection> findCells(std::istream& in)
{
    for (std::string line; std::getline(in, line);)
    {
        if (line.starts_with("CELLS ") || line.starts_with("cells "))
        {
            CellSection section{};
            return std::istringstream(line.substr(6)) >> section.first >> section.second ? std::optional(section)
                                                                                         : std::nullopt;
        }
    }
    return std::nullopt;
}

[[noreturn]] void throwBadCells(const std::filesystem::path& path, long long cell, const CellSection& section)
{
    throw BadFile(text("cannot read ", quoted(path), ": its cells do not fill the section 'CELLS ", section.first, " ",
                       section.second, "', see cell ", cell, " (counting from 0)"));
}

/// Per cell the number of its points, and these.
void checkRecords(Numbers numbers, const CellSection& section, const std::filesystem::path& path)
{
    long long left = section.second;
    for (long long cell = 0; cell < section.first; ++cell)
    {
        const auto pointCount = numbers.next();
        if (!pointCount)
        {
            return;
        }
        left -= 1;
        if (*pointCount < 0 || *pointCount > left)
        {
            throwBadCells(path, cell, section);
        }
        left -= *pointCount;
        if (!numbers.skip(*pointCount))
        {
            return;
        }
    }
    if (left != 0)
    {
        throwBadCells(path, section.first, section);
    }
}

/// Where each cell's points begin, and the end of the last one's.
void checkOffsets(Numbers numbers, const CellSection& section, const std::filesystem::path& path)
{
    long long last = 0;
    for (long long i = 0; i < section.first; ++i)
    {
        const auto offset = numbers.next();
        if (!offset)
        {
            return;
        }
        const bool isEnd = i + 1 == section.first;
        if (*offset < last || (i == 0 && *offset != 0) || (isEnd && *offset != section.second))
        {
            throwBadCells(path, i == 0 ? 0 : i - 1, section);
        }
        last = *offset;
    }
}

} // namespace

void checkLegacyCells(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::string header;
    std::string title;
    std::string encoding;
    int version = 0;
    if (!std::getline(in, header) || !std::getline(in, title) || !std::getline(in, encoding) ||
        std::sscanf(header.c_str(), "# vtk DataFile Version %d", &version) != 1)
    {
        return;
    }
    const bool isBinary = encoding.starts_with("BINARY") || encoding.starts_with("binary");
    const auto section = findCells(in);
    if (!section)
    {
        return;
    }
    constexpr int firstVersionWithOffsets = 5;
    if (version < firstVersionWithOffsets)
    {
        checkRecords(Numbers(in, isBinary, 4), *section, path);
        return;
    }
    std::string line;
    if (std::getline(in, line) && line.starts_with("OFFSETS "))
    {
        checkOffsets(Numbers(in, isBinary, line.find("int64") != std::string::npos ? 8 : 4), *section, path);
    }
}

} // namespace veltrane
