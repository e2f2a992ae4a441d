// libFuzzer target: bytes that are taken for a stored map, as they are and between a right beginning and a right
// checksum. What is restored is used in every way.
#include "Map/Checksum.h"
#include "Map/TransferMap.h"

#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace
{
/// Mark, version and order of bytes, from the map of a tetrahedron on itself.
std::vector<std::byte> head()
{
    const float coords[][3]{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    const int nodes[]{0, 1, 2, 3};
    const int* connectivity[]{nodes};
    const int type = 2;
    const int matl = 0;
    const int matlState = 1;
    const int flag = 1;
    ModelClass mesh;
    mesh.init(ModelKind::mesh, 1, 4, coords, connectivity, &type, 1, &matl, &matlState);
    TransferMap map;
    OneWorker worker;
    map.build(mesh, mesh, &flag, MapSettings(), worker);
    std::vector<std::byte> bytes(static_cast<std::size_t>(map.storedSize()));
    map.store(bytes.data());
    bytes.resize(3 * sizeof(std::uint64_t));
    return bytes;
}

std::vector<std::byte> framed(std::span<const std::byte> content)
{
    static const std::vector<std::byte> beginning = head();
    std::vector<std::byte> bytes = beginning;
    bytes.insert(bytes.end(), content.begin(), content.end());
    bytes.resize((bytes.size() + 7) / 8 * 8);
    Checksum checksum;
    checksum.add(bytes.data(), bytes.size());
    const std::uint64_t value = checksum.value();
    bytes.resize(bytes.size() + sizeof value);
    std::memcpy(bytes.data() + bytes.size() - sizeof value, &value, sizeof value);
    return bytes;
}

void applyTo(const TransferMap& map, Location source, Location target)
{
    const std::int64_t nbSources = source == atNodes ? map.nbSourceNodes() : map.nbSourceGaussPoints();
    const std::int64_t nbTargets = target == atNodes ? map.nbNodes() : map.nbGaussPoints();
    constexpr int nbComponents = 2;
    const std::vector<double> sources(static_cast<std::size_t>(nbSources * nbComponents) + 1, 1.5);
    std::vector<float> targets(static_cast<std::size_t>(nbTargets * nbComponents) + 1);
    const MapField field{.sourceLocation = source,
                         .sourceDoubles = sources.data(),
                         .targetLocation = target,
                         .targetFloats = targets.data(),
                         .nbComponents = nbComponents};
    std::vector<std::byte> workspace(static_cast<std::size_t>(map.workspaceSize({&field, 1})));
    OneWorker worker;
    map.apply({&field, 1}, workspace, worker);
    std::vector<double> atSource(static_cast<std::size_t>(map.nbSourceNodes() * nbComponents) + 1);
    double left[nbComponents]{};
    map.applyTransposed(target, targets.data(), nbComponents, atSource.data(), left);
    SparseRows rows;
    map.matrix(target, source, rows);
}

void use(std::span<const std::byte> bytes)
{
    TransferMap map;
    constexpr std::int64_t most = 4096;
    if (map.restore(bytes) != nullptr || map.nbSourceNodes() > most)
    {
        return;
    }
    for (const Location target : {atNodes, atGaussPoints})
    {
        applyTo(map, atNodes, target);
        if (map.mapsFromGaussPoints())
        {
            applyTo(map, atGaussPoints, target);
        }
    }
    SparseRows rows;
    map.resolvedMatrix(atNodes, most, rows);
    std::vector<std::byte> again(static_cast<std::size_t>(map.storedSize()));
    map.store(again.data());
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto bytes = std::as_bytes(std::span(data, size));
    use(bytes);
    use(framed(bytes));
    return 0;
}
