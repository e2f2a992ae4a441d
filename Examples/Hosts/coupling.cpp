// A host that couples two meshes over many steps: a thermal model hands temperatures to a structural one, which hands
// forces back. The search is done once, each step applies two maps.
#include <veltrane/Map.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <numeric>
#include <vector>

namespace
{

/// The unit cube cut into n x n x n hexahedra.
veltrane::Mesh cube(int n)
{
    veltrane::MeshData data;
    const auto node = [n](int i, int j, int k) { return (k * (n + 1) + j) * (n + 1) + i; };
    for (int k = 0; k <= n; ++k)
    {
        for (int j = 0; j <= n; ++j)
        {
            for (int i = 0; i <= n; ++i)
            {
                for (const int index : {i, j, k})
                {
                    data.coordinates.push_back(static_cast<float>(index) / static_cast<float>(n));
                }
            }
        }
    }
    data.offsets = {0};
    for (int k = 0; k < n; ++k)
    {
        for (int j = 0; j < n; ++j)
        {
            for (int i = 0; i < n; ++i)
            {
                const int nodes[8] = {
                    node(i, j, k),     node(i + 1, j, k),     node(i + 1, j + 1, k),     node(i, j + 1, k),
                    node(i, j, k + 1), node(i + 1, j, k + 1), node(i + 1, j + 1, k + 1), node(i, j + 1, k + 1)};
                data.connectivity.insert(data.connectivity.end(), nodes, nodes + 8);
                data.offsets.push_back(data.connectivity.size());
                data.kinds.push_back(veltrane::ElementKind::hexahedron);
                data.materialPerElement.push_back(0);
            }
        }
    }
    data.materials = {{"steel", 1}};
    return veltrane::Mesh(std::move(data));
}

double sumOf(const std::vector<double>& values)
{
    return std::accumulate(values.begin(), values.end(), 0.0);
}

} // namespace

int main()
{
    try
    {
        const veltrane::Mesh thermal = cube(6);
        const veltrane::Mesh structural = cube(9);
        const veltrane::Map map(thermal, structural, {.threads = 0}); // from thermal to structural nodes
        std::printf("%d nodes were located, %.2f iterations each\n", map.statistics().interpolatedPointCount,
                    static_cast<double>(map.statistics().meanIterations));

        // The caller's own arrays: nothing is allocated while the steps go on.
        std::vector<double> temperatures(map.sourceNodeCount());
        std::vector<double> onStructure(map.locationCount(veltrane::Location::nodes));
        veltrane::FieldView field;
        field.source = std::span<const double>(temperatures);
        field.target = std::span<double>(onStructure);
        std::vector<std::byte> workspace(map.workspaceSize(std::span(&field, 1)));

        for (int step = 1; step <= 5; ++step)
        {
            std::fill(temperatures.begin(), temperatures.end(), 20.0 + 10.0 * step); // the thermal solver's step
            map.apply(std::span(&field, 1), workspace);

            // The structural solver's step gives heat flows at its nodes; they go back with the same weights, and
            // their sum is kept.
            std::vector<double> flows(onStructure.size());
            std::transform(onStructure.begin(), onStructure.end(), flows.begin(),
                           [](double temperature) { return 0.01 * temperature; });
            const double sum = sumOf(flows);
            const veltrane::TransposedField back =
                map.applyTransposed({"heat flow", veltrane::Location::nodes, 1, std::move(flows)});
            const double sumBack = sumOf(std::get<std::vector<double>>(back.atSource.values()));
            std::printf("step %d: %.1f degrees, heat flow %.2f there and %.2f back\n", step, onStructure.front(), sum,
                        sumBack);
            if (std::abs(sumBack - sum) > 1e-6 * std::abs(sum))
            {
                std::fprintf(stderr, "the heat flow was not kept\n");
                return 1;
            }
        }
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
