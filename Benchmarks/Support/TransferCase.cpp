#include "TransferCase.h"

#include "ModelClass.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace benchmarks
{
namespace
{
/// Value, then slopes along x, y, z, of each component. Positive everywhere near the cube: 0 means not found.
constexpr std::array<std::array<double, 4>, TransferCase::interpolatedComponents> coefficients{
    {{2.0, 0.3, 0.5, -0.2}, {1.0, 0.6, -0.1, 0.2}, {1.5, -0.4, 0.3, 0.4}, {3.0, 0.1, 0.2, -0.7}}};

constexpr double secondMaterialFraction = 0.25;
/// How far the target of a near-miss case reaches beyond the source, in source cells.
constexpr double overhang = 0.25;

double expectedValue(std::size_t component, const float* point)
{
    const auto& c = coefficients[component];
    return c[0] + c[1] * static_cast<double>(point[0]) + c[2] * static_cast<double>(point[1]) +
           c[3] * static_cast<double>(point[2]);
}

bool isInUnitCube(const float* point)
{
    return std::all_of(point, point + 3, [](float coordinate) { return 0.0F <= coordinate && coordinate <= 1.0F; });
}
} // namespace

std::string_view nameOf(TargetKind kind)
{
    switch (kind)
    {
    case TargetKind::nodes: return "nodes";
    case TargetKind::gaussPoints: return "gauss-points";
    case TargetKind::cloud: return "cloud";
    case TargetKind::nearMiss: return "near-miss";
    case TargetKind::propagation: return "propagation";
    case TargetKind::renumbered: return "renumbered";
    }
    return "";
}

FieldValues::FieldValues(std::size_t nbLocations)
    : scalar(nbLocations, static_cast<double>(TransferCase::notComputed)),
      vector(3 * nbLocations, static_cast<double>(TransferCase::notComputed))
{
}

TransferCase::TransferCase(const CaseOptions& caseOptions) : options(caseOptions)
{
    makeSource();
    makeTarget();
}

std::string titleOf(const CaseOptions& options)
{
    std::string text(nameOf(options.mesh));
    switch (options.target)
    {
    case TargetKind::nodes: return text + " → mesh nodes";
    case TargetKind::gaussPoints: return text + " → Gauss points";
    case TargetKind::cloud: return text + " → random cloud";
    case TargetKind::nearMiss: return text + " → nodes of a larger mesh";
    case TargetKind::propagation: return text + " → mesh nodes, a quarter by propagation";
    case TargetKind::renumbered: return text + " → the same mesh renumbered";
    }
    return text;
}

MeshOptions TransferCase::meshOptions(int nbCells, std::uint32_t seed) const
{
    return {.kind = options.mesh, .nbCellsPerAxis = nbCells, .distortion = options.distortion, .seed = seed};
}

void TransferCase::makeSource()
{
    const bool isCorrespondence = options.target == TargetKind::renumbered;
    itsNbSourceCells = isCorrespondence ? nbCellsFor(options.mesh, MeshCount::nodes, options.nbPoints)
                                        : nbCellsFor(options.mesh, MeshCount::elements, options.nbSourceElts);
    source = generateMesh(meshOptions(itsNbSourceCells, options.seed));
    sourceFields = FieldValues(static_cast<std::size_t>(source.nbNodes()));
    for (std::size_t node = 0; node < sourceFields.scalar.size(); ++node)
    {
        const float* position = &source.coords[3 * node];
        sourceFields.scalar[node] = expectedValue(0, position);
        for (std::size_t i = 0; i < 3; ++i)
        {
            sourceFields.vector[3 * node + i] = expectedValue(1 + i, position);
        }
    }
}

void TransferCase::makeTarget()
{
    if (options.target == TargetKind::cloud)
    {
        makeCloud();
        return;
    }
    if (options.target == TargetKind::renumbered)
    {
        RenumberedMesh renumbered = renumber(source, options.seed);
        target = std::move(renumbered.mesh);
        originalNode = std::move(renumbered.originalNode);
        originalElt = std::move(renumbered.originalElt);
        placeGaussPoints();
        return;
    }
    const MeshCount count = options.target == TargetKind::gaussPoints ? MeshCount::gaussPoints : MeshCount::nodes;
    MeshOptions targetOptions = meshOptions(nbCellsFor(options.mesh, count, options.nbPoints), options.seed + 1);
    if (options.target == TargetKind::propagation)
    {
        targetOptions.secondMaterial = secondMaterialFraction;
    }
    target = generateMesh(targetOptions);
    switch (options.target)
    {
    case TargetKind::gaussPoints: placeGaussPoints(); break;
    case TargetKind::nearMiss: enlargeTarget(); break;
    case TargetKind::propagation: markNodesWithoutPartner(); break;
    default: break;
    }
}

void TransferCase::makeCloud()
{
    Random random(options.seed + 1);
    otherPoints.resize(3 * static_cast<std::size_t>(options.nbPoints));
    std::ranges::generate(otherPoints, [&] { return static_cast<float>(random.real(0.0, 1.0)); });
}

void TransferCase::placeGaussPoints()
{
    ModelClass model;
    model.init(ModelKind::mesh, target.nbElts(), target.nbNodes(), target.nodeCoords(), target.eltNodes.data(),
               target.eltTypes.data(), static_cast<int>(target.matlStates.size()), target.matlIdPerElt.data(),
               target.matlStates.data());
    otherPoints.reserve(3 * static_cast<std::size_t>(target.nbGaussPoints()));
    for (int elt = 0; elt < target.nbElts(); ++elt)
    {
        for (int gaussPoint = 0; gaussPoint < model.nbGaussPointsOfElt(elt); ++gaussPoint)
        {
            const Vector3 position = model.gaussPointPosition(elt, gaussPoint);
            otherPoints.insert(otherPoints.end(), position.begin(), position.end());
        }
    }
}

void TransferCase::enlargeTarget()
{
    const double factor = 1.0 + 2.0 * overhang / itsNbSourceCells;
    for (float& coordinate : target.coords)
    {
        coordinate = static_cast<float>(0.5 + factor * (static_cast<double>(coordinate) - 0.5));
    }
}

/// A node belongs to the material of its first element.
void TransferCase::markNodesWithoutPartner()
{
    constexpr char notSeen = 2;
    hasNoPartner.assign(static_cast<std::size_t>(target.nbNodes()), notSeen);
    for (std::size_t elt = 0; elt < target.eltNodes.size(); ++elt)
    {
        const int* end = elt + 1 < target.eltNodes.size() ? target.eltNodes[elt + 1]
                                                          : target.connectivity.data() + target.connectivity.size();
        for (const int* node = target.eltNodes[elt]; node != end; ++node)
        {
            char& mark = hasNoPartner[static_cast<std::size_t>(*node)];
            mark = mark == notSeen ? static_cast<char>(target.matlIdPerElt[elt]) : mark;
        }
    }
}

void TransferCase::assess(const FieldValues& result, std::span<const float> positions, Measurement& measurement) const
{
    measurement.nbPoints = static_cast<std::int64_t>(result.scalar.size());
    measurement.nbNotFound = 0;
    double largest = 0.0;
    for (std::size_t point = 0; point < result.scalar.size(); ++point)
    {
        const std::array<double, interpolatedComponents> values{
            result.scalar[point], result.vector[3 * point], result.vector[3 * point + 1], result.vector[3 * point + 2]};
        const bool isFound = values[0] != 0.0 && values[0] < 0.5 * static_cast<double>(notComputed);
        if (!isFound)
        {
            ++measurement.nbNotFound;
            continue;
        }
        const float* position = &positions[3 * point];
        const bool isPropagated = !hasNoPartner.empty() && hasNoPartner[point] == 1;
        if (isPropagated || !isInUnitCube(position))
        {
            continue;
        }
        for (std::size_t component = 0; component < values.size(); ++component)
        {
            const double error = std::fabs(values[component] - expectedValue(component, position));
            // A value that is not a number must not pass as no error.
            largest = error <= largest ? largest : std::isnan(error) ? std::numeric_limits<double>::infinity() : error;
        }
    }
    measurement.largestError = largest;
}

double TransferCase::nearMissReach() const
{
    return 1.0 / itsNbSourceCells;
}

double TransferCase::errorLimit() const
{
    // Reference coordinates are accepted a thousandth of an element off. So a point on a face may be found just outside
    // of both elements; as a near miss it takes values of a place up to eight thousandths of a cell away. The faces of
    // the library's pyramids do not quite meet where their bases are not parallelograms: a point in such a gap takes a
    // value from the element with the nearest centre, which may be half a cell away. The steepest slope is 0.74.
    const bool hasPyramids = options.mesh == MeshKind::pyramids || options.mesh == MeshKind::mix;
    const double elementFraction = hasPyramids ? 0.4 : 0.006;
    return 1e-6 + elementFraction / itsNbSourceCells;
}

bool TransferCase::isEveryPointInside() const
{
    const bool hasPyramids = options.mesh == MeshKind::pyramids || options.mesh == MeshKind::mix;
    return options.target != TargetKind::nearMiss && !(hasPyramids && options.target == TargetKind::cloud);
}
} // namespace benchmarks
