#include "NetcdfStructure.h"

#include "DataSetReader.h"
#include "FileErrors.h"
#include "Text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <limits>
#include <string_view>
#include <vector>

namespace veltrane
{
namespace
{

using Size = std::uint64_t;

constexpr Size largest = std::numeric_limits<Size>::max();

/// Sums and products that would be too large are the largest number, larger than any file.
Size sum(Size a, Size b)
{
    return a > largest - b ? largest : a + b;
}

Size product(Size a, Size b)
{
    return b != 0 && a > largest / b ? largest : a * b;
}

Size padded(Size size)
{
    return sum(size, 3) / 4 * 4;
}

/// Of the types from 1: byte, char, short, int, float, double, and of CDF-5 unsigned byte, short and int, and 64 bits.
constexpr std::array<Size, 11> typeSizes{1, 1, 2, 4, 4, 8, 1, 2, 4, 8, 8};

/// What a variable takes up in the file, with all its values or with those of one record.
struct Variable
{
    Size begin;
    Size size;
    bool isPerRecord;
};

/// The header of a file, whose parts come one after the other.
class Header
{
public:
    /// Thrown where the header is not as it should be.
    class NotUnderstood
    {
    };

    /// Thrown where the file ends.
    class CutOff
    {
    };

    explicit Header(const std::filesystem::path& path) : in_(path, std::ios::binary)
    {
        std::array<char, 4> signature{};
        in_.read(signature.data(), signature.size());
        version_ = signature[3];
        if (!std::string_view(signature.data(), signature.size()).starts_with("CDF") ||
            (version_ != 1 && version_ != 2 && version_ != 5))
        {
            throw NotUnderstood();
        }
        recordCount_ = count();
        readDimensions();
        skipAttributes();
        readVariables();
    }

    /// Where the last value ends. What pads it may be missing.
    Size end() const
    {
        Size end = 0;
        for (const Variable& variable : variables_)
        {
            if (!variable.isPerRecord)
            {
                end = std::max(end, sum(variable.begin, variable.size));
            }
            else if (recordCount_ > 0 && !isStreaming())
            {
                const Size lastRecord = sum(variable.begin, product(recordCount_ - 1, recordSize()));
                end = std::max(end, sum(lastRecord, variable.size));
            }
        }
        return end;
    }

private:
    /// The number of records follows from the size of the file then.
    bool isStreaming() const { return recordCount_ == (version_ == 5 ? largest : 0xFFFFFFFF); }

    /// The variables' parts of a record are padded unless there is but one variable.
    Size recordSize() const
    {
        Size size = 0;
        Size paddedSize = 0;
        int variableCount = 0;
        for (const Variable& variable : variables_)
        {
            if (variable.isPerRecord)
            {
                size = sum(size, variable.size);
                paddedSize = sum(paddedSize, padded(variable.size));
                ++variableCount;
            }
        }
        return variableCount == 1 ? size : paddedSize;
    }

    Size number(int byteCount)
    {
        Size value = 0;
        for (int i = 0; i < byteCount; ++i)
        {
            const int byte = in_.get();
            if (byte == std::char_traits<char>::eof())
            {
                throw CutOff();
            }
            value = value << 8 | static_cast<Size>(byte);
        }
        return value;
    }

    Size count() { return number(version_ == 5 ? 8 : 4); }

    /// The number of items of a list.
    Size listSize(Size tag)
    {
        const Size found = number(4);
        const Size size = count();
        const bool isAbsent = found == 0 && size == 0;
        return found == tag || isAbsent ? size : throw NotUnderstood();
    }

    void skip(Size size)
    {
        for (Size left = padded(size); left > 0; --left)
        {
            number(1);
        }
    }

    Size typeSize()
    {
        const Size type = number(4);
        return type >= 1 && type <= typeSizes.size() ? typeSizes[type - 1] : throw NotUnderstood();
    }

    void readDimensions()
    {
        constexpr Size dimensionTag = 10;
        for (Size left = listSize(dimensionTag); left > 0; --left)
        {
            skip(count()); // the name
            dimensions_.push_back(count());
        }
    }

    void skipAttributes()
    {
        constexpr Size attributeTag = 12;
        for (Size left = listSize(attributeTag); left > 0; --left)
        {
            skip(count()); // the name
            const Size valueSize = typeSize();
            skip(product(count(), valueSize));
        }
    }

    void readVariables()
    {
        constexpr Size variableTag = 11;
        for (Size left = listSize(variableTag); left > 0; --left)
        {
            skip(count()); // the name
            readVariable();
        }
    }

    /// The size that the header gives for a variable may be too small for it; that of its dimensions counts.
    void readVariable()
    {
        Variable variable{.begin = 0, .size = 1, .isPerRecord = false};
        const Size rank = count();
        for (Size i = 0; i < rank; ++i)
        {
            const Size dimension = count();
            if (dimension >= dimensions_.size())
            {
                throw NotUnderstood();
            }
            const Size length = dimensions_[dimension];
            const bool isRecord = i == 0 && length == 0;
            variable.isPerRecord = variable.isPerRecord || isRecord;
            variable.size = isRecord ? variable.size : product(variable.size, length);
        }
        skipAttributes();
        variable.size = product(variable.size, typeSize());
        count(); // its size
        variable.begin = number(version_ == 1 ? 4 : 8);
        variables_.push_back(variable);
    }

    std::ifstream in_;
    int version_ = 0;
    Size recordCount_ = 0;
    std::vector<Size> dimensions_; ///< 0 for the number of records
    std::vector<Variable> variables_;
};

} // namespace

void checkNetcdfSize(const std::filesystem::path& path)
{
    try
    {
        const Size end = Header(path).end();
        const Size size = std::filesystem::file_size(path);
        if (size < end)
        {
            throw BadFile(
                text("cannot read ", quoted(path), ": it has ", size, " bytes, but its header tells of ", end));
        }
    }
    catch (const Header::CutOff&)
    {
        throw BadFile(text("cannot read ", quoted(path), ": it ends within its header"));
    }
    catch (const Header::NotUnderstood&)
    {
        return; // a file of another kind, or one that the library will not understand either
    }
}

bool isHdf5(const std::filesystem::path& path)
{
    constexpr std::string_view signature = "\x89HDF\r\n\x1a\n";
    std::array<char, signature.size()> first{};
    std::ifstream(path, std::ios::binary).read(first.data(), first.size());
    return std::string_view(first.data(), first.size()) == signature;
}

} // namespace veltrane
