#include "LibraryCalls.h"

#include "LibraryHost.h"

#include <algorithm>

namespace library_host
{

using random_models::CorrespondenceProblem;
using random_models::FieldsSet;
using random_models::MeshModel;
using random_models::MeshPointers;
using random_models::TransferProblem;
using reference::index;
using reference::MeshArrays;

std::string Result::text() const
{
    return {message.begin(), std::find(message.begin(), message.end(), '\0')};
}

IntegerTable::IntegerTable(int nbRows, int nbColumns)
    : rows(index(nbRows),
           std::vector<int>(index(nbColumns + random_models::nbGuardValues), static_cast<int>(0xA5A5A5A5)))
{
    for (std::vector<int>& row : rows)
    {
        pointers.push_back(row.data());
    }
}

CorrespondenceTables::CorrespondenceTables(const MeshModel& target, bool ofNodes)
    : first(ofNodes ? 1 : target.nbElements(), ofNodes ? target.nbNodes() : 8),
      second(ofNodes ? 0 : target.nbElements(), 8)
{
}

const char* tuningFileOfCorrespondence(bool ofNodes)
{
    return ofNodes ? "nodToNodInputs.txt" : "GPToGPInputs.txt";
}

void callTransfer(TransferProblem& problem, Result& result)
{
    const Library& library = Library::get();
    MeshPointers source(problem.source);
    MeshPointers target(problem.target);
    FieldsSet refFields(problem.refFields, problem.announcedRefFields);
    FieldsSet targetFields(problem.targetFields, problem.announcedTargetFields);
    const MeshArrays s = source.arrays();
    const MeshArrays t = target.arrays();
    const VeltraneCallback callback = beginCall(problem.surroundings.callback);
    if (problem.toPointCloud)
    {
        library.transferToPointCloud(problem.interpoMode, problem.defaultValue, s.nbElts, s.nbNodes, source.coords(),
                                     source.connectivity(), problem.source.types.data(), s.nbMatls,
                                     problem.source.matlIds.data(), problem.source.matlStates.data(), t.nbNodes,
                                     target.coords(), t.nbMatls, problem.target.matlIds.data(),
                                     problem.target.matlStates.data(), problem.mappingFlags.data(), refFields.record(),
                                     targetFields.record(), result.message.data(), &result.errorCode, callback);
        return;
    }
    library.transferToMesh(problem.interpoMode, problem.defaultValue, s.nbElts, s.nbNodes, source.coords(),
                           source.connectivity(), problem.source.types.data(), s.nbMatls, problem.source.matlIds.data(),
                           problem.source.matlStates.data(), t.nbElts, t.nbNodes, target.coords(),
                           target.connectivity(), problem.target.types.data(), t.nbMatls, problem.target.matlIds.data(),
                           problem.target.matlStates.data(), problem.mappingFlags.data(), refFields.record(),
                           targetFields.record(), result.message.data(), &result.errorCode, callback);
}

void callCorrespondence(CorrespondenceProblem& problem, bool ofNodes, CorrespondenceTables& tables, Result& result)
{
    const Library& library = Library::get();
    MeshPointers source(problem.source);
    MeshPointers target(problem.target);
    const MeshArrays s = source.arrays();
    const MeshArrays t = target.arrays();
    const auto call = [&](auto* function, auto... outputs)
    {
        function(s.nbElts, s.nbNodes, source.coords(), source.connectivity(), problem.source.types.data(), s.nbMatls,
                 problem.source.matlIds.data(), problem.source.matlStates.data(), t.nbElts, t.nbNodes, target.coords(),
                 target.connectivity(), problem.target.types.data(), t.nbMatls, problem.target.matlIds.data(),
                 problem.target.matlStates.data(), problem.mappingFlags.data(), outputs..., result.message.data(),
                 &result.errorCode, beginCall(problem.surroundings.callback));
    };
    if (ofNodes)
    {
        call(library.matchNodes, tables.first.pointers.front());
    }
    else
    {
        call(library.matchGaussPoints, tables.first.pointers.data(), tables.second.pointers.data());
    }
}

} // namespace library_host
