/// Arrays of VTK's XML files, taken out of the file on several threads.
#ifndef VELTRANE_HOST_STORED_ARRAY_H
#define VELTRANE_HOST_STORED_ARRAY_H

#include "FileDescriptor.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include <time.h>

namespace veltrane
{

class ThreadWorkers;

/// A file that is read at any place.
class ReadFile
{
public:
    explicit ReadFile(const std::filesystem::path& path);

    /// 0 if it cannot be opened.
    std::uint64_t size() const { return size_; }

    /// False unless all of these bytes are there. May be called from several threads at once.
    bool read(std::uint64_t place, std::span<std::byte> room) const;

    /// Whether nobody has written to the file since it was opened.
    bool isUnchanged() const;

private:
    FileDescriptor file_;
    std::uint64_t size_ = 0;
    timespec changed_{};
};

/// Where bytes stand, as they are or as letters: in a file, or in text that has been read.
struct StoredBytes
{
    const ReadFile* file = nullptr; ///< either this
    std::uint64_t place = 0;
    std::string_view letters{}; ///< or these, which are always base64
    bool isBase64 = false;

    /// Some of the bytes, counted from the beginning of all. False if they are not there.
    bool read(std::uint64_t first, std::span<std::byte> room) const;

    /// What stands behind so many bytes that were encoded on their own.
    StoredBytes behind(std::uint64_t byteCount) const;

    /// At most so many bytes may stand there.
    std::uint64_t mostBytes() const;
};

/// How the arrays of a file are stored.
struct StorageForm
{
    bool isCompressed = false;   ///< in zlib's format
    bool hasLongHeaders = false; ///< numbers in front of the arrays have 8 bytes, otherwise 4
};

/// An array as the file has it, after a look at what is in front of it.
class StoredArray
{
public:
    /// Nothing if what is in front of the array cannot be true.
    static std::optional<StoredArray> find(const StoredBytes& bytes, const StorageForm& form);

    std::uint64_t size() const { return size_; }

    /// Whether it is compressed and stands behind the text of a file.
    bool isPacked() const { return blockSize_ != 0 && bytes_.file != nullptr; }

    /// Of a packed array what precedes its blocks in a file with long headers, the size of these, and some of their
    /// bytes. False if these are not there, or if the file has been written to.
    std::vector<std::uint64_t> packedHeader() const;
    std::uint64_t packedSize() const { return blockBegins_.back(); }
    bool readPacked(std::uint64_t first, std::span<std::byte> room) const;

    /// Puts all bytes into the room, which is as large. False if they are not there or damaged.
    bool read(std::span<std::byte> room, ThreadWorkers& workers) const;

    /// Gives the bytes piece by piece to visit(first, bytes), which is called from several threads at once; pieces
    /// begin at multiples of 8. False as for read().
    template <typename Visit> bool visit(ThreadWorkers& workers, const Visit& visit) const;

private:
    using Piece = void (*)(const void* visitor, std::uint64_t first, std::span<const std::byte> bytes);

    bool run(ThreadWorkers& workers, std::span<std::byte> room, const void* visitor, Piece give) const;
    bool runPlain(ThreadWorkers& workers, std::span<std::byte> room, const void* visitor, Piece give) const;
    bool runCompressed(ThreadWorkers& workers, std::span<std::byte> room, const void* visitor, Piece give) const;

    StoredBytes bytes_{}; ///< behind what is in front
    std::uint64_t size_ = 0;
    std::uint64_t plainBegin_ = 0;             ///< of an array that is not compressed
    std::uint64_t blockSize_ = 0;              ///< 0: not compressed
    std::uint64_t lastBlockSize_ = 0;          ///< 0: as large as the others
    std::vector<std::uint64_t> blockBegins_{}; ///< one more than blocks
};

template <typename Visit> bool StoredArray::visit(ThreadWorkers& workers, const Visit& visit) const
{
    return run(workers, {}, &visit,
               [](const void* visitor, std::uint64_t first, std::span<const std::byte> bytes)
               { (*static_cast<const Visit*>(visitor))(first, bytes); });
}

} // namespace veltrane

#endif
