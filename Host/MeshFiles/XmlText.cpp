#include "XmlText.h"

#include <algorithm>
#include <charconv>

namespace veltrane
{
namespace
{

constexpr std::string_view blanks = " \t\r\n";
constexpr int mostLevels = 16;

struct NotPlain
{
};

class Parser
{
public:
    explicit Parser(std::string_view text) : rest_(text) {}

    XmlElement parseDocument()
    {
        skipOutside();
        XmlElement root = parseElement(0);
        skipOutside();
        require(rest_.empty());
        return root;
    }

private:
    static void require(bool condition)
    {
        if (!condition)
        {
            throw NotPlain();
        }
    }

    void take(std::string_view expected)
    {
        require(rest_.starts_with(expected));
        rest_.remove_prefix(expected.size());
    }

    bool tryTake(std::string_view expected)
    {
        const bool isThere = rest_.starts_with(expected);
        rest_.remove_prefix(isThere ? expected.size() : 0);
        return isThere;
    }

    std::string_view takeUntil(std::string_view end)
    {
        const std::size_t length = rest_.find(end);
        require(length != std::string_view::npos);
        const std::string_view taken = rest_.substr(0, length);
        rest_.remove_prefix(length + end.size());
        return taken;
    }

    bool skipBlanks()
    {
        const std::size_t count = std::min(rest_.find_first_not_of(blanks), rest_.size());
        rest_.remove_prefix(count);
        return count > 0;
    }

    /// Blanks, comments and instructions.
    void skipOutside()
    {
        for (skipBlanks(); rest_.starts_with("<?") || rest_.starts_with("<!--"); skipBlanks())
        {
            takeUntil(rest_.starts_with("<?") ? "?>" : "-->");
        }
    }

    std::string takeName()
    {
        constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_:.-";
        const std::size_t length = std::min(rest_.find_first_not_of(letters), rest_.size());
        require(length > 0);
        std::string name(rest_.substr(0, length));
        rest_.remove_prefix(length);
        return name;
    }

    static char letterOf(std::string_view entity)
    {
        constexpr std::pair<std::string_view, char> known[] = {
            {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
        for (const auto& [name, letter] : known)
        {
            if (entity == name)
            {
                return letter;
            }
        }
        require(entity.starts_with('#'));
        int code = 0;
        const char* end = entity.data() + entity.size();
        const auto [stop, failure] = std::from_chars(entity.data() + 1, end, code);
        require(failure == std::errc() && stop == end && code > 0 && code < 128);
        return static_cast<char>(code);
    }

    static std::string decoded(std::string_view value)
    {
        std::string result;
        while (!value.empty())
        {
            const std::size_t plain = std::min(value.find_first_of("&<\t\r\n"), value.size());
            result += value.substr(0, plain);
            value.remove_prefix(plain);
            if (value.empty())
            {
                break;
            }
            require(value.front() == '&'); // a parser would make other blanks of blanks
            const std::size_t end = value.find(';');
            require(end != std::string_view::npos);
            result += letterOf(value.substr(1, end - 1));
            value.remove_prefix(end + 1);
        }
        return result;
    }

    void parseAttributes(XmlElement& element)
    {
        while (skipBlanks() && !rest_.starts_with('>') && !rest_.starts_with("/>"))
        {
            std::string name = takeName();
            skipBlanks();
            take("=");
            skipBlanks();
            const std::string_view quote = rest_.starts_with('\'') ? "'" : "\"";
            take(quote);
            require(element.attribute(name) == nullptr);
            element.attributes.emplace_back(std::move(name), decoded(takeUntil(quote)));
        }
    }

    XmlElement parseElement(int level)
    {
        require(level < mostLevels);
        XmlElement element;
        take("<");
        element.name = takeName();
        parseAttributes(element);
        if (tryTake("/>"))
        {
            return element;
        }
        take(">");
        const std::size_t length = rest_.find('<');
        require(length != std::string_view::npos);
        element.text = rest_.substr(0, length);
        rest_.remove_prefix(length);
        while (!tryTake("</"))
        {
            if (tryTake("<!--"))
            {
                takeUntil("-->");
            }
            else
            {
                element.children.push_back(parseElement(level + 1));
            }
            skipBlanks();
        }
        take(element.name);
        skipBlanks();
        take(">");
        return element;
    }

    std::string_view rest_;
};

} // namespace

const std::string* XmlElement::attribute(std::string_view attributeName) const
{
    for (const auto& [name_, value] : attributes)
    {
        if (name_ == attributeName)
        {
            return &value;
        }
    }
    return nullptr;
}

std::optional<XmlElement> parseXml(std::string_view text)
{
    try
    {
        return Parser(text).parseDocument();
    }
    catch (const NotPlain&)
    {
        return std::nullopt;
    }
}

} // namespace veltrane
