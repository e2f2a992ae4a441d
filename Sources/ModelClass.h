/// One finite-element mesh or point cloud of a host, borrowed for the length of a call.
#ifndef VELTRANE_MODEL_CLASS_H
#define VELTRANE_MODEL_CLASS_H

#include "Allocation.h"
#include "FEutilities.h"
#include "Search/ReferenceCoordinates.h"

enum class ModelKind
{
    none = 0,
    mesh = 1,
    pointCloud = 3
};

class ModelClass
{
public:
    ModelClass() = default;
    virtual ~ModelClass() = default;

    /// Takes the host's arrays. A point cloud has 0 elements, no connectivity and no types, and one material per point.
    /// A model without materials ends the process.
    void init(ModelKind kind, int nbElts, int nbNodes, const float (*nodeCoords)[3], const int* const* connectivity,
              const int* eltTypes, int nbMatls, const int* matlIdPerItem, const int* matlStates);

    /// Counts the elements of each node into itsEltNbPerNode. To count twice ends the process.
    void countEltsPerNode();

    int nbNodesOfElt(int elt) const
    {
        const int type = itsEltTypes[elt];
        return type >= nbTypeCodes && itsAdmitsAllKinds ? nbNodesOfKind(type) : itsFEUtilities.nbNodes(type);
    }
    int nbGaussPointsOfElt(int elt) const
    {
        const int type = itsEltTypes[elt];
        return type >= nbTypeCodes && itsAdmitsAllKinds ? nbGaussPointsOfKind(type, itsGaussRule)
                                                        : itsFEUtilities.nbGaussPoints(type);
    }
    /// Whether fields can be interpolated in the element.
    bool hasShapeFunctionsOfElt(int elt) const
    {
        const int type = itsEltTypes[elt];
        return (itsAdmitsAllKinds || type < nbTypeCodes) && hasShapeFunctions(type);
    }

    /// State code of an item's material: of an element of a mesh, of a point of a cloud.
    int matlStateOfItem(int item) const { return itsMatlStates[itsMatlIdPerItem[item]]; }
    /// State class, 1 or 2, of an item's material.
    int matlStateClassOfItem(int item) const { return itsMatlStateClasses[itsMatlIdPerItem[item]]; }

    Vector3 nodePosition(int node) const
    {
        return {itsNodeCoords[node][0], itsNodeCoords[node][1], itsNodeCoords[node][2]};
    }

    /// Position of an element's Gauss point, both numbered from 0; the origin in types without shape functions.
    Vector3 gaussPointPosition(int elt, int gaussPoint) const;

    /// Reference coordinates of `point` in element `elt`, whose inflated box is `box` (minimum, maximum); see
    /// invertPoint. Element -1 is no element: not converged. A type without shape functions and a singular Jacobian
    /// leave the computation.
    Inversion referenceCoordinates(int elt, const float* box, const Vector3& point, float precisionFactor) const;

    /// The same, except that a singular Jacobian is returned as such.
    Inversion inversionIn(int elt, const float* box, const Vector3& point, float precisionFactor) const;

    ModelKind itsKind = ModelKind::none;
    bool itsAdmitsAllKinds = false; ///< not only type codes; elements of other kinds count no nodes otherwise
    GaussRuleChoice itsGaussRule = GaussRuleChoice::full; ///< of kinds that have two
    int itsNbElts = 0;
    int itsNbNodes = 0;
    const float (*itsNodeCoords)[3] = nullptr;
    const int* const* itsConnectivity = nullptr;
    const int* itsEltTypes = nullptr;
    FEUtilities itsFEUtilities;
    int itsNbMatls = 0;
    const int* itsMatlIdPerItem = nullptr;
    const int* itsMatlStates = nullptr;
    OwnedArray<int> itsMatlStateClasses;
    OwnedArray<int> itsEltNbPerNode;

private:
    Vector3 gaussPointPositionOfOtherKind(int elt, int gaussPoint) const;
};

#endif
