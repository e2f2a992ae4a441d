/// Comparison of what the library and the reference have made. Each function describes the first difference; the text
/// is empty when there is none.
#ifndef COMPARISON_H
#define COMPARISON_H

#include "RandomModels.h"
#include "ReferenceTypes.h"

#include <cmath>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace comparison
{

template <typename Value> bool isSame(Value a, Value b)
{
    if constexpr (std::is_floating_point_v<Value>)
    {
        // The sign and the payload of a NaN are the processor's affair.
        if (std::isnan(a) && std::isnan(b))
        {
            return true;
        }
    }
    return std::memcmp(&a, &b, sizeof(Value)) == 0;
}

template <typename Value>
std::string differenceOfArrays(const std::string& what, const std::vector<Value>& actual,
                               const std::vector<Value>& expected)
{
    int nbDifferences = 0;
    std::ostringstream first;
    for (std::size_t i = 0; i < expected.size(); ++i)
    {
        if (!isSame(actual[i], expected[i]) && nbDifferences++ == 0)
        {
            first.precision(17);
            first << what << ": value " << i << " is " << actual[i] << ", expected " << expected[i];
        }
    }
    if (nbDifferences == 0)
    {
        return "";
    }
    return first.str() + " (" + std::to_string(nbDifferences) + " of " + std::to_string(expected.size()) +
           " values differ)";
}

template <typename Value> bool isGuardIntact(const std::vector<Value>& values)
{
    for (std::size_t i = values.size() - reference::index(random_models::nbGuardValues); i < values.size(); ++i)
    {
        Value pattern;
        std::memset(&pattern, 0xA5, sizeof pattern);
        if (std::memcmp(&values[i], &pattern, sizeof pattern) != 0)
        {
            return false;
        }
    }
    return true;
}

/// The text without the sign that the platform's printf gives to a NaN: it is the processor's affair.
std::string withoutSignsOfNaN(std::string text);

std::string differenceOfTexts(const std::string& what, const std::string& actual, const std::string& expected);

std::string differenceOfTranscripts(const std::vector<reference::CallbackCall>& actual,
                                    const std::vector<reference::CallbackCall>& expected);

std::string differenceOfFields(const std::string& side, const std::vector<random_models::FieldModel>& actual,
                               const std::vector<random_models::FieldModel>& expected);

std::string damageOfGuards(const std::vector<random_models::FieldModel>& fields);

std::string differenceOfLogs(const std::optional<std::string>& actual, const std::optional<std::string>& expected);

std::string firstOf(std::initializer_list<std::string> differences);

} // namespace comparison

#endif
