/// Rows of values that go from ranks to ranks.
#ifndef VELTRANE_HOST_EXCHANGE_H
#define VELTRANE_HOST_EXCHANGE_H

#include "Communicator.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

namespace veltrane
{

/// How many rows each rank gives each other one, itself included. What arrives stands in the order of the ranks.
class Exchange
{
public:
    Exchange() = default;

    /// Collective. `counts` are those of the rows that this rank gives, per rank.
    Exchange(const Communicator& ranks, std::vector<std::int64_t> counts)
        : ranks_(&ranks), given_(std::move(counts)), taken_(ranks.exchanged(given_)), firstTaken_(taken_.size() + 1, 0)
    {
        std::partial_sum(taken_.begin(), taken_.end(), firstTaken_.begin() + 1);
    }

    std::int64_t takenCount() const { return firstTaken_.back(); }
    std::int64_t takenCount(int from) const { return taken_[static_cast<std::size_t>(from)]; }
    std::int64_t firstTaken(int from) const { return firstTaken_[static_cast<std::size_t>(from)]; }
    std::int64_t givenCount(int to) const { return given_[static_cast<std::size_t>(to)]; }
    /// What is taken goes back to where it came from.
    Exchange reversed() const { return Exchange(*ranks_, taken_); }

    /// Collective. pack(to, first, count, rows) writes the rows [first, first + count) for a rank, `width` values each;
    /// `taken` has room for takenCount() rows. No more than a block is packed at a time.
    template <class Value, class Pack> void run(std::size_t width, Value* taken, Pack pack) const
    {
        const std::size_t rowSize = width * sizeof(Value);
        const auto place = [&](int from) { return taken + static_cast<std::size_t>(firstTaken(from)) * width; };
        std::vector<MPI_Request> requests;
        const int own = ranks_->rank();
        for (int from = 0; from < ranks_->size(); ++from)
        {
            if (from != own)
            {
                receiveRows(place(from), takenCount(from), rowSize, from, requests);
            }
        }
        pack(own, std::int64_t{0}, givenCount(own), place(own));
        std::vector<Value> block;
        for (int step = 1; step < ranks_->size(); ++step)
        {
            const int to = (own + step) % ranks_->size(); // not all ranks to the same one first
            const std::int64_t rowsPerBlock = rowsPerBlockOf(rowSize);
            for (std::int64_t first = 0; first < givenCount(to); first += rowsPerBlock)
            {
                const std::int64_t count = std::min(rowsPerBlock, givenCount(to) - first);
                block.resize(static_cast<std::size_t>(count) * width);
                pack(to, first, count, block.data());
                ranks_->send(block.data(), static_cast<std::size_t>(count) * rowSize, to);
            }
        }
        Communicator::wait(requests);
    }

    /// Of rows that lie in lists, one per rank.
    template <class Value> std::vector<Value> run(const std::vector<std::vector<Value>>& lists) const
    {
        std::vector<Value> taken(static_cast<std::size_t>(takenCount()));
        run(1, taken.data(),
            [&](int to, std::int64_t first, std::int64_t count, Value* rows)
            { std::copy_n(lists[static_cast<std::size_t>(to)].begin() + first, count, rows); });
        return taken;
    }

private:
    static std::int64_t rowsPerBlockOf(std::size_t rowSize)
    {
        return static_cast<std::int64_t>(std::max<std::size_t>(1, Communicator::blockSize / rowSize));
    }

    void receiveRows(void* place, std::int64_t rowCount, std::size_t rowSize, int from,
                     std::vector<MPI_Request>& requests) const
    {
        const std::int64_t rowsPerBlock = rowsPerBlockOf(rowSize);
        for (std::int64_t first = 0; first < rowCount; first += rowsPerBlock)
        {
            const auto count = static_cast<std::size_t>(std::min(rowsPerBlock, rowCount - first));
            ranks_->receive(static_cast<std::byte*>(place) + static_cast<std::size_t>(first) * rowSize, count * rowSize,
                            from, requests);
        }
    }

    const Communicator* ranks_ = nullptr;
    std::vector<std::int64_t> given_;
    std::vector<std::int64_t> taken_;
    std::vector<std::int64_t> firstTaken_;
};

/// The sizes of lists, one per rank.
template <class Value> std::vector<std::int64_t> sizesOf(const std::vector<std::vector<Value>>& lists)
{
    std::vector<std::int64_t> sizes;
    for (const auto& list : lists)
    {
        sizes.push_back(static_cast<std::int64_t>(list.size()));
    }
    return sizes;
}

/// Rows of a table that go the same ways each time.
class Routes
{
public:
    Routes() = default;

    /// Collective. `rows` are those that this rank gives, per rank.
    Routes(const Communicator& ranks, std::vector<std::vector<int>> rows)
        : rows_(std::move(rows)), exchange_(ranks, sizesOf(rows_))
    {
    }

    const Exchange& exchange() const { return exchange_; }
    /// The row that is given to a rank at a place.
    int rowOf(int to, int place) const { return rows_[static_cast<std::size_t>(to)][static_cast<std::size_t>(place)]; }

    /// Collective. `taken` has room for as many rows as are taken.
    template <class Value> void carry(const Value* table, std::size_t width, Value* taken) const
    {
        exchange_.run(width, taken,
                      [&](int to, std::int64_t first, std::int64_t count, Value* rows)
                      {
                          const int* numbers = rows_[static_cast<std::size_t>(to)].data() + first;
                          for (std::int64_t i = 0; i < count; ++i)
                          {
                              const Value* row = table + static_cast<std::size_t>(numbers[i]) * width;
                              rows = std::copy_n(row, width, rows);
                          }
                      });
    }

    /// Collective. What was taken goes back into the rows that it came from; of several the highest rank's counts.
    template <class Value> void carryBack(const Value* taken, std::size_t width, Value* table) const
    {
        const Exchange back = exchange_.reversed();
        std::vector<Value> returned(static_cast<std::size_t>(back.takenCount()) * width);
        back.run(width, returned.data(),
                 [&](int to, std::int64_t first, std::int64_t count, Value* rows)
                 {
                     const std::int64_t begin = exchange_.firstTaken(to) + first;
                     std::copy_n(taken + static_cast<std::size_t>(begin) * width,
                                 static_cast<std::size_t>(count) * width, rows);
                 });
        const Value* next = returned.data();
        for (const std::vector<int>& rows : rows_)
        {
            for (const int row : rows)
            {
                std::copy_n(next, width, table + static_cast<std::size_t>(row) * width);
                next += width;
            }
        }
    }

private:
    std::vector<std::vector<int>> rows_;
    Exchange exchange_;
};

} // namespace veltrane

#endif
