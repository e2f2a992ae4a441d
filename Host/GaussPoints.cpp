#include "GaussPoints.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace veltrane
{
namespace
{

using Position = std::array<double, 3>;
using Values = std::vector<double>;

constexpr std::array<Position, 8> cubeCorners{
    {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1}, {-1, -1, 1}, {1, -1, 1}, {1, 1, 1}, {-1, 1, 1}}};

const double abscissa = 1 / std::sqrt(3.0); // of the two-point rule, whose weights are 1

/// The corners of the cube, drawn towards its centre.
GaussRule hexahedron()
{
    GaussRule rule;
    for (const Position& point : cubeCorners)
    {
        Values values;
        for (const Position& node : cubeCorners)
        {
            values.push_back((1 + node[0] * point[0] * abscissa) * (1 + node[1] * point[1] * abscissa) *
                             (1 + node[2] * point[2] * abscissa) / 8);
        }
        rule.shapeValues.push_back(values);
        rule.weights.push_back(1);
    }
    return rule;
}

GaussRule tetrahedron()
{
    return {.shapeValues = {{0.25, 0.25, 0.25, 0.25}}, .weights = {1.0 / 6}};
}

/// The middles of the triangle's edges at two heights.
GaussRule wedge()
{
    GaussRule rule;
    for (const double height : {-abscissa, abscissa})
    {
        for (const Position& corners : {Position{0.5, 0.5, 0}, Position{0, 0.5, 0.5}, Position{0.5, 0, 0.5}})
        {
            Values values;
            for (const double side : {-1.0, 1.0})
            {
                for (const double corner : corners)
                {
                    values.push_back(corner * (1 + side * height) / 2);
                }
            }
            rule.shapeValues.push_back(values);
            rule.weights.push_back(1.0 / 6);
        }
    }
    return rule;
}

/// The centre and a point near each corner, by volume coordinates: those of the nodes 1, 2, 4 and 3.
GaussRule quadraticTetrahedron()
{
    constexpr double large = 0.5;
    constexpr double small = 1.0 / 6;
    GaussRule rule;
    for (const std::array<double, 4>& volume :
         {std::array{0.25, 0.25, 0.25, 0.25}, std::array{large, small, small, small},
          std::array{small, large, small, small}, std::array{small, small, large, small},
          std::array{small, small, small, large}})
    {
        const auto [a, b, d, c] = volume;
        rule.shapeValues.push_back({(2 * a - 1) * a, (2 * b - 1) * b, (2 * c - 1) * c, (2 * d - 1) * d, 4 * a * b,
                                    4 * b * c, 4 * a * c, 4 * a * d, 4 * b * d, 4 * c * d});
    }
    rule.weights = {-2.0 / 15, 3.0 / 40, 3.0 / 40, 3.0 / 40, 3.0 / 40};
    return rule;
}

/// Two layers of four points, the upper one first: the two-point rule along the axis for the square of the section, and
/// along each side of the section.
GaussRule pyramid()
{
    struct Layer
    {
        double size; ///< of the section as part of the base
        double weight;
    };
    GaussRule rule;
    for (const Layer& layer :
         {Layer{0.455848155988775, 0.100785882079825}, Layer{0.877485177344559, 0.232547451253508}})
    {
        for (std::size_t corner = 0; corner < 4; ++corner)
        {
            const double x = layer.size * abscissa * cubeCorners[corner][0];
            const double y = layer.size * abscissa * cubeCorners[corner][1];
            const double z = 1 - layer.size;
            rule.shapeValues.push_back({((1 - x) * (1 - y) - z) / 4, ((1 + x) * (1 - y) - z) / 4,
                                        ((1 + x) * (1 + y) - z) / 4, ((1 - x) * (1 + y) - z) / 4, z});
            rule.weights.push_back(layer.weight);
        }
    }
    return rule;
}

} // namespace

GaussRule gaussRuleOf(ElementKind kind)
{
    switch (kind)
    {
    case ElementKind::hexahedron: return hexahedron();
    case ElementKind::tetrahedron: return tetrahedron();
    case ElementKind::wedge: return wedge();
    case ElementKind::quadraticTetrahedron: return quadraticTetrahedron();
    case ElementKind::pyramid: return pyramid();
    case ElementKind::triangle:
    case ElementKind::quadrilateral: break;
    }
    return {};
}

} // namespace veltrane
