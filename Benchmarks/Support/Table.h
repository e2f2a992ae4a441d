/// Tables of results: as Markdown for a reader, as comma-separated values for a program.
#ifndef VELTRANE_BENCHMARKS_TABLE_H
#define VELTRANE_BENCHMARKS_TABLE_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace benchmarks
{
class Table
{
public:
    /// The first `nbTextColumns` columns hold text, the others numbers.
    Table(std::vector<std::string> header, std::size_t nbTextColumns);

    void addRow(std::vector<std::string> cells);
    void printMarkdown(std::ostream& out) const;
    /// With the header if `withHeader`.
    void printCsv(std::ostream& out, bool withHeader) const;

private:
    std::vector<std::vector<std::string>> itsRows;
    std::size_t itsNbTextColumns;
};

/// "–" for a number that was not measured.
std::string fixed(double value, int nbDecimals);
std::string scientific(double value);
std::string megabytes(std::int64_t bytes);
/// "–" for a negative count; digits in groups of three.
std::string grouped(std::int64_t count);
} // namespace benchmarks

#endif
