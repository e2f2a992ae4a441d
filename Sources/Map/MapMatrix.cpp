// A map as a sparse matrix. Whatever the precision of the weights, products and sums of them are formed in double.
#include "GaussPointAveraging.h"
#include "TransferMap.h"

#include <algorithm>
#include <array>

namespace
{
/// An array that grows at its end.
template <class T> class GrowingArray
{
public:
    bool add(const T& value)
    {
        if (itsSize == itsCapacity && !grow())
        {
            return false;
        }
        itsValues[itsSize++] = value;
        return true;
    }

    std::int64_t size() const { return itsSize; }
    const T& operator[](std::int64_t i) const { return itsValues[i]; }

private:
    bool grow()
    {
        constexpr std::int64_t least = 1024;
        const std::int64_t capacity = std::max(least, 2 * itsCapacity);
        OwnedArray<T> values;
        if (!values.allocate(capacity))
        {
            return false;
        }
        std::copy_n(itsValues.get(), itsSize, values.get());
        itsValues = std::move(values);
        itsCapacity = capacity;
        return true;
    }

    OwnedArray<T> itsValues;
    std::int64_t itsSize = 0;
    std::int64_t itsCapacity = 0;
};

/// Sums up one row at a time: entries of the same column are added.
class RowSum
{
public:
    bool allocate(std::int64_t nbColumns)
    {
        if (!itsPositions.allocate(nbColumns) || !itsColumns.allocate(nbColumns) || !itsValues.allocate(nbColumns))
        {
            return false;
        }
        std::fill_n(itsPositions.get(), nbColumns, absent);
        return true;
    }

    void add(int column, double value)
    {
        int& position = itsPositions[column];
        if (position == absent)
        {
            position = itsSize;
            itsColumns[itsSize] = column;
            itsValues[itsSize++] = 0.0;
        }
        itsValues[position] += value;
    }

    int size() const { return itsSize; }

    /// Calls visit(column, value) in the order of the columns, and empties the row.
    template <class Visit> void take(Visit visit)
    {
        std::sort(itsColumns.get(), itsColumns.get() + itsSize);
        for (int i = 0; i < itsSize; ++i)
        {
            const int column = itsColumns[i];
            visit(column, itsValues[itsPositions[column]]);
            itsPositions[column] = absent;
        }
        itsSize = 0;
    }

private:
    static constexpr int absent = -1;
    OwnedArray<int> itsPositions; ///< per column
    OwnedArray<int> itsColumns;
    OwnedArray<double> itsValues; ///< in the order in which the columns came
    int itsSize = 0;
};

/// Per source node the Gauss points that its average is made of.
class AveragingRows
{
public:
    bool build(const AveragingTable& averaging, GaussRuleChoice rule, std::int64_t nbNodes)
    {
        itsRule = rule;
        if (!itsFirst.allocate(nbNodes + 1) || !itsEntries.allocate(averaging.firstNodes[averaging.nbElts]))
        {
            return false;
        }
        std::fill_n(itsFirst.get(), nbNodes + 1, std::int64_t{0});
        for (std::int64_t i = 0; i < averaging.firstNodes[averaging.nbElts]; ++i)
        {
            ++itsFirst[averaging.nodes[i] + 1];
        }
        for (std::int64_t node = 0; node < nbNodes; ++node)
        {
            itsFirst[node + 1] += itsFirst[node];
        }
        OwnedArray<std::int64_t> next;
        if (!next.allocate(nbNodes))
        {
            return false;
        }
        std::copy_n(itsFirst.get(), nbNodes, next.get());
        std::int64_t firstGaussPoint = 0;
        for (std::int64_t elt = 0; elt < averaging.nbElts; ++elt)
        {
            for (std::int64_t i = averaging.firstNodes[elt]; i < averaging.firstNodes[elt + 1]; ++i)
            {
                const auto nodeOfElt = static_cast<int>(i - averaging.firstNodes[elt]);
                itsEntries[next[averaging.nodes[i]]++] = {firstGaussPoint, averaging.eltTypes[elt], nodeOfElt};
            }
            firstGaussPoint += nbGaussPointsOfKind(averaging.eltTypes[elt], rule);
        }
        return true;
    }

    /// Adds `weight` times the average at a node.
    void addTo(RowSum& row, std::int64_t node, double weight) const
    {
        const auto nbElts = static_cast<double>(itsFirst[node + 1] - itsFirst[node]);
        for (std::int64_t i = itsFirst[node]; i < itsFirst[node + 1]; ++i)
        {
            const Entry& entry = itsEntries[i];
            visitGaussRule(
                entry.eltType, itsRule,
                [&]<class Kind, std::size_t nbPoints>(Kind, std::integral_constant<std::size_t, nbPoints>)
                {
                    for (std::size_t gaussPoint = 0; gaussPoint < nbPoints; ++gaussPoint)
                    {
                        std::array<double, nbPoints> unit{};
                        unit[gaussPoint] = 1.0;
                        NodeValues<Kind::nbNodes, double> atNodes;
                        Kind::gaussPointsToNodes(unit, atNodes);
                        const double share = atNodes[static_cast<std::size_t>(entry.nodeOfElt)];
                        if (share != 0.0)
                        {
                            row.add(static_cast<int>(entry.firstGaussPoint + static_cast<std::int64_t>(gaussPoint)),
                                    weight * share / nbElts);
                        }
                    }
                });
        }
    }

private:
    struct Entry
    {
        std::int64_t firstGaussPoint;
        int eltType;
        int nodeOfElt;
    };
    OwnedArray<std::int64_t> itsFirst;
    OwnedArray<Entry> itsEntries;
    GaussRuleChoice itsRule = GaussRuleChoice::full;
};
} // namespace

/// Rows of the matrix of a map, one after another.
class MapRows
{
public:
    MapRows(const TransferMap& map, Location source, GaussRuleChoice rule)
        : itsMap(map), itsSource(source), itsRule(rule)
    {
    }

    bool allocate()
    {
        const std::int64_t nbColumns =
            itsSource == atNodes ? itsMap.nbSourceNodes() : itsMap.nbSourceGaussPoints(itsRule);
        return itsSum.allocate(nbColumns) &&
               (itsSource == atNodes || itsAverages.build(itsMap.itsAveraging, itsRule, itsMap.nbSourceNodes()));
    }

    RowSum& sum() { return itsSum; }

    void addRow(std::int64_t row)
    {
        const auto addAll = [&](const auto& at)
        {
            for (int i = 0; i < at.count; ++i)
            {
                const auto weight = static_cast<double>(at.weights[i]);
                if (itsSource == atNodes)
                {
                    itsSum.add(at.nodes[i], weight);
                }
                else
                {
                    itsAverages.addTo(itsSum, at.nodes[i], weight);
                }
            }
        };
        itsMap.itsTable.withWeightsOf(row, addAll);
    }

private:
    const TransferMap& itsMap;
    Location itsSource;
    GaussRuleChoice itsRule;
    AveragingRows itsAverages;
    RowSum itsSum;
};

namespace
{
/// The finished rows of a matrix whose rows are nodes, kept in the order in which they are finished.
struct ResolvedRows
{
    GrowingArray<int> columns;
    GrowingArray<double> values;
    OwnedArray<std::int64_t> first; ///< per node where its row begins, and
    OwnedArray<int> sizes;          ///< how many entries it has

    bool allocate(std::int64_t nbNodes)
    {
        if (!first.allocate(nbNodes) || !sizes.allocate(nbNodes))
        {
            return false;
        }
        std::fill_n(first.get(), nbNodes, std::int64_t{0});
        std::fill_n(sizes.get(), nbNodes, 0);
        return true;
    }

    /// Keeps a row, empties the sum.
    bool keep(std::int64_t node, RowSum& sum)
    {
        first[node] = columns.size();
        sizes[node] = sum.size();
        bool isKept = true;
        sum.take([&](int column, double value) { isKept = isKept && columns.add(column) && values.add(value); });
        return isKept;
    }

    void addTo(RowSum& sum, std::int64_t node, double factor) const
    {
        for (std::int64_t i = first[node]; i < first[node] + sizes[node]; ++i)
        {
            sum.add(columns[i], factor * values[i]);
        }
    }
};

/// Resolves propagation for all nodes of a map. Several nodes may share a row.
bool resolve(const TransferMap& map, Location source, GaussRuleChoice sourceRule, ResolvedRows& resolved)
{
    MapRows rows(map, source, sourceRule);
    if (!rows.allocate() || !resolved.allocate(map.nbNodes()))
    {
        return false;
    }
    RowSum& sum = rows.sum();
    for (std::int64_t node = 0; node < map.nbNodes(); ++node)
    {
        rows.addRow(node);
        if (sum.size() > 0 && !resolved.keep(node, sum))
        {
            return false;
        }
    }
    bool hasMemory = true;
    const auto fill = [&](int, std::span<const int> filled, std::span<const int> far)
    {
        const double share = 1.0 / static_cast<double>(filled.size());
        for (const int node : filled)
        {
            resolved.addTo(sum, node, share);
        }
        hasMemory = hasMemory && resolved.keep(far.front(), sum);
        for (const int node : far)
        {
            resolved.first[node] = resolved.first[far.front()];
            resolved.sizes[node] = resolved.sizes[far.front()];
        }
    };
    map.propagation().forEachStep(fill);
    return hasMemory;
}

bool allocateRows(SparseRows& rows, std::int64_t nbEntries)
{
    rows.rowStarts[rows.nbRows] = nbEntries;
    return rows.columns.allocate(nbEntries) && rows.values.allocate(nbEntries);
}
} // namespace

bool TransferMap::matrix(Location target, Location source, SparseRows& result, GaussRuleChoice sourceRule) const
{
    const std::int64_t base = target == atNodes ? 0 : itsTable.nbNodes;
    SparseRows rows;
    rows.nbRows = target == atNodes ? itsTable.nbNodes : itsTable.nbGaussPoints;
    rows.nbColumns = source == atNodes ? itsNbSourceNodes : nbSourceGaussPoints(sourceRule);
    MapRows mapRows(*this, source, sourceRule);
    if (!rows.rowStarts.allocate(rows.nbRows + 1) || !mapRows.allocate())
    {
        return false;
    }
    // Once to count the entries, and once to write them.
    std::int64_t nbEntries = 0;
    for (std::int64_t row = 0; row < rows.nbRows; ++row)
    {
        rows.rowStarts[row] = nbEntries;
        mapRows.addRow(base + row);
        nbEntries += mapRows.sum().size();
        mapRows.sum().take([](int, double) {});
    }
    if (!allocateRows(rows, nbEntries))
    {
        return false;
    }
    std::int64_t next = 0;
    for (std::int64_t row = 0; row < rows.nbRows; ++row)
    {
        mapRows.addRow(base + row);
        const auto write = [&](int column, double value)
        {
            rows.columns[next] = column;
            rows.values[next++] = value;
        };
        mapRows.sum().take(write);
    }
    result = std::move(rows);
    return true;
}

std::int64_t TransferMap::resolvedSize(Location source, GaussRuleChoice sourceRule) const
{
    ResolvedRows resolved;
    if (!resolve(*this, source, sourceRule, resolved))
    {
        return -1;
    }
    std::int64_t nbEntries = 0;
    for (std::int64_t node = 0; node < itsTable.nbNodes; ++node)
    {
        nbEntries += resolved.sizes[node];
    }
    return nbEntries;
}

bool TransferMap::resolvedMatrix(Location source, std::int64_t mostEntries, SparseRows& result,
                                 GaussRuleChoice sourceRule) const
{
    ResolvedRows resolved;
    SparseRows rows;
    rows.nbRows = itsTable.nbNodes;
    rows.nbColumns = source == atNodes ? itsNbSourceNodes : nbSourceGaussPoints(sourceRule);
    if (!resolve(*this, source, sourceRule, resolved) || !rows.rowStarts.allocate(rows.nbRows + 1))
    {
        return false;
    }
    std::int64_t nbEntries = 0;
    for (std::int64_t node = 0; node < rows.nbRows; ++node)
    {
        rows.rowStarts[node] = nbEntries;
        nbEntries += resolved.sizes[node];
    }
    if (nbEntries > mostEntries || !allocateRows(rows, nbEntries))
    {
        return false;
    }
    std::int64_t next = 0;
    for (std::int64_t node = 0; node < rows.nbRows; ++node)
    {
        for (std::int64_t i = resolved.first[node]; i < resolved.first[node] + resolved.sizes[node]; ++i)
        {
            rows.columns[next] = resolved.columns[i];
            rows.values[next++] = resolved.values[i];
        }
    }
    result = std::move(rows);
    return true;
}
