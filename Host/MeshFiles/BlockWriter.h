/// Arrays as VTK's XML files append them, compressed or not.
#ifndef VELTRANE_HOST_BLOCK_WRITER_H
#define VELTRANE_HOST_BLOCK_WRITER_H

#include "ArrayBytes.h"
#include "BlockLayout.h"
#include "Compression.h"
#include "PlacedFile.h"

#include <cstddef>
#include <cstdint>
#include <memory>
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
    std::uint64_t write(const ArrayBytes& bytes, std::uint64_t place);

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
