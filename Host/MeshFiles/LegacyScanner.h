/// Steps through VTK's legacy files without keeping what is in them.
#ifndef VELTRANE_HOST_LEGACY_SCANNER_H
#define VELTRANE_HOST_LEGACY_SCANNER_H

#include <filesystem>
#include <fstream>
#include <string>

namespace veltrane
{

/// Where the values of an array stand.
struct LegacyValues
{
    std::string type; ///< "double"
    long long count;
    std::streamoff begin;
    std::streamoff end;
};

/// Takes the parts of a file one after the other, words, numbers and arrays, as VTK's reader does.
class LegacyScanner
{
public:
    /// Thrown where the file is not as the reader needs it.
    class Lost
    {
    };

    /// Thrown where values are missing; says what there is instead.
    struct MissingValues
    {
        std::string description; ///< "ends after 3 of 5 values"
    };

    /// Takes the heading.
    explicit LegacyScanner(const std::filesystem::path& path);

    int version() const { return version_; }

    /// Empty at the end of the file.
    std::string word();

    /// A word in small letters.
    std::string keyword();

    /// As text.
    long long integer();

    /// The same, from 0.
    long long count();

    /// Goes to the line in which the numbers of a section begin.
    void beginSection();

    /// A whole number of a section: text, or binary with the highest byte first.
    long long integer(int byteCount);

    /// The values of an array and what is said about it behind them. The type comes first in the file.
    LegacyValues array(long long tupleCount, long long componentCount);

    /// The same where the file does not say the type.
    LegacyValues arrayOf(const std::string& type, long long tupleCount, long long componentCount);

    bool haveSameValues(const LegacyValues& first, const LegacyValues& second);

private:
    std::streamoff position();
    void skipLine();
    void skipWords(long long wordCount);
    void skipNumbers(long long valueCount);
    void skipBytes(long long byteCount);
    void skipBinary(long long valueCount, long long byteCount);
    void skipStrings(long long stringCount);
    void skipValues(const std::string& type, long long valueCount);
    void skipMetadata(long long componentCount);
    std::string bytes(const LegacyValues& values);

    std::ifstream in_;
    std::streamoff size_;
    int version_ = 0;
    bool isBinary_ = false;
};

} // namespace veltrane

#endif
