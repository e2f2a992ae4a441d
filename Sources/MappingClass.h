/// The mapping object of one call: its models, fields, grid, settings and outcome.
///
/// An entry point constructs it, hands over the caller's arrays, runs one computation and reads the outcome. It is a
/// façade: what it lets run are the units of Search/ and Map/, which know models, fields and points; what it adds is
/// the host, with its callback, its texts and the files in its current directory.
#ifndef VELTRANE_MAPPING_CLASS_H
#define VELTRANE_MAPPING_CLASS_H

#include "BucketSpaceClass.h"
#include "ComputationRun.h"
#include "FieldsSetClass.h"
#include "Map/EngineRules.h"
#include "Map/TargetPoints.h"
#include "Map/Weights.h"
#include "MappingStringUtilities.h"
#include "ModelClass.h"
#include "Search/PointBatch.h"

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

    float itsBucketFactor = SearchTuning{}.bucketFactor;
    float itsBoxMarginRatio = SearchTuning{}.boxMarginRatio;
    float itsRefCoordTolerance = SearchTuning{}.refCoordTolerance;
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

    /// Takes over an error text, which it releases, and a code.
    void adoptErrorText(char* text, int code);

private:
    // What the computations share (MappingSetup).
    void fail(MessageBuffer& buffer, const char* text);
    bool createElementBoxes(ComputationRun& run);
    bool allocateBoxes(BoxTable& boxes, const ModelClass& model, const char* tableName, ComputationRun& run);
    bool allocatePerNode(OwnedArray<int>& table, const ModelClass& model, const char* tableName, ComputationRun& run);
    bool buildBucketSpace(BucketSpaceClass::Mode mode, float initialBucketSize);
    float meanRefBoxSize() const;
    Target target() const;
    bool allocateBatch(PointBatch& batch, std::int64_t nbPoints, ComputationRun& run);
    LocatedPoint takeLocated(const PointBatch& batch, std::size_t i);

    // A transfer (MappingInterpolation, MappingPointLocation).
    bool averageGaussPointFields();
    void scanTargetLocations();
    bool assignTargetMaterials(ComputationRun& run);
    std::int64_t countTargetPoints() const;
    template <class Cursor>
    bool interpolateAt(Location pointKind, ComputationRun& run, ProgressCounter& progress, Cursor cursor);
    void interpolateLocatedPoint(Location pointKind, const TargetPoint& point, LocatedPoint located, int& farOutside);
    bool locateInMesh(LocatedPoint& located, Location pointKind, const TargetPoint& point, int& farOutside);
    bool locateInCloud(const LocatedPoint& located, int& farOutside);
    void countInversion(const LocatedPoint& located);
    bool countFarPoint(Location pointKind, ComputationRun& run, std::int64_t index);
    bool treatFarNodes();
    void fillFarNodes(float (*valueFor)(const FieldClass&));
    void prefetchAhead(std::span<const LocatedPoint> located) const;

    // The correspondences (MappingNodeCorrespondence, MappingGaussPointCorrespondence).
    bool assignStatesPerNode(ComputationRun& run);
    bool matchGaussPointsOfElt(ComputationRun& run, ProgressCounter& progress, int elt, int refElt, float tolerance);
    void failGaussPointMatching(ComputationRun& run);

    void readTuningFile(const char* fileName);

    SurveyedBoxes itsSurveyedBoxes;
    std::optional<PointLocator> itsPointLocator; ///< made on first use, when boxes and grid are there
    float itsRefBoxSizeSum = 0.0F;               ///< extents of the inflated source boxes
};

#endif
