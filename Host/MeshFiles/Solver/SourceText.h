/// The bytes of a file that is being taken apart, and how they are said to be wrong.
#ifndef VELTRANE_HOST_SOURCE_TEXT_H
#define VELTRANE_HOST_SOURCE_TEXT_H

#include "FileErrors.h"
#include "Text.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace veltrane
{

/// A file in memory. It knows which line and which byte a place in it is.
class SourceText
{
public:
    SourceText(std::string bytes, std::filesystem::path path) : bytes_(std::move(bytes)), path_(std::move(path)) {}

    /// Throws NoInput.
    explicit SourceText(const std::filesystem::path& path);

    const std::filesystem::path& path() const { return path_; }
    std::string_view bytes() const { return bytes_; }
    const char* begin() const { return bytes_.data(); }
    const char* end() const { return bytes_.data() + bytes_.size(); }

    /// From 1; of a place in these bytes.
    std::size_t lineOf(const char* place) const;

    /// Throws BadFile: "cannot read 'mesh.inp': line 7 ..."
    template <typename... Parts> [[noreturn]] void failAtLine(const char* place, const Parts&... parts) const
    {
        fail(text("line ", lineOf(place), " ", parts...));
    }

    /// Throws BadFile: "cannot read 'mesh.msh': byte 123 ...", counted from 0.
    template <typename... Parts> [[noreturn]] void failAtByte(const char* place, const Parts&... parts) const
    {
        fail(text("byte ", place - begin(), " ", parts...));
    }

    [[noreturn]] void fail(const std::string& reason) const;

private:
    std::string bytes_;
    std::filesystem::path path_;
};

/// A piece of a file for a message: not more than the beginning, and without what does not belong into a sentence.
std::string shown(std::string_view piece);

inline bool isBlank(char letter)
{
    return letter == ' ' || letter == '\t' || letter == '\r' || letter == '\n';
}

/// Without blanks, tabulators and ends of lines around it.
inline std::string_view trimmed(std::string_view piece)
{
    while (!piece.empty() && isBlank(piece.front()))
    {
        piece.remove_prefix(1);
    }
    while (!piece.empty() && isBlank(piece.back()))
    {
        piece.remove_suffix(1);
    }
    return piece;
}

/// In capital letters, since many formats do not tell small ones from these.
std::string inCapitals(std::string_view piece);

} // namespace veltrane

#endif
