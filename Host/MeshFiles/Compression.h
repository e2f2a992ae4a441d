/// How the arrays of VTK's XML files are packed.
#ifndef VELTRANE_HOST_COMPRESSION_H
#define VELTRANE_HOST_COMPRESSION_H

#include <string>
#include <vector>

namespace veltrane
{

enum class Compression
{
    none,
    fast, ///< zlib's format, as fast as it can be made; arrays of the target that stay what they are stay as packed
    small ///< zlib's format, at the price of several times the time
};

/// How a file is to be written. Its bytes do not depend on the threads.
struct FileWriting
{
    Compression compression = Compression::fast;
    int threads = 1; ///< 0: as many as usableThreadCount() tells
    /// The fields that the file is written for, among others that it has; none if they are not known apart.
    std::vector<std::string> fields{};
};

} // namespace veltrane

#endif
