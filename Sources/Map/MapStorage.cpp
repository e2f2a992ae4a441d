// A map as bytes. They begin with a mark, a version and a number that shows the order of bytes; figures and tables
// follow, each table behind its number of entries and padded to whole groups of eight bytes; a checksum of all that
// stands before it is the end. What is read is checked as far as an application relies on it, so that a damaged or
// foreign file that has a right checksum all the same does no harm.
#include "Checksum.h"
#include "TransferMap.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace
{
constexpr std::uint64_t mark = 0x50414D5F52544C56; // "VLTR_MAP"
constexpr std::uint64_t version = 2;
constexpr std::uint64_t byteOrder = 0x0102030405060708;

std::int64_t padded(std::int64_t size)
{
    return (size + 7) / 8 * 8;
}

/// Counts the bytes that are written, and writes them if there is a place for them.
class Writer
{
public:
    explicit Writer(std::byte* bytes) : itsBytes(bytes) {}

    template <class T> void value(const T& value) { write(&value, sizeof value); }
    void flag(bool flag) { value(static_cast<std::int64_t>(flag)); }
    void choice(FarPoints farPoints) { value(static_cast<std::int64_t>(farPoints)); }
    template <class T> void array(const OwnedArray<T>& values, std::int64_t count)
    {
        value(count);
        write(values.get(), static_cast<std::int64_t>(sizeof(T)) * count);
    }

    std::int64_t size() const { return itsSize; }

private:
    void write(const void* data, std::int64_t size)
    {
        if (itsBytes != nullptr && size > 0)
        {
            std::memset(itsBytes + itsSize + padded(size) - 8, 0, 8);
            std::memcpy(itsBytes + itsSize, data, static_cast<std::size_t>(size));
        }
        itsSize += padded(size);
    }

    std::byte* itsBytes;
    std::int64_t itsSize = 0;
};

/// Reads the same back; after the first thing that is not there nothing is read any more.
class Reader
{
public:
    explicit Reader(std::span<const std::byte> bytes) : itsBytes(bytes) {}

    template <class T> void value(T& value) { read(&value, sizeof value); }
    void flag(bool& flag)
    {
        std::int64_t stored = 0;
        value(stored);
        flag = stored != 0;
    }
    void choice(FarPoints& farPoints)
    {
        std::int64_t stored = 0;
        value(stored);
        itsIsWhole = itsIsWhole && stored >= 0 && stored <= static_cast<int>(FarPoints::propagate);
        farPoints = itsIsWhole ? static_cast<FarPoints>(stored) : FarPoints::refuse;
    }
    template <class T> void array(OwnedArray<T>& values, std::int64_t count)
    {
        std::int64_t stored = -1;
        value(stored);
        const auto available = static_cast<std::int64_t>(itsBytes.size() / sizeof(T));
        itsIsWhole = itsIsWhole && stored == count && count >= 0 && count <= available && values.allocate(count);
        if (itsIsWhole)
        {
            read(values.get(), static_cast<std::int64_t>(sizeof(T)) * count);
        }
    }

    bool isWhole() const { return itsIsWhole && itsBytes.empty(); }

private:
    void read(void* data, std::int64_t size)
    {
        const auto taken = static_cast<std::size_t>(padded(size));
        itsIsWhole = itsIsWhole && taken <= itsBytes.size();
        if (itsIsWhole && size > 0)
        {
            std::memcpy(data, itsBytes.data(), static_cast<std::size_t>(size));
            itsBytes = itsBytes.subspan(taken);
        }
    }

    std::span<const std::byte> itsBytes;
    bool itsIsWhole = true;
};

bool areBelow(const int* numbers, std::int64_t count, std::int64_t least, std::int64_t limit)
{
    return std::all_of(numbers, numbers + count, [&](int number) { return number >= least && number < limit; });
}

/// Whether offsets begin at 0 and never decrease.
bool areOffsets(const std::int64_t* offsets, std::int64_t count)
{
    return offsets[0] == 0 && std::is_sorted(offsets, offsets + count + 1);
}
} // namespace

/// What is stored of a map, in order; for writing and for reading.
class StoredMap
{
public:
    template <class Archive, class Map> static void figures(Archive& archive, Map& map)
    {
        archive.value(map.itsNbSourceNodes);
        archive.value(map.itsNbSourceGaussPoints);
        archive.choice(map.itsFarPoints);
        archive.flag(map.itsIsJumping);
        archive.flag(map.itsTable.isDouble);
        statistics(archive, map.itsStatistics);
        archive.value(map.itsSourceChecksum);
        archive.value(map.itsTargetChecksum);
        archive.value(map.itsTable.nbNodes);
        archive.value(map.itsTable.nbGaussPoints);
        archive.value(map.itsNbNearMisses);
        archive.value(map.itsPropagation.size);
        archive.value(map.itsPropagation.nbUnreached);
        archive.flag(map.itsPropagation.isComplete);
        archive.value(map.itsAveraging.nbElts);
        archive.value(map.itsAveraging.nbGaussPoints);
    }

    /// `nbWeights` and `nbAveraged` are numbers of weights and of nodes of elements that are averaged.
    template <class Archive, class Map>
    static void tables(Archive& archive, Map& map, std::int64_t nbWeights, std::int64_t nbAveraged)
    {
        const std::int64_t nbRows = map.itsTable.nbRows();
        archive.array(map.itsTable.findings, nbRows);
        archive.array(map.itsTable.elements, nbRows);
        archive.array(map.itsTable.referenceCoords, nbRows);
        archive.array(map.itsTable.firstWeights, nbRows + 1);
        archive.array(map.itsTable.nodes, nbWeights);
        archive.array(map.itsTable.weights, map.itsTable.isDouble ? 0 : nbWeights);
        archive.array(map.itsTable.exactWeights, map.itsTable.isDouble ? nbWeights : 0);
        archive.array(map.itsNearMisses, map.itsNbNearMisses);
        archive.array(map.itsSingularElts, map.itsStatistics.nbSingularElts);
        archive.array(map.itsPropagation.steps, map.itsPropagation.size);
        const std::int64_t nbElts = map.itsAveraging.nbElts;
        archive.array(map.itsAveraging.eltTypes, nbElts);
        archive.array(map.itsAveraging.firstNodes, nbElts == 0 ? 0 : nbElts + 1);
        archive.array(map.itsAveraging.nodes, nbAveraged);
        archive.array(map.itsAveraging.nbEltsPerNode, nbElts == 0 ? 0 : map.itsNbSourceNodes);
    }

    static std::int64_t nbAveraged(const TransferMap& map)
    {
        const AveragingTable& averaging = map.itsAveraging;
        return averaging.nbElts == 0 ? 0 : averaging.firstNodes[averaging.nbElts];
    }

    static bool isSound(const TransferMap& map)
    {
        return isTableSound(map) && isPropagationSound(map) && isAveragingSound(map);
    }

private:
    template <class Archive, class Statistics> static void statistics(Archive& archive, Statistics& figures)
    {
        archive.value(figures.nbBuckets);
        archive.value(figures.nbUsedBuckets);
        archive.value(figures.nbUnusedBuckets);
        archive.value(figures.meanItemsPerUsedBucket);
        archive.value(figures.nbInterpolatedPoints);
        archive.value(figures.meanIterations);
        archive.value(figures.nbNearNodes);
        archive.value(figures.nbFarNodes);
        archive.value(figures.nbNearGaussPoints);
        archive.value(figures.nbFarGaussPoints);
        archive.value(figures.nbUnconvergedPoints);
        archive.value(figures.nbSingularElts);
        archive.value(figures.overlap.nbTried);
        archive.value(figures.overlap.nbFound);
        archive.value(figures.overlap.elt);
        archive.value(figures.overlap.otherElt);
        archive.value(figures.origin);
    }

    static bool isTableSound(const TransferMap& map)
    {
        const MapTable& table = map.itsTable;
        const std::int64_t nbRows = table.nbRows();
        for (std::int64_t row = 0; row < nbRows; ++row)
        {
            const bool isEmpty = table.firstWeights[row] == table.firstWeights[row + 1];
            if (table.finding(row) > Finding::reached || table.hasWeights(row) == isEmpty)
            {
                return false;
            }
        }
        const bool areNearMissesSound = std::ranges::all_of(map.nearMisses(), [&](const NearMiss& near)
                                                            { return near.row >= 0 && near.row < nbRows; });
        return areOffsets(table.firstWeights.get(), nbRows) && areNearMissesSound &&
               areBelow(table.nodes.get(), table.nbWeights(), 0, map.itsNbSourceNodes);
    }

    static bool isPropagationSound(const TransferMap& map)
    {
        const PropagationPlan& plan = map.itsPropagation;
        for (std::int64_t i = 0; i < plan.size;)
        {
            const std::int64_t left = plan.size - i - PropagationPlan::headerSize;
            const int* step = plan.steps.get() + i;
            if (left < 0 || step[1] < 1 || step[2] < 1 || static_cast<std::int64_t>(step[1]) + step[2] > left ||
                !areBelow(step + PropagationPlan::headerSize, static_cast<std::int64_t>(step[1]) + step[2], 0,
                          map.itsTable.nbNodes))
            {
                return false;
            }
            i += PropagationPlan::headerSize + static_cast<std::int64_t>(step[1]) + step[2];
        }
        return true;
    }

    static bool isAveragingSound(const TransferMap& map)
    {
        const AveragingTable& averaging = map.itsAveraging;
        if (averaging.nbElts > 0 && !areOffsets(averaging.firstNodes.get(), averaging.nbElts))
        {
            return false;
        }
        std::int64_t nbGaussPoints = 0;
        for (std::int64_t elt = 0; elt < averaging.nbElts; ++elt)
        {
            int nbNodes = -1;
            visitElementKind(averaging.eltTypes[elt],
                             [&]<class Kind>(Kind)
                             {
                                 nbNodes = Kind::nbNodes;
                                 nbGaussPoints += Kind::nbGaussPoints;
                             });
            if (averaging.firstNodes[elt + 1] - averaging.firstNodes[elt] != nbNodes)
            {
                return false;
            }
        }
        return averaging.nbElts == 0 ||
               (nbGaussPoints == map.itsNbSourceGaussPoints &&
                areBelow(averaging.nodes.get(), averaging.firstNodes[averaging.nbElts], 0, map.itsNbSourceNodes));
    }
};

namespace
{
template <class Archive> void head(Archive& archive, std::uint64_t (&values)[3])
{
    for (std::uint64_t& value : values)
    {
        archive.value(value);
    }
}

std::uint64_t checksumOfBytes(std::span<const std::byte> bytes)
{
    Checksum checksum;
    checksum.add(bytes.data(), bytes.size());
    return checksum.value();
}

/// Numbers of entries that a table of this many bytes can have.
bool mayCount(std::int64_t count, std::size_t nbBytes)
{
    return count >= 0 && count < static_cast<std::int64_t>(nbBytes);
}
} // namespace

std::int64_t TransferMap::storedSize() const
{
    Writer counter(nullptr);
    std::uint64_t headValues[3]{};
    head(counter, headValues);
    counter.value(itsTable.nbWeights());
    counter.value(StoredMap::nbAveraged(*this));
    StoredMap::figures(counter, *this);
    StoredMap::tables(counter, *this, itsTable.nbWeights(), StoredMap::nbAveraged(*this));
    return counter.size() + static_cast<std::int64_t>(sizeof(std::uint64_t));
}

void TransferMap::store(std::byte* bytes) const
{
    Writer writer(bytes);
    std::uint64_t headValues[3] = {mark, version, byteOrder};
    head(writer, headValues);
    writer.value(itsTable.nbWeights());
    writer.value(StoredMap::nbAveraged(*this));
    StoredMap::figures(writer, *this);
    StoredMap::tables(writer, *this, itsTable.nbWeights(), StoredMap::nbAveraged(*this));
    writer.value(checksumOfBytes({bytes, static_cast<std::size_t>(writer.size())}));
}

const char* TransferMap::restore(std::span<const std::byte> bytes)
{
    std::uint64_t headValues[3]{};
    Reader beginning(bytes);
    head(beginning, headValues);
    if (headValues[0] != mark)
    {
        return "this is not a map";
    }
    if (headValues[2] != byteOrder)
    {
        return "the map was saved on a machine with another order of bytes";
    }
    if (headValues[1] != version)
    {
        return "the map was saved by another version, which this one cannot read";
    }
    constexpr const char* damaged = "the map is damaged or cut off";
    if (bytes.size() % 8 != 0 || bytes.size() <= sizeof headValues + sizeof(std::uint64_t))
    {
        return damaged;
    }
    const auto content = bytes.first(bytes.size() - sizeof(std::uint64_t));
    std::uint64_t checksum = 0;
    std::memcpy(&checksum, content.data() + content.size(), sizeof checksum);
    if (checksum != checksumOfBytes(content))
    {
        return damaged;
    }
    TransferMap map;
    Reader reader(content.subspan(sizeof headValues));
    std::int64_t nbWeights = 0;
    std::int64_t nbAveraged = 0;
    reader.value(nbWeights);
    reader.value(nbAveraged);
    StoredMap::figures(reader, map);
    const bool areCountsSound = mayCount(map.itsTable.nbNodes, bytes.size()) &&
                                mayCount(map.itsTable.nbGaussPoints, bytes.size()) &&
                                mayCount(map.itsAveraging.nbElts, bytes.size()) && map.itsNbSourceNodes >= 0 &&
                                map.itsNbSourceNodes <= std::numeric_limits<int>::max();
    if (!areCountsSound)
    {
        return damaged;
    }
    StoredMap::tables(reader, map, nbWeights, nbAveraged);
    const bool isWhole = reader.isWhole() && map.itsTable.nbWeights() == nbWeights &&
                         StoredMap::nbAveraged(map) == nbAveraged && StoredMap::isSound(map);
    if (!isWhole)
    {
        return damaged;
    }
    map.itsTable.findCommonCount();
    *this = std::move(map);
    return nullptr;
}
