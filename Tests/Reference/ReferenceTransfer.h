/// The two interpolations of the reference implementation.
#ifndef REFERENCE_TRANSFER_H
#define REFERENCE_TRANSFER_H

#include "ReferenceTypes.h"
#include "Veltrane.h"

namespace reference
{

/// What one interpolation is asked to do. The target values are written into the arrays of `targetFields`.
struct TransferRequest
{
    int interpoMode = 0;
    float defaultValue = 0.0F;
    MeshArrays source;
    MeshArrays target;
    const int* targetMatlMappingFlags = nullptr;
    FieldsSetStruct refFields{};
    FieldsSetStruct targetFields{};
    Tuning tuning;
    HostCallback callback;
};

Outcome transferMeshToMesh(const TransferRequest& request);
Outcome transferMeshToPointCloud(const TransferRequest& request);

} // namespace reference

#endif
