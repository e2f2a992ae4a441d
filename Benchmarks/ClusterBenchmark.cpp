// A map over several processes on a cube of hexahedra, of which every rank makes its own block: time, memory and
// messages. Start it with mpirun, once per number of ranks, and compare the lines.
#include "DistributedMap.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace
{

using Index = std::array<std::int64_t, 3>;

/// The block of a rank.
struct Block
{
    Index first;
    Index end;
};

Block blockOf(std::int64_t cells, int rank, int rankCount)
{
    std::array<int, 3> counts{};
    MPI_Dims_create(rankCount, 3, counts.data());
    const Index place{rank % counts[0], rank / counts[0] % counts[1], rank / counts[0] / counts[1]};
    Block block{};
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        block.first[axis] = cells * place[axis] / counts[axis];
        block.end[axis] = cells * (place[axis] + 1) / counts[axis];
    }
    return block;
}

struct Part
{
    veltrane::Mesh mesh;
    std::vector<std::int64_t> elementNumbers;
    std::vector<std::int64_t> nodeNumbers;

    veltrane::MeshPart view() const { return {mesh, elementNumbers, nodeNumbers}; }
};

/// A cube from `low` to `high` of cells along each axis, numbered along x first; inner nodes are moved a little.
Part partOf(std::int64_t cells, const Block& block, double low, double high)
{
    veltrane::MeshData data{.offsets = {0}, .materials = {{"all", 1}}};
    std::vector<std::int64_t> elementNumbers;
    std::vector<std::int64_t> nodeNumbers;
    const auto length = [&](std::size_t axis) { return block.end[axis] - block.first[axis]; };
    for (std::int64_t k = block.first[2]; k <= block.end[2]; ++k)
    {
        for (std::int64_t j = block.first[1]; j <= block.end[1]; ++j)
        {
            for (std::int64_t i = block.first[0]; i <= block.end[0]; ++i)
            {
                nodeNumbers.push_back((k * (cells + 1) + j) * (cells + 1) + i);
                for (const std::int64_t step : {i, j, k})
                {
                    const bool isInside = step > 0 && step < cells;
                    const double moved = isInside ? 0.1 * std::sin(static_cast<double>(7 * i + 13 * j + 29 * k)) : 0.0;
                    data.coordinates.push_back(static_cast<float>(
                        low + (high - low) * (static_cast<double>(step) + moved) / static_cast<double>(cells)));
                }
            }
        }
    }
    const std::int64_t row = length(0) + 1;
    const std::int64_t layer = row * (length(1) + 1);
    for (std::int64_t k = 0; k < length(2); ++k)
    {
        for (std::int64_t j = 0; j < length(1); ++j)
        {
            for (std::int64_t i = 0; i < length(0); ++i)
            {
                const std::int64_t corner = k * layer + j * row + i;
                for (const std::int64_t node : {corner, corner + 1, corner + row + 1, corner + row, corner + layer,
                                                corner + layer + 1, corner + layer + row + 1, corner + layer + row})
                {
                    data.connectivity.push_back(static_cast<int>(node));
                }
                data.kinds.push_back(veltrane::ElementKind::hexahedron);
                data.offsets.push_back(data.connectivity.size());
                data.materialPerElement.push_back(0);
                elementNumbers.push_back(((k + block.first[2]) * cells + j + block.first[1]) * cells + i +
                                         block.first[0]);
            }
        }
    }
    return {veltrane::Mesh(std::move(data)), std::move(elementNumbers), std::move(nodeNumbers)};
}

/// The most memory that this process has had at a time, in kB.
long peakOf()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
    {
        if (line.starts_with("VmHWM:"))
        {
            return std::stol(line.substr(6));
        }
    }
    return 0;
}

double largest(double value)
{
    MPI_Allreduce(MPI_IN_PLACE, &value, 1, MPI_DOUBLE, MPI_MAX, MPI_COMM_WORLD);
    return value;
}

} // namespace

int main(int argc, char** argv)
{
    std::int64_t sourceCells = 100;
    std::int64_t targetCells = 90;
    CLI::App app("Measures a map over several processes.");
    app.add_option("--source-cells", sourceCells, "of the source along each axis (100)");
    app.add_option("--target-cells", targetCells, "of the target along each axis (90)");
    CLI11_PARSE(app, argc, argv);
    MPI_Init(nullptr, nullptr);
    int rank = 0;
    int rankCount = 1;
    MPI_Comm_rank(MPI_COMM_WORLD, &rank);
    MPI_Comm_size(MPI_COMM_WORLD, &rankCount);
    const long before = peakOf();
    {
        const Part source = partOf(sourceCells, blockOf(sourceCells, rank, rankCount), 0, 1);
        const Part target = partOf(targetCells, blockOf(targetCells, rank, rankCount), 0.001, 0.999);
        std::vector<double> values;
        for (const std::int64_t node : source.nodeNumbers)
        {
            values.push_back(std::sin(static_cast<double>(node)));
        }
        const veltrane::Field field("values", veltrane::Location::nodes, 1, std::move(values));
        MPI_Barrier(MPI_COMM_WORLD);
        const double start = MPI_Wtime();
        const veltrane::DistributedMap map(MPI_COMM_WORLD, source.view(), target.view());
        const double built = largest(MPI_Wtime() - start);
        const auto afterBuild = map.statistics();
        MPI_Barrier(MPI_COMM_WORLD);
        const double startOfApply = MPI_Wtime();
        map.apply({&field, 1});
        const double applied = largest(MPI_Wtime() - startOfApply);
        const auto afterApply = map.statistics();
        const double peak = largest(static_cast<double>(peakOf() - before) / 1024);
        const double messages = largest(static_cast<double>(afterBuild.messageCount));
        const double bytes = largest(static_cast<double>(afterBuild.byteCount));
        const double applyMessages = largest(static_cast<double>(afterApply.messageCount - afterBuild.messageCount));
        const double applyBytes = largest(static_cast<double>(afterApply.byteCount - afterBuild.byteCount));
        const double window = largest(static_cast<double>(afterBuild.windowElementCount));
        if (rank == 0)
        {
            std::printf("| %d | %.3f | %.4f | %.0f | %.0f | %.0f | %.2f | %.0f | %.3f |\n", rankCount, built, applied,
                        peak, window, messages, bytes / 1e6, applyMessages, applyBytes / 1e6);
        }
    }
    MPI_Finalize();
    return 0;
}
