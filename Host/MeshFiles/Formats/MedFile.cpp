#include "MedFile.h"

#include "DataSetReader.h"
#include "Text.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace veltrane
{

namespace
{

/// "4.2", or empty if the file does not say.
std::string versionOf(const MedFile& file)
{
    med_int major = 0;
    med_int minor = 0;
    med_int release = 0;
    return MEDfileNumVersionRd(file.id(), &major, &minor, &release) < 0 ? "" : text(major, ".", minor);
}

std::string libraryVersion()
{
    med_int major = 0;
    med_int minor = 0;
    med_int release = 0;
    MEDlibraryNumVersion(&major, &minor, &release);
    return text(major, ".", minor);
}

} // namespace

MedFile MedFile::toRead(const std::filesystem::path& path)
{
    med_bool isHdf = MED_FALSE;
    med_bool isMed = MED_FALSE;
    const med_err failure = MEDfileCompatibility(path.c_str(), &isHdf, &isMed);
    if (failure < 0 || isHdf == MED_FALSE)
    {
        throw BadFile(text("cannot read ", quoted(path), ": it is not a MED file, or damaged or cut off"));
    }
    const med_idt id = MEDfileOpen(path.c_str(), MED_ACC_RDONLY);
    if (id < 0)
    {
        throw BadFile(text("cannot read ", quoted(path), ": it is not a MED file"));
    }
    MedFile file(id);
    if (isMed == MED_FALSE)
    {
        const std::string version = versionOf(file);
        throw BadFile(text("cannot read ", quoted(path), ": it is ",
                           version.empty() ? "not a MED file"
                                           : text("of version ", version, " of MED, and those after ", libraryVersion(),
                                                  " cannot be read; SALOME saves earlier ones, too")));
    }
    return file;
}

MedFile MedFile::toWrite(const std::filesystem::path& path)
{
    errno = 0;
    const med_idt id = MEDfileOpen(path.c_str(), MED_ACC_CREAT);
    if (id < 0)
    {
        throw CannotWrite(errno == 0 ? "the MED library cannot create it" : std::strerror(errno));
    }
    return MedFile(id);
}

MedFile::~MedFile()
{
    if (id_ >= 0)
    {
        MEDfileClose(id_);
    }
}

void MedFile::close()
{
    checked(MEDfileClose(std::exchange(id_, -1)), "the end of the file");
}

std::string medName(const char* names, std::size_t index, std::size_t size)
{
    const std::string_view place(names + index * size, size);
    std::string name(place.substr(0, place.find('\0')));
    name.erase(name.find_last_not_of(' ') + 1);
    return name;
}

} // namespace veltrane
