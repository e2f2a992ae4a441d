// How long files of solvers take to read, beside a loop over the same bytes that only splits and converts the numbers.
//
//   file_benchmark [EDGE]     a cube of EDGE * EDGE * EDGE hexahedra, 60 unless told
#include "DataSetReader.h"

#include <vtkUnstructuredGrid.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace
{

/// Lines of numbers of the same sorts: i for whole ones, r for real ones.
struct Section
{
    std::string sorts;
    std::vector<int> widths; ///< of the columns behind the key of a line; none where something stands between numbers
    std::size_t keyWidth = 0;
    std::size_t begin = 0;
    std::size_t end = 0;
};

struct BenchmarkFile
{
    std::string name;
    std::string text{};
    std::vector<Section> sections{};
};

/// A cube of cells, and what of it is written down.
struct Cube
{
    int edge;

    int nodeCount() const { return (edge + 1) * (edge + 1) * (edge + 1); }
    int cellCount() const { return edge * edge * edge; }
    double coordinate(int node, int axis) const
    {
        const int places[] = {node % (edge + 1), node / (edge + 1) % (edge + 1), node / ((edge + 1) * (edge + 1))};
        return (places[axis] + 0.123 * places[(axis + 1) % 3] / edge) / edge;
    }
    int node(int cell, int corner) const
    {
        const int x = cell % edge + (corner == 1 || corner == 2 || corner == 5 || corner == 6 ? 1 : 0);
        const int y = cell / edge % edge + (corner == 2 || corner == 3 || corner == 6 || corner == 7 ? 1 : 0);
        const int z = cell / (edge * edge) + (corner >= 4 ? 1 : 0);
        return 1 + x + (edge + 1) * (y + (edge + 1) * z);
    }
};

class FileMaker
{
public:
    explicit FileMaker(const std::string& name) { file_.name = name; }

    void add(const std::string& text) { file_.text += text; }

    template <typename... Values> void print(const char* format, Values... values)
    {
        char line[400];
        std::snprintf(line, sizeof line, format, values...);
        file_.text += line;
    }

    void begin(const std::string& sorts, std::vector<int> widths = {}, std::size_t keyWidth = 0)
    {
        file_.sections.push_back({sorts, std::move(widths), keyWidth, file_.text.size(), 0});
    }
    void end() { file_.sections.back().end = file_.text.size(); }

    BenchmarkFile result() { return std::move(file_); }

private:
    BenchmarkFile file_;
};

BenchmarkFile calculix(const Cube& cube)
{
    FileMaker maker("mesh.frd");
    maker.print("    1C\n    2C%18s%12d%37s%1d\n", "", cube.nodeCount(), "", 1);
    maker.begin("irrr", {10, 12, 12, 12}, 3);
    for (int i = 0; i < cube.nodeCount(); ++i)
    {
        maker.print(" -1%10d%12.5E%12.5E%12.5E\n", i + 1, cube.coordinate(i, 0), cube.coordinate(i, 1),
                    cube.coordinate(i, 2));
    }
    maker.end();
    maker.print(" -3\n    3C%18s%12d%37s%1d\n", "", cube.cellCount(), "", 1);
    maker.begin("iiiiiiii", {10, 10, 10, 10, 10, 10, 10, 10}, 3);
    for (int cell = 0; cell < cube.cellCount(); ++cell)
    {
        maker.print(" -1%10d%5d%5d%5d\n -2", cell + 1, 1, 0, 1);
        for (int corner = 0; corner < 8; ++corner)
        {
            maker.print("%10d", cube.node(cell, corner));
        }
        maker.add("\n");
    }
    maker.end();
    maker.print(" -3\n    1PSTEP%26d%12d%12d\n  100CL  101%12.5f%12d%20s%2d%5d%10s%2d\n", 1, 1, 1, 1.0,
                cube.nodeCount(), "", 0, 1, "", 1);
    maker.add(" -4  STRESS      6    1\n");
    for (const char* component : {"SXX", "SYY", "SZZ", "SXY", "SYZ", "SZX"})
    {
        maker.print(" -5  %-8s    1    4    1    1\n", component);
    }
    maker.begin("irrrrrr", {10, 12, 12, 12, 12, 12, 12}, 3);
    for (int i = 0; i < cube.nodeCount(); ++i)
    {
        const double x = cube.coordinate(i, 0);
        const double y = cube.coordinate(i, 1);
        maker.print(" -1%10d%12.5E%12.5E%12.5E%12.5E%12.5E%12.5E\n", i + 1, x, -y, x * y, x - y, -100 * x, 1e-7 * y);
    }
    maker.end();
    maker.add(" -3\n 9999\n");
    return maker.result();
}

/// Nodes and cells with commas or blanks between numbers.
void addSeparated(FileMaker& maker, const Cube& cube, const char* nodeLine, const char* separator,
                  const std::string& between)
{
    maker.begin("irrr");
    for (int i = 0; i < cube.nodeCount(); ++i)
    {
        maker.print(nodeLine, i + 1, cube.coordinate(i, 0), cube.coordinate(i, 1), cube.coordinate(i, 2));
    }
    maker.end();
    maker.add(between);
    maker.begin("iiiiiiiii");
    for (int cell = 0; cell < cube.cellCount(); ++cell)
    {
        maker.print("%d", cell + 1);
        for (int corner = 0; corner < 8; ++corner)
        {
            maker.print("%s%d", separator, cube.node(cell, corner));
        }
        maker.add("\n");
    }
    maker.end();
}

BenchmarkFile abaqus(const Cube& cube)
{
    FileMaker maker("mesh.inp");
    maker.add("*NODE\n");
    addSeparated(maker, cube, "%d, %.12g, %.12g, %.12g\n", ", ", "*ELEMENT, TYPE=C3D8, ELSET=ALL\n");
    return maker.result();
}

BenchmarkFile gmsh2(const Cube& cube)
{
    FileMaker maker("mesh2.msh");
    maker.print("$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n%d\n", cube.nodeCount());
    maker.begin("irrr");
    for (int i = 0; i < cube.nodeCount(); ++i)
    {
        maker.print("%d %.16g %.16g %.16g\n", i + 1, cube.coordinate(i, 0), cube.coordinate(i, 1),
                    cube.coordinate(i, 2));
    }
    maker.end();
    maker.print("$EndNodes\n$Elements\n%d\n", cube.cellCount());
    maker.begin("iiiiiiiiiiiii");
    for (int cell = 0; cell < cube.cellCount(); ++cell)
    {
        maker.print("%d 5 2 1 1", cell + 1);
        for (int corner = 0; corner < 8; ++corner)
        {
            maker.print(" %d", cube.node(cell, corner));
        }
        maker.add("\n");
    }
    maker.end();
    maker.add("$EndElements\n");
    return maker.result();
}

BenchmarkFile gmsh4(const Cube& cube)
{
    FileMaker maker("mesh4.msh");
    maker.print("$MeshFormat\n4.1 0 8\n$EndMeshFormat\n$Nodes\n1 %d 1 %d\n3 1 0 %d\n", cube.nodeCount(),
                cube.nodeCount(), cube.nodeCount());
    maker.begin("i");
    for (int i = 0; i < cube.nodeCount(); ++i)
    {
        maker.print("%d\n", i + 1);
    }
    maker.end();
    maker.begin("rrr");
    for (int i = 0; i < cube.nodeCount(); ++i)
    {
        maker.print("%.16g %.16g %.16g\n", cube.coordinate(i, 0), cube.coordinate(i, 1), cube.coordinate(i, 2));
    }
    maker.end();
    maker.print("$EndNodes\n$Elements\n1 %d 1 %d\n3 1 5 %d\n", cube.cellCount(), cube.cellCount(), cube.cellCount());
    maker.begin("iiiiiiiii");
    for (int cell = 0; cell < cube.cellCount(); ++cell)
    {
        maker.print("%d", cell + 1);
        for (int corner = 0; corner < 8; ++corner)
        {
            maker.print(" %d", cube.node(cell, corner));
        }
        maker.add(" \n");
    }
    maker.end();
    maker.add("$EndElements\n");
    return maker.result();
}

BenchmarkFile nastran(const Cube& cube)
{
    FileMaker maker("mesh.bdf");
    maker.add("BEGIN BULK\n");
    maker.begin("iirrr", {8, 8, 8, 8, 8}, 8);
    for (int i = 0; i < cube.nodeCount(); ++i)
    {
        maker.print("GRID    %-8d%-8d%-8.6f%-8.6f%-8.6f\n", i + 1, 0, cube.coordinate(i, 0), cube.coordinate(i, 1),
                    cube.coordinate(i, 2));
    }
    maker.end();
    maker.begin("iiiiiiii", {8, 8, 8, 8, 8, 8, 8, 8}, 8);
    for (int cell = 0; cell < cube.cellCount(); ++cell)
    {
        maker.print("CHEXA   %-8d%-8d", cell + 1, 1);
        for (int corner = 0; corner < 8; ++corner)
        {
            maker.print(corner == 6 ? "\n        %-8d" : "%-8d", cube.node(cell, corner));
        }
        maker.add("\n");
    }
    maker.end();
    maker.add("ENDDATA\n");
    return maker.result();
}

double converted(char sort, const char*& at, const char* end)
{
    if (sort == 'i')
    {
        long long value = 0;
        at = std::from_chars(at, end, value).ptr;
        return static_cast<double>(value);
    }
    double value = 0;
    at = std::from_chars(at, end, value).ptr;
    return value;
}

bool isBetween(char letter)
{
    return letter == ' ' || letter == ',' || letter == '\n';
}

/// The sum of all numbers, which are only split and converted.
double sumOf(const std::string& text, const Section& section)
{
    double sum = 0;
    const char* at = text.data() + section.begin;
    const char* end = text.data() + section.end;
    while (at < end)
    {
        const char* lineEnd = std::find(at, end, '\n');
        const char* column = at + section.keyWidth;
        for (std::size_t i = 0; i < section.sorts.size() && column < lineEnd; ++i)
        {
            const char* behind = section.widths.empty() ? lineEnd : std::min(column + section.widths[i], lineEnd);
            const char* number = column;
            while (number != behind && isBetween(*number))
            {
                ++number;
            }
            sum += converted(section.sorts[i], number, behind);
            column = section.widths.empty() ? number : behind;
        }
        at = lineEnd + 1;
    }
    return sum;
}

double seconds(const std::function<void()>& work, int runs)
{
    double best = std::numeric_limits<double>::infinity();
    for (int run = 0; run < runs; ++run)
    {
        const auto begin = std::chrono::steady_clock::now();
        work();
        best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    }
    return best;
}

std::string contentOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::string content(std::filesystem::file_size(path), '\0');
    file.read(content.data(), static_cast<std::streamsize>(content.size()));
    return content;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    const Cube cube{argumentCount > 1 ? std::max(1, std::atoi(arguments[1])) : 60};
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "veltrane_file_benchmark";
    std::filesystem::create_directories(folder);
    std::printf("%d nodes, %d hexahedra\n%-10s %8s %10s %10s %8s\n", cube.nodeCount(), cube.cellCount(), "file", "MB",
                "loop ms", "reading ms", "ratio");
    volatile double kept = 0;
    bool isRight = true;
    for (const auto make : {calculix, abaqus, gmsh2, gmsh4, nastran})
    {
        const BenchmarkFile file = make(cube);
        const std::filesystem::path path = folder / file.name;
        std::ofstream(path, std::ios::binary) << file.text;
        constexpr int runs = 5;
        const auto loop = [&]
        {
            const std::string text = contentOf(path);
            for (const Section& section : file.sections)
            {
                kept = kept + sumOf(text, section);
            }
        };
        const auto reading = [&]
        {
            const auto contents = veltrane::readMesh(path, {}, nullptr);
            isRight = isRight && contents.grid->GetNumberOfCells() == cube.cellCount() &&
                      contents.grid->GetNumberOfPoints() == cube.nodeCount();
        };
        const double loopTime = seconds(loop, runs);
        const double readingTime = seconds(reading, runs);
        std::printf("%-10s %8.1f %10.1f %10.1f %8.2f\n", file.name.c_str(), static_cast<double>(file.text.size()) / 1e6,
                    1e3 * loopTime, 1e3 * readingTime, readingTime / loopTime);
    }
    std::filesystem::remove_all(folder);
    return isRight ? 0 : 1;
}
