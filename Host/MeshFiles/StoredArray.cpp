#include "StoredArray.h"

#include "Base64.h"
#include "ThreadWorkers.h"

#include <libdeflate.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>

namespace veltrane
{
namespace
{

constexpr Stage stage{"reading", 0, 100};
constexpr std::uint64_t plainPieceSize = std::uint64_t{3} << 20; // whole groups of base64, and of numbers
constexpr std::uint64_t pieceOfBlocks = std::uint64_t{1} << 19;  // so many bytes are decompressed in one go, about

/// The format cannot pack more into a byte. A file that says so is not worth the memory that it asks for.
constexpr std::uint64_t largestRatio = 1100;
constexpr std::uint64_t largestBlock = std::uint64_t{1} << 30;

struct Freeing
{
    void operator()(libdeflate_decompressor* decompressor) const { libdeflate_free_decompressor(decompressor); }
};

/// What a thread needs for itself.
struct Worker
{
    std::unique_ptr<libdeflate_decompressor, Freeing> decompressor{};
    std::vector<std::byte> packed{};
    std::vector<std::byte> room{};
};

/// Numbers in front of an array, of 4 or 8 bytes each.
std::optional<std::vector<std::uint64_t>> readNumbers(const StoredBytes& bytes, std::uint64_t first,
                                                      std::uint64_t count, std::size_t numberSize)
{
    if (count > bytes.mostBytes() / numberSize)
    {
        return std::nullopt;
    }
    std::vector<std::byte> room(static_cast<std::size_t>(count) * numberSize);
    if (!bytes.read(first * numberSize, room))
    {
        return std::nullopt;
    }
    std::vector<std::uint64_t> numbers(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < numbers.size(); ++i)
    {
        std::uint32_t shortNumber = 0;
        if (numberSize == sizeof shortNumber)
        {
            std::memcpy(&shortNumber, room.data() + i * numberSize, numberSize);
            numbers[i] = shortNumber;
        }
        else
        {
            std::memcpy(&numbers[i], room.data() + i * numberSize, numberSize);
        }
    }
    return numbers;
}

} // namespace

ReadFile::ReadFile(const std::filesystem::path& path) : file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC))
{
    struct stat status = {};
    if (file_.isValid() && ::fstat(file_.get(), &status) == 0 && S_ISREG(status.st_mode))
    {
        size_ = static_cast<std::uint64_t>(status.st_size);
        changed_ = status.st_mtim;
    }
}

bool ReadFile::isUnchanged() const
{
    struct stat status = {};
    return file_.isValid() && ::fstat(file_.get(), &status) == 0 &&
           static_cast<std::uint64_t>(status.st_size) == size_ && status.st_mtim.tv_sec == changed_.tv_sec &&
           status.st_mtim.tv_nsec == changed_.tv_nsec;
}

bool ReadFile::read(std::uint64_t place, std::span<std::byte> room) const
{
    while (!room.empty())
    {
        const ssize_t count = ::pread(file_.get(), room.data(), room.size(), static_cast<off_t>(place));
        if (count < 0 && errno == EINTR)
        {
            continue;
        }
        if (count <= 0)
        {
            return false;
        }
        room = room.subspan(static_cast<std::size_t>(count));
        place += static_cast<std::uint64_t>(count);
    }
    return true;
}

bool StoredBytes::read(std::uint64_t first, std::span<std::byte> room) const
{
    if (!isBase64)
    {
        return room.empty() ||
               (first <= mostBytes() && room.size() <= mostBytes() - first && file->read(place + first, room));
    }
    // From the beginning of a group on.
    const std::size_t before = first % 3;
    const std::uint64_t firstLetter = first / 3 * 4;
    const std::uint64_t letterCount = base64Size(before + room.size());
    std::vector<char> lettersOfFile;
    std::string_view group;
    if (file != nullptr)
    {
        if (letterCount > file->size())
        {
            return false;
        }
        lettersOfFile.resize(letterCount);
        if (!file->read(place + firstLetter, std::as_writable_bytes(std::span(lettersOfFile))))
        {
            return false;
        }
        group = {lettersOfFile.data(), lettersOfFile.size()};
    }
    else if (firstLetter <= letters.size() && letterCount <= letters.size() - firstLetter)
    {
        group = letters.substr(firstLetter, letterCount);
    }
    else
    {
        return false;
    }
    if (before == 0)
    {
        return decodeBase64(group, room);
    }
    std::vector<std::byte> whole(before + room.size());
    const bool isDecoded = decodeBase64(group, whole);
    std::memcpy(room.data(), whole.data() + before, room.size());
    return isDecoded;
}

StoredBytes StoredBytes::behind(std::uint64_t byteCount) const
{
    StoredBytes rest = *this;
    const std::uint64_t count = isBase64 ? base64Size(byteCount) : byteCount;
    if (file != nullptr)
    {
        rest.place += count;
    }
    else
    {
        rest.letters.remove_prefix(std::min<std::uint64_t>(count, letters.size()));
    }
    return rest;
}

std::uint64_t StoredBytes::mostBytes() const
{
    return file == nullptr ? letters.size() : file->size() - std::min(place, file->size());
}

std::optional<StoredArray> StoredArray::find(const StoredBytes& bytes, const StorageForm& form)
{
    const std::size_t numberSize = form.hasLongHeaders ? 8 : 4;
    StoredArray array;
    if (!form.isCompressed)
    {
        const auto header = readNumbers(bytes, 0, 1, numberSize);
        if (!header || header->front() > bytes.mostBytes())
        {
            return std::nullopt;
        }
        array.bytes_ = bytes; // in one go with what is in front
        array.plainBegin_ = numberSize;
        array.size_ = header->front();
        return array;
    }
    const auto header = readNumbers(bytes, 0, 3, numberSize);
    if (!header)
    {
        return std::nullopt;
    }
    const std::uint64_t count = (*header)[0];
    const std::uint64_t size = (*header)[1];
    const std::uint64_t lastSize = (*header)[2];
    const auto packedSizes = count > bytes.mostBytes() ? std::nullopt : readNumbers(bytes, 3, count, numberSize);
    if (!packedSizes || (count > 0 && (size == 0 || size % 8 != 0 || size > largestBlock || lastSize >= size)))
    {
        return std::nullopt;
    }
    array.bytes_ = bytes.behind((3 + count) * numberSize);
    array.blockSize_ = std::max<std::uint64_t>(size, 1);
    array.lastBlockSize_ = lastSize;
    array.blockBegins_.push_back(0);
    for (const std::uint64_t& packedSize : *packedSizes)
    {
        if (packedSize > bytes.mostBytes() - std::min(array.blockBegins_.back(), bytes.mostBytes()) ||
            packedSize * largestRatio < (lastSize > 0 && &packedSize == &packedSizes->back() ? lastSize : size))
        {
            return std::nullopt;
        }
        array.blockBegins_.push_back(array.blockBegins_.back() + packedSize);
    }
    array.size_ = count == 0 ? 0 : (count - 1) * size + (lastSize > 0 ? lastSize : size);
    return array;
}

std::vector<std::uint64_t> StoredArray::packedHeader() const
{
    std::vector<std::uint64_t> header{blockBegins_.size() - 1, blockSize_, lastBlockSize_};
    for (std::size_t block = 1; block < blockBegins_.size(); ++block)
    {
        header.push_back(blockBegins_[block] - blockBegins_[block - 1]);
    }
    return header;
}

bool StoredArray::readPacked(std::uint64_t first, std::span<std::byte> room) const
{
    return bytes_.read(first, room) && bytes_.file->isUnchanged();
}

bool StoredArray::read(std::span<std::byte> room, ThreadWorkers& workers) const
{
    return room.size() == size_ && run(workers, room, nullptr, nullptr);
}

bool StoredArray::run(ThreadWorkers& workers, std::span<std::byte> room, const void* visitor, Piece give) const
{
    return blockSize_ == 0 ? runPlain(workers, room, visitor, give) : runCompressed(workers, room, visitor, give);
}

bool StoredArray::runPlain(ThreadWorkers& workers, std::span<std::byte> room, const void* visitor, Piece give) const
{
    std::vector<Worker> threads(static_cast<std::size_t>(workers.nbWorkers()));
    std::atomic<bool> isGood = true;
    const auto readPiece = [&](std::int64_t piece, int worker)
    {
        const std::uint64_t first = static_cast<std::uint64_t>(piece) * plainPieceSize;
        const auto count = static_cast<std::size_t>(std::min(plainPieceSize, size_ - first));
        std::span<std::byte> place;
        if (room.empty())
        {
            std::vector<std::byte>& own = threads[static_cast<std::size_t>(worker)].room;
            own.resize(count);
            place = own;
        }
        else
        {
            place = room.subspan(static_cast<std::size_t>(first), count);
        }
        if (!isGood || !bytes_.read(plainBegin_ + first, place))
        {
            isGood = false;
        }
        else if (give != nullptr)
        {
            give(visitor, first, place);
        }
    };
    workers.run(stage, static_cast<std::int64_t>((size_ + plainPieceSize - 1) / plainPieceSize), readPiece);
    return isGood;
}

bool StoredArray::runCompressed(ThreadWorkers& workers, std::span<std::byte> room, const void* visitor,
                                Piece give) const
{
    std::vector<Worker> threads(static_cast<std::size_t>(workers.nbWorkers()));
    std::atomic<bool> isGood = true;
    const std::uint64_t blockCount = blockBegins_.size() - 1;
    const std::uint64_t perPiece = std::max<std::uint64_t>(1, pieceOfBlocks / blockSize_);
    const auto unpackBlock = [&](std::uint64_t block, std::uint64_t packedFirst, Worker& own)
    {
        const std::uint64_t first = block * blockSize_;
        const auto count = static_cast<std::size_t>(std::min(blockSize_, size_ - first));
        if (room.empty())
        {
            own.room.resize(count);
        }
        const std::span<std::byte> place =
            room.empty() ? std::span(own.room) : room.subspan(static_cast<std::size_t>(first), count);
        std::size_t unpacked = 0;
        const auto result = libdeflate_zlib_decompress(
            own.decompressor.get(), own.packed.data() + (blockBegins_[block] - packedFirst),
            static_cast<std::size_t>(blockBegins_[block + 1] - blockBegins_[block]), place.data(), count, &unpacked);
        if (result != LIBDEFLATE_SUCCESS || unpacked != count)
        {
            isGood = false;
        }
        else if (give != nullptr)
        {
            give(visitor, first, place);
        }
    };
    const auto readPiece = [&](std::int64_t piece, int worker)
    {
        Worker& own = threads[static_cast<std::size_t>(worker)];
        if (!own.decompressor)
        {
            own.decompressor.reset(libdeflate_alloc_decompressor());
            if (!own.decompressor)
            {
                throw std::bad_alloc();
            }
        }
        const std::uint64_t begin = static_cast<std::uint64_t>(piece) * perPiece;
        const std::uint64_t end = std::min(begin + perPiece, blockCount);
        own.packed.resize(static_cast<std::size_t>(blockBegins_[end] - blockBegins_[begin]));
        if (!isGood || !bytes_.read(blockBegins_[begin], own.packed))
        {
            isGood = false;
            return;
        }
        for (std::uint64_t block = begin; block < end && isGood; ++block)
        {
            unpackBlock(block, blockBegins_[begin], own);
        }
    };
    workers.run(stage, static_cast<std::int64_t>((blockCount + perPiece - 1) / perPiece), readPiece);
    return isGood;
}

} // namespace veltrane
