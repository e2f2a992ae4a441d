#include "NastranCards.h"

#include "NumberText.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace veltrane
{
namespace
{

constexpr std::size_t fieldWidth = 8; ///< of names and small fields
constexpr std::size_t smallFieldsPerLine = 8;
constexpr std::size_t largeFieldsPerLine = 4;

bool beginsBulk(std::string_view line)
{
    line = trimmed(line);
    return (line.starts_with('B') || line.starts_with('b')) &&
           oneLine(inCapitals(line.substr(0, 80))).starts_with("BEGIN BULK");
}

} // namespace

NastranCards::NastranCards(const SourceText& first, FileOpener open) : first_(first), open_(open)
{
    files_.push_back({&first, first.begin()});
    skipHeading();
}

/// What stands before the bulk data, if it is marked where they begin.
void NastranCards::skipHeading()
{
    const char* begin = files_.back().at;
    while (const Line* line = peek())
    {
        const bool isMark = beginsBulk(line->text);
        take();
        if (isMark)
        {
            return;
        }
    }
    files_ = {{&first_, begin}};
}

/// The next line that is not blank, of whichever file; null at the end.
const NastranCards::Line* NastranCards::peek()
{
    while (next_.behind == nullptr && !files_.empty())
    {
        Reading& file = files_.back();
        if (file.at == file.source->end())
        {
            if (files_.size() == 1)
            {
                return nullptr;
            }
            files_.pop_back();
            continue;
        }
        const auto rest = static_cast<std::size_t>(file.source->end() - file.at);
        const auto* end = static_cast<const char*>(std::memchr(file.at, '\n', rest));
        const std::string_view whole(file.at, end == nullptr ? rest : static_cast<std::size_t>(end - file.at));
        file.at = end == nullptr ? file.source->end() : end + 1;
        const std::string_view line = whole.substr(0, whole.find('$'));
        if (!trimmed(line).empty())
        {
            const std::size_t comma = line.find(',');
            const bool isFree = comma != std::string_view::npos;
            const std::size_t nameEnd = isFree ? comma : std::min(fieldWidth, line.find('\t'));
            next_ = {line, trimmed(line.substr(0, nameEnd)), isFree, file.at};
        }
    }
    return next_.behind == nullptr ? nullptr : &next_;
}

void NastranCards::take()
{
    next_.behind = nullptr;
}

const NastranCard* NastranCards::next()
{
    while (const Line* line = peek())
    {
        if (line->first.size() >= 7 && inCapitals(line->first.substr(0, 7)) == "INCLUDE")
        {
            const Line whole = *line;
            take();
            include(whole);
            continue;
        }
        if (line->continues())
        {
            fail(line->text.data(), "continues a card, but there is none before it");
        }
        card_.name = inCapitals(line->first);
        card_.fields.clear();
        card_.place = line->text.data();
        expanded_.clear();
        if (card_.name == "ENDDATA")
        {
            return nullptr;
        }
        addFields(*line, true);
        take();
        constexpr std::size_t mostFields = 1000000;
        for (line = peek(); line != nullptr && line->continues() && card_.fields.size() < mostFields; line = peek())
        {
            addFields(*line, false);
            take();
        }
        if (card_.name.ends_with('*'))
        {
            card_.name = trimmed(std::string_view(card_.name).substr(0, card_.name.size() - 1));
        }
        return &card_;
    }
    return nullptr;
}

/// INCLUDE 'name', of which the name may go on in further lines.
void NastranCards::include(const Line& line)
{
    const char* place = line.text.data();
    std::string name(trimmed(trimmed(line.text).substr(7)));
    const auto isOpen = [&]
    { return name.size() > 1 && name.front() == '\'' && name.find('\'', 1) == std::string::npos; };
    for (const Line* more = peek(); isOpen() && more != nullptr; more = peek())
    {
        name += trimmed(more->text);
        take();
    }
    std::erase_if(name, [](char letter) { return letter == '\'' || letter == '"'; });
    constexpr std::size_t deepest = 20;
    constexpr std::size_t most = 1000;
    if (name.empty() || files_.size() > deepest || included_.size() > most)
    {
        fail(place, "includes ", shown(name),
             name.empty() ? ", which is no file" : ", one of more files than can be meant");
    }
    const std::filesystem::path path = sourceOf(place).path().parent_path() / name;
    try
    {
        included_.push_back(open_(path));
    }
    catch (const NoInput&)
    {
        fail(place, "includes the file '", path.string(), "', which cannot be opened");
    }
    files_.push_back({&included_.back(), included_.back().begin()});
}

void NastranCards::addFields(const Line& line, bool isFirst)
{
    const bool isLarge = isFirst ? line.first.ends_with('*') : line.first.starts_with('*');
    const std::size_t count = isLarge ? largeFieldsPerLine : smallFieldsPerLine;
    const bool hasTabulators = line.text.find('\t') != std::string_view::npos;
    const std::string_view plain = hasTabulators ? withoutTabulators(line.text) : line.text;
    if (line.isFree)
    {
        addFreeFields(plain, count);
    }
    else
    {
        addFixedFields(plain, count, isLarge ? 2 * fieldWidth : fieldWidth);
    }
}

void NastranCards::addFreeFields(std::string_view line, std::size_t count)
{
    std::size_t begin = line.find(',') + 1;
    for (std::size_t i = 0; i < count; ++i)
    {
        const std::size_t end = std::min(line.find(',', begin), line.size());
        card_.fields.push_back(begin <= line.size() ? trimmed(line.substr(begin, end - begin)) : std::string_view());
        begin = std::min(end, line.size()) + 1;
    }
}

void NastranCards::addFixedFields(std::string_view line, std::size_t count, std::size_t width)
{
    for (std::size_t i = 0; i < count; ++i)
    {
        const std::size_t begin = fieldWidth + i * width;
        card_.fields.push_back(begin < line.size() ? trimmed(line.substr(begin, width)) : std::string_view());
    }
}

/// A tabulator goes on with the next field.
std::string_view NastranCards::withoutTabulators(std::string_view line)
{
    std::string& result = expanded_.emplace_back();
    for (const char letter : line)
    {
        if (letter == '\t')
        {
            result.append(fieldWidth - result.size() % fieldWidth, ' ');
        }
        else
        {
            result += letter;
        }
    }
    return result;
}

const SourceText& NastranCards::sourceOf(const char* place) const
{
    for (const SourceText& source : included_)
    {
        if (place >= source.begin() && place <= source.end())
        {
            return source;
        }
    }
    return first_;
}

bool isNastranReal(std::string_view field, double& value)
{
    if (field.empty() || isReal(field, value))
    {
        return true;
    }
    const std::size_t sign = field.find_first_of("+-", 1);
    std::array<char, 40> copy{};
    if (sign == std::string_view::npos || field.size() + 1 >= copy.size())
    {
        return false;
    }
    char* at = std::ranges::copy(field.substr(0, sign), copy.begin()).out;
    *at++ = 'e';
    at = std::ranges::copy(field.substr(sign), at).out;
    return isReal({copy.data(), static_cast<std::size_t>(at - copy.data())}, value);
}

} // namespace veltrane
