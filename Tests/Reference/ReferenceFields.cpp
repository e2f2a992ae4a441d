#include "ReferenceFields.h"

#include "ReferenceElements.h"

namespace reference
{

namespace
{

/// What each node of an element receives from the values at the element's Gauss points. In the quadratic tetrahedron
/// the assignment goes by number, although points 4 and 5 lie next to the other one's corner.
std::vector<float> nodeValues(int type, const std::vector<float>& gp)
{
    const auto half = [](float a, float b) { return static_cast<float>((a + b) * 0.5); };
    const auto third = [](float a, float b, float c) { return static_cast<float>((a + b + c) / 3.0); };
    switch (type)
    {
    case 1: return gp;
    case 2: return {gp[0], gp[0], gp[0], gp[0]};
    case 3:
        return {half(gp[0], gp[2]), half(gp[1], gp[0]), half(gp[2], gp[1]),
                half(gp[3], gp[5]), half(gp[4], gp[3]), half(gp[5], gp[4])};
    case 10:
        return {gp[1],
                gp[2],
                gp[3],
                gp[4],
                third(gp[1], gp[2], gp[0]),
                third(gp[2], gp[3], gp[0]),
                third(gp[3], gp[1], gp[0]),
                third(gp[1], gp[4], gp[0]),
                third(gp[2], gp[4], gp[0]),
                third(gp[3], gp[4], gp[0])};
    case 12: return {gp[4], gp[5], gp[6], gp[7], static_cast<float>(0.25 * (gp[0] + gp[1] + gp[2] + gp[3]))};
    default:
        throw Stopped{1, "Error in FieldClass file at line 298: elements different from\nlinear or quadratic "
                         "tetrahedrons, linear hexahedrons, linear wedges, and linear pyramids are not treated yet.\n"};
    }
}

} // namespace

void checkFields(const FieldsSetStruct& set)
{
    if (set.nbFields == 0)
    {
        throw FatalFault("Error in FieldsSetClass file at line 52: no field to be used. \n");
    }
    if (set.nbFields < 0)
    {
        throw FatalFault("Error in FieldsSetClass file at line 61: impossible to allocate fields. \n");
    }
    for (int i = 0; i < set.nbFields; ++i)
    {
        if (set.fields[i].precision != 1 && set.fields[i].precision != 2)
        {
            throw FatalFault("Error in FieldClass file at line 71: bad value for itsPrecision \n");
        }
    }
}

int stateClass(const MeshArrays& mesh, int matl)
{
    const int code = mesh.matlTypes[matl];
    return code == 1 || code == 2 || code == 3 || code == 7 || code == 8 ? 1 : 2;
}

float read(const FieldStruct& field, long long at)
{
    return field.precision == 1 ? field.valuesFloat[at] : static_cast<float>(field.valuesDouble[at]);
}

void write(const FieldStruct& field, long long at, float value)
{
    if (field.precision == 1)
    {
        field.valuesFloat[at] = value;
    }
    else
    {
        field.valuesDouble[at] = static_cast<double>(value);
    }
}

void writeAll(const FieldStruct& field, int location, float value)
{
    for (int c = 0; c < field.nbComponents; ++c)
    {
        write(field, static_cast<long long>(location) * field.nbComponents + c, value);
    }
}

std::vector<float> averagedToNodes(const FieldStruct& field, const MeshArrays& mesh)
{
    const int nbComponents = field.nbComponents;
    std::vector<float> sums(index(mesh.nbNodes) * index(nbComponents), 0.0F);
    std::vector<int> elementsPerNode(index(mesh.nbNodes), 0);
    long long firstGaussPoint = 0;
    for (int e = 0; e < mesh.nbElts; ++e)
    {
        const int type = mesh.eltTypes[e];
        for (int c = 0; c < nbComponents; ++c)
        {
            std::vector<float> gp;
            for (int g = 0; g < gaussPointCount(type); ++g)
            {
                gp.push_back(read(field, (firstGaussPoint + g) * nbComponents + c));
            }
            const std::vector<float> atNodes = nodeValues(type, gp);
            for (int n = 0; n < nodeCount(type); ++n)
            {
                float& sum = sums[index(mesh.connectivity[e][n]) * index(nbComponents) + index(c)];
                sum = sum + atNodes[index(n)];
            }
        }
        for (int n = 0; n < nodeCount(type); ++n)
        {
            ++elementsPerNode[index(mesh.connectivity[e][n])];
        }
        firstGaussPoint += gaussPointCount(type);
    }
    for (int node = 0; node < mesh.nbNodes; ++node)
    {
        for (int c = 0; c < nbComponents; ++c)
        {
            float& sum = sums[index(node) * index(nbComponents) + index(c)];
            sum = sum / static_cast<float>(elementsPerNode[index(node)]);
        }
    }
    return sums;
}

} // namespace reference
