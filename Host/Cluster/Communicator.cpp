#include "Communicator.h"

#include <algorithm>

namespace veltrane
{
namespace
{
constexpr int valueTag = 1;
}

Communicator::Communicator(MPI_Comm users)
{
    MPI_Comm_dup(users, &comm_);
    MPI_Comm_rank(comm_, &rank_);
    MPI_Comm_size(comm_, &size_);
}

Communicator::~Communicator()
{
    int isFinalised = 0;
    MPI_Finalized(&isFinalised);
    if (isFinalised == 0)
    {
        MPI_Comm_free(&comm_);
    }
}

bool Communicator::isAnywhere(bool condition) const
{
    int flag = condition ? 1 : 0;
    MPI_Allreduce(MPI_IN_PLACE, &flag, 1, MPI_INT, MPI_MAX, comm_);
    return flag != 0;
}

std::int64_t Communicator::sum(std::int64_t value) const
{
    MPI_Allreduce(MPI_IN_PLACE, &value, 1, MPI_INT64_T, MPI_SUM, comm_);
    return value;
}

float Communicator::smallest(float value) const
{
    MPI_Allreduce(MPI_IN_PLACE, &value, 1, MPI_FLOAT, MPI_MIN, comm_);
    return value;
}

float Communicator::largest(float value) const
{
    MPI_Allreduce(MPI_IN_PLACE, &value, 1, MPI_FLOAT, MPI_MAX, comm_);
    return value;
}

std::string Communicator::told(std::string words, int by) const
{
    words.resize(told(words.size(), by));
    tellBytes(words.data(), words.size(), by);
    return words;
}

std::vector<std::int64_t> Communicator::exchanged(const std::vector<std::int64_t>& numbers) const
{
    std::vector<std::int64_t> received(numbers.size());
    MPI_Alltoall(numbers.data(), 1, MPI_INT64_T, received.data(), 1, MPI_INT64_T, comm_);
    return received;
}

void Communicator::receive(void* data, std::size_t byteCount, int from, std::vector<MPI_Request>& requests) const
{
    for (std::size_t first = 0; first < byteCount; first += blockSize)
    {
        const auto count = static_cast<int>(std::min(blockSize, byteCount - first));
        MPI_Request& request = requests.emplace_back();
        MPI_Irecv(static_cast<std::byte*>(data) + first, count, MPI_BYTE, from, valueTag, comm_, &request);
    }
}

void Communicator::send(const void* data, std::size_t byteCount, int to) const
{
    for (std::size_t first = 0; first < byteCount; first += blockSize)
    {
        const auto count = static_cast<int>(std::min(blockSize, byteCount - first));
        MPI_Send(static_cast<const std::byte*>(data) + first, count, MPI_BYTE, to, valueTag, comm_);
        ++traffic_.messages;
        traffic_.bytes += count;
    }
}

void Communicator::wait(std::vector<MPI_Request>& requests)
{
    MPI_Waitall(static_cast<int>(requests.size()), requests.data(), MPI_STATUSES_IGNORE);
    requests.clear();
}

void Communicator::gatherBytes(const void* value, std::size_t size, void* values) const
{
    const auto count = static_cast<int>(size);
    MPI_Allgather(value, count, MPI_BYTE, values, count, MPI_BYTE, comm_);
}

void Communicator::tellBytes(void* value, std::size_t size, int by) const
{
    MPI_Bcast(value, static_cast<int>(size), MPI_BYTE, by, comm_);
}

} // namespace veltrane
