#include "ReferenceTransfer.h"

#include "ReferenceElements.h"
#include "ReferenceFields.h"
#include "ReferenceGrid.h"
#include "ReferenceLocation.h"

#include <cstddef>
#include <cstdio>

namespace reference
{

namespace
{

/// Source values at or below this are undefined, and what is made from them is written as the second value.
constexpr float undefinedLimit = static_cast<float>(-8.888e13);
constexpr float undefinedResult = static_cast<float>(-9.999e13);
static_assert(undefinedLimit == -88880002891776.0F && undefinedResult == -99990001156096.0F);

enum PointKind
{
    atNode = 1,
    atGaussPoint = 2
};

constexpr int atElement = 3;

bool isOneOf(int type, const std::vector<int>& types)
{
    for (const int admitted : types)
    {
        if (type == admitted)
        {
            return true;
        }
    }
    return false;
}

class Transfer
{
public:
    Transfer(const TransferRequest& request, TargetKind targetKind)
        : itsRequest(request), itsTarget(request.target), itsTargetKind(targetKind),
          itsConversation(request.callback, "Interpolation cancelled.\n")
    {
    }

    Outcome run();

private:
    bool isMesh() const { return itsTargetKind == TargetKind::mesh; }
    bool isSelected(int matl) const { return itsRequest.targetMatlMappingFlags[matl] == 1; }
    const FieldStruct& refField(int i) const { return itsRequest.refFields.fields[i]; }
    const FieldStruct& targetField(int i) const { return itsRequest.targetFields.fields[i]; }
    int nbTargetFields() const { return itsRequest.targetFields.nbFields; }

    /// Whether a target field exists on materials of a state class.
    bool existsOn(const FieldStruct& field, int matlClass) const
    {
        return !(field.matlStateFlag == 1 && matlClass == 2);
    }

    void checkRequest() const;
    void interpolate();
    void assignMaterialsToNodes();
    int countTargetPoints() const;
    void interpolateNodes(int total);
    void interpolateGaussPoints(int total);
    bool interpolateAtPoint(PointKind kind, int row, const Vec3& point, int matl);
    Location nearMiss(PointKind kind, const Vec3& point, int matlState);
    void evaluateFields(PointKind kind, int row, int matlClass, int element, const std::vector<float>& shape);
    void count(const Inversion& inversion);
    void fillFarNodesWithDefaults();
    void propagate();
    void fillWithDefaultValue();
    std::string statisticsLog() const;

    const TransferRequest& itsRequest;
    const MeshArrays& itsTarget;
    TargetKind itsTargetKind;
    Conversation itsConversation;
    Observations itsSeen;

    SearchableMesh itsSource;
    std::vector<std::vector<float>> itsNodeAverages; ///< per source field, empty for a field at nodes
    bool itsHasNodeFields = false;
    bool itsHasGaussPointFields = false;
    std::vector<int> itsMatlPerNode;
    std::vector<int> itsStatePerNode;
    std::vector<int> itsFlagPerNode;
    std::vector<bool> itsIsFar;
    int itsNbPoints = 0;
    float itsIterations = 0.0F;
};

Outcome Transfer::run()
{
    checkMaterials(itsRequest.source);
    checkMaterials(itsTarget);
    checkFields(itsRequest.refFields);
    checkFields(itsRequest.targetFields);

    Outcome outcome;
    bool cancelled = false;
    try
    {
        interpolate();
        outcome.message = isMesh() ? "FE 3D Mesh to FE 3D Mesh interpolation normal termination."
                                   : "FE 3D Mesh to point cloud interpolation normal termination.";
    }
    catch (const Stopped& stopped)
    {
        outcome.errorCode = stopped.errorCode;
        outcome.message = stopped.message;
        cancelled = stopped.cancelled;
    }
    itsConversation.notice("Mapping library exit.");
    if (outcome.errorCode > 0)
    {
        fillWithDefaultValue();
    }
    if (outcome.errorCode < 1 && !cancelled)
    {
        outcome.log = statisticsLog();
    }
    itsSeen.cancelled = cancelled;
    itsSeen.interpolatedPoints = itsNbPoints;
    itsSeen.gridDoublings = itsSource.grid.nbDoublings;
    for (const Bucket& bucket : itsSource.grid.buckets)
    {
        if (bucket.state == 2)
        {
            ++itsSeen.bucketsOfEnlargedPass;
        }
    }
    outcome.seen = itsSeen;
    outcome.transcript = itsConversation.transcript();
    return outcome;
}

void Transfer::checkRequest() const
{
    const int mode = itsRequest.interpoMode;
    if (isMesh() && mode != 0 && mode != 1 && mode != 2)
    {
        throw Stopped{1, "Error: interpolation mode number " + std::to_string(mode) +
                             " is unknown for 3D FE to 3D FE transfer."};
    }
    if (!isMesh() && mode != 0 && mode != 1)
    {
        throw Stopped{1, "Error: interpolation mode number " + std::to_string(mode) +
                             " is unknown for 3D FE to points cloud transfer."};
    }
    for (int i = 0; i < itsRequest.refFields.nbFields; ++i)
    {
        if (refField(i).location == atElement)
        {
            throw Stopped{1, "Error: interpolation from a field defined at elements is not implemented yet."};
        }
    }
    for (int i = 0; i < nbTargetFields(); ++i)
    {
        if (targetField(i).location == atElement)
        {
            throw Stopped{1, "Error: interpolation at elements is not implemented yet."};
        }
    }
    for (int e = 0; e < itsRequest.source.nbElts; ++e)
    {
        if (!isOneOf(itsRequest.source.eltTypes[e], {1, 2, 3, 10, 12}))
        {
            throw Stopped{1, "Error: Interpolation from a mesh containing elements different from linear or quadratic "
                             "tetrahedrons, linear hexahedrons, linear wedges and linear pyramids is not possible."};
        }
    }
    for (int e = 0; e < itsTarget.nbElts; ++e)
    {
        if (!isOneOf(itsTarget.eltTypes[e], {1, 2, 3, 10, 6, 7, 12}))
        {
            throw Stopped{1, "Error: Interpolation on a mesh containing elements different from\nlinear or quadratic "
                             "tetrahedrons, linear hexahedrons, linear wedges, linear pyramids,\nlinear triangular "
                             "elements, linear quadrilateral element\nis not possible."};
        }
    }
}

void Transfer::interpolate()
{
    checkRequest();
    itsConversation.begin(isMesh() ? "FE 3D mesh to FE 3D mesh interpolation"
                                   : "FE 3D mesh to points cloud interpolation");
    itsConversation.report(0, "Pretreatment");

    itsSource.mesh = itsRequest.source;
    itsSource.boxes = elementBoxes(itsRequest.source);
    itsSource.precision = itsRequest.tuning.refCoordTolerance;
    std::vector<Box> targetBoxes;
    if (isMesh())
    {
        targetBoxes = elementBoxes(itsTarget);
    }
    for (int i = 0; i < itsRequest.refFields.nbFields; ++i)
    {
        itsNodeAverages.emplace_back();
        if (refField(i).location == atGaussPoint)
        {
            itsNodeAverages.back() = averagedToNodes(refField(i), itsRequest.source);
        }
    }
    for (int i = 0; i < nbTargetFields(); ++i)
    {
        itsHasNodeFields = itsHasNodeFields || targetField(i).location == atNode;
        itsHasGaussPointFields = itsHasGaussPointFields || targetField(i).location == atGaussPoint;
    }
    if (itsHasNodeFields)
    {
        assignMaterialsToNodes();
    }
    itsSource.grid =
        buildGrid(GridItems::elements, itsTargetKind, itsTarget, itsRequest.source, itsSource.boxes, targetBoxes,
                  itsRequest.targetMatlMappingFlags, meanBoxSize(itsSource.boxes), itsRequest.tuning);

    itsConversation.report(5, "Computation");
    const int total = countTargetPoints();
    if (total == 0)
    {
        throw Stopped{1, "There is no target point where fields should be interpolated.\n"};
    }
    if (itsHasNodeFields)
    {
        interpolateNodes(total);
    }
    if (itsSeen.nodesFar > 0 && itsRequest.interpoMode == 1)
    {
        fillFarNodesWithDefaults();
    }
    if (itsSeen.nodesFar > 0 && itsRequest.interpoMode == 2)
    {
        propagate();
    }
    if (itsHasGaussPointFields)
    {
        interpolateGaussPoints(total);
    }
    itsIterations = itsIterations / static_cast<float>(itsNbPoints);
    itsConversation.reportEnd("Interpolation terminated successfully.");
}

/// The first element that reaches a node decides about its material, unless that material's state code is -1, which
/// also means "not assigned".
void Transfer::assignMaterialsToNodes()
{
    itsMatlPerNode.assign(index(itsTarget.nbNodes), -1);
    itsStatePerNode.assign(index(itsTarget.nbNodes), -1);
    itsFlagPerNode.assign(index(itsTarget.nbNodes), 0);
    const auto assign = [this](int node, int matl)
    {
        itsMatlPerNode[index(node)] = matl;
        itsStatePerNode[index(node)] = itsTarget.matlTypes[matl];
        itsFlagPerNode[index(node)] = itsRequest.targetMatlMappingFlags[matl];
    };
    if (!isMesh())
    {
        for (int i = 0; i < itsTarget.nbNodes; ++i)
        {
            assign(i, itsTarget.matlIdPerElt[i]);
        }
        return;
    }
    for (int e = 0; e < itsTarget.nbElts; ++e)
    {
        for (int n = 0; n < nodeCount(itsTarget.eltTypes[e]); ++n)
        {
            const int node = itsTarget.connectivity[e][n];
            if (itsStatePerNode[index(node)] == -1)
            {
                assign(node, itsTarget.matlIdPerElt[e]);
            }
        }
    }
}

int Transfer::countTargetPoints() const
{
    int total = 0;
    if (itsHasNodeFields)
    {
        for (const int flag : itsFlagPerNode)
        {
            if (flag == 1)
            {
                ++total;
            }
        }
    }
    if (itsHasGaussPointFields)
    {
        for (int e = 0; e < itsTarget.nbElts; ++e)
        {
            if (isSelected(itsTarget.matlIdPerElt[e]))
            {
                total += gaussPointCount(itsTarget.eltTypes[e]);
            }
        }
    }
    return total;
}

void Transfer::interpolateNodes(int total)
{
    itsIsFar.assign(index(itsTarget.nbNodes), false);
    for (int i = 0; i < itsTarget.nbNodes; ++i)
    {
        if (itsFlagPerNode[index(i)] != 1)
        {
            continue;
        }
        if (!interpolateAtPoint(atNode, i, nodePosition(itsTarget, i), itsMatlPerNode[index(i)]))
        {
            ++itsSeen.nodesFar;
            itsIsFar[index(i)] = true;
        }
        itsConversation.pointDone(total);
    }
}

void Transfer::interpolateGaussPoints(int total)
{
    // The number of a Gauss point counts those of all elements, selected or not.
    int number = 0;
    for (int e = 0; e < itsTarget.nbElts; ++e)
    {
        const int matl = itsTarget.matlIdPerElt[e];
        for (int g = 0; g < gaussPointCount(itsTarget.eltTypes[e]); ++g)
        {
            if (isSelected(matl))
            {
                if (!interpolateAtPoint(atGaussPoint, number, gaussPointPosition(itsTarget, e, g), matl))
                {
                    ++itsSeen.gaussPointsFar;
                }
                itsConversation.pointDone(total);
            }
            ++number;
        }
    }
}

/// False when the point is far outside the source.
bool Transfer::interpolateAtPoint(PointKind kind, int row, const Vec3& point, int matl)
{
    const int matlState = itsTarget.matlTypes[matl];
    const int matlClass = stateClass(itsTarget, matl);
    Location location = locate(itsSource, point, matlState);
    const bool isMiss = location.element == -1;
    if (!isMiss)
    {
        count(location.inversion);
    }
    else if (isMesh())
    {
        location = nearMiss(kind, point, matlState);
    }

    if (location.element == -1)
    {
        if (itsRequest.interpoMode == 0)
        {
            throw Stopped{2, isMesh() ? "Some regions of the target model are outside the source model."
                                      : "Some points of the points cloud target model are outside the source model."};
        }
        if (isMesh() && kind == atGaussPoint)
        {
            for (int i = 0; i < nbTargetFields(); ++i)
            {
                if (targetField(i).location == atGaussPoint && existsOn(targetField(i), matlClass))
                {
                    writeAll(targetField(i), row, 0.0F);
                }
            }
        }
        return false;
    }

    std::vector<float> shape = shapeFunctions(itsRequest.source.eltTypes[location.element], location.inversion.xi);
    if (isMiss)
    {
        float sum = 0.0F;
        for (float& value : shape)
        {
            if (value < 0.0F)
            {
                value = 0.0F;
            }
            if (value > 1.0F)
            {
                value = 1.0F;
            }
            sum = sum + value;
        }
        if (sum == 0.0F)
        {
            throw Stopped{1, "Error in MappingClass file at line 1937: division by zero ."};
        }
        for (float& value : shape)
        {
            value = value / sum;
        }
    }
    evaluateFields(kind, row, matlClass, location.element, shape);
    return true;
}

/// A mesh target's point in no element: the element with the nearest centre serves, if the inversion converges in it.
Location Transfer::nearMiss(PointKind kind, const Vec3& point, int matlState)
{
    if (kind == atNode)
    {
        ++itsSeen.nodesOutside;
    }
    else
    {
        ++itsSeen.gaussPointsOutside;
    }
    Location location;
    location.element = nearestElement(itsSource, point, matlState);
    if (location.element == -1)
    {
        return {};
    }
    location.inversion = invertPoint(itsRequest.source, location.element, itsSource.boxes[index(location.element)],
                                     point, itsSource.precision);
    if (location.inversion.result == -1)
    {
        ++itsSeen.inversionsWithoutConvergence;
        return {};
    }
    count(location.inversion);
    return location;
}

void Transfer::count(const Inversion& inversion)
{
    itsIterations = itsIterations + static_cast<float>(inversion.iterations);
    ++itsNbPoints;
}

void Transfer::evaluateFields(PointKind kind, int row, int matlClass, int element, const std::vector<float>& shape)
{
    for (int i = 0; i < itsRequest.refFields.nbFields; ++i)
    {
        if (targetField(i).location != kind || !existsOn(targetField(i), matlClass))
        {
            continue;
        }
        const int nbComponents = refField(i).nbComponents;
        const std::vector<float>& averages = itsNodeAverages[index(i)];
        for (int c = 0; c < nbComponents; ++c)
        {
            float result = 0.0F;
            for (std::size_t n = 0; n < shape.size(); ++n)
            {
                const long long at =
                    static_cast<long long>(itsRequest.source.connectivity[element][n]) * nbComponents + c;
                const float value = refField(i).location == atGaussPoint ? averages[static_cast<std::size_t>(at)]
                                                                         : read(refField(i), at);
                if (value <= undefinedLimit)
                {
                    result = undefinedResult;
                    ++itsSeen.undefinedValues;
                    break;
                }
                result = result + shape[n] * value;
            }
            write(targetField(i), static_cast<long long>(row) * nbComponents + c, result);
        }
    }
}

void Transfer::fillFarNodesWithDefaults()
{
    for (int i = 0; i < itsTarget.nbNodes; ++i)
    {
        if (!itsIsFar[index(i)] || itsFlagPerNode[index(i)] != 1)
        {
            continue;
        }
        for (int f = 0; f < nbTargetFields(); ++f)
        {
            const FieldStruct& field = targetField(f);
            if (field.location == atNode && existsOn(field, stateClass(itsTarget, itsMatlPerNode[index(i)])))
            {
                writeAll(field, i, field.precision == 1 ? field.defaultValueFloat : field.defaultValueDouble);
            }
        }
    }
}

/// Spreads node values from element to element into the far nodes. The front advances as far as the element order lets
/// it within one sweep.
void Transfer::propagate()
{
    int remaining = itsSeen.nodesFar;
    int previous = -1;
    while (remaining != 0 && remaining != previous)
    {
        previous = remaining;
        ++itsSeen.propagationSweeps;
        for (int e = 0; e < itsTarget.nbElts; ++e)
        {
            const int matl = itsTarget.matlIdPerElt[e];
            if (!isSelected(matl))
            {
                continue;
            }
            std::vector<int> far;
            std::vector<int> filled;
            for (int n = 0; n < nodeCount(itsTarget.eltTypes[e]); ++n)
            {
                const int node = itsTarget.connectivity[e][n];
                (itsIsFar[index(node)] ? far : filled).push_back(node);
            }
            if (far.empty() || filled.empty())
            {
                continue;
            }
            remaining -= static_cast<int>(far.size());
            for (int f = 0; f < nbTargetFields(); ++f)
            {
                const FieldStruct& field = targetField(f);
                if (field.location != atNode || !existsOn(field, stateClass(itsTarget, matl)))
                {
                    continue;
                }
                for (int c = 0; c < field.nbComponents; ++c)
                {
                    float sum = 0.0F;
                    for (const int node : filled)
                    {
                        sum = sum + read(field, static_cast<long long>(node) * field.nbComponents + c);
                    }
                    const float average = sum / static_cast<float>(filled.size());
                    for (const int node : far)
                    {
                        write(field, static_cast<long long>(node) * field.nbComponents + c, average);
                    }
                }
            }
            for (const int node : far)
            {
                itsIsFar[index(node)] = false;
            }
        }
    }
    if (remaining == 0)
    {
        return;
    }
    for (int i = 0; i < itsTarget.nbNodes; ++i)
    {
        if (!itsIsFar[index(i)] || itsFlagPerNode[index(i)] != 1)
        {
            continue;
        }
        for (int f = 0; f < nbTargetFields(); ++f)
        {
            const FieldStruct& field = targetField(f);
            if (field.location == atNode && existsOn(field, stateClass(itsTarget, itsMatlPerNode[index(i)])))
            {
                writeAll(field, i, 0.0F);
            }
        }
    }
    throw Stopped{-1, "Warning: propagation is not possible for nodes located in a region\nthat is not connected to an "
                      "already interpolated region.\nFields are set to zero in these regions.\n"};
}

/// After a failure, everything that was to be computed receives the caller's default value. Gauss points are numbered
/// over the selected elements only.
void Transfer::fillWithDefaultValue()
{
    for (int f = 0; f < nbTargetFields(); ++f)
    {
        const FieldStruct& field = targetField(f);
        if (field.location == atNode && itsHasNodeFields)
        {
            for (int i = 0; i < itsTarget.nbNodes; ++i)
            {
                if (itsFlagPerNode[index(i)] == 1)
                {
                    writeAll(field, i, itsRequest.defaultValue);
                    ++itsSeen.defaultFilledValues;
                }
            }
        }
        if (field.location == atGaussPoint && itsHasGaussPointFields)
        {
            int number = 0;
            for (int e = 0; e < itsTarget.nbElts; ++e)
            {
                if (!isSelected(itsTarget.matlIdPerElt[e]))
                {
                    continue;
                }
                for (int g = 0; g < gaussPointCount(itsTarget.eltTypes[e]); ++g)
                {
                    writeAll(field, number, itsRequest.defaultValue);
                    ++itsSeen.defaultFilledValues;
                    ++number;
                }
            }
        }
    }
}

std::string Transfer::statisticsLog() const
{
    long long used = 0;
    long long unused = 0;
    float items = 0.0F;
    for (const Bucket& bucket : itsSource.grid.buckets)
    {
        if (bucket.state == 1 || bucket.state == 2)
        {
            ++used;
            items = items + static_cast<float>(bucket.items.size());
        }
        else
        {
            ++unused;
        }
    }
    std::string text;
    const auto line = [&text](const char* format, auto value)
    {
        char buffer[1000];
        std::snprintf(buffer, sizeof buffer, format, value);
        text += buffer;
    };
    const auto& nb = itsSource.grid.nbBuckets;
    line("Total number of buckets = %lld\n\n", static_cast<long long>(nb[0]) * nb[1] * nb[2]);
    line("number of target points where interpolation was done = %d\n\n", itsNbPoints);
    line("Average number of iterations for calculating reference coordinates at each target point = %f\n\n\n",
         static_cast<double>(itsIterations));
    line("Total number of used buckets (buckets containing at least one target point and one source element) = "
         "%lld\n\n",
         used);
    line("Total number of unused buckets (buckets containing no target point or no source element) = %lld\n\n", unused);
    line("Average number of elements per used bucket = %f\n\n\n",
         static_cast<double>(items / static_cast<float>(used)));
    if (isMesh())
    {
        line("Total number of target nodes outside the source mesh = %d\n\n", itsSeen.nodesOutside);
        line("Number of target nodes outside the source mesh but close enough for interpolation = %d\n\n",
             itsSeen.nodesOutside - itsSeen.nodesFar);
        line("Number of target nodes far from the source mesh for which fields are set to the default value or are "
             "propagated = %d\n\n\n",
             itsSeen.nodesFar);
        line("Total number of target gauss points outside the source mesh = %d\n\n", itsSeen.gaussPointsOutside);
        line("Number of target gauss points outside the source mesh but close enough for interpolation = %d\n\n",
             itsSeen.gaussPointsOutside - itsSeen.gaussPointsFar);
        line("Number of target gauss points far from the source mesh (set to zero) = %d\n\n\n", itsSeen.gaussPointsFar);
    }
    return text;
}

} // namespace

Outcome transferMeshToMesh(const TransferRequest& request)
{
    return Transfer(request, TargetKind::mesh).run();
}

Outcome transferMeshToPointCloud(const TransferRequest& request)
{
    return Transfer(request, TargetKind::pointCloud).run();
}

} // namespace reference
