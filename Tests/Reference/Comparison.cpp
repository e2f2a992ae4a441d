#include "Comparison.h"

#include <algorithm>

namespace comparison
{

using random_models::FieldModel;
using reference::CallbackCall;

namespace
{

std::string describe(const CallbackCall& call)
{
    std::ostringstream text;
    text << '(' << call.progress << ", \"" << call.title << "\", \"" << call.stage << "\", " << call.kind << ')';
    return text.str();
}

} // namespace

std::string withoutSignsOfNaN(std::string text)
{
    for (std::size_t at = text.find("-nan"); at != std::string::npos; at = text.find("-nan"))
    {
        text.erase(at, 1);
    }
    return text;
}

std::string differenceOfTexts(const std::string& what, const std::string& actual, const std::string& expected)
{
    return actual == expected ? "" : what + " is\n  \"" + actual + "\"\nexpected\n  \"" + expected + "\"";
}

std::string differenceOfTranscripts(const std::vector<CallbackCall>& actual, const std::vector<CallbackCall>& expected)
{
    for (std::size_t i = 0; i < actual.size() && i < expected.size(); ++i)
    {
        if (!(actual[i] == expected[i]))
        {
            return "callback call " + std::to_string(i) + " is " + describe(actual[i]) + ", expected " +
                   describe(expected[i]);
        }
    }
    if (actual.size() != expected.size())
    {
        const auto& longer = actual.size() > expected.size() ? actual : expected;
        return std::to_string(actual.size()) + " callback calls, expected " + std::to_string(expected.size()) +
               "; the first one too " + (actual.size() > expected.size() ? "many" : "few") + " is " +
               describe(longer[std::min(actual.size(), expected.size())]);
    }
    return "";
}

std::string differenceOfFields(const std::string& side, const std::vector<FieldModel>& actual,
                               const std::vector<FieldModel>& expected)
{
    for (std::size_t f = 0; f < expected.size(); ++f)
    {
        const FieldModel& field = expected[f];
        const std::string what = side + " field " + std::to_string(f) + " (location " + std::to_string(field.location) +
                                 ", " + std::to_string(field.nbComponents) + " components, flag " +
                                 std::to_string(field.matlStateFlag) + ", precision " +
                                 std::to_string(field.precision) + ")";
        std::string difference = differenceOfArrays(what, actual[f].floats, field.floats);
        if (difference.empty())
        {
            difference = differenceOfArrays(what, actual[f].doubles, field.doubles);
        }
        if (!difference.empty())
        {
            return difference;
        }
    }
    return "";
}

std::string damageOfGuards(const std::vector<FieldModel>& fields)
{
    for (const FieldModel& field : fields)
    {
        if (!(field.doubles.empty() ? isGuardIntact(field.floats) : isGuardIntact(field.doubles)))
        {
            return "values behind the array of " + field.name + " have been written";
        }
    }
    return "";
}

std::string differenceOfLogs(const std::optional<std::string>& actual, const std::optional<std::string>& expected)
{
    if (actual.has_value() != expected.has_value())
    {
        return actual ? "there is a log, and none was expected" : "there is no log";
    }
    return actual ? differenceOfTexts("the log", withoutSignsOfNaN(*actual), withoutSignsOfNaN(*expected)) : "";
}

std::string firstOf(std::initializer_list<std::string> differences)
{
    for (const std::string& difference : differences)
    {
        if (!difference.empty())
        {
            return difference;
        }
    }
    return "";
}

} // namespace comparison
