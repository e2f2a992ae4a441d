// Two builds of the library side by side: the exported transfers of both, called in turn in one process.
//
//   library_benchmark OLD/libVeltrane.so NEW/libVeltrane.so --runs 21
//
// Prints the median of the ratios new / old of the processor times, and whether both gave the same bits.
#include "Table.h"
#include "TemporaryDirectory.h"
#include "TransferCase.h"
#include "Veltrane.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <filesystem>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{
using namespace benchmarks;

template <class T> T* lent(const std::vector<T>& values)
{
    return const_cast<T*>(values.data());
}

float (*rows(std::span<const float> values))[3]
{
    return reinterpret_cast<float(*)[3]>(const_cast<float*>(values.data()));
}

class Library
{
public:
    explicit Library(const std::string& path)
    {
        void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
        {
            throw std::runtime_error(dlerror());
        }
        toMesh = reinterpret_cast<decltype(toMesh)>(dlsym(library, "FE3DMeshToFE3DMesh_VariablesInterpolation"));
        // This one has C++ linkage.
        toCloud = reinterpret_cast<decltype(toCloud)>(
            dlsym(library, "_Z40FE3DMEshToPtCloud_VariablesInterpolationifiiPA3_fPPiS1_iS1_S1_iS0_iS1_S1_S1_"
                           "15FieldsSetStructS3_PcS1_PFiiS4_S4_iE"));
        if (toMesh == nullptr || toCloud == nullptr)
        {
            throw std::runtime_error(path + " does not export the transfers");
        }
    }

    decltype(&FE3DMeshToFE3DMesh_VariablesInterpolation) toMesh = nullptr;
    decltype(&FE3DMEshToPtCloud_VariablesInterpolation) toCloud = nullptr;
};

FieldStruct record(const std::vector<double>& values, int nbComponents, int location)
{
    FieldStruct field{};
    field.location = location;
    field.nbComponents = nbComponents;
    field.precision = 2;
    field.valuesDouble = lent(values);
    return field;
}

double processorSeconds()
{
    std::timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// Processor seconds of one call.
double call(const Library& library, const TransferCase& transfer, FieldValues& result)
{
    const GeneratedMesh& source = transfer.source;
    const GeneratedMesh& target = transfer.target;
    const int location = transfer.options.target == TargetKind::gaussPoints ? 2 : 1;
    const int mode = transfer.options.target == TargetKind::propagation ? 2 : 1;
    std::array<FieldStruct, 2> from{record(transfer.sourceFields.scalar, 1, 1),
                                    record(transfer.sourceFields.vector, 3, 1)};
    std::array<FieldStruct, 2> to{record(result.scalar, 1, location), record(result.vector, 3, location)};
    std::array<char, 1001> message{};
    int code = 0;
    std::vector<int> flags(target.matlStates.size(), 1);
    std::vector<int> matlPerPoint(static_cast<std::size_t>(transfer.nbPoints()), 0);
    int state = 1;
    int flag = 1;
    const double start = processorSeconds();
    if (transfer.options.target == TargetKind::cloud)
    {
        library.toCloud(mode, 0, source.nbElts(), source.nbNodes(), rows(source.coords), lent(source.eltNodes),
                        lent(source.eltTypes), static_cast<int>(source.matlStates.size()), lent(source.matlIdPerElt),
                        lent(source.matlStates), static_cast<int>(transfer.nbPoints()), rows(transfer.points()), 1,
                        matlPerPoint.data(), &state, &flag, {2, from.data()}, {2, to.data()}, message.data(), &code,
                        nullptr);
    }
    else
    {
        library.toMesh(mode, 0, source.nbElts(), source.nbNodes(), rows(source.coords), lent(source.eltNodes),
                       lent(source.eltTypes), static_cast<int>(source.matlStates.size()), lent(source.matlIdPerElt),
                       lent(source.matlStates), target.nbElts(), target.nbNodes(), rows(target.coords),
                       lent(target.eltNodes), lent(target.eltTypes), static_cast<int>(target.matlStates.size()),
                       lent(target.matlIdPerElt), lent(target.matlStates), flags.data(), {2, from.data()},
                       {2, to.data()}, message.data(), &code, nullptr);
    }
    const double seconds = processorSeconds() - start;
    if (code != 0)
    {
        throw std::runtime_error(message.data());
    }
    return seconds;
}

bool areSame(const std::vector<double>& a, const std::vector<double>& b)
{
    return std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

bool compare(const Library& oldLibrary, const Library& newLibrary, const CaseOptions& options, int nbRuns, Table& table)
{
    const TransferCase transfer(options);
    const std::size_t nbPoints = options.target == TargetKind::gaussPoints
                                     ? transfer.otherPoints.size() / 3
                                     : static_cast<std::size_t>(transfer.nbPoints());
    FieldValues oldResult(nbPoints);
    FieldValues newResult(nbPoints);
    std::vector<double> ratios;
    for (int run = 0; run < nbRuns; ++run)
    {
        // Each comes first in every other run.
        const double first =
            run % 2 == 0 ? call(oldLibrary, transfer, oldResult) : call(newLibrary, transfer, newResult);
        const double second =
            run % 2 == 0 ? call(newLibrary, transfer, newResult) : call(oldLibrary, transfer, oldResult);
        ratios.push_back(run % 2 == 0 ? second / first : first / second);
    }
    std::ranges::sort(ratios);
    const bool isSame = areSame(oldResult.scalar, newResult.scalar) && areSame(oldResult.vector, newResult.vector);
    table.addRow({transfer.title(), isSame ? "same bits" : "other bits", fixed(ratios[ratios.size() / 2], 3)});
    return isSame;
}

int run(int argc, char** argv)
{
    CLI::App app("Two builds of the library side by side");
    std::string oldPath;
    std::string newPath;
    std::int64_t nbPoints = 300'000;
    std::int64_t nbElts = 100'000;
    int nbRuns = 21;
    std::string wanted;
    app.add_option("OLD", oldPath, "a library")->required();
    app.add_option("NEW", newPath, "another one")->required();
    app.add_option("--points", nbPoints, "target points (300000)");
    app.add_option("--elements", nbElts, "source elements (100000)");
    app.add_option("--runs", nbRuns, "calls of each (21)");
    app.add_option("--case", wanted, "only cases whose title contains this");
    CLI11_PARSE(app, argc, argv);
    const Library oldLibrary(std::filesystem::absolute(oldPath));
    const Library newLibrary(std::filesystem::absolute(newPath));
    const WorkingDirectory directory; // where the libraries leave their logs
    const std::vector<std::pair<MeshKind, TargetKind>> cases{{MeshKind::tetrahedra, TargetKind::nodes},
                                                             {MeshKind::tetrahedra, TargetKind::cloud},
                                                             {MeshKind::hexahedra, TargetKind::nodes},
                                                             {MeshKind::hexahedra, TargetKind::cloud},
                                                             {MeshKind::quadraticTetrahedra, TargetKind::nodes},
                                                             {MeshKind::wedges, TargetKind::nodes},
                                                             {MeshKind::pyramids, TargetKind::nodes},
                                                             {MeshKind::tetrahedra, TargetKind::gaussPoints},
                                                             {MeshKind::tetrahedra, TargetKind::nearMiss},
                                                             {MeshKind::tetrahedra, TargetKind::propagation},
                                                             {MeshKind::hexahedra, TargetKind::gaussPoints},
                                                             {MeshKind::hexahedra, TargetKind::nearMiss},
                                                             {MeshKind::hexahedra, TargetKind::propagation}};
    Table table({"case", "results", "new / old"}, 2);
    bool isGood = true;
    for (const auto& [mesh, target] : cases)
    {
        CaseOptions options;
        options.mesh = mesh;
        options.target = target;
        options.nbPoints = nbPoints;
        options.nbSourceElts = nbElts;
        options.seed = 2;
        if (titleOf(options).find(wanted) == std::string::npos)
        {
            continue;
        }
        isGood = compare(oldLibrary, newLibrary, options, nbRuns, table) && isGood;
    }
    table.printMarkdown(std::cout);
    return isGood ? 0 : 1;
}
} // namespace

int main(int argc, char** argv)
{
    try
    {
        return run(argc, argv);
    }
    catch (const std::exception& error)
    {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
