/// Random problems for the four computations of the library.
#ifndef RANDOM_MODELS_H
#define RANDOM_MODELS_H

#include "RandomMeshes.h"
#include "ReferenceTypes.h"
#include "Veltrane.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace random_models
{

/// Untouched values behind every output array.
constexpr int nbGuardValues = 8;

/// One field with its values; the arrays of target fields end with guard values.
struct FieldModel
{
    std::string name;
    int matlStateFlag = 0;
    int location = 1;
    int nbComponents = 1;
    int precision = 1;
    float defaultValueFloat = 0.0F;
    float defaultValueDouble = 0.0F;
    std::vector<float> floats;
    std::vector<double> doubles;

    /// The record for the interface. The members that the precision does not select hold nonsense.
    FieldStruct record();
};

/// A field set for the interface; it borrows the fields' arrays.
class FieldsSet
{
public:
    /// The announced number of fields may differ from the real one to provoke a fault.
    FieldsSet(std::vector<FieldModel>& fields, std::optional<int> announced);
    FieldsSetStruct record();

private:
    std::vector<FieldStruct> itsRecords;
    int itsNbFields;
};

/// What lies in the working directory of a call, and what the library is to make of it.
struct Surroundings
{
    std::optional<std::string> tuningText;      ///< contents of the computation's tuning file
    std::optional<std::string> otherTuningText; ///< contents of another computation's tuning file
    bool hasOldLog = false;                     ///< whether an earlier call left its log
    reference::Tuning tuning;
    reference::HostCallback callback;
};

struct TransferProblem
{
    bool toPointCloud = false;
    int interpoMode = 0;
    float defaultValue = 0.0F;
    Mesh source;
    Mesh target;
    std::vector<int> mappingFlags;
    std::vector<FieldModel> refFields;
    std::vector<FieldModel> targetFields;
    std::optional<int> announcedRefFields;
    std::optional<int> announcedTargetFields;
    Surroundings surroundings;
};

struct CorrespondenceProblem
{
    Mesh source;
    Mesh target;
    std::vector<int> mappingFlags;
    Surroundings surroundings;
};

TransferProblem randomMeshTransfer(std::uint64_t seed);
TransferProblem randomPointCloudTransfer(std::uint64_t seed);

/// Serves node-to-node and Gauss-point correspondences alike.
CorrespondenceProblem randomCorrespondence(std::uint64_t seed);

} // namespace random_models

#endif
