#include "Table.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>

namespace benchmarks
{
namespace
{
constexpr const char* notMeasured = "–";

template <class Value> std::string formatted(const char* format, int precision, Value value)
{
    char text[64];
    std::snprintf(text, sizeof text, format, precision, value);
    return text;
}

/// Characters of a text in UTF-8.
std::size_t width(const std::string& text)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}
} // namespace

Table::Table(std::vector<std::string> header, std::size_t nbTextColumns)
    : itsRows{std::move(header)}, itsNbTextColumns(nbTextColumns)
{
}

void Table::addRow(std::vector<std::string> cells)
{
    itsRows.push_back(std::move(cells));
}

void Table::printMarkdown(std::ostream& out) const
{
    std::vector<std::size_t> widths(itsRows.front().size(), 3);
    for (const auto& row : itsRows)
    {
        for (std::size_t column = 0; column < row.size(); ++column)
        {
            widths[column] = std::max(widths[column], width(row[column]));
        }
    }
    for (std::size_t i = 0; i < itsRows.size(); ++i)
    {
        out << '|';
        for (std::size_t column = 0; column < widths.size(); ++column)
        {
            const std::string& cell = itsRows[i][column];
            const std::string padding(widths[column] - width(cell), ' ');
            out << ' ' << (column < itsNbTextColumns ? cell + padding : padding + cell) << " |";
        }
        out << '\n';
        if (i == 0)
        {
            out << '|';
            for (std::size_t column = 0; column < widths.size(); ++column)
            {
                out << (column < itsNbTextColumns ? std::string(widths[column] + 2, '-')
                                                  : std::string(widths[column] + 1, '-') + ':')
                    << '|';
            }
            out << '\n';
        }
    }
}

void Table::printCsv(std::ostream& out, bool withHeader) const
{
    for (std::size_t i = withHeader ? 0 : 1; i < itsRows.size(); ++i)
    {
        for (std::size_t column = 0; column < itsRows[i].size(); ++column)
        {
            const std::string& cell = itsRows[i][column];
            out << (column == 0 ? "" : ",") << (cell == notMeasured ? "" : cell);
        }
        out << '\n';
    }
}

std::string fixed(double value, int nbDecimals)
{
    return std::isnan(value) ? notMeasured : formatted("%.*f", nbDecimals, value);
}

std::string scientific(double value)
{
    return std::isnan(value) ? notMeasured : formatted("%.*e", 1, value);
}

std::string megabytes(std::int64_t bytes)
{
    return bytes < 0 ? notMeasured : fixed(static_cast<double>(bytes) / 1e6, 1);
}

std::string grouped(std::int64_t count)
{
    if (count < 0)
    {
        return notMeasured;
    }
    std::string digits = std::to_string(count);
    for (std::size_t position = digits.size(); position > 3;)
    {
        position -= 3;
        digits.insert(position, 1, ' ');
    }
    return digits;
}
} // namespace benchmarks
