#include "DeckLines.h"

#include <algorithm>
#include <cstring>

namespace veltrane
{
namespace
{

/// In capitals, with single blanks; what is in quotation marks stays as it is.
std::string tidied(std::string_view piece)
{
    piece = trimmed(piece);
    if (piece.size() >= 2 && piece.front() == '"' && piece.back() == '"')
    {
        return std::string(piece.substr(1, piece.size() - 2));
    }
    return oneLine(inCapitals(piece));
}

Keyword keywordOf(const std::vector<std::string_view>& pieces)
{
    Keyword keyword;
    keyword.name = tidied(pieces.front().substr(1));
    keyword.place = pieces.front().data();
    for (std::size_t i = 1; i < pieces.size(); ++i)
    {
        const std::size_t equals = pieces[i].find('=');
        const std::string name = tidied(pieces[i].substr(0, equals));
        if (name.empty())
        {
            continue;
        }
        const std::string_view value =
            equals == std::string_view::npos ? std::string_view() : trimmed(pieces[i].substr(equals + 1));
        keyword.parameters.emplace_back(name, tidied(value));
        keyword.values.push_back(value);
    }
    return keyword;
}

void addPieces(std::vector<std::string_view>& pieces, std::string_view line)
{
    for (std::size_t begin = 0; begin <= line.size();)
    {
        const std::size_t end = std::min(line.find(',', begin), line.size());
        pieces.push_back(line.substr(begin, end - begin));
        begin = end + 1;
    }
}

bool isComment(std::string_view line)
{
    return line.starts_with("**");
}

} // namespace

const std::string* Keyword::find(std::string_view parameter) const
{
    const auto found = std::ranges::find_if(parameters, [&](const auto& pair) { return pair.first == parameter; });
    return found == parameters.end() ? nullptr : &found->second;
}

std::string Keyword::value(std::string_view parameter) const
{
    const std::string* found = find(parameter);
    return found == nullptr ? std::string() : *found;
}

std::string_view Keyword::valueAsWritten(std::string_view parameter) const
{
    for (std::size_t i = 0; i < parameters.size(); ++i)
    {
        if (parameters[i].first == parameter)
        {
            return values[i];
        }
    }
    return {};
}

DeckLines::DeckLines(const SourceText& first, FileOpener open) : first_(first), open_(open)
{
    files_.push_back({&first, first.begin()});
}

/// The next line that is no comment, of whichever file.
std::optional<std::string_view> DeckLines::peek()
{
    while (!files_.empty())
    {
        Reading& file = files_.back();
        if (file.at == file.source->end())
        {
            if (files_.size() == 1)
            {
                return std::nullopt;
            }
            files_.pop_back();
            continue;
        }
        const auto rest = static_cast<std::size_t>(file.source->end() - file.at);
        const auto* end = static_cast<const char*>(std::memchr(file.at, '\n', rest));
        const std::string_view line(file.at, end == nullptr ? rest : static_cast<std::size_t>(end - file.at));
        if (!isComment(line))
        {
            return line;
        }
        take(line);
    }
    return std::nullopt;
}

void DeckLines::take(std::string_view line)
{
    Reading& file = files_.back();
    file.at = line.data() + line.size();
    file.at += file.at == file.source->end() ? 0 : 1;
}

std::optional<Keyword> DeckLines::keyword()
{
    std::optional<std::string_view> line = peek();
    while (line && !line->starts_with('*'))
    {
        take(*line);
        line = peek();
    }
    if (!line)
    {
        return std::nullopt;
    }
    std::vector<std::string_view> pieces;
    addPieces(pieces, *line);
    take(*line);
    // A comma at the end says that the next line belongs to it, too.
    while (trimmed(*line).ends_with(','))
    {
        line = peek();
        if (!line || line->starts_with('*'))
        {
            break;
        }
        addPieces(pieces, *line);
        take(*line);
    }
    return keywordOf(pieces);
}

std::optional<std::string_view> DeckLines::data()
{
    const std::optional<std::string_view> line = peek();
    if (!line || line->starts_with('*'))
    {
        return std::nullopt;
    }
    take(*line);
    return line;
}

void DeckLines::include(const Keyword& keyword, std::string_view fileName)
{
    std::string_view name = trimmed(fileName);
    if (name.size() >= 2 && (name.front() == '"' || name.front() == '\'') && name.back() == name.front())
    {
        name = name.substr(1, name.size() - 2);
    }
    if (name.empty())
    {
        fail(keyword.place, "includes a file without saying which");
    }
    constexpr std::size_t deepest = 20;
    constexpr std::size_t most = 1000;
    if (files_.size() > deepest || included_.size() > most)
    {
        fail(keyword.place, "includes ", shown(name), ", one of more files than can be meant");
    }
    const std::filesystem::path path = sourceOf(keyword.place).path().parent_path() / std::filesystem::path(name);
    try
    {
        included_.push_back(open_(path));
    }
    catch (const NoInput&)
    {
        fail(keyword.place, "includes the file '", path.string(), "', which cannot be opened");
    }
    files_.push_back({&included_.back(), included_.back().begin()});
}

const SourceText& DeckLines::sourceOf(const char* place) const
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

} // namespace veltrane
