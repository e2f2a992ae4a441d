/// Text files that are written number by number.
#ifndef VELTRANE_HOST_TEXT_FILE_H
#define VELTRANE_HOST_TEXT_FILE_H

#include "PlacedFile.h"

#include <array>
#include <charconv>
#include <string>
#include <string_view>

namespace veltrane
{

/// Throws CannotWrite with nothing but the reason.
class TextFile
{
public:
    explicit TextFile(const std::filesystem::path& path) : file_(path) {}

    TextFile& operator<<(std::string_view piece)
    {
        text_ += piece;
        if (text_.size() > pieceSize)
        {
            flush();
        }
        return *this;
    }

    TextFile& operator<<(char letter) { return *this << std::string_view(&letter, 1); }

    /// Real numbers with as many digits as tell them from all others of their type.
    template <typename Number>
    requires std::is_arithmetic_v<Number> TextFile& operator<<(Number number)
    {
        std::array<char, 32> digits;
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        return *this << std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data()));
    }

    /// With so many significant digits at most.
    void addRounded(double number, int digitCount)
    {
        std::array<char, 32> digits;
        const auto end =
            std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::general, digitCount)
                .ptr;
        *this << std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data()));
    }

    void close()
    {
        flush();
        file_.close();
    }

private:
    static constexpr std::size_t pieceSize = 1 << 20;

    void flush()
    {
        file_.write(std::as_bytes(std::span(text_)), place_);
        place_ += text_.size();
        text_.clear();
    }

    PlacedFile file_;
    std::string text_{};
    std::uint64_t place_ = 0;
};

} // namespace veltrane

#endif
