#include "Admission.h"

#include <algorithm>

namespace
{
bool isTargetType(int typeCode)
{
    return TypeCodeKinds::visit(typeCode, [](auto) {});
}

bool isSourceType(int typeCode)
{
    return isTargetType(typeCode) && hasShapeFunctions(typeCode);
}

bool allTypes(const ModelClass& model, bool (*isAdmitted)(int))
{
    return std::all_of(model.itsEltTypes, model.itsEltTypes + std::max(model.itsNbElts, 0), isAdmitted);
}
} // namespace

bool areSourceTypes(const ModelClass& model)
{
    return allTypes(model, isSourceType);
}

bool areTargetTypes(const ModelClass& model)
{
    return allTypes(model, isTargetType);
}

const char* interpolationRefusal(const ModelClass& source, const ModelClass& target)
{
    if (!areSourceTypes(source))
    {
        return "Error: Interpolation from a mesh containing elements different from linear or quadratic "
               "tetrahedrons, linear hexahedrons, linear wedges and linear pyramids is not possible.";
    }
    if (!areTargetTypes(target))
    {
        return "Error: Interpolation on a mesh containing elements different from\nlinear or quadratic "
               "tetrahedrons, linear hexahedrons, linear wedges, linear pyramids,\nlinear triangular elements, "
               "linear quadrilateral element\nis not possible.";
    }
    return nullptr;
}

bool areMatchableTypes(const ModelClass& source, const ModelClass& target)
{
    for (int elt = 0; elt < source.itsNbElts; ++elt)
    {
        const int type = source.itsEltTypes[elt];
        const bool isMatchable = isSourceType(type) && type != LinearPyramid::typeCode;
        const bool isTargetPyramid = elt < target.itsNbElts && target.itsEltTypes[elt] == LinearPyramid::typeCode;
        if (!isMatchable && !isTargetPyramid)
        {
            return false;
        }
    }
    return true;
}

const char* nodeMatchingRefusal(const ModelClass& source, const ModelClass& target)
{
    if (!areMatchableTypes(source, target))
    {
        return "Error: node to node correspondence computation from a mesh containing elements different from "
               "linear or quadratic tetrahedrons, linear hexahedrons, linear wedges or linear pyramids is not "
               "possible yet.";
    }
    if (!areTargetTypes(target))
    {
        return "Error: node to node correspondence computation to\n a mesh containing elements different "
               "from\n linear or quadratic tetrahedrons, linear hexahedrons, linear wedges or linear pyramids\n "
               "linear triangular elements, linear quadrilateral element\n is not possible.";
    }
    return nullptr;
}

const char* gaussPointMatchingRefusal(const ModelClass& source, const ModelClass& target)
{
    if (!areMatchableTypes(source, target))
    {
        return "Error: GP to GP correspondence computation from a mesh containing elements different from linear "
               "or quadratic tetrahedrons, linear hexahedrons, linear wedges or linear pyramids is not possible "
               "yet.";
    }
    if (!areTargetTypes(target))
    {
        return "Error: GP to GP correspondence computation to\n a mesh containing elements different from\n "
               "linear or quadratic tetrahedrons, linear hexahedrons, linear wedges, linear pyramids\n linear "
               "triangular elements, linear quadrilateral element\n is not possible.";
    }
    return nullptr;
}
