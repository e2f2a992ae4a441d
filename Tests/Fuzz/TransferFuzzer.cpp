// libFuzzer target: the four computations on models of any geometry, with any settings.
//
// A fault in the data ends the process of a host; here it ends the call, by an exception that exit is replaced with.
#include "FuzzedModels.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace
{
struct ProcessEnded
{
};

bool isInCall = false;
int callsUntilCancel = 0;

int callback(int, char*, char*, int)
{
    return --callsUntilCancel == 0 ? 0 : 1;
}

/// Settings of any content, except that the grid stays small enough for a fuzzer.
void writeTuningFile(FuzzedBytes& bytes, const char* name)
{
    std::filesystem::remove(name);
    if (bytes.oneIn(3))
    {
        std::ofstream file(name);
        if (bytes.oneIn(2))
        {
            file << bytes.number() << ' ' << bytes.number() << ' ' << bytes.between(-5, 60000) << '\n';
        }
        else
        {
            file << bytes.text(12) << "\n0.01 0.002 1000\n";
        }
    }
}

struct Outcome
{
    char message[1000];
    int errorCode = -99;
};

void transferToMesh(FuzzedBytes& bytes, FuzzedMesh& source, FuzzedMesh& target, Outcome& outcome)
{
    writeTuningFile(bytes, "mappingInputs.txt");
    const int nbFields = bytes.between(1, 3);
    FuzzedFields refFields(bytes, nbFields, source.nbNodes(), source.nbGaussPoints(), source.nbElts());
    FuzzedFields targetFields(bytes, bytes.between(1, 4), target.nbNodes(), target.nbGaussPoints(), target.nbElts());
    const int mode = bytes.between(-1, 3);
    FE3DMeshToFE3DMesh_VariablesInterpolation(
        mode, bytes.number(), source.nbElts(), source.nbNodes(), source.nodeCoords(), source.connectivity.data(),
        source.types.data(), static_cast<int>(source.matlStates.size()), source.matlPerElt.data(),
        source.matlStates.data(), target.nbElts(), target.nbNodes(), target.nodeCoords(), target.connectivity.data(),
        target.types.data(), static_cast<int>(target.matlStates.size()), target.matlPerElt.data(),
        target.matlStates.data(), target.matlFlags.data(), refFields.set(), targetFields.set(), outcome.message,
        &outcome.errorCode, bytes.oneIn(4) ? nullptr : callback);
}

void transferToCloud(FuzzedBytes& bytes, FuzzedMesh& source, FuzzedMesh& target, Outcome& outcome)
{
    writeTuningFile(bytes, "mappingInputs.txt");
    FuzzedFields refFields(bytes, bytes.between(1, 3), source.nbNodes(), source.nbGaussPoints(), source.nbElts());
    FuzzedFields targetFields(bytes, bytes.between(1, 3), target.nbNodes(), 0, 0);
    std::vector<int> matlPerPoint(target.coords.size());
    for (int& matl : matlPerPoint)
    {
        matl = bytes.between(0, static_cast<int>(target.matlStates.size()) - 1);
    }
    FE3DMEshToPtCloud_VariablesInterpolation(
        bytes.between(-1, 2), bytes.number(), source.nbElts(), source.nbNodes(), source.nodeCoords(),
        source.connectivity.data(), source.types.data(), static_cast<int>(source.matlStates.size()),
        source.matlPerElt.data(), source.matlStates.data(), target.nbNodes(), target.nodeCoords(),
        static_cast<int>(target.matlStates.size()), matlPerPoint.data(), target.matlStates.data(),
        target.matlFlags.data(), refFields.set(), targetFields.set(), outcome.message, &outcome.errorCode, callback);
}

void matchNodes(FuzzedBytes& bytes, FuzzedMesh& source, FuzzedMesh& target, Outcome& outcome)
{
    writeTuningFile(bytes, "nodToNodInputs.txt");
    std::vector<int> partners(target.coords.size());
    FE3DMeshToFE3DMesh_NodeToNodeMapping(
        source.nbElts(), source.nbNodes(), source.nodeCoords(), source.connectivity.data(), source.types.data(),
        static_cast<int>(source.matlStates.size()), source.matlPerElt.data(), source.matlStates.data(), target.nbElts(),
        target.nbNodes(), target.nodeCoords(), target.connectivity.data(), target.types.data(),
        static_cast<int>(target.matlStates.size()), target.matlPerElt.data(), target.matlStates.data(),
        target.matlFlags.data(), partners.data(), outcome.message, &outcome.errorCode, callback);
}

void matchGaussPoints(FuzzedBytes& bytes, FuzzedMesh& source, FuzzedMesh& target, Outcome& outcome)
{
    writeTuningFile(bytes, "GPToGPInputs.txt");
    constexpr int mostGaussPoints = 8;
    std::vector<int> values(2 * mostGaussPoints * target.types.size());
    std::vector<int*> elements(target.types.size());
    std::vector<int*> gaussPoints(target.types.size());
    for (std::size_t elt = 0; elt < target.types.size(); ++elt)
    {
        elements[elt] = values.data() + 2 * mostGaussPoints * elt;
        gaussPoints[elt] = elements[elt] + mostGaussPoints;
    }
    FE3DMeshToFE3DMesh_GPToGPMapping(
        source.nbElts(), source.nbNodes(), source.nodeCoords(), source.connectivity.data(), source.types.data(),
        static_cast<int>(source.matlStates.size()), source.matlPerElt.data(), source.matlStates.data(), target.nbElts(),
        target.nbNodes(), target.nodeCoords(), target.connectivity.data(), target.types.data(),
        static_cast<int>(target.matlStates.size()), target.matlPerElt.data(), target.matlStates.data(),
        target.matlFlags.data(), elements.data(), gaussPoints.data(), outcome.message, &outcome.errorCode, callback);
}
} // namespace

extern "C" [[noreturn]] void __real_exit(int status);

extern "C" [[noreturn]] void __wrap_exit(int status)
{
    if (isInCall)
    {
        throw ProcessEnded{};
    }
    __real_exit(status);
}

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    static_cast<void>(std::freopen("/dev/null", "w", stdout));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedBytes bytes({data, size});
    const int computation = bytes.between(0, 5);
    callsUntilCancel = bytes.oneIn(6) ? bytes.between(1, 20) : 0;
    FuzzedMesh source(bytes);
    FuzzedMesh other(bytes);
    FuzzedMesh& target = bytes.oneIn(3) ? source : other;
    Outcome outcome;
    isInCall = true;
    try
    {
        switch (computation)
        {
        case 0: transferToCloud(bytes, source, target, outcome); break;
        case 1: matchNodes(bytes, source, target, outcome); break;
        case 2: matchGaussPoints(bytes, source, target, outcome); break;
        default: transferToMesh(bytes, source, target, outcome); break;
        }
        if (outcome.errorCode < -1 || outcome.errorCode > 2)
        {
            std::abort();
        }
    }
    catch (const ProcessEnded&)
    {
    }
    isInCall = false;
    return 0;
}
