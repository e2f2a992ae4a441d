/// Open MED files, with the library made for them.
#ifndef VELTRANE_HOST_MED_FILE_H
#define VELTRANE_HOST_MED_FILE_H

#include <med.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

namespace veltrane
{

/// A call of the library failed; says of what.
struct MedFailure
{
    std::string subject; ///< "the coordinates of the nodes"
};

/// What the library returns, an error code or a count, unless it stands for a failure. Throws MedFailure.
template <typename Result> Result checked(Result result, std::string_view subject)
{
    if (result < 0)
    {
        throw MedFailure{std::string(subject)};
    }
    return result;
}

/// A file that is closed at the end.
class MedFile
{
public:
    /// For reading. Throws BadFile.
    static MedFile toRead(const std::filesystem::path& path);

    /// A new one. Throws CannotWrite.
    static MedFile toWrite(const std::filesystem::path& path);

    ~MedFile();
    MedFile(const MedFile&) = delete;
    MedFile& operator=(const MedFile&) = delete;
    MedFile(MedFile&& other) noexcept : id_(std::exchange(other.id_, -1)) {}

    med_idt id() const { return id_; }

    /// Before its end, to learn whether everything could be written. Throws MedFailure.
    void close();

private:
    explicit MedFile(med_idt id) : id_(id) {}

    med_idt id_;
};

/// Fixed places for several names, one after the other, as the library has them.
std::string medName(const char* names, std::size_t index, std::size_t size);

} // namespace veltrane

#endif
