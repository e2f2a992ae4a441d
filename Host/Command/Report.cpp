#include "Report.h"

#include "ProgressBar.h"
#include "Text.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <new>

namespace veltrane
{
namespace
{

constexpr int labelWidth = 18;
constexpr int countWidth = 9;

/// The one that lives, if any.
WarningsOnce* warningsOnce = nullptr;

} // namespace

/// Entries are taken by whoever comes first and never given back.
struct WarningsOnce::Table
{
    static constexpr std::size_t size = 256;

    std::array<std::atomic<std::uint64_t>, size> kinds; ///< 0: free
    std::atomic<long long> untoldCount;

    /// Whether it is the first time. If the table is full, it is taken for that.
    bool enter(std::string_view kind)
    {
        const std::uint64_t key = std::max<std::uint64_t>(std::hash<std::string_view>{}(kind), 1);
        for (std::atomic<std::uint64_t>& entry : kinds)
        {
            std::uint64_t found = 0;
            if (entry.compare_exchange_strong(found, key))
            {
                return true;
            }
            if (found == key)
            {
                ++untoldCount;
                return false;
            }
        }
        return true;
    }
};

WarningsOnce::WarningsOnce() : table_(nullptr)
{
    void* memory = ::mmap(nullptr, sizeof(Table), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    table_ = memory == MAP_FAILED ? nullptr : new (memory) Table{};
    warningsOnce = this;
}

WarningsOnce::~WarningsOnce()
{
    warningsOnce = nullptr;
    if (table_ != nullptr)
    {
        ::munmap(table_, sizeof(Table));
    }
}

long long WarningsOnce::untoldCount() const
{
    return table_ == nullptr ? 0 : table_->untoldCount.load();
}

void warn(const std::string& sentence, std::string_view kind)
{
    if (warningsOnce != nullptr && warningsOnce->table_ != nullptr && !warningsOnce->table_->enter(kind))
    {
        return;
    }
    clearTerminalLine(std::cerr);
    std::cerr << "veltrane: warning: " << sentence << '\n';
}

std::string joined(const std::vector<std::string>& texts, std::string_view separator)
{
    std::string list;
    for (const std::string& part : texts)
    {
        list += text(list.empty() ? "" : separator, part);
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
