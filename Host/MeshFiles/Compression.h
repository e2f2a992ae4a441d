/// How the arrays of VTK's XML files are packed.
#ifndef VELTRANE_HOST_COMPRESSION_H
#define VELTRANE_HOST_COMPRESSION_H

namespace veltrane
{

enum class Compression
{
    none,
    fast, ///< zlib's format, as fast as it can be made
    small ///< zlib's format, at the price of several times the time
};

/// How a file is to be written. Its bytes depend on the compression alone.
struct FileWriting
{
    Compression compression = Compression::fast;
    int threads = 1; ///< 0: as many as usableThreadCount() tells
};

} // namespace veltrane

#endif
