#include "TableText.h"

#include "DataSetReader.h"
#include "Text.h"

#include <algorithm>
#include <climits>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

namespace veltrane
{
namespace
{

constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
constexpr char quotationMark = '"';

std::string readAll(std::istream& stream)
{
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::string_view firstLine(std::string_view content)
{
    return content.substr(0, content.find_first_of("\r\n"));
}

/// Names of three columns at least have two delimiters between them.
char delimiterOf(std::string_view names)
{
    for (const char delimiter : {';', '\t'})
    {
        if (std::ranges::count(names, delimiter) >= 2)
        {
            return delimiter;
        }
    }
    return ',';
}

/// Whether a text is a number but for the comma where a point should be.
bool hasDecimalComma(std::string_view cell)
{
    const std::size_t exponent = std::min(cell.find_first_of("eE"), cell.size());
    std::string_view digits = cell.substr(0, exponent);
    digits.remove_prefix(digits.starts_with('-') || digits.starts_with('+') ? 1 : 0);
    const auto isDigitOrComma = [](char letter) { return letter == ',' || (letter >= '0' && letter <= '9'); };
    return digits.size() > 1 && std::ranges::count(digits, ',') == 1 && std::ranges::all_of(digits, isDigitOrComma);
}

std::string_view trimmed(std::string_view cell)
{
    const std::size_t begin = std::min(cell.find_first_not_of(' '), cell.size());
    const std::size_t end = cell.find_last_not_of(' ') + 1;
    return begin < end ? cell.substr(begin, end - begin) : std::string_view();
}

/// Takes a table apart into its cells and puts it together again.
class TableRewriter
{
public:
    TableRewriter(std::string_view content, char delimiter) : rest_(content), delimiter_(delimiter) {}

    std::string run()
    {
        while (!rest_.empty())
        {
            takeLine();
        }
        return std::move(result_);
    }

private:
    void takeLine()
    {
        std::vector<std::string> cells;
        bool isEmpty = true;
        do
        {
            cells.push_back(takeCell());
            isEmpty = isEmpty && cells.back().empty();
        } while (takeIf(delimiter_));
        takeIf('\r');
        takeIf('\n');
        if (isEmpty)
        {
            return;
        }
        for (std::size_t i = 0; i < cells.size(); ++i)
        {
            if (i > 0)
            {
                result_ += ',';
            }
            result_ += marked(std::move(cells[i]));
        }
        result_ += '\n';
    }

    std::string takeCell()
    {
        const std::string quoted = rest_.starts_with(quotationMark) ? takeQuoted() : "";
        const char ends[] = {delimiter_, '\r', '\n', '\0'};
        const std::size_t end = std::min(rest_.find_first_of(ends), rest_.size());
        std::string cell(trimmed(rest_.substr(0, end)));
        rest_.remove_prefix(end);
        if (hasDecimalComma(cell))
        {
            cell[cell.find(',')] = '.';
        }
        return quoted + cell;
    }

    /// Two quotation marks stand for one.
    std::string takeQuoted()
    {
        std::string cell;
        rest_.remove_prefix(1);
        while (!rest_.empty() && (!takeIf(quotationMark) || rest_.starts_with(quotationMark)))
        {
            cell += rest_.front();
            rest_.remove_prefix(1);
        }
        return cell;
    }

    bool takeIf(char letter)
    {
        const bool isNext = rest_.starts_with(letter);
        rest_.remove_prefix(isNext ? 1 : 0);
        return isNext;
    }

    static std::string marked(std::string cell)
    {
        if (cell.find_first_of(",\"\r\n") == std::string::npos)
        {
            return cell;
        }
        std::string result(1, quotationMark);
        for (const char letter : cell)
        {
            result += letter == quotationMark ? std::string(2, letter) : std::string(1, letter);
        }
        return result + quotationMark;
    }

    std::string_view rest_;
    char delimiter_;
    std::string result_;
};

} // namespace

const std::string& standardInput()
{
    static const std::string content = readAll(std::cin);
    return content;
}

std::string readTableText(const std::filesystem::path& path)
{
    std::ifstream file;
    if (path != standardStream)
    {
        file.open(path, std::ios::binary);
    }
    std::string content = path == standardStream ? standardInput() : readAll(file);
    if (content.starts_with("\xFF\xFE") || content.starts_with("\xFE\xFF"))
    {
        throw BadFile(text("cannot read ", quoted(path), ": it is in UTF-16; save it as CSV in UTF-8"));
    }
    if (content.size() > INT_MAX)
    {
        throw BadFile(text("cannot read ", quoted(path), ": it has ", content.size(),
                           " bytes, more than the 2 GB that a table may have"));
    }
    if (content.empty())
    {
        throw BadFile(text(quoted(path), " is empty"));
    }
    if (content.starts_with(utf8Mark))
    {
        content.erase(0, utf8Mark.size());
    }
    const std::string_view line = firstLine(content);
    constexpr std::string_view separatorMark = "sep=";
    if (line.size() == separatorMark.size() + 1 && line.starts_with(separatorMark))
    {
        const char delimiter = line.back();
        const std::size_t begin = std::min(content.find('\n', line.size()), content.size() - 1) + 1;
        return TableRewriter(std::string_view(content).substr(begin), delimiter).run();
    }
    const char delimiter = delimiterOf(line);
    return delimiter == ',' ? content : TableRewriter(content, delimiter).run();
}

} // namespace veltrane
