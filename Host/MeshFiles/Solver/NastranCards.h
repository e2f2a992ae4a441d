/// The cards of bulk data of Nastran, whatever their fields look like.
#ifndef VELTRANE_HOST_NASTRAN_CARDS_H
#define VELTRANE_HOST_NASTRAN_CARDS_H

#include "DeckLines.h"

#include <cstddef>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace veltrane
{

/// A card with all its lines. The views are into the text, or into `expanded` of the reader for lines with tabulators.
struct NastranCard
{
    std::string name{};                     ///< "CTETRA", in capitals, without a star
    std::vector<std::string_view> fields{}; ///< behind the name, without the ones that continue lines; may be blank
    const char* place = nullptr;

    /// Blank if the card has no such field.
    std::string_view field(std::size_t i) const { return i < fields.size() ? fields[i] : std::string_view(); }
};

class NastranCards
{
public:
    NastranCards(const SourceText& first, FileOpener open);

    /// The next card, in the same place as the one before; null at the end of the data. Includes are followed.
    const NastranCard* next();

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
    /// A line without its comment.
    struct Line
    {
        std::string_view text{};
        std::string_view first{}; ///< its first field
        bool isFree = false;      ///< with commas between the fields
        const char* behind = nullptr;

        bool continues() const { return first.empty() || first.front() == '+' || first.front() == '*'; }
    };

    const Line* peek();
    void take();
    void skipHeading();
    void include(const Line& line);
    void addFields(const Line& line, bool isFirst);
    void addFreeFields(std::string_view line, std::size_t count);
    void addFixedFields(std::string_view line, std::size_t count, std::size_t width);
    std::string_view withoutTabulators(std::string_view line);

    const SourceText& first_;
    FileOpener open_;
    std::list<SourceText> included_{};
    std::vector<Reading> files_{};
    Line next_{}; ///< the line that peek() has found, if it has a place behind it
    std::list<std::string> expanded_{};
    NastranCard card_{};
};

/// Numbers as these files have them, with an exponent that may do without its letter: 1.5-3. Of a blank field nothing
/// is taken, and the value stays. False if the field is no number.
bool isNastranReal(std::string_view field, double& value);

} // namespace veltrane

#endif
