// Single kernels, per element kind: shape functions, derivatives, the Jacobian and its inverse, the search of reference
// coordinates, and the building of the grid.
#include "BucketSpaceClass.h"
#include "GeneratedMesh.h"
#include "ModelClass.h"
#include "Search/ElementBoxes.h"
#include "Search/ReferenceCoordinates.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{
using namespace benchmarks;

constexpr std::size_t nbSamples = 1024; // a power of two: the index wraps with a mask

/// Elements of a distorted mesh, each with a point in it.
template <class Kind> struct Samples
{
    explicit Samples(MeshKind mesh)
    {
        const GeneratedMesh generated =
            generateMesh({.kind = mesh, .nbCellsPerAxis = nbCellsFor(mesh, MeshCount::elements, nbSamples)});
        Random random(1);
        for (std::size_t i = 0; i < nbSamples; ++i)
        {
            const auto elt = static_cast<std::size_t>(random.integer(0, generated.nbElts() - 1));
            nodes.push_back(gatherNodes<Kind>(generated.eltNodes[elt], generated.nodeCoords()));
            boxes.push_back(boxAround(nodes.back()));
            Vector3 reference;
            do
            {
                std::ranges::generate(reference, [&] { return static_cast<float>(random.real(-1.0, 1.0)); });
            } while (!Kind::contains(reference, 0.0));
            references.push_back(reference);
            points.push_back(physicalPosition<Kind>(nodes.back(), reference));
        }
    }

    static std::array<float, 6> boxAround(const ElementNodes<Kind>& eltNodes)
    {
        std::array<float, 6> box{};
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            const auto [low, high] = std::ranges::minmax(eltNodes, {}, [&](const Vector3& node) { return node[axis]; });
            box[axis] = low[axis];
            box[axis + 3] = high[axis];
        }
        return box;
    }

    std::vector<ElementNodes<Kind>> nodes;
    std::vector<std::array<float, 6>> boxes;
    std::vector<Vector3> references;
    std::vector<Vector3> points;
};

template <class Kind> void shapeFunctions(benchmark::State& state, const Samples<Kind>& samples)
{
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state)
    {
        NodeValues<Kind::nbNodes> values;
        Kind::shapeFunctions(samples.references[i], values);
        benchmark::DoNotOptimize(values);
        i = (i + 1) % nbSamples;
    }
}

template <class Kind> void shapeFunctionDerivatives(benchmark::State& state, const Samples<Kind>& samples)
{
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state)
    {
        NodeGradients<Kind::nbNodes> gradients;
        Kind::shapeFunctionDerivatives(samples.references[i], gradients);
        benchmark::DoNotOptimize(gradients);
        i = (i + 1) % nbSamples;
    }
}

template <class Kind> void inverseJacobian(benchmark::State& state, const Samples<Kind>& samples)
{
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state)
    {
        float jacobian[3][3];
        float inverse[3][3];
        jacobianMatrix<Kind>(samples.nodes[i], derivativesAt<Kind>(samples.references[i]), jacobian);
        bool isRegular = invertMatrix33(jacobian, inverse);
        benchmark::DoNotOptimize(isRegular);
        benchmark::DoNotOptimize(inverse);
        i = (i + 1) % nbSamples;
    }
}

template <class Kind> void inversion(benchmark::State& state, const Samples<Kind>& samples)
{
    std::size_t i = 0;
    std::int64_t nbIterations = 0;
    for ([[maybe_unused]] auto _ : state)
    {
        Inversion result = invertPoint<Kind>(samples.nodes[i], samples.boxes[i].data(), samples.points[i], 0.001F);
        benchmark::DoNotOptimize(result);
        nbIterations += result.nbIterations;
        i = (i + 1) % nbSamples;
    }
    state.counters["iterations"] =
        benchmark::Counter(static_cast<double>(nbIterations), benchmark::Counter::kAvgIterations);
}

/// The inflated boxes of a mesh's elements, as the grid takes them.
void fillBoxes(BoxTable& boxes, const ModelClass& model)
{
    boxes.allocate(model.itsNbElts, 2, 3);
    for (int elt = 0; elt < model.itsNbElts; ++elt)
    {
        Box box = boxOf(boxLanesOfElt(model, elt));
        const float margin = 0.01F * std::ranges::max(box.extents());
        box.inflate({margin, margin, margin});
        std::ranges::copy(box.low, boxValues(boxes, elt));
        std::ranges::copy(box.high, boxValues(boxes, elt) + 3);
    }
}

/// A mesh over itself: every bucket is needed and filled.
void gridBuild(benchmark::State& state, const GeneratedMesh& mesh)
{
    ModelClass model;
    model.init(ModelKind::mesh, mesh.nbElts(), mesh.nbNodes(), mesh.nodeCoords(), mesh.eltNodes.data(),
               mesh.eltTypes.data(), 1, mesh.matlIdPerElt.data(), mesh.matlStates.data());
    BoxTable boxes;
    fillBoxes(boxes, model);
    const int flag = 1;
    const Vector3 extents = boxOfElement(boxes, 0).extents();
    const float size = (extents[0] + extents[1] + extents[2]) / 3.0F;
    for ([[maybe_unused]] auto _ : state)
    {
        BucketSpaceClass space;
        char* errorText =
            space.build(BucketSpaceClass::elementBuckets, model, model, boxes, boxes, &flag, size, 0.01F, 0.1F);
        benchmark::DoNotOptimize(errorText);
    }
    state.SetItemsProcessed(state.iterations() * mesh.nbElts());
}

template <class Kind> void registerKind(MeshKind mesh, const Samples<Kind>& samples, const GeneratedMesh& gridMesh)
{
    const auto add = [&](const std::string& kernel, auto&& function)
    { return benchmark::RegisterBenchmark((kernel + "/" + std::string(nameOf(mesh))).c_str(), function); };
    add("shapeFunctions", [&](benchmark::State& state) { shapeFunctions<Kind>(state, samples); });
    add("shapeFunctionDerivatives", [&](benchmark::State& state) { shapeFunctionDerivatives<Kind>(state, samples); });
    add("inverseJacobian", [&](benchmark::State& state) { inverseJacobian<Kind>(state, samples); });
    add("inversion", [&](benchmark::State& state) { inversion<Kind>(state, samples); });
    add("gridBuild", [&](benchmark::State& state) { gridBuild(state, gridMesh); })->Unit(benchmark::kMillisecond);
}

/// What the benchmarks of one kind run on; lives as long as they do.
template <class Kind> struct Subject
{
    explicit Subject(MeshKind mesh)
        : samples(mesh),
          gridMesh(generateMesh({.kind = mesh, .nbCellsPerAxis = nbCellsFor(mesh, MeshCount::elements, nbGridElts)}))
    {
        registerKind(mesh, samples, gridMesh);
    }

    static constexpr std::int64_t nbGridElts = 50000;
    Samples<Kind> samples;
    GeneratedMesh gridMesh;
};
} // namespace

int main(int argc, char** argv)
{
    const Subject<LinearTetrahedron> tetrahedra(MeshKind::tetrahedra);
    const Subject<LinearHexahedron> hexahedra(MeshKind::hexahedra);
    const Subject<LinearWedge> wedges(MeshKind::wedges);
    const Subject<LinearPyramid> pyramids(MeshKind::pyramids);
    const Subject<QuadraticTetrahedron> quadraticTetrahedra(MeshKind::quadraticTetrahedra);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
    {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
