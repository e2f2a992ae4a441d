#include "ElementBoxes.h"

#include "../Elements/ControlPoints.h"

namespace
{
template <class Kind> BoxLanes boxLanesOfCurved(const float (*nodeCoords)[3], const int* nodeNumbers)
{
    BoxLanes box = boxLanesOfNodes<Kind::nbNodes>(nodeCoords, nodeNumbers);
    forEachControlPoint<Kind, CornerLanes>([&](std::size_t node) { return cornerLanes(nodeCoords[nodeNumbers[node]]); },
                                           [&](const CornerLanes& position) {
                                               box = {min(position, box.low), max(position, box.high)};
                                           });
    return box;
}
} // namespace

BoxLanes boxLanesOfCurvedElt(const ModelClass& model, int elt)
{
    BoxLanes box{};
    visitElementKind(model.itsEltTypes[elt],
                     [&]<class Kind>(Kind)
                     {
                         if constexpr (CurvedElementKind<Kind>)
                         {
                             box = boxLanesOfCurved<Kind>(model.itsNodeCoords, model.itsConnectivity[elt]);
                         }
                     });
    return box;
}
