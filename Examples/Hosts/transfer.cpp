// The smallest host in C++: carries a temperature from one tetrahedron to the four nodes of a smaller one inside it.
#include <veltrane/Transfer.h>

#include <cstdio>
#include <exception>
#include <vector>

namespace
{

veltrane::Mesh tetrahedron(std::vector<float> coordinates)
{
    veltrane::MeshData data;
    data.coordinates = std::move(coordinates);
    data.kinds = {veltrane::ElementKind::tetrahedron};
    data.connectivity = {0, 1, 2, 3};
    data.offsets = {0, 4};
    data.materialPerElement = {0};
    data.materials = {{"steel", 1}}; // of the same code on both sides: they correspond
    return veltrane::Mesh(std::move(data));
}

} // namespace

int main()
{
    try
    {
        const veltrane::Mesh source = tetrahedron({0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1});
        const veltrane::Mesh target =
            tetrahedron({0.1F, 0.1F, 0.1F, 0.5F, 0.1F, 0.1F, 0.1F, 0.5F, 0.1F, 0.1F, 0.1F, 0.5F});
        const std::vector<veltrane::Field> fields{
            {"temperature", veltrane::Location::nodes, 1, std::vector<double>{20, 120, 20, 20}}};

        veltrane::TransferOptions options;
        options.progress = [](const veltrane::Progress& progress)
        {
            std::printf("%3d %%\n", progress.percent);
            return true; // false would cancel
        };
        const veltrane::TransferResult result = veltrane::transfer(source, fields, target, options);

        for (const double value : std::get<std::vector<double>>(result.fields.front().values()))
        {
            std::printf("%g degrees\n", value);
        }
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
