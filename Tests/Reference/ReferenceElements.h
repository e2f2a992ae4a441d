/// The element kinds of the reference implementation and the inversion of a physical point to reference coordinates.
#ifndef REFERENCE_ELEMENTS_H
#define REFERENCE_ELEMENTS_H

#include "ReferenceTypes.h"

#include <array>
#include <vector>

namespace reference
{

/// An axis-aligned box.
struct Box
{
    Vec3 min{};
    Vec3 max{};
};

/// Nodes and Gauss points of a type code 0 to 14.
int nodeCount(int type);
int gaussPointCount(int type);

/// Shape functions at a reference point, one value per node. Only codes 1, 2, 3, 10 and 12 have them.
std::vector<float> shapeFunctions(int type, const Vec3& xi);

/// Per node, the derivatives with respect to the three reference coordinates.
std::vector<Vec3> shapeDerivatives(int type, const Vec3& xi);

/// Shape functions at a Gauss point, counted from 0. Zero for the types without shape functions.
std::vector<float> shapeFunctionsAtGaussPoint(int type, int gaussPoint);

/// Physical position of a Gauss point of an element.
Vec3 gaussPointPosition(const MeshArrays& mesh, int element, int gaussPoint);

/// Box around the nodes of an element, widened on every side by the margin ratio times its largest extent.
Box elementBox(const MeshArrays& mesh, int element);

/// |a - b|^2.
float squaredDistance(const Vec3& a, const Vec3& b);

Vec3 nodePosition(const MeshArrays& mesh, int node);

/// Outcome of an inversion: 1 inside, 0 outside, -1 not converged (the number of iterations is then 0).
struct Inversion
{
    int result = -1;
    int iterations = 0;
    Vec3 xi{};
};

/// Newton iteration for the reference coordinates of a point in an element; the element's box gives the tolerance.
Inversion invertPoint(const MeshArrays& mesh, int element, const Box& box, const Vec3& point, float precision);

} // namespace reference

#endif
