#include "Report.h"

#include "ProgressBar.h"
#include "Text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iomanip>
#include <iostream>
#include <iterator>

namespace veltrane
{
namespace
{

constexpr int labelWidth = 18;
constexpr int countWidth = 9;

} // namespace

void warn(const std::string& sentence)
{
    clearTerminalLine(std::cerr);
    std::cerr << "veltrane: warning: " << sentence << '\n';
}

std::string joined(const std::vector<std::string>& texts)
{
    std::string list;
    for (const std::string& part : texts)
    {
        list += text(list.empty() ? "" : ", ", part);
    }
    return list;
}

std::string quotedNames(const std::vector<std::string>& names)
{
    std::vector<std::string> quoted;
    std::ranges::transform(names, std::back_inserter(quoted),
                           [](const std::string& name) { return text("'", name, "'"); });
    return joined(quoted);
}

std::string oneOrMore(long long count, std::string_view one, std::string_view more)
{
    return text(count, " ", count == 1 ? one : more);
}

std::string inDigits(int digitCount, double value)
{
    std::array<char, 48> digits;
    std::snprintf(digits.data(), digits.size(), "%.*g", digitCount, value);
    return digits.data();
}

std::string bareMessage(std::string message)
{
    constexpr std::string_view heading = "Error: ";
    if (message.starts_with(heading))
    {
        message.erase(0, heading.size());
    }
    if (message.ends_with('.'))
    {
        message.pop_back();
    }
    return message;
}

void printLine(std::ostream& stream, std::string_view label, const std::string& content)
{
    stream << std::left << std::setw(labelWidth) << label << content << '\n';
}

void printCount(std::ostream& stream, std::string_view label, long long count, std::string_view remark)
{
    stream << std::left << std::setw(labelWidth) << label << std::right << std::setw(countWidth) << count
           << (remark.empty() || count == 0 ? "" : text("   ", remark)) << '\n';
}

void TextTable::print(std::ostream& stream) const
{
    std::vector<std::size_t> widths(rows_.empty() ? 0 : rows_.front().size(), minWidth_);
    if (!widths.empty())
    {
        widths.front() = 0;
    }
    for (const std::vector<std::string>& row : rows_)
    {
        for (std::size_t column = 0; column < widths.size(); ++column)
        {
            widths[column] = std::max(widths[column], row[column].size());
        }
    }
    for (const std::vector<std::string>& row : rows_)
    {
        std::string line;
        for (std::size_t column = 0; column < widths.size(); ++column)
        {
            const std::string padding(widths[column] - row[column].size(), ' ');
            line += column == 0 ? row[column] + padding : "  " + padding + row[column];
        }
        line.erase(line.find_last_not_of(' ') + 1);
        stream << line << '\n';
    }
}

} // namespace veltrane
