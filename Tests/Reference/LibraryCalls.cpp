#include "LibraryCalls.h"

#include "Comparison.h"

#include <algorithm>

namespace library_host
{

using meshes::Mesh;
using random_models::CorrespondenceProblem;
using random_models::FieldsSet;
using random_models::MeshPointers;
using random_models::Surroundings;
using random_models::TransferProblem;
using reference::index;
using reference::MeshArrays;

namespace
{
/// Null if the host has none.
VeltraneCallback callbackOf(const reference::HostCallback& host)
{
    const VeltraneCallback callback =
        callbackAnswering([&host, number = 0](const Report&) mutable { return number++ == host.refusedCall ? 0 : 1; });
    return host.present ? callback : nullptr;
}
} // namespace

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

CorrespondenceTables::CorrespondenceTables(const Mesh& target, bool ofNodes)
    : first(ofNodes ? 1 : target.nbElts(), ofNodes ? target.nbNodes() : 8), second(ofNodes ? 0 : target.nbElts(), 8)
{
}

const char* tuningFileOfCorrespondence(bool ofNodes)
{
    return ofNodes ? "nodToNodInputs.txt" : "GPToGPInputs.txt";
}

void callTransfer(TransferProblem& problem, Result& result)
{
    const LibraryUnderTest& library = libraryUnderTest();
    MeshPointers source(problem.source);
    MeshPointers target(problem.target);
    FieldsSet refFields(problem.refFields, problem.announcedRefFields);
    FieldsSet targetFields(problem.targetFields, problem.announcedTargetFields);
    const MeshArrays s = source.arrays();
    const MeshArrays t = target.arrays();
    const VeltraneCallback callback = callbackOf(problem.surroundings.callback);
    if (problem.toPointCloud)
    {
        library.meshToPointCloud(problem.interpoMode, problem.defaultValue, s.nbElts, s.nbNodes, source.coords(),
                                 source.connectivity(), problem.source.types.data(), s.nbMatls,
                                 problem.source.matlIds.data(), problem.source.matlStates.data(), t.nbNodes,
                                 target.coords(), t.nbMatls, problem.target.matlIds.data(),
                                 problem.target.matlStates.data(), problem.mappingFlags.data(), refFields.record(),
                                 targetFields.record(), result.message.data(), &result.errorCode, callback);
        return;
    }
    library.meshToMesh(problem.interpoMode, problem.defaultValue, s.nbElts, s.nbNodes, source.coords(),
                       source.connectivity(), problem.source.types.data(), s.nbMatls, problem.source.matlIds.data(),
                       problem.source.matlStates.data(), t.nbElts, t.nbNodes, target.coords(), target.connectivity(),
                       problem.target.types.data(), t.nbMatls, problem.target.matlIds.data(),
                       problem.target.matlStates.data(), problem.mappingFlags.data(), refFields.record(),
                       targetFields.record(), result.message.data(), &result.errorCode, callback);
}

void callCorrespondence(CorrespondenceProblem& problem, bool ofNodes, CorrespondenceTables& tables, Result& result)
{
    const LibraryUnderTest& library = libraryUnderTest();
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
                 &result.errorCode, callbackOf(problem.surroundings.callback));
    };
    if (ofNodes)
    {
        call(library.nodeToNode, tables.first.pointers.front());
    }
    else
    {
        call(library.gaussPointToGaussPoint, tables.first.pointers.data(), tables.second.pointers.data());
    }
}

namespace
{
std::map<std::string, std::string> filesOf(const Surroundings& surroundings, const std::string& tuningFile)
{
    std::map<std::string, std::string> files;
    if (surroundings.tuningText)
    {
        files[tuningFile] = *surroundings.tuningText;
    }
    if (surroundings.otherTuningText)
    {
        files[tuningFile == "nodToNodInputs.txt" ? "mappingInputs.txt" : "nodToNodInputs.txt"] =
            *surroundings.otherTuningText;
    }
    return files;
}
} // namespace

CallDirectory::CallDirectory(const Surroundings& surroundings, const std::string& tuningFile)
    : itsFiles(filesOf(surroundings, tuningFile)), itsDirectory(itsFiles)
{
    if (surroundings.hasOldLog)
    {
        writeFile("interpoLog.txt", "an earlier call's log\n");
    }
}

std::optional<std::string> CallDirectory::takeLog()
{
    if (!std::filesystem::exists("interpoLog.txt"))
    {
        return std::nullopt;
    }
    const std::string text = contentsOf("interpoLog.txt");
    std::filesystem::remove("interpoLog.txt");
    return text;
}

std::string CallDirectory::disturbance() const
{
    const std::map<std::string, std::string> found = itsDirectory.files();
    if (found == itsFiles)
    {
        return "";
    }
    std::string names;
    for (const auto& [name, text] : found)
    {
        names += " " + name;
    }
    return "the working directory's files have changed; it holds now:" + names;
}

std::vector<reference::CallbackCall> receivedCalls()
{
    std::vector<reference::CallbackCall> calls;
    for (const Report& report : transcript())
    {
        calls.push_back({report.progress, report.title, report.text, report.kind});
    }
    return calls;
}

std::string differenceOfFatalCall(const std::function<void()>& call, const std::string& expectedOutput)
{
    const ChildsEnd end = endOfCallInChild(call);
    if (end.returned)
    {
        return "the call returned, expected the end of the process with \"" + expectedOutput + "\"";
    }
    if (end.exitStatus != 0)
    {
        return "the process ended with status " + std::to_string(end.exitStatus) + ", expected 0";
    }
    return comparison::differenceOfTexts("standard output", end.printed, expectedOutput);
}

} // namespace library_host
