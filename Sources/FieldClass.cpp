#include "FieldClass.h"

#include "Map/GaussPointAveraging.h"
#include "MappingStringUtilities.h"
#include "ModelClass.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace
{
constexpr const char* unitName = "FieldClass";
}

void FieldClass::init(const FieldStruct& record)
{
    const std::size_t length = strnlen(record.name, std::size(itsName) - 1);
    std::copy_n(record.name, length, itsName);
    itsName[length] = '\0';
    itsMatlStateFlag = record.matlStateFlag;
    itsLocation = record.location;
    itsNbComponents = record.nbComponents;
    itsPrecision = record.precision;
    switch (itsPrecision)
    {
    case singlePrecision:
        itsValuesFloat = record.valuesFloat;
        itsDefaultValueFloat = record.defaultValueFloat;
        break;
    case doublePrecision:
        itsValuesDouble = record.valuesDouble;
        itsDefaultValueDouble = record.defaultValueDouble;
        break;
    default: endProcess("Error in %s file at line %d: bad value for itsPrecision \n", unitName, 71);
    }
}

void FieldClass::fillLocation(std::int64_t location, float value)
{
    for (int component = 0; component < itsNbComponents; ++component)
    {
        setValue(location * itsNbComponents + component, value);
    }
}

char* FieldClass::interpoAtNodes(ModelClass& sourceModel)
{
    MessageBuffer buffer("FieldClass::interpoAtNodes()");
    switch (itsLocation)
    {
    case atNodes:
        formatMessage(buffer.text(),
                      "Interpolation at source nodes of field %s is not necessary as the field is already defined at "
                      "nodes.\n",
                      itsName);
        return buffer.release();
    case atElements:
        formatMessage(buffer.text(),
                      "Interpolation at source nodes of field %s is not necessary as the field is defined at "
                      "elements.\n",
                      itsName);
        return buffer.release();
    case atGaussPoints: break;
    default: return nullptr;
    }
    if (itsValuesInterpoNode)
    {
        formatMessage(buffer.text(), "Field %s already interpolated at nodes of the same mesh.\n", itsName);
        return buffer.release();
    }
    const std::int64_t nbValues = static_cast<std::int64_t>(sourceModel.itsNbNodes) * itsNbComponents;
    if (!itsValuesInterpoNode.allocate(nbValues))
    {
        formatMessage(buffer.text(), "Allocation of itsValuesInterpoNode is not possible in "
                                     "FieldClass::interpoAtNodes() function.\n");
        return buffer.release();
    }
    std::fill_n(itsValuesInterpoNode.get(), nbValues, 0.0F);
    if (!sourceModel.itsEltNbPerNode)
    {
        sourceModel.countEltsPerNode();
    }
    if (!addAllGaussPointsToNodes(sourceModel))
    {
        formatMessage(buffer.text(),
                      "Error in %s file at line %d: elements different from\nlinear or quadratic tetrahedrons, linear "
                      "hexahedrons, linear wedges, and linear pyramids are not treated yet.\n",
                      unitName, 298);
        return buffer.release();
    }
    for (std::int64_t node = 0; node < sourceModel.itsNbNodes; ++node)
    {
        const auto nbElts = static_cast<float>(sourceModel.itsEltNbPerNode[node]);
        for (int component = 0; component < itsNbComponents; ++component)
        {
            itsValuesInterpoNode[node * itsNbComponents + component] /= nbElts;
        }
    }
    return nullptr;
}

/// Adds what every element gives its nodes; false at an element kind without a rule.
bool FieldClass::addAllGaussPointsToNodes(const ModelClass& sourceModel)
{
    std::int64_t firstGaussPoint = 0;
    for (int elt = 0; elt < sourceModel.itsNbElts; ++elt)
    {
        const auto valueAt = [&](std::size_t gaussPoint, int component)
        { return value((firstGaussPoint + static_cast<std::int64_t>(gaussPoint)) * itsNbComponents + component); };
        const bool known = sourceModel.hasShapeFunctionsOfElt(elt) &&
                           addGaussPointsToNodes(sourceModel.itsEltTypes[elt], sourceModel.itsGaussRule,
                                                 sourceModel.itsConnectivity[elt], itsNbComponents, valueAt,
                                                 itsValuesInterpoNode.get());
        if (!known)
        {
            return false;
        }
        firstGaussPoint += sourceModel.nbGaussPointsOfElt(elt);
    }
    return true;
}
