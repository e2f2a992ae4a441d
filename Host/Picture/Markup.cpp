#include "Markup.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <string_view>
#include <utility>

namespace veltrane
{
namespace
{

/// How many bytes the UTF-8 letter that begins here has; 0 if it is none.
std::size_t letterSize(std::string_view bytes)
{
    const auto first = static_cast<unsigned char>(bytes.front());
    const std::size_t size = first < 0x80                    ? 1
                             : first >= 0xC2 && first < 0xE0 ? 2
                             : first >= 0xE0 && first < 0xF0 ? 3
                             : first >= 0xF0 && first < 0xF5 ? 4
                                                             : 0;
    if (size > bytes.size())
    {
        return 0;
    }
    for (std::size_t i = 1; i < size; ++i)
    {
        if ((static_cast<unsigned char>(bytes[i]) & 0xC0U) != 0x80)
        {
            return 0;
        }
    }
    return size;
}

void replaceAll(std::string& words, std::string_view from, std::string_view to)
{
    for (std::size_t at = words.find(from); at != std::string::npos; at = words.find(from, at + to.size()))
    {
        words.replace(at, from.size(), to);
    }
}

bool isDigit(char letter)
{
    return std::isdigit(static_cast<unsigned char>(letter)) != 0;
}

/// Numbers with one decimal, which is finer than what is seen.
std::string withShortNumbers(std::string_view svg)
{
    constexpr std::size_t decimals = 1;
    std::string result;
    result.reserve(svg.size());
    for (std::size_t i = 0; i < svg.size();)
    {
        result += svg[i++];
        const bool isPoint = result.back() == '.' && result.size() > 1 && isDigit(result[result.size() - 2]);
        if (!isPoint)
        {
            continue;
        }
        std::size_t end = i;
        while (end < svg.size() && isDigit(svg[end]))
        {
            ++end;
        }
        result += svg.substr(i, std::min(decimals, end - i));
        while (result.back() == '0')
        {
            result.pop_back();
        }
        if (result.back() == '.')
        {
            result.pop_back();
        }
        i = end;
    }
    return result;
}

} // namespace

std::string escaped(const std::string& words)
{
    std::string result;
    for (std::size_t i = 0; i < words.size();)
    {
        const std::size_t size = letterSize(std::string_view(words).substr(i));
        const char letter = words[i];
        if (size == 0 || (size == 1 && static_cast<unsigned char>(letter) < 0x20 && letter != '\n'))
        {
            result += '?';
        }
        else if (letter == '&')
        {
            result += "&amp;";
        }
        else if (letter == '<')
        {
            result += "&lt;";
        }
        else if (letter == '>')
        {
            result += "&gt;";
        }
        else if (letter == '"')
        {
            result += "&quot;";
        }
        else
        {
            result += words.substr(i, size);
        }
        i += std::max(std::size_t{1}, size);
    }
    return result;
}

std::string embedded(const std::string& svgFile, const std::string& name)
{
    const std::size_t head = svgFile.find('>', svgFile.find("<svg"));
    const std::size_t foot = svgFile.rfind("</svg>");
    if (head == std::string::npos || foot == std::string::npos)
    {
        return "";
    }
    std::string content = withShortNumbers(std::string_view(svgFile).substr(head + 1, foot - head - 1));
    replaceAll(content, "id=\"", "id=\"" + name + "-");
    replaceAll(content, "url(#", "url(#" + name + "-");
    replaceAll(content, "href=\"#", "href=\"#" + name + "-");
    replaceAll(content, "rgb(10%,10%,10%)", "currentColor"); // ink
    return content;
}

} // namespace veltrane
