#include "BlockWriter.h"

#include "ThreadWorkers.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <new>

namespace veltrane
{
namespace
{

constexpr Stage stage{"writing", 0, 100};

/// So many are kept until those before them are written.
constexpr std::uint64_t blocksAtATime = 128;

constexpr std::uint64_t plainPieceSize = std::uint64_t{1} << 21;
constexpr std::uint64_t copiedPieceSize = std::uint64_t{3} << 18; // whole groups of base64

int levelOf(Compression compression)
{
    constexpr int fastest = 1;
    constexpr int small = 6; // beyond it little is gained
    return compression == Compression::small ? small : fastest;
}

} // namespace

void BlockWriter::Freeing::operator()(libdeflate_compressor* compressor) const
{
    libdeflate_free_compressor(compressor);
}

BlockWriter::BlockWriter(const PlacedFile& file, Compression compression, ThreadWorkers& workers)
    : file_(file), compression_(compression), threads_(workers),
      workers_(static_cast<std::size_t>(workers.nbWorkers())), results_(blocksAtATime)
{
}

BlockWriter::~BlockWriter() = default;

std::uint64_t BlockWriter::write(const ArrayBytes& bytes, const StoredArray* stored, std::uint64_t place)
{
    switch (compression_)
    {
    case Compression::none: return writePlain(bytes, place);
    case Compression::fast:
        if (stored != nullptr && stored->size() == bytes.size())
        {
            if (const auto end = copy(*stored, place))
            {
                return *end;
            }
        }
        break;
    case Compression::small: break;
    }
    return writeCompressed(bytes, place);
}

/// Nothing if the other file is not any more what it was.
std::optional<std::uint64_t> BlockWriter::copy(const StoredArray& stored, std::uint64_t place)
{
    const std::vector<std::uint64_t> header = stored.packedHeader();
    file_.write(std::as_bytes(std::span(header)), place);
    place += header.size() * sizeof(std::uint64_t);
    const std::uint64_t size = stored.packedSize();
    std::atomic<bool> isGood = true;
    const auto copyPiece = [&](std::int64_t piece, int worker)
    {
        const std::uint64_t first = static_cast<std::uint64_t>(piece) * copiedPieceSize;
        std::vector<std::byte>& room = workers_[static_cast<std::size_t>(worker)].room;
        room.resize(copiedPieceSize);
        const std::span<std::byte> bytes =
            std::span(room).first(static_cast<std::size_t>(std::min(copiedPieceSize, size - first)));
        if (stored.readPacked(first, bytes))
        {
            file_.write(bytes, place + first);
        }
        else
        {
            isGood = false;
        }
    };
    threads_.run(stage, static_cast<std::int64_t>((size + copiedPieceSize - 1) / copiedPieceSize), copyPiece);
    return isGood ? std::optional(place + size) : std::nullopt;
}

std::uint64_t BlockWriter::writePlain(const ArrayBytes& bytes, std::uint64_t place)
{
    const std::array<std::uint64_t, 1> header{bytes.size()};
    file_.write(std::as_bytes(std::span(header)), place);
    place += sizeof header;
    const auto pieceCount = static_cast<std::int64_t>((bytes.size() + plainPieceSize - 1) / plainPieceSize);
    const auto writePiece = [&](std::int64_t piece, int worker)
    {
        const std::uint64_t first = static_cast<std::uint64_t>(piece) * plainPieceSize;
        std::vector<std::byte>& room = workers_[static_cast<std::size_t>(worker)].room;
        room.resize(plainPieceSize);
        const std::uint64_t size = std::min(plainPieceSize, bytes.size() - first);
        file_.write(bytes.part(first, std::span(room).first(static_cast<std::size_t>(size))), place + first);
    };
    threads_.run(stage, pieceCount, writePiece);
    return place + bytes.size();
}

std::uint64_t BlockWriter::writeCompressed(const ArrayBytes& bytes, std::uint64_t place)
{
    const BlockLayout layout{bytes.size()};
    std::vector<std::uint64_t> header{layout.count(), BlockLayout::blockSize, layout.lastSize()};
    const std::uint64_t headerPlace = place;
    place += layout.headerCount() * sizeof(std::uint64_t);
    for (std::uint64_t begin = 0; begin < layout.count(); begin += blocksAtATime)
    {
        const std::uint64_t count = std::min(blocksAtATime, layout.count() - begin);
        std::array<std::size_t, blocksAtATime> sizes{};
        const auto compressBlock = [&](std::int64_t block, int worker)
        {
            const auto i = static_cast<std::size_t>(block);
            sizes[i] = compress(bytes, layout, begin + i, workers_[static_cast<std::size_t>(worker)], results_[i]);
        };
        threads_.run(stage, static_cast<std::int64_t>(count), compressBlock);
        for (std::size_t i = 0; i < count; ++i)
        {
            file_.write(std::span(results_[i]).first(sizes[i]), place);
            place += sizes[i];
            header.push_back(sizes[i]);
        }
    }
    file_.write(std::as_bytes(std::span(header)), headerPlace);
    return place;
}

std::size_t BlockWriter::compress(const ArrayBytes& bytes, const BlockLayout& layout, std::uint64_t block,
                                  Worker& worker, std::vector<std::byte>& result) const
{
    if (!worker.compressor)
    {
        worker.compressor.reset(libdeflate_alloc_compressor(levelOf(compression_)));
        if (!worker.compressor)
        {
            throw std::bad_alloc();
        }
    }
    worker.room.resize(std::max<std::size_t>(worker.room.size(), BlockLayout::blockSize));
    result.resize(libdeflate_zlib_compress_bound(worker.compressor.get(), BlockLayout::blockSize));
    const std::span<const std::byte> plain =
        bytes.part(layout.first(block), std::span(worker.room).first(layout.sizeOf(block)));
    return libdeflate_zlib_compress(worker.compressor.get(), plain.data(), plain.size(), result.data(), result.size());
}

} // namespace veltrane
