#include "NumberText.h"

#include "SourceText.h"

#include <array>
#include <cstddef>

namespace veltrane
{

bool takeUnusualReal(const char*& at, const char* end, double& value)
{
    std::array<char, 64> copy{};
    std::size_t length = 0;
    const char* next = at != end && *at == '+' ? at + 1 : at;
    if (next != at && next != end && (*next == '-' || *next == '+'))
    {
        return false;
    }
    for (; next + length != end && length < copy.size(); ++length)
    {
        const char letter = next[length];
        const bool isOfNumber = (letter >= '0' && letter <= '9') || letter == '.' || letter == '-' || letter == '+' ||
                                letter == 'e' || letter == 'E' || letter == 'd' || letter == 'D';
        if (!isOfNumber)
        {
            break;
        }
        copy[length] = letter == 'd' || letter == 'D' ? 'e' : letter;
    }
    const auto [stop, error] = std::from_chars(copy.data(), copy.data() + length, value);
    const bool isTiny = std::string_view(copy.data(), length).find("e-") != std::string_view::npos ||
                        std::string_view(copy.data(), length).find("E-") != std::string_view::npos;
    if (error == std::errc::result_out_of_range && isTiny)
    {
        value = 0.0; // too small to be told from nothing
    }
    else if (error != std::errc())
    {
        return false;
    }
    at = next + (stop - copy.data());
    return true;
}

bool isReal(std::string_view piece, double& value)
{
    piece = trimmed(piece);
    const char* at = piece.data();
    return takeReal(at, piece.data() + piece.size(), value) && at == piece.data() + piece.size();
}

bool isInteger(std::string_view piece, long long& value)
{
    piece = trimmed(piece);
    const char* at = piece.data();
    return takeInteger(at, piece.data() + piece.size(), value) && at == piece.data() + piece.size();
}

} // namespace veltrane
