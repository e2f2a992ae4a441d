/// The mapping object of one call: its models, fields, grid, settings and outcome.
///
/// An entry point constructs it, hands over the caller's arrays, runs one computation and reads the outcome. The
/// implementation is a family of files: MappingSetup (what the computations share), MappingInterpolation (the driver of
/// a transfer), MappingPointLocation, MappingEvaluation, MappingPropagation, MappingStatisticsLog, MappingTuning,
/// MappingChecks (what each computation admits), MappingNodeCorrespondence, MappingGaussPointCorrespondence.
#ifndef VELTRANE_MAPPING_CLASS_H
#define VELTRANE_MAPPING_CLASS_H

#include "BucketSpaceClass.h"
#include "FieldsSetClass.h"
#include "MappingStringUtilities.h"
#include "ModelClass.h"
#include "PointLocator.h"

#include <algorithm>
#include <cstdint>
#include <optional>

enum TransferType
{
    noTransfer = 0,
    meshToMesh = 1,
    meshToPointCloud = 2
};

/// What happens at target nodes that are too far from the source mesh to be interpolated.
enum InterpoMode
{
    refuseFarPoints = 0,
    defaultAtFarNodes = 1,
    propagateToFarNodes = 2
};

enum ErrorCode
{
    cancelledOrWarned = -1, ///< cancelled by the host, or done with the propagation warning
    success = 0,
    failure = 1,
    targetOutside = 2
};

/// The texts that distinguish one computation from another.
struct ComputationTexts
{
    const char* name; ///< qualified name, for the message buffer
    const char* title;
    const char* cancelled;
    const char* terminated;
};

/// When progress is due: about once per percent of the points.
class ProgressCounter
{
public:
    /// How the percentage is formed. Hosts know the Gauss-point correspondence to compute it in 32 bits, so that beyond
    /// 21 million points it starts again.
    enum class Arithmetic
    {
        wide,
        wrapping32Bit
    };

    explicit ProgressCounter(std::int64_t total, Arithmetic arithmetic = Arithmetic::wide)
        : itsTotal(total), itsStep(std::max<std::int64_t>(total / 100, 1)), itsArithmetic(arithmetic)
    {
    }

    std::int64_t total() const { return itsTotal; }

    /// Counts one point; true if a report is due after it.
    bool advance() { return ++itsDone % itsStep == 0; }

    /// Percent done, never below the 5 that the preparation counts for.
    int percent() const
    {
        const std::int64_t hundredfold = itsArithmetic == Arithmetic::wrapping32Bit
                                             ? static_cast<std::int32_t>(static_cast<std::uint32_t>(itsDone) * 100U)
                                             : itsDone * 100;
        return std::max(static_cast<int>(hundredfold / itsTotal), 5);
    }

private:
    std::int64_t itsTotal;
    std::int64_t itsStep;
    std::int64_t itsDone = 0;
    Arithmetic itsArithmetic;
};

/// One run of a computation: its texts and its message buffer.
struct ComputationRun
{
    explicit ComputationRun(const ComputationTexts& computationTexts)
        : texts(computationTexts), buffer(computationTexts.name)
    {
    }
    const ComputationTexts& texts;
    MessageBuffer buffer;
};

/// The weights of an element's nodes at a point.
struct ShapeValues
{
    int nbNodes = 0;
    float values[maxNbNodes];
};

class MappingClass
{
public:
    /// Removes an interpoLog.txt left in the current directory by a previous call.
    MappingClass();
    MappingClass(const MappingClass&) = delete;
    MappingClass& operator=(const MappingClass&) = delete;
    virtual ~MappingClass();

    /// Transfers the source fields to the target fields. The outcome is in itsErrorCode and itsErrorMessage.
    void interpolation();

    /// Refuses modes that do not exist for the type of transfer.
    void checkInterpo();
    /// Refuses fields at elements and element types that cannot be interpolated.
    void interpoTests();

    /// Locates one target point and writes the source fields' values there into the target fields.
    ///
    /// \param pointKind       atNodes or atGaussPoints: the target fields that are written
    /// \param pointIndex      location of the point in these fields
    /// \param matlStateClass  state class, 1 or 2, of the target material at the point
    /// \param matlState       its state code: only source elements with the same code hold the point
    /// \param farOutside      1 if the point is too far from the source mesh to be interpolated, else 0
    void interpolationAtPoint(Location pointKind, std::int64_t pointIndex, const Vector3& point, int matlStateClass,
                              int matlState, int& farOutside);

    /// Finds points in the source mesh, once its boxes and the grid are there.
    const PointLocator& pointLocator();

    /// Fills itsRefMeshBaryPerElt; null, or a text that the caller releases.
    char* createBaryPerRefElt();

    /// Spreads node values through the target elements to the far nodes; what cannot be reached becomes 0.
    void nodeFieldsPropagation();

    /// Finds for every selected target node the source node at its place and in a material of its state code, and
    /// writes its number, from 1, into itsNodeCorrespondence. All are matched, or all selected entries are 0.
    void nodToNodCorrespondence();
    /// Refuses element types between whose meshes nodes cannot be matched.
    void nodTonodCorrTests();

    /// Finds for every Gauss point of the selected target elements the source element and its Gauss point at the same
    /// place, and writes their numbers, from 1, into itsGPCorrespondenceA and B. All are matched, or all are 0.
    void GPToGPCorrespondence();
    /// Refuses element types between whose meshes Gauss points cannot be matched.
    void GPToGPCorrTests();

    /// Writes itsDefaultValue to every value that the interpolation was to compute.
    void fillTargetsWithDefault();

    /// Writes interpoLog.txt into the current directory.
    void writeInterpoLog();

    /// Read the optional tuning file of a computation from the current directory.
    void readMappingInputs();
    void readNodToNodInputs();
    void readGPToGPInputs();

    int itsTransferType = noTransfer;
    char itsTitle[256]{};
    char itsStage[256]{};
    int itsProgress = 0;
    int (*itsCallback)(int, char*, char*, int) = nullptr;
    int itsCancelled = 0;
    int itsInterpoMode = refuseFarPoints;
    float itsDefaultValue = 0.0F;
    char* itsErrorMessage = nullptr;
    int itsErrorCode = success;

    ModelClass itsRefMesh;
    ModelClass itsTargetMesh;
    FieldsSetClass itsRefFields;
    FieldsSetClass itsTargetFields;

    OwnedArray<int> itsRefMeshMatlStatePerNode;     ///< -1 until assigned
    const int* itsTargetMatlMappingFlags = nullptr; ///< per target material, 1: map it
    // Per node of a target mesh. For a cloud they are room that is taken and not filled: its points have materials of
    // their own, see matlIdOfTargetNode() and what follows it.
    OwnedArray<int> itsTargetMeshMatlIdPerNode;    ///< -1 until assigned
    OwnedArray<int> itsTargetMeshMatlStatePerNode; ///< -1 until assigned
    OwnedArray<int> itsTargetMeshMappingAtNode;    ///< mapping flag of the node's material; 0 for a node in no element
    BoxTable itsRefMeshBoxPerElt;                  ///< inflated boxes
    BoxTable itsTargetMeshBoxPerElt;               ///< of a mesh target only: room that is taken and not filled
    OwnedArray<float*> itsRefMeshBaryPerElt;       ///< per source element its centre, x, y, z; made on first need
    OwnedArray<float> itsRefMeshBaryValues;

    float itsBucketFactor = single(0.1);
    float itsBoxMarginRatio = single(0.01);
    float itsRefCoordTolerance = single(0.001);
    BucketSpaceClass itsBucketSpace;

    int itsNbTargetNodesOutside = 0;
    int itsNbTargetGPsOutside = 0;
    int itsInterpoAtNodes = 0;
    int itsInterpoAtGPs = 0;
    int itsInterpoAtElts = 0;
    int itsNbTargetNodesFarOutside = 0;
    OwnedArray<unsigned char> itsTargetNodesFarOutside; ///< allocated at the first far node
    int itsNbTargetGPsFarOutside = 0;
    int itsNbInterpolatedPoints = 0;
    float itsMeanIterations = 0.0F; ///< the sum of the iterations until the end of interpolation()

    int* itsNodeCorrespondence = nullptr; ///< the caller's, per target node
    int** itsGPCorrespondenceA = nullptr; ///< the caller's, [target element][Gauss point]: source elements
    int** itsGPCorrespondenceB = nullptr; ///< the same: their Gauss points

private:
    SurveyedBoxes itsSurveyedBoxes;
    std::optional<PointLocator> itsPointLocator; ///< made on first use, when boxes and grid are there
    float itsRefBoxSizeSum = 0.0F; ///< extents of the inflated source boxes, one running sum over elements, then axes

    // What the computations share (MappingSetup).
    void adoptErrorText(char* text, int code);
    void fail(MessageBuffer& buffer, const char* text);
    bool reportStart(ComputationRun& run);
    bool reportStage(ComputationRun& run, const char* stage, int progress);
    bool reportProgress(ComputationRun& run, ProgressCounter& progress);
    void reportTermination(const ComputationRun& run);
    bool callBack(ComputationRun& run);
    bool createElementBoxes(ComputationRun& run);
    bool allocateBoxes(BoxTable& boxes, const ModelClass& model, const char* tableName, ComputationRun& run);
    bool allocatePerNode(OwnedArray<int>& table, const ModelClass& model, const char* tableName, ComputationRun& run);
    template <class Assign>
    static void assignMaterials(const ModelClass& mesh, int elt, int* statePerNode, Assign assign);
    void surveyTarget();
    void surveyTargetNodes();
    float meanRefBoxSize() const;
    bool buildBucketSpace(BucketSpaceClass::Mode mode, float initialBucketSize);
    std::int64_t countTargetGaussPoints() const;
    bool isTargetEltSelected(int elt) const
    {
        return itsTargetMatlMappingFlags[itsTargetMesh.itsMatlIdPerItem[elt]] == 1;
    }

    bool isCloudTarget() const { return itsTargetMesh.itsKind == ModelKind::pointCloud; }
    int matlIdOfTargetNode(int node) const
    {
        return isCloudTarget() ? itsTargetMesh.itsMatlIdPerItem[node] : itsTargetMeshMatlIdPerNode[node];
    }
    int matlStateOfTargetNode(int node) const
    {
        return isCloudTarget() ? itsTargetMesh.matlStateOfItem(node) : itsTargetMeshMatlStatePerNode[node];
    }
    bool isTargetNodeMapped(int node) const
    {
        return (isCloudTarget() ? itsTargetMatlMappingFlags[itsTargetMesh.itsMatlIdPerItem[node]]
                                : itsTargetMeshMappingAtNode[node]) == 1;
    }

    // The interpolation driver (MappingInterpolation).
    bool averageGaussPointFields();
    void scanTargetLocations();
    bool allocateTargetMaterials(ComputationRun& run);
    void assignTargetMaterials();
    std::int64_t countTargetPoints() const;
    bool interpolateAtNodes(ComputationRun& run, ProgressCounter& progress);
    bool interpolateAtGaussPoints(ComputationRun& run, ProgressCounter& progress);
    template <class ForEachPoint>
    bool interpolateAt(Location pointKind, ComputationRun& run, ProgressCounter& progress, ForEachPoint forEachPoint);
    bool countFarPoint(Location pointKind, ComputationRun& run, std::int64_t index);
    bool markFarNode(ComputationRun& run, std::int64_t node);
    bool treatFarNodes();
    void fillFarNodesWithDefaults();
    void fillNodeFields(int node, float (*valueFor)(const FieldClass&));

    // Propagation to far nodes (MappingPropagation).
    bool listOpenElements(OwnedArray<int>& openElts, int& nbOpen) const;
    void fillElement(int elt, int nbFilled);
    void zeroUnreachedNodes();

    // One point (MappingPointLocation, MappingEvaluation).
    template <class ForEachPoint, class Use>
    bool locateInBatches(ComputationRun& run, std::int64_t nbPoints, ForEachPoint forEachPoint, Use use);
    void interpolateLocatedPoint(Location pointKind, const TargetPoint& point, LocatedPoint located, int& farOutside);
    LocatedPoint nearestElement(const TargetPoint& point);
    bool locateInMesh(LocatedPoint& located, Location pointKind, const TargetPoint& point, int& farOutside);
    bool locateInCloud(const LocatedPoint& located, int& farOutside);
    void countInversion(const LocatedPoint& located);
    ShapeValues shapeValuesAt(const LocatedPoint& located) const;
    bool normaliseNearMiss(ShapeValues& shape);
    void zeroGaussPoint(std::int64_t pointIndex, int matlStateClass);
    void prefetchAhead(std::span<const LocatedPoint> located) const;
    void prefetchFields(int elt) const;
    void evaluateFields(Location pointKind, std::int64_t pointIndex, int matlStateClass, const int* nodeNumbers,
                        const ShapeValues& shape);

    // The correspondences (MappingNodeCorrespondence, MappingGaussPointCorrespondence).
    bool assignStatesPerNode(ComputationRun& run);
    int matchingNode(const Vector3& point, int matlState, float tolerance) const;
    void failNodeMatching(ComputationRun& run, int node, float tolerance);
    Vector3 targetEltCentre(int elt) const;
    int matchingGaussPoint(const Vector3& point, int refElt, float tolerance) const;
    bool matchGaussPointsOfElt(ComputationRun& run, ProgressCounter& progress, int elt, int refElt, float tolerance);
    void failGaussPointMatching(ComputationRun& run);

    void readTuningFile(const char* fileName);
};

/// Gives an element's nodes its state code, unless an earlier element did: the first element that reaches a node
/// decides. A material of state -1 leaves the node open to later elements, since -1 also means not assigned.
/// `assign(node)` is told of every node that takes the element's material.
template <class Assign>
void MappingClass::assignMaterials(const ModelClass& mesh, int elt, int* statePerNode, Assign assign)
{
    const int matlState = mesh.matlStateOfItem(elt);
    const int nbNodes = mesh.nbNodesOfElt(elt);
    for (int i = 0; i < nbNodes; ++i)
    {
        const int node = mesh.itsConnectivity[elt][i];
        if (statePerNode[node] == -1)
        {
            statePerNode[node] = matlState;
            assign(node);
        }
    }
}

/// Locates at most `nbPoints` points in batches: all of a batch are located, then they are used one after another, so
/// that errors, progress and cancellation come in the order of the points. `forEachPoint(visit)` names the points, and
/// stops when `visit` returns false; `use(point, located)` returns false to end the run. False if the run has ended.
template <class ForEachPoint, class Use>
bool MappingClass::locateInBatches(ComputationRun& run, std::int64_t nbPoints, ForEachPoint forEachPoint, Use use)
{
    OwnedArray<TargetPoint> points;
    OwnedArray<LocatedPoint> located;
    OwnedArray<BatchEntry> order;
    const std::int64_t capacity = std::min(nbPoints, batchCapacity);
    if (!points.allocate(capacity) || !located.allocate(capacity) || !order.allocate(2 * capacity))
    {
        fail(run.buffer,
             "Allocation of the target points is not possible in MappingClass::interpolation() function.\n");
        return false;
    }
    const PointLocator& locator = pointLocator();
    std::size_t size = 0;
    const auto finishBatch = [&]
    {
        const bool isJumping = locator.locate({points.get(), size}, {located.get(), size}, {order.get(), 2 * size});
        for (std::size_t i = 0; i < size; ++i)
        {
            if (isJumping)
            {
                prefetchAhead({located.get() + i, size - i});
            }
            if (located.get()[i].isSingular)
            {
                locator.search(points.get()[i].position, points.get()[i].matlState); // ends the process
            }
            if (!use(points.get()[i], located.get()[i]))
            {
                return false;
            }
        }
        size = 0;
        return true;
    };
    const bool isComplete = forEachPoint(
        [&](const TargetPoint& point)
        {
            points.get()[size++] = point;
            return size < static_cast<std::size_t>(capacity) || finishBatch();
        });
    return isComplete && finishBatch();
}

#endif
