// What python_benchmark.py is compared with: map and values through the C++ interface, from arrays in files.
//
//   interface_times FOLDER RUNS
//
// FOLDER has points.f32, tetrahedra.i32, targets.f32 and values.f64. Prints the shortest processor times, in seconds,
// of mesh and map together, of the map alone and of values, and writes the values to results.f64.
#include "Map.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{
using namespace veltrane;

template <class Number> std::vector<Number> read(const std::filesystem::path& path)
{
    std::vector<Number> numbers(std::filesystem::file_size(path) / sizeof(Number));
    std::ifstream file(path, std::ios::binary);
    if (!file.read(reinterpret_cast<char*>(numbers.data()),
                   static_cast<std::streamsize>(numbers.size() * sizeof(Number))))
    {
        throw std::runtime_error("cannot read " + path.string());
    }
    return numbers;
}

MeshData meshOf(const std::vector<float>& points, const std::vector<int>& tetrahedra)
{
    const std::size_t count = tetrahedra.size() / 4;
    MeshData data{.coordinates = points, .connectivity = tetrahedra, .materials = {{"all", 0}}};
    data.kinds.assign(count, ElementKind::tetrahedron);
    data.materialPerElement.assign(count, 0);
    for (std::size_t i = 0; i <= count; ++i)
    {
        data.offsets.push_back(4 * i);
    }
    return data;
}

Map mapOf(const Mesh& mesh, const std::vector<float>& targets)
{
    const PointCloud cloud(targets, std::vector<int>(targets.size() / 3, 0), {{"all", 0}});
    return Map(mesh, cloud, {.mode = OutsideMode::defaultValue});
}

/// The shortest of some runs.
template <class Work> double secondsOf(int runs, const Work& work)
{
    double shortest = std::numeric_limits<double>::infinity();
    for (int run = 0; run < runs; ++run)
    {
        const std::clock_t begin = std::clock();
        work();
        shortest = std::min(shortest, static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC);
    }
    return shortest;
}

void measure(const std::filesystem::path& folder, int runs)
{
    const auto points = read<float>(folder / "points.f32");
    const auto tetrahedra = read<int>(folder / "tetrahedra.i32");
    const auto targets = read<float>(folder / "targets.f32");
    const Field field("values", Location::nodes, 1, read<double>(folder / "values.f64"));

    const double forMap = secondsOf(runs, [&] { mapOf(Mesh(meshOf(points, tetrahedra)), targets); });
    const Mesh mesh(meshOf(points, tetrahedra));
    const double forMapAlone = secondsOf(runs, [&] { mapOf(mesh, targets); });
    const Map map = mapOf(mesh, targets);
    std::vector<Field> results;
    const double forValues = secondsOf(5 * runs, [&] { results = map.apply(std::span(&field, 1)); });

    std::ofstream file(folder / "results.f64", std::ios::binary);
    const auto& values = std::get<std::vector<double>>(results.front().values());
    file.write(reinterpret_cast<const char*>(values.data()),
               static_cast<std::streamsize>(values.size() * sizeof(double)));
    std::cout << forMap << ' ' << forMapAlone << ' ' << forValues << '\n';
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
    {
        std::cerr << "usage: interface_times FOLDER RUNS\n";
        return 64;
    }
    try
    {
        measure(argv[1], std::stoi(argv[2]));
    }
    catch (const std::exception& error)
    {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
