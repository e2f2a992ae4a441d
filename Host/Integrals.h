/// Integrals of fields over meshes, with the elements' own shape functions and Gauss points.
#ifndef VELTRANE_HOST_INTEGRALS_H
#define VELTRANE_HOST_INTEGRALS_H

#include "Field.h"
#include "Mesh.h"

#include <vector>

namespace veltrane
{

/// The volume that each Gauss point of a mesh stands for: its weight times the Jacobian there, without a sign. In the
/// order of fields at Gauss points; those of surfaces have none.
std::vector<double> gaussPointVolumes(const Mesh& mesh);

/// Over the elements of one material, or over all.
struct FieldIntegral
{
    std::vector<double> components; ///< the integral of each
    double magnitude = 0;           ///< the integral of the Euclidean norm over the components
    double volume = 0;              ///< that has values
};

struct FieldIntegrals
{
    FieldIntegral all;
    std::vector<FieldIntegral> materials; ///< in the order of the mesh's
};

/// The integrals of a field at nodes or at Gauss points, where `volumes` is what gaussPointVolumes() gives of the mesh.
/// Gauss points without a usable value (see undefinedBound), or in elements with a node without one, are left out.
/// Throws InvalidData if the field does not fit the mesh.
FieldIntegrals integralsOf(const Field& field, const Mesh& mesh, const std::vector<double>& volumes);

/// The Euclidean norm of the difference of two integrals, as part of the reference's integral of magnitudes: 0 if both
/// are 0, and infinite if the reference's is.
double relativeDifference(const FieldIntegral& integral, const FieldIntegral& reference);

} // namespace veltrane

#endif
