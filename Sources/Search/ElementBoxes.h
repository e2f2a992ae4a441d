/// The boxes of a model's elements.
#ifndef VELTRANE_ELEMENT_BOXES_H
#define VELTRANE_ELEMENT_BOXES_H

#include "../ModelClass.h"
#include "BoundingBox.h"

/// The box of the nodes and control points of an element of a curved kind.
BoxLanes boxLanesOfCurvedElt(const ModelClass& model, int elt);

/// A box that holds an element: that of its nodes, and of its control points where it may reach beyond these. Of a type
/// without nodes a box without extent at a place that no point reaches.
inline BoxLanes boxLanesOfElt(const ModelClass& model, int elt)
{
    const int* nodeNumbers = model.itsConnectivity[elt];
    const float(*nodeCoords)[3] = model.itsNodeCoords;
    const int nbNodes = model.nbNodesOfElt(elt);
    switch (nbNodes)
    {
    case 0: return {CornerLanes(unreachable), CornerLanes(unreachable)};
    case 4: return boxLanesOfNodes<4>(nodeCoords, nodeNumbers);
    case 6: return boxLanesOfNodes<6>(nodeCoords, nodeNumbers);
    case 8: return boxLanesOfNodes<8>(nodeCoords, nodeNumbers);
    case 10: return boxLanesOfNodes<10>(nodeCoords, nodeNumbers);
    default: break;
    }
    return nbNodes > maxNbNodesOfTypeCode ? boxLanesOfCurvedElt(model, elt)
                                          : boxLanesOfNodes(nodeCoords, nodeNumbers, nbNodes);
}

/// Adds an element's nodes to a box one by one.
inline void addNodesOfElement(RunningBox& running, const ModelClass& model, int elt)
{
    const int nbNodes = model.nbNodesOfElt(elt);
    for (int i = 0; i < nbNodes; ++i)
    {
        running.add(boxOfPoint(model.itsNodeCoords[model.itsConnectivity[elt][i]]));
    }
}

#endif
