/// What is transferred: a source mesh with linear fields, target points, and what the result must be.
#ifndef VELTRANE_BENCHMARKS_TRANSFER_CASE_H
#define VELTRANE_BENCHMARKS_TRANSFER_CASE_H

#include "GeneratedMesh.h"
#include "Measurement.h"

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace benchmarks
{
enum class TargetKind
{
    nodes,       ///< nodes of another mesh of the same kind, in mesh order
    gaussPoints, ///< its Gauss points
    cloud,       ///< random points
    nearMiss,    ///< nodes of a mesh that is slightly larger than the source
    propagation, ///< nodes, a quarter of them in a material without partner, filled by propagation
    renumbered   ///< the source itself, renumbered: correspondences
};

std::string_view nameOf(TargetKind kind);

struct CaseOptions
{
    MeshKind mesh = MeshKind::tetrahedra;
    TargetKind target = TargetKind::nodes;
    std::int64_t nbSourceElts = 0; ///< about; not for renumbered, whose source has `nbPoints` nodes
    std::int64_t nbPoints = 0;     ///< about
    double distortion = 0.15;
    std::uint32_t seed = 1;
};

/// What the tables call it.
std::string titleOf(const CaseOptions& options);

/// The host's field values: a scalar and a vector, double precision.
struct FieldValues
{
    explicit FieldValues(std::size_t nbLocations);

    std::vector<double> scalar;
    std::vector<double> vector; ///< three components per location
};

class TransferCase
{
public:
    explicit TransferCase(const CaseOptions& options);

    /// What stands in a result until a value is written; also the fields' default value.
    static constexpr float notComputed = 1e30F;
    static constexpr int interpolatedComponents = 4;

    std::string title() const { return titleOf(options); }
    std::span<const float> points() const { return isMeshOfNodes() ? target.coords : otherPoints; }
    std::int64_t nbPoints() const { return static_cast<std::int64_t>(points().size() / 3); }
    int nbTargetElts() const { return target.nbElts(); }

    /// Counts points, and among them those without a value, and finds the largest error of the others.
    void assess(const FieldValues& result, Measurement& measurement) const { assess(result, points(), measurement); }
    /// The same for values at other points than the case's own.
    void assess(const FieldValues& result, std::span<const float> positions, Measurement& measurement) const;

    /// Distance within which a point outside the source takes the nearest element.
    double nearMissReach() const;
    /// The largest error that a correct engine makes.
    double errorLimit() const;
    /// Whether the source holds every point, so that every engine must find it.
    bool isEveryPointInside() const;
    /// Whether this library must give every point a value: in a mesh, near misses take the nearest element.
    bool isEveryPointFound() const { return isEveryPointInside() || options.target != TargetKind::cloud; }

    CaseOptions options;
    GeneratedMesh source;
    FieldValues sourceFields{0};
    GeneratedMesh target;           ///< empty for a cloud
    std::vector<float> otherPoints; ///< Gauss points or cloud; in a renumbered mesh the Gauss points too
    std::vector<char> hasNoPartner; ///< per point, 1 or 0, in a propagation; empty otherwise
    std::vector<int> originalNode;  ///< per target node, in a renumbered mesh
    std::vector<int> originalElt;

private:
    bool isMeshOfNodes() const
    {
        return options.target != TargetKind::gaussPoints && options.target != TargetKind::cloud;
    }
    MeshOptions meshOptions(int nbCells, std::uint32_t seed) const;
    void makeSource();
    void makeTarget();
    void makeCloud();
    void placeGaussPoints();
    void enlargeTarget();
    void markNodesWithoutPartner();

    int itsNbSourceCells = 0;
};

/// The engines of this library: the exported call with and without a callback; for a propagation also with the default
/// at the nodes that would be propagated to; for a renumbered mesh also to its Gauss points, and both correspondences.
std::vector<Engine> veltraneEngines(const TransferCase& transfer);
/// VTK on one thread; none if this program was built without it.
std::vector<Engine> vtkEngines(const TransferCase& transfer);
/// What no implementation of the same algorithm undercuts by much.
std::vector<Engine> limitEngines(const TransferCase& transfer);
} // namespace benchmarks

#endif
