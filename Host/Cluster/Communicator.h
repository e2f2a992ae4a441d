/// The processes that work together, and what they tell each other.
#ifndef VELTRANE_HOST_COMMUNICATOR_H
#define VELTRANE_HOST_COMMUNICATOR_H

#define OMPI_SKIP_MPICXX 1
#define MPICH_SKIP_MPICXX 1
#include <mpi.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace veltrane
{

/// What a rank has sent to others.
struct Traffic
{
    std::int64_t messages = 0;
    std::int64_t bytes = 0;
};

/// A group of ranks whose messages nobody else sees. All functions but rank(), size(), traffic() and those of single
/// messages are collective.
class Communicator
{
public:
    /// A copy of the user's. It is given back before MPI is finalised, or not at all.
    explicit Communicator(MPI_Comm users);
    ~Communicator();
    Communicator(const Communicator&) = delete;
    Communicator& operator=(const Communicator&) = delete;

    MPI_Comm comm() const { return comm_; }
    int rank() const { return rank_; }
    int size() const { return size_; }
    const Traffic& traffic() const { return traffic_; }

    bool isAnywhere(bool condition) const;
    std::int64_t sum(std::int64_t value) const;
    float smallest(float value) const;
    float largest(float value) const;

    /// One value of each rank, in the order of the ranks.
    template <class Value> std::vector<Value> gathered(const Value& value) const
    {
        static_assert(std::is_trivially_copyable_v<Value>);
        std::vector<Value> values(static_cast<std::size_t>(size_));
        gatherBytes(&value, sizeof(Value), values.data());
        return values;
    }

    /// The value of one rank.
    template <class Value> Value told(Value value, int by) const
    {
        static_assert(std::is_trivially_copyable_v<Value>);
        tellBytes(&value, sizeof(Value), by);
        return value;
    }
    std::string told(std::string words, int by) const;

    /// To each rank a number, and from each.
    std::vector<std::int64_t> exchanged(const std::vector<std::int64_t>& numbers) const;

    /// Messages between two ranks, of any length, cut into blocks that are at most so long.
    static constexpr std::size_t blockSize = std::size_t{1} << 22;
    void receive(void* data, std::size_t byteCount, int from, std::vector<MPI_Request>& requests) const;
    void send(const void* data, std::size_t byteCount, int to) const;
    static void wait(std::vector<MPI_Request>& requests);

private:
    void gatherBytes(const void* value, std::size_t size, void* values) const;
    void tellBytes(void* value, std::size_t size, int by) const;

    MPI_Comm comm_ = MPI_COMM_NULL;
    int rank_ = 0;
    int size_ = 1;
    mutable Traffic traffic_;
};

} // namespace veltrane

#endif
