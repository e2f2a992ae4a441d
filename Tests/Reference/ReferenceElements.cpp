#include "ReferenceElements.h"

#include <cmath>
#include <cstddef>

namespace reference
{

namespace
{

constexpr std::array<int, 15> nodesPerType = {0, 8, 4, 6, 8, 6, 4, 3, 4, 2, 10, 12, 5, 4, 3};
constexpr std::array<int, 15> gaussPointsPerType = {0, 8, 1, 6, 8, 6, 4, 3, 4, 2, 5, 8, 8, 0, 0};

const std::string volumeElementsOnly = " of elements different from linear or quadratic tetrahedrons, linear wedges, "
                                       "linear hexahedrons, linear pyramids not implemented yet.\n";

float single(double value)
{
    return static_cast<float>(value);
}

std::vector<float> rounded(const std::vector<double>& values)
{
    std::vector<float> result;
    for (const double value : values)
    {
        result.push_back(single(value));
    }
    return result;
}

Vec3 rounded(double x, double y, double z)
{
    return {single(x), single(y), single(z)};
}

/// The quadratic tetrahedron in its volume coordinates; the third corner is the origin of the reference space.
std::vector<float> quadraticTetrahedron(double x, double y, double z, double l)
{
    return rounded({(2.0 * x - 1.0) * x, (2.0 * y - 1.0) * y, (2.0 * l - 1.0) * l, (2.0 * z - 1.0) * z, 4.0 * x * y,
                    4.0 * y * l, 4.0 * x * l, 4.0 * x * z, 4.0 * y * z, 4.0 * z * l});
}

/// Gauss point of a type with shape functions; the quadratic tetrahedron has volume coordinates of its own.
Vec3 gaussPoint(int type, int k)
{
    const float minusA = single(-1.0 / std::sqrt(3.0));
    const float a = -minusA;
    const Vec3 hexahedron[8] = {{-a, -a, -a}, {a, -a, -a}, {a, a, -a}, {-a, a, -a},
                                {-a, -a, a},  {a, -a, a},  {a, a, a},  {-a, a, a}};
    const Vec3 wedge[6] = {{0.5F, 0.0F, -a}, {0.5F, 0.5F, -a}, {0.0F, 0.5F, -a},
                           {0.5F, 0.0F, a},  {0.5F, 0.5F, a},  {0.0F, 0.5F, a}};
    switch (type)
    {
    case 1: return hexahedron[k];
    case 2: return {0.25F, 0.25F, 0.25F};
    case 3: return wedge[k];
    default:
    {
        const double scale = k < 4 ? 0.455848155988 : 0.8774851773445;
        const Vec3& corner = hexahedron[k];
        return rounded(scale * corner[0], scale * corner[1], 1.0 - scale);
    }
    }
}

/// Inverse of a row-major 3 x 3 matrix; a determinant of exactly 0 ends the process.
std::array<Vec3, 3> inverse(const std::array<Vec3, 3>& a)
{
    std::array<Vec3, 3> b{};
    b[0][0] = a[1][1] * a[2][2] - a[1][2] * a[2][1];
    b[1][0] = -a[1][0] * a[2][2] + a[1][2] * a[2][0];
    b[2][0] = a[1][0] * a[2][1] - a[1][1] * a[2][0];
    b[0][1] = -a[0][1] * a[2][2] + a[0][2] * a[2][1];
    b[1][1] = a[0][0] * a[2][2] - a[0][2] * a[2][0];
    b[2][1] = -a[0][0] * a[2][1] + a[0][1] * a[2][0];
    b[0][2] = a[0][1] * a[1][2] - a[0][2] * a[1][1];
    b[1][2] = -a[0][0] * a[1][2] + a[0][2] * a[1][0];
    b[2][2] = a[0][0] * a[1][1] - a[0][1] * a[1][0];
    const float det = a[0][0] * b[0][0] + a[0][1] * b[1][0] + a[0][2] * b[2][0];
    if (det == 0.0F)
    {
        throw FatalFault("A 3*3 Matrix is not inversable in invMatrix33() function.\n");
    }
    const float factor = single(1.0 / det);
    for (Vec3& row : b)
    {
        for (float& value : row)
        {
            value = value * factor;
        }
    }
    return b;
}

Vec3 positionAt(const MeshArrays& mesh, int element, const std::vector<float>& shape)
{
    Vec3 position = {0.0F, 0.0F, 0.0F};
    for (std::size_t n = 0; n < shape.size(); ++n)
    {
        const Vec3 node = nodePosition(mesh, mesh.connectivity[element][n]);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            position[axis] = position[axis] + shape[n] * node[axis];
        }
    }
    return position;
}

std::array<Vec3, 3> jacobianAt(const MeshArrays& mesh, int element, const Vec3& xi)
{
    const std::vector<Vec3> derivatives = shapeDerivatives(mesh.eltTypes[element], xi);
    std::array<Vec3, 3> jacobian{};
    for (std::size_t n = 0; n < derivatives.size(); ++n)
    {
        const Vec3 node = nodePosition(mesh, mesh.connectivity[element][n]);
        for (std::size_t i = 0; i < 3; ++i)
        {
            for (std::size_t j = 0; j < 3; ++j)
            {
                jacobian[i][j] = jacobian[i][j] + derivatives[n][j] * node[i];
            }
        }
    }
    return jacobian;
}

bool isInside(int type, const Vec3& xi, float precision)
{
    const double m = 2.0 * static_cast<double>(precision);
    const double x = xi[0];
    const double y = xi[1];
    const double z = xi[2];
    const auto withinUnit = [m](double v) { return -1.0 - m <= v && v <= 1.0 + m; };
    switch (type)
    {
    case 1: return withinUnit(x) && withinUnit(y) && withinUnit(z);
    case 3: return x >= -m && y >= -m && 1.0 - x - y >= -m && withinUnit(z);
    case 12: return z >= -m && 1.0 + y - z >= -m && 1.0 - x - z >= -m && 1.0 - y - z >= -m && 1.0 + x - z >= -m;
    default: return x >= -m && y >= -m && z >= -m && 1.0 - x - y - z >= -m;
    }
}

} // namespace

int nodeCount(int type)
{
    return nodesPerType.at(static_cast<std::size_t>(type));
}

int gaussPointCount(int type)
{
    return gaussPointsPerType.at(static_cast<std::size_t>(type));
}

std::vector<float> shapeFunctions(int type, const Vec3& xi)
{
    const double x = xi[0];
    const double y = xi[1];
    const double z = xi[2];
    switch (type)
    {
    case 1:
        return rounded({0.125 * (1.0 - x) * (1.0 - y) * (1.0 - z), 0.125 * (1.0 + x) * (1.0 - y) * (1.0 - z),
                        0.125 * (1.0 + x) * (1.0 + y) * (1.0 - z), 0.125 * (1.0 - x) * (1.0 + y) * (1.0 - z),
                        0.125 * (1.0 - x) * (1.0 - y) * (1.0 + z), 0.125 * (1.0 + x) * (1.0 - y) * (1.0 + z),
                        0.125 * (1.0 + x) * (1.0 + y) * (1.0 + z), 0.125 * (1.0 - x) * (1.0 + y) * (1.0 + z)});
    case 2: return rounded({1.0 - x - y - z, x, y, z});
    case 3:
        return rounded({0.5 * (1.0 - x - y) * (1.0 - z), 0.5 * x * (1.0 - z), 0.5 * y * (1.0 - z),
                        0.5 * (1.0 - x - y) * (1.0 + z), 0.5 * x * (1.0 + z), 0.5 * y * (1.0 + z)});
    case 10: return quadraticTetrahedron(x, y, z, 1.0 - x - y - z);
    case 12:
        return rounded({((1.0 - x) * (1.0 - y) - z) / 4.0, ((1.0 + x) * (1.0 - y) - z) / 4.0,
                        ((1.0 + x) * (1.0 + y) - z) / 4.0, ((1.0 - x) * (1.0 + y) - z) / 4.0, z});
    default: throw FatalFault("Error in FEutilities file at line 290: shape functions" + volumeElementsOnly);
    }
}

std::vector<Vec3> shapeDerivatives(int type, const Vec3& xi)
{
    const double x = xi[0];
    const double y = xi[1];
    const double z = xi[2];
    switch (type)
    {
    case 1:
        return {rounded(-0.125 * (1.0 - y) * (1.0 - z), -0.125 * (1.0 - x) * (1.0 - z), -0.125 * (1.0 - x) * (1.0 - y)),
                rounded(0.125 * (1.0 - y) * (1.0 - z), -0.125 * (1.0 + x) * (1.0 - z), -0.125 * (1.0 + x) * (1.0 - y)),
                rounded(0.125 * (1.0 + y) * (1.0 - z), 0.125 * (1.0 + x) * (1.0 - z), -0.125 * (1.0 + x) * (1.0 + y)),
                rounded(-0.125 * (1.0 + y) * (1.0 - z), 0.125 * (1.0 - x) * (1.0 - z), -0.125 * (1.0 - x) * (1.0 + y)),
                rounded(-0.125 * (1.0 - y) * (1.0 + z), -0.125 * (1.0 - x) * (1.0 + z), 0.125 * (1.0 - x) * (1.0 - y)),
                rounded(0.125 * (1.0 - y) * (1.0 + z), -0.125 * (1.0 + x) * (1.0 + z), 0.125 * (1.0 + x) * (1.0 - y)),
                rounded(0.125 * (1.0 + y) * (1.0 + z), 0.125 * (1.0 + x) * (1.0 + z), 0.125 * (1.0 + x) * (1.0 + y)),
                rounded(-0.125 * (1.0 + y) * (1.0 + z), 0.125 * (1.0 - x) * (1.0 + z), 0.125 * (1.0 - x) * (1.0 + y))};
    case 2: return {{-1.0F, -1.0F, -1.0F}, {1.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F}, {0.0F, 0.0F, 1.0F}};
    case 3:
        return {rounded(-0.5 * (1.0 - z), -0.5 * (1.0 - z), -0.5 * (1.0 - x - y)),
                rounded(0.5 * (1.0 - z), 0.0, -0.5 * x),
                rounded(0.0, 0.5 * (1.0 - z), -0.5 * y),
                rounded(-0.5 * (1.0 + z), -0.5 * (1.0 + z), 0.5 * (1.0 - x - y)),
                rounded(0.5 * (1.0 + z), 0.0, 0.5 * x),
                rounded(0.0, 0.5 * (1.0 + z), 0.5 * y)};
    case 10:
    {
        const double l = 1.0 - x - y - z;
        return {rounded(4.0 * x - 1.0, 0.0, 0.0),
                rounded(0.0, 4.0 * y - 1.0, 0.0),
                rounded(1.0 - 4.0 * l, 1.0 - 4.0 * l, 1.0 - 4.0 * l),
                rounded(0.0, 0.0, 4.0 * z - 1.0),
                rounded(4.0 * y, 4.0 * x, 0.0),
                rounded(-4.0 * y, 4.0 * (l - y), -4.0 * y),
                rounded(4.0 * (l - x), -4.0 * x, -4.0 * x),
                rounded(4.0 * z, 0.0, 4.0 * x),
                rounded(0.0, 4.0 * z, 4.0 * y),
                rounded(-4.0 * z, -4.0 * z, 4.0 * (l - z))};
    }
    case 12:
        return {rounded(-(1.0 - y) / 4.0, -(1.0 - x) / 4.0, -0.25), rounded((1.0 - y) / 4.0, -(1.0 + x) / 4.0, -0.25),
                rounded((1.0 + y) / 4.0, (1.0 + x) / 4.0, -0.25), rounded(-(1.0 + y) / 4.0, (1.0 - x) / 4.0, -0.25),
                rounded(0.0, 0.0, 1.0)};
    default:
        throw FatalFault("Error in FEutilities file at line 384: derivatives of shape functions" + volumeElementsOnly);
    }
}

std::vector<float> shapeFunctionsAtGaussPoint(int type, int gaussPointNumber)
{
    if (type == 10)
    {
        // The four volume coordinates are listed values: the last is not formed from the others.
        std::array<float, 4> volume{};
        for (std::size_t i = 0; i < 4; ++i)
        {
            if (gaussPointNumber == 0)
            {
                volume[i] = 0.25F;
            }
            else
            {
                volume[i] = static_cast<int>(i) == gaussPointNumber - 1 ? 0.5F : single(1.0 / 6.0);
            }
        }
        return quadraticTetrahedron(volume[0], volume[1], volume[2], volume[3]);
    }
    if (type == 1 || type == 2 || type == 3 || type == 12)
    {
        return shapeFunctions(type, gaussPoint(type, gaussPointNumber));
    }
    return std::vector<float>(static_cast<std::size_t>(nodeCount(type)), 0.0F);
}

Vec3 gaussPointPosition(const MeshArrays& mesh, int element, int gaussPointNumber)
{
    return positionAt(mesh, element, shapeFunctionsAtGaussPoint(mesh.eltTypes[element], gaussPointNumber));
}

Vec3 nodePosition(const MeshArrays& mesh, int node)
{
    return {mesh.nodeCoords[node][0], mesh.nodeCoords[node][1], mesh.nodeCoords[node][2]};
}

float squaredDistance(const Vec3& a, const Vec3& b)
{
    const float dx = a[0] - b[0];
    const float dy = a[1] - b[1];
    const float dz = a[2] - b[2];
    return dx * dx + dy * dy + dz * dz;
}

Box elementBox(const MeshArrays& mesh, int element)
{
    Box box;
    box.min = nodePosition(mesh, mesh.connectivity[element][0]);
    box.max = box.min;
    for (int n = 1; n < nodeCount(mesh.eltTypes[element]); ++n)
    {
        const Vec3 node = nodePosition(mesh, mesh.connectivity[element][n]);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            if (node[axis] < box.min[axis])
            {
                box.min[axis] = node[axis];
            }
            if (node[axis] > box.max[axis])
            {
                box.max[axis] = node[axis];
            }
        }
    }
    float largest = box.max[0] - box.min[0];
    for (std::size_t axis = 1; axis < 3; ++axis)
    {
        const float extent = box.max[axis] - box.min[axis];
        if (extent > largest)
        {
            largest = extent;
        }
    }
    const float margin = boxMarginRatio * largest;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        box.min[axis] = box.min[axis] - margin;
        box.max[axis] = box.max[axis] + margin;
    }
    return box;
}

Inversion invertPoint(const MeshArrays& mesh, int element, const Box& box, const Vec3& point, float precision)
{
    const int type = mesh.eltTypes[element];
    float smallest = box.max[0] - box.min[0];
    for (std::size_t axis = 1; axis < 3; ++axis)
    {
        const float extent = box.max[axis] - box.min[axis];
        if (extent < smallest)
        {
            smallest = extent;
        }
    }
    const float distance = precision * smallest;
    const float tolerance = distance * distance;
    float error = 2.0F * tolerance;

    Vec3 xi = {0.25F, 0.25F, 0.25F};
    if (type == 1)
    {
        xi = {0.0F, 0.0F, 0.0F};
    }
    else if (type == 3)
    {
        xi = {single(1.0 / 3.0), single(1.0 / 3.0), 0.0F};
    }
    else if (type == 12)
    {
        xi = {0.0F, 0.0F, 0.2F};
    }

    Vec3 position = positionAt(mesh, element, shapeFunctions(type, xi));
    int iterations = 0;
    while (iterations < 100 && error > tolerance)
    {
        const std::array<Vec3, 3> inverted = inverse(jacobianAt(mesh, element, xi));
        Vec3 residual{};
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            residual[axis] = point[axis] - position[axis];
        }
        for (std::size_t i = 0; i < 3; ++i)
        {
            float step = 0.0F;
            for (std::size_t j = 0; j < 3; ++j)
            {
                step = step + inverted[i][j] * residual[j];
            }
            xi[i] = xi[i] + step;
        }
        position = positionAt(mesh, element, shapeFunctions(type, xi));
        error = squaredDistance(position, point);
        ++iterations;
    }
    if (iterations == 100 && error > tolerance)
    {
        return {-1, 0, xi};
    }
    return {isInside(type, xi, precision) ? 1 : 0, iterations, xi};
}

} // namespace reference
