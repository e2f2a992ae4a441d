/// Numbers in the text of a file.
#ifndef VELTRANE_HOST_NUMBER_TEXT_H
#define VELTRANE_HOST_NUMBER_TEXT_H

#include <charconv>
#include <string_view>
#include <system_error>

namespace veltrane
{

/// Takes the real number that a text begins with, also with a sign + and with Fortran's letter D before the exponent.
/// False, and nothing is taken, if it begins with none that double precision can hold.
bool takeUnusualReal(const char*& at, const char* end, double& value);

inline bool takeReal(const char*& at, const char* end, double& value)
{
    const auto [next, error] = std::from_chars(at, end, value);
    if (error != std::errc() || (next != end && (*next == 'D' || *next == 'd')))
    {
        return takeUnusualReal(at, end, value);
    }
    at = next;
    return true;
}

/// The same for a whole number.
inline bool takeInteger(const char*& at, const char* end, long long& value)
{
    const char* begin = at != end && *at == '+' ? at + 1 : at;
    const auto [next, error] = std::from_chars(begin, end, value);
    if (error != std::errc())
    {
        return false;
    }
    at = next;
    return true;
}

/// A piece of a text that is a number, and nothing else but blanks around it.
bool isReal(std::string_view piece, double& value);
bool isInteger(std::string_view piece, long long& value);

} // namespace veltrane

#endif
