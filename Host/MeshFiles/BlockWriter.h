/// Arrays as VTK's XML files append them, compressed or not.
#ifndef VELTRANE_HOST_BLOCK_WRITER_H
#define VELTRANE_HOST_BLOCK_WRITER_H

#include "ArrayBytes.h"
#include "BlockLayout.h"
#include "Compression.h"
#include "PlacedFile.h"
#include "StoredArray.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

struct libdeflate_compressor;

namespace veltrane
{

class ThreadWorkers;

class BlockWriter
{
public:
    /// Both outlive it.
    BlockWriter(const PlacedFile& file, Compression compression, ThreadWorkers& workers);
    ~BlockWriter();
    BlockWriter(const BlockWriter&) = delete;
    BlockWriter& operator=(const BlockWriter&) = delete;

    /// Writes an array with what precedes it, all numbers of 8 bytes, and returns the place after it. Throws
    /// CannotWrite with nothing but the reason.
    ///
    /// \param stored  the same array as another file has it, if there is one: it is taken over unless the array is not
    ///                to be compressed, or to be small
    std::uint64_t write(const ArrayBytes& bytes, const StoredArray* stored, std::uint64_t place);

private:
    struct Freeing
    {
        void operator()(libdeflate_compressor* compressor) const;
    };

    /// What a thread needs for itself.
    struct Worker
    {
        std::unique_ptr<libdeflate_compressor, Freeing> compressor{};
        std::vector<std::byte> room{};
    };

    std::uint64_t writePlain(const ArrayBytes& bytes, std::uint64_t place);
    std::optional<std::uint64_t> copy(const StoredArray& stored, std::uint64_t place);
    std::uint64_t writeCompressed(const ArrayBytes& bytes, std::uint64_t place);
    std::size_t compress(const ArrayBytes& bytes, const BlockLayout& layout, std::uint64_t block, Worker& worker,
                         std::vector<std::byte>& result) const;

    const PlacedFile& file_;
    Compression compression_;
    ThreadWorkers& threads_;
    std::vector<Worker> workers_;
    std::vector<std::vector<std::byte>> results_; ///< of the blocks that are compressed at a time
};

} // namespace veltrane

#endif
