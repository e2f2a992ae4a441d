/// Fields of the reference implementation: access to the host's values, and Gauss-point values averaged to nodes.
#ifndef REFERENCE_FIELDS_H
#define REFERENCE_FIELDS_H

#include "ReferenceTypes.h"
#include "Veltrane.h"

#include <vector>

namespace reference
{

/// A field set needs fields of precision 1 or 2; anything else ends the process.
void checkFields(const FieldsSetStruct& set);

/// Materials of class 2 have no values of the fields that are flagged as defined on class 1 only.
int stateClass(const MeshArrays& mesh, int matl);

/// A value of a field, read as single precision.
float read(const FieldStruct& field, long long at);
void write(const FieldStruct& field, long long at, float value);

/// Writes one value into all components at a location.
void writeAll(const FieldStruct& field, int location, float value);

/// A field at Gauss points averaged to the nodes: the plain mean over the elements around a node.
std::vector<float> averagedToNodes(const FieldStruct& field, const MeshArrays& mesh);

} // namespace reference

#endif
