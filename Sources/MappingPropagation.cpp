// Propagation of node fields through the target mesh to the nodes that are far outside the source mesh.
#include "MappingClass.h"

#include <cstdint>

namespace
{
/// The nodes of one target element, told apart by whether they have a value yet.
struct ElementFront
{
    int nbFilled = 0;
    int nbFar = 0;
};

ElementFront frontOf(const ModelClass& mesh, int elt, const unsigned char* isFar)
{
    ElementFront front;
    const int nbNodes = mesh.nbNodesOfElt(elt);
    for (int i = 0; i < nbNodes; ++i)
    {
        ++(isFar[mesh.itsConnectivity[elt][i]] == 1 ? front.nbFar : front.nbFilled);
    }
    return front;
}

/// Gives the element's far nodes the mean of its filled ones, component by component.
void fillFarNodes(FieldClass& field, const ModelClass& mesh, int elt, const unsigned char* isFar, int nbFilled)
{
    const int* nodeNumbers = mesh.itsConnectivity[elt];
    const int nbNodes = mesh.nbNodesOfElt(elt);
    for (int component = 0; component < field.itsNbComponents; ++component)
    {
        const auto indexAt = [&](int i)
        { return static_cast<std::int64_t>(nodeNumbers[i]) * field.itsNbComponents + component; };
        float sum = 0.0F;
        for (int i = 0; i < nbNodes; ++i)
        {
            if (isFar[nodeNumbers[i]] != 1)
            {
                sum += field.value(indexAt(i));
            }
        }
        const float mean = sum / static_cast<float>(nbFilled);
        for (int i = 0; i < nbNodes; ++i)
        {
            if (isFar[nodeNumbers[i]] == 1)
            {
                field.setValue(indexAt(i), mean);
            }
        }
    }
}
} // namespace

// Only selected elements with far nodes matter, and an element whose nodes are all filled is done with: flags are never
// set again. So the sweeps run over a list of open elements, in element order, which shrinks.
void MappingClass::nodeFieldsPropagation()
{
    MessageBuffer buffer("MappingClass::nodeFieldsPropagation()");
    OwnedArray<int> openElts;
    int nbOpen = 0;
    if (!listOpenElements(openElts, nbOpen))
    {
        fail(buffer, "Allocation of the open elements is not possible in MappingClass::nodeFieldsPropagation() "
                     "function.\n");
        return;
    }
    int remaining = itsNbTargetNodesFarOutside;
    int previous = -1;
    while (remaining != 0 && remaining != previous)
    {
        previous = remaining;
        int nbStillOpen = 0;
        for (int i = 0; i < nbOpen; ++i)
        {
            const int elt = openElts[i];
            const ElementFront front = frontOf(itsTargetMesh, elt, itsTargetNodesFarOutside.get());
            if (front.nbFar > 0 && front.nbFilled > 0)
            {
                fillElement(elt, front.nbFilled);
                remaining -= front.nbFar;
            }
            else if (front.nbFar > 0)
            {
                openElts[nbStillOpen++] = elt;
            }
        }
        nbOpen = nbStillOpen;
    }
    if (remaining != 0)
    {
        zeroUnreachedNodes();
        formatMessage(buffer.text(), "Warning: propagation is not possible for nodes located in a region\nthat is not "
                                     "connected to an already interpolated region.\nFields are set to zero in these "
                                     "regions.\n");
        adoptErrorText(buffer.release(), cancelledOrWarned);
    }
}

/// The selected target elements with far nodes, in element order; false if the list cannot be allocated.
bool MappingClass::listOpenElements(OwnedArray<int>& openElts, int& nbOpen) const
{
    const auto forEachOpen = [this](auto&& visit)
    {
        for (int elt = 0; elt < itsTargetMesh.itsNbElts; ++elt)
        {
            if (isTargetEltSelected(elt) && frontOf(itsTargetMesh, elt, itsTargetNodesFarOutside.get()).nbFar > 0)
            {
                visit(elt);
            }
        }
    };
    nbOpen = 0;
    forEachOpen([&](int) { ++nbOpen; });
    if (!openElts.allocate(nbOpen))
    {
        return false;
    }
    nbOpen = 0;
    forEachOpen([&](int elt) { openElts[nbOpen++] = elt; });
    return true;
}

/// Fills an element's far nodes from its filled ones. The flags are cleared at once, so that later elements of the same
/// sweep already see these nodes as filled: the result depends on the order of the elements, which is intended. A field
/// that does not exist on the element's material keeps its values.
void MappingClass::fillElement(int elt, int nbFilled)
{
    for (FieldClass& field : itsTargetFields.fields())
    {
        if (field.itsLocation == atNodes && field.existsOn(itsTargetMesh.matlStateClassOfItem(elt)))
        {
            fillFarNodes(field, itsTargetMesh, elt, itsTargetNodesFarOutside.get(), nbFilled);
        }
    }
    const int nbNodes = itsTargetMesh.nbNodesOfElt(elt);
    for (int i = 0; i < nbNodes; ++i)
    {
        itsTargetNodesFarOutside[itsTargetMesh.itsConnectivity[elt][i]] = 0;
    }
}

void MappingClass::zeroUnreachedNodes()
{
    for (int node = 0; node < itsTargetMesh.itsNbNodes; ++node)
    {
        if (itsTargetNodesFarOutside[node] == 1 && itsTargetMeshMappingAtNode[node] == 1)
        {
            fillNodeFields(node, [](const FieldClass&) { return 0.0F; });
        }
    }
}
