#include "ModelClass.h"

#include "MappingStringUtilities.h"

#include <algorithm>

namespace
{
constexpr const char* unitName = "ModelClass";

int matlStateClass(int matlState)
{
    switch (matlState)
    {
    case 1:
    case 2:
    case 3:
    case 7:
    case 8: return 1;
    case 0:
    case 4:
    case 5:
    case 6: return 2;
    default: return 2;
    }
}
} // namespace

void ModelClass::init(ModelKind kind, int nbElts, int nbNodes, const float (*nodeCoords)[3],
                      const int* const* connectivity, const int* eltTypes, int nbMatls, const int* matlIdPerItem,
                      const int* matlStates)
{
    itsKind = kind;
    itsNbElts = nbElts;
    itsNbNodes = nbNodes;
    itsNodeCoords = nodeCoords;
    itsConnectivity = connectivity;
    itsEltTypes = eltTypes;
    itsNbMatls = nbMatls;
    itsMatlIdPerItem = matlIdPerItem;
    itsMatlStates = matlStates;
    if (nbMatls == 0)
    {
        endProcess("Error in %s file at line %d: no material in this model \n", unitName, 76);
    }
    if (!itsMatlStateClasses.allocate(nbMatls))
    {
        endProcess("Error in %s file at line %d: impossible to allocate an integer table \n", unitName, 84);
    }
    std::transform(matlStates, matlStates + nbMatls, itsMatlStateClasses.get(), matlStateClass);
}

void ModelClass::countEltsPerNode()
{
    if (itsEltNbPerNode)
    {
        endProcess("Error in %s file at line %d: itsEltNbPerNode already calculated.\n", unitName, 119);
    }
    if (!itsEltNbPerNode.allocate(itsNbNodes))
    {
        endProcess("Error in %s file at line %d: impossible to allocate itsEltNbPerNode \n", unitName, 127);
    }
    std::fill_n(itsEltNbPerNode.get(), itsNbNodes, 0);
    for (int elt = 0; elt < itsNbElts; ++elt)
    {
        const int nbNodes = nbNodesOfElt(elt);
        for (int i = 0; i < nbNodes; ++i)
        {
            ++itsEltNbPerNode[itsConnectivity[elt][i]];
        }
    }
}

Vector3 ModelClass::gaussPointPosition(int elt, int gaussPoint) const
{
    const int type = itsEltTypes[elt];
    if (type >= nbTypeCodes && itsAdmitsAllKinds)
    {
        return gaussPointPositionOfOtherKind(elt, gaussPoint);
    }
    const int nbNodes = itsFEUtilities.nbNodes(type);
    Vector3 position{};
    for (int i = 0; i < nbNodes; ++i)
    {
        const float shape = itsFEUtilities.itsShapeValuesAtGaussPoints[type][i][gaussPoint];
        const float(&coords)[3] = itsNodeCoords[itsConnectivity[elt][i]];
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            position[axis] += shape * coords[axis];
        }
    }
    return position;
}

Vector3 ModelClass::gaussPointPositionOfOtherKind(int elt, int gaussPoint) const
{
    Vector3 position{};
    visitElementKind(itsEltTypes[elt],
                     [&]<class Kind>(Kind)
                     {
                         const ReferencePoint& point = gaussPointOf<Kind>(itsGaussRule, gaussPoint);
                         const Vector3 rounded{single(point[0]), single(point[1]), single(point[2])};
                         position =
                             physicalPosition<Kind>(gatherNodes<Kind>(itsConnectivity[elt], itsNodeCoords), rounded);
                     });
    return position;
}

Inversion ModelClass::referenceCoordinates(int elt, const float* box, const Vector3& point, float precisionFactor) const
{
    const Inversion inversion = inversionIn(elt, box, point, precisionFactor);
    if (inversion.result == Inversion::singular)
    {
        leaveOnSingularJacobian(elt);
    }
    return inversion;
}

Inversion ModelClass::inversionIn(int elt, const float* box, const Vector3& point, float precisionFactor) const
{
    Inversion inversion;
    if (elt == -1)
    {
        return inversion;
    }
    const bool known =
        hasShapeFunctionsOfElt(elt) &&
        visitElementKind(itsEltTypes[elt],
                         [&]<class Kind>(Kind)
                         {
                             inversion = invertPoint<Kind>(gatherNodes<Kind>(itsConnectivity[elt], itsNodeCoords), box,
                                                           point, precisionFactor);
                         });
    if (!known)
    {
        FEUtilities::shapeFunctions(itsEltTypes[elt], inversion.referenceCoords, nullptr); // leaves
    }
    return inversion;
}
