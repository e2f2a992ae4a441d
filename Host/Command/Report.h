/// Pieces of what the subcommands tell people.
#ifndef VELTRANE_COMMAND_REPORT_H
#define VELTRANE_COMMAND_REPORT_H

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace veltrane
{

/// Writes a warning to standard error.
///
/// \param kind  what it is about, for WarningsOnce: "cells inside out"
void warn(const std::string& sentence, std::string_view kind);

/// While it lives, only the first warning of a kind is told, here and in processes that are forked meanwhile. There is
/// no more than one at a time.
class WarningsOnce
{
public:
    WarningsOnce();
    ~WarningsOnce();
    WarningsOnce(const WarningsOnce&) = delete;
    WarningsOnce& operator=(const WarningsOnce&) = delete;

    /// How many were not told.
    long long untoldCount() const;

private:
    friend void warn(const std::string& sentence, std::string_view kind);
    struct Table;

    Table* table_; ///< of all processes; null if there is no memory for it, and all warnings are told
};

/// "a, b"
std::string joined(const std::vector<std::string>& texts, std::string_view separator = ", ");

/// "'a', 'b'"
std::string quotedNames(const std::vector<std::string>& names);

/// "1 node", "2 nodes"
std::string oneOrMore(long long count, std::string_view one, std::string_view more);

/// In that many significant digits.
std::string inDigits(int digitCount, double value);

/// A message of the library without its heading and full stop.
std::string bareMessage(std::string message);

/// A line of a summary: a label and, behind all labels, the content.
void printLine(std::ostream& stream, std::string_view label, const std::string& content);

/// A line of a summary with a number, below those of other such lines. The remark is left out for 0.
void printCount(std::ostream& stream, std::string_view label, long long count, std::string_view remark = "");

/// Rows of cells below one another, the first column aligned to the left, the others to the right.
class TextTable
{
public:
    /// \param minWidth  of all columns but the first one
    explicit TextTable(std::size_t minWidth) : minWidth_(minWidth) {}

    /// The first row sets the number of columns.
    void addRow(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

    void print(std::ostream& stream) const;

private:
    std::size_t minWidth_;
    std::vector<std::vector<std::string>> rows_;
};

} // namespace veltrane

#endif
