/// Steps through VTK's legacy files without keeping what is in them.
#ifndef VELTRANE_HOST_LEGACY_SCANNER_H
#define VELTRANE_HOST_LEGACY_SCANNER_H

#include <filesystem>
#include <fstream>
#include <string>

namespace veltrane
{

/// Takes the parts of a file one after the other, words, numbers and arrays, as VTK's reader does.
class LegacyScanner
{
public:
    /// Thrown where the file is not as the reader needs it.
    class Lost
    {
    };

    /// Thrown where values are missing, or are not finite numbers.
    class MissingValues
    {
    };

    /// Takes the heading.
    explicit LegacyScanner(const std::filesystem::path& path);

    int version() const { return version_; }

    bool isAtEnd();

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

    /// Passes the values of an array and what is said about it behind them. The type comes first in the file.
    void array(long long tupleCount, long long componentCount);

    /// The same where the file does not say the type.
    void arrayOf(const std::string& type, long long tupleCount, long long componentCount);

private:
    std::streamoff position();
    long long textInteger();
    void skipLine();
    void skipWords(long long wordCount);
    void skipNumbers(long long valueCount);
    void skipBytes(long long byteCount);
    void skipStrings(long long stringCount);
    void skipValues(const std::string& type, long long valueCount);
    void skipMetadata(long long componentCount);

    std::ifstream in_;
    std::streamoff size_;
    int version_ = 0;
    bool isBinary_ = false;
};

} // namespace veltrane

#endif
