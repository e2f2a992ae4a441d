/// The lines of input decks in the language of Abaqus, with those of the files that they include.
#ifndef VELTRANE_HOST_DECK_LINES_H
#define VELTRANE_HOST_DECK_LINES_H

#include "SourceText.h"

#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace veltrane
{

/// Gives the contents of a file; throws NoInput or BadFile.
using FileOpener = SourceText (*)(const std::filesystem::path& path);

/// A line that begins with a star: "*ELEMENT, TYPE=C3D4, ELSET=Part".
struct Keyword
{
    std::string name{}; ///< without the star, in capitals, with single blanks: "SOLID SECTION"
    std::vector<std::pair<std::string, std::string>> parameters{}; ///< both in capitals; without a value: ""
    std::vector<std::string_view> values{};                        ///< of the parameters, as in the file
    const char* place = nullptr;

    bool has(std::string_view parameter) const { return find(parameter) != nullptr; }

    /// Empty if there is no such parameter.
    std::string value(std::string_view parameter) const;
    std::string_view valueAsWritten(std::string_view parameter) const;

private:
    const std::string* find(std::string_view parameter) const;
};

class DeckLines
{
public:
    /// \param first  must live as long
    DeckLines(const SourceText& first, FileOpener open);

    /// The next keyword; what is left of the data of the one before is passed over. Includes are followed.
    std::optional<Keyword> keyword();

    /// The next line of data of the keyword; nothing if another keyword or the end comes. Without comments.
    std::optional<std::string_view> data();

    /// Goes on in another file, and then behind the place where it is. Throws BadFile for a file that includes itself.
    void include(const Keyword& keyword, std::string_view fileName);

    /// Throws BadFile with the file and the line of a place in any of the files.
    template <typename... Parts> [[noreturn]] void fail(const char* place, const Parts&... parts) const
    {
        sourceOf(place).failAtLine(place, parts...);
    }

private:
    struct Reading
    {
        const SourceText* source;
        const char* at;
    };

    const SourceText& sourceOf(const char* place) const;
    std::optional<std::string_view> peek();
    void take(std::string_view line);

    const SourceText& first_;
    FileOpener open_;
    std::list<SourceText> included_{};
    std::vector<Reading> files_{}; ///< the innermost last
};

} // namespace veltrane

#endif
